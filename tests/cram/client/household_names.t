People go by the names of the household, whatever the case; numbers go on working.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ cat >/tmp/household.json <<'END'
  > { "applications": [{ "number": 305, "name": "Video" }, { "number": 306, "name": "games" }],
  >   "people": [{ "number": 3, "name": "Mia" }, { "number": -4, "name": "Leo Émile" }] }
  > END
  $ utm_appctl profile add mia
  $ utm_appctl extend add MIA 30m
  $ utm_appctl extend show 3 --json
  {"profile":3,"person":"Mia","extend":30}
  $ utm_appctl extend add mia 1h 15m
  $ utm_appctl extend show Mia
  105 (1h45m)
  $ utm_appctl profile add 'leo émile'
  $ utm_appctl weekday set 'Leo Émile' sat,sun 3h
  $ utm_appctl weekday show -j -- -4
  {"profile":-4,"person":"Leo \xc3\x89mile","weekdays":[{"day":0,"name":"Sunday","minutes":180},{"day":1,"name":"Monday","minutes":1440},{"day":2,"name":"Tuesday","minutes":1440},{"day":3,"name":"Wednesday","minutes":1440},{"day":4,"name":"Thursday","minutes":1440},{"day":5,"name":"Friday","minutes":1440},{"day":6,"name":"Saturday","minutes":180}]} (esc)

Nobody has such a name.

  $ utm_appctl usage mai
  utm_appctl: "mai" is nobody's name
  Did you mean "Mia"?
  [2]
  $ utm_appctl usage Anna
  utm_appctl: "Anna" is nobody's name
  Give a whole number, or a name in the household
  [2]
  $ utm_appctl usage ''
  utm_appctl: "" is nobody's name
  Give a whole number, or a name in the household
  [2]

Somebody has it, and is not set up.

  $ utm_appctl profile del mia
  $ utm_appctl limit set mia 2h
  utm_appctl: the daemon refused: Mia is not set up; have apply do it, or create profile 3 with profile add
  [1]
  $ utm_appctl limit set 9 2h
  utm_appctl: the daemon refused: no such profile; in the household Mia is 3, Leo \xc3\x89mile is -4 (esc)
  [1]

Applications go by name, too. Those of a names file are added, and the household's names win.

  $ utm_appctl policy create 7
  $ utm_appctl debug on
  $ forget
  $ utm_appctl policy rule 7 video=45m Games=block
  $ printf '305 films\n307 chess\n' >/tmp/names
  $ utm_appctl policy rule 7 chess=1h video=allow --names /tmp/names
  $ log
  [socket] Receive cmd type=43
  Policy 7 add app 305 action 1 limit 45 success
  Policy 7 add app 306 action 2 limit 0 success
  Add apps to policy 7 success
  [socket] Receive cmd type=43
  Policy 7 add app 307 action 1 limit 60 success
  Policy 7 update app 305 action 0 limit 0 success
  Add apps to policy 7 success
  $ utm_appctl policy rule 7 vidoes=block
  utm_appctl: "vidoes" is no application
  Did you mean "Video"?
  [2]

Another file may be named. Then it has to be there.

  $ echo '{"people":[{"number":5,"name":"Ida"}]}' >/tmp/other.json
  $ utm_appctl profile add ida
  utm_appctl: "ida" is nobody's name
  Give a whole number, or a name in the household
  [2]
  $ utm_appctl profile add ida --household /tmp/other.json
  $ UTM_APPCTL_HOUSEHOLD=/tmp/other.json utm_appctl extend show ida
  0 (0m)
  $ utm_appctl extend show 5 --household /tmp/none
  utm_appctl: cannot read the household from /tmp/none: No such file or directory
  [2]
  $ utm_appctl ping --household /tmp/other.json
  utm_appctl: --household cannot be used with "ping"
  See utm_appctl ping --help
  [2]

A file that is wrong names nobody. Numbers go on working.

  $ echo '{"poeple":[]}' >/tmp/household.json
  $ utm_appctl extend show 5
  utm_appctl: /tmp/household.json: unknown key "poeple"; did you mean "people"?; until this is mended, the file names nobody and nothing
  0 (0m)
  $ utm_appctl extend show mia
  utm_appctl: /tmp/household.json: unknown key "poeple"; did you mean "people"?; until this is mended, the file names nobody and nothing
  utm_appctl: "mia" is nobody's name
  Give a whole number, or a name in the household
  [2]

Before somebody's history goes, the question has the name.

  $ echo '{"people":[{"number":3,"name":"Mia"}]}' >/tmp/household.json
  $ add_mia
  $ use 25 305=20
  $ utm_appctl profile del mia
  utm_appctl: the history of Mia would be deleted, too
  Say --yes if it may go; to keep it, export it to a file first
  [2]
