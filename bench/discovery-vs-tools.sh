#!/usr/bin/env bash
# Times one full discovery (tov -p) against the inventory tools people use instead:
# lshw, hwinfo and inxi, each run in turn, alternating, so that caches and machine load
# are shared alike. Prints the median wall time and peak resident size of each, and the
# ratio of tov to the fastest tool. Installs the tools when they are missing. Run as root.
#   bench/discovery-vs-tools.sh [ROUNDS]
set -euo pipefail
cd "$(dirname "$0")/.."
rounds="${1:-7}"

tools=(lshw hwinfo inxi time)
missing=()
for tool in "${tools[@]}"; do
  dpkg-query -W -f='${Status}' "$tool" 2>/dev/null | grep -q 'install ok installed' || missing+=("$tool")
done
if [ "${#missing[@]}" -gt 0 ]; then
  apt-get update >&2
  DEBIAN_FRONTEND=noninteractive apt-get install -y "${missing[@]}" >&2
fi

build_dir=$(bash scripts/build.sh | tail -n 1)
tov="$PWD/$build_dir/tov"

declare -A commands=(
  [tov]="$tov -p"
  [lshw]="lshw -json"
  [hwinfo]="hwinfo --all"
  [inxi]="inxi -F -c0"
)
order=(tov lshw hwinfo inxi)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Wall time is taken around the command itself with bash's own clock (no process is
# started to read it); the peak resident size comes from a second run under time(1),
# whose own start-up would otherwise count in the wall time.
for ((round = 1; round <= rounds; round++)); do
  for name in "${order[@]}"; do
    start=$EPOCHREALTIME
    ${commands[$name]} >/dev/null 2>&1 </dev/null || true
    end=$EPOCHREALTIME
    /usr/bin/time -f "%M" -o "$work/one" ${commands[$name]} >/dev/null 2>&1 </dev/null || true
    echo "$(awk -v s="$start" -v e="$end" 'BEGIN { printf "%.6f", e - s }') $(tail -n 1 "$work/one")" >>"$work/$name"
  done
done

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

printf '%-8s %12s %14s\n' tool "median s" "peak RSS KiB"
fastest=""
fastest_time=""
for name in "${order[@]}"; do
  seconds=$(cut -d' ' -f1 "$work/$name" | median)
  peak=$(cut -d' ' -f2 "$work/$name" | sort -n | tail -n 1)
  printf '%-8s %12s %14s\n' "$name" "$seconds" "$peak"
  echo "$seconds" >"$work/$name.median"
  if [ "$name" != tov ] && { [ -z "$fastest_time" ] || awk -v a="$seconds" -v b="$fastest_time" 'BEGIN { exit !(a < b) }'; }; then
    fastest="$name"
    fastest_time="$seconds"
  fi
done
tov_time=$(cat "$work/tov.median")
for name in lshw hwinfo inxi; do
  awk -v t="$tov_time" -v o="$(cat "$work/$name.median")" -v n="$name" \
    'BEGIN { if (o > 0) printf "tov / %-7s = %.3f\n", n, t / o }'
done
echo "fastest tool: $fastest ($fastest_time s); goal: tov at most one fifth of it and under 16384 KiB peak"
