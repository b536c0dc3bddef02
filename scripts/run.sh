#!/usr/bin/env bash
# Installs the dependencies, builds tov and runs it as root with the given arguments
# (by default -p: print the inventory of this machine).
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=$(bash scripts/build.sh | tail -n 1)
[ $# -gt 0 ] || set -- -p
exec "$build_dir/tov" "$@"
