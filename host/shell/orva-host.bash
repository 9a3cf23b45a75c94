# Completion of orva-host for bash. All of it comes from the program: commands and options from its help, the indices of laps
# and the names of channels from the log that stands on the command line.

# _orva_host_commands PROGRAM: one command per line.
_orva_host_commands()
{
    "$1" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\) .*/\1/p'
}

# _orva_host_argument PROGRAM COMMAND OPTION: what the option's argument is called in the help; nothing if it takes none.
_orva_host_argument()
{
    "$1" "$2" --help 2>/dev/null | sed -nE "s/^  (-[^ ]*, ?)?$3(, ?-[^ ]*)? ([^ ]+).*/\3/p"
}

# _orva_host_channels PROGRAM LOG [OPTION...]: the names of the log's channels, one per line and as --channels takes them.
_orva_host_channels()
{
    "$1" values --quiet "${@:3}" "$2" 2>/dev/null | head -n 1 | grep -oE '"([^"]|"")*"|[^,]+'
}

# _orva_host_laps PROGRAM LOG: the indices of the log's laps, one per line.
_orva_host_laps()
{
    "$1" laps --quiet "$2" 2>/dev/null | sed -n '/^Index /,$s/^ *\([0-9]\+\) .*/\1/p'
}

# _orva_host_list WORD...: completes the last name of the comma-separated list in $cur.
_orva_host_list()
{
    local typed=${cur//\\/} before=
    typed=${typed#[\"\']}
    [[ $typed == *,* ]] && before=${typed%,*},
    local word
    for word in "$@"; do
        [[ $before$word == "$typed"* ]] && COMPREPLY+=("$before$word")
    done
    compopt -o nospace -o filenames # a further name may follow, and blanks need a backslash
}

_orva_host()
{
    local cur prev words cword split
    _init_completion -s || return

    local program=${words[0]/#\~/$HOME} commands command=laps argument= log= i
    commands=$(_orva_host_commands "$program")
    if ((cword > 1)) && [[ $'\n'$commands$'\n' == *$'\n'"${words[1]}"$'\n'* ]]; then
        command=${words[1]}
    fi
    for ((i = 1; i < ${#words[@]}; i++)); do
        ((i == cword)) && continue
        log=${words[i]//\\/}
        [[ ${words[i - 1]} != -* && -f $log || $log == *.@(csv|ld) && -f $log ]] && break
        log=
    done

    [[ $prev == -* ]] && argument=$(_orva_host_argument "$program" "$command" "$prev")
    case $argument in
        N | INDEX)
            COMPREPLY=($(compgen -W '$([[ $log ]] && _orva_host_laps "$program" "$log")' -- "$cur"))
            return
            ;;
        N,* | INDEX,*)
            [[ $log ]] && _orva_host_list $(_orva_host_laps "$program" "$log")
            return
            ;;
        NAME,*)
            local names=()
            [[ $log ]] && mapfile -t names < <(_orva_host_channels "$program" "$log")
            _orva_host_list "${names[@]}"
            return
            ;;
        '') ;;
        FILE | *.*)
            _filedir
            return
            ;;
        *) return ;; # only the user knows
    esac

    if [[ $cur == -* ]]; then
        local of=$command
        ((cword == 1)) && of=
        COMPREPLY=($(compgen -W '$(_parse_help "$program" "$of --help")' -- "$cur"))
        return
    fi
    _filedir '@(csv|ld)'
    ((cword == 1)) && COMPREPLY+=($(compgen -W '$commands' -- "$cur"))
}
complete -F _orva_host orva-host
