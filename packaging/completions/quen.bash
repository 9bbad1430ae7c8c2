# bash completion of quen-reprocess and quen-replay. Options, and the values of those that take one of a
# list, are read from what --help says: there is no second list to keep.

_quen() {
    local program=$1 current=$2 previous=$3 help values=
    COMPREPLY=()
    help=$("$program" --help 2>/dev/null)
    if [[ $previous == -* ]]; then
        values=$(sed -nE "s/^ +(-[a-zA-Z],)?$previous ([a-z0-9-]+(\|[a-z0-9-]+)+).*/\2/p" <<<"$help")
    fi
    if [ -n "$values" ]; then
        mapfile -t COMPREPLY < <(compgen -W "${values//|/ }" -- "$current")
    elif [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(sed -nE 's/^  (-[^ =[{]+).*/\1/p' <<<"$help" | tr ',' ' ')" \
            -- "$current")
    fi
}

complete -o default -F _quen quen-reprocess quen-replay
