#!/usr/bin/env bash
# check_marks.sh LIST HEADER...: a reader of an installed header sees which operations he can link.
# Each open operation that has no body there is marked VXS_API or VXS_INTERNAL, unless its whole class
# is marked, and only those marked VXS_API are in LIST, the exported names. Templates are passed over:
# they are compiled in, or their instantiations stand outside the class with a mark of their own.
set -euo pipefail
list=$1
shift

marks=$(awk '
    FNR == 1 { class = ""; statement = ""; isOpen = 0; isTemplate = 0 }
    { sub(/\/\/.*/, "") }
    /^ *(class|struct) [^;]*$/ {
        isPassedOver = isTemplate || /VXS_API/
        isTemplate = 0
        class = $0
        sub(/ *(final )?(:.*|\{.*)?$/, "", class)
        sub(/.* /, "", class)
        isOpen = /struct/
        statement = ""
        next
    }
    /^ *(public|protected|private):/ { isOpen = /public/; statement = ""; next }
    /^ *template/ { isTemplate = 1; statement = ""; next }
    class == "" || !isOpen || isPassedOver { statement = ""; next }
    { statement = statement " " $0 }
    /[{}]/ { statement = ""; next }
    !/;/ { next }
    isTemplate { isTemplate = 0; statement = ""; next }
    statement ~ /\(/ && statement !~ /= *(default|delete|0);/ {
        name = statement
        sub(/\(.*/, "", name)
        sub(/.* /, "", name)
        mark = statement ~ /VXS_API/ ? "api" : statement ~ /VXS_INTERNAL/ ? "internal" : "none"
        print FILENAME, class "::" name, mark
    }
    { statement = "" }
' "$@")

status=0
while read -r header name mark; do
    isListed=$(grep -cF "VXS::$name(" "$list" || true)
    if [[ $mark == none ]]; then
        echo "$header: $name is marked neither VXS_API nor VXS_INTERNAL"
        status=1
    elif [[ $mark == api && $isListed == 0 || $mark == internal && $isListed != 0 ]]; then
        echo "$header: $name is marked $mark, and stands in $list $isListed times"
        status=1
    fi
done <<<"$marks"
count=$(wc -l <<<"$marks")
[[ $count -ge 40 ]] || { echo "only $count operations found: the headers are not understood"; exit 1; }
exit "$status"
