# Completion of the command veltor for bash. All words come from the tool's own help and complaints.

# TOOL WORD...: what may follow "TOOL WORD..."; nothing where a file is meant.
_veltor_words()
{
    local tool=$1 command=${2-} last=
    shift 2 2>/dev/null || shift $#
    (($#)) && last=${!#}
    local -x LC_ALL=C
    if [[ -z $command || $command == help ]]; then
        "$tool" --help 2>/dev/null | sed -n 's/^  \([a-z]*\) .*/\1/p'
        [[ -z $command ]] && printf '%s\n' help --help --version
        return
    fi
    if [[ $last == --* ]]; then
        local complaint
        complaint=$("$tool" "$command" "$last=/dev/null/?" /dev/null/x 2>&1 </dev/null)
        case $complaint in
            *" takes one of "*)
                sed -n "s/.* takes one of \(.*\), not '.*/\1/p" <<<"$complaint" | sed "s/''//; s/, */\n/g"
                return
                ;;
            *" takes no value"*) ;;
            *) return ;; # any value
        esac
    fi
    local help
    help=$("$tool" "$command" --help 2>/dev/null)
    (($#)) || sed -n "s/^.*veltor $command \([a-z][a-z]*\) .*/\1/p" <<<"$help" | sort -u
    sed -n 's/^  \(-h, \)\{0,1\}\(--[a-z-]*\).*/\2/p' <<<"$help"
}

_veltor()
{
    local cur=${COMP_WORDS[COMP_CWORD]} words
    local before=("${COMP_WORDS[@]:1:COMP_CWORD-1}")
    if [[ $cur == = ]]; then
        cur=
    elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == = ]]; then
        unset 'before[-1]' # "--mode=sph" comes as three words
    fi
    words=$(_veltor_words "${COMP_WORDS[0]}" "${before[@]}")
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
    if [[ ${#COMPREPLY[@]} == 0 ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
}
complete -F _veltor veltor
