#!/usr/bin/env bash
# Ctrl-C at each step: the line that says so, exit code 1, and nothing half done. It comes when a file is opened, or at a look at
# the clock, which is when the share of the work is told.
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

# While a part is read, and while what was made of it is written.
for job in 'info two.stl' 'info in.cli' 'convert two.stl no.csm' 'convert in.cli no.cli' 'repair two.stl no.stl' 'split two.stl -o no' \
    'surfaces two.stl -o no.ply' 'support two.stl -o no.stl' 'slice two.stl -o no.cli' 'view two.stl -o no.html' \
    'layers in.cli --svg no' 'order in.cli no.cli --svg no'; do
    input=$(cut -d ' ' -f 2 <<<"$job")
    # shellcheck disable=SC2086
    if [ "${input#*.}" = stl ]; then
        stopped STOP_AT_FILE=/$input -- ${job/ / $work/}
        empty
    fi
    [ "${job%% *}" = info ] || [ "${job%% *}" = split ] && continue
    # shellcheck disable=SC2086
    stopped STOP_AT_FILE=.part -- $job
done
for name in no no.stl no.cli no.csm no.ply no.html; do [ ! -e $name ] || fail "$name in spite of Ctrl-C"; done
