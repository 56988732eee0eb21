Two sandboxes at once do not meet. The first says when it has a daemon with a profile, and ends when
it is told to.

  $ cat >first.sh <<'SH'
  > utm_appctl activate on
  > utm_appctl profile add 1
  > echo first >/tmp/mine
  > touch first.is.ready
  > while ! [ -e first.may.end ]; do sleep 0.1; done
  > cat /tmp/mine
  > utm_appctl profile del 1
  > SH
  $ utm_sandbox sh ./first.sh >first.says 2>&1 &
  $ while ! [ -e first.is.ready ]; do sleep 0.1; done

  $ utm_sandbox sh -c 'ls /tmp/mine; utm_appctl usage 1; echo second >/tmp/mine; cat /tmp/mine'
  ls: cannot access '/tmp/mine': No such file or directory
  utm_appctl: the daemon refused: Mia is not set up; have apply do it, or create profile 1 with profile add
  second

  $ touch first.may.end
  $ wait $!
  $ cat first.says
  first
