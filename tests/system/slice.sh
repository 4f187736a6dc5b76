#!/usr/bin/env bash
# The slice command, as a person uses it: results, options, messages, exit codes, no half-written files.
# usage: slice.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
part=made/bracket_repaired.stl

expect 0 "$varnet" slice $part -o plain.cli
grep -qE 'layers +350 of 0\.2 mm$' out || fail "the number of layers"
grep -qE 'open paths +0$' out || fail "open paths of a closed part"
grep -qE 'volume of the layers, mm3 +1131[45][0-9]\.' out || fail "the volume of the layers"
grep -q 'support' out && fail "supports that nobody asked for"
expect 0 "$varnet" info plain.cli
grep -q 'CLI slices, binary' out || fail "the mode when none is given"

for mode in ascii binary coc; do
    for order in '' --order --splice; do
        # shellcheck disable=SC2086
        expect 0 "$varnet" slice $part -o parts.cli --layer 1 --hatch 2 --support --mode $mode $order
        grep -qE 'layers +70 of 1 mm$' out || fail "layers of $mode $order"
        grep -qE 'support +3 solids, [0-9,]+ strokes$' out || fail "supports of $mode $order"
        [ ! -s err ] || fail "messages of $mode $order: $(cat err)"
        expect 0 "$varnet" layers parts.cli --json
        # Every one of the 70 layers is in the file.
        expect 0 "$varnet" layers parts.cli --layer 70
        expect 1 "$varnet" layers parts.cli --layer 71
    done
done

# What is in the file does not depend on the mode.
expect 0 "$varnet" slice $part -o a.cli --layer 1 --hatch 2 --mode binary
expect 0 "$varnet" slice $part -o b.cli --layer 1 --hatch 2 --mode coc
expect 0 "$varnet" convert b.cli c.cli --mode binary
[ "$(stat -c %s a.cli)" -eq "$(stat -c %s c.cli)" ] || fail "the size by way of another mode"
expect 0 "$varnet" slice $part -o b.cli --layer 1 --hatch 2
cmp a.cli b.cli || fail "slicing twice gives two files"

# Travel gets less by ordering.
travel() { sed -nE 's/.*travel with the material off, mm +([0-9]+).*/\1/p' out; }
expect 0 "$varnet" slice $part -o a.cli --layer 1 --hatch 2
asFound=$(travel)
expect 0 "$varnet" slice $part -o a.cli --layer 1 --hatch 2 --order
[ "$(travel)" -lt "$asFound" ] || fail "travel of ordered paths"

# Parts side by side, in any kind of file.
expect 0 "$varnet" slice $part made/bracket_support.stl made/bracket_ring.csm -o plate.cli --layer 1 --hatch 2
grep -q '3 parts -> plate.cli' out || fail "the number of parts"

# An open mesh gives open paths, and stays open in the file.
printf 'solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 10 0 0\nvertex 5 0 10\nendloop\nendfacet\nendsolid\n' >open.stl
printf '%200s\n' '' >>open.stl
for mode in ascii binary coc; do
    expect 0 "$varnet" slice open.stl -o open.cli --layer 1 --mode $mode
    grep -qE 'contours +0$' out && grep -qE 'open paths +10$' out || fail "the open paths of $mode"
    expect 0 "$varnet" info --json open.cli
    grep -qE '"open_paths": 10' out || { cat out; fail "the open paths in the file of $mode"; }
done

# What cannot be sliced leaves no file, and leaves an older one as it was.
cp a.cli kept.cli
printf 'solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 0 1\nvertex 10 0 1\nvertex 5 5 1\nendloop\nendfacet\nendsolid\n%200s\n' '' >flat.stl
expect 1 "$varnet" slice flat.stl -o kept.cli
grep -q 'no height' err || fail "message for a flat part"
expect 1 "$varnet" slice $part missing.stl -o kept.cli
grep -q 'missing.stl: no such file' err || fail "message for a missing part"
expect 1 "$varnet" slice a.cli -o kept.cli
expect 1 "$varnet" slice $part -o kept.cli --layer 1e-9
grep -q 'too thin' err || fail "message for too many layers"
expect 1 "$varnet" slice $part -o kept.cli --hatch 1e-9
grep -q 'too close' err || fail "message for too many lines"
cmp a.cli kept.cli || fail "the older file"
expect 1 "$varnet" slice $part -o nofolder/out.cli
grep -q 'nofolder/out.cli: cannot be created' err || fail "message for a folder that is not there"
for wrong in '--layer 0' '--layer -1' '--layer nan' '--hatch 0' '--hatch x' '--hatch nan' '--hatch inf' '--angle 1000' '--angle nan' '--mode text' '--order --splice'; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" slice $part -o wrong.cli $wrong
done
expect 2 "$varnet" slice $part
expect 2 "$varnet" slice -o wrong.cli
[ ! -e wrong.cli ] || fail "a file for wrong arguments"

# A full disk is seen, where there is a device that plays one.
if [ -w /dev/full ]; then
    ln -s /dev/full full.cli.part
    expect 1 "$varnet" slice $part -o full.cli --layer 1
    grep -q 'full.cli: could not be written whole' err || fail "message for a full disk"
    [ ! -e full.cli ] || fail "a file on a full disk"
fi

# Ctrl-C in the middle of very many layers.
set -m
"$varnet" slice $part -o never.cli --layer 0.0001 --hatch 5 >out 2>err &
job=$!
sleep 0.7
kill -INT "$job"
code=0
wait "$job" || code=$?
[ "$code" -eq 1 ] || fail "exit code $code after Ctrl-C"
grep -q 'interrupted' err || fail "message after Ctrl-C"
[ ! -e never.cli ] || fail "a file is left after Ctrl-C"
ls -R | grep -q '\.part$' && fail "a half-written file is left"
exit 0
