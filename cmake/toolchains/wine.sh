#!/usr/bin/env bash
# Runs a Windows program by wine, in a folder of settings that is this project's own.
# usage: wine.sh PROGRAM.EXE [ARGUMENTS]
set -euo pipefail
export WINEPREFIX=${VARNET_WINE:-${XDG_CACHE_HOME:-$HOME/.cache}/varnet-wine} WINEDEBUG=${WINEDEBUG:--all}
# Paths in any alphabet need a character set that has them.
export LC_ALL=C.UTF-8
mkdir -p "$(dirname "$WINEPREFIX")"
wine=$(command -v wine64 || ls /usr/lib/wine/wine64 2>/dev/null || command -v wine) || {
    echo "wine is not installed" >&2
    exit 77
}
# The programs of a build lie in one folder, with the libraries that they need: see CMAKE_RUNTIME_OUTPUT_DIRECTORY.
exec "$wine" "$@"
