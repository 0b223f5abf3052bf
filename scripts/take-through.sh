# shellcheck shell=bash
# What the scripts have in common that take real pictures through the command and hold them against
# their sources. Sourced by them, behind common.sh and with their own arguments:
#   keep, folder   from [--keep] [FOLDER]
#   work           a folder that goes when the script ends
#   picture        the source that is taken through, as the script sets it
#   table          where the script writes its rows
# shellcheck disable=SC2034

keep=no
if [[ ${1:-} == --keep ]]; then
    keep=yes
    shift
fi
(($# <= 1)) || fail_usage "one FOLDER at most; see --help"
folder=$PWD/${script##*/}-output
(($# == 0)) || folder=$(path_from_caller "$1")

mkdir -p "$folder"
work=$(mktemp -d "$folder/work-XXXXXX")
trap 'rm -rf "$work"' EXIT
table=$work/table

exec 3>&2 # past the redirections of the commands
tell() {
    printf '%s: %s\n' "${script##*/}" "$1" >&3
}

problems=0
problem() {
    tell "$1"
    problems=$((problems + 1))
}

# timed STEP COMMAND...: runs a command and keeps its seconds; its failure is a problem.
declare -A seconds
timed() {
    local begin=$EPOCHREALTIME
    "${@:2}" || problem "$1 of ${picture##*/} failed: ${*:2}"
    seconds[$1]=$(awk "BEGIN { printf \"%.2f\", $EPOCHREALTIME - $begin }")
}

# The command, its most memory noted.
tympan() {
    /usr/bin/time -a -o "$work/memory" -f %M "$PWD/build/release/tools/tympan" "$@"
}

# measured STEP COMMAND...: timed, and keeps the most memory of the command in it, in MB.
declare -A megabytes
measured() {
    rm -f "$work/memory"
    timed "$@"
    megabytes[$1]=$(sort -n "$work/memory" | awk '/^[0-9]+$/ { most = $1 }
        END { printf "%.0f", most / 1024 }')
}

in_megabytes() {
    awk "BEGIN { printf \"%.1f\", $(stat -c %s "$1") / 1e6 }"
}

# The value of a number in what `info --json` wrote to info.json.
info_number() {
    sed -n "s/^ *\"$1\": *\([0-9.]*\),*$/\1/p" "$work/info.json" | head -n 1
}

# Prints the table, what its columns are, and what was found; ends with status 1 after a problem.
conclude() {
    cat "$table"
    echo "$1"
    if ((problems != 0)); then
        tell "$problems problems"
        exit 1
    fi
    echo "$2"
}
