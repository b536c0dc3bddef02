#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz/ and runs each for a while,
# starting from its seed corpus. A crash or sanitizer report fails the script.
#   scripts/fuzz.sh [SECONDS_PER_TARGET]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-30}"

bash scripts/install-deps.sh
CXX=clang++ cmake -S . -B build-fuzz -DTOV_FUZZ=ON -DTOV_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >&2
cmake --build build-fuzz -j "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)" >&2

status=0
for fuzzer in build-fuzz/fuzz/*Fuzzer; do
  [ -x "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  work=$(mktemp -d)
  cp -r "fuzz/corpus/$name/." "$work/" 2>/dev/null || true
  echo "fuzz: $name for ${seconds}s" >&2
  if ! "$fuzzer" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
      -artifact_prefix="$work/" "$work" >"$work/log" 2>&1; then
    echo "fuzz: $name failed; last lines of its log:" >&2
    tail -n 60 "$work/log" >&2
    status=1
  else
    tail -n 2 "$work/log" >&2
  fi
  rm -rf "$work"
done
exit "$status"
