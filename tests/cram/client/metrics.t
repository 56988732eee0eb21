Metrics are everybody's figures for a monitoring system. Nobody is in the household yet.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl metrics
  # HELP utm_up Whether the daemon answers.
  # TYPE utm_up gauge
  utm_up 1
  # HELP utm_limits_active Whether limits are on.
  # TYPE utm_limits_active gauge
  utm_limits_active 0

Somebody is whom the daemon does not know.

  $ household
  $ utm_appctl metrics | tail -n 3
  # HELP utm_person_known Whether the daemon has the person, else it knows no figures.
  # TYPE utm_person_known gauge
  utm_person_known{person="Mia"} 0

The daemon knows her, her limit cuts off, and she has used some of it.

  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ utm_appctl activate on
  $ use 45 305=45
  $ sleep_over
  $ utm_appctl extend add 3 30m
  $ use 60 305=10 306=7
  $ utm_appctl metrics
  # HELP utm_up Whether the daemon answers.
  # TYPE utm_up gauge
  utm_up 1
  # HELP utm_limits_active Whether limits are on.
  # TYPE utm_limits_active gauge
  utm_limits_active 1
  # HELP utm_person_known Whether the daemon has the person, else it knows no figures.
  # TYPE utm_person_known gauge
  utm_person_known{person="Mia"} 1
  # HELP utm_person_used_today_seconds Time used today.
  # TYPE utm_person_used_today_seconds gauge
  utm_person_used_today_seconds{person="Mia"} 3600
  # HELP utm_person_used_week_seconds Time used this week, which begins on Sunday.
  # TYPE utm_person_used_week_seconds gauge
  utm_person_used_week_seconds{person="Mia"} 6300
  # HELP utm_person_used_month_seconds Time used in the weeks of this month.
  # TYPE utm_person_used_month_seconds gauge
  utm_person_used_month_seconds{person="Mia"} 6300
  # HELP utm_person_limit_seconds The limit of today; a whole day is none.
  # TYPE utm_person_limit_seconds gauge
  utm_person_limit_seconds{person="Mia"} 7200
  # HELP utm_person_bonus_seconds The bonus of today.
  # TYPE utm_person_bonus_seconds gauge
  utm_person_bonus_seconds{person="Mia"} 1800
  # HELP utm_person_left_seconds Time left today, of those whose limit cuts off.
  # TYPE utm_person_left_seconds gauge
  utm_person_left_seconds{person="Mia"} 5400
  # HELP utm_person_enforced Whether the limit cuts off, or time is only counted.
  # TYPE utm_person_enforced gauge
  utm_person_enforced{person="Mia"} 1
  # HELP utm_person_cut_off Whether the person's time is used up and limits are on.
  # TYPE utm_person_cut_off gauge
  utm_person_cut_off{person="Mia"} 0
  # HELP utm_application_used_today_seconds Time that a person used an application with a rule.
  # TYPE utm_application_used_today_seconds gauge
  utm_application_used_today_seconds{person="Mia",application="video"} 600
  utm_application_used_today_seconds{person="Mia",application="games"} 420
  # HELP utm_application_limit_seconds An application's limit for a person.
  # TYPE utm_application_limit_seconds gauge
  utm_application_limit_seconds{person="Mia",application="video"} 2700
  # HELP utm_application_blocked Whether an application is blocked for a person.
  # TYPE utm_application_blocked gauge
  utm_application_blocked{person="Mia",application="video"} 0
  utm_application_blocked{person="Mia",application="games"} 1

A limit that only counts leaves nothing.

  $ utm_appctl limit disable 3
  $ utm_appctl metrics | grep -e left -e enforced
  # HELP utm_person_enforced Whether the limit cuts off, or time is only counted.
  # TYPE utm_person_enforced gauge
  utm_person_enforced{person="Mia"} 0

With --output a file has them, whole or not at all, and readable as any other. Names are escaped.

  $ sed -i 's/Mia/M\\"i\\\\a/' "$UTM_APPCTL_HOUSEHOLD"
  $ (umask 022 && utm_appctl metrics --output out)
  $ stat -c %a out
  644
  $ grep known out
  # HELP utm_person_known Whether the daemon has the person, else it knows no figures.
  # TYPE utm_person_known gauge
  utm_person_known{person="M\"i\\a"} 1
  $ ls
  out
  $ utm_appctl metrics -o none/out
  utm_appctl: cannot write none/out: No such file or directory
  [2]
  $ utm_appctl metrics -o /dev/null
  utm_appctl: cannot write /dev/null: it is not a regular file
  [2]
  $ utm_appctl metrics -o $(letters 5000) 2>&1 | sed 's/: Filename/: File name/' | tail -c 22
  a: File name too long
  $ utm_appctl metrics >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]

When the daemon does not answer, that is what they say, with status 0: the collector wants to know.

  $ utm_appctl metrics -s /tmp/nobody -o out
  utm_appctl: cannot reach the daemon at /tmp/nobody (No such file or directory): is it running? Use -s for another socket
  $ cat out
  # HELP utm_up Whether the daemon answers.
  # TYPE utm_up gauge
  utm_up 0
  $ occupy
  $ utm_appctl metrics -t 1 2>&1 | grep -v '#'
  utm_appctl: the daemon did not answer within 1 s: it may be waiting for one of the router's programs; try again, or wait longer with -t
  utm_up 0
  $ release
  $ utm_appctl metrics --json -s /tmp/nobody
  utm_appctl: cannot reach the daemon at /tmp/nobody (No such file or directory): is it running? Use -s for another socket
  {"metrics":"# HELP utm_up Whether the daemon answers.\n# TYPE utm_up gauge\nutm_up 0\n","warnings":["cannot reach the daemon at \/tmp\/nobody (No such file or directory): is it running? Use -s for another socket"]}
  $ utm_appctl metrics -s ''
  utm_appctl: the socket path is empty: give it after -s
  [2]
