What the shells offer for the last word of a command line. The client says what fits, and its unit
test compares that with the help; no daemon is needed.

  $ export UTM_APPCTL_HOUSEHOLD=$PWD/household.json
  $ cat >$UTM_APPCTL_HOUSEHOLD <<'END'
  > {"applications": [{"number": 305, "name": "video"}, {"number": 306, "name": "board games"}],
  >  "people": [{"number": 3, "name": "Mia"}, {"number": 4, "name": "Mike O'Neill"}]}
  > END
  $ utm_appctl completion -- usage mi
  Mia\t (esc)
  Mike O'Neill\t (esc)
  $ utm_appctl completion -- policy rule 7 ''
  video=\t (esc)
  board games=\t (esc)
  $ utm_appctl completion --json -- export ''
  {"words":[],"files":true}

Bash gets the line from readline, which has cut it into these words.

  $ cat >/tmp/complete.sh <<'END'
  > compopt() { case $2 in default) echo 'names of files' ;; nospace) echo 'without a blank:' ;; esac; }
  > COMP_WORDBREAKS=${BREAKS-$' \t\n"\'><=;|&(:'}
  > source "$SOURCE/completion/utm_appctl"
  > COMP_WORDS=(utm_appctl "$@")
  > COMP_CWORD=$#
  > _utm_appctl utm_appctl "${@: -1}"
  > if [[ ${#COMPREPLY[@]} -gt 0 ]]; then echo "${COMPREPLY[@]}"; fi
  > END
  $ complete() { bash /tmp/complete.sh "$@"; }
  $ complete pol
  policy
  $ complete profile a
  add
  $ complete limit --socket /x e
  enable
  $ complete -s /x limit e
  enable

Operands that are one of a few words.

  $ complete activate o
  on off
  $ complete debug ''
  on off
  $ complete weekday set 3 t
  tuesday thursday
  $ complete weekday set -- -3 t
  tuesday thursday
  $ complete policy rule 7 video = b
  block
  $ complete policy rule 7 305 = 45 video =
  block allow

Options and their values.

  $ complete usage 3 --we
  --week --weeks
  $ complete usage 3 --week ''
  0 1 2 3
  $ complete usage 3 --day = 3
  3 30
  $ complete usage 3 --history ''
  --days --weeks
  $ complete usage 3 --history --w
  --week --weeks
  $ complete usage 3 --history --
  --ascii --names --household --apps --day --yesterday --week --month --history --days --weeks --csv --json --socket --timeout --help --version
  $ complete usage --history = weeks 3 --as
  --ascii
  $ complete status -t 5 --j
  --json

Names of files are left to the shell.

  $ complete export ''
  names of files
  $ complete import us
  names of files
  $ complete report ''
  names of files
  $ complete signature load /
  names of files
  $ complete --socket /
  names of files
  $ complete ping -s ''
  names of files
  $ complete usage 3 --names a
  names of files
  $ complete usage 3 -n ''
  names of files
  $ complete report --names = a
  names of files

Nothing is offered where nothing fits.

  $ complete export a ''
  $ complete report a ''
  $ complete weekday set 3 monday ''
  $ complete usage 3 --history w
  $ complete usage 3 --history =
  $ complete usage 3 ''
  $ complete policy rule 7 nothing
  $ complete device add 3 02 : 00 : ''
  $ complete status -t ''
  $ complete status -- -
  $ complete ping ''
  $ complete nonsense ''

Some people take the equals sign out of COMP_WORDBREAKS; then the whole word is replaced.

  $ export BREAKS=$(printf ' \t\nx')
  $ BREAKS=${BREAKS%x}
  $ complete usage 3 --week=2
  --week=2
  $ complete policy rule 7 video=b
  video=block
  $ complete report --names=a
  names of files
  $ complete device add 3 02:00:

Names come whatever the case is, and in a form that bash takes.

  $ unset BREAKS
  $ complete usage m
  Mia Mike\ O\'Neill
  $ complete usage 'mike\ o'
  Mike\ O\'Neill
  $ complete usage '"Mik'
  Mike O'Neill
  $ complete policy rule 7 'board\ g'
  without a blank:
  board\ games=
  $ complete policy rule 7 'board\ games' = bl
  block

Without a household there are no names, and nothing is said about it.

  $ UTM_APPCTL_HOUSEHOLD=$PWD/none.json complete usage m
  $ echo '{' >broken.json
  $ UTM_APPCTL_HOUSEHOLD=$PWD/broken.json complete limit s
  show set
