With --json every command prints one document, whatever happens. docs/json.md has an example of each:
a command, and keys and types of what it prints.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ documents() { python3 "$SOURCE/tests/cram/documents.py" "$@"; }
  $ documents table "$SOURCE/docs/json.md" >rows
  $ cut -f1 rows | while read -r first second rest; do
  >   commands | grep -x -e "$first" -e "$first $second"
  > done | uniq >described
  $ commands | grep -v '^watch' | diff - described

Somebody has used something, so that no array is empty; and people and applications have names.

  $ export UTM_APPCTL_HOUSEHOLD=/tmp/household.json
  $ cat >$UTM_APPCTL_HOUSEHOLD <<END
  > {"applications": [{"number": 305, "name": "video"}, {"number": 306, "name": "games"}],
  >  "people": [{"number": 3, "name": "Mia", "applications": [{"name": "video", "rule": "45m"}],
  >              "devices": [{"mac": "02:00:00:00:00:0a", "name": "tablet"}]}]}
  > END
  $ utm_appctl activate on
  $ add_mia
  $ utm_appctl limit enable mia
  $ use 75 305=60 306=15
  $ echo rules >/tmp/signatures
  $ echo '{"people":[{"number":3,"name":"Mia","limit":"2h"}]}' >/tmp/mia.json
  $ run_row() { utm_appctl $command --json "$@" >printed 2>messages; }
  $ while IFS='	' read -r command expected; do
  >   run_row
  >   status=$?
  >   got=$(documents shape <printed)
  >   test "$status $got" = "0 $expected" || echo "$command: $status $got instead of $expected"
  >   cat messages
  > done <rows

Each failure is told in a document and on standard error alike. These lines say how many commands end
with which status.

  $ outcome() {
  >   status=$?
  >   outcome=$(documents told printed messages)
  >   test "$outcome" = told || printf '%s: ' "$command" "$outcome"
  >   echo "status $status"
  > }
  $ outcomes() {
  >   while IFS='	' read -r command expected; do
  >     run_row "$@"
  >     outcome
  >   done <needing | sort | uniq -c
  > }

A command that nobody knows, or that lacks its operands. (Completion takes any words.)

  $ commands | grep -v completion | while read -r command; do
  >   utm_appctl $command --nonsense -j >printed 2>messages
  >   outcome
  >   utm_appctl -j $command one two three four five -- >printed 2>messages
  >   outcome
  > done | sort | uniq -c
       68 status 2
  $ for command in pong limit 'limit raise' '' 'help pong' 'usage 3 --day 99' '--js -t' '-xj' '-jx'; do
  >   utm_appctl -j $command >printed 2>messages
  >   outcome
  > done
  status 2
  status 2
  status 2
  status 2
  status 2
  status 2
  status 2
  status 2
  status 2

The daemon is not there, refuses, or answers nonsense.

  $ grep -v -e '^--version' -e '^completion' -e '^metrics' rows >needing
  $ outcomes -s /tmp/nobody
       35 status 3
  $ start_fake_server
  $ reply 1 >answer
  $ outcomes -s $fake
       34 status 1
        1 usage: no error: {people: [], warnings: [text]}: status 0
  $ : >answer
  $ outcomes -s $fake
       35 status 4
  $ reply 7 >answer
  $ outcomes -s $fake
       35 status 4
  $ { reply 2; reply 2; head -c 100 answer; } >half
  $ mv half answer
  $ outcomes -s $fake
       35 status 4
  $ stop_fake_server

A text from outside is clean, and in one line.

  $ utm_appctl "$(printf 'po\nng\033[31m\377')" -j 2>messages
  {"error":"\"po. ng?[31m?\" is no command. See utm_appctl --help"}
  [2]
  $ utm_appctl usage 3 --apps -n /tmp/none --json
  utm_appctl: cannot read the applications' names from /tmp/none: No such file or directory
  {"error":"cannot read the applications' names from \/tmp\/none: No such file or directory"}
  [2]

What is said beside an answer goes along with it.

  $ printf '305\n306\n307 maths\n' >/tmp/apps
  $ utm_appctl usage 3 --apps -n /tmp/apps --json
  utm_appctl: /tmp/apps, line 1: expected a number and a name, such as "305 video"; line skipped
  utm_appctl: /tmp/apps, line 2: expected a number and a name, such as "305 video"; line skipped
  {"profile":3,"person":"Mia","unit":"day","ago":0,"applications":[{"app":305,"name":"video","minutes":60},{"app":306,"name":"games","minutes":15}],"warnings":["\/tmp\/apps, line 1: expected a number and a name, such as \"305 video\"; line skipped","\/tmp\/apps, line 2: expected a number and a name, such as \"305 video\"; line skipped"]}
  $ utm_appctl usage 9 --apps -n /tmp/apps --json
  utm_appctl: /tmp/apps, line 1: expected a number and a name, such as "305 video"; line skipped
  utm_appctl: /tmp/apps, line 2: expected a number and a name, such as "305 video"; line skipped
  utm_appctl: the daemon refused: no such profile; in the household Mia is 3
  {"error":"the daemon refused: no such profile; in the household Mia is 3","messages":["\/tmp\/apps, line 1: expected a number and a name, such as \"305 video\"; line skipped","\/tmp\/apps, line 2: expected a number and a name, such as \"305 video\"; line skipped","the daemon refused: no such profile; in the household Mia is 3"]}
  [1]

Help stays text, and a document that cannot be written is no success.

  $ utm_appctl ping --help --json | head -n 1
  Usage: utm_appctl ping
  $ utm_appctl help ping -j | head -n 1
  Usage: utm_appctl ping
  $ utm_appctl help pong -j
  utm_appctl: "pong" is no command
  Did you mean "ping"?
  {"error":"\"pong\" is no command. Did you mean \"ping\"?"}
  [2]
  $ utm_appctl ping --json >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]
  $ utm_appctl ping --json >&-
  utm_appctl: the output could not be written (Bad file descriptor)
  [4]
