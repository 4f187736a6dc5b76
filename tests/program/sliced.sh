#!/usr/bin/env bash
# All that varnet slice tells of parts whose every figure is another one, and each of its warnings.
# usage: sliced.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

part() { sed '1d;$d' "$1"; }
solid() { cube one "$@" && part one; }
# A cube without the side of the highest x, which lies in the plane of the origin: its volume is that of the whole cube.
open() { solid "-$3" "$1" "$2" "$3" | head -n -14; }
bytes() { stat -c %s "$1"; }

# ---- whole tables

# Cubes of 12 and, within it, of 4; open cubes of 5, 5 and 2, the first two over the lower five layers of twelve. The gap of 2 is
# closed. Points: 4 for each of 12 + 2 contours and of 10 paths. Lengths: 12 times 48, 2 times 8, 10 times three sides of 5.
{
    echo 'solid parts'
    solid 0 0 0 12 2 2 2 4
    open 20 0 5
    open 40 0 5
    open 60 0 2
    echo endsolid
} >parts.stl
parts() {
    cat <<'TABLE'
  layers 12 of 1 mm
  contours 14
  open paths 10
  layers with open paths 5
  gaps closed 2, up to 2 mm
  points 96
  length of all contours, mm 742
  volume of the mesh, mm3 2050
  volume of the layers, mm3 1736
  fill strokes none: contours only
  support strokes 0
  support solids 0
TABLE
}
parts_json() { # FILE TRAVEL: the kept figures are doubles of the numbers above
    cat <<JSON
{ "bytes": $(bytes "$1"), "contour_length": 742.0, "contours": 14, "cut_volume": 1800.0, "gaps_closed": 2, "holes_filled": 0,
  "layer_volume": 1736.0, "layers": 12, "layers_with_open_paths": 5, "longest_gap": 5.0, "longest_gap_closed": 2.0,
  "mesh_volume": 2050.0, "missing_volume": 250.0, "open_paths": 10, "points": 96, "schema": 1, "starts": 24, "strokes": 0,
  "support_solids": 0, "support_strokes": 0, "travel": $2 }
JSON
}
open_text='paths stay open in 5 of 12 layers, the longest gap 5 mm, about 250 mm3 missing: --fill-holes MM closes the part, --close MM the gaps'
expect 0 "$varnet" slice parts.stl -o parts.cli --layer 1 --close 3 --no-fill
cp out told
# What varnet order finds in the file is the way that was told.
expect 0 "$varnet" order parts.cli ordered.cli --json
way=$(sed -n '/"travel"/{n;s/[ ,]//gp}' out)
row '^    24,$'
cp told out
{
    echo '1 part -> parts.cli'
    parts
    echo "  travel with the material off, mm $(awk -v way="$way" 'BEGIN { printf "%.10g", way }')"
    echo '  starts and stops 24'
    echo "  bytes $(bytes parts.cli | sed -E 's/(...)$/,\1/')"
} | shown
expect 0 "$varnet" slice parts.stl -o parts.cli --layer 1 --close 3 --no-fill --json
parts_json parts.cli "$way" | document
messages <<<"varnet: warning: $open_text"
cp out told
# On standard output, of which the size is told all the same.
expect 0 "$varnet" slice parts.stl -o - --layer 1 --close 3 --no-fill --json
cmp out parts.cli || fail "slices on standard output"
grep -v '^varnet: warning: ' err | cmp - told || fail "the JSON beside standard output"
# With --strict the file is there, and its table; what was a warning is the error.
rm parts.cli
expect 1 "$varnet" slice parts.stl -o parts.cli --layer 1 --close 3 --no-fill --json --strict
cmp out told || fail "the JSON of a strict run"
messages <<<"varnet: $open_text"
expect 0 "$varnet" slice parts.stl -o closed.cli --layer 1 --close 5 --strict
quiet
row '^  gaps closed +12, up to 5 mm$'
expect 0 "$varnet" slice parts.stl -o parts.cli --layer 1 --close 4.9
says 'paths stay open in 5 of 12'
# A gap of a third of a millimetre, in four digits.
{ echo 'solid thin' && solid 0 0 0 1 && open 4 0 0.3333333 && echo endsolid; } >thin.stl
expect 0 "$varnet" slice thin.stl -o thin.cli --layer 0.1
says 'paths stay open in 3 of 10 layers, the longest gap 0\.3333 mm, about 0\.03333 mm3 missing: '

# Fill and support, as the file itself has them: by the kind of its strokes.
{ echo 'solid table' && solid 0 0 0 4 && solid 0 0 8 10 && echo endsolid; } >table.stl
{ echo 'solid step' && solid 30 0 0 4 && solid 30 0 8 6 && solid 50 0 3 2 && echo endsolid; } >step.stl
expect 0 "$varnet" slice table.stl step.stl -o table.cli --layer 1 --hatch 2 --angle 0 --support --mode ascii
strokes() { awk -F'[/ ]' -v from="$1" -v to="$2" '/^\$\$HATCHES/ && $2 >= from && $2 <= to { n += $3 } END { print n + 0 }' table.cli; }
fill=$(strokes 0 999) held=$(strokes 1000 2000)
[ "$fill" -gt "$held" ] && [ "$held" -gt 0 ] || fail "the kinds of strokes"
row '^2 parts -> table\.cli$'
row "^  fill strokes +$fill\$"
row "^  support strokes +$held\$"
# Below two cubes of the one part, and one cube each of the other.
row '^  support solids +3$'
expect 0 "$varnet" slice table.stl step.stl -o table.cli --layer 1 --hatch 2 --angle 0 --support --mode ascii --json
row "^  \"strokes\": $fill,\$"
row "^  \"support_strokes\": $held,\$"
row '^  "support_solids": 3,$'
# The lines are as far apart as --hatch says, and of the direction of --angle.
expect 0 "$varnet" slice table.stl -o lines.cli --layer 18 --hatch 2 --angle 0 --mode ascii
grep -aoE '^..HATCHES.*' lines.cli | awk '{ for (i = 3; i + 3 <= NF; i += 4) print ($(i + 1) == $(i + 3)) }' >lines
grep -q 1 lines && ! grep -q '^0' lines || fail "lines at an angle"
expect 0 "$varnet" slice table.stl -o lines.cli --layer 18 --hatch 2 --angle 90 --mode ascii
grep -aoE '^..HATCHES.*' lines.cli | awk '{ for (i = 3; i + 3 <= NF; i += 4) print ($i == $(i + 2)) }' >lines
grep -q 1 lines && ! grep -q '^0' lines || fail "lines at right angles"

# Holes that were closed, of all parts together.
{ echo 'solid one' && open 0 0 5 && open 20 0 5 && echo endsolid; } >one.stl
{ echo 'solid other' && open 40 0 5 && echo endsolid; } >other.stl
expect 0 "$varnet" slice one.stl other.stl -o filled.cli --layer 1 --fill-holes 20
[ "$(sed -n 2p out | tr -s ' ')" = ' holes closed 3' ] || fail "holes that were closed"
quiet
expect 0 "$varnet" slice one.stl other.stl -o filled.cli --layer 1 --fill-holes 20 --json
row '^  "holes_filled": 3,$'
expect 0 "$varnet" slice other.stl one.stl -o filled.cli --layer 1 --fill-holes 19.9 --json
row '^  "holes_filled": 0,$'
row '^  "open_paths": 15,$'

# ---- warnings, each once, and none where there is no reason

# Bodies that are inside out are told once a part; where crossings are counted, it makes no difference.
{ echo 'solid inside' && solid 0 0 0 3 20 0 0 3 | turned && echo endsolid; } >inside.stl
expect 0 "$varnet" slice inside.stl other.stl inside.stl -o inside.cli --layer 1 --fill-holes 20
messages <<'TEXT'
varnet: warning: inside.stl: a body is inside out, and is sliced as if it were turned
varnet: warning: inside.stl: a body is inside out, and is sliced as if it were turned
TEXT
expect 0 "$varnet" slice inside.stl -o inside.cli --layer 1 --rule odd
quiet
# A facet that is turned is told of once, however it is found.
{ echo 'solid turned' && solid 0 0 0 3 | head -n 7 | turned && solid 0 0 0 3 | tail -n +8 && echo endsolid; } >turned.stl
for option in '' '--fill-holes 1'; do
    # shellcheck disable=SC2086
    expect 0 "$varnet" slice turned.stl -o turned.cli --layer 1 $option
    messages <<<'varnet: warning: turned.stl: facets contradict their shell, and are sliced as if they were turned: varnet repair turns them'
done
# Contours of a thousand corners, each of more than ten characters, in text; no line is too long elsewhere.
awk 'BEGIN {
    print "solid round"
    for (body = 0; body < 2; ++body) {
        for (i = 0; i < 1000; ++i) {
            a = i * 0.0062831853; b = (i + 1) % 1000 * 0.0062831853
            x = 50000 * cos(a) + 200000 * body; y = 50000 * sin(a); X = 50000 * cos(b) + 200000 * body; Y = 50000 * sin(b)
            f = "facet normal 0 0 0\nouter loop\nvertex %.6f %.6f %d\nvertex %.6f %.6f %d\nvertex %.6f %.6f %d\nendloop\nendfacet\n"
            printf f, x, y, 0, X, Y, 0, X, Y, 2
            printf f, x, y, 0, X, Y, 2, x, y, 2
            printf f, 200000 * body, 0, 0, X, Y, 0, x, y, 0
            printf f, 200000 * body, 0, 2, x, y, 2, X, Y, 2
        }
    }
    print "endsolid"
}' >round.stl
expect 0 "$varnet" slice round.stl -o round.cli --layer 1 --no-fill --mode ascii
messages <<<'varnet: warning: 4 paths have lines of over 10,239 characters, which some readers take for two: --mode binary has no such limit'
expect 0 "$varnet" slice round.stl -o round.cli --layer 1 --no-fill
quiet
row '^  points +4,000$'

# ---- options

# The seed of mode coc: the same bytes with the same, others with another and with none.
for seed in 5 6; do expect 0 "$varnet" slice table.stl -o seed$seed.cli --layer 2 --mode coc --seed $seed; done
expect 0 "$varnet" slice table.stl -o again.cli --layer 2 --mode coc --seed 5
cmp again.cli seed5.cli || fail "one seed, two files"
for n in 1 2; do expect 0 "$varnet" slice table.stl -o none$n.cli --layer 2 --mode coc; done
! cmp -s seed5.cli seed6.cli && ! cmp -s none1.cli none2.cli && ! cmp -s none1.cli seed5.cli || fail "seeds that make no difference"
expect 2 "$varnet" slice table.stl -o no.cli --seed 1 2
expect 2 "$varnet" slice table.stl -o no.cli --seed x
for threads in 1 1024; do
    expect 0 "$varnet" slice table.stl -o threads.cli --layer 2 --threads $threads
done
expect 2 "$varnet" slice table.stl -o no.cli --threads 1025
# The splice reaches as far as lines are apart: 1.8 times that.
expect 0 "$varnet" slice table.stl -o order.cli --layer 2 --hatch 2 --order --json
ordered=$(sed -nE 's/.*"starts": ([0-9]+).*/\1/p' out)
expect 0 "$varnet" slice table.stl -o plain.cli --layer 2 --hatch 2
expect 0 "$varnet" slice table.stl -o splice.cli --layer 2 --hatch 2 --splice --json
[ "$(sed -nE 's/.*"starts": ([0-9]+).*/\1/p' out)" -lt "$ordered" ] || fail "nothing is spliced"
! cmp -s order.cli plain.cli && ! cmp -s splice.cli plain.cli && ! cmp -s splice.cli order.cli || fail "orders that make no difference"
# Parts that cannot be read: of several the second, and nothing is written.
expect 1 "$varnet" slice table.stl missing.stl -o no.cli --page no.html
messages <<<'varnet: missing.stl: no such file'
[ ! -s out ] && [ ! -e no.cli ] && [ ! -e no.html ] || fail "a file without the second part"
# Where the page cannot be written the slices are there, without a table.
expect 1 "$varnet" slice table.stl -o there.cli --layer 2 --hatch 2 --page nofolder/page.html
says '^varnet: nofolder/page\.html: '
cmp there.cli plain.cli && [ ! -s out ] || fail "slices without their page"
nothing_left
