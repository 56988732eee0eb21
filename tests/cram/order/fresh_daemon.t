All that a fresh daemon needs, in an order that goes wrong nowhere. Mia has an hour a day and half
an hour of bonus, and has used all but twenty minutes. Videos are used up, games are blocked.

  $ . "$SOURCE/tests/cram/order/household.sh"
  $ begin
  $ utm_appctl activate on
  $ utm_appctl profile add 1
  $ utm_appctl device add 1 $tablet
  $ utm_appctl limit set 1 1h
  $ utm_appctl limit enable 1
  $ utm_appctl extend add 1 30m
  $ utm_appctl policy create 1
  $ utm_appctl policy bind 1 1
  $ utm_appctl policy rule 1 305=10m 306=block
  $ use 70 305=10
  $ utm_appctl export $usage
  $ cp $usage /tmp/saved.json
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ daemon stop
  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ daemon start
  $ forget

On; people; devices; limits; empty policies, bound; the bonus; the import; the rules.

  $ utm_appctl activate on
  $ utm_appctl profile add 1
  $ utm_appctl device add 1 $tablet
  $ utm_appctl limit set 1 1h
  $ utm_appctl limit enable 1
  $ utm_appctl policy create 1
  $ utm_appctl policy bind 1 1
  $ utm_appctl extend add 1 30m
  $ utm_appctl import $usage
  $ utm_appctl policy rule 1 305=10m 306=block
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ utm_appctl usage 1
  today       70  1h10m
  this week   70  1h10m
  this month  70  1h10m
  limit       60     1h
  extend      30    30m
  left        20    20m

Midnight finds it all.

  $ sleep_over
  $ journal
  notify unblock profile 1
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  $ simrouter blocked
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on

A household file says the same in one command.

  $ daemon stop
  $ clock set '2030-01-01 14:00'
  $ daemon start
  $ wants '{"number":1,"name":"Mia","devices":[{"mac":"'$tablet'"}],"limit":"1h",
  >   "applications":[{"name":"video","rule":"10m"},{"name":"games","rule":"blocked"}]}'
  $ utm_appctl apply --restore /tmp/saved.json
  limits are switched on
  Mia: added as person 1
  Mia: device 00:00:5E:00:53:1A joins
  Mia: limit 1h every day
  Mia: limit enforced
  Mia: bonus 30m
  usage restored from /tmp/saved.json
  Mia: video 10m, games blocked
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ utm_appctl usage 1
  Mia
  today       70  1h10m
  this week   70  1h10m
  this month  70  1h10m
  limit       60     1h
  extend      30    30m
  left        20    20m
