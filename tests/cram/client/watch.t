A watch tells what changes for the people of the household file. It says nothing of how things are
when it begins: limits are off.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ household
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ begin_watch
  $ utm_appctl activate on
  $ told 2
  2030-01-01 12:00:00  limits are on
  2030-01-01 12:00:00  games is blocked for Mia

An application's limit is used up; then fifteen and five minutes of the day are left, and none.

  $ use 45 305=45
  $ told 1
  2030-01-01 12:01:00  video is blocked for Mia
  $ use 59
  $ use 1
  $ told 1
  2030-01-01 12:03:00  Mia has 15m left
  $ use 10
  $ told 1
  2030-01-01 12:04:00  Mia has 5m left
  $ use 5
  $ told 1
  2030-01-01 12:05:00  Mia is cut off: 2h used

Half an hour more, and the countdown begins again.

  $ utm_appctl extend add 3 30m
  $ told 1
  2030-01-01 12:05:00  Mia is let in again: 30m left
  $ use 26
  $ told 1
  2030-01-01 12:06:00  Mia has 4m left
  $ utm_appctl limit disable 3
  $ use 100
  $ utm_appctl limit enable 3
  $ told 1
  2030-01-01 12:07:00  Mia is cut off: 4h06m used

A new day begins, and what the old one blocked is released.

  $ sleep_over
  $ told 3
  2030-01-02 12:08:00  a new day begins
  2030-01-02 12:08:00  Mia is let in again: 2h left
  2030-01-02 12:08:00  video is released for Mia

The daemon goes, and comes back without anybody, and with limits off. A front end sets it up again.

  $ daemon stop
  $ told 1
  2030-01-02 12:08:00  the daemon does not answer
  $ daemon start
  $ told 3
  2030-01-02 12:08:00  the daemon answers
  2030-01-02 12:08:00  limits are off
  2030-01-02 12:08:00  games is released for Mia
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3 && utm_appctl activate on
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ told 2
  2030-01-02 12:08:00  limits are on
  2030-01-02 12:08:00  games is blocked for Mia

The household file is read again when it changes. One with a mistake changes nothing.

  $ sed -i 's/Mia/Amelia/' "$UTM_APPCTL_HOUSEHOLD"
  $ sed -i 's/"blocked"/"45m"/' "$UTM_APPCTL_HOUSEHOLD"
  $ told 1
  2030-01-02 12:08:00  games is released for Amelia
  $ cp "$UTM_APPCTL_HOUSEHOLD" good && echo '{ "people": 7 }' >"$UTM_APPCTL_HOUSEHOLD"
  $ use 105
  $ told 1
  2030-01-02 12:09:00  Amelia has 15m left
  $ sed 's/3, "name": "Amelia"/4, "name": "Ben"/' good >"$UTM_APPCTL_HOUSEHOLD"
  $ told 2
  2030-01-02 12:09:00  Ben is in the household file now
  2030-01-02 12:09:00  Amelia is no longer in the household file
  $ rm "$UTM_APPCTL_HOUSEHOLD"
  $ utm_appctl activate off
  $ told 1
  2030-01-02 12:09:00  limits are off
  $ end_watch
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  utm_appctl: /tmp/household.json: people: has to be a list in brackets, not a number

It ends like that by each of the usual signals, also while it waits for a daemon that is busy, and
ends when nobody reads what it tells.

  $ cp good "$UTM_APPCTL_HOUSEHOLD"
  $ begins() { grep -qs 'SigCgt:.*[4-7c-f]...$' /proc/$1/status; }
  $ end_by() {
  >   occupy
  >   env --default-signal=INT utm_appctl watch & watcher=$!
  >   until begins $watcher; do sleep 0.01; done
  >   kill -s $1 $watcher
  >   wait $watcher && echo ended
  >   release
  > }
  $ end_by HUP
  ended
  $ end_by INT
  ended
  $ end_by TERM
  ended
  $ mkfifo pipe
  $ (exec 3<>pipe 4>pipe 3<&- && utm_appctl watch --all >&4)
  [141]

A daemon that hangs is one that does not answer. Why is said once.

  $ occupy
  $ start_watch -t 1
  $ await_told 1
  2030-01-02 12:09:00  the daemon does not answer
  $ kill -s USR1 $watcher
  $ release
  $ told 1
  2030-01-02 12:09:00  the daemon answers
  $ end_watch
  utm_appctl: the daemon did not answer within 1 s: it may be waiting for one of the router's programs; try again, or wait longer with -t

It needs no household file. With --all it tells everything that is.

  $ rm "$UTM_APPCTL_HOUSEHOLD"
  $ start_watch --all
  $ await_told 2
  2030-01-02 12:09:00  the daemon answers
  2030-01-02 12:09:00  limits are off
  $ household
  $ told 5
  2030-01-02 12:09:00  Mia is in the household file now
  2030-01-02 12:09:00  Mia is let in again
  2030-01-02 12:09:00  video is released for Mia
  2030-01-02 12:09:00  games is released for Mia
  2030-01-02 12:09:00  Mia has used 1h45m
  $ use 1
  $ told 1
  2030-01-02 12:10:00  Mia has used 1h46m
  $ echo '{}' >"$UTM_APPCTL_HOUSEHOLD"
  $ told 3
  2030-01-02 12:10:00  video has no rule for Mia
  2030-01-02 12:10:00  games has no rule for Mia
  2030-01-02 12:10:00  Mia is no longer in the household file
  $ end_watch INT

Programs read documents, a line each.

  $ household
  $ utm_appctl activate on
  $ start_watch --all --json
  $ await_told 7
  {"event":"back","time":1893582600,"text":"the daemon answers"}
  {"event":"limits-on","time":1893582600,"text":"limits are on"}
  {"event":"added","time":1893582600,"text":"Mia is in the household file now","profile":3,"name":"Mia","today":106,"enabled":true,"limit":120,"extend":0,"left":14,"cut_off":false}
  {"event":"let-in","time":1893582600,"text":"Mia is let in again: 14m left","profile":3,"name":"Mia","today":106,"enabled":true,"limit":120,"extend":0,"left":14,"cut_off":false}
  {"event":"released","time":1893582600,"text":"video is released for Mia","profile":3,"name":"Mia","today":106,"enabled":true,"limit":120,"extend":0,"left":14,"cut_off":false,"app":305,"app_name":"video","blocked":false}
  {"event":"blocked","time":1893582600,"text":"games is blocked for Mia","profile":3,"name":"Mia","today":106,"enabled":true,"limit":120,"extend":0,"left":14,"cut_off":false,"app":306,"app_name":"games","blocked":true}
  {"event":"used","time":1893582600,"text":"Mia has used 1h46m, 14m left","profile":3,"name":"Mia","today":106,"enabled":true,"limit":120,"extend":0,"left":14,"cut_off":false}
  $ end_watch

A file that was named has to be there, and a folder of programs too.

  $ utm_appctl watch --household none
  utm_appctl: cannot read the household from none: No such file or directory
  [2]
  $ utm_appctl watch --exec none
  utm_appctl: the programs in none are not run (No such file or directory)
  [2]
  $ utm_appctl watch -s ''
  utm_appctl: the socket path is empty: give it after -s
  [2]
