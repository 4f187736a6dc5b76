#!/usr/bin/env bash
# Runs the tests that are named for another system, its digest against the table, and the whole road in a folder whose
# name is in three alphabets. Prints the count of each.
# usage: run.sh SYSTEM BUILD_DIR [EMULATOR...]
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
system=$1 build=$(readlink -f "$2")
shift 2
emulator=("$@")
# Some programs are run in another folder.
if [ -f "${1:-}" ]; then emulator[0]=$(readlink -f "$1"); fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED on $system: $*"; exit 1; }

program() { find "$build/bin" "$build/tests" "$build/program" -maxdepth 1 \( -name "$1" -o -name "$1.exe" \) -type f 2>/dev/null | head -n 1; }
without=$(sed -nE "s/^without $system ([^:]+): .*/\1/p" "$here/tests.txt" | paste -sd:)
total=0
for name in $(sed -nE "s/^run (all|$system) ([^:]+): .*/\2/p" "$here/tests.txt"); do
    file=$(program "$name")
    [ -n "$file" ] || fail "$name is not built"
    tried() {
        "${emulator[@]}" "$file" --gtest_filter="*${without:+-$without}" --gtest_brief=1 >"$work/out" 2>&1 </dev/null &&
            # A program that breaks down may end as if it had not.
            grep -aqE '^\[  PASSED  \]' "$work/out"
    }
    # Tests that watch the system's memory or its clock may be disturbed where other work goes on beside an emulator.
    tried || tried || {
        tail -n 60 "$work/out" | cut -c1-400
        fail "$name"
    }
    count=$(grep -aoE '[0-9]+ tests? from' "$work/out" | head -n 1 | grep -oE '^[0-9]+' || true)
    skipped=$(grep -acE '^\[  SKIPPED \] [^ ]+ \(' "$work/out" || true)
    echo "$system: $name: $count tests passed${skipped:+, of which $skipped skipped}"
    total=$((total + count))
done
echo "$system: $total tests in all"

# A host that is built against what was installed.
toolchain=$here/../../cmake/toolchains/$system.cmake
if [ -f "$toolchain" ]; then
    prefix=$work/prefix
    cmake --install "$build" --prefix "$prefix" >/dev/null
    cmake -S "$here/../consumer" -B "$work/consumer" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DVarnet64_DIR="$(dirname "$(find "$prefix" -name Varnet64Config.cmake)")" >/dev/null
    cmake --build "$work/consumer" >/dev/null
    for host in consumer kit_consumer; do
        file=$(find "$work/consumer" -maxdepth 1 -type f \( -name $host -o -name $host.exe \))
        # On Windows the libraries are looked for beside the program.
        if [ "$system" = windows ]; then cp "$file" "$prefix/bin/" && file=$prefix/bin/$host.exe; fi
        (cd "$work" && "${emulator[@]}" "$file" >out 2>&1) || { cat "$work/out"; fail "$host, against the installed package"; }
    done
    echo "$system: hosts build against the installed package and run"
fi
if [ "$system" = windows ]; then
    # As tests/system/exports.sh has it for Linux: the interface, and nothing else.
    x86_64-w64-mingw32-objdump -p "$build/bin/Varnet64.dll" | sed -n '/Ordinal\/Name Pointer/,$p' | awk '{ print $NF }' | c++filt >"$work/names"
    grep -qF 'CSTLModel::AddFacet(tagFACET&)' "$work/names" && grep -qF 'fnVarnet()' "$work/names" || fail "the interface is not exported"
    ! grep -E '^(std|__gnu_cxx|varnet)::' "$work/names" || fail "more than the interface is exported"
    echo "$system: Varnet64.dll exports $(wc -l <"$work/names") names, all of the interface"
fi

varnet=$(program varnet)
"${emulator[@]}" "$varnet" selfcheck --against "$here/../bits/digests.txt" >"$work/out" 2>&1 || { cat "$work/out"; fail "the digest"; }
echo "$system: $(grep -aE '^all = ' "$work/out" | tr -d '\r'), as in the table;$(grep -a 'largest share' "$work/out" | tr -s ' ' | tr -d '\r')"

folder="$work/zażółć gęślą 中文 😀"
mkdir "$folder"
cd "$folder"
"${emulator[@]}" "$varnet" demo "części 部品 🔧" >"$work/out" 2>&1 || { tail -n 20 "$work/out"; fail "the demo"; }
test -s "części 部品 🔧/bracket_repaired.stl" && test -s "części 部品 🔧/index.html" || fail "the demo's files are not there"
"${emulator[@]}" "$varnet" slice "części 部品 🔧/bracket.stl" -o "wycięte 切片.cli" >"$work/out" 2>&1 || fail "slice"
"${emulator[@]}" "$varnet" info "wycięte 切片.cli" --json >"$work/out" 2>&1 || fail "info"
grep -qF 'wycięte 切片.cli' "$work/out" || fail "standard output is no UTF-8"
echo "$system: varnet demo, slice and info in a folder of three alphabets"
