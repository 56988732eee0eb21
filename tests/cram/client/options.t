An option goes with the commands that take it. With others it is answered with the command's help.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ daemon stop
  $ utm_appctl ping --json
  utm_appctl: --json cannot be used with this command
  Usage: utm_appctl ping
  
    ask whether the daemon answers
  
  Options:
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  [2]
  $ utm_appctl usage 3 --apps
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  [3]
  $ utm_appctl activate on -n /dev/null 2>&1 | head -n 1
  utm_appctl: --names cannot be used with this command

These are all that each command takes: with any other its answer is of that kind.

  $ cat >options <<OPTIONS
  > json --json
  > json -j
  > ascii --ascii
  > ascii -a
  > names --names /dev/null
  > names -n/dev/null
  > apps --apps
  > day --day 1
  > week --week=1
  > month --month
  > history --history
  > history --history=weeks
  > days --days
  > weeks --weeks
  > OPTIONS
  $ commands | while read -r command; do
  >   help=$(utm_appctl $command --help)
  >   words=$command
  >   while utm_appctl $words 2>&1 | grep -q 'too few operands'; do words="$words 1"; done
  >   taken=
  >   while read -r name option; do
  >     refusal="utm_appctl: --$name cannot be used with this command"
  >     answer=$(utm_appctl $words $option 2>&1)
  >     test "$? $answer" = "2 $refusal
  > $help" || taken="$taken $option"
  >   done <options
  >   echo "$command:$taken"
  > done
  ping:
  status: --json -j
  activate:
  debug:
  profile add:
  profile del:
  device add:
  device del:
  limit show: --json -j
  limit set:
  limit enable:
  limit disable:
  weekday show: --json -j
  weekday set:
  extend show: --json -j
  extend add:
  extend reset:
  usage: --json -j --ascii -a --names /dev/null -n/dev/null --apps --day 1 --week=1 --month --history --history=weeks --days --weeks
  report: --names /dev/null -n/dev/null
  policy create:
  policy rule: --names /dev/null -n/dev/null
  policy bind:
  policy clear:
  signature load:
  interval show: --json -j
  interval set:
  export:
  import:
