#!/usr/bin/env bash
# Installs the build into a prefix of its own, and builds and runs hosts against it: by the CMake package, by pkg-config,
# and as a subproject; with one compiler.
# usage: consumer.sh BUILD_DIR SOURCE_DIR CXX
set -euo pipefail
build=$1 source=$2 cxx=$3
command -v "$cxx" >/dev/null || { echo "$cxx is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
test -x "$work/prefix/bin/varnet"

cmake -S "$source/tests/consumer" -B "$work/find" -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
cmake --build "$work/find" >/dev/null
"$work/find/consumer"
"$work/find/kit_consumer"

pc=$(dirname "$(find "$work/prefix" -name varnet64.pc)")
export PKG_CONFIG_PATH=$pc
libdir=$(pkg-config --variable=libdir varnet64)
for include in short long; do
    define=""
    [ $include = long ] && define=-DCONSUMER_LONG_INCLUDE
    # shellcheck disable=SC2046,SC2086
    "$cxx" -std=c++17 $define "$source/tests/consumer/Consumer.cpp" -o "$work/$include" $(pkg-config --cflags --libs varnet64)
    LD_LIBRARY_PATH=$libdir "$work/$include"
done
# shellcheck disable=SC2046
"$cxx" -std=c++20 "$source/tests/consumer/KitConsumer.cpp" -o "$work/kit" $(pkg-config --cflags --libs varnet64-kit)
LD_LIBRARY_PATH=$libdir "$work/kit"
"$work/prefix/bin/varnet" --version | grep -q '^varnet 0'
test -s "$work/prefix/share/man/man1/varnet.1"
test -s "$work/prefix/share/bash-completion/completions/varnet"
test -s "$work/prefix/share/zsh/site-functions/_varnet"
