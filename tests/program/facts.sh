#!/usr/bin/env bash
# All that varnet info and varnet layers tell of files whose every figure is another one: whole tables, whole JSON.
# usage: facts.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

# ---- bodies of each kind

# A cube of 20 with a hollow of 4, a corner that is inside out, cut off a box of 3, 5 and 2, and a cube of 6 without the side
# of the highest x. That side lies in the plane of the origin, so that the volume is that of the whole cube.
cube block.stl 1 2 3 20
cube hollow.stl 5 6 7 4
cube open.stl -6 0 0 6
{
    sed '$d' block.stl
    turned hollow.stl | sed '1d;$d'
    facets '40 0 0' '43 0 0' '40 5 0' '40 0 0' '40 0 2' '43 0 0' '43 0 0' '40 0 2' '40 5 0' '40 5 0' '40 0 2' '40 0 0'
    sed 1d open.stl | head -n -15
    echo endsolid
} >kinds.stl
# Areas: 6 sides of 400, 6 of 16, 7.5 + 5 + 3 and the slanted one of 9.5, 5 of 36. Volumes: 8000 - 64 - 5 + 216.
expect 0 "$varnet" info kinds.stl
shown <<'TABLE'
kinds.stl
  type ASCII STL
  facets in the file 38
  open edges in the file 4
  facets 38
  vertices 28
  open edges 4
  box -6 0 0 to 43 22 23
  area, mm2 2701
  volume, mm3 8147
  bodies 4
  body 1 solid, 12 facets, volume 8000, open edges 0
  body 2 cavity, 12 facets, volume -64, open edges 0
  body 3 inside out, 4 facets, volume -5, open edges 0
  body 4 solid, 10 facets, volume 216, open edges 4
TABLE
quiet
expect 1 "$varnet" info missing.stl kinds.stl none.stl --json
document <<'JSON'
{
  "files": [
    {"error": "missing.stl: no such file", "file": "missing.stl"},
    {
      "area": 2701.0, "bodies": 4,
      "body_list": [
        {"area": 2400.0, "box": [[1.0, 2.0, 3.0], [21.0, 22.0, 23.0]], "facets": 12, "kind": "solid", "open_edges": 0,
            "volume": 8000.0},
        {"area": 96.0, "box": [[5.0, 6.0, 7.0], [9.0, 10.0, 11.0]], "facets": 12, "kind": "cavity", "open_edges": 0,
            "volume": -64.0},
        {"area": 25.0, "box": [[40.0, 0.0, 0.0], [43.0, 5.0, 2.0]], "facets": 4, "kind": "inside out", "open_edges": 0,
            "volume": -5.0},
        {"area": 180.0, "box": [[-6.0, 0.0, 0.0], [0.0, 6.0, 6.0]], "facets": 10, "kind": "solid", "open_edges": 4,
            "volume": 216.0}
      ],
      "box": [[-6.0, 0.0, 0.0], [43.0, 22.0, 23.0]],
      "collinear_turned": 0, "degenerate": 0, "doubled": 0, "facets": 38, "facets_in_file": 38, "facets_lost": 0,
      "file": "kinds.stl", "many_facet_edges": 0, "not_finite": 0, "notes": [], "open_edges": 4, "open_edges_in_file": 4,
      "split": 0, "type": "ASCII STL", "vertices": 28, "volume": 8147.0, "weld_tolerance": 0.0, "welded": 0
    },
    {"error": "none.stl: no such file", "file": "none.stl"}
  ],
  "schema": 1
}
JSON
messages <<'TEXT'
varnet: missing.stl: no such file
varnet: none.stl: no such file
varnet: 2 of 3 files could not be read
TEXT
# As it is printed: a name a line, two blanks for each depth.
head -n 4 out | diff - <(printf '{\n  "files": [\n    {\n      "error": "missing.stl: no such file",\n') ||
    fail "the lines of the JSON"

# ---- everything that can be wrong with facets, each so often as nothing else

part() { # FILE's facets alone
    sed '1d;$d' "$1"
}
# Of one upper edge the one neighbour knows a vertex in the middle, and the other does not: 13 facets.
tee_cube() {
    cube one "$1" 0 0 2
    sed '16,22d' one | part /dev/stdin
    facets "$1 0 2" "$(($1 + 1)) 0 2" "$1 2 2" "$(($1 + 1)) 0 2" "$(($1 + 2)) 0 2" "$1 2 2"
}
# The last time that a corner stands there it is off by 0.0001.
apart_cube() {
    cube one "$1" 0 0 2
    tac one | sed "0,/vertex $(($1 + 2)) 2 2/s//vertex $(($1 + 2)) 2.0001 2/" | tac | part /dev/stdin
}
{
    echo 'solid sick'
    # Once a facet without area lies between, and nothing is open.
    tee_cube 10
    facets '11 0 2' '10 0 2' '12 0 2'
    for x in 110 120; do tee_cube $x; done
    for x in 210 220 230; do
        cube one $x 0 0 2
        part one
        facets "$x 0 0" "$x 2 0" "$((x + 2)) 0 0"
    done
    for x in 310 320 330 340; do apart_cube $x; done
    # Two cubes that share an edge.
    for x in 410 420 430 440 450; do
        cube one $x 0 0 2 $((x + 2)) 2 0 2
        part one
    done
    for n in 1 2 3 4 5 6; do facets '0 0 0' '1 1 1' '0 0 0'; done
    for n in 1 2 3 4 5 6 7; do facets '0 0 0' '1 1e11 1' '0 0 9'; done
    for n in 1 2 3 4 5 6 7 8; do facets '0 0 0' '1 one 1' '0 0 9'; done
    echo endsolid
} >sick.stl
# Facets: 3 cubes of 13 and one without area; 3 with a doubled one, 4 whole ones, 10 in pairs; 6 + 7 + 8. Those of 13 become 14.
# Open: 3 edges of a long facet beside two short ones, twice; 3 of each doubled facet; 4 around each corner that is apart.
# Edges of more than two facets: one for each pair of cubes, three of each doubled facet. Lines: one, and 7 for
# each of the 260 facets before the first that could not be read.
facts() {
    cat <<TABLE
  type ASCII STL
  facets in the file 268
  open edges in the file 31
  facets that could not be read 8
  facets with a corner that is no number 7
  facets with two equal corners, left out 6
  facets once too often, left out 3
  facets without area, taken out 1
  facets divided at a vertex on their edge 2
  vertices joined with a near one 4
  joined within, mm $1
  edges of more than two facets 14
  note 8 facets of 268 could not be read, the first in line 1822
TABLE
}
measures() {
    cat <<TABLE
  facets 246
  vertices 153
  open edges 0
  box 10 0 0 to 454 4 2
  area, mm2 480
  volume, mm3 160
  bodies 20
$(for n in $(seq 20); do echo "  body $n solid, $((n < 4 ? 14 : 12)) facets, volume 8, open edges 0"; done)
TABLE
}
expect 0 "$varnet" info sick.stl --weld 0.002
{ echo sick.stl && facts 0.002 && measures; } | shown
messages <<<'varnet: warning: sick.stl: 8 of 268 facets could not be read'
expect 0 "$varnet" info sick.stl --json --weld 0.002
sed -n '/"collinear_turned"/,$p' out >end
document end <<'JSON'
"collinear_turned": 1, "degenerate": 6, "doubled": 3, "facets": 246, "facets_in_file": 268, "facets_lost": 8,
"file": "sick.stl", "many_facet_edges": 14, "not_finite": 7,
"notes": ["8 facets of 268 could not be read, the first in line 1822"], "open_edges": 0, "open_edges_in_file": 31, "split": 2,
"type": "ASCII STL", "vertices": 153, "volume": 160.0, "weld_tolerance": 0.002, "welded": 4 } ], "schema": 1 }
JSON
# Repair, with nothing left to do, tells the same of the file.
expect 0 "$varnet" repair sick.stl out.stl --weld 0.002
{
    echo 'sick.stl -> out.stl'
    facts 0.002
    printf '  %s 0\n' 'facets turned to agree' 'facets once too often, left out' \
        'facets divided at a vertex on their edge' 'bodies turned outward' 'holes closed' 'facets added'
    echo '  open edges, before and after 31 -> 0'
    measures
} | shown
# Nothing is joined where --weld is 0: the corners that are apart stay so.
expect 0 "$varnet" info sick.stl --weld 0
! grep -q joined out || fail "joined within nothing"
row '^  open edges +16$'
# A file whose every facet is left out is no part.
{ echo 'solid none' && facets '0 0 0' '1 1 1' '0 0 0' && echo endsolid; } >none.stl
expect 1 "$varnet" info none.stl
[ ! -s out ] || fail "a table of nothing"
messages <<'TEXT'
varnet: none.stl: none of its facets can be used
varnet: 1 of 1 files could not be read
TEXT

# ---- slices

# In halves of a millimetre: a square of 10 with a hole of 2 and an open path of 5 mm; strokes of 5 and 10, thrice 3, and 1 and 2
# in chains of their own; a box of 1 and 3 with an open path of 5 mm; nothing, twice.
cat >slices.cli <<'CLI'
$$HEADERSTART
$$ASCII
$$UNITS/0.5
$$VERSION/150
$$LAYERS/6
$$DIMENSION/1,2,3,4,5,6
$$HEADEREND
$$GEOMETRYSTART
// a comment
$$LAYER/3
$$POLYLINE/1,1,5,0,0,20,0,20,20,0,20,0,0
$$POLYLINE/2,0,5,4,4,4,8,8,8,8,4,4,4
$$POLYLINE/3,2,2,0,0,6,8
$$LAYER/5
$$HATCHES/1,2,0,0,6,8,0,0,0,20
$$HATCHES/1,3,2,0,2,6,4,0,4,6,6,0,6,6
$$HATCHES/1,1,0,0,0,2
$$HATCHES/1,1,0,0,0,4
$$LAYER/9
$$POLYLINE/1,1,5,30,0,32,0,32,6,30,6,30,0
$$POLYLINE/3,2,3,0,40,0,44,0,50
$$LAYER/10
$$LAYER/11
$$GEOMETRYEND
CLI
slices() {
    cat <<'TABLE'
slices.cli
  type CLI slices, text
  units 0.5
  version 150
  layers 5 of 6 announced
  heights 1.5 to 5.5
  closed contours 3
  open paths 2
  points 17
  chains of fill 4
  strokes of fill 7
  area of all layers, mm2 99
  length of contours and paths, mm 66
  length of strokes, mm 27
  box 0 0 to 16 25
  note the header announces 6 layers, and there are 5
  note 1 comments were passed over
  note the header states the box 0.5 1 to 2 2.5, and the layers have another one
TABLE
}
expect 0 "$varnet" info slices.cli
slices | shown
expect 0 "$varnet" layers slices.cli
{
    slices
    cat <<'TABLE'
 layer z contours open chains points area length box
 1 1.5 2 1 0 10 96 53 0 0 to 10 10
 2 2.5 0 0 4 0 0 0 0 0 to 3 10
 3 4.5 1 1 0 7 3 13 0 0 to 16 25
 4 5 0 0 0 0 0 0 none
 5 5.5 0 0 0 0 0 0 none
TABLE
} | shown
expect 0 "$varnet" layers slices.cli --json
document <<'JSON'
{
  "announced": 6, "area": 99.0, "box": [[0.0, 0.0], [16.0, 25.0]], "chains": 4, "contours": 3, "file": "slices.cli",
  "layers": 5, "length": 66.0,
  "list": [
    {"area": 96.0, "box": [[0.0, 0.0], [10.0, 10.0]], "chains": 0, "contours": 2, "length": 53.0, "number": 1, "open_paths": 1,
        "points": 10, "stroke_length": 0.0, "strokes": 0, "z": 1.5},
    {"area": 0.0, "box": [[0.0, 0.0], [3.0, 10.0]], "chains": 4, "contours": 0, "length": 0.0, "number": 2, "open_paths": 0,
        "points": 0, "stroke_length": 27.0, "strokes": 7, "z": 2.5},
    {"area": 3.0, "box": [[0.0, 0.0], [16.0, 25.0]], "chains": 0, "contours": 1, "length": 13.0, "number": 3, "open_paths": 1,
        "points": 7, "stroke_length": 0.0, "strokes": 0, "z": 4.5},
    {"area": 0.0, "box": null, "chains": 0, "contours": 0, "length": 0.0, "number": 4, "open_paths": 0, "points": 0,
        "stroke_length": 0.0, "strokes": 0, "z": 5.0},
    {"area": 0.0, "box": null, "chains": 0, "contours": 0, "length": 0.0, "number": 5, "open_paths": 0, "points": 0,
        "stroke_length": 0.0, "strokes": 0, "z": 5.5}
  ],
  "notes": ["the header announces 6 layers, and there are 5", "1 comments were passed over",
      "the header states the box 0.5  1  to  2  2.5, and the layers have another one"],
  "open_paths": 2, "points": 17, "schema": 1, "stroke_length": 27.0, "strokes": 7, "type": "CLI slices, text", "units": 0.5,
  "version": 150
}
JSON
