# lay_down.sh CMAKE BUILD PREFIX
#
# Installs a build, and moves what that laid down to PREFIX. No file of it may know where it stood first.
set -euo pipefail
cmake=$1 build=$2 prefix=$3
first=$prefix-first

rm -rf "$prefix" "$first"
"$cmake" --install "$build" --prefix "$first" >/dev/null
mv "$first" "$prefix"
if grep -rF "$first" "$prefix"; then
    echo 'lay_down: these files name the prefix that they were installed to' >&2
    exit 1
fi
