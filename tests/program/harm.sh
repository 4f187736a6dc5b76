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

if [ -w /dev/full ]; then
    for job in 'slice part.stl -o -' 'repair part.stl -'; do
        # shellcheck disable=SC2086
        ! "$varnet" $job >/dev/full 2>err || fail "$job into a full device"
        says 'could not be written whole: the disk is full'
    done
fi

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

# Nor does a rewrite that finds no room: what was there stays, and it is said why.
cubes=()
for n in $(seq 0 30); do cubes+=("$((20 * n))" 0 0 10); done
cube many.stl "${cubes[@]}"
rewrite() {
    local target=$1
    shift
    cp "$target" before
    (
        ulimit -f 1
        expect 1 "$varnet" "$@"
        says "$target: (could not be written whole|cannot be written): "
    ) || fail "a rewrite of $target without room"
    cmp "$target" before || fail "$target has changed"
    nothing_left
}
cp plain.cli again.cli
rewrite again.cli order again.cli again.cli
rewrite many.stl repair many.stl many.stl
for kind in --floats --ring --plain; do
    printf 'old' >again.csm
    rewrite again.csm convert many.stl again.csm $kind
done
if [ -w /dev/full ]; then
    ln -s /dev/full full.csm
    for kind in --floats --ring --plain; do
        expect 1 "$varnet" convert part.stl full.csm $kind
        says 'full.csm: cannot be written: the disk is full'
    done
    # A name that is taken, were it by a link to a full device, is another's.
    expect 0 bash -c 'ln -s /dev/full taken.cli.$$.part; exec "$0" "$@"' "$varnet" order plain.cli taken.cli
    [ "$(find . -name 'taken.cli.*.part' -type l | wc -l)" -eq 1 ] || fail "the link of another"
    [ -s taken.cli ] && [ ! -L taken.cli ] || fail "a file beside a name that is taken"
    find . -name 'taken.cli.*.part' -delete
fi

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

# A reader that has seen enough: more than a pipe holds stays behind, which is an error like any other.
cube tall.stl 0 0 0 10
expect 0 "$varnet" slice tall.stl -o tall.cli --layer 0.001 --hatch 0
set +e
"$varnet" layers tall.cli --json 2>err | head -n 1 >first
code=${PIPESTATUS[0]}
set -e
[ "$code" -eq 1 ] || fail "exit code $code when nobody reads on"
says 'standard output could not be written whole'
[ "$(cat first)" = "{" ] || fail "the first line of the list"
