Videos are Mia's for ten minutes a day. Today they are used up, and then the daemon restarts.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ evening() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl policy create 1
  >   utm_appctl policy bind 1 1
  >   utm_appctl policy rule 1 305=10m
  >   use 20 305=10
  >   utm_appctl export $usage
  >   daemon stop
  >   daemon start
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl policy create 1
  >   utm_appctl policy bind 1 1
  >   forget
  > }

The wrong way: first the rules, then the import. It blocks what has been used up, but without a
flag, and midnight releases only what has one.

  $ evening
  $ utm_appctl policy rule 1 305=10m
  $ utm_appctl import $usage
  $ journal
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  $ sleep_over
  $ journal
  notify unblock profile 1
  $ sleep_over
  $ journal
  notify unblock profile 1
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on

Tomorrow's unused ten minutes, or more of them, release nothing either: as far as the daemon knows
nothing is blocked.

  $ utm_appctl policy rule 1 305=20m
  $ journal
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on

The cure, whoever has done it and however long ago: the policy is cleared, which resets her devices,
and gets its rules again.

  $ utm_appctl policy clear 1
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

On the same evening, too: what is used up is blocked again, with its flag.

  $ evening
  $ utm_appctl policy rule 1 305=10m
  $ utm_appctl import $usage
  $ forget
  $ utm_appctl policy clear 1
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  $ sleep_over
  $ journal
  notify unblock profile 1
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way from the start: the import comes while the policy is empty, and then the rules.

  $ evening
  $ utm_appctl import $usage
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ sleep_over
  $ journal
  notify unblock profile 1
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  $ simrouter blocked
  nothing is blocked
  the application guard is on

From a household file, when somebody else has done it and midnight has passed:

  $ evening
  $ utm_appctl policy rule 1 305=10m
  $ utm_appctl import $usage
  $ sleep_over
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],
  >   "applications":[{"name":"video","rule":"10m"}]}'
  $ utm_appctl apply --repair
  Mia: limit enforced
  $ simrouter blocked
  nothing is blocked
  the application guard is on

And after the restart, instead of all these commands:

  $ evening
  $ daemon stop
  $ daemon start
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],
  >   "applications":[{"name":"video","rule":"10m"}]}'
  $ utm_appctl apply --restore $usage
  limits are switched on
  Mia: added as person 1
  Mia: device 00:00:5E:00:53:1A joins
  Mia: limit enforced
  usage restored from /tmp/ApplicationData/app_usage.json
  Mia: video 10m
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ sleep_over
  $ simrouter blocked
  nothing is blocked
  the application guard is on
