#!/usr/bin/env bash
# Systems that the code is not made for are refused with a sentence, when CMake looks at them or by the compiler.
# usage: refused.sh SOURCE_DIR CXX
set -euo pipefail
source=$1 cxx=$2
refuses() {
    local sentence=$1 out
    shift
    if out=$("$@" 2>&1); then echo "not refused: $*"; exit 1; fi
    # CMake breaks the lines of its messages.
    tr -s ' \n' ' ' <<<"$out" | grep -qF -- "$sentence" || { echo "$out"; echo "without the sentence: $sentence"; exit 1; }
}
platform=$source/cmake/VarnetPlatform.cmake
refuses 'Varnet64 needs a system of 64 bits' cmake -DCMAKE_SIZEOF_VOID_P=4 -DCMAKE_CXX_BYTE_ORDER=LITTLE_ENDIAN -P "$platform"
refuses 'makes programs of 32 bits' cmake -DCMAKE_SIZEOF_VOID_P=4 -DCMAKE_CXX_BYTE_ORDER=LITTLE_ENDIAN -P "$platform"
refuses 'Varnet64 needs a little-endian processor' cmake -DCMAKE_SIZEOF_VOID_P=8 -DCMAKE_CXX_BYTE_ORDER=BIG_ENDIAN -P "$platform"
refuses 'VARNET_LIBCXX needs clang' cmake -DCMAKE_SIZEOF_VOID_P=8 -DCMAKE_CXX_BYTE_ORDER=LITTLE_ENDIAN -DVARNET_LIBCXX=ON \
    -DCMAKE_CXX_COMPILER_ID=GNU -P "$platform"
"$cxx" -std=c++20 -fsyntax-only "$source/src/foundation/Platform.cpp"
refuses '-ffast-math changes the order of arithmetic' "$cxx" -std=c++20 -fsyntax-only -ffast-math "$source/src/foundation/Platform.cpp"
