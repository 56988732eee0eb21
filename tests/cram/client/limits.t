Minutes may be written in many ways.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ for text in 90 90m 90Min 1h30m 1H30 '1h 30m' 1:30 1.5h; do
  >   utm_appctl limit set 3 1
  >   utm_appctl limit set 3 "$text"
  >   utm_appctl limit show 3 --json
  > done
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}
  {"profile":3,"person":null,"enabled":false,"limit":90}

At the end of a command the words of a time need no quotes. Others are still one too many.

  $ utm_appctl limit set 3 2h 15m
  $ utm_appctl limit show 3 --json
  {"profile":3,"person":null,"enabled":false,"limit":135}
  $ utm_appctl limit set 3 2h 15h
  utm_appctl: "limit set" has too many operands
  Usage: utm_appctl limit set ID MINUTES; see utm_appctl limit set --help
  [2]
  $ utm_appctl limit set 3 15m 2h
  utm_appctl: "limit set" has too many operands
  Usage: utm_appctl limit set ID MINUTES; see utm_appctl limit set --help
  [2]
  $ utm_appctl limit set 3 2 15
  utm_appctl: "limit set" has too many operands
  Usage: utm_appctl limit set ID MINUTES; see utm_appctl limit set --help
  [2]

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
  utm_appctl: "0" is not between 1m and 24h
  For example: utm_appctl limit set mia 1h30m
  [1]
  $ utm_appctl limit set 3 24h1m
  utm_appctl: "24h1m" is not between 1m and 24h
  For example: utm_appctl limit set mia 1h30m
  [1]
  $ utm_appctl limit set 9 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl limit set 3 None
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ utm_appctl limit set 3 1.33h
  utm_appctl: "1.33h" is not a time
  Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h
  [2]
  $ utm_appctl limit set 3 1h60m
  utm_appctl: "1h60m" is not a time
  Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h
  [2]
  $ utm_appctl limit set -- 3 -1
  utm_appctl: "-1" is not a time
  Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h
  [2]
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no

It is enabled and disabled.

  $ utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  yes
  $ utm_appctl limit disable 3
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ utm_appctl limit set 3 1h30m
  $ utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ utm_appctl limit show 3 --json
  {"profile":3,"person":null,"enabled":true,"limit":90}

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
