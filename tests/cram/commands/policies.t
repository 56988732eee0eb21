Policies, their rules and their profile.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl activate on
  $ utm_appctl debug on
  $ forget
  $ ask 42 8=0
  status 1
  $ utm_appctl policy create 7
  $ utm_appctl policy create 7
  utm_appctl: the daemon refused: the policy exists already
  [1]
  $ utm_appctl policy rule 8 305=block
  utm_appctl: the daemon refused: no such policy; create it with policy create
  [1]
  $ utm_appctl policy rule 7 305=10 306=block
  $ utm_appctl policy bind 3 8
  utm_appctl: the daemon refused: no such policy; create it with policy create
  [1]
  $ utm_appctl policy bind 9 7
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ log
  [socket] Receive cmd type=42
  Create policy 0 failed because id <= 0
  [socket] Receive cmd type=42
  Create policy 7 success
  [socket] Receive cmd type=42
  Create policy 7 failed because policy already exist
  [socket] Receive cmd type=43
  Add apps to policy 7 success
  [socket] Receive cmd type=43
  Add apps to policy 8 failed
  [socket] Receive cmd type=43
  Add apps to policy 8 failed
  [socket] Receive cmd type=43
  Policy 7 add app 305 action 1 limit 10 success
  Policy 7 add app 306 action 2 limit 0 success
  Add apps to policy 7 success
  [socket] Receive cmd type=45
  [socket] Receive cmd type=27
  [socket] Receive cmd type=43
  Add apps to policy 8 failed
  [socket] Receive cmd type=45
  Add policy 7 to profile 9 failed because profile not exist
  [socket] Receive cmd type=27
  $ journal

What a policy blocks is blocked from the moment that a profile has it.

  $ utm_appctl policy bind 3 7
  $ utm_appctl policy bind 3 7
  utm_appctl: the daemon refused: profile 3 has policy 7 already, for good
  [1]
  $ log
  [socket] Receive cmd type=45
  block device to use 306
  Add policy 7 to profile 3 success
  [socket] Receive cmd type=45
  Add policy 7 to profile 3 failed because already has policy
  [socket] Receive cmd type=27
  [socket] Receive cmd type=43
  Add apps to policy 7 success
  [socket] Receive cmd type=47
  [socket] Receive cmd type=51
  export to /tmp/utm_appctl.XXXXXX/usage.json success
  $ journal
  lcsh apg acl set 02:00:00:00:00:0A 306 0 18

An application whose limit is used up is blocked by the tick that counts it, between its two queries.

  $ use 10 305=10
  $ log
  Block app 305 for profile 3 because 10 exceed 10
  $ journal --queries
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893495540,"e":1893495600,"mac":"02000000000A "}'
  lcsh apg acl set 02:00:00:00:00:0A 305 0 18
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1893495540,"e":1893495600}'

The profile's own limit is used up as soon as it is lowered.

  $ utm_appctl limit enable 3
  $ forget
  $ utm_appctl limit set 3 10
  $ log
  [socket] Receive cmd type=28
  send event: block profile 3 to use network
  Set daily limit to 10 for profile 3 success
  $ journal
  notify block profile 3

A device that joins is blocked as the others are, and released when it leaves.

  $ utm_appctl device add 3 02:00:00:00:00:0B
  $ log
  [socket] Receive cmd type=47
  [socket] Receive cmd type=51
  export to /tmp/utm_appctl.XXXXXX/usage.json success
  [socket] Receive cmd type=51
  export to /tmp/ApplicationData/app_usage.json success
  [socket] Receive cmd type=3
  [WARNING] __block_one_device_to_use_network is not implemented
  Add dev mac = 02:00:00:00:00:0B to profile 3 success
  $ journal
  lcsh apg acl set 02:00:00:00:00:0B 305 0 18
  lcsh apg acl set 02:00:00:00:00:0B 306 0 18
  $ utm_appctl device del 3 02:00:00:00:00:0B
  $ log
  [socket] Receive cmd type=47
  [socket] Receive cmd type=51
  export to /tmp/utm_appctl.XXXXXX/usage.json success
  [socket] Receive cmd type=51
  export to /tmp/ApplicationData/app_usage.json success
  [socket] Receive cmd type=4
  Del dev 02:00:00:00:00:0B from profile 3 success
  $ journal
  lcsh apg acl reset 02:00:00:00:00:0B
  profile_daily_limit.sh -C 3

A bonus gives the network back. Removing the rules gives the applications back.

  $ utm_appctl extend add 3 5
  $ log
  [socket] Receive cmd type=32
  send event: unblock profile 3 to use network
  Add extend 5 to profile 3, now 5
  $ journal
  notify unblock profile 3
  $ utm_appctl policy clear 8
  utm_appctl: the daemon refused: no such policy; create it with policy create
  [1]
  $ utm_appctl policy clear 7
  $ log
  [socket] Receive cmd type=44
  [socket] Receive cmd type=43
  Add apps to policy 8 failed
  [socket] Receive cmd type=44
  $ journal
  lcsh apg acl reset 02:00:00:00:00:0A

Deleting the profile releases its device.

  $ utm_appctl profile del 3 --yes
  $ log
  [socket] Receive cmd type=2
  Delete user profile 3 and unblock all success
  Delete profile 3 success
  $ journal
  lcsh apg acl reset 02:00:00:00:00:0A
