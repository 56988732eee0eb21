Limits are off. Ben gets a policy that blocks games, and then somebody thinks better of it.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ holiday() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 2
  >   utm_appctl device add 2 $console
  >   utm_appctl activate off
  >   utm_appctl policy create 2
  >   utm_appctl policy rule 2 306=block
  >   forget
  >   utm_appctl policy bind 2 2
  >   journal
  > }

The wrong way: the rule is removed while limits are off. The binding told the engine, the removal
does not. With limits on there are games blocked and no rule.

  $ holiday
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ utm_appctl policy rule 2 306=remove
  $ utm_appctl activate on
  $ journal
  lcsh apg on
  notify status_changed 1 1
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
  $ sleep_over
  $ journal
  notify unblock profile 2
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

Another removal does not help: the daemon has no such rule.

  $ utm_appctl policy rule 2 306=remove
  $ journal

The cure: the policy is cleared, which resets his devices, and gets the rules that it should have.

  $ utm_appctl policy clear 2
  $ utm_appctl policy rule 2 305=10m
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:2A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way: on, then the removal.

  $ holiday
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ utm_appctl activate on
  $ utm_appctl policy rule 2 306=remove
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl del 00:00:5E:00:53:2A 306 0
  $ simrouter blocked
  nothing is blocked
  the application guard is on

From a household file, by a repair: nothing that the daemon says shows what the engine still has.

  $ holiday
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ utm_appctl policy rule 2 306=remove
  $ wants '{"number":2,"name":"Ben","devices":[{"mac":"'$console'"}]}'
  $ utm_appctl apply
  limits are switched on
  Ben: limit enforced
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
  $ utm_appctl apply --repair
  nothing to change; everything was sent again
  $ simrouter blocked
  nothing is blocked
  the application guard is on
