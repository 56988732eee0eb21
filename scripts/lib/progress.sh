# shellcheck shell=bash
# For scripts that do something long. Sourced, not run.

# progress WHAT COMMAND...: runs a command and says what goes on. Its output is shown only when it
# fails, with the status of the command. On a terminal a line shows ninja's counts and the time that
# has passed; elsewhere a dot appears every two seconds. Either way one line stays, with the time.
progress() {
    local what=$1 log child status=0 started=$SECONDS dotted=$SECONDS gap=
    shift
    log=$(mktemp)
    "$@" >"$log" 2>&1 &
    child=$!
    # Also when this script is told to end: nothing that it started stays behind.
    # shellcheck disable=SC2064 # the values of now
    trap "kill $child 2>/dev/null; rm -f '$log'" EXIT
    [[ -t 1 ]] || printf '%s ' "$what"
    while kill -0 "$child" 2>/dev/null; do
        sleep 0.1
        if [[ -t 1 ]]; then
            progress_line "$what" "$log" $((SECONDS - started))
        elif ((SECONDS - dotted >= 2)); then
            printf .
            dotted=$SECONDS gap=' '
        fi
    done
    wait "$child" || status=$?
    if [[ -t 1 ]]; then printf '\r\033[K%s ' "$what"; fi
    printf '%s(%d s)\n' "$gap" $((SECONDS - started))
    if ((status != 0)); then
        cat "$log" >&2
        echo "This failed, see above: $what" >&2
    fi
    rm -f "$log"
    trap - EXIT
    return "$status"
}

# progress_line WHAT LOG SECONDS: the status line, with the last counts that ninja has printed.
progress_line() {
    local counts
    counts=$(tail -c 4000 "$2" | grep -aoE '^\[[0-9]+/[0-9]+\]' | tail -n 1 || true)
    printf '\r\033[K%s %s %d:%02d' "$1" "$counts" $(($3 / 60)) $(($3 % 60))
}
