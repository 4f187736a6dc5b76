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

# What the linker would take for one: names of ours that are weak symbols in both. Those of the door are one.
weak() {
    find "$build" -path "*/$1.dir/*.o" -exec nm -C --defined-only {} + 2>/dev/null |
        sed -nE 's/^[0-9a-f]+ [VWu] //p' | grep 'varnet::' | grep -v '^DW\.ref' | sort -u
}
both=$(comm -12 <(weak varnet_objects) <(weak varnet_kit_objects))
if [ -n "$both" ]; then
    echo "functions that both define:"
    echo "$both"
    bad=1
fi
[ "$(weak varnet_kit_objects | wc -l)" -gt 10 ] || { echo "the kit's objects are not there"; bad=1; }
exit $bad
