Mia is cut off, and then her phone becomes hers.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ evening() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   use 60
  >   utm_appctl debug on
  >   forget
  > }

The wrong way: nothing more. The event for the whole person is all that cuts a device off, and it
came before the phone did: the daemon knows no way to block a single one. (The simulated router
knows people only, so the journal has to show it.)

  $ evening
  $ utm_appctl device add 1 $phone
  $ log
  [socket] Receive cmd type=47
  [socket] Receive cmd type=51
  export to /tmp/utm_appctl.XXXXXX/usage.json success
  [socket] Receive cmd type=51
  export to /tmp/ApplicationData/app_usage.json success
  [socket] Receive cmd type=3
  [WARNING] __block_one_device_to_use_network is not implemented
  Add dev mac = 00:00:5E:00:53:1B to profile 1 success
  $ journal
  $ tick 10
  $ log
  $ journal

The cure: disable and enable. The router hears of her once more, and finds the phone.

  $ utm_appctl limit disable 1
  $ utm_appctl limit enable 1
  $ journal
  notify unblock profile 1
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

From a household file:

  $ evening
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"},{"mac":"'$phone'"}],
  >   "limit":"1h"}'
  $ utm_appctl apply
  Mia: device 00:00:5E:00:53:1B joins
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1B
  notify unblock profile 1
  notify block profile 1
