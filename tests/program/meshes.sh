#!/usr/bin/env bash
# All that varnet repair, split and surfaces tell of parts whose every figure is another one.
# usage: meshes.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

part() { sed '1d;$d' "$1"; }
solid() { cube one "$@" && part one; }
# A cube without the two facets of the highest x, without one of them, and with its first facet turned.
open() { solid "$@" | head -n -14; }
holed() { solid "$@" | head -n -7; }
contradicting() { solid "$@" | head -n 7 | turned && solid "$@" | tail -n +8; }

# ---- repair

# Of six cubes a facet is turned, beside one that stands there twice in three of them. One has a facet twice that is not turned, two are
# inside out, three have a side less and two a facet less, and of a large one a side is missing, whose rim is longer.
{
    echo 'solid ill'
    for n in 1 2 3 4 5 6; do contradicting $((20 * n)) 0 0 10; done
    for n in 1 2 3; do solid $((20 * n)) 0 0 10 | sed -n 8,14p; done
    solid 140 0 0 10
    solid 140 0 0 10 | head -n 7
    for n in 8 9; do solid $((20 * n)) 0 0 10 | turned; done
    for n in 10 11 12; do open $((20 * n)) 0 0 10; done
    for n in 13 14; do holed $((20 * n)) 0 0 10; done
    open -1000 0 0 1000
    echo endsolid
} >ill.stl
# Facets: 9 whole cubes with 12, 4 that stand there twice, 3 open cubes with 10, 2 with 11, 10 of the large one. Open edges in the
# file: 6 around a turned facet, and 3 more of each that stands twice; 4, 3 and 4 of the holes. Volumes: 14 cubes, and the
# large one, which is whole as its open side lies in the plane of the origin.
ill() {
    cat <<TABLE
  type ASCII STL
  facets in the file 174
  open edges in the file 70
  facets once too often, left out 1
  edges of more than two facets 12
TABLE
}
expect 0 "$varnet" repair ill.stl well.stl --outward --fill-holes 40
{
    echo 'ill.stl -> well.stl'
    ill
    cat <<'TABLE'
  facets turned to agree 6
  facets once too often, left out 3
  facets divided at a vertex on their edge 0
  bodies turned outward 2
  holes closed 5
  facets added 8
  open edges, before and after 70 -> 4
  facets 178
  vertices 120
  open edges 4
  box -1000 0 0 to 290 1000 1000
  area, mm2 5008400
  volume, mm3 1000014000
  bodies 15
TABLE
    for n in $(seq 14); do echo "  body $n solid, 12 facets, volume 1000, open edges 0"; done
    echo '  body 15 solid, 10 facets, volume 1000000000, open edges 4'
} | shown
messages <<'TEXT'
varnet: warning: well.stl: 4 edges are open: --fill-holes MM closes holes with rims up to that length
TEXT
[ "$(stat -c %s well.stl)" -eq $((84 + 50 * 178)) ] || fail "the repaired file"
expect 0 "$varnet" repair ill.stl well.stl --outward --fill-holes 40 --json
grep -vE '^    |^  []]' out | grep -v body_list >facts
document facts <<'JSON'
{ "area": 5008400.0, "bodies": 15, "bodies_turned": 2, "box": [ "collinear_turned": 0, "degenerate": 0, "doubled": 1,
  "facets": 178, "facets_added": 8, "facets_in_file": 174, "facets_lost": 0, "holes_filled": 5, "many_facet_edges": 12,
  "not_finite": 0, "notes": [], "open_edges": 4, "open_edges_after": 4, "open_edges_before": 70, "open_edges_in_file": 70,
  "repair_doubled": 3, "repair_split": 0, "schema": 1, "split": 0, "turned": 6, "type": "ASCII STL", "vertices": 120, "volume": 1000014000.0,
  "weld_tolerance": 0.0, "welded": 0 }
JSON
# Nothing is turned and nothing filled that nobody asked for; what could be is said, once for all bodies.
expect 0 "$varnet" repair ill.stl well.stl
row '^  bodies turned outward +0$'
row '^  holes closed +0$'
messages <<'TEXT'
varnet: warning: well.stl: 22 edges are open: --fill-holes MM closes holes with rims up to that length
varnet: warning: well.stl: a body is inside out: --outward turns it
TEXT
# Rims of 10 + 10 + 14.1 are closed at 34.2, and no longer ones.
expect 0 "$varnet" repair ill.stl well.stl --fill-holes 34.2
row '^  holes closed +2$'
row '^  facets added +2$'
row '^  open edges, before and after +70 -> 16$'
# To standard output: the table, and the JSON, go to standard error, and what warns does too.
for option in '' --json; do
    # shellcheck disable=SC2086
    expect 0 "$varnet" repair ill.stl well.stl $option
    cp out told
    # shellcheck disable=SC2086
    expect 0 "$varnet" repair ill.stl - $option
    cmp out well.stl || fail "the repaired part on standard output"
    sed '/^varnet: warning/d; s/ill.stl -> -/ill.stl -> well.stl/' err | cmp - told || fail "the table beside standard output"
    says '^varnet: warning: -: 22 edges are open: '
    says '^varnet: warning: -: a body is inside out: '
done

# ---- split

# A cube of 10, an open cube of 6, and the corner of a box of 3, 5 and 2.
{
    echo 'solid three'
    solid 10 0 0 10
    open -6 0 0 6
    facets '40 0 0' '40 5 0' '43 0 0' '40 0 0' '43 0 0' '40 0 2' '43 0 0' '40 5 0' '40 0 2' '40 5 0' '40 0 0' '40 0 2'
    echo endsolid
} >three.stl
expect 0 "$varnet" split three.stl -o bodies
shown <<'TABLE'
three.stl -> bodies
  bodies 3
  three_1.STL 12 facets, volume 1000
  three_2.STL 10 facets, volume 216
  three_3.STL 4 facets, volume 5
TABLE
quiet
for n in 1:12 2:10 3:4; do
    [ "$(stat -c %s "bodies/three_${n%:*}.STL")" -eq $((84 + 50 * ${n#*:})) ] || fail "body ${n%:*}"
done
expect 0 "$varnet" split three.stl -o bodies --force --json
document <<'JSON'
{ "bodies": 3,
  "files": [ {"facets": 12, "file": "three_1.STL", "open_edges": 0, "volume": 1000.0},
             {"facets": 10, "file": "three_2.STL", "open_edges": 4, "volume": 216.0},
             {"facets": 4, "file": "three_3.STL", "open_edges": 0, "volume": 5.0} ],
  "schema": 1 }
JSON
# One file that is there is enough to write none, whichever it is; with --force each is written anew.
for n in 1 2 3; do
    mkdir one_$n
    echo mine >one_$n/three_$n.STL
    expect 1 "$varnet" split three.stl -o one_$n
    messages <<<"varnet: one_$n/three_$n.STL: is there already: --force overwrites it"
    [ ! -s out ] && [ "$(ls one_$n)" = three_$n.STL ] && [ "$(cat one_$n/three_$n.STL)" = mine ] || fail "files beside one that is there"
    expect 0 "$varnet" split three.stl -o one_$n --force
    for body in 1 2 3; do cmp one_$n/three_$body.STL bodies/three_$body.STL || fail "body $body with --force"; done
done
# Of the options of reading none is lost, and folders are made in folders.
expect 0 "$varnet" split three.stl -o deep/in/folders --scale 2 --units cm
row '^  three_1\.STL +12 facets, volume 8000000$'
[ "$(ls deep/in/folders | wc -l)" -eq 3 ] || fail "folders in folders"
# Where a body cannot be written, those before it stay.
mkdir -p taken/three_2.STL
expect 1 "$varnet" split three.stl -o taken --force
says '^varnet: taken/three_2\.STL: '
[ ! -s out ] && cmp taken/three_1.STL bodies/three_1.STL && [ ! -e taken/three_3.STL ] || fail "bodies beside a folder of their name"
# Fifty are listed, in JSON all.
cube many.stl $(for n in $(seq 51); do echo $((5 * n)) 0 0 2; done)
expect 0 "$varnet" split many.stl -o many
row '^  many_50\.STL  '
row '^  \.\.\. +1 more$'
! grep -q many_51 out || fail "more than fifty"
expect 0 "$varnet" split many.stl -o many --json --force
[ "$(grep -c '"file": "many_' out)" -eq 51 ] || fail "all bodies in JSON"

# ---- surfaces

{
    echo 'solid surfaces'
    open 0 0 0 6
    facets '40 0 0' '43 0 0' '40 4 0'
    solid 20 0 0 10
    echo endsolid
} >surfaces.stl
# 5 sides of 36 with a rim of 24; half of 3 by 4, with 5 between; 6 sides of 100.
surfaces() {
    cat <<'TABLE'
  surfaces 3
  area, mm2 786
  length of all rims, mm 36
  surface 1 12 facets, area 600, rim 0
  surface 2 10 facets, area 180, rim 24
  surface 3 1 facets, area 6, rim 12
TABLE
}
surfaces_json() {
    cat <<'JSON'
{ "area": 786.0, "rim": 36.0, "schema": 1,
  "surface_list": [ {"area": 600.0, "facets": 12, "rim": 0.0}, {"area": 180.0, "facets": 10, "rim": 24.0},
                    {"area": 6.0, "facets": 1, "rim": 12.0} ],
  "surfaces": 3 }
JSON
}
expect 0 "$varnet" surfaces surfaces.stl --judge winding
{ echo surfaces.stl && surfaces; } | shown
expect 0 "$varnet" surfaces surfaces.stl --judge winding -o surfaces.ply
{ echo surfaces.stl && surfaces; } | shown
expect 0 "$varnet" surfaces surfaces.stl --judge winding --json
surfaces_json | document
expect 0 "$varnet" surfaces surfaces.stl --judge winding -o -
cmp out surfaces.ply || fail "the picture on standard output"
{ echo surfaces.stl && surfaces; } | shown err
expect 0 "$varnet" surfaces surfaces.stl --judge winding -o - --json
cmp out surfaces.ply || fail "the picture on standard output"
surfaces_json | document err
expect 0 "$varnet" surfaces surfaces.stl --judge winding --scale 10
row '^  area, mm2 +78600$'
# What is as large stands in the order of the file: rectangles of 36, each kind with a rim of its own. Twenty are listed.
{
    echo 'solid equal'
    for n in 1 2 3 4 5; do
        for sides in 6:6 4:9 3:12 2:18 1:36; do
            x=${sides%:*} y=${sides#*:} z=$((10 * n + x))
            facets "0 0 $z" "$x 0 $z" "$x $y $z" "0 0 $z" "$x $y $z" "0 $y $z"
        done
    done
    echo endsolid
} >equal.stl
expect 0 "$varnet" surfaces equal.stl
{
    printf '%s\n' equal.stl '  surfaces 25' '  area, mm2 900' '  length of all rims, mm 970'
    rims=(24 26 30 40 74)
    for n in $(seq 20); do echo "  surface $n 2 facets, area 36, rim ${rims[(n - 1) % 5]}"; done
    echo '  ... 5 smaller ones'
} | shown
expect 0 "$varnet" surfaces equal.stl --json
[ "$(grep '"rim"' out | tr -d ' "rim:,\n.')" = "9700$(for n in 1 2 3 4 5; do printf '240260300400740'; done)" ] ||
    fail "all surfaces in JSON, in the order of the file"
