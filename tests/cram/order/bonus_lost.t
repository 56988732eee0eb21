Mia has an hour a day, and today half an hour more. She has used an hour and ten minutes when the
daemon restarts.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ evening() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   utm_appctl extend add 1 30m
  >   use 70
  >   utm_appctl export $usage
  >   daemon stop
  >   daemon start
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   forget
  > }

The wrong way: only the usage file. The bonus stands in it, but an import does not read it: she is
cut off within her bonus, for the rest of the day.

  $ evening
  $ grep -o '"daily_extend": *[0-9]*' $usage
  "daily_extend":30
  $ utm_appctl import $usage
  $ utm_appctl extend show 1
  0 (0m)
  $ journal
  notify block profile 1
  $ tick 10
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

The cure when it has happened: the bonus again. She was offline for a while.

  $ utm_appctl extend add 1 30m
  $ journal
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way: the bonus before the import, from the file, when that is of today.

  $ evening
  $ utm_appctl extend add 1 30m
  $ utm_appctl import $usage
  $ utm_appctl extend show 1
  30 (30m)
  $ journal
  $ use 20
  $ journal
  notify block profile 1

From a household file:

  $ evening
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],"limit":"1h"}'
  $ utm_appctl apply --restore $usage
  Mia: bonus 30m
  usage restored from /tmp/ApplicationData/app_usage.json
  $ journal
  $ utm_appctl extend show 1
  30 (30m)
