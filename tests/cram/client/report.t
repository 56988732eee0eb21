A report of now needs limits to be on. No file is left behind, neither here nor below.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ mkdir /tmp/here && export TMPDIR=/tmp/here
  $ utm_appctl report
  utm_appctl: the daemon refused: limits are off; turn them on with activate on
  [1]
  $ ls -A /tmp/here

It is the page of what the daemon exports now.

  $ utm_appctl activate on
  $ add_mia
  $ use 25 305=20
  $ utm_appctl report >/tmp/page
  $ ls -A /tmp/here
  $ head -c 15 /tmp/page && echo
  <!DOCTYPE html>
  $ tail -n 1 /tmp/page
  </html>
  $ utm_appctl export /tmp/usage.json
  $ utm_appctl report /tmp/usage.json | cmp - /tmp/page
  $ cd /tmp && utm_appctl report usage.json | cmp - /tmp/page

A report of a file needs no daemon, but the file.

  $ utm_appctl report -s /tmp/nobody /tmp/usage.json | cmp - /tmp/page
  $ utm_appctl report -s /tmp/nobody /tmp/none
  utm_appctl: cannot report /tmp/none: No such file or directory. Name a usage file that utm_appd has exported
  [2]

Nobody may be able to read it: the disk is full, or the reader has gone.

  $ utm_appctl report >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]
  $ ls -A /tmp/here
  $ mkfifo /tmp/pipe
  $ (exec 3<>/tmp/pipe 4>/tmp/pipe 3<&- && utm_appctl report >&4)
  utm_appctl: the output could not be written (Broken pipe)
  [4]
  $ ls -A /tmp/here

There has to be a folder for the export. The daemon is not asked without one.

  $ utm_appctl debug on
  $ forget
  $ TMPDIR=/tmp/none utm_appctl report
  utm_appctl: cannot create a folder in /tmp/none (No such file or directory); set TMPDIR to another
  [4]
  $ TMPDIR=/tmp/$(letters 120) utm_appctl report 2>&1 | sed 's/(Filename/(File name/'
  utm_appctl: cannot create a folder in /tmp/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa (File name too long); set TMPDIR to another
  $ log

Meanwhile the folder is nobody else's business, whatever the umask says.

  $ occupy
  $ (umask 0; utm_appctl report >/tmp/page) & report=$!
  $ until [ -e /tmp/here/*/usage.json ]; do sleep 0.01; done
  $ stat -c %a /tmp/here/* /tmp/here/*/usage.json
  700
  600
  $ release
  $ wait $report
  $ ls -A /tmp/here

A relative folder is not used, but the usual one.

  $ occupy
  $ TMPDIR=here utm_appctl report >/tmp/page & report=$!
  $ until [ -e /tmp/utm_appctl.*/usage.json ]; do sleep 0.01; done
  $ ls -A /tmp/here
  $ release
  $ wait $report
  $ ls -d /tmp/utm_appctl.* 2>/dev/null
  [2]

A daemon may take too long, and a person may break the client off.

  $ occupy
  $ utm_appctl report -t 1
  utm_appctl: the daemon did not answer within 1 s: it may be waiting for one of the router's programs; try again, or wait longer with -t
  [4]
  $ ls -A /tmp/here
  $ release
  $ break_off() {
  >   occupy
  >   env --default-signal="$1" utm_appctl report & report=$!
  >   until [ -e /tmp/here/*/usage.json ]; do sleep 0.01; done
  >   kill -s "$1" $report
  >   wait $report 2>/dev/null || echo "status $?"
  >   ls -A /tmp/here
  >   release
  > }
  $ break_off HUP
  status 129
  $ break_off INT
  status 130
  $ break_off TERM
  status 143
