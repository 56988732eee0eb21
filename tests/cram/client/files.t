Nothing is written or read while limits are off.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ mkdir /tmp/here && cd /tmp/here
  $ utm_appctl export /tmp/here/usage.json
  utm_appctl: the daemon refused: limits are off; turn them on with activate on
  [1]
  $ utm_appctl import /tmp/here/usage.json
  utm_appctl: the daemon refused: limits are off; turn them on with activate on
  [1]
  $ ls -A /tmp/here

A relative path is the client's own.

  $ utm_appctl activate on
  $ utm_appctl export usage.json
  $ cat usage.json && echo
  {"user_profile_list":[],"timestamp":1893495600,"global_stat":[]}
  $ utm_appctl import ./usage.json
  $ cd /tmp && utm_appctl import here/usage.json

Usage moves from one life of a profile to the next.

  $ add_mia
  $ use 25 305=20
  $ utm_appctl export /tmp/here/usage.json
  $ utm_appctl profile del 3 --yes
  $ utm_appctl import /tmp/here/usage.json
  $ utm_appctl usage 3 --apps --json
  {"profile":3,"person":null,"unit":"day","ago":0,"applications":[{"app":305,"name":null,"minutes":20}]}

A file that cannot be is refused.

  $ utm_appctl export /tmp/here/none/usage.json
  utm_appctl: the daemon refused: /tmp/here/none/usage.json: its folder does not exist
  [1]
  $ utm_appctl import /tmp/here/none
  utm_appctl: the daemon refused: /tmp/here/none: No such file or directory
  [1]
  $ echo '{"user_profile_list":' >/tmp/here/damaged
  $ utm_appctl import /tmp/here/damaged
  utm_appctl: the daemon refused: /tmp/here/damaged: it is damaged: it is no JSON document
  [1]
  $ utm_appctl export ''
  utm_appctl: the path is empty
  Name a file
  [2]

A path that does not fit is not cut, neither one that was given nor one that was made absolute.

  $ rm /tmp/here/*
  $ longest=/tmp/here/$(letters 117)
  $ utm_appctl export "$longest"
  $ ls /tmp/here
  aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa
  $ utm_appctl export "${longest}a"
  utm_appctl: /tmp/here/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long
  A path may have at most 127 characters
  [2]
  $ utm_appctl import "${longest}a"
  utm_appctl: /tmp/here/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long
  A path may have at most 127 characters
  [2]
  $ cd /tmp/here && utm_appctl export "$(letters 118)"
  utm_appctl: /tmp/here/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long
  A path may have at most 127 characters
  [2]
  $ ls /tmp/here | wc -l
  1

The reason is found where the file is.

  $ cd /tmp/here && utm_appctl export /tmp/here
  utm_appctl: the daemon refused: /tmp/here: it is a folder
  [1]
  $ utm_appctl export /tmp/here/usage.json/usage.json
  utm_appctl: the daemon refused: /tmp/here/usage.json/usage.json: its folder does not exist
  [1]
  $ utm_appctl export usage.json
  $ utm_appctl export usage.json/usage.json
  utm_appctl: the daemon refused: /tmp/here/usage.json/usage.json: it should be in a folder, and is in a file
  [1]
  $ utm_appctl export "$PWD"
  utm_appctl: the daemon refused: /tmp/here: it is a folder
  [1]
  $ mkfifo pipe
  $ utm_appctl export pipe
  utm_appctl: the daemon refused: /tmp/here/pipe: it is not a regular file
  [1]
  $ utm_appctl import pipe
  utm_appctl: the daemon refused: /tmp/here/pipe: it is not a regular file
  [1]
  $ utm_appctl import "$PWD"
  utm_appctl: the daemon refused: /tmp/here: it is not a regular file
  [1]
  $ echo null >null.json
  $ utm_appctl import null.json
  utm_appctl: the daemon refused: /tmp/here/null.json: it is damaged: it is no JSON document
  [1]
  $ echo '{"user_profile_list":[]}' >half.json
  $ utm_appctl import half.json
  utm_appctl: the daemon refused: /tmp/here/half.json: it has no global_stat
  [1]
  $ sed 's/"timestamp":[0-9]*/"timestamp":1893625200/' usage.json >tomorrow.json
  $ utm_appctl import tomorrow.json
  utm_appctl: the daemon refused: /tmp/here/tomorrow.json: it is from the future; is the clock right?
  [1]
  $ sed 's/"timestamp":[0-9]*/"timestamp":1893538799/' usage.json >tonight.json
  $ utm_appctl import tonight.json
  $ head -c 8388609 /dev/zero >large.json
  $ utm_appctl import large.json
  utm_appctl: the daemon refused: /tmp/here/large.json: it holds more than the daemon takes
  [1]
