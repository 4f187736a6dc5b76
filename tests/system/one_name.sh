#!/usr/bin/env bash
# The engine and the kit share a namespace, and the program holds both: no name stands for two types or functions.
# usage: one_name.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source=$1 build=$2
bad=0

# Types that headers define: a name, and what follows is no semicolon.
twice=$(cd "$source" && grep -hoE '^(class|struct|enum class|enum|union) (alignas\([0-9]+\) )?[A-Z][A-Za-z0-9]*( final)?( :[^;]*)? \{' \
    -r src kit include/varnet --include=*.h | sed -E 's/alignas\([0-9]+\) //; s/enum class/enum/' | awk '{ print $2 }' | sort | uniq -d)
if [ -n "$twice" ]; then
    echo "types that are defined twice:" $twice
    bad=1
fi

# Numbers by name that headers define: where their address is taken, they are variables that the linker takes for one.
twice=$(cd "$source" && comm -12 <(grep -rhoE '^inline constexpr [^=({]* k[A-Z][A-Za-z0-9]*' src --include=*.h | sed 's/.* //' | sort -u) \
    <(grep -rhoE '^inline constexpr [^=({]* k[A-Z][A-Za-z0-9]*' kit --include=*.h | sed 's/.* //' | sort -u))
if [ -n "$twice" ]; then
    echo "numbers that engine and kit both define:" $twice
    bad=1
fi

# What the linker would take for one: names of ours that both define. Those of the door are one. An inline function that is
# not there in this build, since the compiler has put it where it is called, is one of the kit's headers: those count, too.
defined() {
    find "$build" -path "*/$1.dir/*.o" -exec nm -C --defined-only {} + 2>/dev/null |
        sed -nE 's/^[0-9a-f]+ [TVWBDRu] //p' | grep 'varnet::' | grep -v '^DW\.ref' | sort -u
}
weak() {
    find "$build" -path "*/$1.dir/*.o" -exec nm -C --defined-only {} + 2>/dev/null |
        sed -nE 's/^[0-9a-f]+ [VWu] //p' | grep 'varnet::' | grep -v '^DW\.ref' | sort -u
}
inline_functions() {
    (cd "$source" && grep -rhoE '^inline [^(=]*\b[A-Z][A-Za-z0-9]*\(' "$1" --include=*.h | sed -E 's/.*[ &*]([A-Z][A-Za-z0-9]*)\($/\1/' | sort -u)
}
functions() { defined "$1" | sed -nE 's/^varnet::([A-Z][A-Za-z0-9]*)\(.*/\1/p' | sort -u; }
both=$(comm -12 <(defined varnet_objects) <(defined varnet_kit_objects);
    comm -12 <(inline_functions kit) <(functions varnet_objects);
    comm -12 <(inline_functions src) <(functions varnet_kit_objects))
if [ -n "$both" ]; then
    echo "functions that both define:"
    echo "$both"
    bad=1
fi
[ "$(weak varnet_kit_objects | wc -l)" -gt 10 ] || { echo "the kit's objects are not there"; bad=1; }
exit $bad
