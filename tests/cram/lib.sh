# shellcheck shell=sh
# What several transcripts share: a transcript that needs it begins with
#
#   . "$SOURCE/tests/cram/lib.sh"

log_file=/tmp/utm_log/utm_app_log
router=/tmp/router

# Gives the client's temporary folders one name.
plain_names() { sed 's,/[^ ]*/utm_appctl\.[^ /]*,/tmp/utm_appctl.XXXXXX,'; }

# Shows what was logged since the last time.
log() {
    ! [ -e "$log_file" ] || plain_names <"$log_file"
    rm -f "$log_file"
}

# Leaves out of journal and log what came before.
forget() { { journal && log; } >/dev/null; }

# usage_reply ONLINE [APP=MINUTES]...: what the statistics service says of so much use.
usage_reply() {
    printf '{"data":[{"type":"INTERNET","app_id":0,"total_time_usage":%d}' "$1"
    shift
    for app_minutes; do
        printf ',{"type":"APP","app_id":%d,"total_time_usage":%d}' \
            "${app_minutes%=*}" "${app_minutes#*=}"
    done
    echo ']}'
}

# use ONLINE [APP=MINUTES]...: a minute passes, after which every profile has used so much more.
use() {
    usage_reply "$@" >$router/reply.profile
    tick
    usage_reply 0 >$router/reply.profile
}

# Goes to the next day, at the same time.
sleep_over() {
    clock set "$(TZ=UTC0 date -d "$(clock | cut -d' ' -f2,3) tomorrow" '+%Y-%m-%d %H:%M')"
    tick
}

# Profile 3 with a tablet.
add_mia() {
    utm_appctl profile add 3
    utm_appctl device add 3 02:00:00:00:00:0A
}

# letters N: so many letters "a".
letters() { printf "%0$1d" 0 | tr 0 a; }

# Keeps the daemon's control socket busy until "release".
occupy() {
    echo rules >/tmp/signature
    rm -f $router/open
    echo "$router/open load /tmp/signature" >$router/gate
    journal >/dev/null
    utm_appctl signature load /tmp/signature &
    occupier=$!
    until journal | grep -q 'load /tmp/signature'; do sleep 0.01; done
}
release() {
    touch $router/open
    wait "$occupier"
    rm $router/gate
}

# A server at $fake that answers every request with the bytes of the file "answer" and keeps the
# requests in the file "requests".
fake=/tmp/fake_socket
start_fake_server() {
    python3 "$SOURCE/tests/cram/wire.py" serve $fake answer requests &
    fake_server=$!
    until [ -S $fake ]; do sleep 0.01; done
}
stop_fake_server() {
    kill "$fake_server"
    wait "$fake_server" 2>/dev/null || true
}

# reply STATUS [OFFSET=NUMBER]...: a reply as docs/protocol.md places its fields.
reply() { python3 "$SOURCE/tests/cram/wire.py" reply "$@"; }

# ask TYPE [OFFSET=NUMBER]...: a request that the client would not send.
ask() { python3 "$SOURCE/tests/cram/wire.py" ask /dev/utm_app_config_socket "$@"; }

# Every command of the client, as its help has them.
commands() {
    utm_appctl --help | sed -n 's/ on|off//; s/^  \([a-z][a-z]*\( [a-z][a-z]*\)\{0,1\}\) .*/\1/p'
}

# Writes the household of Mia, who may watch 45 minutes of video and play no games.
household() {
    cat >"$UTM_APPCTL_HOUSEHOLD" <<HOUSEHOLD
{ "applications": [ { "number": 305, "name": "video" }, { "number": 306, "name": "games" } ],
  "people": [ { "number": 3, "name": "Mia", "limit": "2h", "applications": [
      { "name": "video", "rule": "45m" }, { "name": "games", "rule": "blocked" } ] } ] }
HOUSEHOLD
}

# start_watch [OPTION]...: watches in the background. It looks once, and then whenever it is asked.
start_watch() {
    : >watched && shown=0
    env --default-signal=INT --block-signal=USR1 utm_appctl watch --interval 3600 "$@" >watched 2>messages &
    watcher=$!
}

# Like start_watch, and waits until the first look has been taken.
begin_watch() {
    utm_appctl debug on
    forget
    start_watch "$@"
    until grep -qs 'Receive cmd type=36' $log_file; do sleep 0.01; done
    utm_appctl debug off
    forget
}

# told LINES: has the watch look, waits for so many lines more and shows all that it told.
told() {
    kill -s USR1 "$watcher"
    await_told "$1"
}

# The same without asking it to look.
await_told() {
    until [ "$(wc -l <watched)" -ge $((shown + $1)) ]; do sleep 0.01; done
    tail -n +$((shown + 1)) watched
    shown=$(wc -l <watched)
}

# end_watch [SIGNAL]: ends it; shows its status and its messages.
end_watch() {
    kill -s "${1:-TERM}" "$watcher"
    wait "$watcher" || echo "status $?"
    tail -n +$((shown + 1)) watched
    cat messages
}
