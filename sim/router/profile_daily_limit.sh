#!/bin/sh
# A fake of the router's script of the same name. It knows the one command line that the daemon
# issues: -C and a profile id.

refuse() {
    line="profile_daily_limit.sh $(printf %s "$*" | tr '\n' '?')"
    if [ -n "${UTM_SIM_DIR:-}" ]; then
        printf 'refused %s\n' "$line" >>"$UTM_SIM_DIR/journal"
    fi
    echo "$line: no such command" >&2
    exit 64
}

if [ $# -ne 2 ] || [ "$1" != -C ]; then
    refuse "$@"
fi
case ${2#-} in
'' | *[!0-9]*) refuse "$@" ;;
esac
exec "${0%/*}/simrouter" accept "profile_daily_limit.sh -C $2"
