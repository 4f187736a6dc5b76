#!/usr/bin/env bash
# The recipes that slice one part in shards: GNU parallel, and a Slurm array without Slurm and with a stand-in for it.
# usage: shards.sh VARNET
examples=$(dirname "$(readlink -f "$0")")/../../examples/cluster
. "$(dirname "$(readlink -f "$0")")/program.sh"
export VARNET=$varnet

expect 0 "$varnet" demo made
mkdir 'a folder'
mv made/bracket_repaired.stl 'a folder/the part.stl'
part='a folder/the part.stl'
expect 0 "$varnet" slice "$part" -o whole.cli --layer 1 --hatch 2 --mode coc --seed 3
options="--layer 1 --hatch 2 --mode coc --seed 3"
no_shards() { ! find . -name '*.shards.*' | grep . || fail "shards are left"; }

for shards in 1 2 7; do
    # shellcheck disable=SC2086
    expect 0 "$examples/slurm.sh" --dry-run "$part" 'a folder/array.cli' $shards $options
    says "sbatch --parsable --job-name=slice --array=1-$shards --wrap '.* --shard .SLURM_ARRAY_TASK_ID/$shards"
    says 'sbatch --job-name=join --dependency=afterok:ARRAY'
    cmp 'a folder/array.cli' whole.cli || fail "$shards tasks of an array"
    no_shards
done

# What is submitted, by a stand-in that runs each job at once, as a cluster would in the end.
mkdir bin
cat >bin/sbatch <<'STANDIN'
#!/usr/bin/env bash
set -euo pipefail
array=0
while [ $# -gt 0 ]; do
    case $1 in
        --array=1-*) array=${1#--array=1-} ;;
        --wrap) command=$2; shift ;;
        --dependency=afterok:*) [ "$1" = --dependency=afterok:42 ] || exit 3 ;;
    esac
    shift
done
if [ "$array" = 0 ]; then bash -c "$command"; exit; fi
for task in $(seq "$array"); do SLURM_ARRAY_TASK_ID=$task bash -c "$command" >/dev/null; done
echo "42;cluster"
STANDIN
chmod +x bin/sbatch
# shellcheck disable=SC2086
PATH=$PWD/bin:$PATH SBATCH_OPTIONS="--mem=4G --time=5" expect 0 "$examples/slurm.sh" "$part" submitted.cli 3 $options
cmp submitted.cli whole.cli || fail "a submitted array"
no_shards
# Where nothing can be submitted nothing is left.
printf '#!/bin/sh\nexit 1\n' >bin/sbatch
PATH=$PWD/bin:$PATH expect 1 "$examples/slurm.sh" "$part" no.cli 3
no_shards
expect 2 "$examples/slurm.sh" "$part" no.cli many
says 'many is no number of shards'
expect 2 "$examples/slurm.sh" "$part"
says 'usage'

command -v parallel >/dev/null || { echo "skipped: GNU parallel is not installed"; exit 77; }
for shards in 1 2 7; do
    # shellcheck disable=SC2086
    expect 0 "$examples/parallel.sh" "$part" 'a folder/parallel.cli' $shards $options
    cmp 'a folder/parallel.cli' whole.cli || fail "$shards shards by GNU parallel"
    no_shards
done
# Names are as they are, whatever GNU parallel and the shell make of them.
odd="a folder/it's {} {#} \$HOME;.stl"
cp "$part" "$odd"
# shellcheck disable=SC2086
expect 0 "$examples/parallel.sh" "$odd" "a folder/{}.cli" 3 $options
cmp 'a folder/{}.cli' whole.cli || fail "a name with braces"
no_shards
for wrong in 0 many; do
    expect 2 "$examples/parallel.sh" "$part" no.cli $wrong
    says "$wrong is no number of shards"
done
# A shard that fails fails the build, and leaves nothing.
expect 1 "$examples/parallel.sh" "$part" no.cli 400 --layer 1
says 'too few for 400 shards'
[ ! -e no.cli ] || fail "a file of a build that failed"
no_shards
