#!/usr/bin/env bash
# varnet info, help, version, and wrong arguments.
# usage: info.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

# A cube with a hollow, and one beside it that shares a face: three bodies, nothing open.
cube parts.stl 0 0 0 10 10 0 0 10
expect 0 "$varnet" info parts.stl
row 'type +ASCII STL$'
row 'facets in the file +24$'
row 'open edges in the file +0$'
row 'open edges +0$'
row 'bodies +2$'
row 'body 1 +solid, 12 facets, volume 1000, open edges 0$'
row 'volume, mm3 +2000$'
row 'box +0  0  0  to  20  10  10$'
expect 0 "$varnet" info --json parts.stl
row '"schema": 1'
row '"bodies": 2'
row '"open_edges": 0'
row '"kind": "solid"'
# shellcheck disable=SC2086
keys files file $intake_keys $measure_keys bodies body_list kind

# Other units.
cube small.stl 0 0 0 0.5
expect 0 "$varnet" info small.stl
says '--units m or --units in'
expect 0 "$varnet" info small.stl --units in
row 'box +0  0  0  to  12\.7  12\.7  12\.7$'
[ ! -s err ] || fail "a hint for a part in known units"
expect 0 "$varnet" info small.stl --units m
row 'volume, mm3 +125000000$'
expect 0 "$varnet" info small.stl --units cm
row 'box +0  0  0  to  5  5  5$'
expect 0 "$varnet" info small.stl --units cm --scale 3
row 'box +0  0  0  to  15  15  15$'
# A part of just a millimetre is taken as it is.
cube one.stl 0 0 0 1
expect 0 "$varnet" info one.stl
[ ! -s err ] || fail "a hint for a part of a millimetre"
cube less.stl 0 0 0 0.999
expect 0 "$varnet" info less.stl
says 'less.stl: the part is 0\.999 mm long'
cube less.stl 0 0 0 0.9998
expect 0 "$varnet" info less.stl
messages <<<'varnet: warning: less.stl: the part is 1 mm long: if the file is in metres or inches, say --units m or --units in'

# Of more than twenty bodies the first twenty are listed; JSON lists them all.
bodies=''
for x in $(seq 20); do bodies="$bodies $((3 * x)) 0 0 1"; done
# shellcheck disable=SC2086
cube twenty.stl $bodies
expect 0 "$varnet" info twenty.stl
row 'body 20 +solid, 12 facets, volume 1, open edges 0$'
! grep -q '\.\.\.' out || fail "twenty bodies are all listed"
# shellcheck disable=SC2086
cube many.stl $bodies 63 0 0 1 66 0 0 1
expect 0 "$varnet" info many.stl
row 'body 20 +solid'
row '\.\.\. +2 more$'
! grep -q 'body 21' out || fail "a body beyond twenty"
expect 0 "$varnet" info many.stl --json
[ "$(grep -c '"kind"' out)" -eq 22 ] || fail "bodies in JSON"
row '"bodies": 22$|"bodies": 22,'

# Thousands are set apart.
# shellcheck disable=SC2086
cube hundred.stl $(for x in $(seq 84); do echo $((3 * x)) 0 0 1; done)
expect 0 "$varnet" info hundred.stl
row 'facets in the file +1,008$'
row 'vertices +672$'

# Corners that a rounding sets apart, and how they are joined.
cube near.stl 0 0 0 10
awk '/vertex 10 10 10/ && !done { print "vertex 10 10 10.000002"; done = 1; next } { print }' near.stl >apart.stl
expect 0 "$varnet" info apart.stl
row 'open edges in the file +[1-9]'
row 'open edges +0$'
row 'vertices joined with a near one +1$'
expect 0 "$varnet" info apart.stl --weld 0
row 'open edges +[1-9]'

# What is no model, by its reason; the other files are shown all the same.
printf '<!DOCTYPE html>\n<html><body>Not found</body></html>\n' >page.stl
printf 'version https://git-lfs.github.com/v1\noid sha256:4d7a\nsize 12345\n' >pointer.stl
expect 1 "$varnet" info page.stl pointer.stl missing.stl . parts.stl
says 'page.stl: .*HTML'
says 'pointer.stl: '
says 'missing.stl: no such file'
says 'is a folder'
says '4 of 5 files could not be read'
row '^parts.stl$'
head -c 100 /dev/zero >cut.stl
printf '\377\377\377\177' | dd of=cut.stl bs=1 seek=80 conv=notrunc 2>/dev/null
expect 1 "$varnet" info cut.stl
says 'cut.stl'
head -c 83 /dev/zero | tr '\0' '\1' >short.stl
expect 1 "$varnet" info short.stl
says 'short.stl: is too short for a model'
head -c 84 /dev/zero | tr '\0' '\1' >header.stl
expect 1 "$varnet" info header.stl
says 'header.stl: announces 16843009 facets, and holds 0: it is cut short'

expect 0 "$varnet"
row 'slice'
expect 0 "$varnet" --help
expect 0 "$varnet" --version
row '^varnet [0-9.]+ \(.+\)$'
expect 2 "$varnet" info
expect 2 "$varnet" nonsense
expect 2 "$varnet" info parts.stl --units furlong
expect 2 "$varnet" info parts.stl --scale nan
expect 2 "$varnet" info parts.stl --scale 0
for kind in man bash zsh; do
    expect 0 "$varnet" manual $kind
    row 'splice'
done
expect 0 bash -n <("$varnet" manual bash)
