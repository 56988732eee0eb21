# shellcheck shell=sh
# What the transcripts of the order of commands share: the household, and how it begins anew.

# shellcheck source=tests/cram/lib.sh
. "$SOURCE/tests/cram/lib.sh"

cat >/tmp/router/scenario <<SCENARIO
person mia 1 Mia
person ben 2 Ben
device tablet mia 00:00:5E:00:53:1A Mia's tablet
device phone mia 00:00:5E:00:53:1B Mia's phone
device console ben 00:00:5E:00:53:2A Ben's console
app video 305 video
app games 306 games
SCENARIO

export tablet=00:00:5E:00:53:1A
export phone=00:00:5E:00:53:1B
export console=00:00:5E:00:53:2A
usage=/tmp/ApplicationData/app_usage.json
household=/tmp/household.json

# wants PERSON...: the household file, for "utm_appctl apply".
wants() {
    printf '{"applications":[{"number":305,"name":"video"},{"number":306,"name":"games"}],
        "people":[' >$household
    separator=
    for person; do
        printf '%s\n%s' "$separator" "$person" >>$household
        separator=,
    done
    echo ']}' >>$household
}

# A new router and a new daemon, on Tuesday, 2030-01-01, at noon.
begin() {
    daemon stop
    rm -f "$router"/guard "$router"/rule.* "$router"/profile.* "$usage" $household
    rm -rf /tmp/utm_appctl
    clock set '2030-01-01 12:00'
    daemon start
    forget
}
