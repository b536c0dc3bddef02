#!/usr/bin/env bash
# Builds tov in Release and makes the Debian package tov_<version>_<arch>.deb in the
# project folder (or OUTDIR). Prints the package's path as the last line.
#   scripts/package-deb.sh [--man-page FILE] [--build-dir DIR] [--output-dir OUTDIR]
#                          [--maintainer "Name <address>"]
# Needs root, or unprivileged user namespaces: the systemd unit in the package is the one
# `tov -i` writes, taken from the built tov run in a private mount namespace.
set -euo pipefail
cd "$(dirname "$0")/.."
project=$(pwd)

man_page="$project/man/tov.8"
build_dir="$project/build-package"
output_dir="$project"
maintainer="The tov developers <tov-developers@example.com>"
readonly revision=1
readonly unit_name=com.quorvel.keldservice.tov.service
readonly component=opt/Quorvel/KELD/Components/TOV

fail() {
  echo "package-deb: $*" >&2
  exit 1
}

while [ $# -gt 0 ]; do
  case "$1" in
    --man-page) man_page=$(realpath -m "$2"); shift 2 ;;
    --build-dir) build_dir=$(realpath -m "$2"); shift 2 ;;
    --output-dir) output_dir=$(realpath -m "$2"); shift 2 ;;
    --maintainer) maintainer="$2"; shift 2 ;;
    *) echo "package-deb: unknown argument $1" >&2; exit 2 ;;
  esac
done

# Progress goes to standard error; standard output carries only the package's path.
exec 3>&1 1>&2

[ -f "$man_page" ] || fail "the manual page $man_page is missing (write man/tov.8, or pass one with --man-page FILE)"
for tool in dpkg-deb dpkg-shlibdeps dpkg-gencontrol; do
  command -v "$tool" >/dev/null ||
    fail "$tool is needed: run scripts/install-deps.sh (package dpkg-dev)"
done

build_release() {
  local launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  # Debian's hardening flags (stack protector, fortified functions, full RELRO, PIE). Their
  # warnings do not stop the package: the project's own builds hold it to no warnings.
  local cxxflags cppflags ldflags
  cxxflags=$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get CXXFLAGS)
  cppflags=$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get CPPFLAGS)
  ldflags=$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get LDFLAGS)
  cmake -S "$project" -B "$build_dir" -DCMAKE_BUILD_TYPE=Release -DTOV_WERROR=OFF \
    -DTOV_BUILD_TESTS=OFF -DTOV_BUILD_BENCH=OFF "${launcher[@]}" \
    -DCMAKE_CXX_FLAGS="$cxxflags $cppflags" -DCMAKE_EXE_LINKER_FLAGS="$ldflags"
  cmake --build "$build_dir" --target tov -j "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)"
}

project_version() {
  local version
  version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build_dir/CMakeCache.txt")
  [ -n "$version" ] || fail "no project version in $build_dir/CMakeCache.txt"
  echo "$version"
}

# The package that holds the shared object soname, as dpkg-shlibdeps names it (from the
# package's shlibs file, with its minimal version), or its plain name.
package_of_library() {
  local soname=$1 path package shlibs
  path=$(ldconfig -p | awk -v name="$soname" '$1 == name { print $NF; exit }')
  [ -n "$path" ] || fail "$soname, which tov loads at run time, is not installed"
  package=$(dpkg-query -S "$(realpath "$path")" 2>/dev/null | head -n 1 | cut -d: -f1) ||
    fail "no package holds $path"
  [ -n "$package" ] || fail "no package holds $path"
  local name=${soname%%.so.*} number=${soname##*.so.}
  shlibs=$(cat /var/lib/dpkg/info/"$package".shlibs /var/lib/dpkg/info/"$package":*.shlibs 2>/dev/null |
    awk -v name="$name" -v number="$number" '$1 == name && $2 == number { $1 = ""; $2 = ""; sub(/^ +/, ""); print; exit }')
  echo "${shlibs:-$package}"
}

# The libraries tov opens itself (dlopen) are named in the program as shared-object names.
loaded_library_depends() {
  local program=$1 soname depends=()
  for pattern in 'libzip\.so\.[0-9]+' 'libcurl\.so\.[0-9]+' 'libcups\.so\.[0-9]+'; do
    soname=$(grep -aoE "$pattern" "$program" | head -n 1) || fail "$program names no library matching $pattern"
    depends+=("$(package_of_library "$soname")")
  done
  local joined
  joined=$(IFS=,; echo "${depends[*]}")
  echo "${joined//,/, }"
}

changelog_text() {
  local version=$1 date
  date=$(date -R -d "@$(git -C "$project" log -1 --format=%ct 2>/dev/null || date +%s)")
  cat <<EOF
tov ($version) unstable; urgency=medium

  * tov $version.

 -- $maintainer  $date
EOF
}

# The package's files, below root.
lay_out() {
  local root=$1 program=$2 unit=$3
  install -d "$root/$component" "$root/lib/systemd/system" "$root/usr/share/man/man8" \
    "$root/usr/share/doc/tov" "$root/usr/share/lintian/overrides"
  install -m 0755 "$program" "$root/$component/tov"
  strip --strip-unneeded --remove-section=.comment --remove-section=.note "$root/$component/tov"
  install -m 0644 "$unit" "$root/lib/systemd/system/$unit_name"
  gzip -9nc "$man_page" > "$root/usr/share/man/man8/tov.8.gz"
  install -m 0644 "$project/README.md" "$root/usr/share/doc/tov/README.md"
  install -m 0644 "$project/packaging/debian/copyright" "$root/usr/share/doc/tov/copyright"
  install -m 0644 "$project/packaging/debian/lintian-overrides" "$root/usr/share/lintian/overrides/tov"
  chmod 0644 "$root/usr/share/man/man8/tov.8.gz"
}

# Writes the control file and maintainer scripts with Debian's tools, in the work folder
# (dpkg-shlibdeps and dpkg-gencontrol read debian/control and debian/changelog there).
write_control() {
  local work=$1 root=$2 version=$3
  local debian="$work/debian"
  sed "s|@MAINTAINER@|$maintainer|" "$project/packaging/debian/control" > "$debian/control"
  changelog_text "$version" > "$debian/changelog"
  gzip -9nc "$debian/changelog" > "$root/usr/share/doc/tov/changelog.Debian.gz"
  chmod 0644 "$root/usr/share/doc/tov/changelog.Debian.gz"
  install -d "$root/DEBIAN"
  for script in postinst prerm postrm; do
    install -m 0755 "$project/packaging/debian/$script" "$root/DEBIAN/$script"
  done
  (
    cd "$work"
    dpkg-shlibdeps -Tdebian/tov.substvars "$root/$component/tov"
    echo "misc:Depends=$(loaded_library_depends "$root/$component/tov"), pci.ids, usb.ids, procps" \
      >> debian/tov.substvars
    dpkg-gencontrol -ptov -P"$root" -Tdebian/tov.substvars -v"$version"
  )
  (cd "$root" && find . -type f ! -path './DEBIAN/*' -printf '%P\0' | LC_ALL=C sort -z | xargs -0 md5sum) \
    > "$root/DEBIAN/md5sums"
  chmod 0644 "$root/DEBIAN/md5sums"
}

build_release
program="$build_dir/tov"
version="$(project_version)-$revision"
arch=$(dpkg --print-architecture)
work="$build_dir/deb"
root="$work/debian/tov"
rm -rf "$work"
install -d "$work/debian" "$root"

unit="$work/$unit_name"
bash "$project/scripts/unit-written-by-tov.sh" "$program" "$unit"
lay_out "$root" "$program" "$unit"
write_control "$work" "$root" "$version"

package="$output_dir/tov_${version}_${arch}.deb"
install -d "$output_dir"
dpkg-deb --root-owner-group -Zxz --build "$root" "$package"
echo "$package" >&3
