#!/usr/bin/env bash
# Run as `bash completion.sh SCRIPT FOLDER-OF-THE-PROGRAM SAMPLE`: what the completion offers at the end of command lines.
[[ -r /usr/share/bash-completion/bash_completion ]] || exit 77 # which CTest counts as skipped
source /usr/share/bash-completion/bash_completion
source "$1"
PATH=$2:$PATH
cd "$(dirname "$3")" || exit 1
log=$(basename "$3")
status=0

# offers LINE EXPECTED...: the completions of the line's last word hold the expected ones.
offers()
{
    COMP_LINE=$1
    COMP_POINT=${#1}
    read -ra COMP_WORDS <<<"$1"
    [[ $1 == *' ' ]] && COMP_WORDS+=('')
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _orva_host orva-host "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}" 2>/dev/null
    local expected
    for expected in "${@:2}"; do
        if [[ " ${COMPREPLY[*]} " != *" $expected "* ]]; then
            echo "\"$1\" offers \"${COMPREPLY[*]}\" without \"$expected\""
            status=1
        fi
    done
}

offers 'orva-host ' laps values "$log"
offers 'orva-host ch' channels
offers 'orva-host --ver' --version
offers 'orva-host values --cha' --channels
offers 'orva-host values club' "$log"
offers "orva-host values $log --lap " 0 4
offers "orva-host $log --lap " 0 4
offers "orva-host values $log --channels ground" groundspeed
offers "orva-host values --lap 1 $log --channels gear,ground" gear,groundspeed
exit $status
