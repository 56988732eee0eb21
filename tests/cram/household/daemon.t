The daemon runs already, and only once.

  $ test "$(readlink /proc/$(daemon pid)/exe)" = "$BUILD/utm_appd"
  $ daemon start
  daemon: it is running already
  [1]
  $ utm_appctl status
  limits     off
  debug log  off

It ends as a router ends it, which it has to do with status 0.

  $ daemon stop
  $ daemon pid
  daemon: none is running
  [1]
  $ daemon stop
  daemon: none is running
  [1]
  $ daemon kill
  daemon: none is running
  [1]
  $ utm_appctl status
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  [3]
  $ tick
  tick: no daemon is running
  [1]

A new one knows of nothing.

  $ daemon start
  $ utm_appctl activate on
  $ utm_appctl profile add 1
  $ utm_appctl usage 1 | sed -n 2p
  today               0   0m

Nor does it after a power cut, which is what "kill" is.

  $ daemon kill
  $ daemon pid
  daemon: none is running
  [1]
  $ daemon start
  $ utm_appctl usage 1
  utm_appctl: the daemon refused: Mia is not set up; have apply do it, or create profile 1 with profile add
  [1]

Anything else is explained.

  $ daemon
  usage: daemon start|stop|kill|pid
  [2]
  $ daemon restart
  usage: daemon start|stop|kill|pid
  [2]
  $ daemon start now
  usage: daemon start|stop|kill|pid
  [2]
