# shellcheck shell=sh
# What the transcripts of the order of commands share: the household, and how it begins anew.

# shellcheck source=tests/cram/lib.sh
. "$SOURCE/tests/cram/lib.sh"

cat >/tmp/router/scenario <<SCENARIO
person mia 1 Mia
person ben 2 Ben
device tablet mia 02:00:00:00:00:1A Mia's tablet
device phone mia 02:00:00:00:00:1B Mia's phone
device console ben 02:00:00:00:00:2A Ben's console
app video 305 video
app games 306 games
SCENARIO

export tablet=02:00:00:00:00:1A
export phone=02:00:00:00:00:1B
export console=02:00:00:00:00:2A
usage=/tmp/ApplicationData/app_usage.json

# A new router and a new daemon, on Tuesday, 2030-01-01, at noon.
begin() {
    daemon stop
    rm -f "$router"/guard "$router"/rule.* "$router"/profile.* "$usage"
    clock set '2030-01-01 12:00'
    daemon start
    forget
}
