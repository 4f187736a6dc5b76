#!/usr/bin/env bash
# The bars that show how far long work is: when they are drawn, what stands on them, and that they go. The clock
# goes as the test says, so that nothing depends on the speed of the machine.
# usage: bars.sh VARNET
. "$(dirname "$(readlink -f "$0")")/program.sh"
command -v script >/dev/null || { echo "skipped: there is no terminal"; exit 77; }
interposed

# drawn STEP ARGUMENTS...: what the program writes to a terminal, where the clock goes on by so many milliseconds
# at each look
drawn() {
    {
        declare -p work && declare -f with
        printf 'with CLOCK_STEP=%s -- ' "$1"
        printf '%q ' "$varnet" "${@:2}"
        echo "${to:-}"
    } >run
    local code=0
    script -qec "bash run" /dev/null </dev/null >seen || code=$?
    [ "$code" -eq 0 ] || { cat seen; fail "exit code $code of $*"; }
}
# bar TITLE OF...: so many of forty places, and their share
bar() {
    local title=$1 share
    shift
    for share in "$@"; do
        printf '\r%s [%s%s] %3d%%' "$title" "$(printf '%*s' $((share * 40 / 100)) '' | tr ' ' '#')" \
            "$(printf '%*s' $((40 - share * 40 / 100)) '' | tr ' ' .)" "$share"
    done
}
gone=$(printf '\r\033[K')
# slices N: text slices of that many empty layers
slices() {
    printf '$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$HEADEREND\n$$GEOMETRYSTART\n'
    for z in $(seq "$1"); do printf '$$LAYER/%s\n' "$z"; done
}
# told FILE LAYERS: the table of an ordering, as a terminal shows it
told() {
    printf '%s -> out.cli\r\n  layers                            %s\r\n' "$1" "$2"
    printf '  travel with the material off, mm  0 -> 0\r\n  starts and stops                  0 -> 0\r\n'
}

# Nothing is drawn in the first three tenths of a second, and then no more than each twentieth. Each layer is one look.
slices 10 >ten.cli
slices 20 >twenty.cli
drawn 50 order ten.cli out.cli
{ bar Ordering 60 70 80 90 100 && printf %s "$gone" && told ten.cli 10; } | cmp - seen || { cat -v seen; fail "twenty bars a second"; }
drawn 25 order twenty.cli out.cli
{ bar Ordering 60 70 80 90 100 && printf %s "$gone" && told twenty.cli 20; } | cmp - seen || { cat -v seen; fail "a bar each second time"; }
drawn 100 order ten.cli out.cli
{ bar Ordering 30 40 50 60 70 80 90 100 && printf %s "$gone" && told ten.cli 10; } | cmp - seen || { cat -v seen; fail "ten bars a second"; }
# Work that is short shows nothing, and takes nothing away.
drawn 29 order ten.cli out.cli
told ten.cli 10 | cmp - seen || { cat -v seen; fail "a bar for short work"; }
# The terminal is that of standard error. What goes to standard output does not matter.
to='>out' drawn 100 order ten.cli out.cli
{ bar Ordering 30 40 50 60 70 80 90 100 && printf %s "$gone"; } | cmp - seen || { cat -v seen; fail "a bar beside standard output"; }
to='2>err' drawn 100 order ten.cli out.cli
told ten.cli 10 | cmp - seen || { cat -v seen; fail "a bar without a terminal"; }
[ ! -s err ] || fail "a bar in a file"

# titles ARGUMENTS...: what stands on the bars, one after the other; behind none of them stands anything else
titles() {
    drawn 1000 "$@"
    sed 's/\r/\n/g' seen | sed -nE 's/^(.*) \[#*\.*\] +[0-9]+%$/\1/p' | uniq >found
    ! sed 's/\r/\n/g' seen | grep -aE '\] +[0-9]+%.' || fail "a line behind a bar: $*"
    diff - found || fail "the bars of $*"
}
cube two.stl 1 2 3 10 20 2 3 4
sed '30,36d' two.stl >open.stl
binary two.stl binary.stl
reading='Reading two.stl'
titles info two.stl <<<"$reading"
titles convert two.stl two.csm <<TEXT
$reading
Writing
TEXT
titles repair open.stl repaired.stl <<'TEXT'
Reading open.stl
Repairing
Writing
TEXT
titles split two.stl -o bodies <<<"$reading"
titles surfaces two.stl <<TEXT
$reading
Dividing
TEXT
titles support two.stl -o solids.stl <<TEXT
$reading
Building support
TEXT
titles slice two.stl -o in.cli --layer 2 <<TEXT
$reading
Slicing into in.cli
TEXT
mkdir folder
titles slice two.stl -o folder/in.cli --layer 2 --support --fill-holes 3 --page page.html <<TEXT
$reading
Closing holes
Building support
Making the page
Slicing into in.cli
Making the page
TEXT
titles slice binary.stl --stream -o folder/in.cli --layer 2 <<<'Slicing into in.cli'
titles view two.stl in.cli --support -o page.html <<TEXT
$reading
Building support
Dividing
Making the page
Reading
Making the page
TEXT
for name in info layers; do titles $name in.cli <<<'Reading in.cli'; done
titles convert in.cli to.cli <<'TEXT'
Reading
Writing
Comparing
TEXT
titles join in.cli -o to.cli <<<'Joining'
titles order in.cli to.cli <<'TEXT'
Reading
Ordering
TEXT
titles whole bodies <<'TEXT'
Reading two_1.STL
Reading two_2.STL
TEXT
# The share is that of the layers: of three, one after the other.
slices 3 >three.cli
drawn 1000 convert three.cli out.cli
{ bar Writing 33 67 100 && printf %s "$gone" && bar Comparing 33 67 100 && printf %s "$gone"; } >wanted
head -c "$(stat -c %s wanted)" seen | cmp - wanted || { cat -v seen; fail "the shares of three layers"; }
# A warning has a line of its own, where the bar of the work that is warned of goes on.
titles slice open.stl -o in.cli --layer 2 <<'TEXT'
Reading open.stl
Slicing into in.cli
TEXT
warned() { sed 's/\r/\n/g; s/\x1b\[K//g' seen >lines && grep -q "^varnet: warning: $1" lines || fail "no line of its own: $1"; }
warned 'paths stay open in '
cube small.stl 0 0 0 0.5
titles info small.stl <<<'Reading small.stl'
warned 'small\.stl: the part is 0\.5 mm long'
nothing_left
