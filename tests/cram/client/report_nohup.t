A signal that is ignored, as under nohup, stays so. An emulator handles all signals itself, and so
drops that when an emulated program becomes another: this is for this machine alone.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ mkdir /tmp/here && export TMPDIR=/tmp/here
  $ utm_appctl activate on
  $ occupy
  $ (trap '' HUP; exec utm_appctl report >/tmp/page) & report=$!
  $ until [ -e /tmp/here/*/usage.json ]; do sleep 0.01; done
  $ kill -s HUP $report
  $ release
  $ wait $report
  $ tail -n 1 /tmp/page
  </html>
  $ ls -A /tmp/here
