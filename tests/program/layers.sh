#!/usr/bin/env bash
# Slice files: varnet layers, convert and info.
# usage: layers.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

{
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/0.5\n$$VERSION/200\n$$LAYERS/3\n$$HEADEREND\n$$GEOMETRYSTART\n'
    # A square of 10 with a hole of 2 and an open path, in units of a half; then hatches.
    printf '$$LAYER/0.5\n$$POLYLINE/1,1,5,0,0,20,0,20,20,0,20,0,0\n$$POLYLINE/2,0,5,4,4,4,8,8,8,8,4,4,4\n'
    printf '$$POLYLINE/3,2,2,0,0,6,8\n$$LAYER/1.0\n$$HATCHES/1000,2,0,0,6,8,0,0,0,20\n$$LAYER/1.5\n$$GEOMETRYEND\n'
} >part.cli
expect 0 "$varnet" layers part.cli
row 'layers +3 of 3 announced$'
row 'heights +0.25 to 0.75$'
row 'closed contours +2$'
row 'open paths +1$'
row 'points +10$'
row 'chains of fill +1$'
row 'length of strokes, mm +15$'
row 'area of all layers, mm2 +96$'
row 'length of contours and paths, mm +53$'
row 'box +0  0  to  10  10$'
row '^ +1 +0.25 +2 +1 +0 +10 +96 +53 '
expect 0 "$varnet" layers part.cli --layer 2 --json
row '"number": 2'
row '"strokes": 2'
row '"z": 0.5'
! grep -q '"number": 1' out || fail "only one layer"
expect 0 "$varnet" info part.cli
row 'type +CLI slices, text$'
expect 0 "$varnet" info --json part.cli
row '"announced": 3'
expect 0 "$varnet" layers part.cli --svg pictures
[ "$(ls pictures | tr '\n' ' ')" = "layer_00001.svg layer_00002.svg layer_00003.svg " ] || fail "the names of pictures"
grep -q 'layer 1, z = 0.25 mm' pictures/layer_00001.svg && grep -q '>5 mm<' pictures/layer_00001.svg || fail "height and scale"
[ "$(grep -c 'stroke="hsl' pictures/layer_00001.svg)" -eq 3 ] || fail "the paths of a picture"
# 3 and 4 of 10 mm, which are 640 wide.
grep -q '<path d="M0 0L192 -256M0 0L0 -640"' pictures/layer_00002.svg || fail "the strokes of the second picture"
! grep -q 'stroke="hsl' pictures/layer_00003.svg || fail "something on a picture of nothing"
grep -q 'layer 2, z = 0.5 mm' pictures/layer_00002.svg || fail "the title of the second picture"
if command -v xmllint >/dev/null; then xmllint --noout pictures/*.svg || fail "pictures are XML"; fi
expect 0 "$varnet" layers part.cli --svg one --layer 3
[ "$(ls one)" = layer_00003.svg ] || fail "one picture"

# Of more than twenty layers, the first ten and the last ten.
{
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$HEADEREND\n$$GEOMETRYSTART\n'
    for z in $(seq 20); do printf '$$LAYER/%s\n' "$z"; done
} >twenty.cli
expect 0 "$varnet" layers twenty.cli
[ "$(grep -cE '^ +[0-9]+ +[0-9]+ +0' out)" -eq 20 ] && ! grep -q '\.\.\.' out || fail "twenty layers"
printf '$$LAYER/21\n' >>twenty.cli
expect 0 "$varnet" layers twenty.cli
[ "$(grep -oE '^ +([0-9]+|\.\.\.)' out | tr -d ' \n')" = "12345678910...12131415161718192021" ] || fail "one layer between"
expect 0 "$varnet" layers twenty.cli --json
[ "$(grep -c '"number"' out)" -eq 21 ] || fail "all layers in JSON"
printf '$$LAYER/22\n' >>twenty.cli
expect 0 "$varnet" layers twenty.cli
[ "$(grep -oE '^ +([0-9]+|\.\.\.)' out | tr -d ' \n')" = "12345678910...13141516171819202122" ] || fail "the layers between"

# Areas and lengths are rounded to thousandths where they stand in rows: 1 by 0.03125.
{
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$HEADEREND\n$$GEOMETRYSTART\n$$LAYER/1\n'
    printf '$$POLYLINE/1,1,5,0,0,1,0,1,0.03125,0,0.03125,0,0\n$$GEOMETRYEND\n'
} >fine.cli
expect 0 "$varnet" layers fine.cli
row '^  area of all layers, mm2 +0\.03125$'
row '^  layers +1$'
row '^ +1 +1 +1 +0 +0 +4 +0\.031 +2\.063  0  0  to  1  0\.03125$'
expect 0 "$varnet" layers fine.cli --json
row '^  "announced": null,$'

for mode in binary coc ascii; do
    expect 0 "$varnet" convert part.cli "to_$mode.cli" --mode "$mode"
    row 'layers +3, read back 3$'
    row 'points +10, read back 10$'
    expect 0 "$varnet" layers "to_$mode.cli"
    row 'area of all layers, mm2 +(96|95\.999[0-9]*|96\.000[0-9]*)$'
    expect 0 "$varnet" convert "to_$mode.cli" back.cli --mode ascii
    [ -e first.cli ] || cp back.cli first.cli
    cmp back.cli first.cli || fail "the way back of $mode"
done
tail -n 1 to_ascii.cli | grep -q '^\$\$GEOMETRYEND$' || fail "a text file is whole"

# Lines that are no layers are passed over, and counted; a wrong box is told.
sed 's/^\$\$LAYER\/1.0/$$POWER\/3\n\n\/\/ a comment\n&/; s/^\$\$UNITS.*/&\n$$DIMENSION\/0,0,0,9,9,1/' part.cli >extra.cli
expect 0 "$varnet" layers extra.cli
row 'note +1 blank lines were passed over$'
row 'note +1 comments were passed over$'
row 'note +1 commands that are not known were passed over$'
row 'note +the header states the box'
# A box in the header may be off by a twentieth of a millimetre on each side; units are halves.
for stated in '0,0,0,20,20,9' '0.1,-0.1,0,20.09,19.91,1' '-0.1,0.1,5,19.91,20.09,1'; do
    sed "s|^..UNITS.*|&\n\$\$DIMENSION/$stated|" part.cli >boxed.cli
    expect 0 "$varnet" layers boxed.cli
    ! grep -q note out || fail "a note on the box $stated"
done
for stated in '0.11,0,0,20,20,9' '0,0.11,0,20,20,9' '0,0,0,19.89,20,9' '0,0,0,20,20.11,9'; do
    sed "s|^..UNITS.*|&\n\$\$DIMENSION/$stated|" part.cli >boxed.cli
    expect 0 "$varnet" layers boxed.cli
    row 'note +the header states the box'
done
sed 's/LAYERS\/3/LAYERS\/12345/' part.cli >lies.cli
expect 0 "$varnet" convert lies.cli honest.cli
grep -q 'LAYERS/3$' honest.cli || fail "the number of layers is put right"

head -c $(($(stat -c %s to_binary.cli) - 3)) to_binary.cli >cut.cli
expect 1 "$varnet" layers cut.cli
says 'cut.cli, byte [0-9]+: '
row 'layers +2 of 3 announced$'
# What is there is drawn all the same.
expect 1 "$varnet" layers cut.cli --svg cut --json
[ "$(ls cut | tr '\n' ' ')" = 'layer_00001.svg layer_00002.svg ' ] || fail "the pictures of a broken file: $(ls cut)"
row '^  "layers": 2,$'
expect 1 "$varnet" convert cut.cli never.cli
expect 1 "$varnet" layers part.cli --layer 4
says 'there is no layer 4: it has 3'
expect 1 "$varnet" layers missing.cli
says 'missing.cli: no such file'
printf 'no slices\n' >text
expect 1 "$varnet" layers text
says 'not a CLI slice file'
expect 1 "$varnet" repair part.cli never.stl
expect 1 "$varnet" convert part.cli nofolder/to.cli
says 'nofolder/to.cli: cannot be created'
expect 1 "$varnet" layers part.cli --svg part.cli
expect 2 "$varnet" layers
expect 2 "$varnet" layers part.cli --layer 0
expect 2 "$varnet" convert part.cli never.cli --mode text
expect 2 "$varnet" convert part.cli never.cli --ring
[ ! -e never.cli ] && [ ! -e never.stl ] || fail "a file for a failure"
nothing_left
