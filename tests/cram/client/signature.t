The DPI engine loads a signature. A relative path is the client's own.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl debug on
  $ echo signature >/tmp/good
  $ utm_appctl signature load /tmp/good
  $ cd /tmp && utm_appctl signature load good
  $ journal
  lcsh load /tmp/good
  lcsh load /tmp/good
  $ log
  [socket] Receive cmd type=46
  UTM_APP_CONFIG_LOAD_SIGNATURE
  cmd = lcsh load /tmp/good
  [socket] Receive cmd type=46
  UTM_APP_CONFIG_LOAD_SIGNATURE
  cmd = lcsh load /tmp/good

The engine says when there is none.

  $ utm_appctl signature load /tmp/none
  utm_appctl: the daemon refused: /tmp/none: No such file or directory
  [1]
  $ journal
  lcsh load /tmp/none
  $ log
  [socket] Receive cmd type=46
  UTM_APP_CONFIG_LOAD_SIGNATURE
  cmd = lcsh load /tmp/none

The longest path arrives whole.

  $ longest=/tmp/$(letters 112)
  $ echo signature >"$longest"
  $ utm_appctl signature load "$longest"
  $ journal
  lcsh load /tmp/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa

A shell reads the path, so the client sends no other characters, and never a part of a path.

  $ utm_appctl signature load "${longest}a"
  utm_appctl: /tmp/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long
  A signature's path may have at most 117 characters
  [2]
  $ utm_appctl signature load '/tmp/a;reboot'
  utm_appctl: a shell would read the path /tmp/a;reboot
  It may have only letters, digits and /._-+,=@%: in it; rename the file
  [2]
  $ journal

The daemon may have no descriptor left for the engine's answer. Here the connection gets the last.

  $ pid=$(daemon pid)
  $ free=0
  $ while [ -L "/proc/$pid/fd/$free" ]; do free=$((free + 1)); done
  $ prlimit --pid "$pid" --nofile=$((free + 1)):
  $ utm_appctl signature load /tmp/good
  utm_appctl: the daemon refused: it cannot start the DPI engine's program now; try again
  [1]
  $ prlimit --pid "$pid" --nofile=1024:
  $ journal
  $ utm_appctl signature load /tmp/good
  $ journal
  lcsh load /tmp/good
