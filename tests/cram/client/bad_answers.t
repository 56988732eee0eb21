A server may answer what no daemon does. Nothing of it is printed that is not whole.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ : >answer
  $ start_fake_server
  $ ctl() { utm_appctl -s $fake -t 60 "$@"; }

It closes the connection at once, or in the middle of a reply or of a list.

  $ ctl ping
  utm_appctl: the daemon closed the connection without a reply: it does not know command 0, or it is shutting down; try again
  [4]
  $ ctl usage 3 --history
  utm_appctl: the daemon closed the connection without a reply: it does not know command 37, or it is shutting down; try again
  [4]
  $ ctl signature load /tmp/a
  utm_appctl: the daemon closed the connection without a reply: it does not know command 46, or it is shutting down; try again
  [4]
  $ reply 0 >whole
  $ for count in 1 136 831; do
  >   head -c $count whole >answer
  >   ctl ping
  >   ctl status --json
  >   ctl signature load /tmp/a
  > done
  utm_appctl: the daemon closed the connection after 1 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon closed the connection after 1 of a reply's 832 bytes: are both programs of the same version?
  {"error":"the daemon closed the connection after 1 of a reply's 832 bytes: are both programs of the same version?"}
  utm_appctl: the daemon closed the connection after 1 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon closed the connection after 136 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon closed the connection after 136 of a reply's 832 bytes: are both programs of the same version?
  {"error":"the daemon closed the connection after 136 of a reply's 832 bytes: are both programs of the same version?"}
  utm_appctl: the daemon closed the connection after 136 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon closed the connection after 831 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon closed the connection after 831 of a reply's 832 bytes: are both programs of the same version?
  {"error":"the daemon closed the connection after 831 of a reply's 832 bytes: are both programs of the same version?"}
  utm_appctl: the daemon closed the connection after 831 of a reply's 832 bytes: are both programs of the same version?
  [4]
  $ { reply 2 48=305 52=9; reply 2 48=305 52=9; head -c 100 whole; } >answer
  $ ctl usage 3 --apps
  utm_appctl: the daemon closed the connection after 100 of a reply's 832 bytes: are both programs of the same version?
  [4]
  $ ctl usage 3 --history
  utm_appctl: the daemon closed the connection after 100 of a reply's 832 bytes: are both programs of the same version?
  [4]

Behind the end nothing is read.

  $ { reply 0; reply 1; } >answer
  $ ctl ping
  $ week() { for day in 0 1 2 3 4 5 6; do reply 2 264=$day 268=$((day + 1)); done; reply 0; }
  $ { week; week; } >answer
  $ ctl weekday show 3
  DAY        MINUTES  TIME
  Sunday           1    1m
  Monday           2    2m
  Tuesday          3    3m
  Wednesday        4    4m
  Thursday         5    5m
  Friday           6    6m
  Saturday         7    7m

A week of more than seven days is not believed.

  $ { reply 2 264=1 268=1; week; } >answer
  $ ctl weekday show 3
  utm_appctl: the daemon's list is too long, or memory has run out
  [4]

A signature that cannot be loaded may have a short reply; nothing else has one, or that status.

  $ reply 255 >whole
  $ for count in 135 136 832; do
  >   head -c $count whole >answer
  >   ctl signature load /tmp/a
  >   ctl limit show 3
  > done
  utm_appctl: the daemon closed the connection after 135 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon closed the connection after 135 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon refused: it cannot start the DPI engine's program now; try again
  utm_appctl: the daemon closed the connection after 136 of a reply's 832 bytes: are both programs of the same version?
  utm_appctl: the daemon refused: /tmp/a: No such file or directory
  utm_appctl: the daemon's reply has the unknown status 255: are both programs of the same version?
  [4]

A status that does not exist, a list where there is none, and one that is refused in the middle.

  $ reply 7 >answer
  $ ctl ping
  utm_appctl: the daemon's reply has the unknown status 7: are both programs of the same version?
  [4]
  $ ctl usage 3 --apps
  utm_appctl: the daemon's reply has the unknown status 7: are both programs of the same version?
  [4]
  $ { reply 2; reply 0; } >answer
  $ ctl ping
  utm_appctl: the daemon began a list where one reply was expected: are both programs of the same version?
  [4]
  $ { reply 2; reply 2; reply 1; } >answer
  $ ctl weekday show 3
  utm_appctl: the daemon began a list where one reply was expected: are both programs of the same version?
  [4]
  $ ctl usage 3 --apps --json
  utm_appctl: the daemon began a list where one reply was expected: are both programs of the same version?
  {"error":"the daemon began a list where one reply was expected: are both programs of the same version?"}
  [4]
  $ reply 1 >answer
  $ ctl ping
  utm_appctl: the daemon refused: it should not; are both programs of the same version?
  [1]
  $ stop_fake_server
