#!/usr/bin/env bash
# check_readme_host.sh PROGRAM FOLDER: the program of the README lines up the example recordings.
set -euo pipefail
program=$1 folder=$2

output=$("$program" "$folder"/{slow-clock,clean,elsewhere}.wav)
printf '%s\n' "$output"
for line in '  slow-clock starts at 0 s' '  clean starts at 6.24 s' '  elsewhere starts at 0 s'; do
    grep -qxF "$line" <<<"$output" || { echo "missing: $line"; exit 1; }
done
[ "$(grep -cx 'group:' <<<"$output")" = 2 ] || { echo "not two groups"; exit 1; }
