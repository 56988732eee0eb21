What rpcd's plugin runs: a method of its object, and its arguments on standard input.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ call() { printf '%s' "$2" | utm_appctl rpcd call "$1"; }
  $ wrong() { call "$@" 2>/dev/null | sed 's/^{"error":".*"}$/an error/'; }
  $ utm_appctl rpcd list </dev/null
  {"status":{},"people":{},"usage":{"person":"Mia"},"history":{"person":"Mia","weeks":true},"extend":{"person":"Mia","minutes":"30m"},"apply":{"dry_run":true,"prune":true,"repair":true}}
  $ call status '{}'
  {"active":false,"debug":false}
  $ utm_appctl activate on
  $ utm_appctl profile add 3
  $ call status '{"ubus_rpc_session":"c1ed6c7b025d0caca723a816fa61b668"}'
  {"active":true,"debug":false}

Time is given as a number of minutes or as people write it, to a person by number or name.

  $ call extend '{"person":3,"minutes":30}'
  {"done":true}
  $ call extend '{"person":"3","minutes":"1h30m"}'
  {"done":true}
  $ utm_appctl extend show 3
  120 (2h)
  $ call usage '{"person":3}'
  {"profile":3,"person":null,"today":0,"week":0,"month":0,"enabled":false,"limit":1440,"extend":120,"left":1560}
  $ call history '{"person":3,"weeks":true}'
  {"profile":3,"person":null,"unit":"week","minutes":[0,0,0,0],"applications":[]}

A household is applied, and its people go by their names.

  $ cat >/tmp/household.json <<END
  > {"people": [{"number": 3, "name": "Mia", "limit": "2h"}, {"number": 4, "name": "--help"}]}
  > END
  $ call apply '{"dry_run":true}'
  {"changed":true,"dry_run":true,"steps":[{"what":"--help: added as person 4","profile":4,"person":"--help"},{"what":"Mia: limit 2h every day","profile":3,"person":"Mia"}]}
  $ call apply '{}'
  {"changed":true,"dry_run":false,"steps":[{"what":"--help: added as person 4","profile":4,"person":"--help"},{"what":"Mia: limit 2h every day","profile":3,"person":"Mia"}]}
  $ call apply '{"dry_run":false,"repair":false,"prune":false}'
  {"changed":false,"dry_run":false,"steps":[]}
  $ call extend '{"person":"mia","minutes":"2h 30m"}'
  {"done":true}
  $ call usage '{"person":"Mia"}'
  {"profile":3,"person":"Mia","today":0,"week":0,"month":0,"enabled":false,"limit":120,"extend":270,"left":390}
  $ call usage '{"person":"--help"}'
  {"profile":4,"person":"--help","today":0,"week":0,"month":0,"enabled":false,"limit":1440,"extend":0,"left":1440}
  $ call usage '{}' | tr '{' '\n' | grep -o '"person":"[^"]*"'
  "person":"Mia"
  "person":"--help"
  $ call people '{}' | tr '{' '\n' | grep -o '"person":"[^"]*"'
  "person":"Mia"
  "person":"--help"
  $ rm /tmp/household.json

Whatever goes wrong is one JSON object, too: what the command itself says, or what is no call.

  $ wrong extend '{"person":9,"minutes":30}'
  an error
  $ wrong extend '{"person":3,"minutes":"soon"}'
  an error
  $ call extend '{"person":3}' 2>/dev/null
  {"error":"\"minutes\" is missing"}
  [2]
  $ call reboot '{}' 2>/dev/null
  {"error":"\"reboot\" is no method"}
  [2]
  $ call status 'status' 2>/dev/null
  {"error":"the arguments are no JSON object of texts and numbers"}
  [2]
  $ utm_appctl rpcd call status </dev/null 2>/dev/null
  {"error":"the arguments are no JSON object of texts and numbers"}
  [2]
  $ utm_appctl rpcd call status <&- 2>/dev/null
  {"error":"the arguments are no JSON object of texts and numbers"}
  [2]
  $ utm_appctl rpcd call </dev/null 2>/dev/null
  {"error":"rpcd is followed by \"list\", or by \"call\" and a method"}
  [2]
  $ utm_appctl rpcd 2>/dev/null
  {"error":"rpcd is followed by \"list\", or by \"call\" and a method"}
  [2]
  $ utm_appctl rpcd list status 2>/dev/null
  {"error":"rpcd is followed by \"list\", or by \"call\" and a method"}
  [2]
  $ utm_appctl profile del 3
  $ daemon stop >/dev/null
  $ wrong status '{}'
  an error

Nothing in an argument is an option, and no shell reads it.

  $ wrong usage '{"person":"--help"}'
  an error
  $ wrong usage '{"person":"-s/tmp/elsewhere"}'
  an error
  $ wrong usage '{"person":"3; touch /tmp/touched"}'
  an error
  $ wrong usage '{"person":"$(touch /tmp/touched)"}'
  an error
  $ call usage '{"person":3,"--socket":"/tmp/elsewhere"}' 2>/dev/null
  {"error":"\"--socket\" is no argument of \"usage\""}
  [2]
  $ call apply '{"file":"/etc/shadow"}' 2>/dev/null
  {"error":"\"file\" is no argument of \"apply\""}
  [2]
  $ ls /tmp/touched 2>/dev/null
  [2]

Arguments have 4095 bytes at the most, whatever comes behind them.

  $ spaces() { printf "%$1s" ''; }
  $ call usage "{\"person\":$(spaces 4080)9}" 2>/dev/null | grep -c 'too long'
  0
  [1]
  $ call status "{$(spaces 4094)}" 2>/dev/null
  {"error":"the arguments are too long"}
  [2]
  $ call status "{$(spaces 100000)}" 2>/dev/null
  {"error":"the arguments are too long"}
  [2]
