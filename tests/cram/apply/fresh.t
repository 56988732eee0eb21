A household is applied to a daemon that was started just now. It is made so, and said what was done.

  $ . "$SOURCE/tests/cram/apply/household.sh"
  $ family
  $ utm_appctl apply
  limits are switched on
  Mia: added as person 1
  Ben: added as person 2
  Mia: device 00:00:5E:00:53:1A joins (Mia's tablet)
  Mia: device 00:00:5E:00:53:1B joins
  Ben: device 00:00:5E:00:53:2A joins
  Mia: limit 1h every day
  Ben: limit 2h every day
  Mia: limit enforced
  Mia: video 10m, games blocked
  $ journal
  lcsh apg on
  notify status_changed 1 1
  lcsh apg acl reset 00:00:5E:00:53:1A
  lcsh apg acl reset 00:00:5E:00:53:1B
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 306 0 18
  $ utm_appctl limit show 1
  Mia
  limit    60 (1h)
  enabled  yes

A second time there is nothing to do. What cannot be seen is sent again: the engine's rules.

  $ utm_appctl apply
  nothing to do
  $ journal
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  lcsh apg acl del 00:00:5E:00:53:1B 305 0
  lcsh apg acl set 00:00:5E:00:53:1A 306 0 18
  lcsh apg acl set 00:00:5E:00:53:1B 306 0 18

With --dry-run nothing is sent but questions.

  $ change 's/1h/90m/; s/"blocked"/"free"/'
  $ utm_appctl apply --dry-run
  Mia: limit 1h30m every day
  Mia: games free
  (a dry run: nothing was changed)
  $ journal
  $ utm_appctl apply --dry-run --json
  {"changed":true,"dry_run":true,"steps":[{"what":"Mia: limit 1h30m every day","profile":1,"person":"Mia"},{"what":"Mia: games free","profile":1,"person":"Mia"}]}
  $ utm_appctl limit show 1
  Mia
  limit    60 (1h)
  enabled  yes

Every kind of change: a limit of some days, a device that changes hands, another that goes, a rule
that comes and one that goes, enforcement on and off, and a person more.

  $ cat >$household <<END
  > { "people": [
  >     { "number": 1, "name": "Mia", "devices": [ { "mac": "$tablet" } ],
  >       "limit": { "all": "1h", "weekend": "3h", "friday": "none" }, "enforced": false,
  >       "applications": [ { "name": "306", "rule": "30m" }, { "name": "307", "rule": "blocked" } ] },
  >     { "number": 2, "name": "Ben", "limit": "2h", "devices": [ { "mac": "$phone" } ] },
  >     { "number": 3, "name": "Zoe" } ] }
  > END
  $ utm_appctl apply
  Mia: device 00:00:5E:00:53:1B leaves
  Ben: device 00:00:5E:00:53:2A leaves
  Zoe: added as person 3
  Ben: device 00:00:5E:00:53:1B joins
  Mia: limit none Friday, 3h Saturday Sunday
  Mia: limit only counted
  Ben: limit enforced
  Mia: application 306 30m, application 307 blocked, application 305 free
  $ journal
  lcsh apg acl reset 00:00:5E:00:53:1B
  lcsh apg acl reset 00:00:5E:00:53:2A
  lcsh apg acl del 00:00:5E:00:53:1A 305 0
  lcsh apg acl del 00:00:5E:00:53:1A 306 0
  lcsh apg acl set 00:00:5E:00:53:1A 307 0 18
  $ utm_appctl apply
  nothing to do
  $ utm_appctl apply --json
  {"changed":false,"dry_run":false,"steps":[]}

Somebody who is no longer of the household stays, with thirty days of history, unless told.

  $ change '/Zoe/d; s/"mac": "00:00:5E:00:53:1B" } \] },/"mac": "00:00:5E:00:53:1B" } ] } ] }/'
  $ utm_appctl apply
  utm_appctl: person 3 is not of the household and was left as they are; --prune deletes them, with thirty days of history
  nothing to do
  $ utm_appctl apply --prune
  person 3: deleted
  $ utm_appctl limit show 3
  utm_appctl: the daemon refused: no such profile; in the household Mia is 1, Ben is 2
  [1]
  $ utm_appctl apply
  nothing to do

The file may come by a pipe or have another name.

  $ utm_appctl apply - <$household
  nothing to do
  $ utm_appctl apply -t 5 $household
  nothing to do

What somebody else has changed meanwhile is put right.

  $ utm_appctl device del 1 $tablet
  $ utm_appctl device add 2 $tablet
  utm_appctl: note: 00:00:5E:00:53:1A is a device of Mia, too; what blocks either of them blocks it
  $ utm_appctl weekday set 1 tuesday 5m
  $ utm_appctl policy rule 1 306=remove 400=block
  $ utm_appctl limit disable 2
  $ utm_appctl apply
  Ben: device 00:00:5E:00:53:1A leaves
  Mia: device 00:00:5E:00:53:1A joins
  Mia: limit 1h Tuesday
  Ben: limit enforced
  Mia: application 306 30m, application 400 free
  $ utm_appctl apply
  nothing to do
