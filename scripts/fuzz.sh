#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz/ and runs each for a while,
# starting from its seed corpus, as many at once as there are processors. A crash or
# sanitizer report fails the script.
#   scripts/fuzz.sh [SECONDS_PER_TARGET]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-30}"
processors=$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)

bash scripts/install-deps.sh
CXX=clang++ cmake -S . -B build-fuzz -DTOV_FUZZ=ON -DTOV_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >&2
cmake --build build-fuzz -j "$processors" >&2

# Runs one target in a scratch folder of its own; prints the last two lines of its log,
# or the last sixty when it failed.
run_fuzzer() {
  local fuzzer=$1 name work
  name=$(basename "$fuzzer")
  work=$(mktemp -d)
  cp -r "fuzz/corpus/$name/." "$work/" 2>/dev/null || true
  local status=0
  if "$fuzzer" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
      -artifact_prefix="$work/" "$work" >"$work/log" 2>&1; then
    echo "fuzz: $name ran ${seconds}s"
    tail -n 2 "$work/log"
  else
    echo "fuzz: $name failed; last lines of its log:"
    tail -n 60 "$work/log"
    status=1
  fi
  rm -rf "$work"
  return "$status"
}

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
status=0
running=0
for fuzzer in build-fuzz/fuzz/*Fuzzer; do
  [ -x "$fuzzer" ] || continue
  if [ "$running" -ge "$processors" ]; then
    wait -n || status=1
    running=$((running - 1))
  fi
  echo "fuzz: $(basename "$fuzzer") for ${seconds}s" >&2
  run_fuzzer "$fuzzer" >"$results/$(basename "$fuzzer")" 2>&1 &
  running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
  wait -n || status=1
  running=$((running - 1))
done
cat "$results"/* >&2
exit "$status"
