Minutes may be written in three ways.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ for text in 90 90m 1h30m; do
  >   utm_appctl limit set 3 1
  >   utm_appctl limit set 3 $text
  >   utm_appctl limit show 3
  > done
  limit    90 (1h30m)
  enabled  no
  limit    90 (1h30m)
  enabled  no
  limit    90 (1h30m)
  enabled  no

A limit is between a minute and a day.

  $ utm_appctl limit set 3 1m
  $ utm_appctl limit show 3
  limit    1 (1m)
  enabled  no
  $ utm_appctl limit set 3 24h
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ utm_appctl limit set 3 0
  utm_appctl: the daemon refused: no such profile, or the limit is not between 1m and 24h
  [1]
  $ utm_appctl limit set 3 24h1m
  utm_appctl: the daemon refused: no such profile, or the limit is not between 1m and 24h
  [1]
  $ utm_appctl limit set 9 1
  utm_appctl: the daemon refused: no such profile, or the limit is not between 1m and 24h
  [1]
  $ utm_appctl limit set 3 1h60m
  utm_appctl: "1h60m" is not a time: give minutes, such as 90, 90m or 1h30m
  [2]
  $ utm_appctl limit set -- 3 -1
  utm_appctl: "-1" is not a time: give minutes, such as 90, 90m or 1h30m
  [2]
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no

It is enabled and disabled.

  $ utm_appctl limit enable 3
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  yes
  $ utm_appctl limit disable 3
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ utm_appctl limit set 3 1h30m
  $ utm_appctl limit enable 3
  $ utm_appctl limit show 3 --json
  {"profile":3,"enabled":true,"limit":90}

A profile whose limit is used up is cut off at once, whichever command makes it so.

  $ utm_appctl activate on
  $ utm_appctl limit disable 3
  $ utm_appctl limit set 3 10
  $ use 10
  $ forget
  $ utm_appctl limit enable 3
  $ journal
  notify block profile 3
  $ utm_appctl extend add 3 5
  $ journal
  notify unblock profile 3
  $ utm_appctl extend reset 3
  $ journal
  notify block profile 3
  $ utm_appctl limit disable 3
  $ journal
  notify unblock profile 3

Nothing is known of a profile that does not exist.

  $ utm_appctl limit show 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl limit show 9 --json
  utm_appctl: the daemon refused: no such profile; create it with profile add
  {"error":"the daemon refused: no such profile; create it with profile add"}
  [1]
  $ utm_appctl limit enable 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl limit disable 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
