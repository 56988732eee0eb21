Mia has used up her hour and, within it, ten minutes of videos. Then somebody kills the daemon, or
it crashes. It releases nothing so, and the router goes on as it was told.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ household() {
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   utm_appctl policy create 1
  >   utm_appctl policy bind 1 1
  > }
  $ night() {
  >   begin
  >   household
  >   utm_appctl policy rule 1 305=10m
  >   use 60 305=10
  >   utm_appctl export $usage
  >   daemon kill
  >   clock set '2030-01-02 12:00'
  >   daemon start
  >   forget
  > }

The wrong way: the next day begins as for any fresh daemon. Nothing is used up, so nothing is
blocked, and what the daemon has not blocked it does not release.

  $ night
  $ household
  $ utm_appctl import $usage
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg on
  notify status_changed 1 1
  $ simrouter blocked
  Mia (profile 1) has no network
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on

The next midnight releases her, since it announces a new day for everybody with a device. Videos
have no flag: they stay blocked.

  $ sleep_over
  $ journal
  notify unblock profile 1
  $ sleep_over
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on

The cure for applications: the policy is cleared, although it is empty, once it is bound and her
devices are hers. The cure for the person: the daemon sends an unblock event only for whom it has
blocked. So a file with nothing but a day used up makes it block her; then the limit is disabled.

  $ cat >/tmp/used_up.json <<END
  > {"user_profile_list":[{"user_profile_id":1,"daily_used":1440}],"global_stat":[]}
  > END
  $ night
  $ household
  $ utm_appctl import /tmp/used_up.json
  $ utm_appctl limit disable 1
  $ utm_appctl policy clear 1
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  notify unblock profile 1
  lcsh apg acl reset 00:00:5E:00:53:1A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The rest is the order of a fresh daemon, as before; the usage file puts her minutes right.

  $ utm_appctl import $usage
  $ utm_appctl limit enable 1
  $ utm_appctl policy rule 1 305=10m
  $ journal
  $ utm_appctl usage 1
  today        0  0m
  this week   60  1h
  this month  60  1h
  limit       60  1h
  extend       0  0m
  left        60  1h
  $ simrouter blocked
  nothing is blocked
  the application guard is on

On the same evening, when she gets another hour meanwhile, no such file is needed. What she has used
is more than a limit of one minute, so today's weekday gets that, which blocks her, and then its own
again, which releases her. (A bonus would have to be cancelled first, and given again afterwards.)

  $ begin
  $ household
  $ use 60
  $ utm_appctl export $usage
  $ daemon kill
  $ daemon start
  $ household
  $ utm_appctl limit set 1 2h
  $ forget
  $ utm_appctl import $usage
  $ journal
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on
  $ utm_appctl weekday set 1 tuesday 1m
  $ utm_appctl weekday set 1 tuesday 2h
  $ journal
  notify block profile 1
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on

From a household file. What was applied last is remembered: whoever was in the daemon and no longer
is may still be blocked.

  $ begin
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],"limit":"1h",
  >   "applications":[{"name":"video","rule":"10m"}]}'
  $ utm_appctl apply >/dev/null
  $ use 60 305=10
  $ utm_appctl export $usage
  $ daemon kill
  $ clock set '2030-01-02 12:00'
  $ daemon start
  $ simrouter blocked
  Mia (profile 1) has no network
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ utm_appctl apply --restore $usage
  limits are switched on
  Mia: added as person 1
  Mia: device 00:00:5E:00:53:1A joins
  Mia: limit 1h every day
  Mia: limit enforced
  usage restored from /tmp/ApplicationData/app_usage.json
  Mia: video 10m
  $ simrouter blocked
  nothing is blocked
  the application guard is on

Where nothing is remembered, as after commands of somebody else, it takes a repair:

  $ night
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],"limit":"1h",
  >   "applications":[{"name":"video","rule":"10m"}]}'
  $ utm_appctl apply --repair --restore $usage
  limits are switched on
  Mia: added as person 1
  Mia: device 00:00:5E:00:53:1A joins
  Mia: limit 1h every day
  Mia: limit enforced
  usage restored from /tmp/ApplicationData/app_usage.json
  Mia: video 10m
  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ utm_appctl usage 1 --json
  {"profile":1,"person":"Mia","today":0,"week":60,"month":60,"enabled":true,"limit":60,"extend":0,"left":60}
