#!/usr/bin/env bash
# Compiles each public header alone, and all of them in two orders, without a warning.
# usage: headers.sh SOURCE_DIR CXX STANDARD HEADER...
set -euo pipefail
source=$1 cxx=$2 standard=$3
shift 3
command -v "$cxx" >/dev/null || { echo "$cxx is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
compile() {
    "$cxx" -std="$standard" -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I "$source/include/varnet64" "$1"
}
forward=""
backward=""
for header in "$@"; do
    line="#include \"$header\""
    printf '%s\n' "$line" >"$work/one.cpp"
    compile "$work/one.cpp"
    forward="$forward$line
"
    backward="$line
$backward"
done
printf '%s' "$forward" >"$work/all.cpp"
compile "$work/all.cpp"
printf '%s' "$backward" >"$work/all.cpp"
compile "$work/all.cpp"
# No header but one defines a macro.
! grep -nE '^[[:space:]]*#[[:space:]]*define' $(printf "$source/include/varnet64/%s " "$@") | grep -v 'foundation/Export.h'
