#!/usr/bin/env bash
# Installs the dependencies, builds tov and runs its tests (as root, the tests that need
# namespaces, mounts or other users run too; otherwise they are skipped).
#   scripts/test.sh [--sanitize address|thread]
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=$(bash scripts/build.sh "$@" | tail -n 1)
if [ "$(uname -s)" = Darwin ]; then
  # ctest comes with Homebrew's cmake, which sudo's PATH may lack.
  source scripts/homebrew.sh
  PATH="$(brew_as_owner --prefix)/bin:$PATH"
fi
cd "$build_dir"
ctest --output-on-failure --timeout 300
