#!/usr/bin/env bash
# wine.sh PREFIX PROGRAM ARGUMENT...: runs a console program for Windows. PREFIX is a folder that Wine
# keeps its files in; it is made at the first run.
set -euo pipefail
export WINEPREFIX=$1
shift

# Names of files are UTF-8 whatever the caller's language is, no window is asked for, and what the
# compiler's runtime consists of is found.
export LC_ALL=C.UTF-8 WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='
unset DISPLAY WAYLAND_DISPLAY
runtime=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
export WINEPATH="Z:${runtime//\//\\};Z:\\usr\\x86_64-w64-mingw32\\lib"

# Debian leaves this program out of the path.
exec /usr/lib/wine/wine64 "$@"
