The limits of profiles. A value out of its range changes nothing and is logged.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl debug on
  $ utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ ask 28 8=3 20=0
  status 1
  $ utm_appctl limit set 3 60
  $ utm_appctl limit show 3
  limit    60 (1h)
  enabled  yes
  $ utm_appctl limit show 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ ask 30 8=3 12=2 20=1441
  status 1
  $ utm_appctl weekday set 3 2 90
  $ utm_appctl weekday show 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ log
  [socket] Receive cmd type=26
  Set daily limit enable 1 for profile 3 success
  [socket] Receive cmd type=47
  [socket] Receive cmd type=28
  Set daily limit 0 for profile 3 failed because range error
  [socket] Receive cmd type=28
  Set daily limit to 60 for profile 3 success
  [socket] Receive cmd type=29
  [socket] Receive cmd type=27
  [socket] Receive cmd type=29
  [socket] Receive cmd type=27
  [socket] Receive cmd type=30
  Set weekday daily limit 1441 for profile 3 failed because range error
  [socket] Receive cmd type=30
  Set weekday daily limit to 90 for profile 3 success
  [socket] Receive cmd type=31
  [socket] Receive cmd type=27

The bonus of a day.

  $ ask 32 8=3 24=361
  status 1
  $ utm_appctl extend add 9 30
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl extend add 3 30
  $ utm_appctl extend add 3 15
  $ utm_appctl extend show 3
  45 (45m)
  $ utm_appctl extend show 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl extend reset 3
  $ utm_appctl extend reset 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl extend show 3
  0 (0m)
  $ log
  [socket] Receive cmd type=32
  Add extend 361 for profile 3 failed because range error
  [socket] Receive cmd type=32
  Add extend 30 to profile 9 failed because profile is not existed
  [socket] Receive cmd type=27
  [socket] Receive cmd type=32
  Add extend 30 to profile 3, now 30
  [socket] Receive cmd type=32
  Add extend 15 to profile 3, now 45
  [socket] Receive cmd type=33
  [socket] Receive cmd type=33
  Get extended for profile 9 failed because profile is not existed
  [socket] Receive cmd type=27
  [socket] Receive cmd type=34
  Reset profile 3 , now 0
  [socket] Receive cmd type=34
  Reset profile 9 extend failed because profile is not existed
  [socket] Receive cmd type=27
  [socket] Receive cmd type=33

Usage of a profile that does not exist.

  $ utm_appctl usage 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ log
  [socket] Receive cmd type=35
  Get usage for profile 9 failed because profile is not existed
  [socket] Receive cmd type=27

The router hears nothing of all that.

  $ journal
