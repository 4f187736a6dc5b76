#!/usr/bin/env bash
# All that varnet whole tells of a folder, and into how many layers it cuts.
# usage: folder.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

part() { sed '1d;$d' "$1"; }
solid() { cube one "$@" && part one; }
box() { # X Y Z WIDTH DEPTH HEIGHT
    cube one 0 0 0 1
    awk -v x="$1" -v y="$2" -v z="$3" -v dx="$4" -v dy="$5" -v dz="$6" \
        '/^vertex/ { print $1, x + dx * $2, y + dy * $3, z + dz * $4; next } { print }' one | part /dev/stdin
}

mkdir -p parts/in/deep parts/folder.stl
# Cubes of 2. Of an upper edge the one neighbour knows a vertex in the middle: once with a facet without area between, twice not.
tee_cube() {
    cube one "$1" 0 0 2
    sed '16,22d' one | part /dev/stdin
    facets "$1 0 2" "$(($1 + 1)) 0 2" "$1 2 2" "$(($1 + 1)) 0 2" "$(($1 + 2)) 0 2" "$1 2 2"
}
{
    echo 'solid sick'
    tee_cube 10
    facets '11 0 2' '10 0 2' '12 0 2'
    for x in 110 120; do tee_cube $x; done
    # Four with a facet twice, eight with a corner that stands apart once, sixteen facets with two equal corners.
    for x in 210 220 230 240; do
        solid $x 0 0 2
        facets "$x 0 0" "$x 2 0" "$((x + 2)) 0 0"
    done
    for x in 310 320 330 340 350 360 370 380; do
        cube one $x 0 0 2
        tac one | sed "0,/vertex $((x + 2)) 2 2/s//vertex $((x + 2)) 2.0001 2/" | tac | part /dev/stdin
    done
    for n in $(seq 16); do facets '20 0 0' '20 1 1' '20 0 0'; done
    # One without the side of the highest x, which lies in the plane of the first corner: its volume is that of the whole cube.
    solid 8 20 0 2 | head -n -14
    echo endsolid
} >parts/in/deep/sick.stl
# Facets: 3 of 14, 12 of 12, 10. Open edges in the file: 3 beside each long facet, twice, 3 of each doubled facet, 4 around each
# corner, 4 of the open side. Layers of the open cube have one open path each, and no volume.
solid 0 0 0 3 >one && { echo 'solid cube' && cat one && echo endsolid; } >parts/Cube.STL
echo 'no part' >parts/broken.stl
echo 'no part' >parts/readme.txt
cp parts/Cube.STL parts/not.stl.txt
for kind in csm:--plain oltp: 3dmf:; do
    case $kind in
        csm:*) expect 0 "$varnet" convert parts/Cube.STL parts/a.csm --plain ;;
        oltp:*)
            binary parts/Cube.STL binary.stl
            { head -c 80 binary.stl && head -c 176 /dev/zero && tail -c +81 binary.stl; } >parts/b.oltp
            ;;
        3dmf:*)
            {
                printf '<VERTICES>\n'
                for n in 0 1 2 3 4 5 6 7; do
                    printf '<VERTEX x="%d" y="%d" z="%d"/>\n' $((3 * (n % 2))) $((3 * (n / 2 % 2))) $((3 * (n / 4)))
                done
                printf '</VERTICES>\n<TRIANGLES>\n'
                printf '<TRIANGLE a="%d" b="%d" c="%d"/>\n' 0 2 1 1 2 3 4 5 6 5 7 6 0 1 4 1 5 4 2 6 3 3 6 7 0 4 2 2 4 6 1 3 5 3 7 5
                printf '</TRIANGLES>\n'
            } >parts/c.3DMF
            ;;
    esac
done
expect 0 "$varnet" whole parts
sed -E 's/ +[0-9]+\.[0-9][0-9]$/ SECONDS/' out | tr -s ' ' | diff - <(cat <<'TABLE'
file facets open in open bodies healed volume of mesh of layers open seconds
 the file read mm3 mm3 paths 
Cube.STL 12 0 0 1 0 27 27 0 SECONDS
a.csm 12 0 0 1 0 27 27 0 SECONDS
b.oltp 12 0 0 1 0 27 27 0 SECONDS
broken.stl parts/broken.stl: is text, but no ASCII STL: it has none of its words
c.3DMF 12 0 0 1 0 27 27 0 SECONDS
in/deep/sick.stl 196 54 4 16 31 128 120 400 SECONDS
TABLE
) || fail "the table of a folder"
# Columns stand below each other.
sed -n '1p;3p' out | awk '{ print length($0) }' | uniq | wc -l | grep -qx 1 || fail "columns of different widths"
expect 0 "$varnet" whole parts --json
sed -i -E 's/"seconds": [0-9.e-]+/"seconds": 0/' out
cubes() { echo "{\"bodies\": 1, \"facets\": 12, \"file\": \"$1\", \"healed\": 0, \"layer_volume\": 27.0, \"mesh_volume\": 27.0, \"open_edges\": 0,
    \"open_edges_in_file\": 0, \"open_paths\": 0, \"seconds\": 0},"; }
# The volume of the layers is a sum of thousands of numbers.
volume=$(sed -nE '/deep/,$s/^ *"layer_volume": ([0-9.]+),$/\1/p' out)
sed -i -E 's/^( *"layer_volume": )27\.0*[0-9]{0,3},$/\127.0,/; s/^( *"layer_volume": )26\.9999999[0-9]*,$/\127.0,/' out
awk -v v="$volume" 'BEGIN { exit !(v - 120 < 1e-9 && 120 - v < 1e-9) }' || fail "a volume of $volume"
{
    echo '{ "files": ['
    cubes Cube.STL
    cubes a.csm
    cubes b.oltp
    echo '{"error": "parts/broken.stl: is text, but no ASCII STL: it has none of its words", "file": "broken.stl"},'
    cubes c.3DMF
    echo '{"bodies": 16, "facets": 196, "file": "in/deep/sick.stl", "healed": 31, "layer_volume": '"$volume"','
    echo '    "mesh_volume": 128.0, "open_edges": 4, "open_edges_in_file": 54, "open_paths": 400, "seconds": 0} ], "schema": 1 }'
} | document
# How the files are read.
expect 0 "$varnet" whole parts/in --scale 10 --weld 0
row '^deep/sick\.stl +[0-9]+ +54 +[1-9][0-9]* '
mkdir units
cp parts/Cube.STL units
expect 0 "$varnet" whole units --units cm
row '^Cube\.STL +12 +0 +0 +1 +0 +27000 +27000 +0 '
expect 0 "$varnet" whole units/
row '^Cube\.STL '

# A folder without parts, none at all, and a file.
mkdir empty
expect 0 "$varnet" whole empty
[ "$(wc -l <out)" -eq 2 ] || fail "rows of an empty folder"
expect 0 "$varnet" whole empty --json
document <<<'{ "files": [], "schema": 1 }'
expect 1 "$varnet" whole nowhere --json
messages <<<'varnet: nowhere: No such file or directory'
[ ! -s out ] && [ ! -e nowhere ] || fail "something of a folder that is not there"
expect 1 "$varnet" whole parts/Cube.STL
says '^varnet: parts/Cube\.STL: '
expect 2 "$varnet" whole

# A plate of 10 by 10, and 10.25 high, beside a tower of 400: cut into 400 layers the plate is taken for 10 high. Of the whole
# volume the 25 that are missing are more or less than eight in ten thousand; where more, 1600 layers are right.
mkdir close
{ echo 'solid less' && box 0 0 0 10 10 10.25 && box 20 0 0 8 10 400 && echo endsolid; } >close/less.stl
{ echo 'solid more' && box 0 0 0 10 10 10.25 && box 20 0 0 7.5 10 400 && echo endsolid; } >close/more.stl
# A tower of 6400 beside plates of 3: as thick as nothing in layers of 16, as 4 in layers of 4, as they are in layers of 1. Plates
# of 2.25 are never cut into layers in which they are right: of 1 they are taken for 2.
{ echo 'solid fine' && box 0 0 0 100 100 3 && box 200 0 0 1 1 6400 && echo endsolid; } >close/fine.stl
{ echo 'solid finer' && box 0 0 0 100 100 2.25 && box 200 0 0 1 1 6400 && echo endsolid; } >close/finer.stl
expect 0 "$varnet" whole close
row '^less\.stl +24 +0 +0 +2 +0 +33025 +33000 +0 '
row '^more\.stl +24 +0 +0 +2 +0 +31025 +31025 +0 '
row '^fine\.stl +24 +0 +0 +2 +0 +36400 +36400 +0 '
row '^finer\.stl +24 +0 +0 +2 +0 +28900 +26400 +0 '
