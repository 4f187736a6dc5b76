#!/usr/bin/env bash
# varnet selfcheck: this build computes what all others do.
# usage: selfcheck.sh VARNET
here=$(dirname "$(readlink -f "$0")")
. "$here/program.sh"

mkdir temp
export TMPDIR=$work/temp
expect 0 "$varnet" selfcheck
cp out table
[ "$(grep -c '^[a-z]* = [0-9a-f]\{16\}$' table)" -eq 9 ] || fail "not a hash a room: $(cat table)"
expect 0 "$varnet" selfcheck --against table
row 'largest share by which the others differ +0$'
expect 0 "$varnet" selfcheck --against "$here/../bits/digests.txt"
# A table from another system, with its line ends.
sed 's/$/\r/' table >windows
expect 0 "$varnet" selfcheck --against windows

sed 's/^trees = ./trees = x/' table >trees
expect 1 "$varnet" selfcheck --against trees
row 'not the same +trees: x'
says 'trees: this build does not compute what that one did'
sed 's/^CalAngle ~ .*/CalAngle ~ 27290/' table >sines
expect 1 "$varnet" selfcheck --against sines
row 'differ +1\.9.*e-05, CalAngle$'
grep -v '^cli' table >short
expect 1 "$varnet" selfcheck --against short
row 'not the same +cli: not in the table there$'
expect 1 "$varnet" selfcheck --against missing
says 'missing: cannot be opened'
expect 0 "$varnet" selfcheck --against table --json
grep -q '"different": \[\]' out && grep -q '"largest_difference": 0' out || fail "JSON: $(cat out)"
[ -z "$(ls -A temp)" ] || fail "a folder is left"
