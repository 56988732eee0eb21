The daemon writes its usage file every thirty minutes, counted from the last export, whoever asked
for it and wherever it went.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ afternoon() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  > }
  $ minutes_in() { grep -o '"daily_used": *[0-9]*' $1 | head -1; }

By itself it saves an hour of use with half an hour's delay at most.

  $ afternoon
  $ for i in 1 2 3; do use 20; tick 19; done
  $ minutes_in $usage
  "daily_used":40

The wrong way: somebody exports to a file of their own every twenty minutes. The daemon never saves.

  $ afternoon
  $ for i in 1 2 3; do use 20; tick 19; utm_appctl export /tmp/mine.json; done
  $ minutes_in /tmp/mine.json
  "daily_used":60
  $ minutes_in $usage

The cure: whoever exports has the daemon export to its own path as well.

  $ afternoon
  $ for i in 1 2 3; do
  >   use 20; tick 19
  >   utm_appctl export /tmp/mine.json
  >   utm_appctl export $usage
  > done
  $ minutes_in $usage
  "daily_used":60

"apply" looks at an export, and does that by itself:

  $ afternoon
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}]}'
  $ for i in 1 2 3; do use 20; tick 19; utm_appctl apply; done
  Mia: limit enforced
  nothing to do
  nothing to do
  $ minutes_in $usage
  "daily_used":60

So does "report", every twenty minutes as well as once:

  $ afternoon
  $ for i in 1 2 3; do use 20; tick 19; utm_appctl report >/tmp/page.html; done
  $ minutes_in $usage
  "daily_used":60

But a file that nobody has imported yet stays, whatever has been counted since the start:

  $ afternoon
  $ use 50
  $ utm_appctl export $usage
  $ daemon stop
  $ daemon start
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}]}'
  $ utm_appctl apply >/dev/null
  $ use 1
  $ utm_appctl apply
  nothing to do
  $ utm_appctl report >/tmp/page.html
  $ minutes_in $usage
  "daily_used":50
