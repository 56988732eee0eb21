# Completion of utm_appctl for fish. Installed as share/fish/vendor_completions.d/utm_appctl.fish, or
# put into ~/.config/fish/completions. What fits is the client's to say.

function __utm_appctl_offers
    set -l line (commandline -opc)
    set -l word (commandline -ct)
    for offer in (utm_appctl completion -- $line[2..] "$word" 2>/dev/null)
        if test "$offer" = \tfiles
            __fish_complete_path "$word"
        else
            printf '%s\n' $offer
        end
    end
end

complete -c utm_appctl -f -a '(__utm_appctl_offers)'
