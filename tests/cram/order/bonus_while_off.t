Mia has used up her hour and is cut off. While limits are off she gets more time.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ evening() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   use 60
  >   utm_appctl activate off
  >   forget
  > }

The wrong way: the bonus, then on. Her flag is as it was, and on cuts off who has one, without a
look at the time. She has half an hour left, and no network until midnight.

  $ evening
  $ utm_appctl extend add 1 30m
  $ utm_appctl activate on
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  $ utm_appctl usage 1
  today       60   1h
  this week   60   1h
  this month  60   1h
  limit       60   1h
  extend      30  30m
  left        30  30m
  $ tick 10
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on
  $ sleep_over
  $ simrouter blocked
  nothing is blocked
  the application guard is on

A higher limit does the same.

  $ evening
  $ utm_appctl limit set 1 2h
  $ utm_appctl activate on
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

The cure, while limits are on: disable and enable.

  $ utm_appctl limit disable 1
  $ utm_appctl limit enable 1
  $ journal
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on

The right way: on, then the bonus.

  $ evening
  $ utm_appctl activate on
  $ utm_appctl extend add 1 30m
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on

From a household file:

  $ evening
  $ utm_appctl extend add 1 30m
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],"limit":"1h"}'
  $ utm_appctl apply
  limits are switched on
  Mia: no longer cut off
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on
