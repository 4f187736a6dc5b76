#!/usr/bin/env bash
# varnet whole and varnet demo.
# usage: whole.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
tail -n 1 out | grep -qE '^[0-9]+ checks passed in [0-9.]+ seconds' || fail "the demo's last line"
test -s made/index.html && test -s made/bracket.cli || fail "the files of the demo"
mkdir -p parts/deep
cube parts/cube.stl 0 0 0 10
cube parts/deep/two.STL 0 0 0 10 10 0 0 10
printf 'no model' >parts/broken.stl
expect 0 "$varnet" whole parts
row '^cube.stl +12 +0 +0 +1 +0 +1000 +1000 +0 '
row '^deep/two.STL +24 +0 +0 +2 +0 +2000 +2000 +0 '
row '^broken.stl '
expect 0 "$varnet" whole parts --json
row '"open_paths": 0'
row '"error"'
expect 1 "$varnet" whole nowhere
