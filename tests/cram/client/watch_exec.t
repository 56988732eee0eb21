A watch runs the programs of a folder with each event, in the order of their names. What is not
executable is left alone, such as settings.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ household
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ mkdir -m 755 programs
  $ program() { cat >programs/$1 && chmod 755 programs/$1; }
  $ program 2-arguments <<'PROGRAM'
  > #!/bin/sh
  > echo "$0: $1: $2" >>../ran
  > PROGRAM
  $ program 1-environment <<'PROGRAM'
  > #!/bin/sh
  > { env | grep ^UTM_ | grep -v -e ^UTM_APPCTL_ -e ^UTM_S | sort; echo; } >>../environment
  > PROGRAM
  $ program 3-document <<'PROGRAM'
  > #!/bin/sh
  > cat >>../documents && echo >>../documents
  > PROGRAM
  $ echo 'exit 1' >programs/settings
  $ begin_watch --exec programs/
  $ until_ran() { until [ "$(grep -c . ran)" = $1 ] && [ "$(grep -c . documents)" = $1 ]; do sleep 0.01; done; }
  $ : >ran && : >documents
  $ utm_appctl activate on
  $ told 2
  2030-01-01 12:00:00  limits are on
  2030-01-01 12:00:00  games is blocked for Mia
  $ until_ran 2
  $ cat ran
  ./2-arguments: limits-on: limits are on
  ./2-arguments: blocked: games is blocked for Mia
  $ cat documents
  {"event":"limits-on","time":1893495600,"text":"limits are on"}
  {"event":"blocked","time":1893495600,"text":"games is blocked for Mia","profile":3,"name":"Mia","today":0,"enabled":true,"limit":120,"extend":0,"left":120,"cut_off":false,"app":306,"app_name":"games","blocked":true}
  $ cat environment
  UTM_EVENT=limits-on
  UTM_TEXT=limits are on
  UTM_TIME=1893495600
  
  UTM_APPLICATION=games
  UTM_APPLICATION_NUMBER=306
  UTM_BLOCKED=1
  UTM_BONUS=0
  UTM_CUT_OFF=0
  UTM_ENFORCED=1
  UTM_EVENT=blocked
  UTM_LEFT=120
  UTM_LIMIT=120
  UTM_PERSON=Mia
  UTM_PERSON_NUMBER=3
  UTM_TEXT=games is blocked for Mia
  UTM_TIME=1893495600
  UTM_USED=0
  

They have the standard streams and nothing else, their output goes to the messages, and one that
fails is reported. Each is told one event at a time, in the events' order. (The shell has
descriptor 3 open while it lists the folder.)

  $ rm programs/*
  $ program talks <<'PROGRAM'
  > #!/bin/sh
  > echo "$1: $(cd /proc/self/fd && echo *)"
  > [ $1 != let-in ] || exit 3
  > [ $1 != left ] || kill -s KILL $$
  > PROGRAM
  $ program waits <<'PROGRAM'
  > #!/bin/sh
  > echo "begins $1" >>../slow
  > until [ -e ../go ]; do sleep 0.01; done
  > echo "ends $1" >>../slow
  > PROGRAM
  $ : >slow
  $ exec 8</dev/null
  $ use 120
  $ told 1
  2030-01-01 12:01:00  Mia is cut off: 2h used
  $ utm_appctl extend add 3 10m
  $ told 1
  2030-01-01 12:01:00  Mia is let in again: 10m left
  $ use 6
  $ told 1
  2030-01-01 12:02:00  Mia has 4m left
  $ until grep -q 'signal 9' messages; do sleep 0.01; done
  $ cat slow
  begins cut-off
  $ touch go
  $ until grep -q 'ends left' slow; do sleep 0.01; done
  $ cat slow
  begins cut-off
  ends cut-off
  begins let-in
  ends let-in
  begins left
  ends left
  $ end_watch
  cut-off: 0 1 2 3
  let-in: 0 1 2 3
  utm_appctl: talks ended with status 3 for the event "let-in"
  left: 0 1 2 3
  utm_appctl: talks was ended by signal 9 for the event "left"

One that takes longer than --timeout is ended, with whatever it has started. A watch that ends does
not leave any behind.

  $ rm programs/* go
  $ program hangs <<'PROGRAM'
  > #!/bin/sh
  > sleep 1000 &
  > echo $! >../sleeper
  > wait
  > PROGRAM
  $ start_watch --exec programs -t 1 --all
  $ hangs() { until [ -s sleeper ]; do sleep 0.01; done; }
  $ ended() { while grep -qs 'State:.[^ZX]' /proc/$1/status; do sleep 0.01; done; }
  $ hangs && ended $(cat sleeper)
  $ sed -n 1p messages
  utm_appctl: hangs took longer than 1 s for the event "back", and is ended
  $ rm sleeper && hangs && end_watch >/dev/null && ended $(cat sleeper)

A folder or program that others may write is not run.

  $ rm programs/*
  $ program runs <<'PROGRAM'
  > #!/bin/sh
  > echo "$1" >>../ran
  > PROGRAM
  $ chmod 775 programs
  $ utm_appctl watch --exec programs
  utm_appctl: the programs in programs are not run: it has to be a folder of your own that nobody else may write
  [2]
  $ chmod 757 programs
  $ utm_appctl watch --exec programs
  utm_appctl: the programs in programs are not run: it has to be a folder of your own that nobody else may write
  [2]
  $ chmod 755 programs
  $ cp programs/runs programs/shared && chmod 777 programs/shared
  $ utm_appctl activate off && use 1
  $ rm -f ran && : >ran
  $ start_watch --exec programs --all
  $ await_told 7 >/dev/null
  $ until grep -q used ran; do sleep 0.01; done
  $ cat ran
  back
  limits-off
  added
  let-in
  released
  released
  used
  $ chmod 777 programs
  $ utm_appctl activate on
  $ told 4
  2030-01-01 12:03:00  limits are on
  2030-01-01 12:03:00  Mia has 3m left
  2030-01-01 12:03:00  games is blocked for Mia
  2030-01-01 12:03:00  Mia has used 2h07m, 3m left
  $ end_watch >/dev/null
  $ sort messages | uniq -c | sed 's/^ *//'
  7 utm_appctl: shared is not run: somebody else may write it
  4 utm_appctl: the programs in programs are not run: it has to be a folder of your own that nobody else may write
  $ cat ran
  back
  limits-off
  added
  let-in
  released
  released
  used
