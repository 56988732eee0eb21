#!/bin/sh
# Run by the feed's tests on each of the built packages, once it is installed:
#
#   test.sh PACKAGE VERSION
#
# It leaves no process, socket or file behind, and keeps away from a daemon that runs already.

package=$1
version=${2%-r[0-9]*} # the programs do not know the package's own revision
socket=/dev/utm_app_config_socket
log=/tmp/utm_log

fail() {
    echo "$package: $*" >&2
    exit 1
}

# names_its_version PROGRAM
names_its_version() {
    said=$("$1" --version 2>&1) || fail "$1 --version fails: $said"
    [ "$said" = "$1 $version" ] || fail "$1 --version says \"$said\", not \"$1 $version\""
    echo "$said"
}

# By what they run: the init script has the same name.
daemons() {
    for process in /proc/[0-9]*; do
        [ "$(readlink "$process/exe")" != /usr/sbin/utm_appd ] || echo "${process#/proc/}"
    done
}

# SIGINT is lost while the daemon waits for a program, so it is sent again; for half a minute.
end_daemon() {
    seconds=0
    signal=INT
    while pids=$(daemons) && [ -n "$pids" ]; do
        [ "$seconds" -lt 30 ] || signal=KILL
        # shellcheck disable=SC2086 # numbers
        kill -$signal $pids 2>/dev/null
        sleep 1
        seconds=$((seconds + 1))
    done
    [ "$signal" != KILL ]
}

nothing_runs() {
    [ -z "$(daemons)" ] && [ ! -e "$socket" ]
}

clean_up() {
    end_daemon
    rm -f "$socket"
    [ -n "$log_was_there" ] || rm -rf "$log"
}

case $package in
utm_appctl)
    names_its_version utm_appctl
    ;;
utm_appctl-monitor)
    names_its_version utm_appctl
    # There need be no daemon for that.
    utm_appctl metrics 2>/dev/null | grep "^utm_up " || fail "the client does not find it"
    ;;
libqvutm-notify-none)
    [ -s /usr/lib/libqvutm_notify.so ] || fail "there is no library"
    ;;
utm_appd)
    nothing_runs || fail "a daemon runs already"
    log_was_there=
    [ ! -e "$log" ] || log_was_there=yes
    trap clean_up EXIT
    trap 'exit 1' HUP INT TERM
    names_its_version utm_appd
    nothing_runs || fail "utm_appd --version starts a daemon"

    # The whole way up and down: it links, binds its socket, answers, and ends when it is told to.
    # There need be no DPI engine for that.
    utm_appd || fail "it does not start"
    utm_appctl status | grep "limits *off" || fail "it does not answer"
    end_daemon || fail "it does not end"
    [ ! -e "$socket" ] || fail "it leaves its socket behind"
    ;;
*)
    fail "no such package"
    ;;
esac
