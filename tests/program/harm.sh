#!/usr/bin/env bash
# Nothing of the user's is harmed: devices, pipes, links, modes, full disks, signals.
# usage: harm.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"

cube part.stl 0 0 0 10
expect 0 "$varnet" slice part.stl -o plain.cli

# Devices are written to, and stay what they are.
expect 0 "$varnet" slice part.stl -o /dev/null
expect 0 "$varnet" repair part.stl /dev/null
[ -c /dev/null ] || fail "/dev/null is a file now"
if [ -w /dev/full ]; then
    expect 1 "$varnet" slice part.stl -o /dev/full
    says '/dev/full: could not be written whole: the disk is full'
    [ -c /dev/full ] || fail "/dev/full is a file now"
fi

# Standard output is the result; the table goes to standard error.
expect 0 "$varnet" slice part.stl -o -
cmp out plain.cli || fail "slices on standard output"
says 'layers +50 of 0.2 mm'
[ ! -e - ] || fail "a file of the name -"
expect 0 "$varnet" repair part.stl -
[ "$(stat -c %s out)" -eq 684 ] || fail "STL on standard output"
mkfifo pipe
cat pipe >through &
expect 0 "$varnet" slice part.stl -o pipe
wait $!
cmp through plain.cli || fail "slices through a pipe"
[ -p pipe ] || fail "the pipe is a file now"

# Links keep pointing, modes stay.
mkdir elsewhere
printf 'old' >elsewhere/target.cli
chmod 600 elsewhere/target.cli
ln -s elsewhere/target.cli link.cli
expect 0 "$varnet" slice part.stl -o link.cli
[ -L link.cli ] || fail "the link is a file now"
cmp elsewhere/target.cli plain.cli || fail "what the link points to"
[ "$(stat -c %a elsewhere/target.cli)" = 600 ] || fail "the mode of a file that is replaced"

# Names in any alphabet.
mkdir 'łódź 中文 🙂'
expect 0 "$varnet" slice part.stl -o 'łódź 中文 🙂/część.cli'
cmp 'łódź 中文 🙂/część.cli' plain.cli || fail "a name in other letters"

# A limit of the size of files is a failure like any other.
(
    ulimit -f 1
    expect 1 "$varnet" slice part.stl -o large.cli --layer 0.01
    says 'large.cli: could not be written whole'
)
[ ! -e large.cli ] || fail "a file beyond the limit"
nothing_left

# Signals, while the file is under way: the job is seen to write before it is stopped.
begun() { find . -name 'long.cli.*.part' | grep -q .; }
set -m
for signal in INT TERM HUP; do
    "$varnet" slice part.stl -o long.cli --layer 0.0001 --hatch 0.01 >out 2>err &
    job=$!
    wait_for begun
    kill -$signal $job
    interrupted $job
    [ ! -e long.cli ] || fail "a file is left after $signal"
done
