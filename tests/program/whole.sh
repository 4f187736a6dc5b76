#!/usr/bin/env bash
# varnet whole and varnet demo.
# usage: whole.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
tail -n 1 out | grep -qE '^[0-9]+ checks passed in [0-9.]+ seconds' || fail "the demo's last line"
[ "$(grep -E '^[^ ]' out | head -n 5 | tr '\n' ';')" = "bracket.stl, as read;bracket_repaired.stl;bracket_surfaces.ply;bracket_support.stl;slices;" ] ||
    fail "the demo's tables"
cp out tables
grep -q '<style>' made/index.html && grep -q '</html>' made/index.html || fail "the demo's page"
# Fonts have weights of whole hundreds: another number takes the next one, which may be bold.
grep -oE 'font-weight: [0-9]+' made/index.html >weights
[ -s weights ] && ! grep -vE ' [1-9]00$' weights || fail "the weights of the demo's page"
test -s made/index.html && test -s made/bracket.cli || fail "the files of the demo"
# Each file of the list has its name twice, as what it leads to and as what is read, and is there.
grep -o '<li>.*</li>' made/index.html >listed
[ -s listed ] && ! grep -vE '^<li><a href="([^"]+)">\1</a></li>$' listed || fail "the list of the demo's files"
sed 's/.*">\(.*\)<.a><.li>/\1/' listed | while read -r file; do test -s "made/$file" || exit 1; done || fail "a file of the demo's list"
# What the tables say of the files is what the files hold.
of() { sed -nE "s/^ +$1 +(.*)$/\1/p" tables | tail -n 1; }
expect 0 "$varnet" info made/bracket_support.stl
row "volume, mm3 +$(of 'volume, mm3')$"
expect 0 "$varnet" layers made/bracket.cli
row "layers +$(of layers | sed 's/ of .*//')( |$)"
awk -v a="$(of 'volume of the part, mm3')" -v b="$(of 'volume of the layers, mm3')" \
    'BEGIN { exit !(a > 100000 && b > 0.999 * a && b < 1.001 * a) }' || fail "the volume of the demo's layers"
mkdir -p parts/deep
cube parts/cube.stl 0 0 0 10
cube parts/deep/two.STL 0 0 0 10 10 0 0 10
printf 'no model' >parts/broken.stl
expect 0 "$varnet" whole parts
row '^cube.stl +12 +0 +0 +1 +0 +1000 +1000 +0 '
row '^deep/two.STL +24 +0 +0 +2 +0 +2000 +2000 +0 '
row '^broken.stl '
# In the order of their names; a facet that stands there once too often counts among what was healed.
for name in p c x a m q; do cube parts/$name.stl 0 0 0 1; done
{ sed '$d' parts/cube.stl && sed -n '2,8p;$p' parts/cube.stl; } >parts/doubled.stl
expect 0 "$varnet" whole parts
sed 1,2d out | awk '{ print $1 }' >names
LC_ALL=C sort names | cmp - names || fail "the order of the files: $(cat names)"
[ "$(wc -l <names)" -eq 10 ] || fail "the files: $(cat names)"
row '^doubled.stl +12 +3 +0 +1 +1 +1000 +1000 +0 '
expect 0 "$varnet" whole parts --json
row '"open_paths": 0'
row '"error"'
expect 1 "$varnet" whole nowhere
