#!/usr/bin/env bash
# All that varnet support tells of parts whose every figure is another one, and what its options do.
# usage: hanging.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

part() { sed '1d;$d' "$1"; }
solid() { cube one "$@" && part one; }

# prism AX AZ BX BZ CX CZ Y...: a triangle in x and z, drawn out along y, with corners at each y
prism() {
    local ax=$1 az=$2 bx=$3 bz=$4 cx=$5 cz=$6 last=$7
    facets "$ax $7 $az" "$bx $7 $bz" "$cx $7 $cz"
    shift 7
    for y in "$@"; do
        facets "$ax $last $az" "$ax $y $az" "$bx $y $bz" "$ax $last $az" "$bx $y $bz" "$bx $last $bz" \
            "$bx $last $bz" "$bx $y $bz" "$cx $y $cz" "$bx $last $bz" "$cx $y $cz" "$cx $last $cz" \
            "$cx $last $cz" "$cx $y $cz" "$ax $y $az" "$cx $last $cz" "$ax $y $az" "$ax $last $az"
        last=$y
    done
    facets "$ax $last $az" "$cx $last $cz" "$bx $last $bz"
}
# A cube on the plate; a slope of 10 by 5 above 8 by 5 of the plate, in two halves of its length; keels of 5 and, in two pieces, of
# 7, whose flanks are 63 degrees from level; a small cube far above, narrower than a stroke.
{
    echo 'solid hanging'
    solid 0 0 0 10
    prism 20 5 28 11 20 11 0 2 5
    prism 44 7 48 15 40 15 0 5
    prism 64 8 68 16 60 16 0 3 7
    solid 80 0 20 0.25
    echo endsolid
} >hanging.stl
# Solids of a height are closed: 12 facets below two triangles, 20 below four and below an edge of two pieces.
hanging() {
    cat <<'TABLE'
  regions 3
  region 1 dropped: rests on the plate; area 100, projected 100, box 0 0 0 to 10 10 0
  region 2 kept: faces down; area 50, projected 40, box 20 0 5 to 28 5 11
  region 3 kept: below the least area, but hangs free; area 0.0625, projected 0.0625, box 80 0 20 to 80.25 0.25 20
  hanging edges 2 chains, 12 mm
  regions smaller than a stroke 1
  solids 4, 64 facets
TABLE
}
hanging_json() {
    cat <<'JSON'
{ "edge_count": 2, "edges": [ {"length": 5.0, "lowest": 7.0, "vertices": 2}, {"length": 7.0, "lowest": 8.0, "vertices": 3} ],
  "facets": 64, "region_count": 3,
  "regions": [
    {"area": 100.0, "box": [[0.0, 0.0, 0.0], [10.0, 10.0, 0.0]], "facets": 2, "projected_area": 100.0, "supported": false,
        "why": "rests on the plate"},
    {"area": 50.0, "box": [[20.0, 0.0, 5.0], [28.0, 5.0, 11.0]], "facets": 4, "projected_area": 40.0, "supported": true,
        "why": "faces down"},
    {"area": 0.0625, "box": [[80.0, 0.0, 20.0], [80.25, 0.25, 20.0]], "facets": 2, "projected_area": 0.0625, "supported": true,
        "why": "below the least area, but hangs free"}
  ],
  "schema": 1, "small_regions": 1, "solids": 4 }
JSON
}
expect 0 "$varnet" support hanging.stl -o solids.stl --down 2
{ echo 'hanging.stl -> solids.stl' && hanging; } | shown
quiet
expect 0 "$varnet" support hanging.stl -o solids.stl --down 2 --json
hanging_json | document
expect 0 "$varnet" support hanging.stl -o - --down 2
cmp out solids.stl || fail "solids on standard output"
{ echo 'hanging.stl -> -' && hanging; } | shown err
expect 0 "$varnet" support hanging.stl -o - --down 2 --json
cmp out solids.stl || fail "solids on standard output"
hanging_json | document err

# supported OPTIONS...: of the part above
supported() { expect 0 "$varnet" support hanging.stl -o solids.stl "$@"; }
# The slope is 36.87 degrees from level, the flanks of the keels are 63.43.
supported --angle 36.8
row '^  regions +2$'
supported --angle 36.9
row '^  regions +3$'
supported --edges-down 63.4
row '^  hanging edges +2 chains, 12 mm$'
supported --edges-down 63.5
row '^  hanging edges +0 chains, 0 mm$'
supported --edge-length 5
row '^  hanging edges +1 chains, 7 mm$'
supported --edge-length 7
row '^  hanging edges +0 chains, 0 mm$'
supported --edge-length 6.9 --json
row '"vertices": 3'
row '"edge_count": 1'
# The least area is that on the plate.
supported --min-area 0.0625
row '^  region 3 +kept: faces down; '
supported --min-area 40
row '^  region 2 +kept: faces down; '
supported --min-area 40.1
row '^  region 2 +kept: below the least area, but hangs free; '
# Down to the plate, and open there below faces: 4 facets of the slope and 2 of the small cube less.
supported
cp solids.stl plate.stl
row '^  solids +4, 58 facets$'
supported --to-plate
cmp solids.stl plate.stl || fail "down to the plate in two ways"
supported --down 2
expect 0 "$varnet" info solids.stl
row '^  open edges +0$'
supported --units in
row '^  hanging edges +2 chains, 304\.8 mm$'
# An edge that leans: the flank above it is 78.69 degrees from straight up, the one below 63.43 from straight down.
{ echo 'solid leaning' && solid -20 0 0 2 && prism 0 5 5 15 2 15 0 5 && echo endsolid; } >leaning.stl
expect 0 "$varnet" support leaning.stl -o solids.stl --edges-up 78.6
row '^  hanging edges +1 chains, 5 mm$'
expect 0 "$varnet" support leaning.stl -o solids.stl --edges-up 78.7
row '^  hanging edges +0 chains, 0 mm$'
messages <<<'varnet: warning: nothing needs support: solids.stl holds no facets'
row '^  solids +0, 0 facets$'
[ "$(stat -c %s solids.stl)" -eq 84 ] || fail "a file without facets"
# Two faces that touch in a corner are one region where that is asked for.
cube corner.stl 0 0 5 10 10 10 5 10 40 0 0 2
expect 0 "$varnet" support corner.stl -o solids.stl
row '^  regions +3$'
row '^  region 1 +kept: faces down; area 100, projected 100, box 0  0  5  to  10  10  5$'
expect 0 "$varnet" support corner.stl -o solids.stl --connect vertex
row '^  regions +2$'
row '^  region 1 +kept: faces down; area 200, projected 200, box 0  0  5  to  20  20  5$'
expect 0 "$varnet" support corner.stl -o solids.stl --connect edge
row '^  regions +3$'

# The solids are written first: without them there is no picture. Without the picture they are there, and no table.
expect 1 "$varnet" support hanging.stl -o nofolder/solids.stl --ply picture.ply
says '^varnet: nofolder/solids\.stl: cannot be created'
[ ! -e picture.ply ] && [ ! -s out ] || fail "a picture or a table without solids"
expect 1 "$varnet" support hanging.stl -o alone.stl --ply nofolder/picture.ply
says '^varnet: nofolder/picture\.ply: cannot be created'
cmp alone.stl plate.stl && [ ! -s out ] || fail "solids without their picture"
# Neither takes the place of the part.
cp hanging.stl own.stl
expect 2 "$varnet" support own.stl -o own.stl
says 'own\.stl: is an input, and would be lost'
expect 2 "$varnet" support own.stl -o solids.stl --ply ./own.stl
says '\./own\.stl: is an input, and would be lost'
cmp own.stl hanging.stl || fail "a part that is lost"
nothing_left
