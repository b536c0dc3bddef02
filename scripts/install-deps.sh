#!/usr/bin/env bash
# Installs what tov needs to build and test: Debian 12 packages through apt, or
# Homebrew formulae on macOS. Safe to run again; it installs only what is missing.
set -euo pipefail

debian_packages=(
  cmake g++ make pkg-config
  nlohmann-json3-dev libplist-dev libzip-dev libicu-dev
  libcurl4-openssl-dev libcups2-dev libsystemd-dev cups-daemon cups-client nettle-dev binutils
  pci.ids usb.ids
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  zip unzip util-linux iproute2 hostname
  strace dbus-daemon procps
  libnl-genl-3-dev
  qemu-system-x86 linux-image-amd64 busybox-static kmod cpio
  edid-decode dmidecode
  mandoc lintian dpkg-dev python3-jsonschema
)
homebrew_formulae=(cmake pkg-config nlohmann-json libplist libzip icu4c curl googletest google-benchmark)

install_debian() {
  local missing=()
  for package in "${debian_packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
  done
  if [ "${#missing[@]}" -eq 0 ]; then
    return 0
  fi
  local sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  "${sudo[@]}" apt-get update
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y "${missing[@]}"
}

install_macos() {
  brew install "${homebrew_formulae[@]}"
}

case "$(uname -s)" in
  Darwin) install_macos ;;
  Linux) install_debian ;;
  *) echo "install-deps: unsupported system $(uname -s)" >&2; exit 1 ;;
esac
