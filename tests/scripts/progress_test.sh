#!/usr/bin/env bash
# What scripts show while they do something long, and what they show when it fails.
set -euo pipefail

# shellcheck source=scripts/lib/progress.sh
. "$(dirname "$0")/../../scripts/lib/progress.sh"

failed=0
# expect WHAT WANTED SAID, the latter two as patterns of bash's [[ ]]
expect() {
    # shellcheck disable=SC2053 # a pattern
    [[ $3 == $2 ]] && return
    printf '%s\nexpected: %s\nsaid: %s\n' "$1" "$2" "$3" >&2
    failed=1
}

# shellcheck disable=SC2317 # progress calls it
breaks() {
    echo "a line of the step"
    return 3
}

expect "a step that is quick says that it is over" 'Looking *[(][0-9]* s[)]' "$(progress Looking echo found)"
expect "a longer step shows dots" 'Waiting .*[(][0-9]* s[)]' "$(progress Waiting sleep 2.5)"
status=0
said=$(progress Building breaks 2>&1) || status=$?
expect "a step that fails shows what it said" "Building *[(][0-9]* s[)]
a line of the step
This failed, see above: Building" "$said"
expect "and keeps its status" 3 "$status"

printf '[1/20] one\n[12/20] another\n' >"${log:=$(mktemp)}"
expect "the status line has ninja's counts and the time" $'\r\e[KBuilding \\[12/20\\] 1:05' \
    "$(progress_line Building "$log" 65)"
rm "$log"
exit $failed
