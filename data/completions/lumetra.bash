# bash completion for the programs of Lumetra. The options come from each program's --help, so that they are never out
# of date; only their values are listed here.

_lumetra_charts() {
    compgen -f -X '!*.[bB][mM][sSeElL]' -- "$1"
    compgen -f -X '!*.[pP][mM][sS]' -- "$1"
    compgen -d -- "$1"
}

_lumetra_options() {
    "$1" --help 2>/dev/null | sed -nE 's/^ +(-.*)/\1/p' | sed -E 's/   *[^- ].*//' | grep -oE -- '(^| )--?[A-Za-z][a-z-]*'
}

_lumetra() {
    local program=${1##*/} cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} words='' IFS=$' \t\n'
    case $program:$prev in
        lumetra-check:--format) words='text json sarif github' ;;
        lumetra-check:--fail-on) words='error warning note' ;;
        lumetra-check:--color) words='auto always never' ;;
        lumetra-check:--explain | lumetra-check:--select | lumetra-check:--ignore)
            words="$([[ $prev == --explain ]] && echo all; "$1" --explain all 2>/dev/null | sed -n 's|^## ||p')"
            ;;
        lumetra-render:--bits) words='16 24' ;;
        lumetra-render:--pacing) words='exact player' ;;
        lumetra-xa:--mode | lumetra-xa:-m) words='fine fast' ;;
        lumetra-render:--png | lumetra-render:--output-dir)
            mapfile -t COMPREPLY < <(compgen -d -- "$cur")
            return ;;
        lumetra-check:--path | lumetra-render:--wav | lumetra-render:--audio | lumetra-render:--video | \
            lumetra-render:--strip | lumetra-render:--trace)
            mapfile -t COMPREPLY < <(compgen -f -- "$cur")
            return ;;
        *:--at | *:--seek | *:--speed | *:--seed | *:--random | *:--jobs | *:-j | *:--normalize | *:--from | *:--to | \
            *:--length | *:--fade | *:--fps | *:--size) return ;;
        lumetra-xa:lumetra-xa | lumetra-xa:*/lumetra-xa) words='encode decode info --help --version' ;;
        *) [[ $cur != -* ]] || words=$(_lumetra_options "$1") ;;
    esac
    if [[ -n $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
    elif [[ $program == lumetra-xa ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    else
        mapfile -t COMPREPLY < <(_lumetra_charts "$cur")
    fi
}

complete -o filenames -F _lumetra lumetra lumetra-check lumetra-convert lumetra-render lumetra-xa
