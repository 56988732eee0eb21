The last minutes of a Saturday and the first of a Sunday. Mia watches videos until she is stopped,
and is online in between.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ cat >/tmp/router/scenario <<SCENARIO
  > date 2030-01-05
  > person mia 1 Mia
  > device tablet mia 02:00:00:00:00:01 Tablet
  > app video 305 Video
  > use tablet video 23:30 +1 00:30
  > online tablet 23:30 +1 00:30
  > SCENARIO
  $ begin() {
  >   daemon stop
  >   clock set '2030-01-05 23:50'
  >   TZ=${zone:-$TZ} daemon start
  >   utm_appctl activate on
  >   utm_appctl profile add 1
  >   utm_appctl device add 1 02:00:00:00:00:01
  >   utm_appctl limit enable 1
  >   utm_appctl limit set 1 6
  >   utm_appctl policy create 1
  >   utm_appctl policy rule 1 305=3
  >   utm_appctl policy bind 1 1
  >   utm_appctl debug on
  >   forget
  > }

Videos end at their limit, three minutes, and the network at its own, six minutes. A bonus of two
minutes gives it back for as long.

  $ begin
  $ tick 6
  $ log
  Block app 305 for profile 1 because 3 exceed 3
  Block profile 1 to use network because 6 exceed 6
  send event: block profile 1 to use network
  $ journal --queries
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883740,"e":1893883800,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883740,"e":1893883800}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883800,"e":1893883860,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883800,"e":1893883860}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883860,"e":1893883920,"mac":"020000000001 "}'
  lcsh apg acl set 02:00:00:00:00:01 305 0 18
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883860,"e":1893883920}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883920,"e":1893883980,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883920,"e":1893883980}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883980,"e":1893884040,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893883980,"e":1893884040}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884040,"e":1893884100,"mac":"020000000001 "}'
  notify block profile 1
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884040,"e":1893884100}'
  $ utm_appctl extend add 1 2
  $ tick 3
  $ log
  [socket] Receive cmd type=32
  send event: unblock profile 1 to use network
  Add extend 2 to profile 1, now 2
  Block profile 1 to use network because 8 exceed 8
  send event: block profile 1 to use network
  $ journal --queries
  notify unblock profile 1
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884100,"e":1893884160,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884100,"e":1893884160}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884160,"e":1893884220,"mac":"020000000001 "}'
  notify block profile 1
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884160,"e":1893884220}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884220,"e":1893884280,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884220,"e":1893884280}'

The new day starts afresh, at its first tick and before anything is asked.

  $ tick
  $ clock
  Sun 2030-01-06 00:00:00 CET
  $ log
  send event: unblock profile 1 to use network
  send event: unblock profile 1 to use network
  $ journal --queries
  notify unblock profile 1
  notify unblock profile 1
  lcsh apg acl del 02:00:00:00:00:01 305 0
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884280,"e":1893884340,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884280,"e":1893884340}'
  $ tick 2
  $ log
  Block app 305 for profile 1 because 3 exceed 3
  $ journal --queries
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884340,"e":1893884400,"mac":"020000000001 "}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884340,"e":1893884400}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884400,"e":1893884460,"mac":"020000000001 "}'
  lcsh apg acl set 02:00:00:00:00:01 305 0 18
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893884400,"e":1893884460}'

The new week took Saturday into the month. Sunday has the three minutes that were counted on it.

  $ utm_appctl usage 1
  today        3   3m
  this week    3   3m
  this month  11  11m
  limit        6   6m
  extend       0   0m
  left         3   3m
  $ utm_appctl usage 1 --day 0
  APPLICATION  MINUTES  TIME
  305                3    3m
  total              3    3m
  $ utm_appctl usage 1 --day 1
  APPLICATION  MINUTES  TIME
  305                3    3m
  total              3    3m
  $ utm_appctl usage 1 --history=weeks
  3 weeks ago  0  0m
  2 weeks ago  0  0m
  last week    3  3m  ############################################################
  this week    3  3m  ############################################################

The bonus ends with its day, and Sunday's own limit comes into force.

  $ begin
  $ utm_appctl extend add 1 2
  $ utm_appctl weekday set 1 sunday 90
  $ utm_appctl extend show 1
  2 (2m)
  $ utm_appctl limit show 1
  limit    6 (6m)
  enabled  yes
  $ tick 10
  $ utm_appctl extend show 1
  0 (0m)
  $ utm_appctl limit show 1
  limit    90 (1h30m)
  enabled  yes

Midnight is the daemon's own. Where it is an hour later, the day was over before all this began.

  $ zone=EAST-2 begin
  $ clock
  Sat 2030-01-05 23:50:00 CET
  $ utm_appctl extend add 1 2
  $ tick 12
  $ clock
  Sun 2030-01-06 00:02:00 CET
  $ utm_appctl extend show 1
  2 (2m)
