A scenario is checked line by line. Its first wrong line is told: here the line behind these eight.

  $ cat >household <<END
  > person mia 3 Mia
  > person tom 4 Tom
  > device tablet mia 00:11:22:33:44:55 Mia's tablet
  > device phone  mia AA:BB:CC:DD:EE:0F Mia's phone
  > device laptop tom 02:00:00:00:00:01 Tom's laptop
  > app video 305 video
  > app chat  12  chat
  > date 2026-03-04
  > END
  $ while IFS= read -r line; do
  >   { cat household; echo "$line"; echo nonsense; } >scenario
  >   printf '%s: ' "$line"
  >   simrouter check scenario 2>&1 | sed 's/^scenario:9: //'
  > done <<END
  > play tablet
  > Use tablet video 17:00 18:00
  > person ann
  > person ann Ann 5
  > person ann 2147483648 Ann
  > person mia 5 Mia again
  > device tv ann 02:00:00:00:00:0A TV
  > device tv mia 0200000000 TV
  > device tv mia 02:00:00:00:00 TV
  > device tablet mia 02:00:00:00:00:0A TV
  > app game
  > app game 3x game
  > app video 9 another
  > use tv video 17:00 18:00
  > use tablet game 17:00 18:00
  > online tv 17:00 18:00
  > online tablet video 17:00 18:00
  > use tablet video 17:00
  > use tablet video 17:60 18:00
  > use tablet video 25:00 +1 18:00
  > use tablet video 17:00:60 18:00
  > use tablet video 17:00:xx 18:00
  > use tablet video 17 18:00
  > use tablet video 18:00 18:00
  > use tablet video 18:00 17:00
  > use tablet video 17:00 18:00 19:00
  > use tablet video +x 17:00 18:00
  > use tablet video 2026-13-04 17:00 18:00
  > use tablet video 2026-03 17:00 18:00
  > date
  > date 2026-03-32
  > date 2026-00-01
  > date 2026-03-04x
  > date tomorrow
  > END
  play tablet: "play" is none of date, person, device, app, use, online
  Use tablet video 17:00 18:00: "Use" is none of date, person, device, app, use, online
  person ann: a person needs a handle, a profile id and a name
  person ann Ann 5: a person needs a handle, a profile id and a name
  person ann 2147483648 Ann: a person needs a handle, a profile id and a name
  person mia 5 Mia again: there is another person mia
  device tv ann 02:00:00:00:00:0A TV: there is no person ann
  device tv mia 0200000000 TV: "0200000000" is no address like 02:00:00:00:00:0A
  device tv mia 02:00:00:00:00 TV: "02:00:00:00:00" is no address like 02:00:00:00:00:0A
  device tablet mia 02:00:00:00:00:0A TV: there is another device tablet
  app game: an app needs a handle, an id and a name
  app game 3x game: an app needs a handle, an id and a name
  app video 9 another: there is another app video
  use tv video 17:00 18:00: there is no device tv
  use tablet game 17:00 18:00: there is no app game
  online tv 17:00 18:00: there is no device tv
  online tablet video 17:00 18:00: "video" is no time like 18:05
  use tablet video 17:00: "" is no time like 18:05
  use tablet video 17:60 18:00: "17:60" is no time like 18:05
  use tablet video 25:00 +1 18:00: "25:00" is no time like 18:05
  use tablet video 17:00:60 18:00: "17:00:60" is no time like 18:05
  use tablet video 17:00:xx 18:00: "17:00:xx" is no time like 18:05
  use tablet video 17 18:00: "17" is no time like 18:05
  use tablet video 18:00 18:00: it ends before it begins; write +1 before a time of the next day
  use tablet video 18:00 17:00: it ends before it begins; write +1 before a time of the next day
  use tablet video 17:00 18:00 19:00: there is something after the times
  use tablet video +x 17:00 18:00: "+x" is no number of days
  use tablet video 2026-13-04 17:00 18:00: "2026-13-04" is no date like 2030-01-31
  use tablet video 2026-03 17:00 18:00: "2026-03" is no date like 2030-01-31
  date: "" is no date like 2030-01-31
  date 2026-03-32: "2026-03-32" is no date like 2030-01-31
  date 2026-00-01: "2026-00-01" is no date like 2030-01-31
  date 2026-03-04x: "2026-03-04x" is no date like 2030-01-31
  date tomorrow: "tomorrow" is no date like 2030-01-31

A time needs a date before it, or one of its own.

  $ cat >scenario <<END
  > person mia 3 Mia
  > device tablet mia 00:11:22:33:44:55 tablet
  > online tablet 2026-03-04 17:00 2026-03-04 18:00
  > online tablet 17:00 18:00
  > END
  $ simrouter check scenario
  scenario:4: a time needs a date line before it
  [1]

A proper one is counted.

  $ simrouter check household
  2 people, 3 devices, 2 apps, 0 stretches of use
  $ printf '\tuse  tablet video 23:30 +1 00:30\nonline phone 23:00 24:00\n' >>household
  $ simrouter check household
  2 people, 3 devices, 2 apps, 2 stretches of use
  $ printf '\n  \n# nobody\n  # at all\n' >scenario
  $ simrouter check scenario
  0 people, 0 devices, 0 apps, 0 stretches of use
  $ : >scenario
  $ simrouter check scenario
  0 people, 0 devices, 0 apps, 0 stretches of use
  $ simrouter check none
  none: cannot be read
  [1]

The statistics service counts by it, in one query for the router and in one for some devices.

  $ mkdir router
  $ export UTM_SIM_DIR=router TZ=UTC0
  $ { cat household; printf 'use tablet video 12:00 12:03\nuse laptop chat 12:01 12:02\n'; } \
  >   >router/scenario
  $ service() { ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "$1"; }
  $ service '{"s":1772625600,"e":1772625780}' | tr '\t' ' '
  {
   "data": [
    {
     "type": "APP",
     "app_id": 305,
     "total_time_usage": 3
    },
    {
     "type": "APP",
     "app_id": 12,
     "total_time_usage": 1
    },
    {
     "type": "INTERNET",
     "app_id": 0,
     "total_time_usage": 3
    }
   ]
  }
  $ service '{"s":1772625600,"e":1772625780,"mac":"AABBCCDDEE0F 020000000001 "}' | tr -d '\t' |
  >   grep -A 1 app_id
  "app_id": 12,
  "total_time_usage": 1
  --
  "app_id": 0,
  "total_time_usage": 1

It counts by no scenario that is wrong.

  $ printf '# nobody\nuse tablet video 17:05 20:00\n' >router/scenario
  $ service '{"s":1,"e":2}'
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1,"e":2}': router/scenario:2: there is no device tablet
  [64]
  $ tail -n 2 router/journal
  ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1,"e":2}'
  refused ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":1,"e":2}'
