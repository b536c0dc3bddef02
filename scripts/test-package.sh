#!/usr/bin/env bash
# Builds the Debian package, checks it with lintian, installs it on this machine with apt,
# and checks what it installed, what `dpkg -r` keeps and what `dpkg -P` removes. As root.
# The machine is left as it was found: the package is purged at the end whatever happens,
# packages apt pulled in are purged, and a /opt/Quorvel or service unit already there is
# put aside for the test and brought back.
#   scripts/test-package.sh [options of scripts/package-deb.sh]
set -euo pipefail
cd "$(dirname "$0")/.."

readonly program=/opt/Quorvel/KELD/Components/TOV/tov
readonly component=/opt/Quorvel/KELD/Components/TOV
readonly logs=/opt/Quorvel/KELD/logs
readonly unit_name=com.quorvel.keldservice.tov.service
readonly packaged_unit=/lib/systemd/system/$unit_name
readonly job_file=/etc/systemd/system/$unit_name
readonly boot_link=/etc/systemd/system/multi-user.target.wants/$unit_name
readonly aside_suffix=.before-test-package

failures=0
check() {
  local what=$1
  shift
  if "$@"; then
    echo "ok: $what"
  else
    echo "FAILED: $what" >&2
    failures=$((failures + 1))
  fi
}
fail() {
  echo "test-package: $*" >&2
  exit 1
}

[ "$(id -u)" -eq 0 ] || fail "run as root: the package is installed into this machine"
if dpkg-query -W -f='${Status}' tov 2>/dev/null | grep -qv 'not-installed'; then
  fail "a tov package is already on this machine; remove it first (the test would remove it)"
fi
for path in /opt/Quorvel "$job_file"; do
  if [ -e "$path$aside_suffix" ] || [ -L "$path$aside_suffix" ]; then
    fail "$path$aside_suffix is left from an earlier run: bring it back to $path or remove it"
  fi
done

scratch=$(mktemp -d)
dpkg-query -W -f='${Package}\n' | sort > "$scratch/packages-before"

put_aside() {
  if [ -e "$1" ] || [ -L "$1" ]; then
    mv "$1" "$1$aside_suffix"
    echo "test-package: $1 is put aside as $1$aside_suffix until the test ends"
  fi
}
bring_back() {
  if [ -e "$1$aside_suffix" ] || [ -L "$1$aside_suffix" ]; then
    rm -rf "$1"
    mv "$1$aside_suffix" "$1"
  fi
}

restore_machine() {
  if dpkg-query -W -f='${Status}' tov 2>/dev/null | grep -qv 'not-installed'; then
    dpkg --purge tov >/dev/null || echo "test-package: purging tov failed" >&2
  fi
  local pulled
  pulled=$(dpkg-query -W -f='${Package}\n' | sort | comm -13 "$scratch/packages-before" -)
  if [ -n "$pulled" ]; then
    echo "test-package: purging what apt pulled in: $pulled"
    # shellcheck disable=SC2086 # one word per package
    DEBIAN_FRONTEND=noninteractive apt-get purge -y $pulled >/dev/null || true
  fi
  rm -rf /opt/Quorvel "$job_file"
  bring_back /opt/Quorvel
  bring_back "$job_file"
  rm -rf "$scratch"
}
put_aside /opt/Quorvel
put_aside "$job_file"
trap restore_machine EXIT

echo "== building the package"
package=$(bash scripts/package-deb.sh "$@" | tail -n 1)
[ -f "$package" ] || fail "scripts/package-deb.sh made no package"
echo "$package"
version=$(dpkg-deb -f "$package" Version)

echo "== lintian"
check "lintian finds no error" lintian --fail-on error "$package"

echo "== install"
DEBIAN_FRONTEND=noninteractive apt-get install -y "$package" > "$scratch/install.log" 2>&1 ||
  { cat "$scratch/install.log"; fail "apt-get install failed"; }
if [ ! -d /run/systemd/system ]; then
  check "the package says that systemd does not run, so the service is not started" \
    grep -q 'systemd is not running' "$scratch/install.log"
fi
depends=$(dpkg-query -W -f='${Depends}' tov)
echo "Depends: $depends"
for needed in libc6 libzip4 libcurl4 libcups2 pci.ids usb.ids procps; do
  check "the package depends on $needed" grep -qE "(^|, )$needed( |,|$)" <<<"$depends"
done
check "tov -e runs from $program" "$program" -e
check "tov -e gives the package's version" grep -qF "${version%-*}" <("$program" -e)
check "the program is stripped" bash -c "! objdump -h '$program' | grep -q '\.debug_info'"
check "the unit is at $packaged_unit" test -f "$packaged_unit"
bash scripts/unit-written-by-tov.sh "$program" "$scratch/written.service"
check "the unit is byte for byte the one tov -i writes" cmp "$packaged_unit" "$scratch/written.service"
if command -v deb-systemd-helper >/dev/null; then
  check "the service is enabled for boot" test -L "$boot_link"
fi
check "the manual page is installed" test -s /usr/share/man/man8/tov.8.gz
for doc in README.md copyright changelog.Debian.gz; do
  check "/usr/share/doc/tov/$doc is installed" test -s "/usr/share/doc/tov/$doc"
done

echo "== remove stops the daemon and keeps the data"
# The daemon, without a policy, scans nothing; it writes its unit below /etc when it starts
# and on every round. Its output goes to its log.
"$program" re </dev/null >/dev/null 2>&1 &
daemon=$!
running() { start-stop-daemon --status --exec "$program"; }
# Ended: gone, or a zombie this shell has not waited for yet.
stopped() { [ ! -d "/proc/$daemon" ] || grep -q '^State:[[:space:]]*Z' "/proc/$daemon/status"; }
for _ in $(seq 100); do
  [ -f "$job_file" ] && break
  sleep 0.2
done
check "the daemon runs" running
check "the running daemon writes the unit the package holds" cmp "$packaged_unit" "$job_file"
install -d -m 0755 "$component/outbox" "$component/.delta" "$logs"
echo settings > "$component/settings.bin"
echo '{"policy":1}' > "$component/policy.json"
echo archive > "$component/outbox/hardware.json-20260101000000.zip"
echo 'X-NG-metadata: {}' > "$component/outbox/hardware.json-20260101000000.hdr"
echo '{}' > "$component/.delta/previous.json"
echo 'a line' > "$logs/tov.log"
echo 'an older line' > "$logs/tov.log.0"
planted=("$component/settings.bin" "$component/outbox/hardware.json-20260101000000.zip"
  "$component/outbox/hardware.json-20260101000000.hdr" "$component/.delta/previous.json"
  "$logs/tov.log" "$logs/tov.log.0")

dpkg --remove tov > "$scratch/remove.log" 2>&1 || { cat "$scratch/remove.log"; fail "dpkg -r tov failed"; }
check "dpkg -r removes the program" test ! -e "$program"
check "dpkg -r stops the daemon" stopped
wait "$daemon" 2>/dev/null || true
check "dpkg -r removes the packaged unit" test ! -e "$packaged_unit"
check "dpkg -r removes the unit the daemon wrote" test ! -f "$job_file"
for file in "${planted[@]}" "$component/policy.json"; do
  check "dpkg -r keeps $file" test -f "$file"
done

echo "== purge removes the data"
dpkg --purge tov > "$scratch/purge.log" 2>&1 || { cat "$scratch/purge.log"; fail "dpkg -P tov failed"; }
for file in "${planted[@]}"; do
  check "dpkg -P removes $file" test ! -e "$file"
done
check "dpkg -P removes the logs folder tov alone used" test ! -e "$logs"
check "dpkg -P keeps the policy file, which is not tov's" test -f "$component/policy.json"
rm -f "$component/policy.json"
rmdir "$component" /opt/Quorvel/KELD/Components /opt/Quorvel/KELD /opt/Quorvel
check "dpkg -P leaves no service unit behind" test ! -e "$job_file" -a ! -L "$job_file"
check "dpkg -P leaves the service disabled" test ! -L "$boot_link"
check "dpkg -P leaves no deb-systemd-helper state" \
  test -z "$(find /var/lib/systemd -name "*$unit_name*" 2>/dev/null)"

if [ "$failures" -ne 0 ]; then
  fail "$failures checks failed"
fi
echo "test-package: all checks passed"
