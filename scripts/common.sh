# shellcheck shell=bash
# What the scripts share: the place of the tree, and a way to show a command before it runs.
# Sourced by them with the tree as the current folder of what follows.

set -euo pipefail
caller_folder=$PWD
script=$(realpath "$0")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# git looks into a checkout that belongs to another user only when told that it may.
export GIT_CONFIG_COUNT=1 GIT_CONFIG_KEY_0=safe.directory GIT_CONFIG_VALUE_0=$PWD

# The usage of a script is its first block of comments.
help_if_asked() {
    case ${1:-} in
        -h|--help) sed -n '2,/^$/{s/^# \{0,1\}//;p}' "$script"; exit 0 ;;
    esac
}

fail_usage() {
    printf '%s: %s\n' "${script##*/}" "$1" >&2
    exit 2
}

# A path as the caller gave it, for a script that works in the tree.
path_from_caller() {
    case $1 in
        /*) printf '%s' "$1" ;;
        *) printf '%s/%s' "$caller_folder" "$1" ;;
    esac
}

# Shows a command as it can be typed, then runs it.
run() {
    {
        printf '\n$'
        printf ' %q' "$@"
        printf '\n'
    } >&2
    "$@"
}

processors() {
    nproc 2>/dev/null || echo 2
}

# The real picture of the demo and the tests, from a package that scripts/setup installs.
# shellcheck disable=SC2034
photograph=$(sed -n 's/^set(TYMPAN_PHOTOGRAPH "\([^"]*\)".*/\1/p' tests/tools/CMakeLists.txt)

# The drawing of the demo, as another such package has it.
# shellcheck disable=SC2034
drawing=/usr/share/xfig/Libraries/Examples/3dhouse.fig
