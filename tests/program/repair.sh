#!/usr/bin/env bash
# varnet repair and varnet split.
# usage: repair.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
expect 0 "$varnet" repair made/bracket.stl fixed.stl
row 'facets turned to agree +118$'
row 'open edges, before and after +[1-9][0-9]* -> 0$'
cmp fixed.stl made/bracket_repaired.stl || fail "the repaired file of the demo"
[ "$(stat -c %s fixed.stl)" -eq $((84 + 50 * 1060)) ] || fail "the size of the repaired file"

# A whole file comes out with the same corners.
expect 0 "$varnet" repair fixed.stl again.stl
row 'facets turned to agree +0$'
cmp fixed.stl again.stl || fail "a whole part is changed"

# A hole is closed where that is asked for, and said where not.
cube open.stl 0 0 0 10
head -n -8 open.stl >holed.stl
printf 'endsolid\n' >>holed.stl
expect 0 "$varnet" repair holed.stl filled.stl
says '3 edges are open: --fill-holes'
expect 0 "$varnet" repair holed.stl filled.stl --fill-holes 100
row 'holes closed +1$'
row 'open edges +0$'
[ ! -s err ] || fail "a message for a closed part"

# A part that is inside out is turned only where that is asked for.
awk '/^vertex/ { v[++n] = $0; if (n == 3) { print v[2]; print v[1]; print v[3]; n = 0 }; next } { print }' open.stl >inside.stl
expect 0 "$varnet" repair inside.stl same.stl
says 'inside out: --outward'
row 'volume, mm3 +-1000$'
expect 0 "$varnet" repair inside.stl turned.stl --outward --json
row '"bodies_turned": 1'
# shellcheck disable=SC2086
keys $intake_keys $measure_keys bodies body_list kind turned repair_doubled repair_split bodies_turned holes_filled facets_added \
    open_edges_before open_edges_after
row '"volume": 1000.0'

# A facet that is turned, beside two that have a part of its edge each: once turned back, it is divided.
{
    echo 'solid tetrahedron'
    facets '0 0 0' '0 6 0' '3 0 0' '3 0 0' '0 6 0' '6 0 0' '0 0 0' '0 0 6' '6 0 0' '6 0 0' '0 6 0' '0 0 6' \
        '0 0 0' '0 0 6' '0 6 0'
    echo endsolid
} >touching.stl
expect 0 "$varnet" repair touching.stl whole.stl
row 'facets turned to agree +1$'
row 'facets divided at a vertex on their edge +1$'
row 'open edges, before and after +7 -> 0$'
row 'volume, mm3 +36$'
[ ! -s err ] || fail "a message for a closed part"
# So it is sliced.
expect 0 "$varnet" slice touching.stl -o touching.cli --layer 1
row 'layers with open paths +0$'

# What cannot be written leaves no file, and leaves an older one as it was.
expect 1 "$varnet" repair fixed.stl nofolder/out.stl
says 'nofolder/out.stl: cannot be created'
expect 1 "$varnet" repair missing.stl fixed.stl
cmp fixed.stl again.stl || fail "the older file"
expect 2 "$varnet" repair fixed.stl
expect 2 "$varnet" repair fixed.stl out.stl --fill-holes -1
nothing_left

# ---- split

cube two.stl 0 0 0 10 10 0 0 10
expect 0 "$varnet" split two.stl -o bodies
[ "$(ls bodies | tr '\n' ' ')" = "two_1.STL two_2.STL " ] || fail "the names of the bodies: $(ls bodies)"
row 'two_1.STL +12 facets, volume 1000$'
expect 1 "$varnet" split two.stl -o bodies
says 'is there already: --force'
expect 0 "$varnet" split two.stl -o bodies --force --json
row '"bodies": 2'
keys bodies files file facets open_edges volume
expect 1 "$varnet" split missing.stl -o nowhere
[ ! -e nowhere ] || fail "a folder for a file that is not there"
expect 1 "$varnet" split two.stl -o two.stl
says 'cannot be made'
