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
  {"profile":3,"today":25,"week":25,"month":25,"enabled":false,"limit":1440,"extend":0,"left":1415}
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
  {"profile":3,"today":0,"week":25,"month":25,"enabled":false,"limit":1440,"extend":0,"left":1440}
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
  {"profile":3,"today":25,"week":25,"month":25,"enabled":false,"limit":1440,"extend":0,"left":1415}
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
