Days keep their names when the clocks change. Half an hour of the third of April is over; three days
before, the clocks went forward, so that 96 hours ago is late on the day before.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ add_mia
  $ clock set '2030-04-03 00:30'
  $ tick
  $ utm_appctl usage 3 --history
  Mon  4 Mar  0  0m
  Tue  5 Mar  0  0m
  Wed  6 Mar  0  0m
  Thu  7 Mar  0  0m
  Fri  8 Mar  0  0m
  Sat  9 Mar  0  0m
  Sun 10 Mar  0  0m
  Mon 11 Mar  0  0m
  Tue 12 Mar  0  0m
  Wed 13 Mar  0  0m
  Thu 14 Mar  0  0m
  Fri 15 Mar  0  0m
  Sat 16 Mar  0  0m
  Sun 17 Mar  0  0m
  Mon 18 Mar  0  0m
  Tue 19 Mar  0  0m
  Wed 20 Mar  0  0m
  Thu 21 Mar  0  0m
  Fri 22 Mar  0  0m
  Sat 23 Mar  0  0m
  Sun 24 Mar  0  0m
  Mon 25 Mar  0  0m
  Tue 26 Mar  0  0m
  Wed 27 Mar  0  0m
  Thu 28 Mar  0  0m
  Fri 29 Mar  0  0m
  Sat 30 Mar  0  0m
  Sun 31 Mar  0  0m
  Mon  1 Apr  0  0m
  Tue  2 Apr  0  0m
  Wed  3 Apr  0  0m
