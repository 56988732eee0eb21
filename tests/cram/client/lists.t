Devices and rules, as the daemon has them and as the household says.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ export UTM_APPCTL_HOUSEHOLD=/tmp/household.json
  $ cat >$UTM_APPCTL_HOUSEHOLD <<END
  > {"applications": [{"number": 305, "name": "video"}, {"number": 306, "name": "games"}],
  >  "people": [{"number": 3, "name": "Mia",
  >              "devices": [{"mac": "02:00:00:00:00:0a", "name": "Mia's tablet"},
  >                          {"mac": "02:00:00:00:00:0b"}],
  >              "applications": [{"name": "video", "rule": "45m"},
  >                               {"name": "games", "rule": "blocked"}]}]}
  > END

While limits are off the daemon shows nothing of it.

  $ utm_appctl device list
  utm_appctl: limits are off, and the daemon does not show what it has: this is what the household says
  PERSON  DEVICE             NAME
  Mia     02:00:00:00:00:0A  Mia's tablet
  Mia     02:00:00:00:00:0B
  $ utm_appctl policy show mia
  utm_appctl: limits are off, and the daemon does not show what it has: this is what the household says
  PERSON  APPLICATION  RULE
  Mia     video        45m
  Mia     games        blocked

With limits on it does. What is on one side alone is told.

  $ utm_appctl activate on
  $ add_mia
  $ utm_appctl device add mia 02:00:00:00:00:0c
  $ utm_appctl profile add 4
  $ utm_appctl device add 4 02:00:00:00:00:0d
  $ utm_appctl policy create 7
  $ utm_appctl policy rule 7 video=45m games=30 307=block
  $ utm_appctl policy bind mia 7
  $ utm_appctl device list
  PERSON  DEVICE             NAME
  Mia     02:00:00:00:00:0A  Mia's tablet
  Mia     02:00:00:00:00:0C                not in the household
  Mia     02:00:00:00:00:0B                not at the daemon: see utm_appctl apply
  4       02:00:00:00:00:0D                not in the household
  $ utm_appctl device list mia
  PERSON  DEVICE             NAME
  Mia     02:00:00:00:00:0A  Mia's tablet
  Mia     02:00:00:00:00:0C                not in the household
  Mia     02:00:00:00:00:0B                not at the daemon: see utm_appctl apply
  $ utm_appctl device list 4
  PERSON  DEVICE             NAME
  4       02:00:00:00:00:0D        not in the household
  $ utm_appctl policy show
  PERSON  APPLICATION  RULE
  Mia     307          blocked  not in the household
  Mia     games        30m      not in the household
  Mia     video        45m
  Mia     games        blocked  not at the daemon: see utm_appctl apply
  $ utm_appctl policy show --json
  {"known":true,"rules":[{"profile":3,"person":"Mia","policy":7,"app":307,"name":null,"limit":0,"household":false,"daemon":true},{"profile":3,"person":"Mia","policy":7,"app":306,"name":"games","limit":30,"household":false,"daemon":true},{"profile":3,"person":"Mia","policy":7,"app":305,"name":"video","limit":45,"household":true,"daemon":true},{"profile":3,"person":"Mia","policy":7,"app":306,"name":"games","limit":0,"household":true,"daemon":false}]}
  $ utm_appctl policy show 4
  PERSON  APPLICATION  RULE
  $ utm_appctl device list 5
  utm_appctl: the daemon refused: no such profile; in the household Mia is 3
  [1]
  $ utm_appctl device list 5 --json
  utm_appctl: the daemon refused: no such profile; in the household Mia is 3
  {"error":"the daemon refused: no such profile; in the household Mia is 3"}
  [1]

Without a household nothing is missing in it.

  $ rm $UTM_APPCTL_HOUSEHOLD
  $ utm_appctl device list
  PERSON  DEVICE             NAME
  3       02:00:00:00:00:0A
  3       02:00:00:00:00:0C
  4       02:00:00:00:00:0D
  $ utm_appctl policy show
  PERSON  APPLICATION  RULE
  3       307          blocked
  3       306          30m
  3       305          45m
  $ utm_appctl device list --json
  {"known":true,"devices":[{"profile":3,"person":null,"mac":"02:00:00:00:00:0A","name":null,"household":false,"daemon":true},{"profile":3,"person":null,"mac":"02:00:00:00:00:0C","name":null,"household":false,"daemon":true},{"profile":4,"person":null,"mac":"02:00:00:00:00:0D","name":null,"household":false,"daemon":true}]}

It leaves nothing behind.

  $ ls /tmp | grep -i utm_appctl
  [1]
