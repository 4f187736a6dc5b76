#!/usr/bin/env bash
# varnet slice --stream: from disk what the ordinary run makes in memory.
# usage: stream.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

expect 0 "$varnet" demo made
part=made/bracket_repaired.stl
mkdir temp
for options in "" "--layer 1 --mode ascii" "--layer 1 --mode coc --seed 4" "--layer 1 --order" "--no-fill --rule odd" \
    "--layer 1 --units in --scale 2"; do
    # shellcheck disable=SC2086
    expect 0 "$varnet" slice $part -o plain.cli $options
    cp out plain.out
    # shellcheck disable=SC2086
    expect 0 "$varnet" slice $part -o streamed.cli --stream --temp temp $options
    [ ! -s err ] || fail "messages of $options: $(cat err)"
    cmp plain.cli streamed.cli || fail "streamed with $options"
    row 'facets that a layer cuts +[1-9]'
    row 'bytes of the temporary file +[1-9]'
    # The rows of the ordinary run are all there.
    sed 1d plain.out | while read -r line; do grep -qF -- "$line" out || fail "no row $line"; done
done

# Shards, joined.
expect 0 "$varnet" slice $part -o whole.cli --layer 1
for range in 1:1 2:40 41:70; do
    expect 0 "$varnet" slice $part -o "${range/:/_}.cli" --layer 1 --stream --layers $range
done
expect 0 "$varnet" join 1_1.cli 2_40.cli 41_70.cli -o joined.cli
cmp joined.cli whole.cli || fail "joined shards"

# What cannot be had in this way is refused by name.
for other in "--support" "--page page.html" "--weld 0.1"; do
    # shellcheck disable=SC2086
    expect 2 "$varnet" slice $part -o no.cli --stream $other
    says "${other%% *}"
done
expect 2 "$varnet" slice $part $part -o no.cli --stream
says '--stream: takes one part'
expect 2 "$varnet" slice $part -o no.cli --temp temp
says '--stream'
expect 1 "$varnet" slice made/bracket_ascii.stl -o no.cli --stream
says 'bracket_ascii.stl: is ASCII STL: only binary STL'
mkfifo pipe
expect 1 "$varnet" slice pipe -o no.cli --stream
says 'pipe: is no plain file'
expect 1 "$varnet" slice none.stl -o no.cli --stream
says 'none.stl: no such file'
expect 1 "$varnet" slice $part -o no.cli --stream --temp nowhere
says 'nowhere: no temporary file can be made here: no such file or folder'
head -c 700 $part >cut.stl
expect 1 "$varnet" slice cut.stl -o no.cli --stream
says 'cut.stl: announces .* it is cut short'
[ ! -e no.cli ] || fail "a file of what was refused"

# Open parts and parts inside out are told of.
head -c 80 $part >open.stl
printf '\144\0\0\0' >>open.stl
head -c 5084 $part | tail -c +85 >>open.stl
expect 0 "$varnet" slice open.stl -o open.cli --stream
says 'paths stay open in'
expect 1 "$varnet" slice open.stl -o strict.cli --stream --strict
expect 0 "$varnet" slice $part -o json.cli --stream --json
grep -q '"facets_sorted"' out && grep -q '"inside_out_layers": 0' out && grep -q '"turned": false' out || fail "JSON"

# A limit of the size of files is as good as a full disk.
(
    ulimit -f 8
    expect 1 "$varnet" slice $part -o full.cli --stream --temp temp --layer 0.001
    says 'temp: a temporary file could not be written: '
)
[ ! -e full.cli ] || fail "a file beyond the limit"
nothing_left

# Signals. The job is seen to write before it is stopped; what it sorts has no name from the beginning.
begun() { find . -name 'long.cli.*.part' | grep -q .; }
set -m
for signal in INT TERM HUP KILL; do
    "$varnet" slice $part -o long.cli --layer 0.0001 --hatch 0.01 --stream --temp temp >out 2>err &
    job=$!
    wait_for begun
    [ -z "$(ls -A temp)" ] || fail "a temporary file with a name"
    kill -$signal $job
    if [ $signal = KILL ]; then
        wait $job || true
        rm -f long.cli.*.part
    else
        interrupted $job
    fi
    [ ! -e long.cli ] || fail "a file is left after $signal"
    [ -z "$(ls -A temp)" ] || fail "a temporary file is left after $signal"
done
