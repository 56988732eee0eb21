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
  lcsh apg acl set 02:00:00:00:00:1A 305 0 18
  $ sleep_over
  $ journal
  notify unblock profile 1
  $ sleep_over
  $ journal
  notify unblock profile 1
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (02:00:00:00:00:1A)
  the application guard is on

When it has happened: the policy is cleared and gets its rules again.

  $ utm_appctl policy clear 1
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg acl reset 02:00:00:00:00:1A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way: the policy is bound while it is empty.

  $ afternoon
  $ utm_appctl policy bind 1 1
  $ utm_appctl policy rule 1 305=10m
  $ journal
  lcsh apg acl set 02:00:00:00:00:1A 305 0 18
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (02:00:00:00:00:1A)
  the application guard is on
  $ sleep_over
  $ journal
  notify unblock profile 1
  lcsh apg acl del 02:00:00:00:00:1A 305 0
  $ simrouter blocked
  nothing is blocked
  the application guard is on
