#!/usr/bin/env bash
# Ctrl-C at each step: the line that says so, exit code 1, and nothing half done. It comes when a file is opened,
# or at a look at the clock, which is when the share of the work is told.
# usage: stopped.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"
interposed

# stopped SETTING... -- ARGUMENTS...: the program, which says that it was interrupted, and no more
stopped() {
    local settings=()
    while [ "$1" != -- ]; do settings+=("$1") && shift; done
    shift
    expect 1 with "${settings[@]}" -- "$varnet" "$@"
    messages <<<'varnet: interrupted'
    nothing_left
}
# empty: nothing was printed to standard output
empty() { [ ! -s out ] || fail "printed in spite of Ctrl-C: $(cat out)"; }
# A library that stops nothing changes nothing.
cube two.stl 1 2 3 10 20 2 3 4
expect 0 "$varnet" info two.stl
cp out told
expect 0 with CLOCK_STEP=1 -- "$varnet" info two.stl
cmp out told || fail "another table with another clock"

binary two.stl binary.stl
expect 0 "$varnet" slice two.stl -o in.cli --layer 1
{
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$HEADEREND\n$$GEOMETRYSTART\n'
    for z in 1 2 3; do printf '$$LAYER/%s\n$$HATCHES/1,1,0,0,1,1\n' "$z"; done
} >three.cli

# While a part is read.
for job in 'info' 'convert no.csm' 'repair no.stl' 'split -o no' 'surfaces -o no.ply' 'support -o no.stl' 'slice -o no.cli' \
    'view -o no.html'; do
    read -r name rest <<<"$job"
    # shellcheck disable=SC2086
    stopped STOP_AT_FILE=/two.stl -- $name "$work/two.stl" $rest
    empty
done
# While the result is written: it does not come to its name. Pictures of surfaces and solids of supports are
# written at the very end.
for job in 'convert two.stl no.csm' 'convert in.cli no.cli' 'repair two.stl no.stl' 'slice two.stl -o no.cli' \
    'slice binary.stl --stream -o no.cli' 'slice two.stl -o no.cli --page no.html' 'view two.stl -o no.html' 'order in.cli no.cli' \
    'join in.cli -o no.cli'; do
    # shellcheck disable=SC2086
    stopped STOP_AT_FILE=.part -- $job
    empty
done
for name in no no.stl no.cli no.csm no.ply no.html; do [ ! -e $name ] || fail "$name in spite of Ctrl-C"; done

# Of several files those that are done stay, and no more are begun.
cube second.stl 0 0 0 2 5 0 0 3 10 0 0 4
stopped STOP_AT_FILE=second_2.STL -- split second.stl -o bodies
empty
[ "$(ls bodies | tr '\n' ' ')" = 'second_1.STL ' ] || [ "$(ls bodies | tr '\n' ' ')" = 'second_1.STL second_2.STL ' ] || fail "bodies: $(ls bodies)"
stopped STOP_AT_FILE=second.stl -- info two.stl second.stl missing.stl
cmp out told || fail "the table of the first file"
stopped STOP_AT_FILE=second.stl -- info two.stl second.stl --json
empty
stopped STOP_AT_FILE=second.stl -- view two.stl second.stl -o no.html
stopped STOP_AT_FILE=second.stl -- slice two.stl second.stl -o no.cli
mkdir parts
cp two.stl second.stl parts
cp two.stl parts/third.stl
for stop in 'third:second.stl ' 'two:second.stl third.stl '; do
    stopped STOP_AT_FILE=/${stop%%:*}.stl -- whole parts
    [ "$(sed 1,2d out | cut -d ' ' -f 1 | tr '\n' ' ')" = "${stop#*:}" ] || fail "files beside one that was stopped: $(cat out)"
done
stopped STOP_AT_FILE=/two.stl -- whole parts --json
empty
stopped STOP_AT_FILE=layer_00002.svg -- layers three.cli --svg pictures
[ -e pictures/layer_00001.svg ] && [ ! -e pictures/layer_00003.svg ] || fail "pictures: $(ls pictures)"
# Of the last picture, too: the file is not finished behind it.
for n in 1 2 3; do
    stopped STOP_AT_FILE=layer_0000$n.svg -- order three.cli no.cli --svg ordered
    empty
done

# Looks at the clock: one when a bar is made, and one a layer. The slices stand there before they are compared.
for look in 3 4 5; do
    stopped CLOCK_STEP=1 STOP_AT_LOOK=$look -- convert three.cli no.cli
    stopped CLOCK_STEP=1 STOP_AT_LOOK=$look -- order three.cli no.cli
    empty
done
expect 0 "$varnet" convert three.cli whole.cli
for look in 7 8 9; do
    rm -f there.cli
    stopped CLOCK_STEP=1 STOP_AT_LOOK=$look -- convert three.cli there.cli
    empty
    cmp there.cli whole.cli || fail "slices that were compared"
done
expect 0 with CLOCK_STEP=1 STOP_AT_LOOK=10 -- "$varnet" convert three.cli there.cli
# Every step of work on a part can be stopped: at each look there is an end, until there is none left to look at.
for job in 'convert two.stl to.csm' 'repair two.stl to.stl' 'surfaces two.stl' 'support two.stl -o to.stl' 'split two.stl -o to' \
    'slice two.stl -o to.cli --support --fill-holes 3 --layer 5 --page to.html' 'slice binary.stl -o to.cli --stream --layer 5' \
    'view two.stl -o to.html --support'; do
    look=1
    # shellcheck disable=SC2086
    while rm -rf to to.*; ! with CLOCK_STEP=1 STOP_AT_LOOK=$look -- "$varnet" $job >out 2>err; do
        messages <<<'varnet: interrupted'
        empty
        nothing_left
        look=$((look + 1))
    done
    [ $look -gt 4 ] && [ $look -lt 100 ] || fail "stopped $look times: $job"
done
for name in no no.cli no.html; do [ ! -e $name ] || fail "$name in spite of Ctrl-C"; done
# The demo, between its steps; the selfcheck, which takes its folder away.
stopped STOP_AT_FILE=bracket_support.svg -- demo made
[ -e made/bracket_support.stl ] && [ ! -e made/bracket_layer_16.svg ] && [ ! -e made/index.html ] || fail "the demo goes on"
stopped STOP_AT_FILE=bracket_coc.cli -- demo made
[ -e made/bracket.cli ] && [ ! -e made/bracket_ordered.cli ] || fail "the demo goes on"
mkdir temp
TMPDIR=$work/temp stopped STOP_AT_FILE=varnet-selfcheck -- selfcheck
empty
[ -z "$(ls -A temp)" ] || fail "the folder of the selfcheck is left"
