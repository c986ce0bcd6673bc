# Completion of the command veltor for bash.

_veltor()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} words=
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words="distance journal locks measure help --help --version"
    elif [[ $command == journal ]] && ((COMP_CWORD == 2)); then
        words="show rollback repair discard --help"
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
            locks,*) [[ $cur == -* ]] && words="--json --help" ;;
            distance,*) words="--ellipsoid --json --help" ;;
            journal,*)
                if [[ $cur == -* ]]; then
                    words="--help"
                    [[ ${COMP_WORDS[2]} == show ]] && words+=" --json"
                fi
                ;;
        esac
    fi
    if [[ $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
    elif [[ $command == measure || $command == journal || $command == locks ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
}
complete -F _veltor veltor
