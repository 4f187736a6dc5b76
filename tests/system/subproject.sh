#!/usr/bin/env bash
# A host takes the sources in with add_subdirectory.
# usage: subproject.sh SOURCE_DIR CXX
set -euo pipefail
source=$1 cxx=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$source/tests/consumer" -B "$work" -G Ninja -DCONSUMER_SOURCES="$source" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" >/dev/null
cmake --build "$work" --target consumer kit_consumer >/dev/null
"$work/consumer"
"$work/kit_consumer"
test ! -e "$work/varnet/program"
