#!/usr/bin/env bash
# What is told of parts that stay open, of layers without paths, and of units, figure by figure.
# usage: open.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

# open_cubes FILE X Y Z SIZE...: cubes without the side of the highest x
open_cubes() {
    local file=$1
    shift
    echo 'solid open' >"$file"
    while [ $# -ge 4 ]; do
        cube one_cube "$1" "$2" "$3" "$4"
        sed '1d;$d' one_cube | head -n -14 >>"$file"
        shift 4
    done
    echo 'endsolid open' >>"$file"
}

# Gaps of 10 mm in ten layers, and of 2 mm in the lower two of them.
open_cubes two.stl 0 0 0 10 20 0 0 2
expect 0 "$varnet" slice two.stl -o two.cli --layer 1 --close 3
row '^  layers +10 of 1 mm$'
row '^  contours +2$'
row '^  open paths +10$'
row '^  layers with open paths +10$'
row '^  gaps closed +2, up to 2 mm$'
row '^  volume of the layers, mm3 +8$'
says 'paths stay open in 10 of 10 layers, the longest gap 10 mm, about 1000 mm3 missing: '
expect 0 "$varnet" slice two.stl -o two.cli --layer 1 --close 3 --json
row '"gaps_closed": 2,'
row '"longest_gap": 10\.0,'
row '"missing_volume": 1000\.0,'
row '"longest_gap_closed": 2\.0,'
row '"cut_volume": 8\.0,'
expect 0 "$varnet" slice two.stl -o two.cli --layer 1
row '^  open paths +12$'
row '^  layers with open paths +10$'
row '^  gaps closed +0$'
row '^  volume of the layers, mm3 +0$'

# The holes are closed where that is asked for, up to the length of their rims.
expect 0 "$varnet" slice two.stl -o two.cli --layer 1 --fill-holes 40
row '^  holes closed +2$'
row '^  contours +12$'
row '^  open paths +0$'
row '^  volume of the layers, mm3 +1008$'
[ ! -s err ] || fail "a warning for holes that were closed: $(cat err)"
expect 0 "$varnet" slice two.stl -o two.cli --layer 1 --fill-holes 39
row '^  holes closed +1$'
row '^  open paths +10$'
says 'the longest gap 10 mm, about 1000 mm3 missing: --fill-holes MM closes the part, --close MM the gaps'
open_cubes third.stl 40 0 0 3
expect 0 "$varnet" slice two.stl third.stl -o two.cli --layer 1 --fill-holes 40
row '^  holes closed +3$'
row '^  volume of the layers, mm3 +1035$'
expect 2 "$varnet" slice two.stl -o two.cli --layer 1 --fill-holes 40 --stream
says 'excludes'
expect 2 "$varnet" slice two.stl -o two.cli --fill-holes -1

# Two open paths in one layer of three.
cube low.stl 0 0 0 3
open_cubes one.stl 20 0 0 1 30 0 0 1
{ sed '$d' low.stl && sed '1d' one.stl; } >layer.stl
expect 0 "$varnet" slice layer.stl -o layer.cli --layer 1
row '^  open paths +2$'
row '^  layers with open paths +1$'
says 'paths stay open in 1 of 3 layers, the longest gap 1 mm'
expect 1 "$varnet" slice layer.stl -o strict.cli --layer 1 --strict
says 'paths stay open in 1 of 3 layers'
mkdir parts
cp layer.stl parts
expect 0 "$varnet" whole parts --json
# 400 layers are cut, of which the lower third has both.
paths=$(sed -nE 's/.*"open_paths": ([0-9]+).*/\1/p' out)
[ "$((paths % 2))" -eq 0 ] && [ "$paths" -ge 264 ] && [ "$paths" -le 268 ] || fail "$paths open paths"

# Of a part above the plate the lid is missing: what is there is solid all the same, as it is from disk.
cube lid.stl 0 0 110 10
sed '16,29d' lid.stl >vase.stl
expect 0 "$varnet" info vase.stl
row '^  open edges +4$'
expect 0 "$varnet" slice vase.stl -o vase.cli --layer 1
row '^  volume of the layers, mm3 +1000$'
[ ! -s err ] || fail "a warning for a part without its lid: $(cat err)"
expect 0 "$varnet" convert vase.stl vase_binary.stl
expect 0 "$varnet" slice vase_binary.stl -o streamed.cli --layer 1 --stream --json
row '"turned": false'
row '"facets_lost": 0'
cmp vase.cli streamed.cli || fail "a part without its lid, from disk"

# Facets that contradict their shell are sliced as if they were turned, which is told. Three sides of four look inward here,
# which no layer would show to be solid.
awk '/^outer/ && ++n > 4 && n < 11 { turn = 1 } /^vertex/ && turn && ++k == 1 { first = $0; next }
    { print } turn && k == 2 { print first; k = 0; turn = 0 }' lid.stl >contradicting.stl
[ "$(wc -l <contradicting.stl)" -eq "$(wc -l <lid.stl)" ] || fail "the facets that were to be turned"
expect 0 "$varnet" slice contradicting.stl -o contradicting.cli --layer 1
says 'contradicting.stl: facets contradict their shell, and are sliced as if they were turned: varnet repair turns them'
row '^  volume of the layers, mm3 +1000$'
expect 0 "$varnet" slice contradicting.stl -o contradicting.cli --layer 1 --fill-holes 1
says 'contradicting.stl: facets contradict their shell, and are sliced as if they were turned: varnet repair turns them'
row '^  volume of the layers, mm3 +1000$'
awk '/^outer/ && ++n == 3 { turn = 1 } /^vertex/ && turn && ++k == 1 { first = $0; next }
    { print } turn && k == 2 { print first; k = 0; turn = 0 }' lid.stl >one_turned.stl
expect 0 "$varnet" slice one_turned.stl -o contradicting.cli --layer 1 --fill-holes 1
says 'one_turned.stl: facets contradict their shell'
expect 0 "$varnet" repair contradicting.stl agreeing.stl
row '^  facets turned to agree +6$'
expect 0 "$varnet" slice agreeing.stl -o agreeing.cli --layer 1
! grep -q contradict err || fail "a warning for facets that agree"

# One body has no row of its own.
expect 0 "$varnet" info lid.stl
row '^  bodies +1$'
! grep -q 'body 1' out || fail "a row for the only body"

# Half a millimetre wide, but longer than a millimetre, a part is taken as it is.
cube long.stl 0 0 0 0.5 0 0 5 0.5
expect 0 "$varnet" info long.stl
[ ! -s err ] || fail "a hint for a part that is long enough"

# What is no plain file is never taken for the input that would be lost.
expect 1 "$varnet" slice /dev/null -o /dev/null
says '/dev/null: '
cube same.stl 0 0 0 1
expect 2 "$varnet" slice same.stl -o ./same.stl
says 'is an input, and would be lost'

# Pictures of layers are of one box, that of all; a layer without paths has none.
cat >layers.cli <<'CLI'
$$HEADERSTART
$$ASCII
$$UNITS/1
$$LAYERS/3
$$HEADEREND
$$GEOMETRYSTART
$$LAYER/1
$$POLYLINE/1,1,5,0,0,4,0,4,4,0,4,0,0
$$LAYER/2
$$LAYER/3
$$POLYLINE/1,1,5,10,10,20,10,20,30,10,30,10,10
$$GEOMETRYEND
CLI
expect 0 "$varnet" layers layers.cli --svg all
row '^ +2 +2 +0 +0 +0 +0 +0 +0  none$'
row '^  box +0  0  to  20  30$'
size=$(grep -oE '<svg [^>]*>' all/layer_00001.svg)
for n in 2 3; do [ "$(grep -oE '<svg [^>]*>' all/layer_0000$n.svg)" = "$size" ] || fail "pictures of one size"; done
expect 0 "$varnet" layers layers.cli --svg one --layer 1
[ "$(grep -oE '<svg [^>]*>' one/layer_00001.svg)" != "$size" ] || fail "a picture of its own box"
nothing_left
