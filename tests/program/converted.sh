#!/usr/bin/env bash
# All that varnet convert tells, of meshes and of slices, and what it refuses.
# usage: converted.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

part() { sed '1d;$d' "$1"; }
solid() { cube one "$@" && part one; }
bytes() { stat -c %s "$1"; }
with_comma() { bytes "$1" | sed -E 's/^(.+)(...)$/\1,\2/'; }
share() { awk -v bytes="$(bytes "$1")" -v stl="$2" 'BEGIN { printf "%.10g", bytes / stl }'; }

# ---- meshes

# A cube of 10 at the height of 3, a corner within it that shares its first facet, a cube that lacks the side of the highest x,
# and a facet that is no number. Strips hold a facet once: of 26 come 25 back, and three edges of the cube are open, too. What
# is missing of the volume about the origin is that of the facet, of 50 at a depth of -3: a third of 150, which is added.
{
    echo 'solid shared'
    solid 0 0 3 10
    facets '0 0 3' '0 10 3' '10 0 3' '0 0 3' '10 0 3' '2 2 9' '10 0 3' '0 10 3' '2 2 9' '0 10 3' '0 0 3' '2 2 9'
    solid -10 0 0 10 | head -n -14
    facets '0 0 0' '1 one 1' '0 0 9'
    echo endsolid
} >shared.stl
shared() { # what is read
    cat <<'TABLE'
  type ASCII STL
  facets in the file 27
  open edges in the file 4
  facets that could not be read 1
  edges of more than two facets 3
  note 1 facet of 27 could not be read, the first in line 184
TABLE
}
expect 0 "$varnet" convert shared.stl shared.csm --floats
{
    echo 'shared.stl -> shared.csm'
    echo '  formats ASCII STL -> CSM in strips'
    shared
    cat <<TABLE
  bytes $(with_comma shared.stl) -> $(bytes shared.csm)
  facets 26, read back 25
  open edges 4, read back 7
  volume, mm3 2100, read back 2150
  largest coordinate error, mm 0
  size, of binary STL $(share shared.csm $((84 + 50 * 26)))
TABLE
} | shown
messages <<'TEXT'
varnet: warning: shared.stl: 1 of 27 facets could not be read
varnet: warning: shared.csm: the format has opened 3 edges: --plain keeps every facet as it is
varnet: warning: shared.csm: 1 facets did not come back
TEXT
expect 0 "$varnet" convert shared.stl shared.csm --floats --json
size=$(sed -nE 's/^  "size_of_stl": (.*),$/\1/p' out)
awk -v a="$size" -v b="$(share shared.csm 1384)" 'BEGIN { exit !(a - b < 1e-9 && b - a < 1e-9) }' || fail "the size of $size"
document <<JSON
{ "bytes": [$(bytes shared.stl), $(bytes shared.csm)], "collinear_turned": 0, "degenerate": 0, "doubled": 0,
  "facets": [26, 25], "facets_in_file": 27, "facets_lost": 1, "format": "CSM in strips", "largest_error": 0.0,
  "many_facet_edges": 3, "not_finite": 0, "notes": ["1 facet of 27 could not be read, the first in line 184"],
  "open_edges": [4, 7], "open_edges_in_file": 4, "schema": 1, "size_of_stl": $size, "split": 0, "type": "ASCII STL",
  "volume": [2100.0, 2150.0], "weld_tolerance": 0.0, "welded": 0 }
JSON
# Every facet as it is: 88 bytes, 12 a vertex, of which the cube has 8, the corner one more and the open cube 8, and 12 a facet.
expect 0 "$varnet" convert shared.stl plain.csm --plain
{
    echo 'shared.stl -> plain.csm'
    echo '  formats ASCII STL -> plain CSM'
    shared
    cat <<TABLE
  bytes $(with_comma shared.stl) -> 604
  facets 26, read back 26
  open edges 4, read back 4
  volume, mm3 2100, read back 2100
  largest coordinate error, mm 0
  size, of binary STL $(awk 'BEGIN { printf "%.10g", 604 / 1384 }')
TABLE
} | shown
messages <<<'varnet: warning: shared.stl: 1 of 27 facets could not be read'
expect 0 "$varnet" convert shared.stl ring.csm --ring
row '^  formats +ASCII STL -> CSM ring stream$'
row '^  facets +26, read back 25$'
# The open edges of the input are none that the format has opened.
expect 0 "$varnet" convert plain.csm again.stl
row '^  formats +plain CSM -> binary STL$'
row '^  open edges +4, read back 4$'
quiet
# Points of 16 bits: what was 10 comes back as the box says.
cube cube.stl 0 0 0 10
expect 0 "$varnet" convert cube.stl strips.csm
rounded=$(sed -nE 's/^  largest coordinate error, mm +//p' out)
expect 0 "$varnet" info strips.csm
awk -v error="$rounded" '$1 == "box" { d = 10 - $6; exit !(error > 0 && d - error < 1e-9 && error - d < 1e-9) }' out ||
    fail "an error of $rounded"
# The kinds of CSM are of different sizes: strips of points of 16 bits, of 32 bits, and their header.
expect 0 "$varnet" convert cube.stl floats.csm --floats
[ "$(bytes floats.csm)" -gt "$(bytes strips.csm)" ] || fail "points of floats"
expect 0 "$varnet" convert cube.stl cube_10.STL --scale 10
row '^  volume, mm3 +1000000, read back 1000000$'
[ "$(bytes cube_10.STL)" -eq 684 ] || fail "a name in capitals"
expect 0 "$varnet" convert cube.stl AZ.CSM --plain
row 'STL -> plain CSM$'

# What does not go together is refused by its name, before anything is written.
refused() { # MESSAGE ARGUMENTS...
    expect 2 "$varnet" convert "${@:2}"
    head -n 1 err | grep -qxF -- "$1" || { cat err; fail "not the message $1"; }
    [ ! -s out ] || fail "a table for what was refused"
    [ ! -e "$3" ] || fail "a file for what was refused"
}
echo 'CSM5.0' >header
for option in --floats --ring --plain '--header header'; do
    # shellcheck disable=SC2086
    refused 'no.stl: --floats, --ring, --plain and --header are for .csm' cube.stl no.stl $option
    # shellcheck disable=SC2086
    refused 'no.cli: --floats, --ring, --plain and --header are for .csm' cube.stl no.cli $option
done
for extension in stl csm foo; do refused "no.$extension: --mode is for .cli" cube.stl no.$extension --mode ascii; done
for name in no.foo no no.st no.csmm stl no.ply; do refused "$name: can write .stl, .csm and .cli" cube.stl $name; done
for pair in '--ring --floats' '--ring --plain' '--ring --header header' '--plain --floats' '--plain --header header'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" convert cube.stl no.csm $pair
    says 'excludes'
done
[ ! -e no.csm ] || fail "a file for what was refused"
expect 0 "$varnet" convert cube.stl headed.csm --floats --header header

# ---- slices

# In halves of a millimetre: a square of 10 and an open path; two strokes, and one.
cat >slices.cli <<'CLI'
$$HEADERSTART
$$ASCII
$$UNITS/0.5
$$LAYERS/5
$$HEADEREND
$$GEOMETRYSTART
// a comment
$$LAYER/2
$$POLYLINE/1,1,5,0,0,20,0,20,20,0,20,0,0
$$POLYLINE/3,2,2,0,0,6,8
$$LAYER/4
$$HATCHES/1,2,0,0,6,8,0,0,0,20
$$HATCHES/1,1,2,2,4,6
$$LAYER/6
$$LAYER/8
$$GEOMETRYEND
CLI
for mode in 'ascii:text' 'binary:binary' 'coc:disguised'; do
    word=${mode%:*} name="CLI slices, ${mode#*:}"
    expect 0 "$varnet" convert slices.cli "$word.cli" --mode "$word"
    sed -i '/largest difference/d' out
    shown <<TABLE
slices.cli -> $word.cli
  formats CLI slices, text -> $name
  note the header announces 5 layers, and there are 4
  note 1 comments were passed over
  bytes $(bytes slices.cli) -> $(bytes "$word.cli")
  layers 4, read back 4
  contours and paths 2, read back 2
  points 6, read back 6
  strokes of fill 3, read back 3
TABLE
    quiet
    expect 0 "$varnet" layers "$word.cli"
    row "^  type +$name\$"
    # The mode is that of the input where none is named.
    expect 0 "$varnet" convert "$word.cli" same.CLI
    row "^  formats +$name -> $name\$"
    ! grep -q note out || fail "a note on what was put right before"
done
expect 0 "$varnet" convert slices.cli ascii.cli --mode binary --json
document <<JSON
{ "bytes": [$(bytes slices.cli), $(bytes ascii.cli)], "format": "CLI slices, binary", "largest_difference": 0.0, "layers": [4, 4],
  "notes": ["the header announces 5 layers, and there are 4", "1 comments were passed over"], "paths": [2, 2], "points": [6, 6],
  "schema": 1, "strokes": [3, 3] }
JSON
# Text has three digits behind the point, and two for heights: of a point, a height and a stroke alone each is told.
drawn() {
    printf '%s\n' '$$HEADERSTART' '$$ASCII' '$$UNITS/1' '$$LAYERS/2' '$$HEADEREND' '$$GEOMETRYSTART' '$$LAYER/1' \
        "\$\$POLYLINE/1,1,4,0,0,$1,$2,4,4,0,0" "\$\$LAYER/$3" "\$\$HATCHES/1,1,$4,1,$5,3" '$$GEOMETRYEND'
}
for figures in '8.00025 0 2 1 2' '8 0.00025 2 1 2' '8 0 2.00025 1 2' '8 0 2 1.00025 2' '8 0 2 1 2.00025'; do
    # shellcheck disable=SC2086
    drawn $figures >drawn.cli
    expect 0 "$varnet" convert drawn.cli rounded.cli
    row '^  largest difference, mm +0\.00025$'
done
drawn 8 0 2.00390625 1 2 >drawn.cli
expect 0 "$varnet" convert drawn.cli rounded.cli --json
row '^  "largest_difference": 0\.00390625,$'
# Into a pipe: what cannot be read back is not compared, and standard output stays empty.
mkfifo pipe.cli
for option in '' --json; do
    cat pipe.cli >through &
    # shellcheck disable=SC2086
    expect 0 "$varnet" convert slices.cli pipe.cli --mode binary $option
    wait $!
    cmp through binary.cli || fail "slices through a pipe"
    [ ! -s out ] || fail "a table on standard output, beside a pipe"
    if [ -z "$option" ]; then
        shown err <<'TABLE'
slices.cli -> pipe.cli
  formats CLI slices, text -> CLI slices, binary
  note the header announces 5 layers, and there are 4
  note 1 comments were passed over
TABLE
    else
        document err <<'JSON'
{ "format": "CLI slices, binary", "notes": ["the header announces 5 layers, and there are 4", "1 comments were passed over"],
  "schema": 1 }
JSON
    fi
done
# A path without points is none in text: the table says so, and so does the exit code.
cp slices.cli empty.cli
sed -i 's|^..LAYER/6|&\n$$POLYLINE/1,1,0\n$$POLYLINE/1,2,0\n$$POLYLINE/1,1,1,5,5|' empty.cli
expect 0 "$varnet" convert empty.cli binary_paths.cli --mode binary
row '^  contours and paths +5, read back 5$'
expect 1 "$varnet" convert empty.cli text_paths.cli
row '^  contours and paths +5, read back 3$'
row '^  points +7, read back 7$'
messages <<<'varnet: text_paths.cli: less can be read back than was written: --mode binary holds it all'
expect 1 "$varnet" convert empty.cli text_paths.cli --json
document <<JSON
{ "bytes": [$(bytes empty.cli), $(bytes text_paths.cli)], "format": "CLI slices, text", "largest_difference": 0.0,
  "layers": [4, 4], "notes": ["the header announces 5 layers, and there are 4", "1 comments were passed over"], "paths": [5, 3],
  "points": [7, 7], "schema": 1, "strokes": [3, 3] }
JSON
# What is broken is not taken for whole.
head -c $(($(bytes binary.cli) - 3)) binary.cli >cut.cli
expect 1 "$varnet" convert cut.cli never.cli
says '^varnet: cut\.cli, byte [0-9]+: '
[ ! -s out ] && [ ! -e never.cli ] || fail "slices of a broken file"
# Paths of more than 10,239 characters are counted.
{
    printf '%s\n' '$$HEADERSTART' '$$ASCII' '$$UNITS/1' '$$LAYERS/1' '$$HEADEREND' '$$GEOMETRYSTART' '$$LAYER/1'
    for n in 1 2 3; do
        printf '$$POLYLINE/1,1,2001'
        awk -v n=$n 'BEGIN { for (i = 0; i < 2000; ++i) printf ",%d,%d", i, n + i % 2; print ",0," n }'
    done
    echo '$$GEOMETRYEND'
} >long.cli
expect 0 "$varnet" convert long.cli long_text.cli
messages <<<'varnet: warning: long_text.cli: 3 paths have lines of over 10,239 characters, which some readers take for two: --mode binary has no such limit'
nothing_left
