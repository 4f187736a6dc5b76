#!/usr/bin/env bash
# The library computes the same bits under two compilers and at two optimisation levels.
# usage: bits.sh SOURCE_DIR WORK_DIR PROGRAM
# PROGRAM is the one that this build has made; the other builds are made here.
set -euo pipefail
source=$1 work=$2 first=$("$3")
echo "this build $first"
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
for build in "g++ -O0" "clang++ -O0" "clang++ -O3"; do
    read -r cxx level <<<"$build"
    command -v "$cxx" >/dev/null || { echo "$cxx is not installed"; exit 77; }
    dir=$work/$cxx$level
    mkdir -p "$dir"
    {
        cmake -S "$source/tests/bits" -B "$dir" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$level" \
            "${launcher[@]}" && cmake --build "$dir" --target bits
    } >"$dir/build.log" 2>&1 || { tail -n 40 "$dir/build.log"; echo "$build could not be built"; exit 1; }
    hash=$("$dir/bits")
    echo "$build $hash"
    [ "$hash" = "$first" ] || { echo "the bits differ"; exit 1; }
done
