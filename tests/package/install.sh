#!/usr/bin/env bash
# install.sh CMAKE BINARY_DIR SOURCE_DIR PREFIX LIBDIR: installs to a first place, moves the tree to
# PREFIX and looks at what it holds.
set -euo pipefail
cmake=$1 binary=$2 source=$3 prefix=$4 libdir=$5

rm -rf "$prefix" "$prefix.first"
"$cmake" --install "$binary" --prefix "$prefix.first" >/dev/null
mv "$prefix.first" "$prefix"

fail() {
    echo "$*"
    exit 1
}

library=$prefix/$libdir/libvxl_audio.so
[ -f "$library.1.0.0" ] || fail "$library.1.0.0: missing"
for link in "$library" "$library.1"; do
    [ "$(readlink -f "$link")" = "$(readlink -f "$library.1.0.0")" ] ||
        fail "$link: does not lead to the library"
done
readelf -d "$library" | grep -q 'SONAME.*\[libvxl_audio\.so\.1\]' ||
    fail "$library: its SONAME is not libvxl_audio.so.1"

for place in "$source" "$binary" "$prefix"; do
    if grep -rlF "$place/" "$prefix/$libdir/cmake" "$prefix/$libdir/pkgconfig"; then
        fail "these files name $place"
    fi
done
