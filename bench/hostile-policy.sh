#!/usr/bin/env bash
# Times "tov -e" on a hostile zipped policy: about 98 KB of ZIP that inflates to 96 MB of
# "{}," inside a JSON array, followed by one real key. The policy is put at its real path
# inside a private mount namespace (fresh memory file systems on /opt and /tmp), so the
# machine's own files are not touched. Prints wall time and peak resident size of each
# run; the goal is under 1 s and under 64 MiB. Run as root.
#   bench/hostile-policy.sh [TOV_EXECUTABLE] [ROUNDS]
set -euo pipefail
cd "$(dirname "$0")/.."
tov="$(realpath "${1:-build/tov}")"
rounds="${2:-3}"
[ "$(id -u)" -eq 0 ] || { echo "run as root" >&2; exit 1; }
[ -x "$tov" ] || { echo "no tov executable at $tov (build the tov target first)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# 32 million "{}," (96 MB), written in chunks so that making it stays small too.
python3 - "$work/policy.zip" <<'PYTHON'
import sys, zipfile
chunk = b"{}," * (1 << 20)
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
    with archive.open("policy.json", "w") as member:
        member.write(b'{"Padding": [')
        for _ in range(32_000_000 // (1 << 20)):
            member.write(chunk)
        member.write(b"{}," * (32_000_000 % (1 << 20)))
        member.write(b'{}], "FullScanIntervalHours": 24}')
PYTHON
echo "policy: $(stat -c %s "$work/policy.zip") bytes zipped," \
     "$(unzip -l "$work/policy.zip" | awk 'END { print $1 }') bytes inside"

component=/opt/Quorvel/KELD/Components/TOV
for ((round = 1; round <= rounds; round++)); do
  unshare -m --propagation private sh -c '
    set -e
    mount -t tmpfs -o mode=0755 tmpfs /opt
    mkdir -p "$2"
    cp "$3" "$2/policy.json"
    mount -t tmpfs -o mode=1777 tmpfs /tmp
    /usr/bin/time -f "%e s %M KiB" "$1" -e 2>&1
  ' sh "$tov" "$component" "$work/policy.zip" | sed "s/^/run $round: /"
done
