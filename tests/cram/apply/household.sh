# shellcheck shell=sh
# What the transcripts of `utm_appctl apply` share: the family, and its household file.

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

tablet=00:00:5E:00:53:1A
phone=00:00:5E:00:53:1B
console=00:00:5E:00:53:2A
export usage=/tmp/ApplicationData/app_usage.json
household=/tmp/household.json

# family [MIA'S LIMIT] [BEN'S LIMIT]
family() {
    cat >$household <<FAMILY
{ "applications": [ { "number": 305, "name": "video" }, { "number": 306, "name": "games" } ],
  "people": [
    { "number": 1, "name": "Mia",
      "devices": [ { "mac": "$tablet", "name": "Mia's tablet" }, { "mac": "$phone" } ],
      "limit": "${1:-1h}",
      "applications": [ { "name": "video", "rule": "10m" }, { "name": "games", "rule": "blocked" } ] },
    { "number": 2, "name": "Ben", "devices": [ { "mac": "$console" } ], "limit": "${2:-2h}",
      "enforced": false } ] }
FAMILY
}

# change SED-EXPRESSION: changes the household file.
change() { sed -i "$1" $household; }
