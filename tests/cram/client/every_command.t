Each command of the help takes so many words, and answers any other number with how it goes. Each
line shows what it says to no word, one word, and so on. Left out is watch, which does not end.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ daemon stop
  $ answer_to() {
  >   usage=$(utm_appctl $command --help | sed -n '1s/ \[OPTIONS\]$//;1p')
  >   answer=$(utm_appctl $command $(seq "$1") 2>&1)
  >   case "$? $answer" in
  >   "2 utm_appctl: \"$command\" has too few operands
  > $usage; see utm_appctl $command --help") echo few ;;
  >   "2 utm_appctl: \"$command\" has too many operands
  > $usage; see utm_appctl $command --help") echo many ;;
  >   *) echo right ;;
  >   esac
  > }
  $ commands | grep -vx watch | while read -r command; do
  >   echo "$command:" $(for count in 0 1 2 3 4; do answer_to $count; done)
  > done
  ping: right many many many many
  status: right many many many many
  activate: few right many many many
  debug: few right many many many
  apply: right right many many many
  people: right many many many many
  profile add: few right many many many
  profile del: few right many many many
  device add: few few right right right
  device del: few few right right right
  device list: right right many many many
  limit show: few right many many many
  limit set: few few right many many
  limit enable: few right many many many
  limit disable: few right many many many
  weekday show: few right many many many
  weekday set: few few few right many
  extend show: few right many many many
  extend add: few few right many many
  extend reset: few right many many many
  usage: right right many many many
  report: right right many many many
  metrics: right many many many many
  policy create: few right many many many
  policy rule: few few right right right
  policy bind: few few right many many
  policy show: right right many many many
  policy clear: few right many many many
  signature load: few right many many many
  interval show: right many many many many
  interval set: few right many many many
  export: few right many many many
  import: few right many many many
  completion: few right right right right

An option goes with the commands that take it. With others it is answered with what
the command takes.

  $ utm_appctl ping --apps
  utm_appctl: --apps cannot be used with "ping"
  See utm_appctl ping --help
  [2]
  $ utm_appctl usage 3 --apps
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  [3]
  $ utm_appctl activate on -n /dev/null 2>&1 | sed -n 1p
  utm_appctl: --names cannot be used with "activate"

These are all that each command takes: with any other its answer is of that kind.

  $ echo '{}' >/tmp/empty.json
  $ cat >options <<OPTIONS
  > ascii --ascii
  > ascii -a
  > names --names /dev/null
  > names -n/dev/null
  > household --household /tmp/empty.json
  > apps --apps
  > day --day 1
  > yesterday --yesterday
  > week --week=1
  > month --month
  > history --history
  > history --history=weeks
  > days --days
  > weeks --weeks
  > dry-run --dry-run
  > repair --repair
  > prune --prune
  > restore --restore /tmp/usage.json
  > person --person 3
  > output --output /dev/null
  > output -o/dev/null
  > all --all
  > exec --exec /tmp/none
  > interval --interval 1
  > yes --yes
  > yes -y
  > OPTIONS
  $ commands | grep -vx watch | while read -r command; do
  >   words=$command
  >   while utm_appctl $words 2>&1 | grep -q 'too few operands'; do words="$words 1"; done
  >   taken=
  >   while read -r name option; do
  >     refusal="utm_appctl: --$name cannot be used with \"$command\""
  >     answer=$(utm_appctl $words $option 2>&1)
  >     test "$? $answer" = "2 $refusal
  > See utm_appctl $command --help" || taken="$taken $option"
  >   done <options
  >   echo "$command:$taken"
  > done
  ping:
  status:
  activate:
  debug:
  apply: --names /dev/null -n/dev/null --household /tmp/empty.json --dry-run --repair --prune --restore /tmp/usage.json
  people: --names /dev/null -n/dev/null --household /tmp/empty.json
  profile add: --household /tmp/empty.json
  profile del: --household /tmp/empty.json --yes -y
  device add: --household /tmp/empty.json
  device del: --household /tmp/empty.json
  device list: --household /tmp/empty.json
  limit show: --household /tmp/empty.json
  limit set: --household /tmp/empty.json
  limit enable: --household /tmp/empty.json
  limit disable: --household /tmp/empty.json
  weekday show: --household /tmp/empty.json
  weekday set: --household /tmp/empty.json
  extend show: --household /tmp/empty.json
  extend add: --household /tmp/empty.json
  extend reset: --household /tmp/empty.json
  usage: --ascii -a --names /dev/null -n/dev/null --household /tmp/empty.json --apps --day 1 --yesterday --week=1 --month --history --history=weeks --days --weeks
  report: --names /dev/null -n/dev/null --household /tmp/empty.json --person 3 --output /dev/null -o/dev/null
  metrics: --names /dev/null -n/dev/null --household /tmp/empty.json --output /dev/null -o/dev/null
  policy create:
  policy rule: --names /dev/null -n/dev/null --household /tmp/empty.json
  policy bind: --household /tmp/empty.json
  policy show: --names /dev/null -n/dev/null --household /tmp/empty.json
  policy clear:
  signature load:
  interval show:
  interval set:
  export:
  import:
  completion: --names /dev/null -n/dev/null --household /tmp/empty.json
