#!/usr/bin/env bash
# check_old_ffmpeg.sh CMAKE SOURCE_DIR BINARY_DIR COMPILER: on a machine whose FFmpeg is too old,
# configuring says so and what to do.
set -euo pipefail
cmake=$1 source=$2 binary=$3 compiler=$4

rm -rf "$binary"
mkdir -p "$binary/pkgconfig"
printf 'Name: libavformat\nDescription: of FFmpeg 4.4\nVersion: 58.76.100\n' \
    >"$binary/pkgconfig/libavformat.pc"
if output=$(PKG_CONFIG_PATH=$binary/pkgconfig "$cmake" -S "$source" -B "$binary/build" \
    -DCMAKE_CXX_COMPILER="$compiler" -DVXS_BUILD_TESTS=OFF -DVXS_BUILD_BENCH=OFF \
    -DVXS_BUILD_FUZZERS=OFF 2>&1); then
    echo "An FFmpeg that is too old was taken"
    exit 1
fi
text=$(tr -s ' \n' ' ' <<<"$output")
for words in 'FFmpeg 5.1 or newer is needed' '58.76.100' '-DVXS_FFMPEG=OFF'; do
    grep -qF -- "$words" <<<"$text" || { echo "$output"; echo "missing: $words"; exit 1; }
done
