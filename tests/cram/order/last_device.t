Mia is cut off. Her tablet, the only device that she has, is given away.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ evening() {
  >   begin
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 $tablet
  >   utm_appctl limit set 1 1h
  >   utm_appctl limit enable 1
  >   use 60
  >   forget
  > }

The wrong way: first the device, then the person. A profile without devices is announced to nobody,
when it is deleted as little as at midnight.

  $ evening
  $ utm_appctl device del 1 $tablet
  $ utm_appctl profile del 1 --yes
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  profile_daily_limit.sh -C 1
  $ sleep_over
  $ journal
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

The next profile 1 begins cut off, although it has used nothing. Its first midnight ends that, when
it has a device by then.

  $ utm_appctl profile add 1
  $ utm_appctl device add 1 $tablet
  $ journal
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on
  $ sleep_over
  $ journal
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on

It is no better when she stays, without a device.

  $ evening
  $ utm_appctl device del 1 $tablet
  $ sleep_over
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  profile_daily_limit.sh -C 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

The right way: she is deleted whole.

  $ evening
  $ utm_appctl profile del 1 --yes
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on

When she stays: her limit is disabled before the device goes, and enabled when she has one again.

  $ evening
  $ utm_appctl limit disable 1
  $ utm_appctl device del 1 $tablet
  $ journal
  notify unblock profile 1
  lcsh apg acl reset 00:00:5E:00:53:1A
  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ utm_appctl device add 1 $phone
  $ utm_appctl limit enable 1
  $ journal
  notify block profile 1

Enabled earlier, it would cut her off again, without a device, and again nothing would end that.

  $ evening
  $ utm_appctl limit disable 1
  $ utm_appctl device del 1 $tablet
  $ utm_appctl limit enable 1
  $ sleep_over
  $ journal
  notify unblock profile 1
  lcsh apg acl reset 00:00:5E:00:53:1A
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  the application guard is on

From a household file, when she is of it no more, and when she has no device:

  $ evening
  $ wants
  $ utm_appctl apply --prune
  person 1: deleted
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1A
  notify unblock profile 1
  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ evening
  $ wants '{"number":1,"name":"Mia","limit":"1h"}'
  $ utm_appctl apply
  Mia: device 00:00:5E:00:53:1A leaves
  Mia: limit only counted
  $ journal
  notify unblock profile 1
  lcsh apg acl reset 00:00:5E:00:53:1A
  $ simrouter blocked
  nothing is blocked
  the application guard is on

When it went the wrong way before, by a repair:

  $ evening
  $ utm_appctl device del 1 $tablet
  $ wants '{"number":1,"name":"Mia","limit":"1h"}'
  $ utm_appctl apply --repair
  Mia: limit only counted
  $ simrouter blocked
  nothing is blocked
  the application guard is on
