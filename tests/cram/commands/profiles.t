Profiles and devices. To create what is there, and to remove what is not, is no mistake.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl debug on
  $ utm_appctl ping
  $ utm_appctl profile add 3
  $ utm_appctl profile add 3
  $ utm_appctl device add 3 02:00:00:00:00:0A
  $ utm_appctl device add 3 02:00:00:00:00:0A
  $ utm_appctl device add 9 02:00:00:00:00:0A
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl device del 3 02:00:00:00:00:0B
  $ utm_appctl device del 9 02:00:00:00:00:0B
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ log
  [socket] Receive cmd type=0
  [socket] Receive cmd type=1
  Create profile 3 success
  [socket] Receive cmd type=1
  Create profile 3 success
  [socket] Receive cmd type=47
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:0A to profile 3 success
  [socket] Receive cmd type=47
  [socket] Receive cmd type=3
  [socket] Receive cmd type=47
  [socket] Receive cmd type=3
  Add dev to profile 9 failed because profile not exist
  [socket] Receive cmd type=27
  [socket] Receive cmd type=47
  [socket] Receive cmd type=4
  Del dev 02:00:00:00:00:0B from profile 3 failed because cannot find dev
  [socket] Receive cmd type=47
  [socket] Receive cmd type=4
  Del dev from profile 9 failed because profile not exist
  [socket] Receive cmd type=27

Deleting a profile releases its devices.

  $ utm_appctl device add 3 02:00:00:00:00:0B
  $ forget
  $ utm_appctl profile del 3
  $ utm_appctl profile del 3
  utm_appctl: note: there was no profile 3
  $ log
  [socket] Receive cmd type=35
  [socket] Receive cmd type=37
  [socket] Receive cmd type=2
  Delete user profile 3 and unblock all success
  Delete profile 3 success
  [socket] Receive cmd type=35
  Get usage for profile 3 failed because profile is not existed
  [socket] Receive cmd type=2
  Delete profile 3 success
  $ journal
  lcsh apg acl reset 02:00:00:00:00:0A
  lcsh apg acl reset 02:00:00:00:00:0B

With the debug log off nothing is said of it.

  $ utm_appctl debug off
  $ log
  [socket] Receive cmd type=41
  $ utm_appctl ping
  $ utm_appctl profile add 3
  $ log
