#!/usr/bin/env python3
"""How much faster two workers are than one: the farm on so many files that it makes itself, each run in turn, without
the time in which workers start.

usage: speed.py [FILES [ROUNDS]]
"""

from __future__ import annotations

import statistics
import sys
import tempfile
import time
from pathlib import Path

import farm
import numpy as np
from distributed import Client

import varnet

MEMORY = 2_000_000_000


def ripples(number: int) -> varnet.Part:
    """A sphere of 10 to 20 mm with ripples, of 60,000 to 100,000 facets."""
    random = np.random.default_rng(number)
    rings, segments = 150 + number % 100, 200
    latitude = np.linspace(0, np.pi, rings + 1)[1:-1, None]
    longitude = np.arange(segments)[None, :] * 2 * np.pi / segments
    waves = random.integers(2, 9)
    radius = random.uniform(10, 20) * (1 + 0.05 * np.sin(waves * latitude) * np.cos(waves * longitude))
    flat = radius * np.sin(latitude)
    points = np.stack([flat * np.cos(longitude), flat * np.sin(longitude), radius * np.cos(latitude)], axis=-1)
    points = np.concatenate([points.reshape(-1, 3), [[0, 0, points[0, 0, 2]], [0, 0, points[-1, 0, 2]]]])
    here = np.arange((rings - 1) * segments).reshape(rings - 1, segments)
    right = np.roll(here, -1, axis=1)
    a, b, c, d = here[:-1].ravel(), right[:-1].ravel(), here[1:].ravel(), right[1:].ravel()
    top, bottom = len(points) - 2, len(points) - 1
    triangles = [np.stack([a, c, b], 1), np.stack([b, c, d], 1)]
    triangles.append(np.stack([np.full(segments, top), here[0], right[0]], 1))
    triangles.append(np.stack([np.full(segments, bottom), right[-1], here[-1]], 1))
    return varnet.Part(points, np.concatenate(triangles))


def run_with(workers: int, models: Path) -> tuple[float, float, bytes]:
    """Seconds of the whole folder, once the workers are there; processor seconds of the workers; the table."""
    with farm.start_workers(workers, MEMORY) as cluster, Client(cluster) as client:
        client.wait_for_workers(workers)
        before = sum(client.run(time.process_time).values())
        start = time.perf_counter()
        rows, _ = farm.run(client, farm.models_in(models), farm.Job(), MEMORY)
        seconds = time.perf_counter() - start
        used = sum(client.run(time.process_time).values()) - before
    return seconds, used, farm.to_csv(rows, farm.COLUMNS)


def main() -> int:
    files = int(sys.argv[1]) if len(sys.argv) > 1 else 200
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    ratios = []
    tables = set()
    with tempfile.TemporaryDirectory() as folder:
        models = Path(folder)
        for number in range(files):
            ripples(number).write(models / f"{number:04}.stl")
        for _ in range(rounds):
            one, used_by_one, table = run_with(1, models)
            tables.add(table)
            two, used_by_two, table = run_with(2, models)
            tables.add(table)
            ratios.append(one / two)
            print(
                f"one worker {one:.1f} s, {used_by_one:.1f} s of processor; "
                f"two workers {two:.1f} s, {used_by_two:.1f} s of processor: {one / two:.2f} times as fast",
                flush=True,
            )
    print(f"{len(tables)} different tables; median {statistics.median(ratios):.2f}, best {max(ratios):.2f}")
    return 0 if len(tables) == 1 else 1


if __name__ == "__main__":
    sys.exit(main())
