A profile without a limit has no time left to show.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl usage 3
  today               0   0m
  this week           0   0m
  this month          0   0m
  limit, disabled  1440  24h
  extend              0   0m
  $ utm_appctl usage 3 --apps
  APPLICATION  MINUTES  TIME
  total              0    0m
  $ utm_appctl usage 3 --month --json
  {"profile":3,"person":null,"unit":"month","ago":0,"applications":[]}

Days add up to weeks and months. This is a Tuesday, and 75 minutes of the Wednesday behind it.

  $ utm_appctl limit set 3 2h
  $ use 130 305=90 306=45
  $ sleep_over
  $ utm_appctl extend add 3 10
  $ use 75 306=75 307=5
  $ utm_appctl usage 3 --json
  {"profile":3,"person":null,"today":75,"week":205,"month":205,"enabled":false,"limit":120,"extend":10,"left":55}
  $ utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ utm_appctl usage 3
  today        75  1h15m
  this week   205  3h25m
  this month  205  3h25m
  limit       120     2h
  extend       10    10m
  left         55    55m

Nothing is left beyond the limit.

  $ utm_appctl limit set 3 10
  $ utm_appctl usage 3
  today        75  1h15m
  this week   205  3h25m
  this month  205  3h25m
  limit        10    10m
  extend       10    10m
  left          0     0m

Applications go by number where they have no name.

  $ utm_appctl usage 3 --apps
  APPLICATION  MINUTES   TIME
  306               75  1h15m
  307                5     5m
  total             80  1h20m
  $ utm_appctl usage 3 --day=0
  APPLICATION  MINUTES   TIME
  306               75  1h15m
  307                5     5m
  total             80  1h20m

Each period has its applications.

  $ utm_appctl usage 3 --week 0
  APPLICATION  MINUTES   TIME
  306              120     2h
  305               90  1h30m
  307                5     5m
  total            215  3h35m
  $ utm_appctl usage 3 --month
  APPLICATION  MINUTES   TIME
  306              120     2h
  305               90  1h30m
  307                5     5m
  total            215  3h35m
  $ utm_appctl usage 3 --week 0 -j
  {"profile":3,"person":null,"unit":"week","ago":0,"applications":[{"app":306,"name":null,"minutes":120},{"app":305,"name":null,"minutes":90},{"app":307,"name":null,"minutes":5}]}
  $ for quiet in --day=2 --day=30 --week=1 --week=3; do
  >   utm_appctl usage 3 $quiet
  > done
  APPLICATION  MINUTES  TIME
  total              0    0m
  APPLICATION  MINUTES  TIME
  total              0    0m
  APPLICATION  MINUTES  TIME
  total              0    0m
  APPLICATION  MINUTES  TIME
  total              0    0m

Names come from a file. One that steers a terminal is cleaned, and an accent takes one column. Of two
names for one number the first holds; empty lines and comments are skipped.

  $ printf '# known here\n\n305 Vid\033[31meo\n  306\tCaf\303\251 chat \r\n305 second\n' >/tmp/apps
  $ utm_appctl usage 3 --day 1 --names /tmp/apps
  APPLICATION  MINUTES   TIME
  Vid?[31meo        90  1h30m
  Caf\xc3\xa9 chat         45    45m (esc)
  total            135  2h15m
  $ utm_appctl usage 3 --day 1 -j -n /tmp/apps
  {"profile":3,"person":null,"unit":"day","ago":1,"applications":[{"app":305,"name":"Vid?[31meo","minutes":90},{"app":306,"name":"Caf\xc3\xa9 chat","minutes":45}]} (esc)

A line without a name is told on standard error and left out.

  $ printf '305 video\n306\n' >/tmp/apps
  $ utm_appctl usage 3 --day 1 -n /tmp/apps 2>/tmp/messages
  APPLICATION  MINUTES   TIME
  video             90  1h30m
  306               45    45m
  total            135  2h15m
  $ cat /tmp/messages
  utm_appctl: /tmp/apps, line 2: expected a number and a name, such as "305 video"; line skipped

The file has to be a readable one. A pipe is not waited for.

  $ utm_appctl usage 3 --apps -n /tmp/none
  utm_appctl: cannot read the applications' names from /tmp/none: No such file or directory
  [2]
  $ utm_appctl usage 3 --apps -n /tmp
  utm_appctl: cannot read the applications' names from /tmp: it is not a regular file
  [2]
  $ mkfifo /tmp/names
  $ utm_appctl usage 3 --apps -n /tmp/names
  utm_appctl: cannot read the applications' names from /tmp/names: it is not a regular file
  [2]

A profile that does not exist is told of once.

  $ utm_appctl usage 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ for option in -j --apps --day=1 --week=1 --month --history --history=weeks; do
  >   utm_appctl usage 9 $option || echo "status $?"
  > done
  utm_appctl: the daemon refused: no such profile; create it with profile add
  {"error":"the daemon refused: no such profile; create it with profile add"}
  status 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  status 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  status 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  status 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  status 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  status 1
  utm_appctl: the daemon refused: no such profile; create it with profile add
  status 1

A message goes to standard error, and a refusal stays one where nobody listens.

  $ utm_appctl usage 9 2>/dev/null
  [1]
  $ utm_appctl usage 9 2>&-
  [1]

Yesterday is the day one day ago.

  $ utm_appctl usage 3 --yesterday >/tmp/yesterday
  $ utm_appctl usage 3 --day 1 | cmp - /tmp/yesterday
  $ utm_appctl usage 3 --yesterday --json
  {"profile":3,"person":null,"unit":"day","ago":1,"applications":[{"app":305,"name":null,"minutes":90},{"app":306,"name":null,"minutes":45}]}

Periods do not combine.

  $ utm_appctl usage 3 --day 1 --month
  utm_appctl: --day and --month cannot be combined
  Give one of them
  [2]
  $ utm_appctl usage 3 --week 1 --month
  utm_appctl: --week and --month cannot be combined
  Give one of them
  [2]
  $ utm_appctl usage 3 --day 1 --week 1
  utm_appctl: --day and --week cannot be combined
  Give one of them
  [2]
  $ for period in --day=1 --week=1 --month; do
  >   utm_appctl usage 3 --history $period || echo "status $?"
  > done
  utm_appctl: --day and --history cannot be combined
  Give one of them
  status 2
  utm_appctl: --week and --history cannot be combined
  Give one of them
  status 2
  utm_appctl: --month and --history cannot be combined
  Give one of them
  status 2

The daemon is not asked for days beyond what is kept.

  $ utm_appctl debug on
  $ for days in 31 -1 one ''; do
  >   utm_appctl usage 3 --day "$days" || echo "status $?"
  > done
  utm_appctl: "31" is not valid for --day
  Give a whole number from 0 to 30
  status 2
  utm_appctl: "-1" is not valid for --day
  Give a whole number from 0 to 30
  status 2
  utm_appctl: "one" is not valid for --day
  Give a whole number from 0 to 30
  status 2
  utm_appctl: "" is not valid for --day
  Give a whole number from 0 to 30
  status 2
  $ utm_appctl usage 3 --week 4
  utm_appctl: "4" is not valid for --week
  Give a whole number from 0 to 3
  [2]
  $ log
