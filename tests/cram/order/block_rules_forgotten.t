Games are blocked for Ben, outright. Limits go off, and on again.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ household() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 2
  >   utm_appctl device add 2 $console
  >   utm_appctl policy create 2
  >   utm_appctl policy bind 2 2
  >   utm_appctl policy rule 2 306=block
  >   forget
  > }

The wrong way: nothing more. Off resets the devices of whoever has a policy. On blocks again what
has a flag, and an application that nobody has used has no record to keep one in.

  $ household
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
  $ utm_appctl activate off
  $ utm_appctl activate on
  $ journal
  lcsh apg off
  notify status_changed 1 0
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg on
  notify status_changed 1 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ sleep_over
  $ journal
  notify unblock profile 2
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The cure, at any time: the rules again.

  $ utm_appctl policy rule 2 306=block
  $ journal
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

The right way: they come after every "on".

  $ household
  $ utm_appctl activate off
  $ utm_appctl activate on
  $ utm_appctl policy rule 2 306=block
  $ journal
  lcsh apg off
  notify status_changed 1 0
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
  $ sleep_over
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on

From a household file: once more after every "on".

  $ household
  $ wants '{"number":2,"name":"Ben","devices":[{"mac":"'$console'"}],
  >   "applications":[{"name":"games","rule":"blocked"}]}'
  $ utm_appctl activate off
  $ utm_appctl activate on
  $ utm_appctl apply
  Ben: limit enforced
  $ journal
  lcsh apg off
  notify status_changed 1 0
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl set 00:00:5E:00:53:2A 306 0 18
  $ simrouter blocked
  games (306) is blocked on Ben's console (00:00:5E:00:53:2A)
  the application guard is on
