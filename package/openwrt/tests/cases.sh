#!/bin/sh
# The init script and the watch against the real daemon; package_test.sh lays out the root that
# this runs in. Each case begins on a router that has just been flashed, and compares the whole
# transcript: what procd was told, what the log says, what the client was asked, in that order.
set -u

usage=/tmp/ApplicationData/app_usage.json
saved=/etc/utm_appd/app_usage.json
victim=/etc/victim # a file that nobody but its owner may change
pending=/var/run/utm_appd/to_restore.json
waiting=/var/run/utm_appd/waiting
counted=/var/run/utm_appd/counted.json
init=/etc/init.d/utm_appd
failures=0

# --- the router

fresh_router() {
    clear_memory
    rm -rf /etc/utm_appd $victim* /test/transcript /test/after_export /test/stderr
    mkdir -p /etc/utm_appd
    : >/test/transcript
    configure
}

# What a reboot does to files.
clear_memory() {
    rm -rf /tmp/* /dev/utm_app_config_socket
    mkdir -p /tmp/run /tmp/sim
}

# configure [OPTION VALUE]...
configure() {
    echo "config utm_appd 'main'" >/etc/config/utm_appd
    while [ $# -gt 0 ]; do
        echo "	option $1 '$2'" >>/etc/config/utm_appd
        shift 2
    done
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
    chmod +x /test/bin/date
    export LD_PRELOAD=/test/libsimpreload.so UTM_SIM_CLOCK=$clock_page UTM_SIM_SLEEPER=1
}

stop_clock() {
    unset LD_PRELOAD UTM_SIM_CLOCK UTM_SIM_SLEEPER
    rm -f /test/bin/date
}

asleep() {
    [ "$(get 1)" = "$(get 2)" ] && [ $(($(get 3) & 0xffffffff)) != 0 ]
}

# pass MINUTES: until the daemon's work of the last one is done
pass() {
    put 1 $(($(get 1) + $1 * 60))
    until_true 60 asleep || check "the daemon sleeps" yes no
}

# What the watch goes by does not jump with the clock.
let_uptime_pass() {
    echo "$(($(cut -d . -f 1 /proc/uptime) + $1)).00 0.00" >/tmp/uptime
    mount -o bind /tmp/uptime /proc/uptime
}

# A household of one, by the simulated statistics service: ten minutes of video, ten of games.
people_use_the_network_in_1970() {
    cat >/tmp/sim/scenario <<END
date 1970-01-05
person mia 3 Mia
device tablet mia 02:00:00:00:00:1A Mia's tablet
app video 305 video
app games 412 games
use tablet video 12:05 12:15
use tablet games 12:15 12:25
END
}

# application ID TODAY WEEK MONTH NEXT RING: a record as the daemon writes it
application() {
    printf '{"app_id":%s,"daily_used":%s,"weekly_used":%s,"monthly_used":%s,' "$1" "$2" "$3" "$4"
    printf '"next_day_idx":%s,"prev_30_days":[%s]}' "$5" "$6"
}

# document TODAY VIDEO GAMES WRITTEN: what profile 3 has used, as the daemon writes it. GAMES is the
# record of another application, or empty.
document() {
    video=$(application 305 "$2" 6 7 4 "$(seq -s , 1 30)")
    printf '{"user_profile_list":[{"user_profile_id":3,"mon":1440,"tues":1440,"wed":1440,'
    printf '"thur":1440,"fri":1440,"sat":1440,"sun":1440,"daily_extend":0,"daily_used":%s,' "$1"
    printf '"weekly_used":100,"monthly_used":200,"blocked":0,'
    printf '"app_stat_list":[%s],' "${3:+$3,}$video"
    printf '"device_list":["02:00:00:00:00:1A"]}],"timestamp":%s,' "$4"
    printf '"global_stat":[%s]}\n' "$video${3:+,$3}"
}

games=$(application 412 10 0 0 0 "$(yes 0 | head -n 30 | tr '\n' , | sed 's/,$//')")

boot_in_1970() {
    configure activate 1
    document 42 5 "" "$(local_time '2026-03-04 11:00')" >$saved
    cp $saved /tmp/before
    people_use_the_network_in_1970
    start_clock_at '1970-01-05 12:00'
    start_and_settle
    ask profile add 3
    ask device add 3 02:00:00:00:00:1a
    ask interval set 1
    until_true 10 asleep
    pass 30
}

# The minute in which the clock is set closes the day in 1970, over whatever has been imported.
time_arrives() {
    put 0 "$(local_time "$1")"
    until_true 20 told "the time is known:" || check "the watch sees it" yes no
    pass 1
    let_uptime_pass 180
}

exported_now() {
    ask export /tmp/now
    sed "s/\"timestamp\":[0-9]*/\"timestamp\":T/" /tmp/now
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
    [ -z "$(daemon_pids)$(pidof utm_appd_watch)" ]
}

check_gone() {
    check "nothing runs" "" "$(daemon_pids)$(pidof utm_appd_watch)"
}

case_of() { # NAME: starts it
    bad=0
    fresh_router
    "$1"
    # What is left over, if the case went wrong.
    [ ! -e /test/procd.pid ] || kill -9 "$(cat /test/procd.pid)" 2>/dev/null
    rm -f /test/procd.pid
    stop_clock
    umount /proc/uptime 2>/dev/null
    for process in $(pidof utm_appd_watch) $(daemon_pids); do
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
procd: respawn 3600 10 0
procd: stderr 1
procd: term_timeout 140
$came_up"

switched_on="utm_appctl --timeout 20 activate on: 0"
asked_status="utm_appctl --timeout 20 status --json: 0"
restored="utm_appctl --timeout 20 import $pending: 0
utm_appd daemon.notice: restored what was used"
exported="utm_appctl --timeout 20 export $usage: 0"
was_saved="utm_appd daemon.notice: saved what was used to $saved"
ended="utm_appd daemon.notice: utm_appd has ended"

start_and_settle() {
    $init start
    check "start" 0 $?
    # What comes after the answer: a hook, switching on, restoring.
    until_true 10 watch_naps || check "the watch waits for the end" yes no
}

# Its child sleeps for as long as it does between two looks.
watch_naps() {
    for process in $(pidof sleep); do
        [ "$(tr '\0' ' ' <"/proc/$process/cmdline")" != "sleep 5 " ] || return 0
    done 2>/dev/null
    return 1
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

no_watch() {
    ! pidof utm_appd_watch >/dev/null
}

# --- the cases

a_fresh_start_creates_the_folder_and_waits_for_the_socket() {
    start_and_settle
    check "answers" 0 "$(ask ping; echo $?)"
    check "folder" "" "$(ls -A /tmp/ApplicationData)"
    check "whose" "drwx------ drwx------" "$(modes_of_folders)"
    check "one daemon" 1 "$(daemon_pids | wc -l)"
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
$asked_status
$exported
$was_saved
$asked_status
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
$asked_status
utm_appd daemon.info: limits are switched off: nothing to save
$ended
END
}

a_copy_that_is_not_wanted_is_neither_read_nor_written() {
    configure save 0 activate 1
    usage_of 42 >$saved
    start_and_settle
    check "to restore" "no" "$([ -e $pending ] || echo no)"
    ask profile add 3
    transcript >/dev/null
    $init stop
    check "saved" "42" "$(used_in $saved)"
    check_transcript <<END
$asked_status
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
$asked_status
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
$asked_status
$exported
$was_saved
utm_appd daemon.info: utm_appd has not ended yet: asking again every second
utm_appd daemon.err: utm_appd does not end: killing it; what it has blocked stays blocked
END
}

a_boot_brings_back_what_was_saved() {
    configure activate 1
    usage_of 42 >$saved
    start_and_settle
    check "used" 42 "$(used_today)"
    check "to restore" "no" "$([ -e $pending ] || echo no)"
    check_transcript <<END
$started
$switched_on
$asked_status
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
$asked_status
utm_appctl --timeout 20 import $pending: 1
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
$asked_status
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
$asked_status
utm_appd daemon.info: limits are switched off: nothing to save
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
$asked_status
$exported
utm_appd daemon.warning: what was used before the start has not been restored; keeping it as $saved.unrestored
$was_saved
$ended
END
}

# A folder whose place is taken by a file cannot be written, not even by root.
a_folder_that_cannot_be_written_keeps_nobody_from_stopping() {
    configure activate 1 folder /etc/utm_appd/taken
    touch /etc/utm_appd/taken
    start_and_settle
    transcript >/dev/null
    $init stop
    check_gone
    check_transcript <<END
$asked_status
$exported
utm_appd daemon.err: not saved: cannot write /etc/utm_appd/taken/app_usage.json
$ended
END
}

a_full_flash_leaves_the_old_copy() {
    configure activate 1
    mount -t tmpfs -o size=16k tmpfs /etc/utm_appd
    usage_of 42 >$saved
    start_and_settle
    dd if=/dev/urandom of=/etc/utm_appd/full bs=1024 count=64 2>/dev/null ||
        dd if=/proc/kallsyms of=/etc/utm_appd/full bs=1024 count=64 2>/dev/null
    transcript >/dev/null
    $init stop
    check_gone
    check "old" 42 "$(used_in $saved)"
    check "files" "$saved
/etc/utm_appd/full" "$(find /etc/utm_appd -type f | sort)"
    check_transcript <<END
$asked_status
$exported
utm_appd daemon.err: not saved: cannot write $saved
$ended
END
    umount /etc/utm_appd
}

a_crash_is_noticed_and_mended() {
    configure activate 1
    usage_of 42 >$saved
    start_and_settle
    killed=$(daemon_pids)
    transcript >/dev/null
    kill -KILL "$killed"
    until_true 20 told "restored what was used"
    check "used" 42 "$(used_today)"
    check "another" 1 "$(daemon_pids | grep -cvx "$killed")"
    check_transcript <<END
utm_appd daemon.err: utm_appd is gone; what it had blocked stays blocked until its limits come back
procd: the instance has ended with status 1
utm_appd daemon.notice: utm_appd has started
$switched_on
$asked_status
$restored
END
}

a_watch_that_was_killed_finds_the_daemon_again() {
    start_and_settle
    ask activate on
    before=$(daemon_pids)
    transcript >/dev/null
    kill -KILL "$(pidof utm_appd_watch)"
    until_true 10 told "watching it as it is"
    check "the same daemon" "$before" "$(daemon_pids)"
    $init stop
    check_gone
    check_transcript <<END
procd: the instance has ended with status 137
utm_appd daemon.warning: utm_appd runs already: watching it as it is
$asked_status
$exported
$was_saved
$ended
END
}

# As when procd itself ends the instance, or when the system goes down without the script.
sigterm_to_the_watch_is_a_stop() {
    configure activate 1
    start_and_settle
    transcript >/dev/null
    kill -KILL "$(cat /test/procd.pid)"
    kill -TERM "$(pidof utm_appd_watch)"
    until_true 10 told "has ended"
    until_true 10 no_watch
    check_gone
    check_transcript <<END
$asked_status
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
$asked_status
utm_appd daemon.info: limits are switched off: nothing to save
$ended
END
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
    told_again="$(echo "$started" | sed '$d')
procd: unchanged, left alone"
    check_transcript <<END
$told_again
$told_again
END
    utm_appd_watch run
    check "a second watch" 1 $?
    check "the same daemon" "$before" "$(daemon_pids)"
    check_transcript <<END
utm_appd daemon.err: already watched by process N
END
}

# A user's namespace knows no group but the user's own.
a_group_fences_the_socket() {
    group=100
    : >/tmp/of_a_group
    chgrp $group /tmp/of_a_group 2>/dev/null || group=0
    configure group $group
    start_and_settle
    check "who may" "srw-rw---- 0 $group" "$(stat -c '%A %u %g' /dev/utm_app_config_socket)"
    echo "$started" >/tmp/started
    check_transcript </tmp/started
}

a_time_that_is_no_number_keeps_nobody_from_stopping() {
    configure stop_seconds 60s
    start_and_settle
    transcript >/dev/null
    $init stop
    check_gone
    check_transcript <<END
utm_appd daemon.warning: stop_seconds is no number: taking 60
$asked_status
utm_appd daemon.info: limits are switched off: nothing to save
utm_appd daemon.warning: stop_seconds is no number: taking 60
$ended
END
}

a_link_at_the_copy_to_be_is_not_followed() {
    configure activate 1
    usage_of 42 >$saved
    lay link $usage.new 0
    start_and_settle
    check "victim" before "$(cat $victim)"
    check "used" 42 "$(used_today)"
    check "file" "regular file" "$(stat -c %F $usage)"
    check_transcript <<END
$started
$switched_on
$asked_status
$restored
END
}

only_a_file_of_root_s_own_is_taken_for_the_usage_file() {
    for laid in "fifo 0" "link 0" "dangling 0" "folder 0" "file 65534"; do
        fresh_router
        configure activate 1
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
$asked_status
$restored
END
        $init stop
    done
}

# The usage file's and the log's.
a_folder_that_is_not_root_s_own_makes_way() {
    for laid in "fifo 0" "file 0" "folder 65534" "link 65534" "dangling 65534"; do
        fresh_router
        configure activate 1
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
$asked_status
$restored
END
        $init stop
    done
}

a_link_of_a_stranger_s_makes_way_and_what_it_leads_to_stays_as_it_is() {
    for target in /tmp/open /etc; do
        fresh_router
        configure activate 1
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
$asked_status
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
$asked_status
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
        mkfifo /var/run/utm_appd/watch.pid
        start_and_settle
        if [ -p /var/run/utm_appd/watch.pid ]; then
            check "$owner: the watch starts" yes no
            return # a stop would wait as well
        fi
        check "$owner: the watch" "$(pidof utm_appd_watch)" "$(cat /var/run/utm_appd/watch.pid)"
        if [ $owner = 0 ]; then
            laid=/var/run/utm_appd/watch.pid
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
    configure activate 1
    start_and_settle
    transcript >/dev/null
    mkfifo $saved
    $init save &
    until_true 10 told "saved what was used" || check "saves" yes no
    check "file" "regular file" "$(stat -c %F $saved)"
    check_transcript <<END
$asked_status
$exported
$was_saved
END
}

a_folder_of_root_s_that_others_could_write_is_closed_to_them() {
    configure activate 1
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
$asked_status
$restored
END
}

a_link_of_root_s_own_to_flash_is_used() {
    for target in ../etc/utm_appd/flash /etc/utm_appd/flash//; do
        fresh_router
        configure activate 1
        usage_of 42 >$saved
        mkdir -m 0755 /etc/utm_appd/flash
        ln -s $target /tmp/ApplicationData
        start_and_settle
        check "$target: used" 42 "$(used_today)"
        check "$target: file" 42 "$(used_in /etc/utm_appd/flash/app_usage.json)"
        check_transcript_without_procd <<END
$came_up
$switched_on
$asked_status
$restored
END
        $init stop
    done
}

# Neither is it with a slash at its end, which would hide the second link.
a_link_of_root_s_own_by_way_of_a_stranger_s_is_not_used() {
    for target in /tmp/hop /tmp/hop/ ../tmp/hop//; do
        fresh_router
        configure activate 1
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
    configure activate 1
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

what_was_used_comes_back_when_a_router_that_booted_in_1970_learns_the_time() {
    boot_in_1970
    check "the daemon's file" '"daily_extend":0,"daily_used":20' \
        "$(grep -o '"daily_extend":0,"daily_used":[0-9]*' $usage)"
    $init restore
    check "too early" 1 $?
    $init save
    check "saved" "$(cat /tmp/before)" "$(cat $saved)"
    check_transcript_without_procd <<END
utm_appd daemon.warning: what was used before the start is from the future: waiting for the time
$came_up
$switched_on
utm_appd daemon.warning: not restored yet: waiting for the time
$asked_status
utm_appd daemon.warning: not restored yet: saving what was used before the start
$was_saved
END
    time_arrives '2026-03-04 12:40'
    until_true 20 told "restored what was used" || check "restored" yes no
    check "used" "$(document 62 15 "$games" T)" "$(exported_now)"
    check "files" "" "$(find /var/run/utm_appd -type f ! -name watch.pid)"
    check_transcript <<END
utm_appd daemon.notice: the time is known: restoring what was used in 180 seconds
utm_appctl --timeout 20 export $counted: 0
$asked_status
utm_appctl --timeout 20 import $pending: 0
utm_appctl --timeout 20 export $counted.now: 0
utm_appctl --timeout 20 import $counted.sum: 0
utm_appd daemon.notice: restored what was used
END
    $init save
    check "saved" "$(document 62 15 "$games" T | cut -c 1-500)" "$(cut -c 1-500 $saved)"
}

limits_that_are_off_when_the_time_arrives_leave_the_restoring_to_the_front_end() {
    boot_in_1970
    ask activate off
    time_arrives '2026-03-04 12:40'
    until_true 20 [ ! -e $waiting ] || check "the watch waits no longer" yes no
    transcript >/dev/null
    ask activate on
    $init restore
    check "used" "$(document 42 5 "" T)" "$(exported_now)"
    check_transcript <<END
$restored
END
}

a_watch_that_was_killed_goes_on_waiting_for_the_time() {
    boot_in_1970
    transcript >/dev/null
    kill -KILL "$(pidof utm_appd_watch)"
    until_true 10 told "watching it as it is" || check "another watch" yes no
    until_true 10 watch_naps
    time_arrives '2026-03-04 12:40'
    until_true 20 told "restored what was used" || check "restored" yes no
    check "used" "$(document 62 15 "$games" T)" "$(exported_now)"
}

# The saved file is worth more than what has been counted since the boot, and is there once more.
a_stop_before_the_time_is_known_loses_nothing_that_was_saved() {
    boot_in_1970
    $init stop
    check_gone
    check "saved" "$(cat /tmp/before)" "$(cat $saved)"
    stop_clock
    clear_memory
    start_clock_at '2026-03-04 13:00'
    transcript >/dev/null
    $init boot
    until_true 10 told "restored what was used"
    check "used" 42 "$(used_today)"
}

feed_test() {
    sh /test/test.sh "$@" 2>&1
    echo "status $?"
}

the_feed_s_own_test_passes() {
    find /tmp /dev -maxdepth 1 >/tmp/sim/before
    check "client" "utm_appctl $VERSION
status 0" "$(feed_test utm_appctl "$VERSION")"
    check "with the package's revision" "utm_appctl $VERSION
status 0" "$(feed_test utm_appctl "$VERSION-r12")"
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
    set -- $(sed -n '/^# --- the cases/,$s/^\([a-z_]*\)() {.*/\1/p' "$0" |
        awk -v part="${part%/*}" -v parts="${part#*/}" 'NR % parts == part % parts')
    ;;
esac
[ $# != 0 ] || failures=1
for name in "$@"; do
    case_of "$name"
done
[ "$failures" = 0 ]
