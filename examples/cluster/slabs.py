#!/usr/bin/env python3
"""Slices one part in slabs of its layers by many workers, and joins them: the very bytes of one run.

Needs the module varnet and Debian's python3-distributed. All workers must see the part and the folder of the output.
Each slab goes to a file beside the output; they are removed in every case.
"""

from __future__ import annotations

import argparse
import os
import sys
import tempfile
from pathlib import Path
from typing import Any

from distributed import Client, LocalCluster

import varnet

Range = tuple[int, int]


def count_layers(part: str, settings: dict[str, Any]) -> int:
    return varnet.slice(varnet.read(part), **settings).layer_count


def slabs_of(layers: int, slabs: int) -> list[Range]:
    """First and last layers of about equal numbers, without empty ones."""
    ends = [slab * layers // slabs for slab in range(slabs + 1)]
    return [(begin + 1, end) for begin, end in zip(ends, ends[1:]) if begin < end]


def slice_slab(part: str, output: str, layers: Range, settings: dict[str, Any], mode: Any, seed: int | None) -> str:
    slices = varnet.slice(varnet.read(part), layers=layers, **settings)
    whole = (*layers, slices.layer_count)
    with varnet.SliceWriter(output, len(slices), mode=mode, seed=seed, range=whole) as writer:
        for layer in slices:
            writer.write(layer)
    return output


def build(
    client: Client,
    part: Path,
    output: Path,
    slabs: int,
    settings: dict[str, Any],
    *,
    mode: Any = "binary",
    seed: int | None = None,
    order: bool = False,
) -> int:
    """The number of layers. Raises varnet.Error, and leaves no file then."""
    part, output = part.resolve(), output.resolve()
    layers = client.submit(count_layers, str(part), settings, pure=False).result()
    with tempfile.TemporaryDirectory(dir=output.parent, prefix=f".{output.name}.slabs-") as folder:
        jobs = [
            client.submit(slice_slab, str(part), f"{folder}/{first}.cli", (first, last), settings, mode, seed, pure=False)
            for first, last in slabs_of(layers, slabs)
        ]
        files = client.gather(jobs)
        if not order:
            return varnet.join_slices(files, output)
        # Putting paths in order goes from layer to layer, so that it is the last step.
        joined = f"{folder}/joined.cli"
        varnet.join_slices(files, joined)
        return varnet.write_slices(output, varnet.order(varnet.SliceFile(joined)), mode=mode, seed=seed)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("part", type=Path)
    parser.add_argument("output", type=Path, help="CLI file to write")
    parser.add_argument("--slabs", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--scheduler", help="address of a cluster that runs, instead of workers of this machine")
    parser.add_argument("--layer", type=float, default=0.2, help="mm (default: 0.2)")
    parser.add_argument("--hatch", type=float, default=0.5, help="mm (default: 0.5)")
    parser.add_argument("--mode", choices=("text", "binary", "disguised"), default="binary")
    parser.add_argument("--seed", type=int, help="of the noise of the mode disguised")
    parser.add_argument("--order", action="store_true", help="print what is nearest next")
    options = parser.parse_args()
    if options.slabs < 1:
        parser.error("--slabs: at least 1")
    if options.mode == "disguised" and options.seed is None:
        parser.error("--mode disguised needs a --seed, so that all slabs have the noise of one run")
    settings = {"layer": options.layer, "hatch": options.hatch}
    cluster = options.scheduler or LocalCluster(
        n_workers=min(options.slabs, os.cpu_count() or 1),
        threads_per_worker=1,
        dashboard_address=":0",
        silence_logs=50,
    )
    try:
        with Client(cluster) as client:
            layers = build(
                client,
                options.part,
                options.output,
                options.slabs,
                settings,
                mode=options.mode,
                seed=options.seed,
                order=options.order,
            )
    except varnet.Error as error:
        print(f"slabs: {error}", file=sys.stderr)
        return 1
    finally:
        if isinstance(cluster, LocalCluster):
            cluster.close()
    print(f"{layers} layers")
    return 0


if __name__ == "__main__":
    sys.exit(main())
