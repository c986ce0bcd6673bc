# Completion of the command veltor for bash.

_veltor()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} words=
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words="crash distance journal measure help --help --version"
    elif [[ $command == journal ]] && ((COMP_CWORD == 2)); then
        words="show rollback repair discard --help"
    elif [[ $command == crash ]] && ((COMP_CWORD == 2)); then
        words="show --debug-dir --help"
    else
        case $command,$prev in
            measure,--mode) words="cartesian plane spherical sphere ellipsoidal ellipsoid ellipse auto default" ;;
            measure,--layout)
                words="compact squeeze indented unindented brackets-indented comma-first delimited"
                ;;
            measure,--eol) words="lf crlf cr" ;;
            *,--ellipsoid | measure,--largest) return ;;
            measure,*)
                [[ $cur == -* ]] && words="--mode --ellipsoid --largest --json --layout --eol --help"
                ;;
            crash,--debug-dir)
                compopt -o filenames 2>/dev/null
                mapfile -t COMPREPLY < <(compgen -d -- "$cur")
                return
                ;;
            crash,*) [[ $cur == -* ]] && words="--debug-dir --help" ;;
            distance,*) words="--ellipsoid --json --help" ;;
            journal,*)
                if [[ $cur == -* ]]; then
                    words="--help"
                    case ${COMP_WORDS[2]} in
                        show) words+=" --json" ;;
                        rollback | repair) words+=" --anywhere" ;;
                    esac
                fi
                ;;
        esac
    fi
    if [[ $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
    elif [[ $command == measure || $command == journal || $command == crash ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
}
complete -F _veltor veltor
