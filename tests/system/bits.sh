#!/usr/bin/env bash
# The library computes the same bits under two compilers and at two optimisation levels.
# usage: bits.sh SOURCE_DIR WORK_DIR
set -euo pipefail
source=$1 work=$2
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
first=""
for cxx in g++ clang++; do
    command -v "$cxx" >/dev/null || { echo "$cxx is not installed"; exit 77; }
    for level in -O0 -O3; do
        dir=$work/$cxx$level
        cmake -S "$source/tests/bits" -B "$dir" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$level" \
            "${launcher[@]}" >/dev/null
        cmake --build "$dir" --target bits >/dev/null
        hash=$("$dir/bits")
        echo "$cxx $level $hash"
        [ -z "$first" ] && first=$hash
        [ "$hash" = "$first" ] || { echo "the bits differ"; exit 1; }
    done
done
