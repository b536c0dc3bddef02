#!/usr/bin/env bash
# Configures and builds tov and its tests.
#   scripts/build.sh [--sanitize address|thread] [--build-dir DIR]
set -euo pipefail
cd "$(dirname "$0")/.."

sanitize=""
build_dir=""
while [ $# -gt 0 ]; do
  case "$1" in
    --sanitize) sanitize="$2"; shift 2 ;;
    --build-dir) build_dir="$2"; shift 2 ;;
    *) echo "build: unknown argument $1" >&2; exit 2 ;;
  esac
done
[ -n "$build_dir" ] || build_dir="build${sanitize:+-$sanitize}"

# Progress goes to standard error; standard output carries only the build folder.
exec 3>&1 1>&2
bash scripts/install-deps.sh
extra=()
if [ "$(uname -s)" = Darwin ]; then
  # Homebrew's tools come first on PATH; CMake finds the keg-only ICU and every other
  # formula's CMake and pkg-config files through the prefixes.
  source scripts/homebrew.sh
  homebrew_prefix=$(brew_as_owner --prefix)
  icu_prefix=$(brew_as_owner --prefix icu4c)
  PATH="$homebrew_prefix/bin:$PATH"
  extra+=("-DCMAKE_PREFIX_PATH=$icu_prefix;$homebrew_prefix")
fi
cmake -S . -B "$build_dir" -DTOV_WERROR=ON -DTOV_SANITIZE="$sanitize" "${extra[@]}"
cmake --build "$build_dir" -j "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)"
echo "$build_dir" >&3
