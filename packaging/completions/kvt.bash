# bash completion for kvt: groups, sub-commands and the values of their arguments.
shopt -s extglob
_kvt() {
    local before="${COMP_WORDS[*]:1:COMP_CWORD-1}" words=
    case $before in
        '') words='1 2 3 4 5 6 7 8 9 10 11' ;;
        '1') words='1 2 3 4' ;;
        1\ 2) words='0 1' ;;
        1\ 3) words='0 1' ;;
        '2') words='0 1' ;;
        '3') words='0 1 2 3 4 5' ;;
        3\ 3) words='0 1' ;;
        3\ 3\ +([[:graph:]])) words='0 1 2 3 4' ;;
        '4') words='1 2 3 4 5 6' ;;
        4\ 1) words='0 1' ;;
        4\ 2) words='0 1' ;;
        4\ 3) words='0 1' ;;
        4\ 4) words='0 1' ;;
        4\ 5) words='0 1' ;;
        4\ 6) words='0 1' ;;
        '5') words='0 1 2 3 4 5 6 10' ;;
        5\ 0) words='0 1' ;;
        5\ 0\ +([[:graph:]])) words='0 1' ;;
        5\ 10) words='1 2' ;;
        5\ 10\ +([[:graph:]])) words='0 1' ;;
        5\ 2) words='0 1' ;;
        5\ 3) words='0 1' ;;
        5\ 3\ +([[:graph:]])) words='0 1' ;;
        5\ 3\ +([[:graph:]])\ +([[:graph:]])) words='0 1' ;;
        5\ 6) words='0 1' ;;
        6) words='0 1 2 3 4 5' ;;
        '7') words='0 1' ;;
        7\ 0) words='0 1' ;;
        7\ 1) words='0 1' ;;
        '9') words='0 1 2 3 4 5 6 7 8 9 10 11 12 20 21 30' ;;
        9\ 0) words='0 1' ;;
        9\ 1) words='0 1' ;;
        9\ 10) words='0 1' ;;
        9\ 11) words='0 1' ;;
        9\ 12) words='0 1' ;;
        9\ 2) words='0 1' ;;
        9\ 20) words='0 1' ;;
        9\ 21) words='0 1' ;;
        9\ 3) words='0 1' ;;
        9\ 30) words='0' ;;
        9\ 4) words='0 1' ;;
        9\ 5) words='0 1' ;;
        9\ 6) words='0 1' ;;
        9\ 7) words='0 1' ;;
        9\ 8) words='0 1' ;;
        9\ 9) words='0 1' ;;
        '11') words='0 1 2 3 4 5 6' ;;
        11\ 3) words='0 1' ;;
        11\ 4) words='0 1' ;;
        11\ 5) words='0 1' ;;
        11\ 6) words='0 1' ;;
    esac
    COMPREPLY=($(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}"))
}
complete -F _kvt kvt
