Today's bonus adds up and is taken back.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl profile add 3
  $ utm_appctl extend show 3
  0 (0m)
  $ utm_appctl extend add 3 1h
  $ utm_appctl extend add 3 15
  $ utm_appctl extend show 3
  75 (1h15m)
  $ utm_appctl extend show 3 --json
  {"profile":3,"person":null,"extend":75}
  $ utm_appctl extend reset 3
  $ utm_appctl extend show 3
  0 (0m)

Each addition is between a minute and six hours.

  $ utm_appctl extend add 3 6h
  $ utm_appctl extend show 3
  360 (6h)
  $ utm_appctl extend reset 3
  $ utm_appctl extend add 3 6h1m
  utm_appctl: "6h1m" is not between 1m and 6h
  For example: utm_appctl extend add mia 30m
  [1]
  $ utm_appctl extend add 3 0
  utm_appctl: "0" is not between 1m and 6h
  For example: utm_appctl extend add mia 30m
  [1]
  $ utm_appctl extend show 3
  0 (0m)

The profile has to exist.

  $ utm_appctl extend add 9 5
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl extend show 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl extend show 9 -j
  utm_appctl: the daemon refused: no such profile; create it with profile add
  {"error":"the daemon refused: no such profile; create it with profile add"}
  [1]
  $ utm_appctl extend reset 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
