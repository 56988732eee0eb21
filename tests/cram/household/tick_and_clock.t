A sandbox begins at a time of its own, which stands still unless somebody lets it pass.

  $ clock
  Fri 2030-03-15 16:59:00 CET
  $ tick
  $ clock
  Fri 2030-03-15 17:00:00 CET
  $ tick 60
  $ clock
  Fri 2030-03-15 18:00:00 CET

It can also pass until a certain time: the next time that the clock shows it, or a date's.

  $ tick until 18:02
  $ clock
  Fri 2030-03-15 18:02:00 CET
  $ clock set '2030-03-15 23:55'
  $ tick until 00:02
  $ clock
  Sat 2030-03-16 00:02:00 CET
  $ tick until '2030-03-16 00:05'
  $ clock
  Sat 2030-03-16 00:05:00 CET

The clock may jump, as a router's does when it gets the time from the network. The daemon finds out
at its next tick.

  $ clock set '2030-03-17 00:00'
  $ clock
  Sun 2030-03-17 00:00:00 CET
  $ tick 2
  $ clock
  Sun 2030-03-17 00:02:00 CET

Summer time begins in the night to 31 March.

  $ clock set '2030-03-31 01:59'
  $ tick
  $ clock
  Sun 2030-03-31 03:00:00 CEST

A tick of nothing, of half a thing and of two things is none.

  $ tick 0
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick -1
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick -99999999999999999999
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick 99999999999999999999
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick 3m
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick 1 2
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick 1000001
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]

  $ tick until
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick until tomorrow
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick until 17:60
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick until '2030-03-15 17:00'
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]
  $ tick until 17:00 18:00
  usage: tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']
                           let minutes pass: a tick of the daemon each
  [2]

Nor does the clock take what is no time.

  $ clock set
  usage: clock [set 'DATE HH:MM']  show the clock, or let it jump
  [2]
  $ clock set tomorrow
  usage: clock [set 'DATE HH:MM']  show the clock, or let it jump
  [2]
  $ clock set '2030-03-31 01:59 please'
  usage: clock [set 'DATE HH:MM']  show the clock, or let it jump
  [2]
  $ clock back '2030-03-31 01:59'
  usage: clock [set 'DATE HH:MM']  show the clock, or let it jump
  [2]
  $ clock
  Sun 2030-03-31 03:00:00 CEST
