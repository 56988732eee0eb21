# shellcheck shell=bash
# Functions that tell an evening: they print rows, type what Ana types, show what comes of it, and
# look at the router.
# Sourced in a sandbox by a script that sets "slot", the hundredths of a second for a line, and
# "now", the time at which it begins.

# What reads from a pipe may set variables and end the script.
shopt -s lastpipe
# The caller's terminal may be a wide one.
export COLUMNS=80
slot=${slot:-0}

declare -A colour=()
if [[ -t 1 && -z ${NO_COLOR-} ]]; then
    colour=([Ana]=$'\e[32m' [daemon]=$'\e[33m' [router]=$'\e[36m' [usage]=$'\e[35m'
        [system]=$'\e[34m' [title]=$'\e[1m' [meaning]=$'\e[2m' [none]=$'\e[0m')
fi
margin='               ' title='' next='' hushed='' typed=0

fail() {
    echo "expected: $1" >&2
    exit 1
}

at_end() {
    local status=$?
    # 130: somebody pressed Ctrl-C.
    if ((status == 0 || status == 130)); then return; fi
    if [[ $title ]]; then echo "This scene did not happen as told: $title" >&2; fi
    exit 1
}
trap at_end EXIT
trap 'exit 130' INT

# Waits for the next line's slot. What daemon and client need counts against it, but an eye needs a
# moment, too. The shell's own clock is the daemon's, and stands still.
pause() {
    local up wait
    if ((slot == 0)); then return; fi
    read -r up _ </proc/uptime
    up=$((10#${up/./}))
    next=$((${next:-$up} + slot))
    wait=$((next - up > 5 ? next - up : 5))
    printf -v wait '%d.%02d' $((wait / 100)) $((wait % 100))
    sleep "$wait"
}

# say WHO TEXT [MEANING]: a row. A meaning for which there is no room goes below.
say() {
    local meaning=${3-} gap='  '
    if ((${#margin} + ${#2} + ${#meaning} + 4 > 100)); then gap=$'\n'$margin; fi
    if [[ $meaning ]]; then meaning="$gap${colour[meaning]-}($meaning)${colour[none]-}"; fi
    printf '%s  %s%-6s%s  %s\n' "$now" "${colour[$1]-}" "$1" "${colour[none]-}" "$2$meaning"
    pause
}

scene() {
    title=$1
    printf '\n%s\n' "${colour[title]-}$title${colour[none]-}"
    pause
}

# explain LINE: what it means that this line reached the router, in REPLY.
explain() {
    local verb mac id
    read -r _ _ _ verb mac id _ <<<"$1"
    case $1 in
    'notify block profile '*) REPLY="${person[verb]} is offline" ;;
    'notify unblock profile '*) REPLY="${person[verb]} may go online" ;;
    'lcsh apg acl set '*) REPLY="no ${app[id]} on ${device[$mac]}" ;;
    'lcsh apg acl del '*) REPLY="${device[$mac]} may use ${app[id]} again" ;;
    'lcsh apg acl reset '*) REPLY="no rule left for ${device[$mac]}" ;;
    *) REPLY='' ;;
    esac
}

# Shows the sandbox's news, read from standard input, without the requests in the log: Ana's rows
# have them.
show_news() {
    local row last='' times=0
    while IFS= read -r row; do
        if [[ $row != "$last" ]]; then
            show_repeated "$times" "$last"
            last=$row times=0
        fi
        times=$((times + 1))
    done
    show_repeated "$times" "$last"
}

# show_repeated TIMES ROW: one piece of news, which came so often in a row.
show_repeated() {
    local at who line
    read -r at who line <<<"$2"
    if [[ $line == refused\ * ]]; then fail "the router knows: $line"; fi
    if [[ $1 == 0 || $hushed || $line == '[socket]'* ]]; then return; fi
    now=$at REPLY=''
    if [[ $who == router ]]; then explain "$line"; fi
    if (($1 > 1)); then REPLY+="${REPLY:+; }$1 times"; fi
    say "$who" "$line" "$REPLY"
}

pass_until() {
    tick --news until "$1" | show_news
    now=$1
}

# asks LINE [MEANING]: Ana types a command line, which has to succeed without a complaint. Its
# answer is shown, and left in REPLY.
asks() {
    local answer line status=0
    typed=$((typed + 1))
    if [[ ! $hushed ]]; then say Ana "\$ $1" "${2-}"; fi
    answer=$(eval "$1" 2>/tmp/complaint) || status=$?
    if [[ $status != 0 || -s /tmp/complaint ]]; then
        fail "success without a complaint: $1$(sed '1s/^/\n/' /tmp/complaint)"
    fi
    if [[ ! $hushed ]]; then
        while [[ $answer ]] && IFS= read -r line; do
            echo "$margin$line"
            pause
        done <<<"$answer"
        news | show_news
    fi
    REPLY=$answer
}

# types LINE [MEANING]: the same, where no answer means success.
types() {
    asks "$@"
    if [[ $REPLY ]]; then fail "no answer: $1"; fi
}

# is_blocked LINE: whether "simrouter blocked" says so. The router has to heed its rules, or else
# every "! is_blocked" would hold.
is_blocked() {
    local state
    state=$(simrouter blocked) || fail 'simrouter says what is blocked'
    [[ $state == *'the application guard is on' ]] || fail 'the application guard is on'
    [[ $state == *"$1"* ]]
}

# ask_usage ID: a person's figures, in figure, and today's minutes by application, in minutes.
ask_usage() {
    local name json
    json=$(utm_appctl usage "$1" --json) || fail "utm_appctl tells ${person[$1]}'s usage"
    for name in today limit extend enabled; do
        [[ $json =~ \"$name\":([a-z0-9]+) ]] || fail "$name is in utm_appctl's $json"
        figure[$name]=${BASH_REMATCH[1]}
    done
    json=$(utm_appctl usage "$1" --apps --json) || fail "utm_appctl tells what ${person[$1]} used"
    [[ $json == *'"applications":['* ]] || fail "a list is in utm_appctl's $json"
    minutes=()
    while [[ $json =~ \"app\":([0-9]+),[^\}]*\"minutes\":([0-9]+)(.*) ]]; do
        minutes[BASH_REMATCH[1]]=${BASH_REMATCH[2]} json=${BASH_REMATCH[3]}
    done
}

# clock_text MINUTES: in REPLY.
clock_text() { printf -v REPLY '%d:%02d' $(($1 / 60)) $(($1 % 60)); }

show_progress() {
    local id app_id text apps whole bar
    for id in "${!person[@]}"; do
        ask_usage "$id"
        clock_text "${figure[today]}"
        text="${person[id]}: $REPLY" apps=''
        if [[ ${figure[enabled]} == true ]]; then
            whole=$((figure[limit] + figure[extend]))
            printf -v bar '%*s' $((figure[today] < whole ? 20 * figure[today] / whole : 20)) ''
            printf -v bar '%-20s' "${bar// /#}"
            clock_text "$whole"
            text+=" of $REPLY [${bar// /.}]"
        fi
        for app_id in "${!minutes[@]}"; do
            clock_text "${minutes[app_id]}"
            apps+="${apps:+, }${app[app_id]} $REPLY"
        done
        say usage "$text" "${apps:--}"
    done
}

# The household, as its scenario has it.
declare -A device=() figure=()
person=() app=() minutes=()
while read -r what _ id name; do
    case $what in
    person) person[id]=$name ;;
    app) app[id]=$name ;;
    device) device[${name%% *}]=${name#* } ;;
    esac
done <"$UTM_SIM_DIR/scenario"
