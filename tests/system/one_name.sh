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

# What the linker would take for one: names of ours that both define. Those of the door are one.
defined() {
    find "$build" -path "*/$1.dir/*.o" -exec nm -C --defined-only {} + 2>/dev/null |
        sed -nE 's/^[0-9a-f]+ [TVWBDRu] //p' | grep 'varnet::' | grep -v '^DW\.ref' | sort -u
}
# Inline functions are not there where the compiler has put them into their callers: what headers declare counts, too, by
# the types of the arguments.
declared() {
    (cd "$source" && grep -rhoE '^[a-z][A-Za-z0-9_:<>,&* ]* [*&]*[A-Z][A-Za-z0-9]*\([^()]*\)( noexcept)?( \{.*|;)$' "$1" --include=*.h) | awk '{
        sub(/\)( noexcept)?( \{.*|;)$/, "")
        at = index($0, "(")
        count = split(substr($0, at + 1), types, ",")
        name = substr($0, 1, at - 1)
        sub(/.*[ *&]/, "", name)
        for (i = 1; i <= count; ++i) {
            sub(/ *=.*/, "", types[i])
            gsub(/\[\[[a-z_]*\]\]|^ +| +$/, "", types[i])
            sub(/ +[A-Za-z_][A-Za-z0-9_]*$/, "", types[i])
            sub(/^ +/, "", types[i])
            name = name (i == 1 ? "(" : ", ") types[i]
        }
        print name ")"
    }' | sort -u
}
both=$(comm -12 <(defined varnet_objects) <(defined varnet_kit_objects); comm -12 <(declared src) <(declared kit))
if [ -n "$both" ]; then
    echo "functions that both define:"
    echo "$both"
    bad=1
fi
[ "$(declared src | wc -l)" -gt 50 ] && [ "$(declared kit | wc -l)" -gt 50 ] || { echo "the headers' functions are not found"; bad=1; }
[ "$(defined varnet_kit_objects | wc -l)" -gt 10 ] || { echo "the kit's objects are not there"; bad=1; }
exit $bad
