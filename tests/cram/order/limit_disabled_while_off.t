Mia has used up her hour and is cut off. Limits go off, and somebody disables her limit meanwhile.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ holiday() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   use 60
  >   simrouter blocked
  >   utm_appctl activate off
  >   utm_appctl limit disable 1
  >   utm_appctl activate on
  >   simrouter blocked
  >   forget
  > }

The wrong way: the limit is enabled again, and she stays online. While limits were off, the disabled
limit left her flag as it was, and who has it is not blocked a second time.

  $ holiday
  Mia (profile 1) has no network
  the application guard is on
  nothing is blocked
  the application guard is on
  $ utm_appctl limit enable 1
  $ use 30
  $ utm_appctl usage 1 --json
  {"profile":1,"person":null,"today":90,"week":90,"month":90,"enabled":true,"limit":60,"extend":0,"left":0}
  $ journal
  $ simrouter blocked
  nothing is blocked
  the application guard is on

So the rest of her day is free. The next one begins without the flag.

  $ sleep_over
  $ journal
  notify unblock profile 1
  notify unblock profile 1
  $ use 60
  $ journal
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

The cure, while limits are on: enable, disable, enable. The disabling takes the flag away.

  $ holiday
  Mia (profile 1) has no network
  the application guard is on
  nothing is blocked
  the application guard is on
  $ utm_appctl limit enable 1
  $ utm_appctl limit disable 1
  $ utm_appctl limit enable 1
  $ journal
  notify unblock profile 1
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

From a household file:

  $ holiday
  Mia (profile 1) has no network
  the application guard is on
  nothing is blocked
  the application guard is on
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],"limit":"1h"}'
  $ utm_appctl apply
  Mia: limit enforced
  $ journal
  notify unblock profile 1
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on
