#!/usr/bin/env bash
# One part in shards of its layers, by the processors of this machine, and joined: the very bytes of one run. Needs GNU
# parallel; with --sshlogin among $PARALLEL, and a folder that all machines have, it is a cluster's.
# usage: parallel.sh PART OUT.cli SHARDS [options of varnet slice...]
set -euo pipefail
[ $# -ge 3 ] || { sed -n 2,4p "$0" >&2; exit 2; }
part=$1 output=$2 shards=$3
shift 3
[[ "$shards" =~ ^[1-9][0-9]*$ ]] || { echo "parallel.sh: $shards is no number of shards" >&2; exit 2; }
varnet=${VARNET:-varnet}
folder=$(mktemp -d "$output.shards.XXXXXX")
trap 'rm -rf "$folder"' EXIT
trap 'exit 130' INT TERM HUP
# Whole commands, in which GNU parallel replaces nothing: a name may hold {} too.
for shard in $(seq "$shards"); do
    printf '%q ' "$varnet" slice "$part" -o "$folder/$shard.cli" --shard "$shard/$shards" "$@"
    echo
done | PARALLEL_SHELL=$BASH parallel --will-cite --halt now,fail=1 >&2
files=()
for shard in $(seq "$shards"); do files+=("$folder/$shard.cli"); done
"$varnet" join "${files[@]}" -o "$output"
