#!/usr/bin/env bash
# One part in shards of its layers, a task of a Slurm array each, and a job behind them that joins them: the very bytes of
# one run. All nodes must see the files. With --dry-run it says what it would submit, and runs the tasks here, in turn.
# usage: slurm.sh [--dry-run] PART OUT.cli SHARDS [options of varnet slice...]
#   SBATCH_OPTIONS  for all jobs, such as "--mem=4G --time=30 --partition=short"
set -euo pipefail
dry=
[ "${1:-}" = --dry-run ] && dry=1 && shift
[ $# -ge 3 ] || { sed -n 2,5p "$0" >&2; exit 2; }
part=$(readlink -f "$1") output=$(readlink -f "$2") shards=$3
shift 3
[[ "$shards" =~ ^[1-9][0-9]*$ ]] || { echo "slurm.sh: $shards is no number of shards" >&2; exit 2; }
varnet=${VARNET:-varnet}
folder=$(mktemp -d "$output.shards.XXXXXX")

# The words of a command, so that a shell reads them back as they are.
quoted() { printf '%q ' "$@"; }
slice="$(quoted "$varnet" slice "$part" "$@")--shard \$SLURM_ARRAY_TASK_ID/$shards"
slice+=" -o $(printf %q "$folder")/\$SLURM_ARRAY_TASK_ID.cli"
names=
for shard in $(seq "$shards"); do names+=" $(printf %q "$folder/$shard.cli")"; done
join="$(quoted "$varnet" join)$names -o $(quoted "$output")&& rm -r $(quoted "$folder")"

if [ -n "$dry" ]; then
    # shellcheck disable=SC2086
    {
        echo sbatch --parsable ${SBATCH_OPTIONS:-} --job-name=slice "--array=1-$shards" --wrap "'$slice'"
        echo sbatch ${SBATCH_OPTIONS:-} --job-name=join --dependency=afterok:ARRAY --wrap "'$join'"
    } >&2
    trap 'rm -rf "$folder"' EXIT
    for shard in $(seq "$shards"); do SLURM_ARRAY_TASK_ID=$shard bash -c "$slice" >&2; done
    bash -c "$join"
    exit
fi
# What is not submitted needs no folder; what is has it until the end.
trap '[ -n "${array:-}" ] || rm -rf "$folder"' EXIT
# shellcheck disable=SC2086
array=$(sbatch --parsable ${SBATCH_OPTIONS:-} --job-name=slice "--array=1-$shards" --wrap "$slice")
# shellcheck disable=SC2086
sbatch ${SBATCH_OPTIONS:-} --job-name=join "--dependency=afterok:${array%%;*}" --wrap "$join"
