#!/bin/sh
# A USB stick plugged into the running guest with a user at the console: `tov -p` with
# the stick mounted, then again once the stick is unmounted and pulled out.
#
# Parameters (kernel command line): tov_stick_label, tov_mount_path, tov_user, tov_uid.
# shellcheck source-path=SCRIPTDIR source=common.sh
. /scenarios/common.sh
: "${tov_stick_label:?}" "${tov_mount_path:?}" "${tov_user:?}" "${tov_uid:?}"

add_console_user "$tov_user" "$tov_uid"
name=$(plug_and_mount_stick "$tov_stick_label" "$tov_mount_path") || exit 1
print_tov_report "STICK MOUNTED"
umount "$tov_mount_path"
rm -f "/dev/disk/by-label/$tov_stick_label"
say "unplug the stick"
wait_until 60 is_gone "$name" || say "$name is still there"
print_tov_report "STICK PULLED OUT"
