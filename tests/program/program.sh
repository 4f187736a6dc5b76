#!/usr/bin/env bash
# For the tests of the varnet program, which source it: a folder of their own to work in, and what to expect.
set -euo pipefail
varnet=$1
tests=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAILED: $*"; exit 1; }
# expect CODE COMMAND...: output goes to out and err
expect() {
    local wanted=$1 code=0
    shift
    "$@" >out 2>err || code=$?
    [ "$code" -eq "$wanted" ] || { cat out err; fail "exit code $code, wanted $wanted: $*"; }
}
# row PATTERN: a row of the table that the last command printed
row() { grep -qE -- "$1" out || { cat out; fail "no row $1"; }; }
# keys NAMES...: the names in the JSON that the last command printed, at any depth, are these and no others
keys() {
    local found wanted
    found=$(grep -oE '"[a-z0-9_]+":' out | tr -d '":' | sort -u | tr '\n' ' ')
    wanted=$(printf '%s\n' schema "$@" | sort -u | tr '\n' ' ')
    [ "$found" = "$wanted" ] || { cat out; fail "the names are $found, and not $wanted"; }
}
# Of the facts that several commands tell: how a part was read, and what it measures.
intake_keys="type facets_in_file open_edges_in_file facets_lost not_finite degenerate doubled collinear_turned split
    welded weld_tolerance many_facet_edges notes"
measure_keys="facets vertices open_edges box area volume"
layer_keys="layers contours open_paths layers_with_open_paths gaps_closed longest_gap_closed longest_gap missing_volume holes_filled points
    contour_length mesh_volume layer_volume cut_volume strokes support_strokes support_solids travel starts bytes"
# table COMMAND...: what it prints is what stands on standard input, line for line, but for blanks
table() {
    expect 0 "$@"
    shown
}
# shown [FILE]: so for what the last command has printed
shown() {
    tr -s ' ' <"${1:-out}" >found
    sed -E 's/^  (\S)/ \1/' | diff - found || fail "not the table that was wanted"
}
# json COMMAND...: what it prints is the JSON that stands on standard input, every name and value, but for blanks
json() {
    expect 0 "$@"
    document
}
# document [FILE]: so for what the last command has printed
document() {
    packed <"${1:-out}" >found
    packed | diff - found || fail "not the JSON that was wanted"
}
packed() { sed 's/^ *//' | tr -d '\n' | sed -E 's/([][{},:]) +/\1/g; s/ +([]}])/\1/g; s/,/,\n/g; s/$/\n/'; }
# messages: those of the last command are the lines on standard input, and no others
messages() { diff - err || fail "not the messages that were wanted"; }
# quiet: the last command had nothing to say
quiet() { [ ! -s err ] || fail "a message: $(cat err)"; }
# says PATTERN: the message of the last command
says() { grep -qE -- "$1" err || { cat err; fail "no message $1"; }; }
# nothing_left: no half-written file stands anywhere in the folder
nothing_left() { ! find . -name '*.part' | grep . || fail "a half-written file is left"; }
# cube FILE X Y Z SIZE...: an ASCII STL of cubes, each given by its lowest corner and its size
cube() {
    local file=$1
    shift
    printf 'solid cubes\n' >"$file"
    while [ $# -ge 4 ]; do
        awk -v x="$1" -v y="$2" -v z="$3" -v s="$4" 'BEGIN {
            split("0 2 1 1 2 3 4 5 6 5 7 6 0 1 4 1 5 4 2 6 3 3 6 7 0 4 2 2 4 6 1 3 5 3 7 5", v, " ")
            for (i = 1; i <= 36; i += 3) {
                print "facet normal 0 0 0\nouter loop"
                for (k = 0; k < 3; ++k) {
                    n = v[i + k]
                    printf "vertex %.9g %.9g %.9g\n", x + s * (n % 2), y + s * (int(n / 2) % 2), z + s * int(n / 4)
                }
                print "endloop\nendfacet"
            }
        }' >>"$file"
        shift 4
    done
    printf 'endsolid cubes\n' >>"$file"
}
# facets POINTS...: facets of an ASCII STL, three points each
facets() { printf 'facet normal 0 0 0\nouter loop\nvertex %s\nvertex %s\nvertex %s\nendloop\nendfacet\n' "$@"; }
# add FILE POINTS...: facets at the end of an ASCII STL
add() {
    sed -i '$d' "$1"
    facets "${@:2}" >>"$1"
    echo 'endsolid' >>"$1"
}
# turned FILE...: each facet with its second and third corner first
turned() {
    awk '/^vertex/ { v[++n] = $0; if (n == 3) { print v[2]; print v[1]; print v[3]; n = 0 }; next } { print }' "$@"
}
# binary FILE OUT: the facets of an ASCII STL as binary STL
binary() { expect 0 "$varnet" convert "$1" "$2"; }
# interposed: makes a library that is loaded ahead of the C library, or leaves the test where that cannot be done
interposed() {
    if [ "$(uname)" != Linux ] || ! command -v c++ >/dev/null; then
        echo "skipped: no clock can be put in the place of the system's"
        exit 77
    fi
    c++ -std=c++17 -O1 -shared -fPIC "$tests/Interposed.cpp" -o "$work/interposed.so" -ldl
}
# with SETTING... -- COMMAND...: a command with that library, of which the settings are told there
with() {
    local settings=()
    while [ "$1" != -- ]; do settings+=("$1") && shift; done
    shift
    env LD_PRELOAD="$work/interposed.so" ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}verify_asan_link_order=0" \
        "${settings[@]}" "$@"
}
# wait_for COMMAND...: until it succeeds, a minute at most
wait_for() {
    local n
    for n in $(seq 600); do
        "$@" && return
        sleep 0.1
    done
    fail "waited for a minute: $*"
}
# interrupted JOB: the exit code and the message of a job that was stopped
interrupted() {
    local code=0
    wait "$1" || code=$?
    [ "$code" -eq 1 ] || fail "exit code $code after a signal"
    says 'varnet: interrupted'
    nothing_left
}
