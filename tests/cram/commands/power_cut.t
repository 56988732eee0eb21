Usage survives a power cut when it was exported before, and what was blocked for it is blocked again.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ set_up() {
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 02:00:00:00:00:0A
  >   utm_appctl limit enable 1
  >   utm_appctl limit set 1 30
  >   utm_appctl policy create 1
  >   utm_appctl policy rule 1 305=10
  >   utm_appctl policy bind 1 1
  > }
  $ set_up
  $ use 30 305=10
  $ utm_appctl export /tmp/ApplicationData/app_usage.json
  $ journal
  lcsh apg on
  notify status_changed 1 1
  notify block profile 1
  lcsh apg acl set 02:00:00:00:00:0A 305 0 18
  $ daemon kill
  $ daemon start
  $ set_up
  $ utm_appctl usage 1 --json
  {"profile":1,"person":null,"today":0,"week":0,"month":0,"enabled":true,"limit":30,"extend":0,"left":30}
  $ forget
  $ utm_appctl import /tmp/ApplicationData/app_usage.json
  $ journal
  lcsh apg acl set 02:00:00:00:00:0A 305 0 18
  notify block profile 1
  $ utm_appctl usage 1
  today       30  30m
  this week   30  30m
  this month  30  30m
  limit       30  30m
  extend       0   0m
  left         0   0m
