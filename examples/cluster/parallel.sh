#!/usr/bin/env bash
# One part in shards of its layers, by the processors of this machine, and joined: the very bytes of one run. Needs GNU
# parallel; with --sshlogin among $PARALLEL, and a folder that all machines have, it is a cluster's.
# usage: parallel.sh PART OUT.cli SHARDS [options of varnet slice...]
set -euo pipefail
[ $# -ge 3 ] || { sed -n 2,4p "$0" >&2; exit 2; }
part=$1 output=$2 shards=$3
shift 3
varnet=${VARNET:-varnet}
folder=$(mktemp -d "$output.shards.XXXXXX")
trap 'rm -rf "$folder"' EXIT
trap 'exit 130' INT TERM HUP
seq "$shards" | parallel --will-cite --halt now,fail=1 --quote \
    "$varnet" slice "$part" -o "$folder/{}.cli" --shard "{}/$shards" "$@" >&2
files=()
for shard in $(seq "$shards"); do files+=("$folder/$shard.cli"); done
"$varnet" join "${files[@]}" -o "$output"
