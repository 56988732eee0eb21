Usage adds up over minutes and days. Nothing was used yet:

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl usage 3 --apps
  APPLICATION  MINUTES  TIME
  total              0    0m
  $ utm_appctl usage 3 --history=weeks --json
  {"profile":3,"person":null,"unit":"week","minutes":[0,0,0,0],"applications":[]}

Two minutes on Tuesday and one on Wednesday, each of which brings 25 minutes.

  $ use 25 305=10 306=20
  $ use 25 305=10 306=20
  $ sleep_over
  $ use 25 305=10 306=20
  $ utm_appctl usage 3
  today              25    25m
  this week          75  1h15m
  this month         75  1h15m
  limit, disabled  1440    24h
  extend              0     0m
  $ utm_appctl usage 3 --apps
  APPLICATION  MINUTES  TIME
  306               20   20m
  305               10   10m
  total             30   30m
  $ utm_appctl usage 3 --day 1
  APPLICATION  MINUTES  TIME
  306               40   40m
  305               20   20m
  total             60    1h
  $ utm_appctl usage 3 --week 0
  APPLICATION  MINUTES   TIME
  306               60     1h
  305               30    30m
  total             90  1h30m
  $ utm_appctl usage 3 --month
  APPLICATION  MINUTES   TIME
  306               60     1h
  305               30    30m
  total             90  1h30m
