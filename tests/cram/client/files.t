Nothing is written or read while limits are off.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ mkdir /tmp/here && cd /tmp/here
  $ utm_appctl export /tmp/here/usage.json
  utm_appctl: the daemon refused: limits are off (turn them on with activate on), or it cannot write there; does the folder exist, and is there space?
  [1]
  $ utm_appctl import /tmp/here/usage.json
  utm_appctl: the daemon refused: limits are off (turn them on with activate on), or the file is missing, damaged or from the future
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
  $ utm_appctl profile del 3
  $ utm_appctl import /tmp/here/usage.json
  $ utm_appctl usage 3 --apps --json
  {"profile":3,"unit":"day","ago":0,"applications":[{"app":305,"name":null,"minutes":20}]}

A file that cannot be is refused.

  $ utm_appctl export /tmp/here/none/usage.json
  utm_appctl: the daemon refused: limits are off (turn them on with activate on), or it cannot write there; does the folder exist, and is there space?
  [1]
  $ utm_appctl import /tmp/here/none
  utm_appctl: the daemon refused: limits are off (turn them on with activate on), or the file is missing, damaged or from the future
  [1]
  $ echo '{"user_profile_list":' >/tmp/here/damaged
  $ utm_appctl import /tmp/here/damaged
  utm_appctl: the daemon refused: limits are off (turn them on with activate on), or the file is missing, damaged or from the future
  [1]
  $ utm_appctl export ''
  utm_appctl: the path is empty: name a file
  [2]

A path that does not fit is not cut, neither one that was given nor one that was made absolute.

  $ rm /tmp/here/*
  $ longest=/tmp/here/$(letters 117)
  $ utm_appctl export "$longest"
  $ ls /tmp/here
  aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa
  $ utm_appctl export "${longest}a"
  utm_appctl: /tmp/here/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long: a path may have at most 127 characters
  [2]
  $ utm_appctl import "${longest}a"
  utm_appctl: /tmp/here/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long: a path may have at most 127 characters
  [2]
  $ cd /tmp/here && utm_appctl export "$(letters 118)"
  utm_appctl: /tmp/here/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long: a path may have at most 127 characters
  [2]
  $ ls /tmp/here | wc -l
  1
