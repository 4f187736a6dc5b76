#!/usr/bin/env python3
"""How much faster two workers are than one: farm.py on so many files that it makes itself, each run in turn.

usage: speed.py [FILES [ROUNDS]]
"""

from __future__ import annotations

import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np

import varnet


def ripples(number: int) -> varnet.Part:
    """A sphere of 10 to 20 mm with ripples, of some thousand facets."""
    random = np.random.default_rng(number)
    rings, segments = 60 + number % 40, 120
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


def main() -> int:
    files = int(sys.argv[1]) if len(sys.argv) > 1 else 200
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    farm = Path(__file__).with_name("farm.py")
    ratios = []
    with tempfile.TemporaryDirectory() as folder:
        models = Path(folder) / "models"
        models.mkdir()
        for number in range(files):
            ripples(number).write(models / f"{number:04}.stl")
        for _ in range(rounds):
            seconds = {}
            for workers in (1, 2):
                table = Path(folder) / f"{workers}.csv"
                times = Path(folder) / "times.csv"
                start = time.perf_counter()
                subprocess.run(
                    [sys.executable, farm, "--workers", str(workers), "--memory", "2", "--times", times, models, table],
                    check=True,
                    stderr=subprocess.DEVNULL,
                )
                whole = time.perf_counter() - start
                seconds[workers] = whole
            ratios.append(seconds[1] / seconds[2])
            print(f"one worker {seconds[1]:.1f} s, two {seconds[2]:.1f} s: {ratios[-1]:.2f} times as fast", flush=True)
        same = (Path(folder) / "1.csv").read_bytes() == (Path(folder) / "2.csv").read_bytes()
    print(f"the tables are {'the same' if same else 'NOT the same'}; best ratio {max(ratios):.2f}")
    return 0 if same else 1


if __name__ == "__main__":
    sys.exit(main())
