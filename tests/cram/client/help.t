Help needs no daemon.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ daemon stop
  $ utm_appctl --help | tee /tmp/help
  Usage: utm_appctl COMMAND [OPERANDS] [OPTIONS]
  Controls the daemon that tracks and limits a family's internet time.
  
  The daemon
    ping                            ask whether the daemon answers
    status                          show whether limits are enforced
    activate on|off                 enforce limits, or let everything pass
    debug on|off                    have the daemon log what it does
  
  People
    profile add ID                  create a profile without limits
    profile del ID                  delete a profile and release its devices
    device add ID MAC...            add devices to a profile
    device del ID MAC...            remove devices from a profile, release them
  
  Time limits
    limit show ID                   show today's limit and whether it is enabled
    limit set ID MINUTES            set the limit of today and of every weekday
    limit enable ID                 cut the profile off when its limit is reached
    limit disable ID                only count usage; do not enforce the limit
    weekday show ID                 show the limit of each weekday
    weekday set ID DAY MINUTES      set the limit of one weekday
    extend show ID                  show today's bonus
    extend add ID MINUTES           add to today's bonus
    extend reset ID                 cancel today's bonus
  
  Usage
    usage ID                        show usage: totals, applications or a chart
    report [PATH]                   write an HTML page, of now or of a usage file
  
  Applications
    policy create POLICY            create a policy without rules
    policy rule POLICY APP=RULE...  limit, block or free applications
    policy bind ID POLICY           give a profile a policy, permanently
    policy clear POLICY             remove all rules of a policy
    signature load PATH             load signatures into the DPI engine
  
  The usage file
    interval show                   show how often it is written
    interval set MINUTES            set how often it is written
    export PATH                     have the daemon write a usage file
    import PATH                     have the daemon read a usage file
  
  Options (COMMAND --help lists those of a command)
    -a, --ascii                    draw charts in plain ASCII
    -n, --names FILE               application names: lines such as "305 video"
        --apps                     applications today, or a chart for each
        --day N                    applications on the day N days ago, 0 to 30
        --week N                   applications in the week N weeks ago, 0 to 3
        --month                    applications in this month
        --history                  a chart, of days unless --weeks is given
        --days                     with --history: today and 30 days before
        --weeks                    with --history: this week and 3 before
    -j, --json                     print one JSON document
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  
  ID, POLICY  whole numbers of your choice
  MINUTES     90, 90m or 1h30m
  DAY         monday, mon or 1; the week begins with sunday, 0
  MAC         02:00:00:00:00:1a, with or without separators
  APP=RULE    video=45m to limit, video=block, video=remove; applications go by
              number, or by name after --names or in /etc/utm_appd/apps
  
  Exit status: 0 done, 1 the daemon refused, 2 wrong usage, 3 no daemon,
  4 timeout, a broken reply, or output that could not be written.
  $ utm_appctl -h | cmp - /tmp/help
  $ utm_appctl help | cmp - /tmp/help
  $ utm_appctl -s /tmp/nobody -h | cmp - /tmp/help

A noun has help of its own.

  $ utm_appctl limit --help
  Usage: utm_appctl limit ...
  
    limit show ID                   show today's limit and whether it is enabled
    limit set ID MINUTES            set the limit of today and of every weekday
    limit enable ID                 cut the profile off when its limit is reached
    limit disable ID                only count usage; do not enforce the limit
  $ utm_appctl help limit
  Usage: utm_appctl limit ...
  
    limit show ID                   show today's limit and whether it is enabled
    limit set ID MINUTES            set the limit of today and of every weekday
    limit enable ID                 cut the profile off when its limit is reached
    limit disable ID                only count usage; do not enforce the limit

A command's help names its options, wherever it is asked for.

  $ utm_appctl limit show --help
  Usage: utm_appctl limit show ID
  
    show today's limit and whether it is enabled
  
  Options:
    -j, --json                     print one JSON document
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  $ utm_appctl --help limit show whatever
  Usage: utm_appctl limit show ID
  
    show today's limit and whether it is enabled
  
  Options:
    -j, --json                     print one JSON document
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  $ utm_appctl help limit set | tail -n 4 >/tmp/common
  $ cat /tmp/common
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version

Each command has help, which ends with the same four options.

  $ commands | while read -r command; do
  >   utm_appctl $command --help -s /tmp/nobody >/tmp/help || echo "status $?"
  >   tail -n 4 /tmp/help | cmp - /tmp/common
  >   head -n -4 /tmp/help
  > done
  Usage: utm_appctl ping
  
    ask whether the daemon answers
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl status
  
    show whether limits are enforced
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl activate on|off
  
    enforce limits, or let everything pass
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl debug on|off
  
    have the daemon log what it does
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl profile add ID
  
    create a profile without limits
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl profile del ID
  
    delete a profile and release its devices
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl device add ID MAC...
  
    add devices to a profile
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl device del ID MAC...
  
    remove devices from a profile, release them
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl limit show ID
  
    show today's limit and whether it is enabled
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl limit set ID MINUTES
  
    set the limit of today and of every weekday
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl limit enable ID
  
    cut the profile off when its limit is reached
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl limit disable ID
  
    only count usage; do not enforce the limit
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl weekday show ID
  
    show the limit of each weekday
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl weekday set ID DAY MINUTES
  
    set the limit of one weekday
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl extend show ID
  
    show today's bonus
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl extend add ID MINUTES
  
    add to today's bonus
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl extend reset ID
  
    cancel today's bonus
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl usage ID [OPTIONS]
  
    show usage: totals, applications or a chart
  
  Options:
    -a, --ascii                    draw charts in plain ASCII
    -n, --names FILE               application names: lines such as "305 video"
        --apps                     applications today, or a chart for each
        --day N                    applications on the day N days ago, 0 to 30
        --week N                   applications in the week N weeks ago, 0 to 3
        --month                    applications in this month
        --history                  a chart, of days unless --weeks is given
        --days                     with --history: today and 30 days before
        --weeks                    with --history: this week and 3 before
    -j, --json                     print one JSON document
  Usage: utm_appctl report [PATH] [OPTIONS]
  
    write an HTML page, of now or of a usage file
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
    -j, --json                     print one JSON document
  Usage: utm_appctl policy create POLICY
  
    create a policy without rules
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl policy rule POLICY APP=RULE... [OPTIONS]
  
    limit, block or free applications
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
    -j, --json                     print one JSON document
  Usage: utm_appctl policy bind ID POLICY
  
    give a profile a policy, permanently
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl policy clear POLICY
  
    remove all rules of a policy
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl signature load PATH
  
    load signatures into the DPI engine
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl interval show
  
    show how often it is written
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl interval set MINUTES
  
    set how often it is written
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl export PATH
  
    have the daemon write a usage file
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl import PATH
  
    have the daemon read a usage file
  
  Options:
    -j, --json                     print one JSON document

All of it fits into 80 columns.

  $ { utm_appctl --help; commands | while read -r command; do utm_appctl $command --help; done; } |
  >   awk 'length > 80'

The version is the project's.

  $ version=$(sed -n 's/^project(utm_appd VERSION \([^ ]*\) .*/\1/p' "$SOURCE/CMakeLists.txt")
  $ test "$(utm_appctl --version)" = "utm_appctl $version"
  $ test "$(utm_appctl -V)" = "utm_appctl $version"
  $ test "$(utm_appctl limit set --version)" = "utm_appctl $version"

Help that cannot be written is not done.

  $ utm_appctl --help >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]
  $ utm_appctl --version >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]
  $ utm_appctl limit --help >/dev/full
  utm_appctl: the output could not be written (No space left on device)
  [4]
