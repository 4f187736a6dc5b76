#!/usr/bin/env bash
# varnet order.
# usage: order.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

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
row 'layers +2$'
row 'starts and stops +8 -> 8$'
grep -E 'travel with the material off' out | awk '{ exit !($(NF) < $(NF-2)) }' || fail "ordering saves travel"
expect 0 "$varnet" layers near.cli
row 'closed contours +2$'
row 'strokes of fill +8$'
expect 0 "$varnet" order fill.cli spliced.cli --splice --width 1 --cut 0.5 --start 5,6 --svg ordered
row 'starts and stops +8 -> 6$'
grep -q '^\$\$POLYLINE/1 2 10 ' spliced.cli || fail "contour and chain are one path"
grep -q before ordered/layer_00001.svg && grep -q after ordered/layer_00002.svg || fail "before and after"
for seed in 1 2 1; do
    expect 0 "$varnet" order fill.cli "random_$seed.cli" --hatches random --loops random --seed "$seed"
    [ "$seed" = 2 ] || { [ -e first ] || cp random_1.cli first; cmp random_1.cli first || fail "one seed, two orders"; }
done
expect 0 "$varnet" order fill.cli far.cli --hatches far --loops far --json
keys layers travel starts
expect 2 "$varnet" order fill.cli x.cli --splice --width 1
expect 2 "$varnet" order fill.cli x.cli --width 1 --cut 1
expect 2 "$varnet" order fill.cli x.cli --hatches nearest
expect 1 "$varnet" order missing.cli x.cli
# An order may take the place of its input.
expect 0 "$varnet" order fill.cli fill.cli
cmp fill.cli near.cli || fail "in place"
nothing_left
