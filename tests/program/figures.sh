#!/usr/bin/env bash
# Whole tables, of parts whose figures can be worked out by hand.
# usage: figures.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

# Cubes of 10 and of 4 side by side: 600 + 96 of area, 1000 + 64 of volume, rims of 12 sides of 40 and of 16.
cube two.stl 1 2 3 10 20 2 3 4
table "$varnet" info two.stl <<'TABLE'
two.stl
  type ASCII STL
  facets in the file 24
  open edges in the file 0
  facets 24
  vertices 16
  open edges 0
  box 1 2 3 to 24 12 13
  area, mm2 696
  volume, mm3 1064
  bodies 2
  body 1 solid, 12 facets, volume 1000, open edges 0
  body 2 solid, 12 facets, volume 64, open edges 0
TABLE
table "$varnet" surfaces two.stl --judge winding <<'TABLE'
two.stl
  surfaces 2
  area, mm2 696
  length of all rims, mm 0
  surface 1 12 facets, area 600, rim 0
  surface 2 12 facets, area 96, rim 0
TABLE
expect 0 "$varnet" surfaces two.stl
row '^  surfaces +12$'
row '^  length of all rims, mm +336$'
[ "$(grep -c 'area 100, rim 40$' out)" -eq 6 ] && [ "$(grep -c 'area 16, rim 16$' out)" -eq 6 ] || fail "the sides"
# More than are listed: 15 cubes have 90 sides.
cube many.stl $(for n in $(seq 15); do echo $((20 * n)) 0 0 $((1 + n % 3)); done)
expect 0 "$varnet" surfaces many.stl
row '^  surfaces +90$'
listed=$(grep -c '^  surface [0-9]' out)
row "^  \.\.\. +$((90 - listed)) smaller ones$"
table "$varnet" repair two.stl repaired.stl <<'TABLE'
two.stl -> repaired.stl
  type ASCII STL
  facets in the file 24
  open edges in the file 0
  facets turned to agree 0
  facets once too often, left out 0
  facets divided at a vertex on their edge 0
  bodies turned outward 0
  holes closed 0
  facets added 0
  open edges, before and after 0 -> 0
  facets 24
  vertices 16
  open edges 0
  box 1 2 3 to 24 12 13
  area, mm2 696
  volume, mm3 1064
  bodies 2
  body 1 solid, 12 facets, volume 1000, open edges 0
  body 2 solid, 12 facets, volume 64, open edges 0
TABLE
# Of binary STL, 84 bytes and 50 a facet; of a plain CSM 88 bytes, 12 a vertex and 12 a facet.
bytes=$(stat -c %s two.stl | sed -E 's/(.)(...)$/\1,\2/')
table "$varnet" convert two.stl two_binary.stl <<TABLE
two.stl -> two_binary.stl
  formats ASCII STL -> binary STL
  type ASCII STL
  facets in the file 24
  open edges in the file 0
  bytes $bytes -> 1,284
  facets 24, read back 24
  open edges 0, read back 0
  volume, mm3 1064, read back 1064
  largest coordinate error, mm 0
  size, of binary STL 1
TABLE
expect 0 "$varnet" convert two_binary.stl two.csm --plain
row '^  bytes +1,284 -> 568$'
row '^  size, of binary STL +0\.4423676012$'

# 20 layers of contours of 40, of which the lower 8 have one of 16 beside it. As they are written, the head goes from
# (0, 0) to (1, 2), and 19 to the other cube and back; in order, it goes over 9 between each two of the lower layers.
expect 0 "$varnet" slice two.stl -o two.cli --layer 0.5 --hatch 0
sed -i '/^  bytes/d' out
shown <<'TABLE'
1 part -> two.cli
  layers 20 of 0.5 mm
  contours 28
  open paths 0
  layers with open paths 0
  gaps closed 0
  points 112
  length of all contours, mm 928
  volume of the mesh, mm3 1064
  volume of the layers, mm3 1064
  fill strokes none: contours only
  support strokes 0
  support solids 0
  travel with the material off, mm 306.236068
  starts and stops 28
TABLE
table "$varnet" layers two.cli <<TABLE
two.cli
  type CLI slices, binary
  units 1
  version 200
  layers 20 of 20 announced
  heights 3.5 to 13
  closed contours 28
  open paths 0
  points 112
  chains of fill 0
  strokes of fill 0
  area of all layers, mm2 2128
  length of contours and paths, mm 928
  length of strokes, mm 0
  box 1 2 to 24 12
 layer z contours open chains points area length box
$(for n in $(seq 20); do
    z=$(awk -v n="$n" 'BEGIN { printf "%g", 3 + n / 2 }')
    if [ "$n" -le 8 ]; then echo " $n $z 2 0 0 8 116 56 1 2 to 24 12"; else echo " $n $z 1 0 0 4 100 40 1 2 to 11 12"; fi
done)
TABLE
table "$varnet" order two.cli ordered.cli <<'TABLE'
two.cli -> ordered.cli
  layers 20
  travel with the material off, mm 306.236068 -> 84.23606798
  starts and stops 28 -> 28
TABLE

expect 0 "$varnet" slice two.stl -o filled.cli --layer 5 --hatch 0.8
row '^  fill strokes +[1-9]'
expect 0 "$varnet" join two.cli -o joined.cli --json
row '^  "layers": 20,$'
expect 0 "$varnet" convert two.cli text.cli --mode ascii
row '^  formats +CLI slices, binary -> CLI slices, text$'
row '^  layers +20, read back 20$'
row '^  contours and paths +28, read back 28$'
row '^  points +112, read back 112$'
row '^  strokes of fill +0, read back 0$'
row '^  largest difference, mm +0$'

# Of the differences of all layers the largest is told, wherever it stands.
differing() {
    printf '%s\n' '$$HEADERSTART' '$$ASCII' '$$UNITS/1' '$$LAYERS/3' '$$HEADEREND' '$$GEOMETRYSTART'
    local z=0 step
    for step in "$@"; do printf '$$LAYER/%d\n$$POLYLINE/1,1,4,0,0,%s,0,4,4,0,0\n' $((++z)) "8$step"; done
    echo '$$GEOMETRYEND'
}
for steps in '.00025 .000125 .0' '.0 .000125 .00025' '.000125 .00025 .0'; do
    # shellcheck disable=SC2086
    differing $steps >differing.cli
    expect 0 "$varnet" convert differing.cli rounded.cli --mode ascii
    row '^  largest difference, mm +0\.00025$'
done

# One path whose line some readers would take for two.
{ printf '$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$LAYERS/1\n$$HEADEREND\n$$GEOMETRYSTART\n$$LAYER/1\n$$POLYLINE/1,1,2001'
  awk 'BEGIN { for (i = 0; i < 2000; ++i) printf ",%d,%d", i, i % 2; print ",0,0" }' && echo '$$GEOMETRYEND'; } >long.cli
expect 0 "$varnet" convert long.cli long_text.cli --mode ascii
says 'long_text\.cli: 1 paths have lines of over 10,239 characters'
expect 0 "$varnet" convert long.cli long_binary.cli --mode binary
[ ! -s err ] || fail "a warning of lines in a binary file"

# A pyramid cut in the middle of each of 400 layers: of its volume V, a quarter of V / 400^2 is missing. A facet that lies
# flat has no layer. A facet without area and one that is not there alone count as healed.
mkdir parts
{ echo 'solid p' && facets '0 0 0' '0 10 0' '10 0 0' '10 0 0' '0 10 0' '10 10 0' '0 0 0' '10 0 0' '5 5 9' \
    '10 0 0' '10 10 0' '5 5 9' '10 10 0' '0 10 0' '5 5 9' '0 10 0' '0 0 0' '5 5 9' && echo 'endsolid p'; } >parts/pyramid.stl
{ echo 'solid f' && facets '0 0 1' '10 0 1' '0 10 1' && echo 'endsolid f'; } >parts/flat.stl
cube parts/sick.stl 0 0 0 10
sed -i '$d' parts/sick.stl
facets '0 0 0' '0 0 0' '5 0 0' '0 0 0' '10 0 0' '0 0 0' >>parts/sick.stl
expect 0 "$varnet" whole parts
row '^flat\.stl +1 +3 +3 +1 +0 +0 +0 +0 +[0-9]+\.[0-9][0-9]$'
row '^pyramid\.stl +6 +0 +0 +1 +0 +300 +299\.9995 +0 +'
row '^sick\.stl +12 +0 +0 +1 +2 +1000 +1000 +0 +'
[ "$(wc -l <out)" -eq 5 ] || fail "two lines above those of the files"
expect 0 "$varnet" whole parts --json
row '"layer_volume": 299\.99953'
[ "$(head -c 1 out)" = '{' ] || fail "a table with the JSON"
# A facet with a coordinate that is no number is lost, and counts among those of the file.
cube lost.stl 0 0 0 10
facets '0 0 30' '1 0 30' '0 one 30' >>lost.stl
expect 0 "$varnet" info lost.stl
row '^  facets in the file +13$'
row '^  facets that could not be read +1$'
row '^  facets +12$'
# A part of half a millimetre, high above the plate, is likely to be in another unit.
cube small.stl 0 0 7 0.5
expect 0 "$varnet" info small.stl
says 'small\.stl: the part is 0\.5 mm long'
expect 0 "$varnet" info small.stl --units in
[ ! -s err ] || fail "a warning for a part of half an inch"
row '^  volume, mm3 +2048\.383$'

# Fifty of the files are listed.
cube bodies.stl $(for n in $(seq 53); do echo $((5 * n)) 0 0 2; done)
expect 0 "$varnet" split bodies.stl -o bodies
[ "$(grep -c '^  bodies_[0-9]*.STL  *12 facets, volume 8$' out)" -eq 50 ] || fail "the list of the files"
row '^  \.\.\. +3 more$'
[ "$(ls bodies | wc -l)" -eq 53 ] || fail "a file for each body"
# Nothing is said of more where there is no more: fifty bodies, fifty regions that hang, twenty surfaces.
cube fifty.stl $(for n in $(seq 50); do echo $((5 * n)) 0 $((n % 2)) 2; done)
expect 0 "$varnet" split fifty.stl -o fifty
[ "$(grep -c '^  fifty_[0-9]*.STL  *12 facets, volume 8$' out)" -eq 50 ] && ! grep -qF ... out || fail "fifty bodies"
expect 0 "$varnet" support fifty.stl -o fifty_supports.stl
[ "$(grep -c '^  region [0-9]*  *dropped: rests on the plate; area 4, ' out)" -eq 25 ] || fail "regions on the plate"
[ "$(grep -c '^  region [0-9]*  *kept: faces down; area 4, ' out)" -eq 25 ] && ! grep -qF ... out || fail "fifty regions"
cube fifty_one.stl $(for n in $(seq 51); do echo $((5 * n)) 0 0 2; done)
expect 0 "$varnet" support fifty_one.stl -o fifty_supports.stl
row '^  \.\.\. +1 more$'
cube surfaces.stl 0 0 0 2 5 0 0 2 10 0 0 2
sed -i '$d' surfaces.stl
facets '20 0 0' '22 0 0' '20 2 0' '25 0 0' '27 0 0' '25 2 0' >>surfaces.stl
expect 0 "$varnet" surfaces surfaces.stl
row '^  surfaces +20$'
row '^  surface 18 +2 facets, area 4, rim 8$'
row '^  surface 20 +1 facets, area 2, rim 6\.8284'
! grep -qF ... out || fail "twenty surfaces"

# The colours of the facets stand at the end of a PLY file: a size, three numbers and a colour are 16 bytes.
colors() {
    tail -c $((16 * $2)) "$1" | od -An -v -tx1 -w16 | awk '{ print $14 $15 $16 }' | uniq -c |
        awk '{ printf "%s%s:%s", (NR > 1 ? " " : ""), $2, $1 }'
}
cube colors.stl 0 0 0 10 30 0 5 10
expect 0 "$varnet" support colors.stl -o colors_supports.stl --ply colors.ply
[ "$(colors colors.ply 24)" = 'e8c840:2 c0c0c0:10 d03020:2 c0c0c0:10' ] || fail "colours of what hangs: $(colors colors.ply 24)"
expect 0 "$varnet" surfaces colors.stl -o colors.ply
[ "$(colors colors.ply 24 | tr ' ' '\n' | grep -c ':2$')" -eq 12 ] || fail "colours of surfaces: $(colors colors.ply 24)"
! colors colors.ply 24 | grep -q c0c0c0 || fail "a surface without a colour"
# The manual shows a value behind the options that take one, and behind no other.
expect 0 "$varnet" manual man
grep -qF '.B \-\-weld \fIvalue\fR' out && grep -qxF '.B \-\-json' out || fail "values of the options in the manual"
expect 0 "$varnet" manual zsh
row "'--json\[[^]]*\]'"
row "'--weld\[[^]]*\]:value:_files'"

# Facets that do not come back are counted, and the size is held against that of all facets.
cube touching.stl 0 0 0 10 10 0 0 10
expect 0 "$varnet" convert touching.stl touching.csm
row '^  facets +24, read back 20$'
says 'touching\.csm: 4 facets did not come back$'
row "^  size, of binary STL +$(awk -v n="$(stat -c %s touching.csm)" 'BEGIN { printf "%.10g", n / (84 + 50 * 24) }')$"
echo 'a header' >header.txt
expect 2 "$varnet" convert touching.stl touching.csm --plain --header header.txt
expect 2 "$varnet" convert touching.stl touching.csm --ring --header header.txt
# The larger surfaces stand first.
cube rising.stl 0 0 0 2 20 0 0 10 40 0 0 5
expect 0 "$varnet" surfaces rising.stl --judge winding
row '^  surface 1 +12 facets, area 600, rim 0$'
row '^  surface 2 +12 facets, area 150, rim 0$'
row '^  surface 3 +12 facets, area 24, rim 0$'
# The sides of a cube: six normals; the four upright ones are one to those who count octants; one shell.
cube rising.stl 0 0 0 2
for rule in normal:6 eight:3 winding:1; do
    expect 0 "$varnet" surfaces rising.stl --judge "${rule%:*}"
    row "^  surfaces +${rule#*:}$"
done
# A file that cannot be read has its place among those that can, and nothing is overwritten where one name is taken.
expect 1 "$varnet" info missing.stl rising.stl --json
row '"file": "missing.stl"'
row '"error": "missing.stl: '
row '"file": "rising.stl"'
mkdir taken_names
cube rising.stl 0 0 0 2 20 0 0 10 40 0 0 5
touch taken_names/rising_3.STL
expect 1 "$varnet" split rising.stl -o taken_names
says 'rising_3.STL: is there already: --force overwrites it'
[ "$(ls taken_names)" = rising_3.STL ] || fail "bodies beside one that is there"

# What the options take, and what they are where nobody says.
limits() { "$varnet" "$1" --help | grep -oE -- '--[a-z-]+ (FLOAT|INT):[A-Z]+ in \[[^]]*\](=[0-9.]+)?' | tr -s ' ' | sort; }
taken() { sort | diff - <(limits "$1") || fail "the limits of $1"; }
reading() { printf '%s\n' '--weld FLOAT:FLOAT in [0 - 1000]' '--scale FLOAT:FLOAT in [1e-09 - 1e+09]=1'; }
for command in info convert split surfaces whole view; do reading | taken $command; done
{ reading && echo '--fill-holes FLOAT:FLOAT in [0 - 1e+09]'; } | taken repair
{ reading && printf '%s\n' '--angle FLOAT:FLOAT in [0 - 90]=44' '--min-area FLOAT:FLOAT in [0 - 1e+12]=1' \
    '--down FLOAT:FLOAT in [1e-06 - 1e+09]' '--edges-up FLOAT:FLOAT in [0 - 90]=45' \
    '--edges-down FLOAT:FLOAT in [0 - 90]=45' '--edge-length FLOAT:FLOAT in [0 - 1e+09]=1'; } | taken support
{ reading && printf '%s\n' '--layer FLOAT:FLOAT in [1e-06 - 1e+06]=0.2' '--hatch FLOAT:FLOAT in [0 - 1e+06]=0.5' \
    '--angle FLOAT:FLOAT in [-360 - 360]=45' '--close FLOAT:FLOAT in [0 - 1e+06]=0.05' \
    '--fill-holes FLOAT:FLOAT in [0 - 1e+09]' '--threads INT:INT in [1 - 1024]=1'; } | taken slice
echo '--layer INT:INT in [1 - 2147483647]' | taken layers
printf '%s\n' '--width FLOAT:FLOAT in [1e-09 - 1e+09]' '--cut FLOAT:FLOAT in [0 - 1e+09]' | taken order
