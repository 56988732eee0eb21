A command's exit status is the sandbox's.

  $ utm_sandbox true
  $ utm_sandbox sh -c 'exit 7'
  [7]
  $ utm_sandbox utm_appctl usage 1
  utm_appctl: the daemon refused: Mia is not set up; have apply do it, or create profile 1 with profile add
  [1]
  $ utm_sandbox sh -c 'kill -TERM $$'
  [143]
  $ utm_sandbox sh -c 'kill -KILL $$'
  [137]
  $ utm_sandbox no_such_command
  no_such_command: No such file or directory
  [127]
  $ utm_sandbox /etc
  /etc: Permission denied
  [126]

It is so where the starter ignores how its children end.

  $ perl -e '$SIG{CHLD} = "IGNORE"; exec @ARGV' utm_sandbox --no-daemon sh -c 'exit 3'
  [3]

So is what it prints, and what it reads.

  $ echo text | utm_sandbox sh -c 'cat; echo more >&2' 2>errors
  text
  $ cat errors
  more

Words after a command belong to the command.

  $ utm_sandbox echo --which --start
  --which --start
  $ utm_sandbox -- printf '%s\n' --help
  --help

Without a command there is a shell.

  $ echo 'daemon stop && echo stopped' | SHELL=/bin/sh utm_sandbox | sed '/^Sandbox: /d'
  The real daemon runs here, on a simulated router, in virtual time. Try:
    utm_appctl status          the client
    tick 60                    an hour passes
    clock                      what time it is
    journal                    what has reached the router
    simrouter blocked          what is blocked now
    daemon stop; daemon start  a restart
  /tmp and the control socket are the sandbox's own. Leave with exit.
  stopped
