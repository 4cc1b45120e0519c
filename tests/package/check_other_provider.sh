#!/usr/bin/env bash
# check_other_provider.sh LIBRARY PROGRAM FOLDER NEW_WAV_FILE: a host runs with the library that was
# linked with the other provider, which announces itself on the error stream.
set -euo pipefail
library=$1 program=$2 folder=$3 new_file=$4

errors=$(LD_PRELOAD=$library "$program" "$folder" "$new_file" 2>&1 >/dev/null)
grep -qx 'direct transform of order 9' <<<"$errors" || {
    echo "$library: not linked with the other provider"
    exit 1
}
