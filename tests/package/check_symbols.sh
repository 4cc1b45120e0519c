#!/usr/bin/env bash
# check_symbols.sh NM LIBRARY LIST: the library exports exactly the names in LIST, whose lines that
# begin with "#" are remarks. Names only: a compiler is free to make a name weak, or to emit a
# constructor twice.
set -euo pipefail
export LC_ALL=C
nm=$1 library=$2 list=$3

exported=$("$nm" -D --defined-only --demangle "$library" | cut -c20- | sort -u)
if ! diff <(grep -v '^#' "$list" | sort -u) <(printf '%s\n' "$exported"); then
    echo "$library: exports other names than $list ('<' is missing, '>' is too many)"
    exit 1
fi
