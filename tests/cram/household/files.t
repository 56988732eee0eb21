The daemon's files are at its own paths, and begin empty.

  $ ls -dF /dev/utm_app_config_socket /tmp/ApplicationData
  /dev/utm_app_config_socket=
  /tmp/ApplicationData/
  $ ls /tmp/utm_log
  ls: cannot access '/tmp/utm_log': No such file or directory
  [2]
  $ ls -l /tmp/ApplicationData
  total 0

  $ utm_appctl debug on
  $ utm_appctl profile add 1
  $ cat /tmp/utm_log/utm_app_log
  [socket] Receive cmd type=1
  Create profile 1 success

  $ utm_appctl activate on
  $ utm_appctl export /tmp/usage.json
  $ daemon stop
  $ daemon start
  $ utm_appctl activate on
  $ utm_appctl usage 1
  utm_appctl: the daemon refused: Mia is not set up; have apply do it, or create profile 1 with profile add
  [1]
  $ utm_appctl import /tmp/usage.json
  $ utm_appctl usage 1 --json
  {"profile":1,"person":"Mia","today":0,"week":0,"month":0,"enabled":false,"limit":1440,"extend":0,"left":1440}

A shell makes, moves and removes files beside them.

  $ mkdir /tmp/mine && cd /tmp/mine && pwd
  /tmp/mine
  $ cp /tmp/usage.json . && touch empty && mv usage.json "my usage.json" && ls -1
  empty
  my usage.json
  $ utm_appctl import "$PWD/my usage.json"
  $ cd .. && rm -r mine && ls -d mine
  ls: cannot access 'mine': No such file or directory
  [2]
