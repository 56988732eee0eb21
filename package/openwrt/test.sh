#!/bin/sh
# Run by the feed's tests on the built packages: test.sh PACKAGE VERSION

case "$1" in
utm_appctl)
    utm_appctl --version | grep -F "$2"
    ;;
utm_appd)
    # The whole way up and down: it links, binds its socket, answers, and ends when it is told to.
    # There need be no DPI engine for that.
    utm_appd_watch run &
    utm_appd_watch wait && utm_appctl status | grep "limits *off" &&
        utm_appd_watch stop && ! utm_appctl ping 2>/dev/null
    ;;
*)
    echo "no such package: $1" >&2
    exit 1
    ;;
esac
