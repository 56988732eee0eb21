An evening that does not go as told ends the demo, which says what was expected.

  $ play() {
  >   utm_sandbox --no-daemon sh -c "$1"'; exec "$SOURCE/scripts/lib/evening" --fast page.html' \
  >     >evening 2>err
  >   echo "$?"
  >   cat err
  > }

A router that only says that it bars an application is found out.

  $ play 'echo 256 apg acl set 00:00:5E:00:53:1B 305 >/tmp/router/fail'
  1
  expected: a limit holds on all of Mia's devices
  This scene did not happen as told: Video and games have limits of their own
  $ tail -n 1 evening
  18:30  usage   Ana: 0:20  (mail 0:20)

So is one that does not heed its rules: what people may use would prove nothing then.

  $ play 'echo 256 apg on >/tmp/router/fail'
  1
  expected: the application guard is on
  This scene did not happen as told: and so they are

So is one that never lets it go again, and one that says nothing of what is used.

  $ play 'echo 256 apg acl del 00:00:5E:00:53:2A 412 >/tmp/router/fail'
  1
  expected: games work again
  This scene did not happen as told: Midnight
  $ play 'echo "{\"data\":[]}" >/tmp/router/reply.profile'
  1
  expected: Mia's usage has come back
  This scene did not happen as told: The afternoon, and the router restarts

A client that fails, one that complains, and one that answers something else.

  $ instead() {
  >   mkdir -p bin
  >   printf '#!/bin/sh\ncase $* in %s) %s;; esac\nPATH=${PATH#*:} exec utm_appctl "$@"\n' "$@" \
  >     >bin/utm_appctl
  >   chmod +x bin/utm_appctl
  >   play 'PATH=$PWD/bin:$PATH'
  > }
  $ instead 'extend\ add*' 'exit 1'
  1
  expected: success without a complaint: utm_appctl extend add mia 30m
  This scene did not happen as told: A bonus
  $ instead 'extend\ add*' 'echo no >&2'
  1
  expected: success without a complaint: utm_appctl extend add mia 30m
  no
  This scene did not happen as told: A bonus
  $ instead 'usage\ 2\ --json' 'echo "{}"; exit'
  1
  expected: today is in utm_appctl's {}
  This scene did not happen as told: The afternoon, and the router restarts

A daemon that dies.

  $ instead 'extend\ add*' 'daemon kill'
  1
  expected: success without a complaint: utm_appctl extend add mia 30m
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (Connection refused): is it running? Use -s for another socket
  This scene did not happen as told: A bonus

It is for a sandbox, and for one page in a folder that exists.

  $ "$SOURCE/scripts/lib/evening" --fast page.html
  usage: scripts/sandbox --no-daemon scripts/lib/evening [--fast] PAGE
  [2]
  $ utm_sandbox --no-daemon "$SOURCE/scripts/lib/evening" --slow page.html
  usage: scripts/sandbox --no-daemon scripts/lib/evening [--fast] PAGE
  [2]
  $ utm_sandbox --no-daemon "$SOURCE/scripts/lib/evening" --slow
  usage: scripts/sandbox --no-daemon scripts/lib/evening [--fast] PAGE
  [2]
  $ utm_sandbox --no-daemon "$SOURCE/scripts/lib/evening" --fast ''
  usage: scripts/sandbox --no-daemon scripts/lib/evening [--fast] PAGE
  [2]
  $ UTM_SIM_DIR=$PWD "$SOURCE/scripts/lib/evening" --fast page.html
  usage: scripts/sandbox --no-daemon scripts/lib/evening [--fast] PAGE
  [2]
  $ utm_sandbox --no-daemon "$SOURCE/scripts/lib/evening" --fast nowhere/page.html
  evening: there is no folder nowhere for the page
  [2]

A page's name may have a blank.

  $ utm_sandbox --no-daemon "$SOURCE/scripts/lib/evening" --fast 'the page.html' >evening
  $ tail -c 8 'the page.html'
  </html>
  $ grep -c '\$ utm_appctl report > the.* page.html' evening
  1
