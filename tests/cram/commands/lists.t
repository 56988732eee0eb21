Lists are whole and sorted, however long. Profile 3 has used applications 1000 to 1699, for 1 to 700
minutes: the last of them most.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ use 10 $(seq 700 | awk '{ print 999 + $1 "=" $1 }')
  $ utm_appctl usage 3 --apps >/tmp/list
  $ head -n 4 /tmp/list
  APPLICATION  MINUTES      TIME
  1699             700    11h40m
  1698             699    11h39m
  1697             698    11h38m
  $ tail -n 3 /tmp/list
  1001               2        2m
  1000               1        1m
  total         245350  4089h10m
  $ seq 1699 -1 1000 >/tmp/applications
  $ sed '1d;$d' /tmp/list | cut -d' ' -f1 | cmp - /tmp/applications
  $ sed '1d;$d' /tmp/list | sed 's/^[0-9]* *\([0-9]*\).*/\1/' >/tmp/minutes
  $ seq 700 -1 1 | cmp - /tmp/minutes

So are the weeks, of which this one is the last.

  $ entries() { grep -o '{"app":[^}]*}'; }
  $ expected() {
  >   paste -d: /tmp/applications /tmp/minutes |
  >     sed "s/\(.*\):\(.*\)/{\"app\":\1,\"name\":null,\"minutes\":[$1\2$2]}/"
  > }
  $ expected 0,0,0, >/tmp/expected
  $ utm_appctl usage 3 --history=weeks --json | entries | cmp - /tmp/expected
  $ head -n 1 /tmp/expected
  {"app":1699,"name":null,"minutes":[0,0,0,700]}

And the days, of which yesterday is the last but one.

  $ sleep_over
  $ expected "$(printf '0,%.0s' $(seq 29))" ,0 >/tmp/expected
  $ utm_appctl usage 3 --history --json | entries | cmp - /tmp/expected
  $ head -n 1 /tmp/expected
  {"app":1699,"name":null,"minutes":[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,700,0]}

The chart adds all of them up.

  $ utm_appctl usage 3 --history | tail -n 2
  Tue  1 Jan  245350  4089h10m  ##################################################
  Wed  2 Jan       0        0m
