Without a command there is help, on standard error. No daemon is asked here.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ daemon stop

  $ utm_appctl --help >/tmp/help
  $ utm_appctl 2>/tmp/messages
  [2]
  $ cmp /tmp/help /tmp/messages
  $ utm_appctl -t 3 2>/tmp/messages
  [2]
  $ cmp /tmp/help /tmp/messages

An unknown command leads to help.

  $ utm_appctl pong
  utm_appctl: "pong": unknown command; see utm_appctl --help
  [2]
  $ utm_appctl pong --help
  utm_appctl: "pong": unknown command; see utm_appctl --help
  [2]
  $ utm_appctl help pong
  utm_appctl: "pong": unknown command; see utm_appctl --help
  [2]
  $ utm_appctl ''
  utm_appctl: "": unknown command; see utm_appctl --help
  [2]
  $ utm_appctl pong 2>/dev/null
  [2]

A noun needs one of its words.

  $ utm_appctl limit
  utm_appctl: "limit" needs a second word
  Usage: utm_appctl limit ...
  
    limit show ID                   show today's limit and whether it is enabled
    limit set ID MINUTES            set the limit of today and of every weekday
    limit enable ID                 cut the profile off when its limit is reached
    limit disable ID                only count usage; do not enforce the limit
  [2]
  $ utm_appctl limit raise 3
  utm_appctl: "limit raise": unknown command
  Usage: utm_appctl limit ...
  
    limit show ID                   show today's limit and whether it is enabled
    limit set ID MINUTES            set the limit of today and of every weekday
    limit enable ID                 cut the profile off when its limit is reached
    limit disable ID                only count usage; do not enforce the limit
  [2]
  $ utm_appctl limit raise --help
  utm_appctl: "limit raise": unknown command
  Usage: utm_appctl limit ...
  
    limit show ID                   show today's limit and whether it is enabled
    limit set ID MINUTES            set the limit of today and of every weekday
    limit enable ID                 cut the profile off when its limit is reached
    limit disable ID                only count usage; do not enforce the limit
  [2]

An unknown option is named.

  $ utm_appctl status --jsonn
  utm_appctl: "--jsonn": unknown option; see utm_appctl --help
  [2]
  $ utm_appctl status -x
  utm_appctl: "-x": unknown option; see utm_appctl --help
  [2]
  $ utm_appctl status -jx
  utm_appctl: "-jx": unknown option; see utm_appctl --help
  [2]
  $ utm_appctl status --json=yes
  utm_appctl: "--json=yes": this option takes no value
  [2]
  $ for option in -s --socket -t --timeout; do
  >   utm_appctl status $option || echo "status $?"
  > done
  utm_appctl: "-s" needs a value; see utm_appctl --help
  status 2
  utm_appctl: "--socket" needs a value; see utm_appctl --help
  status 2
  utm_appctl: "-t" needs a value; see utm_appctl --help
  status 2
  utm_appctl: "--timeout" needs a value; see utm_appctl --help
  status 2

A timeout is a second to an hour.

  $ for seconds in 0 -1 3601 1.5 '' soon 99999999999; do
  >   utm_appctl ping -t "$seconds" || echo "status $?"
  > done
  utm_appctl: "0" is not valid for --timeout: give a whole number from 1 to 3600
  status 2
  utm_appctl: "-1" is not valid for --timeout: give a whole number from 1 to 3600
  status 2
  utm_appctl: "3601" is not valid for --timeout: give a whole number from 1 to 3600
  status 2
  utm_appctl: "1.5" is not valid for --timeout: give a whole number from 1 to 3600
  status 2
  utm_appctl: "" is not valid for --timeout: give a whole number from 1 to 3600
  status 2
  utm_appctl: "soon" is not valid for --timeout: give a whole number from 1 to 3600
  status 2
  utm_appctl: "99999999999" is not valid for --timeout: give a whole number from 1 to 3600
  status 2

Too few and too many words are answered with the command's help.

  $ utm_appctl limit set 3
  utm_appctl: too few operands
  Usage: utm_appctl limit set ID MINUTES
  
    set the limit of today and of every weekday
  
  Options:
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  [2]
  $ utm_appctl limit set 3 4 5
  utm_appctl: too many operands
  Usage: utm_appctl limit set ID MINUTES
  
    set the limit of today and of every weekday
  
  Options:
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  [2]
  $ utm_appctl limit set 3 4 5 2>/dev/null
  [2]

So it is for each command. Each line shows what it says to no word, one word, and so on.

  $ answer_to() {
  >   help=$(utm_appctl $command --help)
  >   answer=$(utm_appctl $command $(seq "$1") 2>&1)
  >   case "$? $answer" in
  >   "2 utm_appctl: too few operands
  > $help") echo few ;;
  >   "2 utm_appctl: too many operands
  > $help") echo many ;;
  >   *) echo right ;;
  >   esac
  > }
  $ commands | while read -r command; do
  >   echo "$command:" $(for count in 0 1 2 3 4; do answer_to $count; done)
  > done
  ping: right many many many many
  status: right many many many many
  activate: few right many many many
  debug: few right many many many
  profile add: few right many many many
  profile del: few right many many many
  device add: few few right right right
  device del: few few right right right
  limit show: few right many many many
  limit set: few few right many many
  limit enable: few right many many many
  limit disable: few right many many many
  weekday show: few right many many many
  weekday set: few few few right many
  extend show: few right many many many
  extend add: few few right many many
  extend reset: few right many many many
  usage: few right many many many
  report: right right many many many
  policy create: few right many many many
  policy rule: few few right right right
  policy bind: few few right many many
  policy clear: few right many many many
  signature load: few right many many many
  interval show: right many many many many
  interval set: few right many many many
  export: few right many many many
  import: few right many many many
