The private folder goes where TMPDIR says, if that is of any use.

  $ works() { utm_sandbox sh -c 'utm_appctl activate on && utm_appctl status'; }
  $ works
  limits     on
  debug log  off
  $ mkdir "with a blank" with:a:colon
  $ TMPDIR="$PWD/with a blank" works
  limits     on
  debug log  off
  $ TMPDIR="$PWD/with:a:colon" works
  limits     on
  debug log  off
  $ TMPDIR=/no/such/folder works
  limits     on
  debug log  off
  $ TMPDIR=relative works
  limits     on
  debug log  off
  $ TMPDIR= works
  limits     on
  debug log  off
  $ TMPDIR=/dev/null works
  limits     on
  debug log  off

A name of several hundred bytes is no longer than others.

  $ long=$(printf '%0200d' 0)
  $ mkdir -p "$long/$long"
  $ TMPDIR="$PWD/$long/$long" works
  limits     on
  debug log  off
  $ ls "$long/$long" "with a blank" with:a:colon
  00000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000/00000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000:
  
  with a blank:
  
  with:a:colon:

In the sandbox TMPDIR is /tmp, whatever it was.

  $ utm_sandbox sh -c 'echo $TMPDIR; mktemp | sed "s/tmp\..*/.../"'
  /tmp
  /tmp/...

The working directory stays, unless it is /tmp itself: that is another one inside.

  $ mkdir here && cd here
  $ test "$(utm_sandbox pwd)" = "$PWD"
  $ utm_sandbox sh -c 'echo text >file; cd ..; ls here' 
  file
  $ cat file
  text
  $ cd /tmp && utm_sandbox sh -c 'pwd; ls -d utm_log ApplicationData 2>/dev/null; ls -d tmp'
  /
  tmp
  $ cd /dev && utm_sandbox pwd
  /
  $ cd "$TMPDIR"

A program and a file that are below /tmp are still found when the command names them.

  $ mine=$(mktemp -d /tmp/utm_transcript.XXXXXX)
  $ printf '#!/bin/sh\ncat "$1"; ls -d /tmp/utm_*\n' >"$mine/program" && chmod +x "$mine/program"
  $ echo text >"$mine/file"
  $ cd / && utm_sandbox "$mine/program" "$mine/file" | sed 's/transcript\..*/transcript.../'
  text
  /tmp/utm_transcript...
  $ utm_sandbox sh -c "ls $mine" >/dev/null 2>&1
  [2]
  $ rm -r "$mine"

One sandbox starts another, with a /tmp and a daemon of its own.

  $ cd "$TMPDIR"
  $ cat >outer.sh <<'SH'
  > utm_appctl profile add 1
  > echo outer >/tmp/mine
  > utm_sandbox sh -c 'cat /tmp/mine; utm_appctl usage 1; echo inner >/tmp/mine; clock'
  > tick
  > clock
  > cat /tmp/mine
  > utm_appctl profile del 1
  > SH
  $ utm_sandbox sh ./outer.sh
  cat: /tmp/mine: No such file or directory
  utm_appctl: the daemon refused: Mia is not set up; have apply do it, or create profile 1 with profile add
  Fri 2030-03-15 16:59:00 CET
  Fri 2030-03-15 17:00:00 CET
  outer
