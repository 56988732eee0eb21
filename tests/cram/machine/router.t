The programs of the simulated router take what the daemon sends.

  $ export UTM_SIM_DIR=router
  $ mkdir router
  $ journal() { cat router/journal; rm router/journal; }
  $ lcsh apg off
  $ lcsh apg on
  $ lcsh apg acl set 00:11:22:33:44:55 2147483647 0 18
  $ lcsh apg acl set AA:BB:CC:DD:EE:FF -1 0 18
  $ lcsh apg acl del AA:BB:CC:DD:EE:FF -2147483648 0
  $ lcsh apg acl del AA:BB:CC:DD:EE:FF -1 0
  $ lcsh apg acl reset 00:11:22:33:44:55
  $ for id in 0 3 -1 2147483647 -2147483648; do profile_daily_limit.sh -C $id; done
  $ journal
  lcsh apg off
  lcsh apg on
  lcsh apg acl set 00:11:22:33:44:55 2147483647 0 18
  lcsh apg acl set AA:BB:CC:DD:EE:FF -1 0 18
  lcsh apg acl del AA:BB:CC:DD:EE:FF -2147483648 0
  lcsh apg acl del AA:BB:CC:DD:EE:FF -1 0
  lcsh apg acl reset 00:11:22:33:44:55
  profile_daily_limit.sh -C 0
  profile_daily_limit.sh -C 3
  profile_daily_limit.sh -C -1
  profile_daily_limit.sh -C 2147483647
  profile_daily_limit.sh -C -2147483648

They refuse all else with status 64 and say so in the journal. A line that is not refused so would
be printed here.

  $ refuse() {
  >   while IFS= read -r line; do
  >     printf 'refused %s\n%s: %s\n' "$line" "$line" "$1" >expected
  >     eval "$line" >said 2>&1
  >     [ $? = 64 ] || echo "accepted: $line"
  >     journal | cat - said | diff - expected
  >   done
  > }
  $ mac=00:11:22:33:44:55
  $ { sed 's/^/lcsh /' | refuse 'no such command'; } <<END
  > apg
  > on
  > apg ON
  > apg on on
  > apg on 1
  > apg acl
  > apg acl set
  > apg acl set $mac
  > apg acl set $mac 305
  > apg acl set $mac 305 0
  > apg acl set $mac 305 18 0
  > apg acl set $mac 305 0 17
  > apg acl set $mac 305 0 18 0
  > apg acl set 305 $mac 0 18
  > apg acl set aa:BB:CC:DD:EE:FF 305 0 18
  > apg acl set 001122334455 305 0 18
  > apg acl set 00-11-22-33-44-55 305 0 18
  > apg acl set 00:11:22:33:44:5 305 0 18
  > apg acl set 00:11:22:33:44:555 305 0 18
  > apg acl set 00:11:22:33:44:5G 305 0 18
  > apg acl set $mac 0305 0 18
  > apg acl set $mac +305 0 18
  > apg acl set $mac 305x 0 18
  > apg acl set $mac x 0 18
  > apg acl set $mac 2147483648 0 18
  > apg acl del $mac 305
  > apg acl del $mac 305 1
  > apg acl del $mac 305 0 18
  > apg acl reset
  > apg acl reset $mac 0
  > apg acl reset 00:11:22:33:44:5a
  > apg acl add $mac 305 0 18
  > apg rule set $mac 305 0 18
  > load
  > load /tmp/a /tmp/b
  > LOAD /tmp/a
  > ''
  > 'apg on'
  > apg on ''
  > apg 'on;'
  > END
  $ { sed 's/^/profile_daily_limit.sh /' | refuse 'no such command'; } <<END
  > 3
  > -C
  > -c 3
  > -C3
  > 3 -C
  > -C x
  > -C 3x
  > -C x3
  > -C +3
  > -C -
  > -C --3
  > -C 3-
  > -C 3.0
  > -C 3 4
  > -R 3
  > --C 3
  > END
  $ call='ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour'
  $ { sed "s/.*/$call '&'/" | refuse 'no such call'; } <<END
  > {}
  > {"s":1}
  > {"s":1,"e":2
  > {"s":1,"e":2} 
  > {"s":1,"e":2}}
  > {"s": 1,"e":2}
  > { "s":1,"e":2}
  > {"e":2,"s":1}
  > {"s":01,"e":2}
  > {"s":+1,"e":2}
  > {"s":1.0,"e":2}
  > {"s":"1","e":"2"}
  > {"s":1,"e":2,}
  > {"s":1,"e":2, "mac":"001122334455 "}
  > {"mac":"001122334455 ","s":1,"e":2}
  > {"s":1,"e":2,"mac":""}
  > {"s":1,"e":2,"mac":" "}
  > {"s":1,"e":2,"mac":"001122334455"}
  > {"s":1,"e":2,"mac":"001122334455 "}x
  > {"s":1,"e":2,"mac":" 001122334455"}
  > {"s":1,"e":2,"mac":"001122334455  "}
  > {"s":1,"e":2,"mac":"00112233445 "}
  > {"s":1,"e":2,"mac":"0011223344556 "}
  > {"s":1,"e":2,"mac":"aabbccddeeff "}
  > {"s":1,"e":2,"mac":"00:11:22:33:44:55 "}
  > {"s":1,"e":2,"mac":"001122334455,AABBCCDDEEFF "}
  > {"s":1,"e":2,"mac":"001122334455 AABBCCDDEEFF"}
  > {"s":1,"e":2,"mac":"001122334455AABBCCDDEEFF "}
  > END
  $ refuse 'no such call' <<END
  > ubus
  > ubus list
  > $call
  > ${call%_hour} '{"s":1,"e":2}'
  > $call '{"s":1,"e":2}' 1
  > ubus -t 3 ${call#ubus -t 2 } '{"s":1,"e":2}'
  > ubus ${call#ubus -t 2 } '{"s":1,"e":2}'
  > ubus -t 2 call lc-dpi.lc-dev-stat time_usage_hour '{"s":1,"e":2}'
  > END
  $ lcsh
  lcsh: no such command
  [64]
  $ lcsh apg "$(printf 'on\nx')"
  lcsh apg 'on?x': no such command
  [64]
  $ journal
  refused lcsh
  refused lcsh apg 'on?x'

None of that has changed the router. It keeps what commands made of it.

  $ simrouter blocked
  nothing is blocked
  the application guard is on
  $ lcsh apg on
  $ lcsh apg acl set $mac 305 0 18
  $ lcsh apg acl set $mac 305 0 18
  $ lcsh apg acl set $mac -7 0 18
  $ lcsh apg acl set AA:BB:CC:DD:EE:FF 305 0 18
  $ simrouter blocked
  an application (-7) is blocked on a device (00:11:22:33:44:55)
  an application (305) is blocked on a device (00:11:22:33:44:55)
  an application (305) is blocked on a device (AA:BB:CC:DD:EE:FF)
  the application guard is on
  $ lcsh apg off
  $ lcsh apg acl del $mac 305 0
  $ simrouter blocked
  an application (-7) is blocked on a device (00:11:22:33:44:55)
  an application (305) is blocked on a device (AA:BB:CC:DD:EE:FF)
  the application guard is off: no application is held
  $ lcsh apg acl reset $mac
  $ lcsh apg acl reset $mac
  $ lcsh apg acl del $mac 305 0
  $ simrouter blocked
  an application (305) is blocked on a device (AA:BB:CC:DD:EE:FF)
  the application guard is off: no application is held

A scenario gives names.

  $ cat >router/scenario <<END
  > person mia 3 Mia
  > device tablet mia $mac Mia's tablet
  > app video 305 moving pictures
  > END
  $ lcsh apg acl set $mac 305 0 18
  $ touch router/profile.3.blocked router/profile.-4.blocked
  $ simrouter blocked
  somebody (profile -4) has no network
  Mia (profile 3) has no network
  moving pictures (305) is blocked on Mia's tablet (00:11:22:33:44:55)
  moving pictures (305) is blocked on a device (AA:BB:CC:DD:EE:FF)
  the application guard is off: no application is held

A signature is loaded from a file that holds something.

  $ rm -r router && mkdir router
  $ echo >router/full
  $ : >router/empty
  $ for name in full empty none ''; do lcsh load router/$name; done
  signature router/full loaded
  no such signature
  no such signature
  no such signature
  $ journal
  lcsh load router/full
  lcsh load router/empty
  lcsh load router/none
  lcsh load router/

Commands fail as a file of faults asks, and then do nothing. What is refused is refused all the
same.

  $ printf '3 acl set\n4 apg\nnothing\n0 load\n7 limit.sh -C 3\n' >router/fail
  $ lcsh apg acl set $mac 305 0 18
  [3]
  $ lcsh apg on
  [4]
  $ lcsh apg acl del $mac 305 0
  [4]
  $ lcsh load /nowhere
  no such signature
  $ profile_daily_limit.sh -C 3
  [7]
  $ profile_daily_limit.sh -C 4
  $ lcsh off
  lcsh off: no such command
  [64]
  $ simrouter blocked
  nothing is blocked
  the application guard is off: no application is held
  $ journal
  lcsh apg acl set 00:11:22:33:44:55 305 0 18
  lcsh apg on
  lcsh apg acl del 00:11:22:33:44:55 305 0
  lcsh load /nowhere
  profile_daily_limit.sh -C 3
  profile_daily_limit.sh -C 4
  refused lcsh off

The statistics service knows of no use, or says what is prescribed: to all queries, or to those of a
kind.

  $ service() { ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "$1"; }
  $ for query in '"s":1772625540,"e":1772625600' '"s":0,"e":0' '"s":-60,"e":-1' \
  >   '"s":1,"e":2,"mac":"001122334455 "' '"s":1,"e":2,"mac":"001122334455 AABBCCDDEEFF "'; do
  >   service "{$query}" | tr -d '\t\n'; echo
  > done
  {"data": []}
  {"data": []}
  {"data": []}
  {"data": []}
  {"data": []}
  $ journal | cut -d' ' -f7
  '{"s":1772625540,"e":1772625600}'
  '{"s":0,"e":0}'
  '{"s":-60,"e":-1}'
  '{"s":1,"e":2,"mac":"001122334455
  '{"s":1,"e":2,"mac":"001122334455
  $ both() { service '{"s":1,"e":2}'; service '{"s":1,"e":2,"mac":"001122334455 "}'; }
  $ echo both >router/reply
  $ both
  both
  both
  $ printf 'r\0r\n' >router/reply.router
  $ : >router/reply.profile
  $ both | od -A n -c
     r  \0   r  \n

Without a router the programs complain, of a wrong command first.

  $ unset UTM_SIM_DIR
  $ lcsh apg on
  lcsh apg on: UTM_SIM_DIR names no simulated router
  [64]
  $ profile_daily_limit.sh -C 3
  profile_daily_limit.sh -C 3: UTM_SIM_DIR names no simulated router
  [64]
  $ lcsh load /tmp
  lcsh load /tmp: UTM_SIM_DIR names no simulated router
  [64]
  $ lcsh off
  lcsh off: no such command
  [64]
  $ profile_daily_limit.sh -C
  profile_daily_limit.sh -C: no such command
  [64]
  $ simrouter blocked 2>/dev/null
  [2]
