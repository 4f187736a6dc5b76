#!/usr/bin/env bash
# All that varnet join and varnet order tell, and what their options do.
# usage: joined.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

bytes() { stat -c %s "$1"; }
with_comma() { bytes "$1" | sed -E 's/^(.+)(...)$/\1,\2/'; }
slices() { # LINES...: a file of one layer
    printf '%s\n' '$$HEADERSTART' '$$ASCII' '$$UNITS/1' '$$LAYERS/1' '$$HEADEREND' '$$GEOMETRYSTART' '$$LAYER/1' "$@" '$$GEOMETRYEND'
}

# ---- join

cube cube.stl 0 0 0 10
for range in 3:5 6:14 15:20 1:2; do
    expect 0 "$varnet" slice cube.stl -o ${range/:/_}.cli --layer 0.5 --layers $range
done
expect 0 "$varnet" slice cube.stl -o whole.cli --layer 0.5
# A part of the build: its layers, of how many, are told by number.
expect 0 "$varnet" join 3_5.cli 6_14.cli -o joined.cli
shown <<TABLE
2 files -> joined.cli
  layers 12
  bytes $(with_comma joined.cli)
TABLE
messages <<<'varnet: warning: joined.cli has layers 3 to 14 of 20'
expect 0 "$varnet" join 3_5.cli 6_14.cli -o joined.cli --json
document <<<"{ \"bytes\": $(bytes joined.cli), \"layers\": 12, \"schema\": 1 }"
messages <<<'varnet: warning: joined.cli has layers 3 to 14 of 20'
# To standard output, where no size can be told: what there is to say goes to standard error.
expect 0 "$varnet" join 3_5.cli 6_14.cli -o -
cmp out joined.cli || fail "joined slices on standard output"
printf '%s\n' 'varnet: warning: - has layers 3 to 14 of 20' '2 files -> -' '  layers 12' '  bytes 0' | shown err
expect 0 "$varnet" join 3_5.cli 6_14.cli -o - --json
cmp out joined.cli || fail "joined slices on standard output"
sed -i 1d err
document err <<<'{ "bytes": 0, "layers": 12, "schema": 1 }'
[ ! -e - ] || fail "a file of the name -"
# The whole build: nothing to warn of. What was joined is joined on.
expect 0 "$varnet" join 1_2.cli joined.cli 15_20.cli -o all.cli
shown <<TABLE
3 files -> all.cli
  layers 20
  bytes $(with_comma whole.cli)
TABLE
quiet
cmp all.cli whole.cli || fail "joined slices of a whole build"
# The second is the bad one: nothing is written, and what was there stays.
cp all.cli kept.cli
head -c 600 6_14.cli >cut.cli
for bad in cut.cli missing.cli 15_20.cli cube.stl; do
    expect 1 "$varnet" join 3_5.cli $bad -o kept.cli
    says "^varnet: $bad(:|,)"
    [ ! -s out ] && cmp all.cli kept.cli || fail "a file joined with $bad"
done
expect 2 "$varnet" join 3_5.cli
expect 2 "$varnet" join -o no.cli
nothing_left

# ---- order

# Three strokes of 1 on a line, as they are from the left end at 0: at 10, at 1, at 5. The way is 10 + 10 + 3, and by the
# nearest 1 + 3 + 4.
slices '$$HATCHES/3,1,10,0,11,0' '$$HATCHES/3,1,1,0,2,0' '$$HATCHES/3,1,5,0,6,0' >strokes.cli
expect 0 "$varnet" order strokes.cli near.cli
shown <<'TABLE'
strokes.cli -> near.cli
  layers 1
  travel with the material off, mm 23 -> 8
  starts and stops 3 -> 3
TABLE
quiet
expect 0 "$varnet" order strokes.cli near.cli --json
document <<<'{ "layers": 1, "schema": 1, "starts": [3, 3], "travel": [23.0, 8.0] }'
cp out told
expect 0 "$varnet" order strokes.cli - --json
cmp out near.cli && cmp err told || fail "the order on standard output"
expect 0 "$varnet" order strokes.cli -
cmp out near.cli || fail "the order on standard output"
says '^strokes\.cli -> -$'
# travel WHAT OPTIONS...: before and after
travel() {
    expect 0 "$varnet" order "${file:-strokes.cli}" ordered.cli "${@:2}"
    row "^  travel with the material off, mm +$1\$"
}
# From 12 the last one is the next: 2 + 10 + 3, and 1 + 4 + 3 backwards.
travel '15 -> 8' --start 12,0
# From 16 above 0: 20 and 12, and in order the root of 257 and 10. A start has two numbers.
slices '$$HATCHES/3,1,12,0,13,0' '$$HATCHES/3,1,1,0,2,0' >two.cli
file=two.cli travel '32 -> 26\.03121954' --start 0,16
for wrong in 12 12, 1,2,3 x,0 0,nan inf,0; do expect 2 "$varnet" order strokes.cli no.cli --start $wrong; done
# The farthest: to the end at 11, from 10 to 1, from 2 to 6. Contours have an order of their own.
travel '23 -> 24' --hatches far
travel '23 -> 8' --loops far
travel '23 -> 8' --hatches near --loops random
square() { echo "\$\$POLYLINE/1,1,5,$1,0,$(($1 + 1)),0,$(($1 + 1)),1,$1,1,$1,0"; }
# Squares begin where they are nearest, and end there: 1 + 4 + 5 again.
slices "$(square 10)" "$(square 1)" "$(square 5)" >squares.cli
file=squares.cli travel '23 -> 10'
file=squares.cli travel '23 -> 10' --hatches far
file=squares.cli travel '23 -> 10' --hatches random --loops near
expect 0 "$varnet" order squares.cli ordered.cli --loops far
row '^  travel with the material off, mm +23 -> 2[0-9.]+$'
# At random, but as the seed says, which is 1 where none is given. Of eight strokes there are forty thousand orders.
slices $(for n in 1 2 3 4 5 6 7 8; do echo "\$\$HATCHES/3,1,$n,0,$n,1"; done) >eight.cli
slices "$(for n in 1 2 3 4 5 6 7 8; do square $((2 * n)); done)" >eight_squares.cli
for kind in hatches:eight loops:eight_squares; do
    file=${kind#*:}.cli
    expect 0 "$varnet" order $file any.cli --${kind%:*} random
    for seed in 1 2 3; do expect 0 "$varnet" order $file seed$seed.cli --${kind%:*} random --seed $seed; done
    cmp any.cli seed1.cli || fail "the seed where none is given"
    ! cmp -s seed1.cli seed2.cli && ! cmp -s seed2.cli seed3.cli && ! cmp -s seed1.cli seed3.cli || fail "seeds that make no difference"
done
unset file
# Two strokes that end 1 above the side of a square become one path with it, where 1.8 widths are as much. The square is opened
# by the cut there.
slices '$$POLYLINE/1,1,5,0,0,20,0,20,20,0,20,0,0' '$$HATCHES/3,2,5,5,5,1,5,1,7,1' >beside.cli
expect 0 "$varnet" order beside.cli spliced.cli --splice --width 0.56 --cut 0.25
row '^  starts and stops +2 -> 1$'
grep -q ' 5\.250 0\.000 20\.000 0\.000 20\.000 20\.000 0\.000 20\.000 0\.000 0\.000 5\.000 0\.000 ' spliced.cli || fail "the opening"
for figures in '0.55 0.25' '0.25 0.56'; do
    expect 0 "$varnet" order beside.cli spliced.cli --splice --width ${figures% *} --cut ${figures#* }
    row '^  starts and stops +2 -> 2$'
done
for wrong in '--splice' '--splice --width 1' '--splice --cut 1' '--width 1' '--cut 1' '--width 1 --cut 1' \
    '--splice --width 1 --cut 1 --hatches near' '--splice --width 1 --cut 1 --loops near' '--loops next' '--hatches next' \
    '--splice --width 0 --cut 1' '--splice --width 1 --cut nan'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" order beside.cli no.cli $wrong
done
[ ! -e no.cli ] || fail "a file for wrong arguments"

# A picture of each layer, before and after.
slices '$$HATCHES/3,1,10,0,11,0' '$$HATCHES/3,1,1,0,2,0' '$$LAYER/2' '$$HATCHES/3,1,5,0,6,0' >layers.cli
expect 0 "$varnet" order layers.cli ordered.cli --svg in/pictures
[ "$(ls in/pictures | tr '\n' ' ')" = 'layer_00001.svg layer_00002.svg ' ] || fail "the names of the pictures"
grep -E 'before|after|<path d="M[0-9]+ 0L' in/pictures/layer_00001.svg | sed -E 's/.*>(before|after)<.*/\1/; s/.*d="M([0-9]+) .*/\1/' >seen
# 10 mm are 640 wide: as they stand there, and the other way.
printf '%s\n' before 576 0 after 0 576 | diff - seen || fail "a picture of before and after"
# The head comes from 11, and draws the other way.
grep -oE '<path d="M[0-9]+ 0L[0-9]+ 0"' in/pictures/layer_00002.svg >seen
printf '%s\n' '<path d="M0 0L640 0"' '<path d="M640 0L0 0"' | diff - seen || fail "the picture of the second layer"
# Mode and range are those of the input: what is ordered by parts is joined to what is ordered as a whole.
for mode in ascii binary coc; do
    expect 0 "$varnet" convert strokes.cli mode.cli --mode $mode
    expect 0 "$varnet" info mode.cli
    grep type out >type
    expect 0 "$varnet" order mode.cli ordered.cli
    expect 0 "$varnet" info ordered.cli
    grep type out | cmp - type || fail "the order of a file of mode $mode"
done
expect 0 "$varnet" order 3_5.cli part.cli
expect 0 "$varnet" join part.cli -o joined.cli
messages <<<'varnet: warning: joined.cli has layers 3 to 5 of 20'
# A broken file is not ordered, not even its beginning; where the folder cannot be made, nothing is.
for bad in cut.cli missing.cli cube.stl; do
    expect 1 "$varnet" order $bad no.cli --svg no
    says "^varnet: $bad(:|,)"
done
expect 1 "$varnet" order strokes.cli no.cli --svg strokes.cli
says '^varnet: strokes\.cli: cannot be made: '
[ ! -e no.cli ] && [ ! -e no ] || fail "a file for a failure"
nothing_left
