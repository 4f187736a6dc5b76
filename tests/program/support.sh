#!/usr/bin/env bash
# varnet support and varnet surfaces.
# usage: support.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
part=made/bracket_repaired.stl
expect 0 "$varnet" surfaces $part -o surfaces.ply
row 'surfaces +21$'
[ "$(stat -c %s surfaces.ply)" -eq "$(stat -c %s made/bracket_surfaces.ply)" ] || fail "the size of the PLY file"
head -n 4 surfaces.ply | grep -aq 'element vertex 520' || fail "the vertices of the PLY file"
grep -aq 'element face 1060' surfaces.ply || fail "the faces of the PLY file"
expect 0 "$varnet" surfaces $part --judge winding
row 'surfaces +1$'
# All facets of a closed part that agree are one surface, which has no rim.
expect 0 "$varnet" surfaces $part --judge winding --json
keys surfaces area rim surface_list facets
row '"rim": 0\.0'
[ ! -e .ply ] || fail "a picture that nobody asked for"
expect 0 "$varnet" surfaces $part --judge eight
expect 2 "$varnet" surfaces $part --judge none
expect 1 "$varnet" surfaces $part -o nofolder/surfaces.ply
says 'nofolder/surfaces.ply: cannot be created'

expect 0 "$varnet" support $part -o support.stl --down 3 --ply support.ply
row 'dropped: rests on the plate'
row 'kept: faces down'
row 'hanging edges +1 chains, 15 mm$'
cmp support.stl made/bracket_support.stl || fail "the solids of the demo"
expect 0 "$varnet" info support.stl
row 'open edges +0$'
expect 0 "$varnet" support $part -o plate.stl --to-plate --json
row '"supported": true'
row '"solids": 3'
keys region_count regions facets area projected_area box supported why small_regions edge_count edges vertices length \
    lowest solids
row '"length": 15.0'
# The least area drops what a wall holds.
expect 0 "$varnet" support $part -o large.stl --down 3 --min-area 1000000
row 'dropped: below the least area and held by a wall'
# A chamfer of 45 degrees needs none at the threshold that holds when none is given.
expect 0 "$varnet" support $part -o none.stl --angle 0 --edge-length 1000
row 'solids +0, 0 facets$'
says 'nothing needs support'
for wrong in '--down -1' '--angle 100' '--angle nan' '--connect corner' '--min-area -1' '--down 3 --to-plate' '--edge-length x'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" support $part -o wrong.stl $wrong
done
for wrong in 0.0000009 1000000001; do expect 2 "$varnet" support $part -o wrong.stl --down $wrong; done
[ ! -e wrong.stl ] || fail "a file for wrong arguments"
for right in 0.000001 1000000000; do expect 0 "$varnet" support $part -o "$right.stl" --down $right; done
expect 1 "$varnet" support missing.stl -o wrong.stl
expect 1 "$varnet" support $part -o nofolder/support.stl
nothing_left
