  $ utm_sandbox --help
  usage: sandbox [OPTION]... [COMMAND [ARGUMENT]...]
    A shell, or one command, beside the real daemon and a simulated router.
    --scenario FILE         what the household does (sim/README.md); none: nobody does anything
    --start 'DATE HH:MM'    when it begins, in local time (TZ); 2030-03-15 16:59 unless told
    --no-daemon             begin without the daemon
    --which                 only say by which way this machine has a sandbox

What is wrong is explained.

  $ utm_sandbox --daemon
  utm_sandbox: unrecognized option '--daemon'
  usage: sandbox [OPTION]... [COMMAND [ARGUMENT]...]
    A shell, or one command, beside the real daemon and a simulated router.
    --scenario FILE         what the household does (sim/README.md); none: nobody does anything
    --start 'DATE HH:MM'    when it begins, in local time (TZ); 2030-03-15 16:59 unless told
    --no-daemon             begin without the daemon
    --which                 only say by which way this machine has a sandbox
  [2]
  $ utm_sandbox --start
  utm_sandbox: option '--start' requires an argument
  usage: sandbox [OPTION]... [COMMAND [ARGUMENT]...]
    A shell, or one command, beside the real daemon and a simulated router.
    --scenario FILE         what the household does (sim/README.md); none: nobody does anything
    --start 'DATE HH:MM'    when it begins, in local time (TZ); 2030-03-15 16:59 unless told
    --no-daemon             begin without the daemon
    --which                 only say by which way this machine has a sandbox
  [2]
  $ utm_sandbox --start yesterday true
  sandbox: a start is written like '2030-03-15 16:59', not 'yesterday'
  [1]
  $ utm_sandbox --start '2030-03-15 16:59 o clock' true
  sandbox: a start is written like '2030-03-15 16:59', not '2030-03-15 16:59 o clock'
  [1]
  $ utm_sandbox --scenario missing true
  sandbox: missing cannot be read, or is empty
  [1]
  $ echo 'person eve' >wrong.scenario
  $ utm_sandbox --scenario wrong.scenario true
  sandbox: wrong.scenario:1: a person needs a handle, a profile id and a name
  [1]

The way that this machine has, or that was wished for, is said in a line.

  $ case $(utm_sandbox --which) in
  > "Sandbox: a mount namespace") echo mounts ;;
  > "Sandbox: redirected paths") echo redirection ;;
  > esac >which
  $ test "$SANDBOX_WAY" = any || test "$(cat which)" = "$SANDBOX_WAY"

Another beginning, in local time, and no daemon yet.

  $ utm_sandbox --start '2031-01-01 00:00' --no-daemon sh -c 'clock; daemon pid; daemon start'
  Wed 2031-01-01 00:00:00 CET
  daemon: none is running
  $ TZ=UTC0 utm_sandbox --start '2031-01-01 00:00' clock
  Wed 2031-01-01 00:00:00 UTC

Another household: nobody, or who is in a file.

  $ cat >ask.sh <<'SH'
  > utm_appctl activate on
  > utm_appctl profile add 1
  > utm_appctl device add 1 02:00:00:00:00:77
  > tick 10
  > utm_appctl usage 1 --json
  > SH
  $ cat >one.scenario <<'END'
  > person eve 1 Eve
  > device laptop eve 02:00:00:00:00:77 Eve's laptop
  > date 2030-03-15
  > online laptop 17:00 17:04
  > END
  $ utm_sandbox --scenario none sh ./ask.sh
  {"profile":1,"person":null,"today":0,"week":0,"month":0,"enabled":false,"limit":1440,"extend":0,"left":1440}
  $ utm_sandbox --scenario one.scenario sh ./ask.sh
  {"profile":1,"person":null,"today":4,"week":4,"month":4,"enabled":false,"limit":1440,"extend":0,"left":1436}

The commands of a sandbox are for use in one.

  $ tick
  tick: this is no sandbox: it is for use within scripts/sandbox
  [1]
  $ clock
  clock: this is no sandbox: it is for use within scripts/sandbox
  [1]
  $ daemon start
  daemon: this is no sandbox: it is for use within scripts/sandbox
  [1]
  $ journal
  journal: this is no sandbox: it is for use within scripts/sandbox
  [1]
