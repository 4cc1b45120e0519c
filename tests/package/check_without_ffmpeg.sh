#!/usr/bin/env bash
# check_without_ffmpeg.sh PROGRAM LIBRARY_DIR RECORDINGS: a build without FFmpeg links none of it, lines
# up WAV files and says of others why it cannot.
set -euo pipefail
program=$1 libraries=$2 recordings=$3

if ldd "$program" "$libraries"/libvxl_sync.so | grep -E 'libav(format|codec|util)|libsw'; then
    echo "$program: is linked with FFmpeg"
    exit 1
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
head -c 4000 /dev/zero >"$folder/film.mp4"
output=$("$program" "$recordings"/{slow-clock,clean}.wav "$folder/film.mp4" || true)
printf '%s\n' "$output"
grep -qE '^ +6\.2576 s .* clean ' <<<"$output" || { echo "clean is not at 6.2576 s"; exit 1; }
grep -q 'film.mp4: .*WAV' <<<"$output" || { echo "film.mp4 is not told"; exit 1; }
