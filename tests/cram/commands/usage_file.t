Switching on writes the usage file where none is.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ file=/tmp/ApplicationData/app_usage.json
  $ ls /tmp/ApplicationData
  $ utm_appctl activate on
  $ cat $file && echo
  {"user_profile_list":[],"timestamp":1893495600,"global_stat":[]}

One that is there stays as it is.

  $ utm_appctl activate off
  $ echo 'of an earlier life' >$file
  $ utm_appctl activate on
  $ cat $file
  of an earlier life

Without its folder that is logged, whatever the debug flag says, and limits work.

  $ utm_appctl activate off
  $ rm -r /tmp/ApplicationData
  $ log
  $ utm_appctl activate on
  $ log
  export to /tmp/ApplicationData/app_usage.json failed
  $ ls -d /tmp/ApplicationData
  ls: cannot access '/tmp/ApplicationData': No such file or directory
  [2]
  $ utm_appctl status
  limits     on
  debug log  off

While limits are off the file is neither written nor read, and nothing is said of it.

  $ mkdir /tmp/ApplicationData
  $ utm_appctl export /tmp/saved.json
  $ utm_appctl activate off
  $ utm_appctl interval set 1
  $ tick 4
  $ utm_appctl export /tmp/other.json
  utm_appctl: the daemon refused: limits are off; turn them on with activate on
  [1]
  $ utm_appctl import /tmp/saved.json
  utm_appctl: the daemon refused: limits are off; turn them on with activate on
  [1]
  $ ls -A /tmp/ApplicationData
  $ ls /tmp/other.json
  ls: cannot access '/tmp/other.json': No such file or directory
  [2]
  $ log

Failures are logged with the debug log off, and so is the success of reading.

  $ utm_appctl interval set 1000
  $ utm_appctl activate on
  $ utm_appctl export /tmp/saved.json
  $ utm_appctl export /tmp/none/saved.json
  utm_appctl: the daemon refused: /tmp/none/saved.json: its folder does not exist
  [1]
  $ utm_appctl import /tmp/saved.json
  $ utm_appctl import /tmp/none/saved.json
  utm_appctl: the daemon refused: /tmp/none/saved.json: No such file or directory
  [1]
  $ clock set '2029-12-31 12:00'
  $ utm_appctl import /tmp/saved.json
  utm_appctl: the daemon refused: /tmp/saved.json: it is from the future; is the clock right?
  [1]
  $ log
  export to /tmp/none/saved.json failed
  import from /tmp/saved.json success
  import from /tmp/none/saved.json failed
  Import statistic failed because it is from future
  import from /tmp/saved.json failed

The debug log also tells of what was written.

  $ utm_appctl debug on
  $ utm_appctl export /tmp/saved.json
  $ log
  [socket] Receive cmd type=51
  export to /tmp/saved.json success
