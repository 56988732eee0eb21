A person who has used nothing is deleted at once.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl profile del 3
  $ utm_appctl usage 3
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]

Whoever was not there has not been deleted; that is said, and is no mistake.

  $ utm_appctl profile del 3
  utm_appctl: note: there was no profile 3
  $ utm_appctl profile del 3 --json 2>/dev/null
  {"done":true,"warnings":["note: there was no profile 3"]}

Thirty days of history do not go by a slip of the hand. No terminal is here, so nobody is asked.

  $ add_mia
  $ use 25 305=20
  $ utm_appctl profile del 3
  utm_appctl: the history of profile 3 would be deleted, too
  Say --yes if it may go; to keep it, export it to a file first
  [2]
  $ echo yes | utm_appctl profile del 3
  utm_appctl: the history of profile 3 would be deleted, too
  Say --yes if it may go; to keep it, export it to a file first
  [2]
  $ utm_appctl usage 3 --json
  {"profile":3,"person":null,"today":25,"week":25,"month":25,"enabled":false,"limit":1440,"extend":0,"left":1415}
  $ utm_appctl profile del 3 --yes
  $ utm_appctl usage 3
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]

Neither do earlier days, when there is nothing of today.

  $ clock set '2030-01-28 12:00'
  $ add_mia
  $ use 25 305=20
  $ for day in 02-05 02-12 02-13; do clock set "2030-$day 12:00" && tick; done
  $ utm_appctl usage 3 --json
  {"profile":3,"person":null,"today":0,"week":25,"month":25,"enabled":false,"limit":1440,"extend":0,"left":1440}
  $ utm_appctl profile del 3
  utm_appctl: the history of profile 3 would be deleted, too
  Say --yes if it may go; to keep it, export it to a file first
  [2]
  $ utm_appctl profile del 3 -y

On a terminal it asks.

  $ cat >/tmp/typed.py <<'END'
  > import os, pty, sys
  > def read(fd):
  >     try:
  >         return os.read(fd, 1024)
  >     except OSError: # the program has ended
  >         return b""
  > pid, fd = pty.fork()
  > if pid == 0:
  >     os.execvp("utm_appctl", ["utm_appctl", "profile", "del", "3"])
  > shown = b""
  > while b"] " not in shown and (piece := read(fd)):
  >     shown += piece
  > os.write(fd, sys.argv[1].encode() + b"\n")
  > while piece := read(fd):
  >     shown += piece
  > print(shown.decode().replace("\r", ""), end="")
  > print("status", os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]))
  > END
  $ typed() { timeout 20 python3 /tmp/typed.py "$1"; }
  $ add_mia
  $ use 25 305=20
  $ typed n
  Delete profile 3, and the history of up to thirty days with it? [y/N] n
  utm_appctl: nothing is deleted
  status 1
  $ typed ''
  Delete profile 3, and the history of up to thirty days with it? [y/N] 
  utm_appctl: nothing is deleted
  status 1
  $ typed perhaps
  Delete profile 3, and the history of up to thirty days with it? [y/N] perhaps
  utm_appctl: nothing is deleted
  status 1
  $ utm_appctl usage 3 --json
  {"profile":3,"person":null,"today":25,"week":25,"month":25,"enabled":false,"limit":1440,"extend":0,"left":1415}
  $ typed Yes
  Delete profile 3, and the history of up to thirty days with it? [y/N] Yes
  status 0
  $ utm_appctl usage 3
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]

A limit means nothing while limits are off.

  $ add_mia
  $ utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ utm_appctl activate on
  $ utm_appctl limit enable 3

A device that was not there is told, and one that somebody else has, while limits are on: only then
does the daemon write down what it has.

  $ utm_appctl device add 3 02:00:00:00:00:0B
  $ utm_appctl profile add 4
  $ utm_appctl device add 4 02:00:00:00:00:0B 02:00:00:00:00:0C
  utm_appctl: note: 02:00:00:00:00:0B is a device of profile 3, too; what blocks either of them blocks it
  $ utm_appctl device del 3 02:00:00:00:00:0B 02:00:00:00:00:0C 02:00:00:00:00:0D
  utm_appctl: note: 02:00:00:00:00:0C was no device of profile 3, but is one of profile 4
  utm_appctl: note: 02:00:00:00:00:0D was no device of profile 3
  $ utm_appctl device del 4 02:00:00:00:00:0C 02:00:00:00:00:0C --json 2>/dev/null
  {"done":true}
  $ utm_appctl device del 9 02:00:00:00:00:0C
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl activate off
  $ utm_appctl device del 4 02:00:00:00:00:0C

The household tells whose a device is at any time, and by name.

  $ cat >/tmp/household.json <<'END'
  > { "people": [{ "number": 3, "name": "Mia", "devices": [{ "mac": "02:00:00:00:00:0A" }] },
  >              { "number": 4, "name": "Leo", "devices": [{ "mac": "02:00:00:00:00:0B" }] }] }
  > END
  $ utm_appctl device add mia 02:00:00:00:00:0A
  $ utm_appctl device add mia 02:00:00:00:00:0B
  utm_appctl: note: 02:00:00:00:00:0B is a device of Leo, too; what blocks either of them blocks it
  $ utm_appctl activate on
  $ utm_appctl device del mia 02:00:00:00:00:0F
  utm_appctl: note: 02:00:00:00:00:0F was no device of Mia
  $ utm_appctl device add leo 02:00:00:00:00:0A
  utm_appctl: note: 02:00:00:00:00:0A is a device of Mia, too; what blocks either of them blocks it
  $ utm_appctl debug on
  $ forget
  $ utm_appctl device add leo 02:00:00:00:00:0B
  $ log
  [socket] Receive cmd type=3

The daemon's own file is written as well, so that a look at it puts nothing off; but not while it is
older than the daemon, and may have to be read, or nothing has been counted.

  $ file=/tmp/ApplicationData/app_usage.json
  $ echo old >$file
  $ touch -d '2 hours ago' $file
  $ utm_appctl device del mia 02:00:00:00:00:0E
  utm_appctl: note: 02:00:00:00:00:0E was no device of Mia
  $ cat $file
  old
  $ touch $file
  $ utm_appctl device del mia 02:00:00:00:00:0E
  utm_appctl: note: 02:00:00:00:00:0E was no device of Mia
  $ cat $file
  old
  $ use 5
  $ utm_appctl device del mia 02:00:00:00:00:0E
  utm_appctl: note: 02:00:00:00:00:0E was no device of Mia
  $ grep -o '"daily_used":5' $file | head -n 1
  "daily_used":5
  $ rm /tmp/household.json
  $ TMPDIR=/tmp/none utm_appctl device add 4 02:00:00:00:00:0A
  utm_appctl: cannot create a folder in /tmp/none (No such file or directory); set TMPDIR to another
