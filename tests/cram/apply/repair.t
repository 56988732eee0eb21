With --repair everything is sent that could be out of step, the engine's guard included. Nobody is the
worse for it.

  $ . "$SOURCE/tests/cram/apply/household.sh"
  $ family
  $ utm_appctl apply >/dev/null
  $ use 60 305=10
  $ simrouter blocked
  Mia (profile 1) has no network
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  video (305) is blocked on Mia's phone (00:00:5E:00:53:1B)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on
  $ utm_appctl export /tmp/before.json
  $ forget
  $ utm_appctl apply --repair
  nothing to change; everything was sent again
  $ journal
  lcsh apg off
  notify status_changed 1 0
  notify unblock profile 1
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  lcsh apg acl del 00:00:5E:00:53:1B 305 0
  lcsh apg acl reset 00:00:5E:00:53:1A
  lcsh apg acl reset 00:00:5E:00:53:1B
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 305 0 18
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg acl reset 00:00:5E:00:53:1A
  lcsh apg acl reset 00:00:5E:00:53:1B
  notify unblock profile 1
  notify block profile 2
  notify unblock profile 2
  notify block profile 1
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 305 0 18
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 306 0 18
  $ simrouter blocked
  Mia (profile 1) has no network
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  video (305) is blocked on Mia's phone (00:00:5E:00:53:1B)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on

The figures are what they were.

  $ utm_appctl export /tmp/after.json
  $ for file in before after; do
  >   sed 's/"timestamp":[0-9]*/T/; s/{"app_id":\([0-9]*\),"action"/\n&/g' /tmp/$file.json >/tmp/$file
  > done
  $ diff /tmp/before /tmp/after

The daemon is killed while Mia is cut off, and started the next day. Nobody has told the router.

  $ daemon kill
  $ clock set '2030-01-02 12:00'
  $ daemon start
  $ simrouter blocked
  Mia (profile 1) has no network
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  video (305) is blocked on Mia's phone (00:00:5E:00:53:1B)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on
  $ utm_appctl apply --restore /tmp/after.json
  limits are switched on
  Mia: added as person 1
  Ben: added as person 2
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Ben: device 00:00:5E:00:53:2A joins
  Mia: limit 1h every day
  Ben: limit 2h every day
  Mia: limit enforced
  usage restored from /tmp/after.json
  Mia: video 10m, games blocked
  $ simrouter blocked
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on
  $ utm_appctl usage 1
  Mia
  today        0  0m
  this week   60  1h
  this month  60  1h
  limit       60  1h
  extend       0  0m
  left        60  1h
  $ utm_appctl apply
  nothing to do

So it is where somebody else has set the daemon up again: --repair finds it.

  $ use 60 305=10
  $ daemon kill
  $ clock set '2030-01-03 12:00'
  $ daemon start
  $ utm_appctl activate on
  $ utm_appctl profile add 1
  $ utm_appctl device add 1 $tablet $phone
  $ utm_appctl limit set 1 1h
  $ utm_appctl limit enable 1
  $ utm_appctl policy create 1
  $ utm_appctl policy bind 1 1
  $ utm_appctl policy rule 1 305=10m 306=block
  $ simrouter blocked
  Mia (profile 1) has no network
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  video (305) is blocked on Mia's phone (00:00:5E:00:53:1B)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on
  $ utm_appctl apply --repair
  Ben: added as person 2
  Ben: device 00:00:5E:00:53:2A joins
  Ben: limit 2h every day
  $ simrouter blocked
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on
  $ utm_appctl usage 1
  Mia
  today        0  0m
  this week    0  0m
  this month   0  0m
  limit       60  1h
  extend       0  0m
  left        60  1h
