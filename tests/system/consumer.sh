#!/usr/bin/env bash
# Installs the build into a prefix of its own, and builds and runs a host against it, both ways.
# usage: consumer.sh BUILD_DIR SOURCE_DIR CXX CXXFLAGS
set -euo pipefail
build=$1 source=$2 cxx=$3 flags=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
test -x "$work/prefix/bin/varnet"

cmake -S "$source/tests/consumer" -B "$work/find" -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_STANDARD=17 -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/find" >/dev/null
"$work/find/consumer"

pc=$(dirname "$(find "$work/prefix" -name varnet64.pc)")
export PKG_CONFIG_PATH=$pc
libdir=$(pkg-config --variable=libdir varnet64)
for include in short long; do
    define=""
    [ $include = long ] && define=-DCONSUMER_LONG_INCLUDE
    # shellcheck disable=SC2046,SC2086
    "$cxx" $flags -std=c++17 $define "$source/tests/consumer/Consumer.cpp" -o "$work/$include" \
        $(pkg-config --cflags --libs varnet64)
    LD_LIBRARY_PATH=$libdir "$work/$include"
done
"$work/prefix/bin/varnet" --help >/dev/null
