Who used nothing has an empty chart.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ utm_appctl usage 3 --history=weeks
  3 weeks ago  0  0m
  2 weeks ago  0  0m
  last week    0  0m
  this week    0  0m
  $ utm_appctl usage 3 --history=weeks --apps
  3 weeks ago  0  0m
  2 weeks ago  0  0m
  last week    0  0m
  this week    0  0m
  $ utm_appctl usage 3 --history=weeks --json
  {"profile":3,"person":null,"unit":"week","minutes":[0,0,0,0],"applications":[]}

Two hours on Tuesday, nothing on Wednesday, 45 minutes on Thursday: thirty days and today are a
chart that ends with today.

  $ use 120 305=90 306=30
  $ sleep_over
  $ sleep_over
  $ use 45 305=45
  $ utm_appctl usage 3 --history | tee /tmp/chart
  Tue  4 Dec    0   0m
  Wed  5 Dec    0   0m
  Thu  6 Dec    0   0m
  Fri  7 Dec    0   0m
  Sat  8 Dec    0   0m
  Sun  9 Dec    0   0m
  Mon 10 Dec    0   0m
  Tue 11 Dec    0   0m
  Wed 12 Dec    0   0m
  Thu 13 Dec    0   0m
  Fri 14 Dec    0   0m
  Sat 15 Dec    0   0m
  Sun 16 Dec    0   0m
  Mon 17 Dec    0   0m
  Tue 18 Dec    0   0m
  Wed 19 Dec    0   0m
  Thu 20 Dec    0   0m
  Fri 21 Dec    0   0m
  Sat 22 Dec    0   0m
  Sun 23 Dec    0   0m
  Mon 24 Dec    0   0m
  Tue 25 Dec    0   0m
  Wed 26 Dec    0   0m
  Thu 27 Dec    0   0m
  Fri 28 Dec    0   0m
  Sat 29 Dec    0   0m
  Sun 30 Dec    0   0m
  Mon 31 Dec    0   0m
  Tue  1 Jan  120   2h  ##########################################################
  Wed  2 Jan    0   0m
  Thu  3 Jan   45  45m  ######################

There are several ways to ask for it.

  $ utm_appctl usage 3 --history days | cmp - /tmp/chart
  $ utm_appctl usage --history days 3 | cmp - /tmp/chart
  $ utm_appctl usage --history=days 3 | cmp - /tmp/chart
  $ utm_appctl usage --history --days 3 | cmp - /tmp/chart

A locale of UTF-8 gets eighths of a block: they are shown here as digits.

  $ eighths() { sed 's/█/8/g; s/▉/7/g; s/▊/6/g; s/▋/5/g; s/▌/4/g; s/▍/3/g; s/▎/2/g; s/▏/1/g'; }
  $ LC_ALL=C.UTF-8 utm_appctl usage 3 --history | eighths | tail -n 3
  Tue  1 Jan  120   2h  8888888888888888888888888888888888888888888888888888888888
  Wed  2 Jan    0   0m
  Thu  3 Jan   45  45m  8888888888888888888886
  $ LC_ALL=C.UTF-8 utm_appctl usage 3 --history | sed -n 1,28p >/tmp/december
  $ head -n 28 /tmp/chart | cmp - /tmp/december
  $ LC_ALL=C.UTF-8 utm_appctl usage 3 --history --ascii | cmp - /tmp/chart

A pipe is as wide as COLUMNS says, within bounds, or 80 columns wide.

  $ for columns in 50 20 500 -5 0 wide ''; do
  >   COLUMNS=$columns utm_appctl usage 3 --history | tail -n 3 | head -n 1
  > done
  Tue  1 Jan  120   2h  ############################
  Tue  1 Jan  120   2h  ##########
  Tue  1 Jan  120   2h  ####################################################################################################
  Tue  1 Jan  120   2h  ##########################################################
  Tue  1 Jan  120   2h  ##########################################################
  Tue  1 Jan  120   2h  ##########################################################
  Tue  1 Jan  120   2h  ##########################################################
  $ (unset COLUMNS; utm_appctl usage 3 --history) | cmp - /tmp/chart

Applications have charts of their own. December is left out here: nothing was used in it.

  $ echo '306 chat' >/tmp/apps
  $ utm_appctl usage 3 --history --apps --names /tmp/apps >/tmp/charts
  $ sed '/ Dec /d' /tmp/charts
  chat
  Tue  1 Jan  30  30m  ###########################################################
  Wed  2 Jan   0   0m
  Thu  3 Jan   0   0m
  
  305
  Tue  1 Jan  90  1h30m  #########################################################
  Wed  2 Jan   0     0m
  Thu  3 Jan  45    45m  #############################
  $ grep ' Dec ' /tmp/charts | cut -c1-10 >/tmp/days
  $ { cut -c1-10 /tmp/december; cut -c1-10 /tmp/december; } | cmp - /tmp/days
  $ grep ' Dec ' /tmp/charts | cut -c11- | uniq -c
       28    0   0m
       28    0     0m

The document has the newest day last.

  $ utm_appctl usage 3 --history -j
  {"profile":3,"person":null,"unit":"day","minutes":[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,120,0,45],"applications":[{"app":306,"name":null,"minutes":[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,30,0,0]},{"app":305,"name":null,"minutes":[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,90,0,45]}]}

Four weeks are a chart that ends with this one.

  $ utm_appctl usage 3 --history weeks | tee /tmp/chart
  3 weeks ago    0     0m
  2 weeks ago    0     0m
  last week      0     0m
  this week    165  2h45m  #######################################################
  $ utm_appctl usage 3 --history=weeks | cmp - /tmp/chart
  $ utm_appctl usage 3 --history --weeks | cmp - /tmp/chart
  $ utm_appctl usage --weeks 3 --history | cmp - /tmp/chart
  $ utm_appctl usage 3 --weeks
  utm_appctl: --weeks needs --history
  For example: utm_appctl usage mia --history --weeks
  [2]
  $ utm_appctl usage 3 --days --apps
  utm_appctl: --days needs --history
  For example: utm_appctl usage mia --history --days
  [2]
  $ utm_appctl usage 3 --history --days --weeks
  utm_appctl: --days and --weeks cannot be combined
  Give one of them
  [2]

A week that is over moves up. This is a Monday.

  $ for day in Friday Saturday Sunday Monday; do sleep_over; done
  $ clock
  Mon 2030-01-07 12:08:00 CET
  $ use 15 306=15
  $ utm_appctl usage 3 --history=weeks --json
  {"profile":3,"person":null,"unit":"week","minutes":[0,0,165,15],"applications":[{"app":306,"name":null,"minutes":[0,0,30,15]},{"app":305,"name":null,"minutes":[0,0,135,0]}]}

Days and weeks are all the units. The daemon is not asked for others.

  $ utm_appctl debug on
  $ for unit in day months 4 ''; do
  >   utm_appctl usage 3 --history="$unit" || echo "status $?"
  > done
  utm_appctl: "day" is not valid for --history: give days or weeks
  status 2
  utm_appctl: "months" is not valid for --history: give days or weeks
  status 2
  utm_appctl: "4" is not valid for --history: give days or weeks
  status 2
  utm_appctl: "" is not valid for --history: give days or weeks
  status 2
  $ log

A unit stands right behind its option; elsewhere it is one operand too many.

  $ utm_appctl usage 3 4 2>/tmp/too_many
  [2]
  $ head -n 3 /tmp/too_many
  utm_appctl: "usage" has too many operands
  Usage: utm_appctl usage [ID]; see utm_appctl usage --help
  $ too_many() {
  >   utm_appctl usage "$@" 2>/tmp/messages && echo accepted
  >   echo "$?"
  >   cmp /tmp/messages /tmp/too_many
  > }
  $ too_many 3 --history month
  2
  $ too_many 3 weeks
  2
  $ too_many 3 weeks --history
  2
  $ too_many 3 --history -j weeks
  {"error":"\"usage\" has too many operands. Usage: utm_appctl usage [ID]; see utm_appctl usage --help"}
  2
  $ too_many 3 --history=days weeks
  2
  $ too_many 3 --history days weeks
  2
