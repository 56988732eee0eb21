A household whose limits are off is set up all the same: they are on for a moment, since nobody
can see what the daemon has while they are off.

  $ . "$SOURCE/tests/cram/apply/household.sh"
  $ family
  $ change '1s/{/{ "limits": false,/'
  $ utm_appctl apply
  Mia: added as person 1
  Ben: added as person 2
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Ben: device 00:00:5E:00:53:2A joins
  Mia: limit 1h every day
  Ben: limit 2h every day
  Mia: limit enforced
  Mia: video 10m, games blocked
  $ utm_appctl status
  limits     off
  debug log  off
  $ simrouter blocked
  nothing is blocked
  the application guard is off: no application is held

Where the getters agree with what was applied last, nothing is switched.

  $ forget
  $ utm_appctl debug on
  $ utm_appctl apply
  nothing to do
  $ journal
  $ log | sort | uniq -c | sed 's/^ *//'
  2 [socket] Receive cmd type=27
  2 [socket] Receive cmd type=29
  2 [socket] Receive cmd type=31
  2 [socket] Receive cmd type=33
  2 [socket] Receive cmd type=35
  1 [socket] Receive cmd type=47

Limits go on, and off again.

  $ change '1s/false/true/'
  $ utm_appctl apply --dry-run
  utm_appctl: limits are off, so the daemon does not say what it has: devices and rules are taken to be as they were applied last
  limits are switched on
  (a dry run: nothing was changed)
  $ forget
  $ utm_appctl apply
  limits are switched on
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  lcsh apg acl del 00:00:5E:00:53:1B 305 0
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 306 0 18
  $ simrouter blocked
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on
  $ change '1s/true/false/'
  $ utm_appctl apply
  limits are switched off
  $ simrouter blocked
  nothing is blocked
  the application guard is off: no application is held
  $ utm_appctl apply
  nothing to do

A daemon that was started anew is seen by its getters.

  $ daemon stop
  $ daemon start
  $ utm_appctl apply
  Mia: added as person 1
  Ben: added as person 2
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Ben: device 00:00:5E:00:53:2A joins
  Mia: limit 1h every day
  Ben: limit 2h every day
  Mia: limit enforced
  Mia: video 10m, games blocked
  $ utm_appctl status
  limits     off
  debug log  off
