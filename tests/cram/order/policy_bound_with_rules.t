Mia gets a policy when she has used videos for ten minutes already.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ afternoon() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   use 20 305=10
  >   utm_appctl policy create 1
  >   forget
  > }

The wrong way: the policy has its rules when it is bound. The binding blocks, but without a flag,
and midnight releases only what has one.

  $ afternoon
  $ utm_appctl policy rule 1 305=10m
  $ utm_appctl policy bind 1 1
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

When it has happened: the policy is cleared and gets its rules again.

  $ utm_appctl policy clear 1
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way: the policy is bound while it is empty.

  $ afternoon
  $ utm_appctl policy bind 1 1
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

From a household file, when somebody else has done it:

  $ afternoon
  $ utm_appctl policy rule 1 305=10m
  $ utm_appctl policy bind 1 1
  $ sleep_over
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],
  >   "applications":[{"name":"video","rule":"10m"}]}'
  $ utm_appctl apply --repair
  Mia: limit enforced
  $ simrouter blocked
  nothing is blocked
  the application guard is on

And in the right way:

  $ afternoon
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],
  >   "applications":[{"name":"video","rule":"10m"}]}'
  $ utm_appctl apply
  Mia: limit enforced
  Mia: video 10m
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ sleep_over
  $ simrouter blocked
  nothing is blocked
  the application guard is on
