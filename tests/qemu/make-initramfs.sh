#!/bin/bash
# Makes the initramfs of the QEMU test machines: busybox, tov with the libraries it links,
# the PCI and USB id databases, the kernel modules the machines' devices need (with their
# dependencies, in load order), the scenario scripts of tests/qemu/guest in /scenarios,
# and an /init that loads the modules, waits for the devices the kernel command line
# names, prints `tov -p` between two marker lines on the console (or runs the scenario the
# command line names) and powers the machine off.
#
#   make-initramfs.sh FOLDER TOV KERNEL_RELEASE
#
# Everything is written below FOLDER (which must exist); the archive is FOLDER/initramfs.cpio.gz.
set -euo pipefail

if [ $# -ne 3 ]; then
    echo "usage: $0 FOLDER TOV KERNEL_RELEASE" >&2
    exit 2
fi
folder=$1
tov=$2
release=$3
root=$folder/root
guest_scripts=$(dirname "$0")/guest
modules_dir=/lib/modules/$release

# The drivers of the machines' devices. Order matters where one driver binds a device the
# other needs: the generic HDA codec must be there before the controller probes its codecs.
# FAT with the code page and character set it uses by default, for the USB stick.
modules=(
    virtio_pci virtio_blk virtio_net
    nvme ahci sd_mod usb_storage
    vfat nls_cp437 nls_ascii
    xhci_pci usbhid hid_generic psmouse evdev
    e1000e
    bochs
    snd_hda_codec_generic snd_hda_intel
)

for tool in busybox ldd ldconfig modprobe gzip; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is missing" >&2; exit 1; }
done
[ -x "$tov" ] || { echo "$0: $tov is no executable" >&2; exit 1; }
[ -d "$modules_dir" ] || { echo "$0: no modules for kernel $release" >&2; exit 1; }
busybox_binary=$(command -v busybox)
if ldd "$busybox_binary" >/dev/null 2>&1; then
    echo "$0: $busybox_binary is not statically linked (install busybox-static)" >&2
    exit 1
fi

rm -rf "$root"
mkdir -p "$root"/{bin,dev,etc,proc,sys,run,tmp,usr/bin,usr/share/misc,lib/modules,scenarios}

# busybox and one link per applet
cp "$busybox_binary" "$root/bin/busybox"
for applet in $(busybox --list); do
    [ -e "$root/bin/$applet" ] || ln -s busybox "$root/bin/$applet"
done

# tov and every library ldd lists, the loader included, at their own paths
# (without its debug information, when strip is there: a tenth of the size)
if command -v strip >/dev/null; then
    strip --strip-debug -o "$root/usr/bin/tov" "$tov"
else
    cp "$tov" "$root/usr/bin/tov"
fi
copy_libraries_of() {
    ldd "$1" | grep -o '/[^ ]*' | sort -u | while read -r library; do
        mkdir -p "$root$(dirname "$library")"
        cp -L "$library" "$root$library"
    done
}
copy_libraries_of "$tov"

# Libraries tov opens only when it needs them, with theirs: libzip makes the daemon's
# report archives, libcups lists the printers of a full scan. (libcurl, for the public
# address, stays out: the guests have no network.)
run_time_libraries=(libzip.so.4 libcups.so.2)
for soname in "${run_time_libraries[@]}"; do
    library=$(ldconfig -p | awk -v name="$soname" '$1 == name && /x86-64/ && !found { print $NF; found = 1 }')
    [ -n "$library" ] || { echo "$0: $soname is not installed" >&2; exit 1; }
    mkdir -p "$root$(dirname "$library")"
    cp -L "$library" "$root$library"
    copy_libraries_of "$library"
done

cp -L /usr/share/misc/pci.ids /usr/share/misc/usb.ids "$root/usr/share/misc/"
cp "$guest_scripts"/*.sh "$root/scenarios/"

# The modules and their dependencies, each once, in the order modprobe would load them;
# compressed modules are unpacked, so busybox insmod can load them.
: > "$root/etc/modules.load"
for module in "${modules[@]}"; do
    modprobe -S "$release" --show-depends "$module" | while read -r verb path _; do
        [ "$verb" = insmod ] || continue
        case $path in
            *.ko.xz) unpacked=${path%.xz}; unpack=(xz -dc) ;;
            *.ko.zst) unpacked=${path%.zst}; unpack=(zstd -dcq) ;;
            *.ko) unpacked=$path; unpack=(cat) ;;
            *) echo "$0: unexpected module file $path" >&2; exit 1 ;;
        esac
        grep -qxF "$unpacked" "$root/etc/modules.load" && continue
        mkdir -p "$root$(dirname "$unpacked")"
        "${unpack[@]}" "$path" > "$root$unpacked"
        echo "$unpacked" >> "$root/etc/modules.load"
    done
done

cat > "$root/etc/os-release" <<'OSRELEASE'
NAME="tov test guest"
VERSION_ID="1"
OSRELEASE

cat > "$root/init" <<'INIT'
#!/bin/sh
# Kernel parameters of the form name=value reach init as environment variables:
#   tov_host   the host name to set
#   tov_wait   comma-separated path patterns that must all exist before the scan
#   tov_scenario  the script of /scenarios to run instead of the scan (without ".sh")
# A scenario reads its own parameters from the environment in the same way.
export PATH=/bin:/usr/bin
: "${tov_host:=}" "${tov_wait:=}" "${tov_scenario:=}"
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
mount -t tmpfs tmpfs /run
mount -t tmpfs tmpfs /tmp
[ -n "$tov_host" ] && hostname "$tov_host"

while read -r module; do
    insmod "$module" || echo "tov-init: cannot load $module"
done < /etc/modules.load

present() {
    for pattern in $(echo "$1" | tr ',' ' '); do
        # the pattern is expanded on purpose: its first match must exist
        # shellcheck disable=SC2086
        set -- $pattern
        [ -e "$1" ] || return 1
    done
    return 0
}
tenths=0
until present "$tov_wait"; do
    if [ $tenths -ge 600 ]; then
        echo "tov-init: still missing after 60 s: $tov_wait"
        break
    fi
    sleep 0.1
    tenths=$((tenths + 1))
done

# Keep kernel messages out of the report lines.
echo 1 > /proc/sys/kernel/printk
if [ -n "$tov_scenario" ]; then
    sh "/scenarios/$tov_scenario.sh" || echo "tov-init: the scenario $tov_scenario failed"
    poweroff -f
fi
/usr/bin/tov -p > /tmp/report.json 2> /tmp/tov.err
status=$?
echo "-----BEGIN TOV REPORT-----"
cat /tmp/report.json
echo
echo "-----END TOV REPORT----- status $status"
cat /tmp/tov.err
poweroff -f
INIT
chmod 755 "$root/init"

(cd "$root" && find . -print0 | LC_ALL=C sort -z | busybox cpio -o -H newc -0 2>/dev/null) | gzip -1 > "$folder/initramfs.cpio.gz"
