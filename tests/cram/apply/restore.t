After a restart the usage file comes back along with the household, with today's bonus.

  $ . "$SOURCE/tests/cram/apply/household.sh"
  $ family
  $ utm_appctl apply >/dev/null
  $ utm_appctl extend add 1 30m
  $ use 75 305=10
  $ utm_appctl export $usage
  $ daemon stop
  $ daemon start
  $ forget
  $ utm_appctl apply --restore $usage
  limits are switched on
  Mia: added as person 1
  Ben: added as person 2
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Ben: device 00:00:5E:00:53:2A joins
  Mia: limit 1h every day
  Ben: limit 2h every day
  Mia: limit enforced
  Mia: bonus 30m
  usage restored from /tmp/ApplicationData/app_usage.json
  Mia: video 10m, games blocked
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl reset 00:00:5E:00:53:1A
  lcsh apg acl reset 00:00:5E:00:53:1B
  lcsh apg acl reset 00:00:5E:00:53:2A
  notify block profile 1
  notify unblock profile 1
  lcsh apg acl set 00:00:5E:00:53:1A 305 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 305 0 18
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 306 0 18
  $ utm_appctl usage 1
  Mia
  today       75  1h15m
  this week   75  1h15m
  this month  75  1h15m
  limit       60     1h
  extend      30    30m
  left        15    15m
  $ simrouter blocked
  video (305) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  video (305) is blocked on Mia's phone (00:00:5E:00:53:1B)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on

Midnight releases what a limit has blocked: nothing was blocked without a flag.

  $ sleep_over
  $ simrouter blocked
  games (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  games (306) is blocked on Mia's phone (00:00:5E:00:53:1B)
  the application guard is on

Once something was counted, a file is not restored.

  $ use 5
  $ utm_appctl apply --restore $usage
  utm_appctl: nothing is restored: the daemon has counted use already, which /tmp/ApplicationData/app_usage.json would replace. Apply without --restore
  [1]
  $ utm_appctl usage 1 | grep today
  today        5     5m

The next day's file has no bonus any more. Ben, who is of no household now, comes with it; he is
deleted only if told.

  $ utm_appctl extend add 1 30m
  $ utm_appctl export $usage
  $ daemon stop
  $ clock set '2030-01-03 12:00'
  $ daemon start
  $ change 's/.*Mia.*/&/; /Ben/,$d'
  $ sed -i '$s/,$/ ] }/' $household
  $ utm_appctl apply --restore $usage
  utm_appctl: person 2 comes from the usage file and is not of the household; --prune deletes them
  limits are switched on
  Mia: added as person 1
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Mia: limit 1h every day
  Mia: limit enforced
  usage restored from /tmp/ApplicationData/app_usage.json
  Mia: video 10m, games blocked
  $ utm_appctl extend show 1
  0 (0m)
  $ utm_appctl apply
  utm_appctl: person 2 is not of the household and was left as they are; --prune deletes them, with thirty days of history
  nothing to do
  $ utm_appctl apply --prune
  person 2: deleted

A file that is none, or that the daemon does not take, is refused.

  $ utm_appctl apply --restore /tmp/none.json
  utm_appctl: cannot restore /tmp/none.json: No such file or directory. Name a usage file that utm_appd has exported
  [2]
  $ utm_appctl apply --restore $household
  utm_appctl: cannot restore /tmp/household.json: it has no user_profile_list. Name a usage file that utm_appd has exported
  [2]
  $ daemon stop
  $ clock set '2030-01-02 12:00'
  $ daemon start
  $ utm_appctl apply --restore $usage
  utm_appctl: the daemon refused to import /tmp/ApplicationData/app_usage.json: it is from the future; is the clock right?; apply without --restore
  utm_appctl: person 2 comes from the usage file and is not of the household; --prune deletes them
  limits are switched on
  Mia: added as person 1
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Mia: limit 1h every day
  Mia: limit enforced
  [1]
