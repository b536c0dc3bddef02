# Helpers of the guest's scenario scripts (busybox sh). A scenario talks to the test
# through the serial console: "tov-guest: " lines ask the test for what only the host can
# do, and output the test reads stands between "-----BEGIN <title>-----" and
# "-----END <title>-----" lines. Requests go to standard error, so that a function whose
# output is captured can still make them.
# shellcheck shell=sh

say() {
    echo "tov-guest: $*" >&2
}

# Runs the command (a function or program with its arguments) every tenth of a second
# until it succeeds; fails after the given number of seconds.
wait_until() {
    limit=$1
    shift
    tenths=0
    until "$@"; do
        [ "$tenths" -ge $((limit * 10)) ] && return 1
        sleep 0.1
        tenths=$((tenths + 1))
    done
    return 0
}

# Prints a file between the markers of title.
print_section() {
    title=$1
    file=$2
    echo "-----BEGIN $title-----"
    cat "$file"
    echo
    echo "-----END $title-----"
}

# Runs `tov -p` and prints its report between the markers of title, with its status
# after the end marker.
print_tov_report() {
    title=$1
    /usr/bin/tov -p > /tmp/report.json 2> /tmp/tov.err
    status=$?
    echo "-----BEGIN $title-----"
    cat /tmp/report.json
    echo
    echo "-----END $title----- status $status"
    cat /tmp/tov.err
}

# Makes the user with that name and uid the user of the active session of seat0, in the
# files logind keeps under /run/systemd and that sd-login reads.
add_console_user() {
    user=$1
    uid=$2
    session=2
    printf 'root:x:0:0:root:/root:/bin/sh\n%s:x:%s:%s:%s:/home/%s:/bin/sh\n' \
        "$user" "$uid" "$uid" "$user" "$user" > /etc/passwd
    printf 'root:x:0:\n%s:x:%s:\n' "$user" "$uid" > /etc/group
    mkdir -p /run/systemd/seats /run/systemd/sessions /run/systemd/users
    cat > /run/systemd/seats/seat0 <<SEAT
IS_SEAT0=1
CAN_MULTI_SESSION=1
CAN_TTY=1
CAN_GRAPHICAL=1
ACTIVE=$session
ACTIVE_UID=$uid
SESSIONS=$session
UIDS=$uid
SEAT
    cat > /run/systemd/sessions/$session <<SESSION
UID=$uid
USER=$user
ACTIVE=1
IS_DISPLAY=1
STATE=active
REMOTE=0
TYPE=x11
CLASS=user
SEAT=seat0
VTNR=1
SESSION
    cat > "/run/systemd/users/$uid" <<USER
NAME=$user
STATE=active
DISPLAY=$session
SESSIONS=$session
ONLINE_SESSIONS=$session
ACTIVE_SESSIONS=$session
USER
}

# The device node whose file system has that label (read from the file system itself).
device_with_label() {
    findfs "LABEL=$1" 2>/dev/null
}

has_label() {
    [ -n "$(device_with_label "$1")" ]
}

is_gone() {
    [ ! -e "/sys/class/block/$1" ]
}

# The process has exited (a child not waited for yet stays a zombie).
is_ended() {
    [ ! -e "/proc/$1" ] || grep -q '^State:[[:space:]]*Z' "/proc/$1/status"
}

# What udev would do for a labelled volume: a link named by the label in
# /dev/disk/by-label (the guest has no udev).
link_label() {
    mkdir -p /dev/disk/by-label
    ln -sf "../../$2" "/dev/disk/by-label/$1"
}

# Asks the test to plug the stick in, waits for the volume with that label and mounts it
# read-only at the mount path, as a desktop does. Prints the device name (sdX).
plug_and_mount_stick() {
    label=$1
    mount_path=$2
    say "plug the stick"
    if ! wait_until 60 has_label "$label"; then
        say "no volume labelled $label appeared"
        return 1
    fi
    device=$(device_with_label "$label")
    name=${device##*/}
    link_label "$label" "$name"
    mkdir -p "$mount_path"
    mount -t vfat -o ro "$device" "$mount_path" || return 1
    echo "$name"
}
