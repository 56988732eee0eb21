Everybody of the household at a glance. The daemon lists nobody: the people are the household file's,
and how they stand the daemon's.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ export UTM_APPCTL_HOUSEHOLD=/tmp/household.json
  $ cat >$UTM_APPCTL_HOUSEHOLD <<END
  > {"applications": [{"number": 305, "name": "video"}, {"number": 306, "name": "games"},
  >                   {"number": 307, "name": "maths"}],
  >  "people": [
  >   {"number": 3, "name": "Mia", "applications": [{"name": "video", "rule": "45m"},
  >                                                 {"name": "games", "rule": "blocked"}]},
  >   {"number": 4, "name": "Ben", "applications": [{"name": "video", "rule": "2h"}]},
  >   {"number": 5, "name": "Grandma"},
  >   {"number": 6, "name": "Tom"}]}
  > END
  $ utm_appctl activate on
  $ for number in 3 4 5; do
  >   utm_appctl profile add $number
  >   utm_appctl device add $number 02:00:00:00:00:0$number
  > done
  $ utm_appctl limit set mia 2h
  $ utm_appctl limit enable Mia
  $ utm_appctl limit set ben 1h
  $ utm_appctl extend add ben 30m
  $ utm_appctl limit enable ben
  $ use 95 305=50 0=10
  $ utm_appctl people
  PERSON   TODAY  LIMIT  BONUS  LEFT  BLOCKED
  Mia      1h35m     2h          25m  video, games
  Ben      1h35m     1h    30m    0m  everything
  Grandma  1h35m   none            -
  Tom                                 not at the daemon: see utm_appctl apply
  $ utm_appctl people --json
  {"active":true,"people":[{"profile":3,"person":"Mia","known":true,"today":95,"week":95,"month":95,"enabled":true,"limit":120,"extend":0,"left":25,"cut_off":false,"applications":[{"app":305,"name":"video","today":50,"limit":45,"blocked":true},{"app":306,"name":"games","today":0,"limit":0,"blocked":true}]},{"profile":4,"person":"Ben","known":true,"today":95,"week":95,"month":95,"enabled":true,"limit":60,"extend":30,"left":0,"cut_off":true,"applications":[{"app":305,"name":"video","today":50,"limit":120,"blocked":false}]},{"profile":5,"person":"Grandma","known":true,"today":95,"week":95,"month":95,"enabled":false,"limit":1440,"extend":0,"left":1345,"cut_off":false,"applications":[]},{"profile":6,"person":"Tom","known":false}]}

It asks by getters, and never by an export: that would move the schedule of the daemon's own.

  $ utm_appctl debug on
  $ forget
  $ utm_appctl people | cmp - /dev/null
  cmp: EOF on /dev/null which is empty
  [1]
  $ log | sort | uniq -c
        1 Get usage for profile 6 failed because profile is not existed
        3 [socket] Receive cmd type=27
        3 [socket] Receive cmd type=29
        3 [socket] Receive cmd type=33
        4 [socket] Receive cmd type=35
        2 [socket] Receive cmd type=36
        1 [socket] Receive cmd type=47

Every list of one person's figures is one of everybody's, too.

  $ utm_appctl debug off
  $ utm_appctl usage
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  PERSON   TODAY  THIS WEEK  THIS MONTH  LIMIT  LEFT
  Mia      1h35m      1h35m       1h35m     2h   25m
  Ben      1h35m      1h35m       1h35m     1h    0m
  Grandma  1h35m      1h35m       1h35m   none     -
  $ utm_appctl usage --apps
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  Mia
  APPLICATION     MINUTES  TIME
  video                50   50m
  not recognised       10   10m
  total                60    1h
  
  Ben
  APPLICATION     MINUTES  TIME
  video                50   50m
  not recognised       10   10m
  total                60    1h
  
  Grandma
  APPLICATION     MINUTES  TIME
  video                50   50m
  not recognised       10   10m
  total                60    1h
  $ utm_appctl usage --history --weeks
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  Mia
  3 weeks ago   0  0m
  2 weeks ago   0  0m
  last week     0  0m
  this week    60  1h  ###########################################################
  
  Ben
  3 weeks ago   0  0m
  2 weeks ago   0  0m
  last week     0  0m
  this week    60  1h  ###########################################################
  
  Grandma
  3 weeks ago   0  0m
  2 weeks ago   0  0m
  last week     0  0m
  this week    60  1h  ###########################################################
  $ utm_appctl usage --history --weeks --apps
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  Mia, not recognised
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    10  10m  ##########################################################
  
  Mia, video
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    50  50m  ##########################################################
  
  Ben, not recognised
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    10  10m  ##########################################################
  
  Ben, video
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    50  50m  ##########################################################
  
  Grandma, not recognised
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    10  10m  ##########################################################
  
  Grandma, video
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    50  50m  ##########################################################
  $ utm_appctl usage --json
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  {"people":[{"profile":3,"person":"Mia","today":95,"week":95,"month":95,"enabled":true,"limit":120,"extend":0,"left":25},{"profile":4,"person":"Ben","today":95,"week":95,"month":95,"enabled":true,"limit":60,"extend":30,"left":0},{"profile":5,"person":"Grandma","today":95,"week":95,"month":95,"enabled":false,"limit":1440,"extend":0,"left":1345}],"warnings":["the daemon does not have Tom; see utm_appctl apply"]}
  $ utm_appctl usage --yesterday --json
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  {"people":[{"profile":3,"person":"Mia","unit":"day","ago":1,"applications":[]},{"profile":4,"person":"Ben","unit":"day","ago":1,"applications":[]},{"profile":5,"person":"Grandma","unit":"day","ago":1,"applications":[]}],"warnings":["the daemon does not have Tom; see utm_appctl apply"]}
  $ utm_appctl usage --csv | tr -d '\r'
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  profile,person,today,week,month,enabled,limit,extend,left
  3,Mia,95,95,95,true,120,0,25
  4,Ben,95,95,95,true,60,30,0
  5,Grandma,95,95,95,false,1440,0,1345
  $ utm_appctl usage --week 0 --csv | tr -d '\r'
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  profile,person,unit,ago,app,application,minutes
  3,Mia,week,0,305,video,50
  3,Mia,week,0,0,not recognised,10
  4,Ben,week,0,305,video,50
  4,Ben,week,0,0,not recognised,10
  5,Grandma,week,0,305,video,50
  5,Grandma,week,0,0,not recognised,10
  $ utm_appctl usage --history --weeks --csv | tr -d '\r' | sed -n '1p; /,0,/p'
  utm_appctl: the daemon does not have Tom; see utm_appctl apply
  profile,person,unit,ago,date,minutes
  3,Mia,week,0,2029-12-30,60
  4,Ben,week,0,2029-12-30,60
  5,Grandma,week,0,2029-12-30,60

A person goes by name or number, and is shown by name.

  $ utm_appctl usage MIA
  Mia
  today        95  1h35m
  this week    95  1h35m
  this month   95  1h35m
  limit       120     2h
  extend        0     0m
  left         25    25m
  $ utm_appctl usage 3 --apps
  Mia
  APPLICATION     MINUTES  TIME
  video                50   50m
  not recognised       10   10m
  total                60    1h
  $ utm_appctl usage mia --history --weeks
  Mia
  3 weeks ago   0  0m
  2 weeks ago   0  0m
  last week     0  0m
  this week    60  1h  ###########################################################
  $ utm_appctl usage mia --history --weeks --apps
  Mia, not recognised
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    10  10m  ##########################################################
  
  Mia, video
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    50  50m  ##########################################################
  $ utm_appctl usage grandma --history --weeks --apps
  Grandma, not recognised
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    10  10m  ##########################################################
  
  Grandma, video
  3 weeks ago   0   0m
  2 weeks ago   0   0m
  last week     0   0m
  this week    50  50m  ##########################################################
  $ utm_appctl usage mia --json
  {"profile":3,"person":"Mia","today":95,"week":95,"month":95,"enabled":true,"limit":120,"extend":0,"left":25}
  $ utm_appctl limit show 3
  Mia
  limit    120 (2h)
  enabled  yes
  $ utm_appctl weekday show mia --json
  {"profile":3,"person":"Mia","weekdays":[{"day":0,"name":"Sunday","minutes":120},{"day":1,"name":"Monday","minutes":120},{"day":2,"name":"Tuesday","minutes":120},{"day":3,"name":"Wednesday","minutes":120},{"day":4,"name":"Thursday","minutes":120},{"day":5,"name":"Friday","minutes":120},{"day":6,"name":"Saturday","minutes":120}]}
  $ utm_appctl extend show ben --json
  {"profile":4,"person":"Ben","extend":30}
  $ utm_appctl usage tom
  utm_appctl: the daemon refused: Tom is not set up; have apply do it, or create profile 6 with profile add
  [1]
  $ utm_appctl usage tim
  utm_appctl: "tim" is nobody's name
  Did you mean "Tom"?
  [2]

While limits are off nobody is cut off.

  $ utm_appctl activate off
  $ utm_appctl people
  PERSON   TODAY  LIMIT  BONUS  LEFT  BLOCKED
  Mia      1h35m     2h          25m
  Ben      1h35m     1h    30m    0m
  Grandma  1h35m   none            -
  Tom                                 not at the daemon: see utm_appctl apply
  
  Limits are off, and nothing is blocked: see utm_appctl activate.

Without a file, or with one that has mistakes, there is nobody to show.

  $ echo '{"people": [{"number": 3}]}' >$UTM_APPCTL_HOUSEHOLD
  $ utm_appctl people
  utm_appctl: /tmp/household.json: people[0]: "name" is missing; until this is mended, the file names nobody and nothing
  utm_appctl: /tmp/household.json names nobody
  Write a household and run utm_appctl apply, see docs/household.md; or give a person's number
  [2]
  $ rm $UTM_APPCTL_HOUSEHOLD
  $ utm_appctl people
  utm_appctl: /tmp/household.json names nobody
  Write a household and run utm_appctl apply, see docs/household.md; or give a person's number
  [2]
  $ utm_appctl usage --json
  utm_appctl: /tmp/household.json names nobody
  Write a household and run utm_appctl apply, see docs/household.md; or give a person's number
  {"error":"\/tmp\/household.json names nobody. Write a household and run utm_appctl apply, see docs\/household.md; or give a person's number"}
  [2]
  $ utm_appctl usage 3 --apps
  APPLICATION     MINUTES  TIME
  305                  50   50m
  not recognised       10   10m
  total                60    1h
