Nothing of a sandbox is on the machine, neither while it runs nor afterwards.

  $ traces() {
  >   ls -d "$TMPDIR"/* /tmp/utm_log /tmp/ApplicationData /tmp/router /dev/utm* 2>/dev/null || true
  > }
  $ traces >before

  $ utm_sandbox sh -c 'utm_appctl debug on; utm_appctl activate on; ls -d /tmp/utm_log /dev/utm_app_config_socket'
  /dev/utm_app_config_socket
  /tmp/utm_log
  $ traces >after
  $ cmp before after

A sandbox that is told to end stops its daemon and leaves nothing either.

  $ cat >wait.sh <<'SH'
  > utm_appctl debug on
  > daemon pid >pid.new && mv pid.new "$1"
  > exec sleep 100
  > SH
  $ folders() { ls "$TMPDIR" | wc -l; }
  $ end_by() {
  >   utm_sandbox sh ./wait.sh "pid.$1" >/dev/null 2>&1 &
  >   while ! [ -e "pid.$1" ]; do sleep 0.1; done
  >   folders >folders
  >   kill -"$1" $!
  >   wait $!
  > }
  $ end_by TERM
  [143]
  $ end_by HUP
  [129]
  $ traces >after
  $ cmp before after
  $ kill -0 "$(cat pid.TERM)" 2>/dev/null
  [1]
  $ kill -0 "$(cat pid.HUP)" 2>/dev/null
  [1]

Meanwhile redirected paths had one private folder.

  $ case $(utm_sandbox --which) in
  > *redirected*) test "$(cat folders)" = 1 ;;
  > *) test "$(cat folders)" = 0 ;;
  > esac
  $ folders
  0

What a command leaves running is ended with the sandbox of redirected paths, for its files go. A
mount namespace lives on as long as anybody is in it.

  $ utm_sandbox sh -c 'sleep 100 >/dev/null 2>&1 & echo $! >orphan'
  $ traces >after
  $ cmp before after
  $ case $(utm_sandbox --which) in
  > *redirected*) ! kill -0 "$(cat orphan)" 2>/dev/null ;;
  > *) kill "$(cat orphan)" ;;
  > esac
