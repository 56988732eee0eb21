#!/bin/sh
# The init script and the watch against the real daemon; package_test.sh lays out the root that
# this runs in. Each case begins on a router that has just been flashed, and compares the whole
# transcript: what procd was told, what the log says, what the client was asked, in that order.
set -u

usage=/tmp/ApplicationData/app_usage.json
saved=/etc/utm_appd/app_usage.json
victim=/etc/victim # a file that nobody but its owner may change
pending=/var/run/utm_appd/to_restore.json
by_sections=/var/run/utm_appd/household.json
household=/etc/utm_appd/household.json
init=/etc/init.d/utm_appd
failures=0

# --- the router

fresh_router() {
    clear_memory
    rm -rf /etc/utm_appd $victim* /test/transcript /test/after_export /test/stderr /test/service*
    rm -f /test/config.md5
    mkdir -p /etc/utm_appd
    : >/test/transcript
    configure
}

# What a reboot does to files.
clear_memory() {
    rm -rf /tmp/* /dev/utm_app_config_socket
    mkdir -p /tmp/run /tmp/lock /tmp/sim
}

# configure [OPTION VALUE]...
configure() {
    echo "config utm_appd 'main'" >/etc/config/utm_appd
    while [ $# -gt 0 ]; do
        echo "	option $1 '$2'" >>/etc/config/utm_appd
        shift 2
    done
}

# A household of one, by sections: profile 3 may use two hours a day.
add_mia() {
    cat >>/etc/config/utm_appd <<'END'
config person 'mia'
	option number '3'
	option name 'Mia'

config device
	option person 'mia'
	option mac '02:00:00:00:00:1A'

config limit
	option person 'mia'
	option time '2h'
END
}

# A front end of the firmware's own, which needs no household.
switch_on_at_the_start() {
    printf '%s\n' '#!/bin/sh' 'utm_appctl activate on' >/etc/utm_appd/started
    chmod +x /etc/utm_appd/started
}

daemon_pids() {
    for process in /proc/[0-9]*; do
        [ "$(readlink "$process/exe")" != /usr/sbin/utm_appd ] || echo "${process#/proc/}"
    done
}

# A file as the daemon writes it: profile 3 has used the given minutes of today.
usage_of() {
    cat <<JSON
{"user_profile_list":[{"user_profile_id":3,"daily_used":$1,"weekly_used":0,"monthly_used":0,
"app_stat_list":[]}],"timestamp":$(date +%s),"global_stat":[]}
JSON
}

ask() {
    /usr/bin/utm_appctl "$@" 2>&1
}

used_today() {
    ask usage 3 --json | sed -n 's/.*"today":\([0-9]*\).*/\1/p'
}

used_in() {
    sed -n 's/.*"daily_used":\([0-9]*\),"weekly_used".*/\1/p' "$1" 2>&1
}

# until_true SECONDS COMMAND...: whether it has come true in time
until_true() {
    tenths_left=$(($1 * 10))
    shift
    until "$@"; do
        [ "$tenths_left" -gt 0 ] || return 1
        tenths_left=$((tenths_left - 1))
        usleep 100000
    done
}

told() {
    grep -qF "$1" /test/transcript
}

# --- the virtual clock, by which the daemon sleeps: sim/preload/clock_page.h has its page

clock_page=/tmp/sim/clock

# put PLACE NUMBER: writes the page's number of 64 bits, at once
put() {
    bytes=
    left=$2
    for _ in 1 2 3 4 5 6 7 8; do
        bytes=$bytes\\$(printf %03o $((left % 256)))
        left=$((left / 256))
    done
    # shellcheck disable=SC2059 # they are all escapes
    printf "$bytes" | dd of=$clock_page bs=8 seek="$1" conv=notrunc 2>/dev/null
}

get() {
    od -A n -t d8 -j $(($1 * 8)) -N 8 $clock_page | tr -d ' '
}

# local 'DATE HH:MM': that time, in seconds since the epoch
local_time() {
    /bin/date -d "$1" +%s
}

# Everything that is started from now on goes by the clock, `date` included.
start_clock_at() {
    dd if=/dev/zero of=$clock_page bs=32 count=1 2>/dev/null
    put 0 "$(local_time "$1")"
    put 3 $(($$ << 32)) # who grants the time
    cat >/test/bin/date <<END
#!/bin/sh
[ \$# != 1 ] || set -- -d "@\$(od -A n -t d8 -N 8 $clock_page | tr -d ' ')" "\$1"
exec /bin/date "\$@"
END
    # The watch waits by real time.
    printf '%s\n' '#!/bin/sh' 'unset LD_PRELOAD' 'exec /bin/timeout "$@"' >/test/bin/timeout
    chmod +x /test/bin/date /test/bin/timeout
    export LD_PRELOAD=/test/libsimpreload.so UTM_SIM_CLOCK=$clock_page UTM_SIM_SLEEPER=1
}

stop_clock() {
    unset LD_PRELOAD UTM_SIM_CLOCK UTM_SIM_SLEEPER
    rm -f /test/bin/date /test/bin/timeout
}

asleep() {
    [ "$(get 1)" = "$(get 2)" ] && [ $(($(get 3) & 0xffffffff)) != 0 ]
}

# pass MINUTES: until the daemon's work of the last one is done
pass() {
    put 1 $(($(get 1) + $1 * 60))
    until_true 60 asleep || check "the daemon sleeps" yes no
}

# --- comparing

check() { # WHAT WANTED GOT
    [ "$2" != "$3" ] || return 0
    bad=1
    echo "# $1"
    printf '%s\n' "$2" >/tmp/wanted
    printf '%s\n' "$3" >/tmp/got
    diff -U 20 /tmp/wanted /tmp/got | sed 1,2d
}

# The transcript since the last look; numbers of processes and names by chance are no part of it.
transcript() {
    sed 's/process [0-9]*/process N/; s/aside\.[^/]*$/aside.X/' /test/transcript
    : >/test/transcript
}

check_transcript() {
    check "transcript" "$(cat)" "$(transcript)"
}

check_transcript_without_procd() {
    sed -i '/^procd: /d' /test/transcript
    check_transcript
}

nothing_runs() {
    [ -z "$(daemon_pids)$(pidof utm_appd_watch)$(watch_pids)" ]
}

check_gone() {
    check "nothing runs" "" "$(daemon_pids)$(pidof utm_appd_watch)$(watch_pids)"
}

case_of() { # NAME: starts it
    bad=0
    fresh_router
    "$1"
    # What is left over, if the case went wrong.
    [ ! -e /test/procd.pid ] || kill -9 "$(cat /test/procd.pid)" 2>/dev/null
    rm -f /test/procd.pid
    stop_clock
    for process in $(pidof utm_appd_watch flock) $(daemon_pids); do
        kill -9 "$process"
    done
    killall -9 sleep 2>/dev/null
    wait
    until_true 10 nothing_runs
    if [ "$bad" = 0 ]; then
        echo "ok - $1"
    else
        echo "not ok - $1"
        [ ! -s /test/stderr ] || sed 's/^/# stderr: /' /test/stderr
        failures=$((failures + 1))
    fi
}

# --- transcripts that recur

not_root_s="is not root's own: moved to"
came_up="utm_appd daemon.notice: utm_appd has started"
started="procd: command /usr/sbin/utm_appd_watch run
procd: respawn 3600 5 0
procd: stderr 1
procd: trigger utm_appd
$came_up"

switched_on="utm_appctl activate on: 0"
restored="utm_appctl --timeout 60 import $pending: 0
utm_appd daemon.notice: restored what was used"
exported="utm_appctl --timeout 5 export $usage: 0"
limits_are_off="utm_appctl --timeout 5 export $usage: 1
utm_appd daemon.info: limits are off: the last file is all there is to save"
was_saved="utm_appd daemon.notice: saved what was used to $saved"
ended="utm_appd daemon.notice: utm_appd has ended"

start_and_settle() {
    $init start
    check "start" 0 $?
    # What comes after the answer: a hook, switching on, restoring.
    until_true 10 watch_waits || check "the watch waits for the end" yes no
}

# All that is left of it then is a program that waits for the lock.
watch_waits() {
    [ -n "$(watch_pids)" ]
}

watch_pids() {
    for process in $(pidof flock); do
        case $(tr '\0' ' ' <"/proc/$process/cmdline") in
        *"utm_appd_watch ended "*) echo "$process" ;;
        esac
    done 2>/dev/null
}

modes_of_folders() {
    stat -c %A /tmp/ApplicationData /tmp/utm_log | tr '\n' ' ' | sed 's/ $//'
}

# lay KIND PATH OWNER: somebody was there first. A KIND that is a path is where a link leads to.
# @return 1 where there is no second user, as in a user's namespace
lay() {
    mkdir -p "${2%/*}"
    echo "before" >$victim
    case $1 in
    folder) mkdir "$2" ;;
    fifo) mkfifo "$2" ;;
    link) ln -s $victim "$2" ;;
    dangling) ln -s $victim.new "$2" ;;
    /*) ln -s "$1" "$2" ;;
    file) usage_of 99 >"$2" ;;
    esac
    chown -h "$3" "$2" 2>/dev/null || {
        echo "# without a second user: no $1 of another owner"
        return 1
    }
}

# What is in the way is not gone, only out of the way.
moved_aside() {
    echo "$1".aside.*/* | sed 's/aside\.[^/]*/aside.X/'
}

# Between the export and the signal the daemon begins a command line that waits for a file.
come_between() {
    echo "$1 lcsh apg off" >/tmp/sim/gate
    cat >/test/after_export <<'END'
#!/bin/sh
/usr/bin/utm_appctl activate off >/dev/null 2>&1 &
until grep -q "lcsh apg off" /tmp/sim/journal; do usleep 50000; done
END
    chmod +x /test/after_export
}

mode_of_socket() {
    stat -c '%A %u %g' /dev/utm_app_config_socket
}

switched_on_twice() {
    [ "$(grep -c "lcsh apg on" /tmp/sim/journal)" = 2 ]
}

# apply_line [OPTION...]: how the household of the sections is applied
apply_line() {
    echo "utm_appctl --timeout 60 apply $by_sections${1:+ $*}"
}

# Without what the client says for people: the client's own tests have that.
check_transcript_without_words() {
    sed -i '/^utm_appd daemon.info: /d' /test/transcript
    check_transcript_without_procd
}

# The minutes of today that a person may use, or nothing where there is no such person.
limit_of() {
    ask limit show "$1" --json 2>/dev/null | sed -n 's/.*"limit": *\([0-9]*\).*/\1/p'
}

# Nothing that a command has left running keeps the next one waiting.
check_lock_is_free() {
    check "$1: the lock" free "$(flock -w 5 /var/lock/procd_utm_appd.lock echo free)"
}

daemon_runs() {
    [ -n "$(daemon_pids)" ]
}

rpcd_asks() {
    printf '%s' "$2" | env -i /usr/libexec/rpcd/utm_appd call "$1" 2>/dev/null
    echo "status $?"
}

feed_test() {
    sh /test/test.sh "$@" 2>&1
    echo "status $?"
}

# --- the cases

a_fresh_start_creates_the_folder_and_waits_for_the_socket() {
    start_and_settle
    check "answers" 0 "$(ask ping; echo $?)"
    check "folder" "" "$(ls -A /tmp/ApplicationData)"
    check "whose" "drwx------ drwx------" "$(modes_of_folders)"
    check "one daemon" 1 "$(daemon_pids | wc -l)"
    check "who may" "srw------- 0 0" "$(mode_of_socket)"
    check "running" 0 "$($init running; echo $?)"
    check_transcript <<END
$started
END
}

a_save_and_a_stop_save_what_was_used_and_a_stop_lifts_blocks() {
    start_and_settle
    ask activate on
    ask profile add 3
    ask device add 3 02:00:00:00:00:1a
    ask policy create 7
    ask policy rule 7 306=block
    ask policy bind 3 7
    transcript >/dev/null
    $init save
    check "saved" "$(cat $usage)" "$(cat $saved)"
    check "one daemon" 1 "$(daemon_pids | wc -l)"
    rm $saved
    $init stop
    check_gone
    check "saved" "$(cat $usage)" "$(cat $saved)"
    check "whose" "-rw-------" "$(stat -c %A $saved)"
    check "the router" "lcsh apg acl set 02:00:00:00:00:1A 306 0 18
lcsh apg acl reset 02:00:00:00:00:1A" "$(grep 'acl' /tmp/sim/journal)"
    check_transcript <<END
$exported
$was_saved
$exported
$was_saved
$ended
END
}

a_stop_saves_nothing_while_limits_are_off() {
    start_and_settle
    transcript >/dev/null
    $init stop
    check_gone
    check "files" "" "$(find /etc/utm_appd /tmp/ApplicationData -type f)"
    check_transcript <<END
$limits_are_off
$ended
END
}

a_copy_that_is_not_wanted_is_neither_read_nor_written() {
    configure save 0
    switch_on_at_the_start
    usage_of 42 >$saved
    start_and_settle
    check "to restore" "no" "$([ -e $pending ] || echo no)"
    ask profile add 3
    transcript >/dev/null
    $init stop
    check "saved" "42" "$(used_in $saved)"
    check_transcript <<END
$exported
$ended
END
}

a_signal_lost_to_a_command_line_is_sent_again() {
    start_and_settle
    ask activate on
    transcript >/dev/null
    come_between /tmp/open
    $init stop &
    until_true 20 told "asking again" || check "the first signal is lost" yes no
    check "still there" 1 "$(daemon_pids | head -n 1 | wc -l)"
    touch /tmp/open
    until_true 20 told "has ended"
    wait
    check_gone
    check_transcript <<END
$exported
$was_saved
utm_appd daemon.info: utm_appd has not ended yet: asking again every second
$ended
END
}

a_daemon_that_cannot_end_is_killed() {
    configure stop_seconds 4
    start_and_settle
    ask activate on
    transcript >/dev/null
    come_between /tmp/never
    $init stop
    check_gone
    touch /tmp/never
    check_transcript <<END
$exported
$was_saved
utm_appd daemon.info: utm_appd has not ended yet: asking again every second
utm_appd daemon.err: utm_appd does not end: killing it; what it has blocked stays blocked
END
}

a_boot_brings_back_what_was_saved() {
    switch_on_at_the_start
    usage_of 42 >$saved
    start_and_settle
    check "used" 42 "$(used_today)"
    check "to restore" "no" "$([ -e $pending ] || echo no)"
    check_transcript <<END
$started
$switched_on
$restored
END
    $init shutdown
    check "saved" 42 "$(used_in $saved)"
    clear_memory
    $init boot
    until_true 10 told "restored what was used"
    check "used after a reboot" 42 "$(used_today)"
}

the_front_end_restores_after_switching_on() {
    usage_of 42 >$saved
    start_and_settle
    $init restore 2>/dev/null
    check "too early" 1 $?
    ask activate on
    $init restore
    check "in time" 0 $?
    check "used" 42 "$(used_today)"
    $init restore
    check "once more" 0 $?
    check_transcript <<END
$started
utm_appctl --timeout 60 import $pending: 1
utm_appd daemon.err: not restored: the import failed; keeping $pending
$restored
utm_appd daemon.info: nothing to restore
END
}

the_hook_configures_before_anything_is_restored() {
    usage_of 42 >$saved
    printf '%s\n' '#!/bin/sh' 'utm_appctl profile add 3' 'utm_appctl activate on' 'exit 4' \
        >/etc/utm_appd/started
    chmod +x /etc/utm_appd/started
    start_and_settle
    check "used" 42 "$(used_today)"
    check_transcript <<END
$started
utm_appctl profile add 3: 0
utm_appctl activate on: 0
utm_appd daemon.warning: /etc/utm_appd/started failed with status 4
$restored
END
}

a_stop_does_not_wait_for_the_hook() {
    printf '%s\n' '#!/bin/sh' 'echo $$ >/tmp/hook' 'exec sleep 1000' >/etc/utm_appd/started
    chmod +x /etc/utm_appd/started
    $init start
    until_true 10 [ -s /tmp/hook ]
    transcript >/dev/null
    $init stop
    check_gone
    check "hook" "gone" "$([ -e "/proc/$(cat /tmp/hook)/exe" ] || echo gone)"
    check_transcript <<END
$limits_are_off
$ended
END
}

what_nobody_imported_is_not_lost() {
    usage_of 42 >$saved
    start_and_settle
    ask activate on
    ask profile add 3
    transcript >/dev/null
    $init stop
    check "the old" 42 "$(used_in $saved.unrestored)"
    check "the new" 0 "$(used_in $saved)"
    check_transcript <<END
$exported
utm_appd daemon.warning: what was used before the start is kept, not restored, as $saved.unrestored
$was_saved
$ended
END
}

# A folder whose place is taken by a file cannot be written, not even by root.
a_folder_that_cannot_be_written_keeps_nobody_from_stopping() {
    configure folder /etc/utm_appd/taken
    switch_on_at_the_start
    touch /etc/utm_appd/taken
    start_and_settle
    transcript >/dev/null
    $init stop
    check_gone
    check_transcript <<END
$exported
utm_appd daemon.err: not saved: cannot write /etc/utm_appd/taken/app_usage.json
$ended
END
}

a_full_flash_leaves_the_old_copy() {
    mount -t tmpfs -o size=16k tmpfs /etc/utm_appd
    switch_on_at_the_start
    usage_of 42 >$saved
    start_and_settle
    dd if=/dev/urandom of=/etc/utm_appd/full bs=1024 count=64 2>/dev/null ||
        dd if=/proc/kallsyms of=/etc/utm_appd/full bs=1024 count=64 2>/dev/null
    transcript >/dev/null
    $init stop
    check_gone
    check "old" 42 "$(used_in $saved)"
    check "files" "$saved
/etc/utm_appd/full
/etc/utm_appd/started" "$(find /etc/utm_appd -type f | sort)"
    check_transcript <<END
$exported
utm_appd daemon.err: not saved: cannot write $saved
$ended
END
    umount /etc/utm_appd
}

a_crash_is_noticed_and_mended() {
    switch_on_at_the_start
    usage_of 42 >$saved
    start_and_settle
    killed=$(daemon_pids)
    transcript >/dev/null
    kill -KILL "$killed"
    until_true 1 told "utm_appd is gone" || check "it is noticed at once" yes no
    until_true 20 told "restored what was used"
    check "used" 42 "$(used_today)"
    check "another" 1 "$(daemon_pids | grep -cvx "$killed")"
    check_transcript <<END
utm_appd daemon.err: utm_appd is gone; what it had blocked stays blocked until its limits come back
procd: the instance has ended with status 1
utm_appd daemon.notice: utm_appd has started
$switched_on
$restored
END
}

a_watch_that_was_killed_finds_the_daemon_again() {
    start_and_settle
    ask activate on
    before=$(daemon_pids)
    transcript >/dev/null
    chmod 0777 /dev/utm_app_config_socket
    kill -KILL "$(watch_pids)"
    until_true 10 told "watching it"
    until_true 10 watch_waits
    check "the same daemon" "$before" "$(daemon_pids)"
    check "who may" "srw------- 0 0" "$(mode_of_socket)"
    $init stop
    check_gone
    check_transcript <<END
procd: the instance has ended with status 137
utm_appd daemon.warning: utm_appd runs already: watching it
$exported
$was_saved
$ended
END
}

a_daemon_without_a_watch_is_stopped_as_well() {
    /usr/sbin/utm_appd
    until_true 10 /usr/bin/utm_appctl ping
    $init stop
    check_gone
    check_transcript <<END
$limits_are_off
$ended
END
}

# It takes the socket over from the first, and both count.
a_stop_ends_every_daemon() {
    start_and_settle
    /usr/sbin/utm_appd
    check "daemons" 2 "$(daemon_pids | wc -l)"
    $init stop
    check_gone
}

# Nobody could wait for the end of one that does not hold the lock.
a_daemon_that_somebody_else_has_started_is_replaced() {
    switch_on_at_the_start
    /usr/sbin/utm_appd
    before=$(daemon_pids)
    ask activate on
    ask profile add 3
    start_and_settle
    check "one daemon" 1 "$(daemon_pids | grep -cvx "$before")"
    check "what it knew" 0 "$(used_in $usage)"
    check_transcript_without_procd <<END
utm_appd daemon.warning: utm_appd was started by somebody else: ending it
utm_appctl --timeout 60 export $usage: 0
$ended
$came_up
$switched_on
$restored
END
}

# As while a statistics service hangs. The transcript is in the order of the answers.
a_daemon_that_is_slow_to_answer_is_waited_for() {
    switch_on_at_the_start
    usage_of 42 >$saved
    start_and_settle
    ask export $usage
    rm $saved
    transcript >/dev/null
    echo "/tmp/open lcsh apg on" >/tmp/sim/gate
    /usr/bin/utm_appctl activate off
    /usr/bin/utm_appctl --timeout 60 activate on &
    until_true 10 switched_on_twice
    $init stop &
    stopping=$!
    until_true 20 told "saved what was used" || check "the last file is saved" yes no
    check "the last file" 42 "$(used_in $saved)"
    kill -TERM $stopping # as a shutdown does when it takes long
    sleep 1
    check "the stop goes on" 0 "$(kill -0 $stopping; echo $?)"
    touch /tmp/open
    until_true 20 told "has ended"
    until_true 10 nothing_runs
    check_gone
    check_transcript <<END
utm_appctl --timeout 5 export $usage: 4
utm_appd daemon.warning: utm_appd does not answer soon: saving the last file that it has written
$was_saved
utm_appctl --timeout 60 export $usage: 0
$was_saved
$ended
END
}

what_a_daemon_that_is_gone_has_written_is_saved() {
    switch_on_at_the_start
    usage_of 42 >$saved
    start_and_settle
    rm $saved
    kill -KILL "$(cat /test/procd.pid)" "$(watch_pids)" "$(daemon_pids)"
    until_true 10 nothing_runs
    $init stop
    check "saved" 42 "$(used_in $saved)"
}

# A power cut may leave half of it where the folder is on flash.
a_usage_file_that_is_torn_makes_way_for_the_saved_one() {
    switch_on_at_the_start
    usage_of 42 >$saved
    mkdir -m 0700 /tmp/ApplicationData
    usage_of 99 | cut -c 1-20 >$usage
    torn=$(cat $usage)
    start_and_settle
    check "used" 42 "$(used_today)"
    check "the torn one" "$torn" "$(cat $saved.unrestored)"
    check "to restore" "no" "$([ -e $pending ] || echo no)"
    check_transcript <<END
$started
$switched_on
utm_appctl --timeout 60 import $pending: 1
utm_appctl --timeout 60 import $saved: 0
utm_appd daemon.warning: restored what was saved as $saved: what was used since is lost
utm_appd daemon.warning: what was used before the start is kept, not restored, as $saved.unrestored
END
}

# Whatever stays running, a hook or a daemon, would have the lock if it were left to it.
no_command_keeps_the_next_one_waiting() {
    printf '%s\n' '#!/bin/sh' 'exec sleep 1000' >/etc/utm_appd/started
    chmod +x /etc/utm_appd/started
    for command in start reload save restore running stop; do
        $init $command
        check_lock_is_free $command
    done
}

an_upgrade_saves_what_was_used_and_keeps_it() {
    switch_on_at_the_start
    start_and_settle
    ask profile add 3
    transcript >/dev/null
    rm -f $saved
    # What sysupgrade does: its own list first, then whatever a package adds.
    sysupgrade_init_conffiles=list_of_the_system
    # shellcheck disable=SC2317
    list_of_the_system() {
        echo /etc/config/utm_appd >"$1"
        echo /etc/utm_appd/started >>"$1"
    }
    # shellcheck source=package/openwrt/files/utm_appd.upgrade
    . /lib/upgrade/utm_appd.sh
    said=$(for hook in $sysupgrade_init_conffiles; do "$hook" /tmp/list; done)
    check "what it says" "" "$said"
    check "the list" "/etc/config/utm_appd
$saved
/etc/utm_appd/started" "$(cat /tmp/list)"
    check "used" 0 "$(used_in $saved)"
    check "what is kept without it" /etc/utm_appd/ "$(cat /lib/upgrade/keep.d/utm_appd)"
    check_transcript <<END
$exported
$was_saved
END
}

the_sections_make_a_household() {
    cat >/etc/config/utm_appd <<'END'
config utm_appd
	option limits 'no'
	option threshold '50000'
	list free 'school.example'
	list free '192.0.2.0/24'

config application 'video'
	option number '305'

config application
	option number '306'
	option name 'Games & more'

config person 'mia'
	option number '1'
	option name 'Mia'
	option paused 'on'

config device
	option person 'mia'
	option mac '02:00:00:00:00:1A'
	option name 'Mia'\''s "new"  tablet, für $HOME \ `id`'

config device 'pc'
	option mac '02:00:00:00:00:1B'
	option name ''
	option person 'mia'

config limit
	option person 'mia'
	option time '2h'

config limit
	option person 'mia'
	list days 'sat'
	list days 'sun'
	option time '3h'

config rule
	option person 'mia'
	option application 'video'
	option rule '45m'

config bedtime
	option person 'mia'
	option from '20:30'
	option to '07:00'

config school
	option person 'mia'
	option days 'weekdays'
	option from '08:00'
	option to '13:00'

config person 'oma'
	option name 'Oma Änne'
	option enforced 'off'

config person 'tom'
	option number '1o'
END
    # shellcheck disable=SC2016 # nothing in a name is expanded
    check "document" '{ "limits": false, "threshold": 50000, "free": [ "school.example", '\
'"192.0.2.0/24" ], "applications": [ { "number": 305, "name": "video" }, { "number": 306, "name": '\
'"Games & more" } ], "people": [ { "number": 1, "name": "Mia", "enforced": true, "paused": true, '\
'"devices": [ { "mac": "02:00:00:00:00:1A", "name": "Mia'"'"'s \"new\"  tablet, für $HOME \\ '\
'`id`" }, { "mac": "02:00:00:00:00:1B" } ], "limit": { "all": "2h", "sat,sun": "3h" }, '\
'"applications": [ { "name": "video", "rule": "45m" } ], "bedtime": [ { "days": "all", "from": '\
'"20:30", "to": "07:00" } ], "school": [ { "days": "weekdays", "from": "08:00", "to": "13:00" } ] '\
'}, { "number": 11569436, "name": "Oma Änne", "enforced": false }, { "number": "1o", "name": '\
'"tom", "enforced": true } ] }' "$(/usr/libexec/utm_appd/household)"
    check_transcript </dev/null
}

without_a_person_there_is_no_household() {
    check "document" "" "$(/usr/libexec/utm_appd/household)"
}

booleans_are_read_as_uci_reads_them() {
    for word in 1 on true yes enabled maybe; do
        configure
        printf '%s\n' "config person 'mia'" "option enforced '$word'" >>/etc/config/utm_appd
        check "$word" '"enforced": true' \
            "$(/usr/libexec/utm_appd/household | grep -o '"enforced": [a-z]*')"
    done
    for word in 0 off false no disabled; do
        configure
        printf '%s\n' "config person 'mia'" "option enforced '$word'" >>/etc/config/utm_appd
        check "$word" '"enforced": false' \
            "$(/usr/libexec/utm_appd/household | grep -o '"enforced": [a-z]*')"
    done
}

a_number_of_a_name_stays_whoever_comes_or_goes() {
    for others in "" "config person 'anna'" "config person 'zoe'"; do
        configure
        printf '%s\n' "$others" "config person 'oma'" "option name 'oma'" >>/etc/config/utm_appd
        check "with $others" '"number": 11569436, "name": "oma"' \
            "$(/usr/libexec/utm_appd/household | grep -o '"number": [0-9]*, "name": "oma"')"
    done
}

what_lacks_a_name_or_an_owner_gets_a_word() {
    cat >/etc/config/utm_appd <<'END'
config person
	option name 'Mia'

config person 'tom'

config device
	option person 'mia'
	option mac '02:00:00:00:00:1A'

config limit 'late'
	option time '2h'

config application
	option number '305'
END
    check "document" '{ "applications": [ ], "people": [ '\
'{ "number": 3454938, "name": "tom", "enforced": true } ] }' "$(/usr/libexec/utm_appd/household)"
    check_transcript <<'END'
utm_appd daemon.warning: an application without a name is left out
utm_appd daemon.warning: a person (Mia) is left out: the section needs a name, as in config person 'mia'
utm_appd daemon.warning: a device is left out: there is no person 'mia' (section cfg034a5b)
utm_appd daemon.warning: a limit is left out: there is no person '' (section late)
END
}

a_boot_makes_the_household_so_with_what_was_used() {
    add_mia
    usage_of 42 >$saved
    start_and_settle
    check "used" 42 "$(used_today)"
    check "limit" 120 "$(limit_of 3)"
    check "the clients find it" $by_sections "$(readlink $household)"
    check "to restore" "no" "$([ -e $pending ] || echo no)"
    check_transcript_without_words <<END
$came_up
$(apply_line --restore $pending): 0
utm_appd daemon.notice: restored what was used
END
    $init stop
    check "saved" 42 "$(used_in $saved)"
}

a_changed_configuration_is_applied_and_restarts_nothing() {
    add_mia
    start_and_settle
    before="$(daemon_pids) $(watch_pids) $(cat /test/procd.pid)"
    reload_config
    reload_config
    sleep 2
    check "nothing has changed" "" "$(sed -n '2,/apply/d; /apply/p' /test/transcript)"
    transcript >/dev/null
    sed -i "s/'2h'/'3h'/" /etc/config/utm_appd
    sed -i "/'main'/a option group '0'" /etc/config/utm_appd
    reload_config
    until_true 10 told "apply $by_sections: 0" || check "it is applied" yes no
    until_true 10 flock -n /var/lock/procd_utm_appd.lock true
    check "limit" 180 "$(limit_of 3)"
    check "the same" "$before" "$(daemon_pids) $(watch_pids) $(cat /test/procd.pid)"
    check "who may" "srw-rw---- 0 0" "$(mode_of_socket)"
    check "who may know" "-rw-r----- 0 0" "$(stat -c '%A %u %g' $by_sections)"
    check_transcript_without_words <<END
$(apply_line): 0
END
}

who_is_not_in_the_household_any_more_stays_unless_told_otherwise() {
    add_mia
    start_and_settle
    for prune in 0 1; do
        configure prune $prune
        echo "config person 'tom'" >>/etc/config/utm_appd
        $init reload
        check "prune $prune" "$([ $prune = 1 ] || echo 120)" "$(limit_of 3)"
    done
}

limits_and_mia_s() {
    echo "$(ask status --json | grep -o '"active": *[a-z]*') $(limit_of 3)"
}

what_is_left_of_the_household() {
    find $household $by_sections $by_sections.new 2>/dev/null
}

when_the_last_person_goes_nobody_is_limited_any_more() {
    add_mia
    start_and_settle
    before=$(daemon_pids)
    for prune in 0 1; do
        configure prune $prune
        add_mia
        $init reload
        check "at first" '"active":true 120' "$(limits_and_mia_s)"
        transcript >/dev/null
        configure prune $prune
        $init reload
        check "reload" 0 $?
        mia_s=120 option=
        [ $prune = 0 ] || mia_s='' option=--prune
        check "prune $prune" "\"active\":false $mia_s" "$(limits_and_mia_s)"
        check "what is left" "" "$(what_is_left_of_the_household)"
        check "the same daemon" "$before" "$(daemon_pids)"
        ask activate on >/dev/null # as a front end may from now on
        $init reload
        check "once" '"active":true' "$(limits_and_mia_s | cut -d ' ' -f 1)"
        check_transcript_without_words <<END
$(apply_line $option): 0
utm_appd daemon.notice: nobody is in the household any more: limits are off
END
    done
}

# By the next reload, or by the watch when it takes the daemon over.
a_household_that_could_not_be_let_go_is_let_go_later() {
    add_mia
    start_and_settle
    configure
    mv /test/bin/utm_appctl /test/bin/utm_appctl.kept
    printf '%s\n' '#!/bin/sh' 'exit 4' >/test/bin/utm_appctl
    chmod +x /test/bin/utm_appctl
    $init reload
    mv /test/bin/utm_appctl.kept /test/bin/utm_appctl
    check "it fails" '"active":true 120' "$(limits_and_mia_s)"
    check "what is left" "$household
$by_sections" "$(what_is_left_of_the_household)"
    told "daemon.err: nobody is in the household any more, but limits were not switched off" ||
        check "it is reported" yes no
    utm_appd_watch run &
    until_true 10 told "any more: limits are off" || check "it is reported" yes no
    check "limits" '"active":false 120' "$(limits_and_mia_s)"
    check "what is left" "" "$(what_is_left_of_the_household)"
}

a_boot_without_the_last_household_takes_its_link_away() {
    ln -s $by_sections $household
    start_and_settle
    check "what is left" "" "$(what_is_left_of_the_household)"
    check_transcript <<END
$started
END
}

# Until it is mended, the daemon runs without a household, and what was used waits.
a_household_with_a_mistake_is_reported() {
    add_mia
    sed -i "s/'2h'/'two'/" /etc/config/utm_appd
    usage_of 42 >$saved
    start_and_settle
    told "daemon.err: the household was not applied" || check "it is reported" yes no
    grep -q "daemon.err: .*people\[0\].limit" /test/transcript || check "with its place" yes no
    check "to restore" 42 "$(used_in $pending)"
    sed -i "s/'two'/'2h'/" /etc/config/utm_appd
    $init reload
    check "reload" 0 $?
    check "limit" 120 "$(limit_of 3)"
    check "used" 42 "$(used_today)"
}

a_household_by_hand_comes_before_the_sections() {
    add_mia
    echo '{"people":[{"number":4,"name":"Tom","limit":"1h"}]}' >$household
    start_and_settle
    check "limits" " 60" "$(limit_of 3) $(limit_of 4)"
    check_transcript_without_words <<END
$came_up
utm_appd daemon.warning: $household was written by hand, and is used instead of $by_sections
utm_appctl --timeout 60 apply $household: 0
END
}

a_household_may_be_anywhere() {
    configure household /etc/utm_appd/ours.json
    echo '{"people":[{"number":4,"name":"Tom","limit":"1h"}]}' >/etc/utm_appd/ours.json
    start_and_settle
    check "limit" 60 "$(limit_of 4)"
    check "the clients find it" /etc/utm_appd/ours.json "$(readlink $household)"
    check_transcript_without_words <<END
$came_up
utm_appctl --timeout 60 apply /etc/utm_appd/ours.json: 0
END
}

a_torn_file_does_not_keep_a_household_from_its_usage() {
    add_mia
    usage_of 42 >$saved
    mkdir -m 0700 /tmp/ApplicationData
    usage_of 99 | cut -c 1-20 >$usage
    start_and_settle
    check "used" 42 "$(used_today)"
    check "limit" 120 "$(limit_of 3)"
}

# The daemon goes by the virtual clock, and so does everything else that asks for the time.
what_was_used_comes_back_when_a_router_that_booted_in_1970_learns_the_time() {
    start_clock_at '2026-03-04 11:00'
    add_mia
    usage_of 42 >$saved
    cp $saved /tmp/before
    put 0 "$(local_time '1970-01-05 12:00')"
    cat >/tmp/sim/scenario <<'END'
date 1970-01-05
person mia 3 Mia
device tablet mia 02:00:00:00:00:1A Mia's tablet
app video 305 video
use tablet video 12:05 12:15
END
    $init start
    until_true 10 told "waiting for the time" || check "the watch waits" yes no
    before=$(daemon_pids)
    check "limit" 120 "$(limit_of 3)"
    until_true 10 asleep
    pass 30
    check "used in 1970" 10 "$(used_today)"
    $init restore
    check "too early" 1 $?
    $init save
    check "saved" "$(cat /tmp/before)" "$(cat $saved)"
    check_transcript_without_words <<END
$came_up
$(apply_line): 0
utm_appd daemon.warning: what was used before the start is from the future: waiting for the time
utm_appd daemon.warning: not restored yet: waiting for the time
utm_appd daemon.warning: not restored yet: saving what was used before the start
$was_saved
END
    put 0 "$(local_time '2026-03-04 12:40')"
    until_true 60 told "restored what was used" || check "restored" yes no
    until_true 10 watch_waits
    check "another daemon" 1 "$(daemon_pids | grep -cvx "$before")"
    check "used" 42 "$(used_today)"
    check_transcript_without_words <<END
utm_appd daemon.notice: the time is known: starting again, with what was used
$ended
$came_up
$(apply_line --restore $pending): 0
utm_appd daemon.notice: restored what was used
END
}

a_daemon_that_ends_while_the_time_is_not_known_is_missed() {
    start_clock_at '2026-03-04 11:00'
    add_mia
    usage_of 42 >$saved
    put 0 "$(local_time '1970-01-05 12:00')"
    $init start
    until_true 10 told "waiting for the time"
    kill -KILL "$(daemon_pids)"
    until_true 2 told "utm_appd is gone" || check "it is noticed" yes no
    until_true 10 daemon_runs || check "another one" yes no
}

# The saved file is worth more than what has been counted since the boot, and is there once more.
a_stop_before_the_time_is_known_loses_nothing_that_was_saved() {
    start_clock_at '2026-03-04 11:00'
    add_mia
    usage_of 42 >$saved
    cp $saved /test/before
    put 0 "$(local_time '1970-01-05 12:00')"
    $init start
    until_true 10 told "waiting for the time"
    $init stop
    check_gone
    check "saved" "$(cat /test/before)" "$(cat $saved)"
    stop_clock
    clear_memory
    start_clock_at '2026-03-04 13:00'
    $init boot
    until_true 10 told "restored what was used"
    check "used" 42 "$(used_today)"
}

a_socket_that_cannot_be_bound_is_reported() {
    mkdir -p /dev/utm_app_config_socket/taken
    $init start &
    until_true 10 told "status 1"
    kill -KILL "$(cat /test/procd.pid)"
    sed -i '/^procd: [crst]/d' /test/transcript
    echo "procd: the instance has ended with status 1" >>/test/transcript
    check "none" "" "$(daemon_pids)"
    sort -u /test/transcript >/test/sorted
    mv /test/sorted /test/transcript
    rm -rf /dev/utm_app_config_socket
    kill $! 2>/dev/null
    check_transcript <<END
procd: the instance has ended with status 1
utm_appd daemon.err: utm_appd did not start: its socket could not be bound
END
}

a_stop_when_nothing_runs_does_nothing() {
    $init stop
    check "status" 0 $?
    check_transcript </dev/null
}

a_second_start_and_a_reload_change_nothing() {
    start_and_settle
    before=$(daemon_pids)
    transcript >/dev/null
    $init start
    $init reload
    check "the same daemon" "$before" "$(daemon_pids)"
    check_transcript <<END
$(echo "$started" | sed '$d')
procd: unchanged, left alone
END
    utm_appd_watch run &
    until_true 10 told "watching it"
    check "the same daemon" "$before" "$(daemon_pids)"
    check_transcript <<END
utm_appd daemon.warning: utm_appd runs already: watching it
END
}

# A user's namespace knows no group but the user's own.
a_group_fences_the_socket() {
    group=100
    : >/tmp/of_a_group
    chgrp $group /tmp/of_a_group 2>/dev/null || group=0
    configure group $group
    start_and_settle
    check "who may" "srw-rw---- 0 $group" "$(mode_of_socket)"
    check_transcript <<END
$started
END
    configure
    $init reload
    check "who may after a reload" "srw------- 0 $group" "$(mode_of_socket)"
    check_transcript </dev/null
}

a_group_that_does_not_exist_lets_nobody_in() {
    configure group nobodys
    start_and_settle
    check "who may" "srw------- 0 0" "$(mode_of_socket)"
    check_transcript_without_procd <<END
utm_appd daemon.err: cannot let group nobodys use /dev/utm_app_config_socket: only root may
$came_up
END
}

a_time_that_is_no_number_keeps_nobody_from_stopping() {
    configure stop_seconds 60s
    start_and_settle
    transcript >/dev/null
    $init stop
    check_gone
    check_transcript <<END
utm_appd daemon.warning: stop_seconds is no number: taking 60
$limits_are_off
$ended
END
}

a_link_at_the_copy_to_be_is_not_followed() {
    switch_on_at_the_start
    usage_of 42 >$saved
    lay link $usage.new 0
    start_and_settle
    check "victim" before "$(cat $victim)"
    check "used" 42 "$(used_today)"
    check "file" "regular file" "$(stat -c %F $usage)"
    check_transcript <<END
$started
$switched_on
$restored
END
}

only_a_file_of_root_s_own_is_taken_for_the_usage_file() {
    for laid in "fifo 0" "link 0" "dangling 0" "folder 0" "file 65534"; do
        fresh_router
        switch_on_at_the_start
        usage_of 42 >$saved
        lay "${laid% *}" $usage "${laid#* }" || continue
        start_and_settle
        check "$laid: victim" before "$(cat $victim* 2>&1)"
        check "$laid: used" 42 "$(used_today)"
        check "$laid: file" "regular file" "$(stat -c %F $usage)"
        check "$laid: aside" $usage.aside.X/app_usage.json "$(moved_aside $usage)"
        check_transcript_without_procd <<END
utm_appd daemon.warning: $usage $not_root_s $usage.aside.X
$came_up
$switched_on
$restored
END
        $init stop
    done
}

# The usage file's and the log's.
a_folder_that_is_not_root_s_own_makes_way() {
    for laid in "fifo 0" "file 0" "folder 65534" "link 65534" "dangling 65534"; do
        fresh_router
        switch_on_at_the_start
        usage_of 42 >$saved
        lay "${laid% *}" /tmp/ApplicationData "${laid#* }" || continue
        lay "${laid% *}" /tmp/utm_log "${laid#* }"
        start_and_settle
        check "$laid: victim" before "$(cat $victim* 2>&1)"
        check "$laid: used" 42 "$(used_today)"
        check "$laid: whose" "drwx------ drwx------" "$(modes_of_folders)"
        check "$laid: aside" "/tmp/ApplicationData.aside.X/ApplicationData
/tmp/utm_log.aside.X/utm_log" "$(moved_aside /tmp/ApplicationData; moved_aside /tmp/utm_log)"
        check_transcript_without_procd <<END
utm_appd daemon.warning: /tmp/ApplicationData $not_root_s /tmp/ApplicationData.aside.X
utm_appd daemon.warning: /tmp/utm_log $not_root_s /tmp/utm_log.aside.X
$came_up
$switched_on
$restored
END
        $init stop
    done
}

a_link_of_a_stranger_s_makes_way_and_what_it_leads_to_stays_as_it_is() {
    for target in /tmp/open /etc; do
        fresh_router
        switch_on_at_the_start
        usage_of 42 >$saved
        mkdir -m 1777 /tmp/open
        mode=$(stat -c %A $target)
        lay $target /tmp/ApplicationData 65534 || continue
        lay $target /tmp/utm_log 65534
        start_and_settle
        check "$target: mode" "$mode" "$(stat -c %A $target)"
        check "$target: used" 42 "$(used_today)"
        check "$target: whose" "drwx------ drwx------" "$(modes_of_folders)"
        for name in ApplicationData utm_log; do
            check "$target: aside" $target "$(readlink /tmp/$name.aside.*/$name)"
        done
        check_transcript_without_procd <<END
utm_appd daemon.warning: /tmp/ApplicationData $not_root_s /tmp/ApplicationData.aside.X
utm_appd daemon.warning: /tmp/utm_log $not_root_s /tmp/utm_log.aside.X
$came_up
$switched_on
$restored
END
        $init stop
    done
}

a_folder_in_the_new_usage_file_s_place_makes_way() {
    for name in .utm_appd.new .utm_appd.new2; do
        mkdir -p /tmp/ApplicationData/$name/full
    done
    chmod 0777 /tmp/ApplicationData
    start_and_settle
    ask activate on
    $init save
    check "exported" $usage "$(ls $usage 2>&1)"
    new=/tmp/ApplicationData/.utm_appd.new
    check "aside" "$new.aside.X/.utm_appd.new/full
${new}2.aside.X/.utm_appd.new2/full" \
        "$(find /tmp/ApplicationData -name full | sed 's/aside\.[^/]*/aside.X/' | sort)"
    check_transcript_without_procd <<END
utm_appd daemon.warning: others could write to /tmp/ApplicationData: not any more
utm_appd daemon.warning: $new $not_root_s $new.aside.X
utm_appd daemon.warning: ${new}2 $not_root_s ${new}2.aside.X
$came_up
$exported
$was_saved
END
}

# Whoever waits there must not keep the watch from starting.
a_run_folder_that_is_not_root_s_own_is_not_read() {
    for owner in 0 65534; do
        fresh_router
        lay folder /var/run/utm_appd $owner || continue
        chmod 0777 /var/run/utm_appd
        mkfifo /var/run/utm_appd/lock
        start_and_settle
        if [ -p /var/run/utm_appd/lock ]; then
            check "$owner: the watch starts" yes no
            return # a stop would wait as well
        fi
        if [ $owner = 0 ]; then
            laid=/var/run/utm_appd/lock
            echo "utm_appd daemon.warning: others could write to /var/run/utm_appd: not any more"
        else
            laid=/var/run/utm_appd
        fi >/tmp/closed
        check_transcript_without_procd <<END
$(cat /tmp/closed; echo "utm_appd daemon.warning: $laid $not_root_s $laid.aside.X")
$came_up
END
        $init stop
    done
}

without_a_run_folder_of_root_s_own_nothing_starts() {
    mkdir -m 0777 /tmp/open
    ln -s /tmp/open /var/run/utm_appd
    timeout 10 utm_appd_watch run
    check "status" 1 $?
    check "files" "" "$(ls -A /tmp/open)"
    check_gone
    check_transcript <<END
utm_appd daemon.err: /var/run/utm_appd does not lead to a folder that only root may write: not used
END
}

a_fifo_in_the_saved_file_s_place_keeps_nobody_from_saving() {
    switch_on_at_the_start
    start_and_settle
    transcript >/dev/null
    mkfifo $saved
    $init save &
    until_true 10 told "saved what was used" || check "saves" yes no
    check "file" "regular file" "$(stat -c %F $saved)"
    check_transcript <<END
$exported
$was_saved
END
}

a_folder_of_root_s_that_others_could_write_is_closed_to_them() {
    switch_on_at_the_start
    usage_of 42 >$saved
    lay link $usage 0
    lay link /tmp/utm_log/utm_app_log 0
    chmod 0777 /tmp/ApplicationData /tmp/utm_log
    start_and_settle
    ask debug on
    ask profile add 4
    check "victim" before "$(cat $victim)"
    check "used" 42 "$(used_today)"
    check "whose" "drwxr-xr-x drwxr-xr-x" "$(modes_of_folders)"
    check "log" "Create profile 4 success" "$(grep Create /tmp/utm_log/utm_app_log)"
    check_transcript_without_procd <<END
utm_appd daemon.warning: others could write to /tmp/ApplicationData: not any more
utm_appd daemon.warning: $usage $not_root_s $usage.aside.X
utm_appd daemon.warning: others could write to /tmp/utm_log: not any more
utm_appd daemon.warning: /tmp/utm_log/utm_app_log $not_root_s /tmp/utm_log/utm_app_log.aside.X
$came_up
$switched_on
$restored
END
}

a_link_of_root_s_own_to_flash_is_used() {
    for target in ../etc/utm_appd/flash /etc/utm_appd/flash//; do
        fresh_router
        switch_on_at_the_start
        usage_of 42 >$saved
        mkdir -m 0755 /etc/utm_appd/flash
        ln -s $target /tmp/ApplicationData
        start_and_settle
        check "$target: used" 42 "$(used_today)"
        check "$target: file" 42 "$(used_in /etc/utm_appd/flash/app_usage.json)"
        check_transcript_without_procd <<END
$came_up
$switched_on
$restored
END
        $init stop
    done
}

# Neither is it with a slash at its end, which would hide the second link.
a_link_of_root_s_own_by_way_of_a_stranger_s_is_not_used() {
    for target in /tmp/hop /tmp/hop/ ../tmp/hop//; do
        fresh_router
        switch_on_at_the_start
        usage_of 42 >$saved
        mkdir -m 0755 /etc/utm_appd/flash
        lay /etc/utm_appd/flash /tmp/hop 65534 || continue
        ln -s $target /tmp/ApplicationData
        start_and_settle
        check "$target: brought back" "" "$(grep -lr '"daily_used":42' /etc/utm_appd/flash)"
        check_transcript_without_procd <<END
utm_appd daemon.err: /tmp/ApplicationData does not lead to a folder that only root may write: not used
$came_up
$switched_on
END
        $init stop
    done
}

# It is not for the package to close what root has opened elsewhere, nor to undo root's own link.
a_link_of_root_s_own_to_where_others_may_write_is_left_alone() {
    switch_on_at_the_start
    usage_of 42 >$saved
    mkdir -m 0777 /etc/utm_appd/open
    ln -s /etc/utm_appd/open /tmp/ApplicationData
    start_and_settle
    check "brought back" "" "$(grep -lr '"daily_used":42' /etc/utm_appd/open)"
    check_transcript_without_procd <<END
utm_appd daemon.err: /tmp/ApplicationData does not lead to a folder that only root may write: not used
$came_up
$switched_on
END
}

rpcd_s_clients_look_and_change() {
    $init start
    until_true 10 told started
    check "methods" "$(utm_appctl rpcd list)" "$(env -i /usr/libexec/rpcd/utm_appd list </dev/null)"
    check "limits" '{"active":false,"debug":false}
status 0' "$(rpcd_asks status '{}')"
    ask profile add 3
    check "time" '{"done":true}
status 0' "$(rpcd_asks extend '{"person":3,"minutes":"1h30m","ubus_rpc_session":"0"}')"
    check "it was given" "90 (1h30m)" "$(ask extend show 3)"
    # shellcheck disable=SC2016 # it is meant to stay as it is
    check "what a shell would run" "status 2" \
        "$(rpcd_asks usage '{"person":"3;touch /tmp/x`touch /tmp/x`$(touch /tmp/x)"}' |
            grep -v '^{"error":".*"}$')"
    check "nothing was run" "" "$(find /tmp/x 2>/dev/null)"
    $init stop
    check "no daemon" "status 3" "$(rpcd_asks status '{}' | grep -v '^{"error":".*"}$')"
}

rpcd_hears_of_its_object() {
    postinst=/test/postinst
    check "not while the firmware is built" "" "$(IPKG_INSTROOT=/firmware sh $postinst; echo $? |
        grep -v 0)"
    check "nor without rpcd" 0 "$(sh $postinst; echo $?)"
    printf '#!/bin/sh\necho "rpcd: $*"\n' >/etc/init.d/rpcd
    chmod +x /etc/init.d/rpcd
    check "not while the firmware is built, with rpcd" 0 "$(IPKG_INSTROOT=/firmware sh $postinst
        echo $?)"
    check "with rpcd" "rpcd: reload" "$(sh $postinst)"
    rm /etc/init.d/rpcd
}

the_feed_s_own_test_passes() {
    find /tmp /dev -maxdepth 1 >/tmp/sim/before
    check "client" "utm_appctl $VERSION
status 0" "$(feed_test utm_appctl "$VERSION")"
    check "with the package's revision" "utm_appctl $VERSION
status 0" "$(feed_test utm_appctl "$VERSION-r12")"
    check "monitor" "utm_appctl $VERSION
utm_up 0
status 0" "$(feed_test utm_appctl-monitor "$VERSION")"
    mv /usr/libexec/utm_appctl_monitor /tmp/sim/
    check "without it" "utm_appctl $VERSION
utm_appctl-monitor: the client does not find it
status 1" "$(feed_test utm_appctl-monitor "$VERSION")"
    mv /tmp/sim/utm_appctl_monitor /usr/libexec/
    check "library" "status 0" "$(feed_test libqvutm-notify-none "$VERSION")"
    check "daemon" "utm_appd $VERSION
limits     off
status 0" "$(feed_test utm_appd "$VERSION")"
    check "what it leaves" "" "$(find /tmp /dev -maxdepth 1 | diff /tmp/sim/before -)"
    check_gone
}

the_feed_s_own_test_fails() {
    find /tmp /dev -maxdepth 1 >/tmp/sim/before
    for program in utm_appctl utm_appd; do
        check "$program of another version" \
            "$program: $program --version says \"$program $VERSION\", not \"$program 9.9.9\"
status 1" "$(feed_test $program 9.9.9)"
    done
    check "another package" "other: no such package
status 1" "$(feed_test other "$VERSION")"
    # As if the daemon were deaf.
    cat >/test/bin/utm_appctl.mute <<'END'
#!/bin/sh
exit 3
END
    chmod +x /test/bin/utm_appctl.mute
    mv /test/bin/utm_appctl /test/bin/utm_appctl.kept
    mv /test/bin/utm_appctl.mute /test/bin/utm_appctl
    check "a daemon that does not answer" "utm_appd $VERSION
utm_appd: it does not answer
status 1" "$(feed_test utm_appd "$VERSION")"
    mv /test/bin/utm_appctl.kept /test/bin/utm_appctl
    check "what it leaves" "" "$(find /tmp /dev -maxdepth 1 | diff /tmp/sim/before -)"
    check_gone
    utm_appd
    check "a daemon that runs" "utm_appd: a daemon runs already
status 1" "$(feed_test utm_appd "$VERSION")"
    check "it still answers" 0 "$(utm_appctl ping >/dev/null; echo $?)"
    while daemon=$(daemon_pids) && [ -n "$daemon" ]; do
        kill -INT "$daemon"
        usleep 100000
    done
}

# All of them, or the second of every three for "2/3".
case ${1-1/1} in
*/*)
    part=${1-1/1}
    # shellcheck disable=SC2046 # names
    set -- $(sed -n '/^# --- the cases/,$s/^\([a-z0-9_]*\)() {.*/\1/p' "$0" |
        awk -v part="${part%/*}" -v parts="${part#*/}" 'NR % parts == part % parts')
    ;;
esac
[ $# != 0 ] || failures=1
for name in "$@"; do
    case_of "$name"
done
[ "$failures" = 0 ]
