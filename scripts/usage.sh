# Sourced by the scripts, first of all: --help prints the comment at a script's head instead of running it.
case ${1:-} in
-h | --help)
    sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
