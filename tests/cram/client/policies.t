A policy is created once. Its number is at least 1.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl policy create 7
  $ utm_appctl policy create 7
  utm_appctl: the daemon refused: the policy exists already
  [1]
  $ utm_appctl policy create 0
  utm_appctl: "0" is not a policy's number
  Give a whole number, 1 or more
  [1]
  $ utm_appctl policy create seven
  utm_appctl: "seven" is not a policy's number
  Give a whole number, such as 3
  [2]
  $ utm_appctl policy create 2147483647

A profile gets one policy, permanently, and no other profile gets the same.

  $ add_mia
  $ utm_appctl policy bind 3 8
  utm_appctl: the daemon refused: no such policy; create it with policy create
  [1]
  $ utm_appctl policy bind 9 7
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl policy bind 3 7
  $ utm_appctl policy bind 3 7
  utm_appctl: the daemon refused: the profile has a policy already, or the policy is another profile's; which of both it tells only while limits are on
  [1]
  $ utm_appctl profile add 4
  $ utm_appctl policy bind 4 7
  utm_appctl: the daemon refused: the profile has a policy already, or the policy is another profile's; which of both it tells only while limits are on
  [1]

Its rules reach the router: a block at once, a limit when it is used up, even one of no minutes.

  $ utm_appctl activate on
  $ utm_appctl debug on
  $ forget
  $ utm_appctl policy rule 7 305=block 306=0
  $ utm_appctl policy rule 7 305=remove
  $ log
  [socket] Receive cmd type=43
  Policy 7 add app 305 action 2 limit 0 success
  Policy 7 add app 306 action 1 limit 0 success
  Add apps to policy 7 success
  [socket] Receive cmd type=43
  Policy 7 update app 305 action 0 limit 0 success
  Add apps to policy 7 success
  $ journal
  lcsh apg acl set 02:00:00:00:00:0A 305 0 18
  lcsh apg acl del 02:00:00:00:00:0A 305 0

Clearing the policy lets its applications go.

  $ utm_appctl policy rule 7 305=block 306=block
  $ forget
  $ utm_appctl policy clear 7
  $ journal
  lcsh apg acl reset 02:00:00:00:00:0A
  $ utm_appctl policy clear 8
  utm_appctl: the daemon refused: no such policy; create it with policy create
  [1]
  $ journal

Applications go by name, whatever the case. A name may hold an equals sign.

  $ printf '305 Video\n306 Chat=Room\n' >/tmp/apps
  $ forget
  $ utm_appctl policy rule 7 -n /tmp/apps vIDEO=1h30m chat=room=block
  $ log
  [socket] Receive cmd type=43
  Policy 7 add app 305 action 1 limit 90 success
  Policy 7 add app 306 action 2 limit 0 success
  Add apps to policy 7 success

Other words for the same.

  $ utm_appctl policy rule 7 305=BLOCKED 306=Allow 307=1:05 308=free
  $ log
  [socket] Receive cmd type=43
  Policy 7 update app 305 action 2 limit 0 success
  Policy 7 update app 306 action 0 limit 0 success
  Policy 7 add app 307 action 1 limit 65 success
  Add apps to policy 7 success

The largest limit arrives.

  $ utm_appctl policy rule 7 305=65535 2147483647=1092h15m
  $ log
  [socket] Receive cmd type=43
  Policy 7 update app 305 action 1 limit 65535 success
  Policy 7 add app 2147483647 action 1 limit 65535 success
  Add apps to policy 7 success

Nothing is sent when a name is unknown, or when a word is no rule.

  $ utm_appctl policy rule 7 305=5 vidoe=block --names /tmp/apps
  utm_appctl: "vidoe" is no application
  Did you mean "Video"?
  [2]
  $ utm_appctl policy rule 7 305=5 musik=block --names /tmp/apps
  utm_appctl: "musik" is no application
  Give its number, or name it in the household or in a file for --names
  [2]
  $ for rule in 305 =block 305= 305=65536 305=-1 '' "$(letters 64)=block"; do
  >   utm_appctl policy rule 7 "$rule" || echo "status $?"
  > done
  utm_appctl: "305" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  utm_appctl: "=block" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  utm_appctl: "305=" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  utm_appctl: "305=65536" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  utm_appctl: "305=-1" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  utm_appctl: "" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  utm_appctl: "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa=block" is not a rule
  Give APP=MINUTES (at most 65535), APP=block or APP=allow
  status 2
  $ log

A request holds ten rules. More of them go in several requests, in their order.

  $ utm_appctl policy rule 7 1=1 2=2 3=3 4=4 5=5 6=6 7=7 8=8 9=9 10=10 \
  >   11=11 12=12 13=13 14=14 15=15 16=16 17=17 18=18 19=19 20=20 21=21
  $ log
  [socket] Receive cmd type=43
  Policy 7 add app 1 action 1 limit 1 success
  Policy 7 add app 2 action 1 limit 2 success
  Policy 7 add app 3 action 1 limit 3 success
  Policy 7 add app 4 action 1 limit 4 success
  Policy 7 add app 5 action 1 limit 5 success
  Policy 7 add app 6 action 1 limit 6 success
  Policy 7 add app 7 action 1 limit 7 success
  Policy 7 add app 8 action 1 limit 8 success
  Policy 7 add app 9 action 1 limit 9 success
  Policy 7 add app 10 action 1 limit 10 success
  Add apps to policy 7 success
  [socket] Receive cmd type=43
  Policy 7 add app 11 action 1 limit 11 success
  Policy 7 add app 12 action 1 limit 12 success
  Policy 7 add app 13 action 1 limit 13 success
  Policy 7 add app 14 action 1 limit 14 success
  Policy 7 add app 15 action 1 limit 15 success
  Policy 7 add app 16 action 1 limit 16 success
  Policy 7 add app 17 action 1 limit 17 success
  Policy 7 add app 18 action 1 limit 18 success
  Policy 7 add app 19 action 1 limit 19 success
  Policy 7 add app 20 action 1 limit 20 success
  Add apps to policy 7 success
  [socket] Receive cmd type=43
  Policy 7 add app 21 action 1 limit 21 success
  Add apps to policy 7 success

The first refusal ends them.

  $ utm_appctl policy rule 8 1=block 2=block 3=block 4=block 5=block 6=block 7=block 8=block \
  >   9=block 10=block 11=block
  utm_appctl: the daemon refused: no such policy; create it with policy create
  [1]
  $ log
  [socket] Receive cmd type=43
  Add apps to policy 8 failed
  [socket] Receive cmd type=43
  Add apps to policy 8 failed

Who is bound to what can be told while limits are on. A policy is bound for good.

  $ utm_appctl policy bind 3 7
  utm_appctl: the daemon refused: profile 3 has policy 7 already, for good
  [1]
  $ utm_appctl policy create 70
  $ utm_appctl policy bind 3 70
  utm_appctl: the daemon refused: profile 3 has policy 7 already, for good
  [1]
  $ utm_appctl policy bind 4 7
  utm_appctl: the daemon refused: policy 7 is that of profile 3, for good
  [1]
  $ echo '{"people":[{"number":3,"name":"Mia"}]}' >/tmp/household.json
  $ utm_appctl policy bind mia 70
  utm_appctl: the daemon refused: Mia has policy 7 already, for good
  [1]
  $ utm_appctl policy bind 4 7
  utm_appctl: the daemon refused: policy 7 is that of Mia, for good
  [1]
