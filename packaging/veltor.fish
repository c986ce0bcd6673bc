# Completion of the command veltor for fish. All words come from the tool's own help and complaints.

function __veltor_words
    set -lx LC_ALL C
    set -l typed (commandline -opc)
    set -l tool $typed[1]
    set -l command $typed[2]
    if test -z "$command"; or test "$command" = help
        $tool --help 2>/dev/null | sed -n 's/^  \([a-z]*\) .*/\1/p'
        test -z "$command"; and printf '%s\n' help --help --version
        return
    end
    if string match -q -- '--*' "$typed[-1]"
        set -l complaint ($tool $command "$typed[-1]=/dev/null/?" /dev/null/x 2>&1 </dev/null)
        if string match -q '* takes one of *' "$complaint"
            printf '%s\n' $complaint | sed -n "s/.* takes one of \(.*\), not '.*/\1/p" | sed "s/''//; s/, */\n/g"
            return
        else if not string match -q '* takes no value*' "$complaint"
            return # any value
        end
    end
    set -l help ($tool $command --help 2>/dev/null)
    test (count $typed) -gt 2; or printf '%s\n' $help | sed -n "s/^.*veltor $command \([a-z][a-z]*\) .*/\1/p" | sort -u
    printf '%s\n' $help | sed -n 's/^  \(-h, \)\{0,1\}\(--[a-z-]*\).*/\2/p'
end

complete -c veltor -a '(__veltor_words)'
