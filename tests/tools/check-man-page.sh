#!/bin/sh
# Checks a manual page.
#   check-man-page.sh lint MANDOC PAGE  mandoc's lint at warning level: any message, or a
#                                       failing mandoc, fails the check
#   check-man-page.sh render MAN PAGE   man formats the page: it must succeed and give a
#                                       text holding a SYNOPSIS
set -u
check=$1
tool=$2
page=$3
if [ ! -f "$page" ]; then
    echo "no manual page at $page" >&2
    exit 1
fi
case $check in
lint)
    output=$("$tool" -T lint -W warning "$page" 2>&1)
    status=$?
    if [ -n "$output" ] || [ "$status" -ne 0 ]; then
        printf '%s\n' "$output" >&2
        echo "mandoc found problems in $page (exit status $status)" >&2
        exit 1
    fi
    ;;
render)
    output=$(MANPAGER=cat PAGER=cat "$tool" "$page")
    status=$?
    if [ "$status" -ne 0 ]; then
        echo "man could not format $page (exit status $status)" >&2
        exit 1
    fi
    if ! printf '%s\n' "$output" | grep -q SYNOPSIS; then
        printf '%s\n' "$output" >&2
        echo "the formatted $page holds no SYNOPSIS" >&2
        exit 1
    fi
    ;;
*)
    echo "unknown check $check: lint or render" >&2
    exit 1
    ;;
esac
