#!/usr/bin/env bash
# Runs `TOV -i` in a private mount namespace and copies the systemd unit it writes to OUTPUT.
#   scripts/unit-written-by-tov.sh TOV OUTPUT
# Inside the namespace /etc and /opt are overlays whose changes live in a tmpfs, and /run is
# an empty tmpfs: the unit and tov's log go nowhere on the real machine (a tov installed
# below /opt still runs), and with the system bus out of sight tov cannot ask the service
# manager to load or start anything.
# Needs root (or unprivileged user namespaces, then the namespace maps the caller to root).
set -euo pipefail

if [ $# -ne 2 ]; then
  echo "unit-written-by-tov: usage: $0 TOV OUTPUT" >&2
  exit 2
fi
tov=$(realpath "$1")
output=$(realpath -m "$2")
readonly unit_path=/etc/systemd/system/com.quorvel.keldservice.tov.service

[ -x "$tov" ] || { echo "unit-written-by-tov: $tov is not an executable" >&2; exit 1; }
# tov's logs folder lies below /opt: without /opt to hide, tov would create it for real.
[ -d /opt ] || { echo "unit-written-by-tov: there is no /opt to hide tov's logs in" >&2; exit 1; }

scratch=$(mktemp -d)
trap 'rmdir "$scratch"' EXIT

namespace=(unshare --mount --propagation private)
[ "$(id -u)" -eq 0 ] || namespace+=(--map-root-user)

# shellcheck disable=SC2016 # expanded by the inner shell
"${namespace[@]}" env -u DBUS_SYSTEM_BUS_ADDRESS sh -eu -c '
  tov=$1 output=$2 scratch=$3 unit=$4
  mount -t tmpfs tov-scratch "$scratch"
  for folder in etc opt; do
    mkdir "$scratch/$folder" "$scratch/$folder.work"
    mount -t overlay "tov-$folder" -o "lowerdir=/$folder,upperdir=$scratch/$folder,workdir=$scratch/$folder.work" "/$folder"
  done
  mount -t tmpfs tov-run /run
  mkdir -p "${unit%/*}"
  "$tov" -i
  if [ ! -f "$unit" ]; then
    echo "unit-written-by-tov: $tov -i wrote no $unit; its log says:" >&2
    cat /opt/Quorvel/KELD/logs/tov.log >&2 || true
    exit 1
  fi
  cat "$unit" > "$output"
' unit-written-by-tov "$tov" "$output" "$scratch" "$unit_path"
