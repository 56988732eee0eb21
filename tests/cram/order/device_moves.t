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
  utm_appctl: note: 00:00:5E:00:53:2A is a device of profile 1, too; what blocks either of them blocks it
  $ utm_appctl device del 1 $console
  $ journal
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  lcsh apg acl reset 00:00:5E:00:53:2A
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
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

The right way: removals first.

  $ household
  $ utm_appctl device del 1 $console
  $ utm_appctl device add 2 $console
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

From a household file:

  $ household
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}]}' \
  >   '{"number":2,"name":"Ben","devices":[{"mac":"'$console'"}],
  >   "applications":[{"name":"games","rule":"blocked"}]}'
  $ utm_appctl apply
  Mia: device 00:00:5E:00:53:2A leaves
  Ben: device 00:00:5E:00:53:2A joins
  Mia: limit enforced
  Ben: limit enforced
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

And when it went the wrong way before:

  $ household
  $ utm_appctl device add 2 $console
  utm_appctl: note: 00:00:5E:00:53:2A is a device of profile 1, too; what blocks either of them blocks it
  $ utm_appctl device del 1 $console
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}]}' \
  >   '{"number":2,"name":"Ben","devices":[{"mac":"'$console'"}],
  >   "applications":[{"name":"games","rule":"blocked"}]}'
  $ utm_appctl apply
  Mia: limit enforced
  Ben: limit enforced
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
