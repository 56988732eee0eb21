The console was Mia's and becomes Ben's. Games are blocked for Ben.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ household() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet $console
  >   utm_appctl profile add 2
  >   utm_appctl policy create 2
  >   utm_appctl policy bind 2 2
  >   utm_appctl policy rule 2 306=block
  >   forget
  > }

The wrong way: it joins Ben before it leaves Mia. Who leaves is reset, and the reset takes Ben's
blocks as well.

  $ household
  $ utm_appctl device add 2 $console
  utm_appctl: note: 02:00:00:00:00:2A is a device of profile 1, too; what blocks either of them blocks it
  $ utm_appctl device del 1 $console
  $ journal
  lcsh apg acl set 02:00:00:00:00:2A 306 0 18
  lcsh apg acl reset 02:00:00:00:00:2A
  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ sleep_over
  $ journal
  notify unblock profile 1
  notify unblock profile 2
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The cure: it leaves Ben too, and joins him again.

  $ utm_appctl device del 2 $console
  $ utm_appctl device add 2 $console
  $ journal
  lcsh apg acl reset 02:00:00:00:00:2A
  lcsh apg acl set 02:00:00:00:00:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (02:00:00:00:00:2A)
  the application guard is on

The right way: removals first.

  $ household
  $ utm_appctl device del 1 $console
  $ utm_appctl device add 2 $console
  $ journal
  lcsh apg acl reset 02:00:00:00:00:2A
  lcsh apg acl set 02:00:00:00:00:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (02:00:00:00:00:2A)
  the application guard is on
