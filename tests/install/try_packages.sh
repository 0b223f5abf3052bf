# try_packages.sh CPACK BUILD PREFIX FOLDER VERSION
#
# Makes the Debian packages of a build in FOLDER, looks at what is in them beside what an installation laid
# down in PREFIX, and builds and runs the examples in a tree that the packages are unpacked to.
# Ends with status 77 where packages can't be made. The environment is that of try_examples.sh.
set -euo pipefail
cpack=$1 build=$2 prefix=$3 folder=$4 version=$5
here=$(dirname "$(realpath "$0")")
soversion=${version%.*}
root=$folder/root

for tool in dpkg-deb dpkg-shlibdeps file; do
    command -v "$tool" >/dev/null ||
        { echo "skipped: there is no $tool, which making packages takes"; exit 77; }
done

findings=0
finding() {
    printf 'try_packages: %s\n' "$1" >&2
    findings=$((findings + 1))
}

package() {
    echo "$folder/${1}_${version}_$(dpkg --print-architecture).deb"
}

files_in() {
    dpkg-deb --fsys-tarfile "$(package "$1")" | tar -t | sed -n 's,^\./usr/\(.*[^/]\)$,\1,p'
}

# expect_files PACKAGE EXPRESSION...: each file matches one of them, and each has a file.
expect_files() {
    local name=$1 expression file
    shift
    while read -r file; do
        finding "$name should not hold $file"
    done < <(files_in "$name" | grep -vxE "$(IFS='|'; echo "$*")")
    for expression in "$@"; do
        files_in "$name" | grep -qxE "$expression" || finding "$name holds no $expression"
    done
}

# expect_field PACKAGE FIELD EXPRESSION...: all of them match in it.
expect_field() {
    local name=$1 field=$2 value expression
    value=$(dpkg-deb --field "$(package "$name")" "$field")
    for expression in "${@:3}"; do
        grep -qE "$expression" <<<"$value" || finding "$field of $name is: $value"
    done
}

# expect_control PACKAGE FILE EXPRESSION: a line of the file that goes to the package manager.
expect_control() {
    dpkg-deb --info "$(package "$1")" "$2" | grep -qE "$3" || finding "$2 of $1 has no line $3"
}

rm -rf "$folder"
"$cpack" --config "$build/CPackConfig.cmake" -B "$folder" >"$folder.log" 2>&1 ||
    { cat "$folder.log"; exit 1; }

library=libtympan$soversion
all=("$library" libtympan-dev tympan)
documents() {
    echo "share/doc/$1/.*"
}
expect_files "$library" "$LIBRARIES/libtympan\.so\.$soversion" "$LIBRARIES/libtympan\.so\.$version" \
    "$(documents "$library")"
expect_files libtympan-dev 'include/tympan-1/tympan/tympan\.h' 'include/tympan-1/.*\.h' \
    "$LIBRARIES/libtympan\.so" "$LIBRARIES/cmake/tympan/.*\.cmake" "$LIBRARIES/pkgconfig/tympan\.pc" \
    "$(documents libtympan-dev)"
expect_files tympan bin/tympan 'share/man/man1/tympan.*' 'share/(bash-completion|zsh|tympan)/.*' \
    'share/mime/packages/tympan\.xml' 'share/thumbnailers/tympan\.thumbnailer' \
    "$(documents tympan)"

diff -u --label 'the packages' --label 'what is installed' \
    <(for name in "${all[@]}"; do files_in "$name"; done | LC_ALL=C sort) \
    <(cd "$prefix" && find . ! -type d -printf '%P\n' | LC_ALL=C sort) ||
    finding 'the packages together are not what is installed, each file once'

for name in "${all[@]}"; do
    expect_field "$name" Version "^$version$"
    expect_field "$name" Maintainer .
    expect_field "$name" Priority '^optional$'
    expect_field "$name" Description '^One object .*\)$' '^ [A-Z]'
done
expect_field "$library" Section '^libs$'
expect_field "$library" Depends 'libc6 \(>=' 'libstdc\+\+6 \(>='
expect_control "$library" shlibs "^libtympan $soversion $library \(>= $version\)$"
expect_control "$library" postinst ldconfig
expect_control "$library" postrm ldconfig
expect_field libtympan-dev Section '^libdevel$'
expect_field libtympan-dev Depends "^$library \(= $version\)$"
expect_field tympan Section '^graphics$'
expect_field tympan Depends "$library \(= $version\)" libpng16 liblcms2

for name in "${all[@]}"; do
    dpkg-deb --extract "$(package "$name")" "$root"
done
bash "$here/try_examples.sh" cmake "$root/usr" "$folder/examples" ||
    finding 'the examples do not work with the packages'

((findings == 0))
