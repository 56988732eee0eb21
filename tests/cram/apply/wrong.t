A household file with errors is not applied, not even in part.

  $ . "$SOURCE/tests/cram/apply/household.sh"
  $ utm_appctl apply
  utm_appctl: cannot read the household from /tmp/household.json: No such file or directory
  [2]
  $ family 25h
  $ change 's/"rule": "10m"/"rule": "often"/'
  $ utm_appctl apply
  utm_appctl: /tmp/household.json: people[0].limit: 1500 minutes are less than one or more than 24 hours: give a time between, or "none"
  utm_appctl: /tmp/household.json: people[0].applications[0].rule: "often" is not a time: give minutes, such as 90 or "1h30m", or "blocked" or "free"
  [2]
  $ utm_appctl apply --json
  utm_appctl: /tmp/household.json: people[0].limit: 1500 minutes are less than one or more than 24 hours: give a time between, or "none"
  utm_appctl: /tmp/household.json: people[0].applications[0].rule: "often" is not a time: give minutes, such as 90 or "1h30m", or "blocked" or "free"
  {"error":"\/tmp\/household.json: people[0].applications[0].rule: \"often\" is not a time: give minutes, such as 90 or \"1h30m\", or \"blocked\" or \"free\"","messages":["\/tmp\/household.json: people[0].limit: 1500 minutes are less than one or more than 24 hours: give a time between, or \"none\"","\/tmp\/household.json: people[0].applications[0].rule: \"often\" is not a time: give minutes, such as 90 or \"1h30m\", or \"blocked\" or \"free\""]}
  [2]
  $ journal
  $ utm_appctl status
  limits     off
  debug log  off
  $ utm_appctl apply $household /tmp/other.json 2>&1 | sed -n 1p
  utm_appctl: "apply" has too many operands
  $ utm_appctl apply /tmp/none.json
  utm_appctl: cannot read the household from /tmp/none.json: No such file or directory
  [2]

Without a daemon nothing is done.

  $ family
  $ daemon stop
  $ utm_appctl apply
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  [3]
  $ daemon start

One apply at a time. Whoever waits too long is told for whom.

  $ mkdir -m 700 -p $UTM_APPCTL_STATE
  $ (flock 9; echo $$ >$UTM_APPCTL_STATE/apply.lock; touch /tmp/locked; exec sleep 100) \
  >   9>>$UTM_APPCTL_STATE/apply.lock &
  $ until [ -e /tmp/locked ]; do sleep 0.01; done
  $ utm_appctl apply -t 1 2>&1 | sed 's/process [0-9]*/process PID/'
  utm_appctl: another apply, process PID, is at work: try again, or wait longer with -t
  $ kill $!
  $ wait $! 2>/dev/null
  [143]
  $ utm_appctl apply | sed -n 1p
  limits are switched on

The folder of what was applied last has to be one's own.

  $ chmod 0777 $UTM_APPCTL_STATE
  $ utm_appctl apply
  utm_appctl: cannot use the folder /tmp/utm_appctl (others may write there): set UTM_APPCTL_STATE to one that is yours and that nobody else may write
  [4]
  $ chmod 0700 $UTM_APPCTL_STATE
  $ UTM_APPCTL_STATE=state utm_appctl apply
  utm_appctl: cannot use the folder state (its path has to begin with / and to be short): set UTM_APPCTL_STATE to one that is yours and that nobody else may write
  [4]
  $ UTM_APPCTL_STATE=/tmp/none/none utm_appctl apply
  utm_appctl: cannot use the folder /tmp/none/none (No such file or directory): set UTM_APPCTL_STATE to one that is yours and that nobody else may write
  [4]

Where it was damaged, that is said, and nothing else.

  $ echo '{' >$UTM_APPCTL_STATE/applied.json
  $ utm_appctl apply
  utm_appctl: /tmp/utm_appctl/applied.json is damaged and ignored: what was applied last is not known; apply --repair mends what that could leave behind
  nothing to do
  $ utm_appctl apply
  nothing to do

The daemon cannot write where the client can read.

  $ TMPDIR=/tmp/none utm_appctl apply
  utm_appctl: cannot create a folder in /tmp/none (No such file or directory); set TMPDIR to another
  [4]
