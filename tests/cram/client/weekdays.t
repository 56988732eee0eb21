Every weekday has a limit of its own. It goes by its name, a short name or its number.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl profile add 3
  $ utm_appctl weekday set 3 wed 75
  $ utm_appctl weekday show 3 --json
  {"profile":3,"person":null,"weekdays":[{"day":0,"name":"Sunday","minutes":1440},{"day":1,"name":"Monday","minutes":1440},{"day":2,"name":"Tuesday","minutes":1440},{"day":3,"name":"Wednesday","minutes":75},{"day":4,"name":"Thursday","minutes":1440},{"day":5,"name":"Friday","minutes":1440},{"day":6,"name":"Saturday","minutes":1440}]}
  $ utm_appctl limit set 3 2h
  $ utm_appctl weekday set 3 0 3h
  $ utm_appctl weekday set 3 Monday 45
  $ utm_appctl weekday set 3 SAT 1h30m
  $ utm_appctl weekday show 3
  DAY        MINUTES   TIME
  Sunday         180     3h
  Monday          45    45m
  Tuesday        120     2h
  Wednesday      120     2h
  Thursday       120     2h
  Friday         120     2h
  Saturday        90  1h30m

Several days get theirs at once, each with a request of its own.

  $ utm_appctl debug on
  $ forget
  $ utm_appctl weekday set 3 Weekend,wed 2:30
  $ log
  [socket] Receive cmd type=30
  Set weekday daily limit to 150 for profile 3 success
  [socket] Receive cmd type=30
  Set weekday daily limit to 150 for profile 3 success
  [socket] Receive cmd type=30
  Set weekday daily limit to 150 for profile 3 success
  $ utm_appctl debug off
  $ utm_appctl weekday set 3 weekdays 100
  $ utm_appctl weekday show 3
  DAY        MINUTES   TIME
  Sunday         150  2h30m
  Monday         100  1h40m
  Tuesday        100  1h40m
  Wednesday      100  1h40m
  Thursday       100  1h40m
  Friday         100  1h40m
  Saturday       150  2h30m
  $ utm_appctl weekday set 3 all 2h
  $ utm_appctl weekday set 3 sat,sun 3h
  $ utm_appctl weekday set 3 mon 45m
  $ utm_appctl weekday show 3
  DAY        MINUTES  TIME
  Sunday         180    3h
  Monday          45   45m
  Tuesday        120    2h
  Wednesday      120    2h
  Thursday       120    2h
  Friday         120    2h
  Saturday       180    3h
  $ utm_appctl weekday set 9 all 2h
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]

Two profiles keep theirs apart. Today is a Tuesday.

  $ utm_appctl profile add -- -4
  $ utm_appctl weekday set 3 2 90
  $ utm_appctl weekday show 3 -j
  {"profile":3,"person":null,"weekdays":[{"day":0,"name":"Sunday","minutes":180},{"day":1,"name":"Monday","minutes":45},{"day":2,"name":"Tuesday","minutes":90},{"day":3,"name":"Wednesday","minutes":120},{"day":4,"name":"Thursday","minutes":120},{"day":5,"name":"Friday","minutes":120},{"day":6,"name":"Saturday","minutes":180}]}
  $ utm_appctl weekday show -j -- -4
  {"profile":-4,"person":null,"weekdays":[{"day":0,"name":"Sunday","minutes":1440},{"day":1,"name":"Monday","minutes":1440},{"day":2,"name":"Tuesday","minutes":1440},{"day":3,"name":"Wednesday","minutes":1440},{"day":4,"name":"Thursday","minutes":1440},{"day":5,"name":"Friday","minutes":1440},{"day":6,"name":"Saturday","minutes":1440}]}
  $ utm_appctl limit show 3
  limit    90 (1h30m)
  enabled  no
  $ utm_appctl limit show -- -4
  limit    1440 (24h)
  enabled  no

The daemon is not asked about a day that is none.

  $ utm_appctl debug on
  $ for day in 7 mo '' 00 mondays funday teusday sat, sat,,sun; do
  >   utm_appctl weekday set 3 "$day" 60 || echo "status $?"
  > done
  utm_appctl: "7" is not a weekday
  Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, weekend or all
  status 2
  utm_appctl: "mo" is not a weekday
  Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, weekend or all
  status 2
  utm_appctl: "" is not a weekday
  Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, weekend or all
  status 2
  utm_appctl: "00" is not a weekday
  Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, weekend or all
  status 2
  utm_appctl: "mondays" is not a weekday
  Did you mean "monday"?
  status 2
  utm_appctl: "funday" is not a weekday
  Did you mean "sunday"?
  status 2
  utm_appctl: "teusday" is not a weekday
  Did you mean "tuesday"?
  status 2
  utm_appctl: "sat," is not a weekday
  Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, weekend or all
  status 2
  utm_appctl: "sat,,sun" is not a weekday
  Give names, such as mon or sat,sun, or 0 (Sunday) to 6, weekdays, weekend or all
  status 2
  $ utm_appctl weekday set 3 mon 1:3
  utm_appctl: "1:3" is not a time
  Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h
  [2]
  $ log
  [socket] Receive cmd type=41

It refuses a limit of more than a day, and a profile that does not exist.

  $ utm_appctl weekday set 3 mon 25h
  utm_appctl: "25h" is not between 1m and 24h
  For example: utm_appctl weekday set mia sat,sun 3h
  [1]
  $ utm_appctl weekday set 9 mon 1h
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl weekday show 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl weekday show 9 -j
  utm_appctl: the daemon refused: no such profile; create it with profile add
  {"error":"the daemon refused: no such profile; create it with profile add"}
  [1]
