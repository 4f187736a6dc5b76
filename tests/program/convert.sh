#!/usr/bin/env bash
# varnet convert, of meshes.
# usage: convert.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
part=made/bracket_repaired.stl
for option in '' --floats --ring --plain; do
    # shellcheck disable=SC2086
    expect 0 "$varnet" convert $part to.csm $option
    row 'facets +1,060, read back 1,060$'
    row 'open edges +0, read back 0$'
    [ ! -s err ] || fail "a warning for a conversion that lost nothing: $(cat err)"
    row 'largest coordinate error, mm +(0|0\.00[01][0-9]*|[0-9.]+e-[0-9]+)$'
    expect 0 "$varnet" info to.csm
    row 'facets +1,060$'
    expect 0 "$varnet" convert to.csm back.stl
    [ "$(stat -c %s back.stl)" -eq $((84 + 50 * 1060)) ] || fail "the way back of convert $option"
done
row 'plain CSM -> binary STL'
printf 'a part CSM5.0' >header
expect 0 "$varnet" convert made/bracket_ascii.stl to.csm --header header
head -c 13 to.csm | cmp - header || fail "the header"
row 'ASCII STL -> CSM in strips'
printf 'no tag' >header
expect 1 "$varnet" convert $part not.csm --header header
says 'header: a header holds CSM3.0'
for wrong in 'to.foo' 'to.stl --ring' 'to.csm --ring --plain' 'to.csm --plain --floats' 'to.csm --ring --header header'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" convert $part $wrong
done
[ ! -e not.csm ] && [ ! -e to.foo ] || fail "a file for wrong arguments"
{ head -c 80 $part; head -c 176 /dev/zero; tail -c +81 $part; } >part.oltp
expect 0 "$varnet" info part.oltp
row 'OLTP'
row 'facets in the file +1,060$'
printf '<VERTICES>\n<VERTEX x="0" y="0" z="0"/>\n<VERTEX x="9" y="0" z="0"/>\n<VERTEX x="0" y="9" z="0"/>\n</VERTICES>\n<TRIANGLES>\n<TRIANGLE a="0" b="1" c="2"/>\n</TRIANGLES>\n' >part.3dmf
expect 0 "$varnet" convert part.3dmf to.stl
row '3DMF -> binary STL'
[ "$(stat -c %s to.stl)" -eq 134 ] || fail "3DMF"
cp part.3dmf part.xml
expect 0 "$varnet" info part.xml
row '3DMF'
expect 0 "$varnet" convert $part ring.csm --ring
head -c 2000 ring.csm >cut.csm
expect 1 "$varnet" info cut.csm
says 'cut.csm: '
expect 1 "$varnet" convert $part nofolder/to.csm
nothing_left
