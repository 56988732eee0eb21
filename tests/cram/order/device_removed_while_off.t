Limits are off. Ben gets a policy that blocks games, and then his console goes.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ holiday() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 2
  >   utm_appctl device add 2 $console
  >   utm_appctl activate off
  >   utm_appctl policy create 2
  >   utm_appctl policy rule 2 306=block
  >   utm_appctl policy bind 2 2
  >   forget
  > }

The wrong way: it is removed while limits are off, and the engine does not hear of it. The binding
told the engine to block, though. With limits on, games are blocked on a device that is nobody's.

  $ holiday
  $ utm_appctl device del 2 $console
  $ journal
  $ utm_appctl activate on
  $ utm_appctl policy clear 2
  $ utm_appctl policy rule 2 306=block
  $ journal
  lcsh apg on
  notify status_changed 1 1
  $ sleep_over
  $ journal
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

The daemon has forgotten the device, so who removed it has to remember. The cure: it is added and
removed once more, while limits are on.

  $ utm_appctl device add 2 $console
  $ utm_appctl device del 2 $console
  $ journal
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  lcsh apg acl reset 00:00:5E:00:53:2A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way: on, then the removal.

  $ holiday
  $ utm_appctl activate on
  $ utm_appctl device del 2 $console
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl reset 00:00:5E:00:53:2A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

From a household file: what was applied last is remembered, so nobody else has to.

  $ begin
  $ wants '{"number":2,"name":"Ben","devices":[{"mac":"'$console'"}]}'
  $ utm_appctl apply
  limits are switched on
  Ben: added as person 2
  Ben: device 00:00:5E:00:53:2A joins
  Ben: limit enforced
  $ utm_appctl activate off
  $ utm_appctl policy create 2
  $ utm_appctl policy rule 2 306=block
  $ utm_appctl policy bind 2 2
  $ utm_appctl device del 2 $console
  $ utm_appctl activate on
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
  $ wants '{"number":2,"name":"Ben"}'
  $ utm_appctl apply
  Ben: limit only counted
  Ben: games free
  $ simrouter blocked
  nothing is blocked
  the application guard is on
