Numbers that no honest daemon sends are printed as they are. This server gives the same reply to
everything, with the largest number wherever a profile's figures stand.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ figures() {
  >   reply 0 16=$1 20=$1 24=$1 224=$1 228=$1 232=$1 280=$1 >answer
  > }
  $ figures 2147483647
  $ start_fake_server
  $ utm_appctl -s $fake usage 3
  today       2147483647   35791394h07m
  this week   4294967294   71582788h14m
  this month  6442450941  107374182h21m
  limit       2147483647   35791394h07m
  extend      2147483647   35791394h07m
  left        2147483647   35791394h07m
  $ utm_appctl -s $fake usage 3 -j
  {"profile":3,"person":null,"today":2147483647,"week":4294967294,"month":6442450941,"enabled":true,"limit":2147483647,"extend":2147483647,"left":2147483647}

The smallest ones.

  $ figures -2147483648
  $ utm_appctl -s $fake usage 3 -j
  {"profile":3,"person":null,"today":-2147483648,"week":-4294967296,"month":-6442450944,"enabled":true,"limit":-2147483648,"extend":-2147483648,"left":0}
  $ utm_appctl -s $fake limit show 3
  limit    -2147483648 (-35791394h08m)
  enabled  yes
  $ utm_appctl -s $fake extend show 3
  -2147483648 (-35791394h08m)
  $ utm_appctl -s $fake interval show
  -2147483648 (-35791394h08m)

Weekdays that do not exist have no name.

  $ { reply 2 264=99 268=2147483647; reply 2 264=-1 268=-2147483648; reply 0; } >answer
  $ utm_appctl -s $fake weekday show 3
  DAY      MINUTES           TIME
  ?     2147483647   35791394h07m
  ?    -2147483648  -35791394h08m
  $ utm_appctl -s $fake weekday show 3 -j
  {"profile":3,"person":null,"weekdays":[{"day":99,"name":"?","minutes":2147483647},{"day":-1,"name":"?","minutes":-2147483648}]}

Applications of any number add up.

  $ most() { reply 2 48=-2147483648 52=2147483647; }
  $ { most; most; reply 2; reply 0; } >answer
  $ utm_appctl -s $fake usage 3 --apps
  APPLICATION     MINUTES          TIME
  -2147483648  2147483647  35791394h07m
  -2147483648  2147483647  35791394h07m
  total        4294967294  71582788h14m

Bars are drawn for what was used alone.

  $ { reply 2 80=-1 84=2147483647 88=-2147483648 92=-1 96=1; reply 0; } >answer
  $ utm_appctl -s $fake usage 3 --history=weeks
  3 weeks ago            1             1m  #
  2 weeks ago           -1            -1m
  last week    -2147483648  -35791394h08m
  this week     2147483647   35791394h07m  #######################################

A history of the largest numbers adds up.

  $ entry() { reply 2 80=305 84=2147483647 96=-2147483648; }
  $ { entry; entry; reply 0; } >answer
  $ utm_appctl -s $fake usage 3 --history=weeks -j
  {"profile":3,"person":null,"unit":"week","minutes":[-4294967296,0,0,4294967294],"applications":[{"app":305,"name":null,"minutes":[-2147483648,0,0,2147483647]},{"app":305,"name":null,"minutes":[-2147483648,0,0,2147483647]}]}

  $ stop_fake_server
