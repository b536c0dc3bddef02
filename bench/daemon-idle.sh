#!/usr/bin/env bash
# Runs the daemon (tov re) for a while and prints what it cost: CPU time (user + system)
# as a share of one core, and its peak resident size. Two runs: idle without a policy
# (ticks, service self-check and memory guard only), then with a policy that makes it
# scan at start and watch for changes, measured after its start-up scans are done.
# Each run has private /opt, /tmp and /etc/systemd/system (memory file systems), so the
# machine's own files are not touched. Run as root.
#   bench/daemon-idle.sh [SECONDS]   (default 300)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-300}"
[ "$(id -u)" -eq 0 ] || { echo "daemon-idle: run as root" >&2; exit 1; }

build_dir=$(bash scripts/build.sh | tail -n 1)
tov="$PWD/$build_dir/tov"
ticks_per_second=$(getconf CLK_TCK)

# One run in a private mount namespace; prints "cpu-seconds peak-kib" of the daemon.
measure() {
  local policy="$1"
  unshare --mount --propagation private bash -s "$tov" "$seconds" "$policy" "$ticks_per_second" <<'RUN'
set -euo pipefail
tov="$1" seconds="$2" policy="$3" ticks="$4"
for folder in /opt /tmp /etc/systemd/system; do
  mkdir -p "$folder"
  mount -t tmpfs -o mode=0755 tmpfs "$folder"
done
component=/opt/Quorvel/KELD/Components/TOV
mkdir -p "$component"
[ -z "$policy" ] || printf '%s' "$policy" >"$component/policy.json"
"$tov" re >/dev/null 2>&1 </dev/null &
pid=$!
sleep "$seconds"
read -r -a stat <"/proc/$pid/stat"
# Fields 14 and 15 (utime, stime), counted after the command name, which has no blank here.
cpu_ticks=$((stat[13] + stat[14]))
peak=$(awk '/^VmHWM:/ {print $2}' "/proc/$pid/status")
kill -TERM "$pid"
wait "$pid" || true
awk -v t="$cpu_ticks" -v hz="$ticks" -v p="$peak" 'BEGIN { printf "%.3f %d\n", t / hz, p }'
RUN
}

report() {
  local name="$1" result="$2" cpu peak
  read -r cpu peak <<<"$result"
  awk -v n="$name" -v c="$cpu" -v s="$seconds" -v p="$peak" 'BEGIN {
    printf "%-22s CPU %.3f s in %d s (%.4f%% of one core), peak resident %d KiB (%.1f MiB)\n",
           n, c, s, 100 * c / s, p, p / 1024 }'
}

report "idle, no policy" "$(measure '')"
report "idle, event policy" "$(measure '{"ScanAfterRestart": true, "EventDrivenScan": true}')"
