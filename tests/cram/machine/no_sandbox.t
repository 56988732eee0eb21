Without a sandbox nothing runs: every program of the tests, and the sandbox of the demo, says why and
ends with 1.

  $ all() {
  >   for program in utm_unit_tests utm_daemon_tests "utm_sandbox true"; do
  >     "$@" $program >out 2>err
  >     echo "$?"
  >     sed 's#/[^ ]*/#.../#g; s/no mount namespace: .*/no mount namespace/' out err
  >   done
  > }

A way that does not exist.

  $ UTM_SANDBOX=nonsense all env
  1
  utm_unit_tests: no sandbox: UTM_SANDBOX is neither "mounts" nor "redirection"
  1
  utm_daemon_tests: no sandbox: UTM_SANDBOX is neither "mounts" nor "redirection"
  1
  utm_sandbox: no sandbox: UTM_SANDBOX is neither "mounts" nor "redirection"

A mount namespace where the machine allows none. Where it does, this takes the right away; where
that is refused, there was none.

  $ cat >confined.sh <<'SH'
  > UTM_SANDBOX=mounts utm_sandbox --which >/dev/null 2>&1 || exec "$@"
  > set -- setpriv --bounding-set=-sys_admin --inh-caps=-all "$@"
  > unshare --user true 2>/dev/null || exec "$@"
  > exec unshare --user --map-root-user sh -c '
  >   echo 0 >/proc/sys/user/max_user_namespaces && exec "$@"' sh "$@"
  > SH
  $ UTM_SANDBOX=mounts all sh ./confined.sh
  1
  utm_unit_tests: no sandbox: this machine allows no mount namespace
  1
  utm_daemon_tests: no sandbox: this machine allows no mount namespace
  1
  utm_sandbox: no sandbox: this machine allows no mount namespace

Redirected paths where the library that redirects is missing: the same programs, with another name
for it. The loader warns and goes on, so the programs have to look.

  $ mkdir bin
  $ for program in tests/utm_unit_tests tests/utm_daemon_tests sim/utm_sandbox; do
  >   sed 's/libsimpreload\.so/libsimpreload.xx/g' "$BUILD/$program" >bin/${program#*/}
  > done
  $ chmod +x bin/*
  $ PATH=$PWD/bin:$PATH
  $ UTM_SANDBOX=redirection all env
  1
  ERROR: ld.so: object '.../preload.so' from LD_PRELOAD cannot be preloaded (cannot open shared object file): ignored.
  utm_unit_tests: no sandbox: paths are not redirected: the loader did not take .../libsimpreload.xx
  1
  ERROR: ld.so: object '.../preload.so' from LD_PRELOAD cannot be preloaded (cannot open shared object file): ignored.
  utm_daemon_tests: no sandbox: paths are not redirected: the loader did not take .../libsimpreload.xx
  1
  ERROR: ld.so: object '.../preload.so' from LD_PRELOAD cannot be preloaded (cannot open shared object file): ignored.
  utm_sandbox: no sandbox: paths are not redirected: the loader did not take .../libsimpreload.xx

Tests that only read and write text need none.

  $ UTM_SANDBOX=nonsense utm_parsing_tests --gtest_brief=1 >out 2>&1
  $ grep -c PASSED out
  1
