A profile comes and goes. A new one has no limit.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ utm_appctl debug on
  $ utm_appctl profile add 3
  $ utm_appctl limit show 3
  limit    1440 (24h)
  enabled  no
  $ utm_appctl profile del 3
  $ utm_appctl limit show 3
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ forget

It has any number of 32 bits.

  $ utm_appctl profile add 0
  $ utm_appctl profile add +7
  $ utm_appctl profile add 2147483647
  $ utm_appctl profile add -- -2147483648
  $ log
  [socket] Receive cmd type=1
  Create profile 0 success
  [socket] Receive cmd type=1
  Create profile 7 success
  [socket] Receive cmd type=1
  Create profile 2147483647 success
  [socket] Receive cmd type=1
  Create profile -2147483648 success

The daemon is not asked about what is no such number.

  $ for text in mia '' '3 ' ' 3' 0x3 2147483648 1e3 3.0; do
  >   utm_appctl profile add "$text" || echo "status $?"
  > done
  utm_appctl: "mia" is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: "" is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: "3 " is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: " 3" is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: "0x3" is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: "2147483648" is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: "1e3" is nobody's name
  Give a whole number, or a name in the household
  status 2
  utm_appctl: "3.0" is nobody's name
  Give a whole number, or a name in the household
  status 2
  $ utm_appctl profile del -- -2147483649
  utm_appctl: "-2147483649" is nobody's name
  Give a whole number, or a name in the household
  [2]
  $ utm_appctl profile del -3
  utm_appctl: "-3" is no option
  Put -- in front of a negative number
  [2]
  $ log

A device's address may be written in any usual way.

  $ utm_appctl profile add 3
  $ utm_appctl device add 3 02:00:00:00:00:1a 02-00-00-00-00-1B 02.00.00.00.00.1c \
  >   0200.0000.001d 020000-00001E 02000000001F
  $ log
  [socket] Receive cmd type=1
  Create profile 3 success
  [socket] Receive cmd type=47
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:1A to profile 3 success
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:1B to profile 3 success
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:1C to profile 3 success
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:1D to profile 3 success
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:1E to profile 3 success
  [socket] Receive cmd type=3
  Add dev mac = 02:00:00:00:00:1F to profile 3 success

One bad address keeps all of them from being sent.

  $ for bad in 02:00:00:00:00 02:00:00:00:00:1a:2b 02:00-00:00:00:1a '' 02:00:00:00:00:1g \
  >   2:0:0:0:0:1a tablet; do
  >   utm_appctl device add 3 02:00:00:00:00:0B "$bad" || echo "status $?"
  > done
  utm_appctl: "02:00:00:00:00" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2
  utm_appctl: "02:00:00:00:00:1a:2b" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2
  utm_appctl: "02:00-00:00:00:1a" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2
  utm_appctl: "" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2
  utm_appctl: "02:00:00:00:00:1g" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2
  utm_appctl: "2:0:0:0:0:1a" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2
  utm_appctl: "tablet" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  status 2

Nor is it asked about addresses that no single device has. What another program added can go.

  $ for bad in 00:00:00:00:00:00 ff:ff:ff:ff:ff:ff 01:00:5e:00:00:fb; do
  >   utm_appctl device add 3 "$bad" || echo "status $?"
  > done
  utm_appctl: 00:00:00:00:00:00 is the address of no device
  Give the device's own, which its network settings show
  status 2
  utm_appctl: ff:ff:ff:ff:ff:ff is the address of many devices at once
  Give the device's own, which its network settings show
  status 2
  utm_appctl: 01:00:5e:00:00:fb is the address of many devices at once
  Give the device's own, which its network settings show
  status 2
  $ log
  $ ask 3 8=3 12=-1 16=-1
  status 0
  $ utm_appctl device del 3 ff:ff:ff:ff:ff:ff
  $ log
  [socket] Receive cmd type=3
  Add dev mac = FF:FF:FF:FF:FF:FF to profile 3 success
  [socket] Receive cmd type=47
  [socket] Receive cmd type=4
  Del dev FF:FF:FF:FF:FF:FF from profile 3 success

An address does not go on in the next word.

  $ utm_appctl device add 3 02 fe 80 7f 00 1a
  utm_appctl: "02" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  [2]
  $ utm_appctl device add 3 02fe80 7f001a
  utm_appctl: "02fe80" is not a MAC address
  Give six bytes, such as 02:00:00:00:00:1a
  [2]
  $ log

Devices need a profile. After the first refusal no other device is tried.

  $ utm_appctl device add 9 02:00:00:00:00:0A 02:00:00:00:00:0B
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ utm_appctl device del 9 02:00:00:00:00:0A
  utm_appctl: the daemon refused: no such profile; create it with profile add
  [1]
  $ log
  [socket] Receive cmd type=47
  [socket] Receive cmd type=3
  Add dev to profile 9 failed because profile not exist
  [socket] Receive cmd type=27
  [socket] Receive cmd type=47
  [socket] Receive cmd type=4
  Del dev from profile 9 failed because profile not exist
  [socket] Receive cmd type=27

A device that leaves is released.

  $ utm_appctl activate on
  $ forget
  $ utm_appctl device del 3 02:00:00:00:00:1A
  $ journal
  lcsh apg acl reset 02:00:00:00:00:1A

If its profile is blocked, a helper of the router lets it go.

  $ utm_appctl limit set 3 10
  $ utm_appctl limit enable 3
  $ use 10
  $ journal
  notify block profile 3
  $ utm_appctl device del 3 02-00-00-00-00-1b
  $ journal
  lcsh apg acl reset 02:00:00:00:00:1B
  profile_daily_limit.sh -C 3
