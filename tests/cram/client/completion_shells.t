Completion in zsh and fish, as they do it themselves: what stands on the command line after a tab.

  $ for shell in zsh fish; do
  >   command -v $shell >/dev/null || exit 80
  > done
  $ zsh -n "$SOURCE/completion/_utm_appctl"
  $ fish -n "$SOURCE/completion/utm_appctl.fish"
  $ export UTM_APPCTL_HOUSEHOLD=$PWD/household.json
  $ cat >$UTM_APPCTL_HOUSEHOLD <<'END'
  > {"applications": [{"number": 305, "name": "video"}, {"number": 306, "name": "board games"}],
  >  "people": [{"number": 3, "name": "Mia"}, {"number": 4, "name": "Mike O'Neill"},
  >             {"number": 5, "name": "Ben"}]}
  > END
  $ mkdir folder
  $ touch folder/usage.json

Zsh in a terminal of its own: the line is written down when it is entered, and not run.

  $ cat >zshrc.zsh <<'END'
  > fpath=("$SOURCE/completion" $fpath)
  > autoload -Uz compinit
  > compinit -u -D
  > keep() { print -r -- "$BUFFER|" >>typed; BUFFER=; zle .accept-line }
  > zle -N accept-line keep
  > PS1='ready> '
  > END
  $ cat >terminal.zsh <<'END'
  > zmodload zsh/zpty
  > zpty shell zsh -f -i
  > zpty -w shell 'source ./zshrc.zsh'
  > until [[ -e typed ]]; do zpty -w -n shell $'\n'; sleep 0.05; done
  > : >typed
  > for line; do
  >   zpty -w -n shell "utm_appctl $line"$'\t\n'
  >   until [[ $(tail -n 1 typed) == "utm_appctl ${line%% *}"* ]]; do sleep 0.05; done
  >   tail -n 1 typed
  >   : >typed
  > done
  > zpty -d shell
  > END
  $ zsh -f terminal.zsh 'weekday se' 'weekday set 3 tu' 'usage mia --yest' 'usage be' 'usage mik' \
  >   'policy rule 7 vid' 'policy rule 7 video=bl' 'policy rule 7 boa' 'export fol' \
  >   'report --names=fold' 'usage mia --day=2' 'ping x'
  utm_appctl weekday set |
  utm_appctl weekday set 3 tuesday |
  utm_appctl usage mia --yesterday |
  utm_appctl usage Ben |
  utm_appctl usage Mike\ O\'Neill |
  utm_appctl policy rule 7 video=|
  utm_appctl policy rule 7 video=block |
  utm_appctl policy rule 7 board\ games=|
  utm_appctl export folder/|
  utm_appctl report --names=folder/|
  utm_appctl usage mia --day=2|
  utm_appctl ping x|

Fish tells what it offers.

  $ offers() { HOME=$PWD fish --no-config -c "source $SOURCE/completion/utm_appctl.fish; complete -C '$*'"; }
  $ offers utm_appctl lim
  limit
  $ offers utm_appctl weekday se
  set\tset the limit of one weekday (esc)
  $ offers utm_appctl weekday set 3 tu
  tuesday
  $ offers utm_appctl usage mi
  Mia
  Mike O'Neill
  $ offers utm_appctl usage mia --yest
  --yesterday\tthe same as --day 1 (esc)
  $ offers utm_appctl policy rule 7 video=bl
  video=block\tblock it (esc)
  $ offers utm_appctl policy rule 7 boa
  board games=
  $ offers utm_appctl export fol
  folder/
  $ offers utm_appctl ping x
