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
  
  The household
    apply [FILE]                    make everything as the household file has it
  
  People
    people                          show everybody: used, limit, left, blocked
    profile add ID                  create a profile without limits
    profile del ID                  delete a profile and release its devices
    device add ID MAC...            add devices to a profile
    device del ID MAC...            remove devices from a profile, release them
    device list [ID]                list the devices of everybody, or of one
  
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
    usage [ID]                      show usage: totals, applications or a chart
    report [PATH]                   write an HTML page, of now or of a usage file
    watch                           tell of everything that changes, until it is ended
    metrics                         show everybody's figures for a monitoring system
  
  Applications
    policy create POLICY            create a policy without rules
    policy rule POLICY APP=RULE...  limit, block or free applications
    policy bind ID POLICY           give a profile a policy, permanently
    policy show [ID]                list the rules of everybody, or of one
    policy clear POLICY             remove all rules of a policy
    signature load PATH             load signatures into the DPI engine
  
  The usage file
    interval show                   show how often it is written
    interval set MINUTES            set how often it is written
    export PATH                     have the daemon write a usage file
    import PATH                     have the daemon read a usage file
  
  For shells
    completion WORD...              print what may stand for the last word
  
  Options of every command (COMMAND --help lists all that it takes)
    -j, --json                     print one JSON document
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  
  Operands
    ID        a person: a number of your choice, or a name in the household
    POLICY    a number of your choice, 1 or more
    MINUTES   90, 90m, 1h30m, 1:30 or 1.5h
    DAY       monday, mon or 1; sat,sun; weekdays, weekend, all; sunday is 0
    MAC       02:00:00:00:00:1a, with or without separators
    APP=RULE  video=45m limits, video=block blocks, video=allow ends both;
              applications go by number, or by their name in the household
    FILE      a household file; - is standard input
    PATH      a file; but for report it is the daemon that opens it, as root
    on|off    yes and no will do, too
    WORD      a word behind utm_appctl; the last one is still being typed
  
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
  Usage: utm_appctl limit show ID [OPTIONS]
  
    show today's limit and whether it is enabled
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl limit show mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
    -s, --socket PATH              the daemon's socket, if not the default
    -t, --timeout SECONDS          how long to wait for an answer; default 30
    -h, --help                     show help
    -V, --version                  the version
  $ utm_appctl --help limit show whatever
  Usage: utm_appctl limit show ID [OPTIONS]
  
    show today's limit and whether it is enabled
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl limit show mia
  
  Options:
        --household FILE           the household file, for names of people
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
  
  Example:
    utm_appctl ping
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl status
  
    show whether limits are enforced
  
  Example:
    utm_appctl status
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl activate on|off
  
    enforce limits, or let everything pass
  
  Operands:
    on|off    yes and no will do, too
  
  Example:
    utm_appctl activate on
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl debug on|off
  
    have the daemon log what it does
  
  Operands:
    on|off    yes and no will do, too
  
  Example:
    utm_appctl debug on
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl apply [FILE] [OPTIONS]
  
    make everything as the household file has it
  
  Operands:
    FILE      a household file; - is standard input
  
  Example:
    utm_appctl apply household.json --dry-run
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
        --dry-run                  only say what would be done
        --repair                   send everything that could be out of step
        --prune                    delete who is not of the household
        --restore PATH             import a usage file, if nothing was counted
    -j, --json                     print one JSON document
  Usage: utm_appctl people [OPTIONS]
  
    show everybody: used, limit, left, blocked
  
  Example:
    utm_appctl people
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl profile add ID [OPTIONS]
  
    create a profile without limits
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl profile add mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl profile del ID [OPTIONS]
  
    delete a profile and release its devices
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl profile del mia
  
  Options:
        --household FILE           the household file, for names of people
    -y, --yes                      delete the history, too, without asking
    -j, --json                     print one JSON document
  Usage: utm_appctl device add ID MAC... [OPTIONS]
  
    add devices to a profile
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
    MAC       02:00:00:00:00:1a, with or without separators
  
  Example:
    utm_appctl device add mia 02:00:00:00:00:1a
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl device del ID MAC... [OPTIONS]
  
    remove devices from a profile, release them
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
    MAC       02:00:00:00:00:1a, with or without separators
  
  Example:
    utm_appctl device del mia 02:00:00:00:00:1a
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl device list [ID] [OPTIONS]
  
    list the devices of everybody, or of one
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl device list mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl limit show ID [OPTIONS]
  
    show today's limit and whether it is enabled
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl limit show mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl limit set ID MINUTES [OPTIONS]
  
    set the limit of today and of every weekday
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
    MINUTES   90, 90m, 1h30m, 1:30 or 1.5h
  
  Example:
    utm_appctl limit set mia 1h30m
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl limit enable ID [OPTIONS]
  
    cut the profile off when its limit is reached
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl limit enable mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl limit disable ID [OPTIONS]
  
    only count usage; do not enforce the limit
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl limit disable mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl weekday show ID [OPTIONS]
  
    show the limit of each weekday
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl weekday show mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl weekday set ID DAY MINUTES [OPTIONS]
  
    set the limit of one weekday
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
    MINUTES   90, 90m, 1h30m, 1:30 or 1.5h
    DAY       monday, mon or 1; sat,sun; weekdays, weekend, all; sunday is 0
  
  Example:
    utm_appctl weekday set mia sat,sun 3h
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl extend show ID [OPTIONS]
  
    show today's bonus
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl extend show mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl extend add ID MINUTES [OPTIONS]
  
    add to today's bonus
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
    MINUTES   90, 90m, 1h30m, 1:30 or 1.5h
  
  Example:
    utm_appctl extend add mia 30m
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl extend reset ID [OPTIONS]
  
    cancel today's bonus
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl extend reset mia
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl usage [ID] [OPTIONS]
  
    show usage: totals, applications or a chart
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl usage mia --history
  
  Options:
    -a, --ascii                    draw charts in plain ASCII
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
        --apps                     applications today, or a chart for each
        --day N                    applications on the day N days ago, 0 to 30
        --yesterday                the same as --day 1
        --week N                   applications in the week N weeks ago, 0 to 3
        --month                    applications in this month
        --history                  a chart, of days unless --weeks is given
        --days                     with --history: today and 30 days before
        --weeks                    with --history: this week and 3 before
        --csv                      print lines of comma-separated values
    -j, --json                     print one JSON document
  Usage: utm_appctl report [PATH] [OPTIONS]
  
    write an HTML page, of now or of a usage file
  
  Operands:
    PATH      a file; but for report it is the daemon that opens it, as root
  
  Example:
    utm_appctl report --person mia > mia.html
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
        --person PERSON            a page for this person, without anybody else
    -o, --output FILE              write this file instead, whole or not at all
    -j, --json                     print one JSON document
  Usage: utm_appctl watch [OPTIONS]
  
    tell of everything that changes, until it is ended
  
  Example:
    utm_appctl watch --exec /etc/utm_appd/events
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
        --all                      also what is, and each minute that is used
        --exec FOLDER              run the programs in the folder with each event
        --interval SECONDS         how often to look; default 10
    -j, --json                     print one JSON document
  Usage: utm_appctl metrics [OPTIONS]
  
    show everybody's figures for a monitoring system
  
  Example:
    utm_appctl metrics --output /var/lib/node_exporter/utm.prom
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
    -o, --output FILE              write this file instead, whole or not at all
    -j, --json                     print one JSON document
  Usage: utm_appctl policy create POLICY
  
    create a policy without rules
  
  Operands:
    POLICY    a number of your choice, 1 or more
  
  Example:
    utm_appctl policy create 7
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl policy rule POLICY APP=RULE... [OPTIONS]
  
    limit, block or free applications
  
  Operands:
    POLICY    a number of your choice, 1 or more
    APP=RULE  video=45m limits, video=block blocks, video=allow ends both;
              applications go by number, or by their name in the household
  
  Example:
    utm_appctl policy rule 7 video=45m games=block
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl policy bind ID POLICY [OPTIONS]
  
    give a profile a policy, permanently
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
    POLICY    a number of your choice, 1 or more
  
  Example:
    utm_appctl policy bind mia 7
  
  Options:
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl policy show [ID] [OPTIONS]
  
    list the rules of everybody, or of one
  
  Operands:
    ID        a person: a number of your choice, or a name in the household
  
  Example:
    utm_appctl policy show mia
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document
  Usage: utm_appctl policy clear POLICY
  
    remove all rules of a policy
  
  Operands:
    POLICY    a number of your choice, 1 or more
  
  Example:
    utm_appctl policy clear 7
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl signature load PATH
  
    load signatures into the DPI engine
  
  Operands:
    PATH      a file; but for report it is the daemon that opens it, as root
  
  Example:
    utm_appctl signature load /tmp/signatures
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl interval show
  
    show how often it is written
  
  Example:
    utm_appctl interval show
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl interval set MINUTES
  
    set how often it is written
  
  Operands:
    MINUTES   90, 90m, 1h30m, 1:30 or 1.5h
  
  Example:
    utm_appctl interval set 30m
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl export PATH
  
    have the daemon write a usage file
  
  Operands:
    PATH      a file; but for report it is the daemon that opens it, as root
  
  Example:
    utm_appctl export /tmp/usage.json
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl import PATH
  
    have the daemon read a usage file
  
  Operands:
    PATH      a file; but for report it is the daemon that opens it, as root
  
  Example:
    utm_appctl import /tmp/usage.json
  
  Options:
    -j, --json                     print one JSON document
  Usage: utm_appctl completion WORD... [OPTIONS]
  
    print what may stand for the last word
  
  Operands:
    WORD      a word behind utm_appctl; the last one is still being typed
  
  Example:
    utm_appctl completion limit s
  
  Options:
    -n, --names FILE               application names: lines such as "305 video"
        --household FILE           the household file, for names of people
    -j, --json                     print one JSON document

All of it fits into 80 columns.

  $ { utm_appctl --help; commands | while read -r command; do utm_appctl $command --help; done; } |
  >   awk 'length > 80'
    watch                           tell of everything that changes, until it is ended
    metrics                         show everybody's figures for a monitoring system

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
