# compile_headers.sh PREFIX
#
# Compiles each installed header by itself, with nothing but the installed headers and the compiler's own.
# The compiler and its flags are those of CXX and CXXFLAGS.
set -euo pipefail
cd "$1/include/tympan-1"

mapfile -t headers < <(find . -name '*.h' -printf '%P\n')
((${#headers[@]} > 0)) || { echo 'compile_headers: there are none' >&2; exit 1; }
# shellcheck disable=SC2086 # the flags are words
printf '%s\n' "${headers[@]}" |
    xargs -P 2 -I HEADER "$CXX" -std=c++20 $CXXFLAGS -fsyntax-only -I . -include HEADER -x c++ /dev/null
echo "${#headers[@]} headers stand alone"
