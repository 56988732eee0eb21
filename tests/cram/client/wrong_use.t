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
  {"error":"\"-jx\": unknown option; see utm_appctl --help"}
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
    -j, --json                     print one JSON document
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
    -j, --json                     print one JSON document
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  [2]
  $ utm_appctl limit set 3 4 5 2>/dev/null
  [2]
