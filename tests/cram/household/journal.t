What reaches the router is told once.

  $ utm_appctl activate on
  $ utm_appctl profile add 1
  $ utm_appctl device add 1 00:00:5E:00:53:1A
  $ utm_appctl policy create 10
  $ utm_appctl policy rule 10 305=45m 306=block
  $ utm_appctl policy bind 1 10
  $ utm_appctl limit set 1 30m
  $ utm_appctl limit enable 1
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  $ journal

Mia's tablet is online from five past five on, and used up at 17:35.

  $ tick 40
  $ journal
  notify block profile 1
  $ simrouter blocked
  Mia (profile 1) has no network
  short clips (306) is blocked on Mia's tablet (00:00:5E:00:53:1A)
  the application guard is on
  $ utm_appctl usage 1
  Mia
  today       30  30m
  this week   30  30m
  this month  30  30m
  limit       30  30m
  extend       0   0m
  left         0   0m

Once more from the start, and with the questions that the daemon asks each minute.

  $ journal --all | head -n 2
  lcsh apg on
  notify status_changed 1 1
  $ tick
  $ journal
  $ tick
  $ journal --queries
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1899823140,"e":1899823200,"mac":"00005E00531A "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1899823140,"e":1899823200}'
  $ journal --queries --all | wc -l
  89

  $ journal --everything
  usage: journal [--all] [--queries]  what has reached the router since last time
  [2]
  $ journal now
  usage: journal [--all] [--queries]  what has reached the router since last time
  [2]
