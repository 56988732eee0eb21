The feature switch turns the router's guard and tells the front end. Turned to where it stands, it
does nothing but say so.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ echo 'of an earlier life' >/tmp/ApplicationData/app_usage.json
  $ utm_appctl debug on
  $ utm_appctl activate off
  $ journal
  $ utm_appctl activate on
  $ journal
  lcsh apg on
  notify status_changed 1 1
  $ utm_appctl activate on
  $ journal
  $ utm_appctl activate off
  $ journal
  lcsh apg off
  notify status_changed 1 0
  $ log
  [socket] Receive cmd type=39
  Set activate from 0 to 0
  [socket] Receive cmd type=39
  Set activate from 0 to 1
  [socket] Receive cmd type=39
  Set activate from 1 to 1
  [socket] Receive cmd type=39
  Set activate from 1 to 0

Switched off it lifts every block, and switched on it puts them back. Here a profile with two devices
has used up its time and that of an application.

  $ use_everything_up() {
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 02:00:00:00:00:01 02:00:00:00:00:02
  >   utm_appctl limit enable 1
  >   utm_appctl limit set 1 60
  >   utm_appctl policy create 1
  >   utm_appctl policy rule 1 305=10
  >   utm_appctl policy bind 1 1
  >   use 60 305=10 400=10
  > }
  $ utm_appctl activate on
  $ use_everything_up
  $ forget
  $ utm_appctl activate off
  $ journal
  lcsh apg off
  notify status_changed 1 0
  notify unblock profile 1
  lcsh apg acl del 02:00:00:00:00:01 305 0
  lcsh apg acl del 02:00:00:00:00:02 305 0
  lcsh apg acl reset 02:00:00:00:00:01
  lcsh apg acl reset 02:00:00:00:00:02
  $ utm_appctl activate on
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  lcsh apg acl set 02:00:00:00:00:01 305 0 18
  lcsh apg acl set 02:00:00:00:00:02 305 0 18

A command that fails is logged with its wait status, and the others are run all the same.

  $ printf '1 acl set 02:00:00:00:00:01\n3 acl del 02:00:00:00:00:02\n' >/tmp/router/fail
  $ forget
  $ utm_appctl activate off
  $ utm_appctl activate on
  $ log
  [socket] Receive cmd type=39
  send event: unblock profile 1 to use network
  Command lcsh apg acl del 02:00:00:00:00:02 305 0 return 768 != 0
  Set activate from 1 to 0
  [socket] Receive cmd type=39
  send event: block profile 1 to use network
  Command lcsh apg acl set 02:00:00:00:00:01 305 0 18 return 256
  Set activate from 0 to 1
  $ journal
  lcsh apg off
  notify status_changed 1 0
  notify unblock profile 1
  lcsh apg acl del 02:00:00:00:00:01 305 0
  lcsh apg acl del 02:00:00:00:00:02 305 0
  lcsh apg acl reset 02:00:00:00:00:01
  lcsh apg acl reset 02:00:00:00:00:02
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  lcsh apg acl set 02:00:00:00:00:01 305 0 18
  lcsh apg acl set 02:00:00:00:00:02 305 0 18

While it is off nothing is blocked.

  $ daemon stop
  $ forget
  $ daemon start
  $ use_everything_up
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ journal --queries
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893495600,"e":1893495600}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893495600,"e":1893495660,"mac":"020000000001 020000000002 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893495600,"e":1893495660}'
