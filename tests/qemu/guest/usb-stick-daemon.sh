#!/bin/sh
# The daemon with a user at the console and event-driven scanning on: once it has handed
# over its first report, a USB stick is plugged in and mounted, and later pulled out and
# unmounted. The guest collects each report from the outbox as the collecting agent
# would and prints the two that follow the stick's mount and unmount, then the daemon's log.
#
# Parameters (kernel command line): tov_stick_label, tov_mount_path, tov_user, tov_uid.
# shellcheck source-path=SCRIPTDIR source=common.sh
. /scenarios/common.sh
: "${tov_stick_label:?}" "${tov_mount_path:?}" "${tov_user:?}" "${tov_uid:?}"

component=/opt/Quorvel/KELD/Components/TOV
outbox=$component/outbox
collected=/tmp/collected
logs=/opt/Quorvel/KELD/logs

# Called through wait_until.
# shellcheck disable=SC2317
has_report() {
    for header in "$outbox"/*.hdr; do
        [ -f "$header" ] && return 0
    done
    return 1
}

# Takes the oldest report of the outbox (its header is moved in last, so the archive is
# whole) and prints its document between the markers of title.
collect_report() {
    title=$1
    if ! wait_until 90 has_report; then
        say "no report reached the outbox for $title"
        return 1
    fi
    header=$(find "$outbox" -name '*.hdr' | sort | head -n 1)
    archive=${header%.hdr}.zip
    unzip -p "$archive" __h_hardware_h__.json > /tmp/collected.json
    mv "$archive" "$header" "$collected/"
    print_section "$title" /tmp/collected.json
}

# Ends the daemon and prints its log and its own output; the test reads them, also when a
# step failed.
finish() {
    kill "$daemon"
    wait_until 30 is_ended "$daemon" || say "the daemon did not end"
    cat "$logs"/tov*.log > /tmp/daemon.log 2>/dev/null
    print_section "DAEMON LOG" /tmp/daemon.log
    print_section "DAEMON OUTPUT" /tmp/daemon.out
    exit "$1"
}

add_console_user "$tov_user" "$tov_uid"
mkdir -p "$component" "$collected"
echo '{"ScanAfterRestart": true, "EventDrivenScan": true}' > "$component/policy.json"
/usr/bin/tov re > /tmp/daemon.out 2>&1 &
daemon=$!

# A new installation's first report is held back and handed over by the next scan.
collect_report "FIRST REPORT" > /dev/null || finish 1
say "the daemon handed its first report over"
name=$(plug_and_mount_stick "$tov_stick_label" "$tov_mount_path") || finish 1
collect_report "STICK MOUNTED DELTA" || finish 1

say "unplug the stick"
wait_until 60 is_gone "$name" || say "$name is still there"
umount "$tov_mount_path"
rm -f "/dev/disk/by-label/$tov_stick_label"
collect_report "STICK UNMOUNTED DELTA" || finish 1
finish 0
