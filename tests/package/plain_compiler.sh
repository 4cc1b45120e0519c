#!/usr/bin/env bash
# plain_compiler.sh COMPILER SOURCE_DIR HEADER_DIR BINARY_DIR RECORDINGS: the sources make a working
# library with nothing but a compiler.
set -euo pipefail
compiler=$1 source=$2 headers=$3 binary=$4 recordings=$5

mkdir -p "$binary"
cd "$source"
"$compiler" -std=c++17 -Isrc -Iplatform -fPIC -shared src/*.cpp platform/vxaccelerate/*.cpp \
    -o "$binary/libvxl_audio.so"
"$compiler" -std=c++17 "-I$headers" tests/package/host_project/main.cpp \
    "-L$binary" -lvxl_audio "-Wl,-rpath,$binary" -o "$binary/host"
"$binary/host" "$recordings" "$binary/written.wav"
