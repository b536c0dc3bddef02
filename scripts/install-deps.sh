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
# macOS itself has libcurl, CUPS and their headers; icu4c names Homebrew's newest ICU, which
# is keg-only (the build finds it through CMAKE_PREFIX_PATH); usb.ids installs Debian's
# usb.ids as share/misc/usb.ids below Homebrew's prefix.
homebrew_formulae=(cmake pkgconf nlohmann-json libplist libzip icu4c googletest google-benchmark usb.ids)

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
  # shellcheck source=scripts/homebrew.sh
  source "$(dirname "${BASH_SOURCE[0]}")/homebrew.sh"
  local missing=()
  for formula in "${homebrew_formulae[@]}"; do
    brew_as_owner list --formula "$formula" >/dev/null 2>&1 || missing+=("$formula")
  done
  if [ "${#missing[@]}" -eq 0 ]; then
    return 0
  fi
  brew_as_owner install "${missing[@]}"
}

case "$(uname -s)" in
  Darwin) install_macos ;;
  Linux) install_debian ;;
  *) echo "install-deps: unsupported system $(uname -s)" >&2; exit 1 ;;
esac
