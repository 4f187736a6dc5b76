#!/usr/bin/env bash
# varnet slice and varnet join.
# usage: slice.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
part=made/bracket_repaired.stl
expect 0 "$varnet" slice $part -o plain.cli
row 'layers +350 of 0\.2 mm$'
row 'open paths +0$'
row 'volume of the layers, mm3 +1131[45][0-9]\.'
row 'support solids +0$'
expect 0 "$varnet" info plain.cli
row 'CLI slices, binary'
expect 0 "$varnet" slice $part -o bare.cli --no-fill
row 'fill strokes +none: contours only$'
expect 0 "$varnet" slice $part -o zero.cli --hatch 0
cmp bare.cli zero.cli || fail "no fill in two ways"

for mode in ascii binary coc; do
    for order in '' --order --splice; do
        # shellcheck disable=SC2086
        expect 0 "$varnet" slice $part -o parts.cli --layer 1 --hatch 2 --support --mode $mode --seed 9 $order
        row 'layers +70 of 1 mm$'
        row 'support solids +3$'
        [ ! -s err ] || fail "messages of $mode $order: $(cat err)"
        expect 0 "$varnet" layers parts.cli --layer 70
        expect 1 "$varnet" layers parts.cli --layer 71
        # Any cutting into shards, joined, is the same file.
        [ -z "$order" ] || continue
        for cuts in "1:70" "1:1 2:70" "1:30 31:40 41:70" "1:10 11:20 21:30 31:40 41:50 51:60 61:70"; do
            names=""
            for range in $cuts; do
                expect 0 "$varnet" slice $part -o "${range/:/_}.cli" --layer 1 --hatch 2 --support --mode $mode --seed 9 --layers $range
                names="$names ${range/:/_}.cli"
            done
            # shellcheck disable=SC2086
            expect 0 "$varnet" join $names -o joined.cli
            cmp joined.cli parts.cli || fail "joined shards of $mode: $cuts"
        done
    done
    # Ordering as a last pass.
    expect 0 "$varnet" slice $part -o found.cli --layer 1 --hatch 2 --mode $mode
    expect 0 "$varnet" order found.cli later.cli
    expect 0 "$varnet" slice $part -o once.cli --layer 1 --hatch 2 --mode $mode --order
    [ $mode = coc ] || cmp later.cli once.cli || fail "ordering as a last pass in mode $mode"
    expect 0 "$varnet" slice $part -o threads.cli --layer 1 --hatch 2 --mode $mode --threads 3
    [ $mode = coc ] || cmp found.cli threads.cli || fail "three threads in mode $mode"
done
# What would be lost is not written over, by whatever name.
cp $part own.stl
ln -s own.stl link.stl
for output in own.stl link.stl ./own.stl; do
    expect 2 "$varnet" slice own.stl -o $output
    says "$output: is an input, and would be lost"
    expect 2 "$varnet" slice own.stl -o no.cli --page $output
    expect 2 "$varnet" support own.stl -o $output
    expect 2 "$varnet" surfaces own.stl -o $output
    expect 2 "$varnet" view own.stl -o $output
done
cmp own.stl $part || fail "a part that was given as the output"
# Shards by their number.
expect 0 "$varnet" slice $part -o whole.cli --layer 1 --hatch 2
for shard in 1 2 3; do expect 0 "$varnet" slice $part -o "shard$shard.cli" --layer 1 --hatch 2 --shard $shard/3; done
expect 0 "$varnet" join shard1.cli shard2.cli shard3.cli -o joined.cli
cmp joined.cli whole.cli || fail "joined shards by number"
# Shards that are converted or ordered are shards still, told by number where heights are too near for text.
for shard in 1 2 3; do
    expect 0 "$varnet" slice $part -o "thin$shard.cli" --layer 0.004 --no-fill --shard $shard/3
    expect 0 "$varnet" convert "thin$shard.cli" "text$shard.cli" --mode ascii
    expect 0 "$varnet" order "thin$shard.cli" "near$shard.cli"
done
expect 0 "$varnet" join text1.cli text2.cli -o joined.cli
says 'warning: joined.cli has layers 1 to 11666 of 17500'
expect 0 "$varnet" slice $part -o thin.cli --layer 0.004 --no-fill
expect 0 "$varnet" convert thin.cli text.cli --mode ascii
expect 0 "$varnet" join text1.cli text2.cli text3.cli -o joined.cli
cmp joined.cli text.cli || fail "converted shards"
for kind in text near; do
    expect 1 "$varnet" join ${kind}1.cli ${kind}3.cli -o no.cli
    says "${kind}3.cli: layers .* are missing ahead of it"
done
# More shards than the system lets a process have open.
names=""
for n in $(seq 70); do
    expect 0 "$varnet" slice $part -o "of70_$n.cli" --layer 1 --hatch 2 --shard "$n/70"
    names="$names of70_$n.cli"
done
(
    ulimit -n 72
    # shellcheck disable=SC2086
    expect 0 "$varnet" join $names -o joined.cli
)
cmp joined.cli whole.cli || fail "a shard for each layer"
for wrong in 0/3 4/3 1 /3 1/ a/b 1/-1; do
    expect 2 "$varnet" slice $part -o no.cli --shard $wrong
    says "$wrong is no shard such as 1/8"
done
expect 2 "$varnet" slice $part -o no.cli --shard 1/2 --layers 1:2
expect 1 "$varnet" slice $part -o no.cli --layer 10 --shard 1/8
says 'there are 7 layers, too few for 8 shards'
expect 1 "$varnet" join 1_30.cli 41_70.cli -o gap.cli
says '41_70.cli: layers 31 to 40 are missing'
expect 1 "$varnet" join 1_30.cli 1_1.cli -o overlap.cli
says '1_1.cli: its layers 1:1 overlap'
expect 1 "$varnet" join plain.cli 1_30.cli -o modes.cli
says '1_30.cli: is of another mode'
[ ! -e gap.cli ] && [ ! -e overlap.cli ] && [ ! -e modes.cli ] || fail "a file of shards that do not fit"

# Layers by number: from the first on, up to the last, one alone.
cube ten.stl 0 0 0 10
heights() {
    expect 0 "$varnet" slice ten.stl -o some.cli --layer 1 --no-fill --layers "$1"
    expect 0 "$varnet" layers some.cli
    row "heights +$2 to $3\$"
    row "layers +$(($3 - $2 + 1)) of "
}
heights 3 3 3
heights 3: 3 10
heights :3 1 3
heights 3:5 3 5
heights 10: 10 10
heights 1:10 1 10
for wrong in 0 0:3 3:0 x:3 3:x -1 3:4:5; do
    expect 2 "$varnet" slice ten.stl -o no.cli --layer 1 "--layers=$wrong"
    says "$wrong is no range of layers such as 1:100"
done
heights : 1 10
for wrong in 5:3 11 3:11; do expect 1 "$varnet" slice ten.stl -o no.cli --layer 1 --layers $wrong; done
says 'there are layers 1 to 10, and not 3 to 11'
[ ! -e no.cli ] || fail "a file of layers that are not there"

# Travel gets less by ordering.
travel() { sed -nE 's/.*travel with the material off, mm +([0-9]+).*/\1/p' out; }
expect 0 "$varnet" slice $part -o a.cli --layer 1 --hatch 2
found=$(travel)
expect 0 "$varnet" slice $part -o b.cli --layer 1 --hatch 2 --order
[ "$(travel)" -lt "$found" ] || fail "travel of ordered paths"

# Overlaps are filled, cavities empty, a part within another counts once.
cube overlap.stl 0 0 0 10 5 5 0 10
expect 0 "$varnet" slice overlap.stl -o a.cli --layer 1
row 'volume of the layers, mm3 +1750$'
row 'volume of the mesh, mm3 +2000$'
expect 0 "$varnet" slice overlap.stl -o a.cli --layer 1 --rule odd
row 'volume of the layers, mm3 +1500$'
expect 0 "$varnet" slice $part made/bracket_support.stl made/bracket_ring.csm -o plate.cli --layer 1 --hatch 2
row '3 parts -> plate.cli'

# An open mesh gives open paths, which are told.
cube cube.stl 0 0 0 10
head -n -15 cube.stl >open.stl
printf 'endsolid\n' >>open.stl
expect 0 "$varnet" slice open.stl -o open.cli --layer 1
row 'open paths +10$'
says 'paths stay open in 10 of 10 layers, the longest gap 10 mm'
[ "$(wc -l <err)" -eq 1 ] || fail "more than a line about open paths"
expect 1 "$varnet" slice open.stl -o open.cli --layer 1 --strict
expect 0 "$varnet" slice open.stl -o open.cli --layer 1 --close 11 --json
row '"gaps_closed": 10'
row '"open_paths": 0'
row '"longest_gap_closed": 10\.0'
row '"longest_gap": 0\.0'
row '"cut_volume": 1000\.0'
# shellcheck disable=SC2086
keys $layer_keys

# What cannot be sliced leaves no file, and leaves an older one as it was.
cp a.cli kept.cli
printf 'solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 0 1\nvertex 10 0 1\nvertex 5 5 1\nendloop\nendfacet\nendsolid\n' >flat.stl
expect 1 "$varnet" slice flat.stl -o kept.cli
says 'no height'
expect 1 "$varnet" slice $part missing.stl -o kept.cli
says 'missing.stl: no such file'
expect 1 "$varnet" slice a.cli -o kept.cli
expect 1 "$varnet" slice $part -o kept.cli --layer 0.00001
cmp a.cli kept.cli || fail "the older file"
for wrong in '--layer 0' '--layer -1' '--layer nan' '--layer 1e300' '--hatch x' '--hatch nan' '--hatch inf' '--angle 1000' \
    '--angle nan' '--angle 360.1' '--angle -360.1' '--mode text' '--order --splice' '--threads 0' '--layers x' '--close -1'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" slice $part -o wrong.cli $wrong
    ! grep -qE '[0-9]{30}' err || fail "a message with a number of thirty digits: $wrong"
done
expect 2 "$varnet" slice $part
expect 2 "$varnet" slice -o wrong.cli
expect 1 "$varnet" slice $part -o wrong.cli --layers 400:500
[ ! -e wrong.cli ] || fail "a file for wrong arguments"
nothing_left
