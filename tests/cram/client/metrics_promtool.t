The monitoring system's own tool finds nothing to object to, whatever the state and the names.

Needs: promtool

  $ . "$SOURCE/tests/cram/lib.sh"
  $ check() { utm_appctl metrics "$@" >metrics && promtool check metrics <metrics; }
  $ check
  $ household
  $ check
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3 && utm_appctl activate on
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ use 45 305=45
  $ check
  $ grep -c . metrics
  44
  $ sed -i 's/Mia/M\\"i\\\\a {}=,é/' "$UTM_APPCTL_HOUSEHOLD"
  $ check
  $ grep known{ metrics
  utm_person_known{person="M\\"i\\\\a {}=,\xc3\xa9"} 1 (esc)
  $ check -s /tmp/nobody 2>/dev/null

It does object to others.

  $ echo 'utm_used_minutes{person="Mia} 3' | promtool check metrics >/dev/null 2>&1
  [1]
