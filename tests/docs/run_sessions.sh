# run_sessions.sh PROGRAMS COMMAND_FOLDER SESSION...
#
# Runs the lines behind "$ " of each session, one after the other in one new folder with copies of what
# stands in PROGRAMS, and ends with status 1 when what they print isn't what the session shows.
set -uo pipefail

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -a "$1"/* "$scratch"
export PATH=$2:$PATH
cd "$scratch" || exit

run_lines() {
    local line
    while IFS= read -r line; do
        if [[ $line == '$ '* ]]; then
            printf '%s\n' "$line"
            eval "${line#\$ }" 2>&1 </dev/null
        fi
    done <"$1"
}

differing=0
for session in "${@:3}"; do
    diff -u --label "${session##*/}" --label "what it prints" "$session" <(run_lines "$session") ||
        differing=1
done
exit "$differing"
