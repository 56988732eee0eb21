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
  utm_appctl: "pong" is no command
  Did you mean "ping"?
  [2]
  $ utm_appctl pong --help
  utm_appctl: "pong" is no command
  Did you mean "ping"?
  [2]
  $ utm_appctl help pong
  utm_appctl: "pong" is no command
  Did you mean "ping"?
  [2]
  $ utm_appctl ''
  utm_appctl: "" is no command
  See utm_appctl --help
  [2]
  $ utm_appctl pong 2>/dev/null
  [2]

A noun needs one of its words.

  $ utm_appctl limit
  utm_appctl: "limit" needs a second word
  Give one of: show, set, enable, disable; see utm_appctl limit --help
  [2]
  $ utm_appctl limit raise 3
  utm_appctl: "limit raise" is no command
  Give one of: show, set, enable, disable; see utm_appctl limit --help
  [2]
  $ utm_appctl limit raise --help
  utm_appctl: "limit raise" is no command
  Give one of: show, set, enable, disable; see utm_appctl limit --help
  [2]

What comes near a word is taken for a slip of the hand.

  $ for words in 'usgae 3' 'limt show 3' 'limit shwo 3' 'devices add' 'policy buid 3 7' 'xyz'; do
  >   utm_appctl $words || echo "status $?"
  > done
  utm_appctl: "usgae" is no command
  Did you mean "usage"?
  status 2
  utm_appctl: "limt" is no command
  Did you mean "limit"?
  status 2
  utm_appctl: "limit shwo" is no command
  Did you mean "show"?
  status 2
  utm_appctl: "devices" is no command
  Did you mean "device"?
  status 2
  utm_appctl: "policy buid" is no command
  Give one of: create, rule, bind, show, clear; see utm_appctl policy --help
  status 2
  utm_appctl: "xyz" is no command
  See utm_appctl --help
  status 2
  $ utm_appctl usage 3 --histroy
  utm_appctl: "--histroy" is no option
  Did you mean "--history"?
  [2]
  $ utm_appctl usage 3 --wek=1
  utm_appctl: "--wek=1" is no option
  Did you mean "--week"?
  [2]

An unknown option is named.

  $ utm_appctl status --jsonn
  utm_appctl: "--jsonn" is no option
  Did you mean "--json"?
  [2]
  $ utm_appctl status -x
  utm_appctl: "-x" is no option
  See utm_appctl --help
  [2]
  $ utm_appctl status -jx
  utm_appctl: "-jx" is no option
  See utm_appctl --help
  {"error":"\"-jx\" is no option. See utm_appctl --help"}
  [2]
  $ utm_appctl status --json=yes
  utm_appctl: "--json=yes": this option takes no value
  Give --json alone
  [2]
  $ for option in -s --socket -t --timeout; do
  >   utm_appctl status $option || echo "status $?"
  > done
  utm_appctl: "-s" needs a value
  See utm_appctl --help
  status 2
  utm_appctl: "--socket" needs a value
  See utm_appctl --help
  status 2
  utm_appctl: "-t" needs a value
  See utm_appctl --help
  status 2
  utm_appctl: "--timeout" needs a value
  See utm_appctl --help
  status 2

A timeout is a second to an hour.

  $ for seconds in 0 -1 3601 1.5 '' soon 99999999999; do
  >   utm_appctl ping -t "$seconds" || echo "status $?"
  > done
  utm_appctl: "0" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2
  utm_appctl: "-1" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2
  utm_appctl: "3601" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2
  utm_appctl: "1.5" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2
  utm_appctl: "" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2
  utm_appctl: "soon" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2
  utm_appctl: "99999999999" is not valid for --timeout
  Give a whole number from 1 to 3600
  status 2

Too few and too many words are answered with the command's help.

  $ utm_appctl limit set 3
  utm_appctl: "limit set" has too few operands
  Usage: utm_appctl limit set ID MINUTES; see utm_appctl limit set --help
  [2]
  $ utm_appctl limit set 3 4 5
  utm_appctl: "limit set" has too many operands
  Usage: utm_appctl limit set ID MINUTES; see utm_appctl limit set --help
  [2]
  $ utm_appctl limit set 3 4 5 2>/dev/null
  [2]
