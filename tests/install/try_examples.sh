# try_examples.sh WAY PREFIX FOLDER
#
# Builds the installed examples in FOLDER against the library in PREFIX, by "cmake" or "pkg-config", runs
# the session of their README and failures.session, and compares what is printed.
# The compiler and its flags are those of CXX and CXXFLAGS; LIBRARIES is the folder of libraries in PREFIX.
set -euo pipefail
way=$1 prefix=$2 folder=$3
here=$(dirname "$(realpath "$0")")
examples=$prefix/share/doc/libtympan-dev/examples

rm -rf "$folder"
mkdir -p "$folder"
case $way in
    cmake)
        cmake -S "$examples" -B "$folder" -DCMAKE_PREFIX_PATH="$prefix" \
            -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF
        cmake --build "$folder" --parallel 2 ;;
    pkg-config)
        PKG_CONFIG_PATH=$prefix/$LIBRARIES/pkgconfig make -j 2 -C "$folder" -f "$examples/Makefile" ;;
esac

awk '/^<!-- session: /{session = 1} session && /^```/{inside = !inside; next} inside' \
    "$examples/README.md" >"$folder/README.session"
[[ -s $folder/README.session ]] || { echo 'try_examples: the README has no session' >&2; exit 1; }
bash "$here/../docs/run_sessions.sh" "$folder" "$prefix/bin" "$folder/README.session" \
    "$here/failures.session"
