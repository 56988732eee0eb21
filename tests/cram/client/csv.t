Comma-separated values are for spreadsheets: a line of names, minutes as numbers, and lines that end
as RFC 4180 has it.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl limit set 3 2h
  $ utm_appctl extend add 3 10
  $ utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ use 50 305=30 306=20
  $ sleep_over
  $ use 75 305=70 307=5
  $ utm_appctl usage 3 --csv | od -c | head -n 4
  0000000   p   r   o   f   i   l   e   ,   p   e   r   s   o   n   ,   t
  0000020   o   d   a   y   ,   w   e   e   k   ,   m   o   n   t   h   ,
  0000040   e   n   a   b   l   e   d   ,   l   i   m   i   t   ,   e   x
  0000060   t   e   n   d   ,   l   e   f   t  \r  \n   3   ,   ,   7   5
  $ csv() { utm_appctl usage "$@" --csv | tr -d '\r'; }
  $ csv 3
  profile,person,today,week,month,enabled,limit,extend,left
  3,,75,125,125,true,120,0,45

Names that could be taken for two fields, or that begin with quotes, are in quotes.

  $ printf '305 video, "the best"\n306 games\n' >/tmp/apps
  $ csv 3 --yesterday -n /tmp/apps
  profile,person,unit,ago,app,application,minutes
  3,,day,1,305,"video, ""the best""",30
  3,,day,1,306,games,20
  $ csv 3 --week=0 -n /tmp/apps
  profile,person,unit,ago,app,application,minutes
  3,,week,0,305,"video, ""the best""",100
  3,,week,0,306,games,20
  3,,week,0,307,,5
  $ csv 3 --apps -n /tmp/apps
  profile,person,unit,ago,app,application,minutes
  3,,day,0,305,"video, ""the best""",70
  3,,day,0,307,,5
  $ csv 3 --month
  profile,person,unit,ago,app,application,minutes
  3,,month,0,305,,100
  3,,month,0,306,,20
  3,,month,0,307,,5

A history has a line for each day or week, with the date of its first day. With --apps there is a
line for each application, too.

  $ csv 3 --history | sed -n '1p; 28,$p'
  profile,person,unit,ago,date,minutes
  3,,day,4,2029-12-29,0
  3,,day,3,2029-12-30,0
  3,,day,2,2029-12-31,0
  3,,day,1,2030-01-01,50
  3,,day,0,2030-01-02,75
  $ csv 3 --history --weeks
  profile,person,unit,ago,date,minutes
  3,,week,3,2029-12-09,0
  3,,week,2,2029-12-16,0
  3,,week,1,2029-12-23,0
  3,,week,0,2029-12-30,125
  $ csv 3 --history --weeks --apps -n /tmp/apps | sort -k1,1r -t,
  profile,person,unit,ago,date,app,application,minutes
  3,,week,0,2029-12-30,305,"video, ""the best""",100
  3,,week,0,2029-12-30,306,games,20
  3,,week,0,2029-12-30,307,,5
  3,,week,1,2029-12-23,305,"video, ""the best""",0
  3,,week,1,2029-12-23,306,games,0
  3,,week,1,2029-12-23,307,,0
  3,,week,2,2029-12-16,305,"video, ""the best""",0
  3,,week,2,2029-12-16,306,games,0
  3,,week,2,2029-12-16,307,,0
  3,,week,3,2029-12-09,305,"video, ""the best""",0
  3,,week,3,2029-12-09,306,games,0
  3,,week,3,2029-12-09,307,,0

Nothing is a heading alone, and a failure nothing at all.

  $ csv 3 --day=5
  profile,person,unit,ago,app,application,minutes
  $ utm_appctl profile add 4
  $ csv 4 --history --apps
  profile,person,unit,ago,date,app,application,minutes
  $ csv 9
  utm_appctl: the daemon refused: no such profile; create it with profile add
  $ utm_appctl usage 3 --csv --json
  utm_appctl: --csv and --json cannot be combined
  Give one of them
  {"error":"--csv and --json cannot be combined. Give one of them"}
  [2]
  $ utm_appctl usage 3 --csv >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]

The days of a chart that ends in the night in which the clocks change, and weeks that begin in another
year.

  $ clock set '2030-03-31 12:00'
  $ csv 3 --history | tail -n 3
  3,,day,2,2030-03-29,0
  3,,day,1,2030-03-30,50
  3,,day,0,2030-03-31,75
  $ clock set '2031-01-01 12:00'
  $ csv 3 --history --weeks
  profile,person,unit,ago,date,minutes
  3,,week,3,2030-12-08,0
  3,,week,2,2030-12-15,0
  3,,week,1,2030-12-22,0
  3,,week,0,2030-12-29,125
