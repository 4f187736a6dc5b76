#!/usr/bin/env bash
# What stands on the pages of varnet view and of varnet slice --page.
# usage: pages.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

part() { sed '1d;$d' "$1"; }
solid() { cube one "$@" && part one; }
# about PAGE: what the page says of its parts and layers, which stands there packed: JSON without blanks
about() {
    sed -nE 's/.*id="about">([^<]*)<.*/\1/p' "$1" | base64 -d |
        { printf '\037\213\010\000\000\000\000\000\000\000' && cat; } | gzip -dc 2>/dev/null || true
}
# layers: those of what a page says, line by line, without the place where their paths stand
layers() { sed 's/.*"layers"//' | grep -oE '\[[0-9]+,[^]]*\]' | awk -F, -v OFS=, '{ $7 = ""; print }'; }
# has PATTERN: so the page says
has() { grep -qE -- "$1" about || { cat about; fail "the page does not say $1"; }; }
has_not() { ! grep -qE -- "$1" about || { cat about; fail "the page says $1"; }; }
# viewed ARGUMENTS...: the page, and what it says
viewed() {
    expect 0 "$varnet" view "$@" -o page.html
    about page.html >about
    [ -s about ] || fail "a page that says nothing"
}
bytes() { stat -c %s "$1" | sed -E 's/(.)(...)$/\1,\2/'; }

# A table that hangs over, and cubes on the plate; slices of four layers and of two.
mkdir parts
{ echo 'solid table' && solid 0 0 0 4 && solid 0 0 8 10 && echo endsolid; } >parts/table.stl
cube parts/cubes.stl 0 0 0 2 5 0 0 1
expect 0 "$varnet" slice parts/cubes.stl -o parts/four.cli --layer 0.5 --hatch 0
expect 0 "$varnet" slice parts/cubes.stl -o parts/two.cli --layer 1 --hatch 0

expect 0 "$varnet" view parts/cubes.stl parts/four.cli parts/table.stl parts/two.cli -o page.html
shown <<TABLE
page.html
  parts 2
  layers 6
  bytes $(bytes page.html)
TABLE
quiet
expect 0 "$varnet" view parts/cubes.stl parts/four.cli parts/table.stl parts/two.cli -o page.html --json
document <<<"{ \"bytes\": $(stat -c %s page.html), \"layers\": 6, \"parts\": 2, \"schema\": 1 }"
expect 0 "$varnet" view parts/cubes.stl parts/four.cli parts/table.stl parts/two.cli -o - --json
cmp out page.html || fail "the page on standard output"
document err <<<'{ "bytes": 0, "layers": 6, "parts": 2, "schema": 1 }'
[ ! -e - ] || fail "a file of the name -"

# Parts and slices have the names of their files, without folders, in the order given, and the page that of the first.
about page.html >about
[ "$(grep -oE '"(title|name)":"[^"]*"' about | tr '\n' ' ')" = \
    '"title":"cubes.stl" "name":"cubes.stl" "name":"table.stl" "name":"four.cli" "name":"two.cli" ' ] || fail "names: $(cat about)"
grep -q '<title>cubes\.stl' page.html || fail "the title of the page"
# A cube has 6 surfaces; nothing is said of support that was not asked for.
has '"name":"cubes.stl"[^}]*"surfaces":12,'
has '"name":"table.stl"[^}]*"surfaces":12,'
has_not '"supports"'
viewed parts/cubes.stl parts/table.stl --no-surfaces --support --title 'Parts & more'
has '"title":"Parts & more"'
grep -q '<title>Parts &amp; more' page.html || fail "the title of the page"
has '"name":"cubes.stl"[^}]*"surfaces":0,'
# Both cubes rest on the plate; of the table, its foot does, and its top hangs.
has '"name":"cubes.stl".*"supports":\{"regions":2,"supported":0,"edges":0,"solids":0\}.*"name":"table.stl"'
has '"name":"table.stl".*"supports":\{"regions":2,"supported":1,"edges":0,"solids":1,"box":\[0,0,0,10,10,8\]'
# How parts are read.
viewed parts/cubes.stl --scale 3 --units cm
has '"box":\[0,0,0,180,60,60\]'
# Surfaces are those of similar normals: a prism of eight sides has ten, in octants six.
awk 'BEGIN {
    n = split("2 0 1 1 0 2 -1 1 -2 0 -1 -1 0 -2 1 -1 2 0", p, " ")
    f = "facet normal 0 0 0\nouter loop\nvertex %d %d %d\nvertex %d %d %d\nvertex %d %d %d\nendloop\nendfacet\n"
    print "solid prism"
    for (i = 1; i + 3 <= n; i += 2) {
        x = 3 * p[i]; y = 3 * p[i + 1]; X = 3 * p[i + 2]; Y = 3 * p[i + 3]
        printf f f f f, x, y, 0, X, Y, 0, X, Y, 2, x, y, 0, X, Y, 2, x, y, 2, 0, 0, 0, X, Y, 0, x, y, 0, 0, 0, 2, x, y, 2, X, Y, 2
    }
    print "endsolid"
}' >prism.stl
viewed prism.stl
has '"surfaces":6,'

# Of a broken slice file there is no page, not even of its first layers; nor where a part is missing.
head -c $(($(stat -c %s parts/four.cli) - 3)) parts/four.cli >cut.cli
expect 0 "$varnet" view parts/four.cli -o kept.html
cp kept.html before.html
for bad in cut.cli missing.stl; do
    for inputs in "$bad" "parts/cubes.stl $bad" "$bad parts/cubes.stl"; do
        # shellcheck disable=SC2086
        expect 1 "$varnet" view $inputs -o kept.html --open
        says "^varnet: $bad(:|,)"
        [ ! -s out ] && cmp kept.html before.html || fail "a page of $inputs"
    done
done
# None of the inputs is written over, the last as little as the first.
for input in parts/cubes.stl parts/four.cli; do
    cp $input kept
    expect 2 "$varnet" view parts/cubes.stl parts/four.cli -o ./$input
    says "^\./$input: is an input, and would be lost"
    cmp $input kept || fail "an input that is lost"
done
# What the browser is told to show is the page by its whole name; without --open it is told nothing.
mkdir bin deep
printf '#!/bin/sh\necho "$@" >%s/opened.part && mv %s/opened.part %s/opened\n' "$work" "$work" "$work" >bin/xdg-open
chmod +x bin/xdg-open
PATH=$work/bin:$PATH expect 0 "$varnet" view parts/cubes.stl -o deep/page.html
PATH=$work/bin:$PATH expect 0 "$varnet" view parts/cubes.stl -o deep/../deep/other.html --open
wait_for test -s opened
[ "$(cat opened)" = "$work/deep/../deep/other.html" ] || fail "opened $(cat opened)"
quiet
expect 2 "$varnet" view parts/cubes.stl -o - --open
messages <<'TEXT'
--open: a page on standard output cannot be opened
Run with --help for more information.
TEXT
[ ! -s out ] || fail "a page that cannot be opened"

# ---- slice --page

expect 0 "$varnet" slice parts/table.stl parts/cubes.stl -o sliced.cli --layer 1 --hatch 2 --page sliced.html
about sliced.html >about
[ "$(grep -oE '"(title|name)":"[^"]*"' about | tr '\n' ' ')" = \
    '"title":"table.stl" "name":"table.stl" "name":"cubes.stl" "name":"sliced.cli" ' ] || fail "names: $(cat about)"
has '"box":\[0,0,0,10,10,18\]'
has '"box":\[0,0,0,6,2,2\]'
has_not '"supports"'
# 18 layers, of which the last is the one at 18; the same that are in the file.
has '\[18,18,0,0,10,10,'
layers <about >layers
[ "$(wc -l <layers)" -eq 18 ] || fail "the layers on the page"
expect 0 "$varnet" view sliced.cli -o other.html
about other.html | layers | cmp - layers || fail "other layers than those of the file"
expect 0 "$varnet" slice parts/table.stl parts/cubes.stl -o in_order.cli --layer 1 --hatch 2 --order --page sliced.html
about sliced.html | layers >layers
expect 0 "$varnet" view in_order.cli -o other.html
about other.html | layers | cmp - layers || fail "other layers than those of the file in order"
expect 0 "$varnet" slice parts/table.stl parts/cubes.stl -o sliced.cli --layer 1 --hatch 2 --support --page sliced.html
about sliced.html >about
has '"name":"table.stl".*"supports":\{"regions":2,"supported":1,"edges":0,"solids":1,"box":\[0,0,0,10,10,8\].*"name":"cubes.stl"'
has '"name":"cubes.stl".*"supports":\{"regions":2,"supported":0,"edges":0,"solids":0\}'
# The page is beside the slices, and neither takes the other's place, or that of a part.
expect 2 "$varnet" slice parts/table.stl parts/cubes.stl -o sliced.cli --page parts/cubes.stl
says '^parts/cubes\.stl: is an input, and would be lost'
expect 2 "$varnet" slice parts/table.stl parts/cubes.stl -o parts/cubes.stl
says '^parts/cubes\.stl: is an input, and would be lost'
nothing_left
