# What the commands of the transcripts share.

# Runs a program in which calls of the system fail: stumbling "linkat=18" quen-reprocess ...
stumbling() {
    local calls=$1
    shift
    STUMBLES=$calls ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 "$@"
}

# Runs a program as one whom permissions hold back, root or not.
restricted() {
    if [ "$(id -u)" = 0 ]; then
        setpriv --bounding-set=-dac_override,-dac_read_search "$@"
    else
        "$@"
    fi
}

# Begins a run in the background and waits until it is stuck in writing its output to "pipe.nv21", which is
# too large for the pipe. "let_go" reads it, and tells what the run told.
hold() {
    [ -p pipe.nv21 ] || mkfifo pipe.nv21
    env --default-signal=INT "$@" >../held.out 2>../held.err &
    held=$!
    exec 3<pipe.nv21
    until grep -q '^State:.S' /proc/$held/status; do :; done
}
let_go() {
    [ "$(cat <&3 | wc -c)" -gt 80000 ] && echo whole || echo part
    exec 3<&-
    wait $held 2>/dev/null
    code=$?
    cat ../held.out
    cat ../held.err >&2
    return $code
}

# Waits until a held run has taken its signal, and is gone unless it goes on: no longer than two seconds.
noticed() {
    for i in $(seq 100); do
        state=$(grep -E '^State|^ShdPnd' /proc/$held/status 2>/dev/null | tr -d '\n')
        case $state in
            *S*ShdPnd:*0000000000000000) [ "$1" = going ] && return ;;
            "" | *Z*) return ;;
        esac
        sleep 0.02
    done
}

# Puts bytes into a file: poke FILE OFFSET ESCAPES
poke() {
    printf "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc 2>/dev/null
}
