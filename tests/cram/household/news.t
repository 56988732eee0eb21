News is what the daemon has logged and what has reached the router, with the time, told once.

  $ utm_appctl debug on
  $ utm_appctl activate on
  $ news
  16:59  daemon  [socket] Receive cmd type=39
  16:59  daemon  Set activate from 0 to 1
  16:59  daemon  export to /tmp/ApplicationData/app_usage.json success
  16:59  router  lcsh apg on
  16:59  router  notify status_changed 1 1

  $ utm_appctl profile add 1
  $ utm_appctl device add 1 00:00:5E:00:53:1A
  $ utm_appctl limit set 1 30m
  $ utm_appctl limit enable 1
  $ news | sed 's,/[^ ]*/utm_appctl\.[^ /]*,/tmp/utm_appctl.XXXXXX,'
  16:59  daemon  [socket] Receive cmd type=1
  16:59  daemon  Create profile 1 success
  16:59  daemon  [socket] Receive cmd type=3
  16:59  daemon  Add dev mac = 00:00:5E:00:53:1A to profile 1 success
  16:59  daemon  [socket] Receive cmd type=28
  16:59  daemon  Set daily limit to 30 for profile 1 success
  16:59  daemon  [socket] Receive cmd type=26
  16:59  daemon  Set daily limit enable 1 for profile 1 success
  16:59  daemon  [socket] Receive cmd type=47
  $ news

What "journal" has shown is no news, and the other way round.

  $ utm_appctl extend add 1 1m
  $ journal
  $ utm_appctl activate off
  $ journal
  lcsh apg off
  notify status_changed 1 0
  $ news
  16:59  daemon  [socket] Receive cmd type=32
  16:59  daemon  Add extend 1 to profile 1, now 1
  16:59  daemon  [socket] Receive cmd type=39
  16:59  daemon  Set activate from 1 to 0
  $ utm_appctl activate on
  $ news | grep router
  16:59  router  lcsh apg on
  16:59  router  notify status_changed 1 1
  $ journal

A log that somebody removed begins anew.

  $ rm /tmp/utm_log/utm_app_log
  $ utm_appctl profile add 2
  $ news
  16:59  daemon  [socket] Receive cmd type=1
  16:59  daemon  Create profile 2 success

"news" stamps what happened before with the present time.

  $ utm_appctl profile add 3
  $ utm_appctl profile del 3
  $ tick
  $ news
  17:00  daemon  [socket] Receive cmd type=1
  17:00  daemon  Create profile 3 success
  17:00  daemon  [socket] Receive cmd type=35
  17:00  daemon  [socket] Receive cmd type=37
  17:00  daemon  [socket] Receive cmd type=2
  17:00  daemon  Delete user profile 3 and unblock all success
  17:00  daemon  Delete profile 3 success

"tick --news" tells them after each minute, those from before it with the first.

  $ utm_appctl profile del 2
  $ tick --news 28
  17:01  daemon  [socket] Receive cmd type=35
  17:01  daemon  [socket] Receive cmd type=37
  17:01  daemon  [socket] Receive cmd type=2
  17:01  daemon  Delete user profile 2 and unblock all success
  17:01  daemon  Delete profile 2 success
  $ tick --news until 17:37
  17:30  daemon  export to /tmp/ApplicationData/app_usage.json success
  17:37  daemon  Block profile 1 to use network because 31 exceed 31
  17:37  daemon  send event: block profile 1 to use network
  17:37  router  notify block profile 1
  $ clock
  Fri 2030-03-15 17:37:00 CET

A daemon that is gone has no more news.

  $ daemon stop
  $ news
  17:37  daemon  send event: unblock profile 1 to use network
  17:37  daemon  Delete user profile 1 and unblock all success
  17:37  daemon  Flush all profiles success
  17:37  daemon  Reset top apps success
  17:37  daemon  Config handler exit
  17:37  router  lcsh apg acl reset 00:00:5E:00:53:1A
  17:37  router  notify unblock profile 1
  $ tick --news
  tick: no daemon is running
  [1]
  $ news

There is one kind.

  $ news --all
  usage: news                     what was logged and has reached the router since last time
  [2]
  $ tick --everything
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
