#!/usr/bin/env bash
# varnet view, without a browser, and the bar that shows how far long work is.
# usage: view.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

cube two.stl 1 2 3 10 20 2 3 4
expect 0 "$varnet" slice two.stl -o two.cli --layer 0.5 --hatch 0
expect 0 "$varnet" view two.stl two.cli -o both.html --title 'Cubes & more'
[ "$(head -n 1 out)" = both.html ] || fail "the name of the page"
row '^  parts +1$'
row '^  layers +20$'
row "^  bytes +$(stat -c %s both.html | sed -E 's/(.)(...)$/\1,\2/')$"
grep -q '<title>Cubes &amp; more' both.html && grep -q '</html>' both.html || fail "the page"
expect 0 "$varnet" view two.stl -o part.html --json
keys parts layers bytes
row '"parts": 1'
row '"layers": 0'
grep -q '<title>two.stl' part.html || fail "the title is the file's name"
expect 0 "$varnet" view two.cli two.stl two.stl -o three.html
row '^  parts +2$'
# Surfaces and supports take room on the page.
expect 0 "$varnet" view two.stl --no-surfaces -o plain.html
[ "$(stat -c %s plain.html)" -lt "$(stat -c %s part.html)" ] || fail "surfaces that nobody wanted"
{ printf 'solid t\n' && for z in 0 20; do
    printf 'facet normal 0 0 0\nouter loop\nvertex %s\nvertex %s\nvertex %s\nendloop\nendfacet\n' \
        "0 0 $z" "0 20 $z" "20 0 $z" "0 0 $z" "20 0 $z" "5 5 $((z + 5))" "20 0 $z" "0 20 $z" "5 5 $((z + 5))" \
        "0 20 $z" "0 0 $z" "5 5 $((z + 5))"
done && printf 'endsolid t\n'; } >hangs.stl
expect 0 "$varnet" view hangs.stl -o hangs.html
expect 0 "$varnet" view hangs.stl --support -o held.html
[ "$(stat -c %s held.html)" -gt "$(stat -c %s hangs.html)" ] || fail "no supports on the page"
# To standard output: the page and nothing else there.
expect 0 "$varnet" view two.stl -o -
cmp -s out part.html || fail "another page on standard output"
says '^  parts +1$'
# The browser is what the system prefers.
mkdir bin
printf '#!/bin/sh\necho "$@" >%s/opened.part && mv %s/opened.part %s/opened\n' "$work" "$work" "$work" >bin/xdg-open
chmod +x bin/xdg-open
PATH=$work/bin:$PATH expect 0 "$varnet" view two.stl -o opened.html --open
wait_for test -s opened
[ "$(cat opened)" = "$work/opened.html" ] || fail "opened $(cat opened)"
expect 2 "$varnet" view two.stl -o - --open
says 'standard output cannot be opened'
expect 2 "$varnet" view two.stl two.cli -o two.cli
says 'two\.cli: is an input, and would be lost'
expect 1 "$varnet" view missing.stl -o none.html
says 'missing\.stl'
[ ! -e none.html ] || fail "a page without its part"
nothing_left

# On a terminal alone, forty places of which as many are filled as the share says; it goes when the work ends. Thirty
# million strokes take many times as long as the work that shows no bar.
long="slice two.stl -o /dev/null --layer 0.00001 --hatch 0.5"
# shellcheck disable=SC2086
expect 0 "$varnet" $long
[ ! -s err ] || fail "a bar that nobody sees"
command -v script >/dev/null || exit 0
script -qec "'$varnet' $long" /dev/null </dev/null >seen
tr '\r' '\n' <seen | grep -a '%' | grep -aoE '^[^%]*%' >bars || fail "no bar on a terminal"
awk '{
    if ($0 !~ /^[A-Z][a-z]+ .*\[#*\.*\] +[0-9]+%$/) exit 1
    match($0, /\[#*\.*\]/)
    bar = substr($0, RSTART + 1, RLENGTH - 2)
    filled = gsub(/#/, "#", bar)
    percent = $NF + 0
    # The share is rounded for the number, and down for the bar.
    if (length(bar) != 40 || filled > 0.4 * percent + 0.2 || filled <= 0.4 * percent - 1.2 || percent < last) exit 1
    last = percent
}' bars || { cat bars; fail "a bar that does not fit its number"; }
grep -qF "$(printf '\r\033[K')" seen || fail "a bar that stays"
