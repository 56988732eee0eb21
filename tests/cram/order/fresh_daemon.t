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
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (02:00:00:00:00:1A)
  games (306) is blocked on Mia's tablet (02:00:00:00:00:1A)
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
  lcsh apg acl set 02:00:00:00:00:1A 305 0 18
  lcsh apg acl set 02:00:00:00:00:1A 306 0 18
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (02:00:00:00:00:1A)
  games (306) is blocked on Mia's tablet (02:00:00:00:00:1A)
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
  lcsh apg acl del 02:00:00:00:00:1A 305 0
  $ simrouter blocked
  games (306) is blocked on Mia's tablet (02:00:00:00:00:1A)
  the application guard is on
