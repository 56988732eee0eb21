A ping says nothing when the daemon answers.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl debug on
  $ utm_appctl ping
  $ log
  [socket] Receive cmd type=0

Limits and the debug log are each on or off.

  $ utm_appctl status
  limits     off
  debug log  on
  $ utm_appctl status --json
  {"active":false,"debug":true}
  $ log
  [socket] Receive cmd type=47
  [socket] Receive cmd type=47
  $ utm_appctl activate on
  $ utm_appctl debug off
  $ utm_appctl status
  limits     on
  debug log  off
  $ utm_appctl status -j
  {"active":true,"debug":false}

The router is told when limits are turned on or off.

  $ utm_appctl activate off
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg off
  notify status_changed 1 0

A switch knows the words of a configuration file too, in any case. The daemon is not asked anything
else.

  $ utm_appctl debug YES
  $ forget
  $ for word in o '' offf; do
  >   utm_appctl activate "$word" || echo "status $?"
  >   utm_appctl debug "$word" || echo "status $?"
  > done
  utm_appctl: "o" is neither on nor off
  Give on or off; yes and no will do, too
  status 2
  utm_appctl: "o" is neither on nor off
  Give on or off; yes and no will do, too
  status 2
  utm_appctl: "" is neither on nor off
  Give on or off; yes and no will do, too
  status 2
  utm_appctl: "" is neither on nor off
  Give on or off; yes and no will do, too
  status 2
  utm_appctl: "offf" is neither on nor off
  Give on or off; yes and no will do, too
  status 2
  utm_appctl: "offf" is neither on nor off
  Give on or off; yes and no will do, too
  status 2
  $ log

Other words for a switch.

  $ for word in yes TRUE enabled 1 ON; do
  >   utm_appctl debug off
  >   utm_appctl debug "$word"
  >   utm_appctl status --json
  > done
  {"active":false,"debug":true}
  {"active":false,"debug":true}
  {"active":false,"debug":true}
  {"active":false,"debug":true}
  {"active":false,"debug":true}
  $ for word in no False disabled 0 OFF; do
  >   utm_appctl debug on
  >   utm_appctl debug "$word"
  >   utm_appctl status --json
  > done
  {"active":false,"debug":false}
  {"active":false,"debug":false}
  {"active":false,"debug":false}
  {"active":false,"debug":false}
  {"active":false,"debug":false}
  $ utm_appctl debug on
  $ forget

The interval between two exports may be written as hours and minutes.

  $ utm_appctl interval show
  30 (30m)
  $ utm_appctl interval set 1h30m
  $ utm_appctl interval show
  90 (1h30m)
  $ utm_appctl interval set 45
  $ utm_appctl interval show
  45 (45m)
  $ utm_appctl interval show --json
  {"interval":45}

It is at least one minute.

  $ utm_appctl interval set 0
  utm_appctl: "0" is less than 1m
  For example: utm_appctl interval set 30m
  [1]
  $ utm_appctl interval set soon
  utm_appctl: "soon" is not a time
  Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h
  [2]
  $ utm_appctl interval set 2147483647
  $ utm_appctl interval show --json
  {"interval":2147483647}
  $ log
  [socket] Receive cmd type=48
  [socket] Receive cmd type=49
  [socket] Receive cmd type=48
  [socket] Receive cmd type=49
  [socket] Receive cmd type=48
  [socket] Receive cmd type=48
  [socket] Receive cmd type=49
  [socket] Receive cmd type=48
