#!/usr/bin/env bash
# The varnet program, as a person uses it: results, messages, exit codes, no half-written files.
# usage: varnet.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
tail -n 1 out | grep -qE '^[0-9]+ checks passed in [0-9.]+ seconds' || fail "the demo's last line"
test -s made/bracket.stl && test -s made/bracket_ascii.stl && test -s made/bracket_repaired.stl

expect 0 "$varnet" info made/bracket.stl
grep -q '1,060 of 1,061 announced, 1 dropped' out || fail "announced and accepted facets"
grep -qE 'doubled facets +1$' out || fail "doubled facets"
expect 0 "$varnet" info --json made/bracket.stl made/bracket_ascii.stl
grep -q '"type": "ASCII STL"' out && grep -q '"facets": 1060' out && grep -q '"rim_edges": 0' out || fail "JSON"

expect 0 "$varnet" repair made/bracket.stl fixed.stl
grep -qE 'facets turned to agree +118$' out || fail "facets turned"
cmp fixed.stl made/bracket_repaired.stl || fail "the repaired file"
[ "$(stat -c %s fixed.stl)" -eq $((84 + 50 * 1060)) ] || fail "the size of the repaired file"

expect 1 "$varnet" info missing.stl
grep -q 'missing.stl: no such file' err || fail "message for a missing file"
[ ! -s out ] || fail "output for a missing file"
expect 1 "$varnet" info made
grep -q 'is a folder' err || fail "message for a folder"
printf 'short' >short.stl
expect 1 "$varnet" info short.stl made/bracket.stl
grep -q 'short.stl: too short' err || fail "message for a short file"
grep -q 'made/bracket.stl' out || fail "the other files are shown all the same"

expect 2 "$varnet"
expect 2 "$varnet" info
expect 2 "$varnet" nonsense
expect 2 "$varnet" repair made/bracket.stl
expect 0 "$varnet" --help

# What cannot be written leaves no file, and leaves an older one as it was.
expect 1 "$varnet" repair made/bracket.stl nofolder/out.stl
grep -q 'nofolder/out.stl: cannot be created' err || fail "message for a folder that is not there"
expect 1 "$varnet" repair missing.stl fixed.stl
[ "$(stat -c %s fixed.stl)" -eq $((84 + 50 * 1060)) ] || fail "the older file"
ls | grep -q '\.part$' && fail "a half-written file is left"


# Ctrl-C during a long read: a file of 40 million collapsed triangles, which takes no room on the disk.
head -c 80 /dev/zero >long.stl
printf '\310\377\377\077' >>long.stl
truncate -s 2G long.stl
set -m
"$varnet" repair long.stl out.stl >out 2>err &
job=$!
sleep 0.5
kill -INT "$job"
code=0
wait "$job" || code=$?
[ "$code" -eq 1 ] || fail "exit code $code after Ctrl-C"
grep -q 'interrupted' err || fail "message after Ctrl-C"
[ ! -e out.stl ] && [ ! -e out.stl.part ] || fail "a file is left after Ctrl-C"
# ---- shells, surfaces, support

expect 0 "$varnet" split made/bracket_support.stl -o shells
grep -qE 'shells +3$' out || fail "the number of shells"
[ "$(ls shells | tr '\n' ' ')" = "bracket_support_1.STL bracket_support_2.STL bracket_support_3.STL " ] ||
    fail "the names of the shells: $(ls shells)"
expect 0 "$varnet" info shells/bracket_support_1.STL
grep -qE 'open edges +0$' out || fail "a shell is closed"
cp made/bracket_repaired.stl ab
expect 0 "$varnet" split ab -o short
[ "$(ls short)" = "_1.STL" ] || fail "the shell of a file with a short name: $(ls short)"
expect 1 "$varnet" split missing.stl -o nowhere
[ ! -e nowhere ] || fail "a folder for a file that is not there"
expect 1 "$varnet" split made/bracket.stl -o ab
grep -q 'ab: cannot be made' err || fail "message for a folder that is a file"

expect 0 "$varnet" surfaces fixed.stl -o surfaces.ply
grep -qE 'surfaces +21$' out || fail "the number of surfaces"
[ "$(stat -c %s surfaces.ply)" -eq "$(stat -c %s made/bracket_surfaces.ply)" ] || fail "the size of the PLY file"
head -n 4 surfaces.ply | grep -aq 'element vertex 520' || fail "the vertices of the PLY file"
grep -aq 'element face 1060' surfaces.ply || fail "the faces of the PLY file"
expect 0 "$varnet" surfaces fixed.stl --judge winding
grep -qE 'surfaces +1$' out || fail "shells as surfaces"
expect 0 "$varnet" surfaces fixed.stl --judge eight
expect 2 "$varnet" surfaces fixed.stl --judge none
expect 1 "$varnet" surfaces fixed.stl -o nofolder/surfaces.ply
grep -q 'nofolder/surfaces.ply: cannot be created' err || fail "message for a PLY file that cannot be made"

expect 0 "$varnet" support fixed.stl -o support.stl --down 3 --ply support.ply
grep -q 'dropped: rests on the plate' out && grep -q 'kept: faces down' out || fail "the table of regions"
grep -qE 'suspended edges +1 chains, 15 mm$' out || fail "the keel"
cmp support.stl made/bracket_support.stl || fail "the solids of the demo"
cmp support.ply made/bracket_support.ply || fail "the coloured regions of the demo"
expect 0 "$varnet" info support.stl
grep -qE 'open edges +0$' out || fail "solids of a height are closed"
expect 0 "$varnet" support fixed.stl -o plate.stl --to-plate --json
grep -q '"supported": true' out && grep -q '"solids": 3' out && grep -q '"length": 15.0' out || fail "the regions as JSON"
expect 0 "$varnet" support fixed.stl -o none.stl --angle 0 --edge-length 1000
grep -qE 'solids +0, 0 facets$' out || fail "nothing to support"
[ "$(stat -c %s none.stl)" -eq 84 ] || fail "a file without solids"
for wrong in '--down -1' '--angle 100' '--connect corner' '--min-area -1' '--down 3 --to-plate' '--edge-length x'; do
    expect 2 "$varnet" support fixed.stl -o wrong.stl $wrong
done
[ ! -e wrong.stl ] || fail "a file for wrong arguments"
expect 1 "$varnet" support missing.stl -o wrong.stl
expect 1 "$varnet" support fixed.stl -o nofolder/support.stl

# ---- converting

for option in '' --floats --ring --plain; do
    expect 0 "$varnet" convert made/bracket.stl to.csm $option
    grep -qE 'facets +1,060, read back 1,060$' out || fail "facets of convert $option"
    grep -qE 'largest coordinate error, mm +(0|0\.00[01][0-9]*|[0-9.]+e-0[5-9])$' out || fail "error of convert $option"
    expect 0 "$varnet" info to.csm
    grep -qE 'facets +1,060$' out || fail "info of convert $option"
    expect 0 "$varnet" convert to.csm back.stl
    [ "$(stat -c %s back.stl)" -eq $((84 + 50 * 1060)) ] || fail "the way back of convert $option"
done
grep -q 'plain CSM -> binary STL' out || fail "the formats of a conversion"
printf 'a part CSM5.0' >header
expect 0 "$varnet" convert made/bracket_ascii.stl to.csm --header header
head -c 13 to.csm | cmp - header || fail "the header"
grep -q 'ASCII STL -> CSM in strips' out || fail "the formats with a header"
printf 'no tag' >header
expect 1 "$varnet" convert made/bracket.stl not.csm --header header
for wrong in 'to.foo' 'to.stl --ring' 'to.csm --ring --plain' 'to.csm --plain --floats' 'to.csm --ring --header header'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" convert made/bracket.stl $wrong
done
[ ! -e not.csm ] && [ ! -e to.foo ] || fail "a file for wrong arguments"
{ head -c 80 made/bracket.stl; head -c 176 /dev/zero; tail -c +81 made/bracket.stl; } >part.oltp
expect 0 "$varnet" info part.oltp
grep -q 'OLTP' out && grep -q '1,060 of 1,061 announced' out || fail "OLTP"
printf '<VERTICES>\n<VERTEX x="0" y="0" z="0"/>\n<VERTEX x="9" y="0" z="0"/>\n<VERTEX x="0" y="9" z="0"/>\n</VERTICES>\n<TRIANGLES>\n<TRIANGLE a="0" b="1" c="2"/>\n</TRIANGLES>\n' >part.3dmf
expect 0 "$varnet" convert part.3dmf to.stl
grep -q '3DMF -> binary STL' out && [ "$(stat -c %s to.stl)" -eq 134 ] || fail "3DMF"
cp part.3dmf part.xml
expect 0 "$varnet" info part.xml
grep -q '3DMF' out || fail "3DMF by its content"
expect 0 "$varnet" convert made/bracket.stl ring.csm --ring
head -c 2000 ring.csm >cut.csm
expect 1 "$varnet" info cut.csm
grep -q 'cut.csm: the file ends inside' err || fail "message for a ring stream cut short"
expect 1 "$varnet" convert made/bracket.stl nofolder/to.csm
ls -R | grep -q '\.part$' && fail "a half-written file is left"

# ---- slices

{
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/0.5\n$$VERSION/200\n$$LAYERS/3\n$$HEADEREND\n$$GEOMETRYSTART\n'
    # A square of 10 with a hole of 2 and an open path, in units of a half; then hatches.
    printf '$$LAYER/0.5\n$$POLYLINE/1,1,5,0,0,20,0,20,20,0,20,0,0\n$$POLYLINE/2,0,5,4,4,4,8,8,8,8,4,4,4\n'
    printf '$$POLYLINE/3,2,2,0,0,6,8\n$$LAYER/1.0\n$$HATCHES/1000,2,0,0,6,8,0,0,0,20\n$$LAYER/1.5\n$$GEOMETRYEND\n'
} >part.cli
expect 0 "$varnet" layers part.cli
grep -qE 'layers +3 of 3 announced$' out && grep -qE 'heights +0.25 to 0.75$' out || fail "layers and heights"
grep -qE 'closed loops +2$' out && grep -qE 'open paths +1$' out && grep -qE 'points +12$' out || fail "loops"
grep -qE 'hatches +1 with 2 edges$' out && grep -qE 'length of hatches, mm +15$' out || fail "hatches"
grep -qE 'area of all layers, mm2 +96$' out && grep -qE 'length of loops and paths, mm +53$' out || fail "area and length"
grep -qE 'box +0  0  to  10  10$' out || fail "the box of the layers"
grep -qE '^ +1 +0.25 +2 +1 +0 +12 +96 +53 ' out || fail "the row of a layer"
cp out memory
expect 0 "$varnet" layers part.cli --limit 0
cmp out memory || fail "layers read from the disk"
expect 0 "$varnet" layers part.cli --layer 2 --json
grep -q '"number": 2' out && grep -q '"edges": 2' out && grep -q '"z": 0.5' out || fail "one layer as JSON"
! grep -q '"number": 1' out || fail "only one layer"
expect 0 "$varnet" info part.cli made/bracket.stl
grep -qE 'type +CLI slices, text$' out && grep -qE 'type +binary STL$' out || fail "info of slices"
expect 0 "$varnet" info --json part.cli
grep -q '"announced": 3' out || fail "info of slices as JSON"
for limit in 64 0; do
    expect 0 "$varnet" layers part.cli --svg pictures --limit "$limit"
    [ "$(ls pictures | tr '\n' ' ')" = "layer_00001.svg layer_00002.svg layer_00003.svg " ] || fail "the names of pictures"
    grep -q 'layer 1, z = 0.25 mm' pictures/layer_00001.svg && grep -q '>5 mm<' pictures/layer_00001.svg || fail "height and scale"
    [ "$(grep -c 'stroke="hsl' pictures/layer_00001.svg)" -eq 3 ] || fail "the paths of a picture"
    # The hole is in the same path as its boundary.
    [ "$(grep -c '^<path d="M0 0L640 0L640 -640L0 -640L0 0M' pictures/layer_00001.svg)" -eq 1 ] || fail "the hole of a picture"
    grep -q 'hsl(240' pictures/layer_00001.svg && grep -q 'hsl(0,' pictures/layer_00001.svg || fail "the colours of a picture"
    if command -v xmllint >/dev/null; then xmllint --noout pictures/*.svg || fail "pictures are XML"; fi
    rm -r pictures
done
expect 0 "$varnet" layers part.cli --svg one --layer 3
[ "$(ls one)" = layer_00003.svg ] || fail "one picture"

for mode in binary coc ascii; do
    expect 0 "$varnet" convert part.cli "to_$mode.cli" --mode "$mode"
    grep -qE 'layers +3, read back 3$' out && grep -qE 'points +12, read back 12$' out || fail "convert to $mode"
    grep -qE 'largest difference, mm +(0|[0-9.]+e-(0[5-9]|1[0-9]))$' out || fail "the difference of $mode"
    expect 0 "$varnet" layers "to_$mode.cli"
    grep -qE 'area of all layers, mm2 +(96|95\.999[0-9]*|96\.000[0-9]*)$' out || fail "the layers of $mode"
    expect 0 "$varnet" convert "to_$mode.cli" back.cli --mode ascii
    [ -e first.cli ] || cp back.cli first.cli
    cmp back.cli first.cli || fail "the way back of $mode"
done
[ "$(head -c 25 to_ascii.cli | tr '\n' ' ')" = '$$HEADERSTART $$ASCII $$U' ] || fail "the header of a text file"
grep -q 'HATCHES/1000 2' to_ascii.cli && tail -n 1 to_ascii.cli | grep -q '^\$\$GEOMETRYEND$' || fail "a text file is whole"
expect 0 "$varnet" convert to_coc.cli same.cli
grep -q 'CLI slices, disguised -> CLI slices, disguised' out || fail "the mode of the input"
sed 's/LAYERS\/3/LAYERS\/12345/' part.cli >lies.cli
expect 0 "$varnet" convert lies.cli honest.cli
grep -q 'LAYERS/3$' honest.cli && [ "$(grep -c '^\$\$LAYER/' honest.cli)" -eq 3 ] || fail "the number of layers is put right"

head -c $(($(stat -c %s to_binary.cli) - 3)) to_binary.cli >cut.cli
expect 1 "$varnet" layers cut.cli
grep -q 'cut.cli: broken behind layer 2, at byte' err && grep -qE 'layers +2 of 3 announced$' out || fail "a slice file cut short"
expect 1 "$varnet" convert cut.cli never.cli
expect 1 "$varnet" layers part.cli --layer 4
grep -q 'there is no layer 4: it has 3' err || fail "message for a layer that is not there"
expect 1 "$varnet" layers missing.cli
grep -q 'missing.cli: no such file' err || fail "message for a missing slice file"
expect 1 "$varnet" layers made/bracket.stl
grep -q 'not a CLI slice file' err || fail "message for a mesh"
expect 1 "$varnet" layers made
expect 1 "$varnet" repair part.cli never.stl
grep -q 'holds slices, not a mesh' err || fail "message for slices"
expect 1 "$varnet" convert made/bracket.stl never.cli
expect 1 "$varnet" convert part.cli nofolder/to.cli
grep -q 'nofolder/to.cli: cannot be created' err || fail "message for a slice file that cannot be made"
# ---- the order of printing
{
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/2\n$$HEADEREND\n$$GEOMETRYSTART\n'
    for z in 1 2; do
        # Hatches at 9, 1 and 5 on a line; a chain that comes down to the side of a square.
        printf '$$LAYER/%s\n$$POLYLINE/1,1,5,0,0,20,0,20,20,0,20,0,0\n' "$z"
        printf '$$HATCHES/3,2,5,5,5,1,5,1,7,1\n$$HATCHES/2,1,9,10,9,11\n$$HATCHES/2,1,5,10,5,11\n'
    done
    printf '$$GEOMETRYEND\n'
} >fill.cli
expect 0 "$varnet" order fill.cli near.cli
grep -qE 'layers +2$' out && grep -qE 'starts and stops +8 -> 8$' out || fail "counts of an order"
grep -E 'travel with the material off' out | awk '{ exit !($(NF) < $(NF-2)) }' || fail "ordering saves travel"
expect 0 "$varnet" layers near.cli
grep -qE 'closed loops +2$' out && grep -qE 'hatches +6 with 8 edges$' out || fail "an order loses nothing"
expect 0 "$varnet" order fill.cli spliced.cli --splice --width 1 --cut 0.5 --start 5,6 --svg ordered
grep -qE 'starts and stops +8 -> 6$' out || fail "splicing saves starts"
grep -q '^\$\$POLYLINE/1 2 10 ' spliced.cli || fail "contour and chain are one path"
[ -s ordered/layer_00001.svg ] && [ -s ordered/layer_00002.svg ] || fail "pictures of an order"
grep -q before ordered/layer_00001.svg && grep -q after ordered/layer_00001.svg || fail "before and after"
for seed in 1 2 1; do
    expect 0 "$varnet" order fill.cli "random_$seed.cli" --hatches random --loops random --seed "$seed"
done
expect 0 "$varnet" order fill.cli far.cli --hatches far --loops far
expect 2 "$varnet" order fill.cli x.cli --splice --width 1
expect 2 "$varnet" order fill.cli x.cli --width 1 --cut 1
expect 2 "$varnet" order fill.cli x.cli --hatches nearest
expect 1 "$varnet" order missing.cli x.cli

expect 1 "$varnet" layers part.cli --svg part.cli
expect 2 "$varnet" layers
expect 2 "$varnet" layers part.cli --layer 0
expect 2 "$varnet" convert part.cli never.cli --mode text
expect 2 "$varnet" convert part.cli never.cli --ring
expect 2 "$varnet" convert made/bracket.stl never.stl --mode ascii
[ ! -e never.cli ] && [ ! -e never.stl ] || fail "a file for a failure"
ls -R | grep -q '\.part$' && fail "a half-written slice file is left"

exit 0
