"""What Python adds to the kit's time, and what other readers take; prints tables in Markdown.

usage: speed.py KIT_TIMES [FACETS]

KIT_TIMES is the program python_kit_times, which does the same without Python. Runs are taken in turn, and the best of
each counts, so that what else the machine does weighs little.
"""

import os
import signal
import subprocess
import sys
import tempfile
import threading
import time
from collections.abc import Callable
from pathlib import Path
from typing import Any

import numpy as np
import varnet

sys.path.insert(0, str(Path(__file__).parents[1] / "tests"))
import shapes  # noqa: E402

RUNS = 5
LAYERS = 500


def seconds(work: Callable[[], object]) -> float:
    begin = time.perf_counter()
    work()
    return time.perf_counter() - begin


def arrays_of_file(path: Path) -> None:
    part = varnet.read(path)
    assert len(part.points) > 0 and len(part.triangles) > 0


def arrays_of_layers(part: varnet.Part) -> None:
    height = float(part.box[1, 2] - part.box[0, 2])
    for layer in varnet.slice(part, layer=height / LAYERS):
        layer.contours, layer.closed, layer.parent, layer.id, layer.strokes, layer.chain_ids


def beside_the_kit(kit_times: str, path: Path) -> tuple[float, float]:
    part = varnet.read(path)
    best = [1e300] * 4
    for _ in range(RUNS):
        done = subprocess.run([kit_times, str(path), str(LAYERS), "1"], capture_output=True, text=True, check=True)
        times = [float(line) for line in done.stdout.split()]
        times += [seconds(lambda: arrays_of_file(path)), seconds(lambda: arrays_of_layers(part))]
        best = [min(pair) for pair in zip(best, times)]
    print("| | the kit, s | the module, s | ratio |\n|---|---|---|---|")
    print(f"| file to arrays, healed | {best[0]:.3f} | {best[2]:.3f} | {best[2] / best[0]:.2f} |")
    print(f"| {LAYERS} layers as arrays | {best[1]:.3f} | {best[3]:.3f} | {best[3] / best[1]:.2f} |\n")
    return best[2], best[3]


def other_readers(path: Path) -> dict[str, Callable[[], object]]:
    readers: dict[str, Callable[[], object]] = {
        "varnet, joined and healed": lambda: arrays_of_file(path),
        "varnet, joined alone": lambda: varnet.read(path, heal=False).points,
    }
    try:
        import meshio

        readers["meshio, joined"] = lambda: meshio.read(path)
    except ImportError:
        pass
    try:
        from vtkmodules.util.numpy_support import vtk_to_numpy
        from vtkmodules.vtkIOGeometry import vtkSTLReader

        def vtk(merging: bool) -> None:
            reader: Any = vtkSTLReader()
            reader.SetFileName(str(path))
            reader.SetMerging(merging)
            reader.Update()
            mesh = reader.GetOutput()
            vtk_to_numpy(mesh.GetPoints().GetData())
            vtk_to_numpy(mesh.GetPolys().GetConnectivityArray())

        readers["VTK, joined"] = lambda: vtk(True)
        readers["VTK, corners apart"] = lambda: vtk(False)
    except ImportError:
        pass
    try:
        from stl import mesh as numpy_stl

        readers["numpy-stl, corners apart"] = lambda: numpy_stl.Mesh.from_file(str(path))
    except ImportError:
        pass
    facet = np.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("tag", "<u2")])
    readers["numpy.fromfile, corners apart"] = lambda: np.fromfile(path, facet, offset=84)["corners"].astype(float)
    return readers


def beside_others(path: Path) -> None:
    readers = other_readers(path)
    best = dict.fromkeys(readers, 1e300)
    for _ in range(3):
        for name, read in readers.items():
            best[name] = min(best[name], seconds(read))
    first = best["varnet, joined and healed"]
    print("| reader | s | ratio |\n|---|---|---|")
    for name, took in best.items():
        print(f"| {name} | {took:.3f} | {took / first:.2f} |")
    print()


def two_threads(part: varnet.Part) -> None:
    other = varnet.Part(part.points, part.triangles, heal=False)

    def both_in_turn() -> None:
        arrays_of_layers(part)
        arrays_of_layers(other)

    def both_at_once() -> None:
        threads = [threading.Thread(target=arrays_of_layers, args=(one,)) for one in (part, other)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    def both_by_processes() -> None:
        child = os.fork()
        arrays_of_layers(part if child else other)
        if child == 0:
            os._exit(0)
        os.waitpid(child, 0)

    turn = at_once = processes = 1e300
    for _ in range(2 * RUNS):
        turn, at_once = min(turn, seconds(both_in_turn)), min(at_once, seconds(both_at_once))
        processes = min(processes, seconds(both_by_processes))
    print("| two parts sliced | times as fast as in turn |\n|---|---|")
    print(f"| by two threads | {turn / at_once:.2f} |\n| by two processes | {turn / processes:.2f} |\n")
    print(f"The load of the machine was {os.getloadavg()[0]:.1f}, and it has {os.cpu_count()} processors.\n")


def until_ctrl_c_ends(work: Callable[[], object]) -> float:
    sent = [0.0]

    def send() -> None:
        time.sleep(0.15)
        sent[0] = time.perf_counter()
        os.kill(os.getpid(), signal.SIGINT)

    # A shell that starts this in the background has the signal ignored.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    sender = threading.Thread(target=send)
    try:
        sender.start()
        while True:
            work()
    except KeyboardInterrupt:
        return time.perf_counter() - sent[0]
    finally:
        sender.join()


def ctrl_c(part: varnet.Part, path: Path) -> None:
    calls: dict[str, Callable[[], object]] = {
        "read": lambda: varnet.read(path),
        "Part(points, triangles)": lambda: varnet.Part(part.points, part.triangles),
        "repair": part.repair,
        "supports": part.supports,
        "surfaces": part.surfaces,
        "svg": part.svg,
        "slice": lambda: arrays_of_layers(part),
        "bodies": lambda: varnet.Part(part.points, part.triangles, heal=False).bodies,
    }
    print("| call | Ctrl-C ends it after, ms, at most |\n|---|---|")
    for name, call in calls.items():
        print(f"| {name} | {1000.0 * max(until_ctrl_c_ends(call) for _ in range(RUNS)):.0f} |")
    print()


def main() -> None:
    facets = int(sys.argv[2]) if len(sys.argv) > 2 else 1_000_000
    with tempfile.TemporaryDirectory() as folder:
        path = shapes.save(Path(folder) / "sphere.stl", shapes.sphere(50.0, int(round((facets / 4) ** 0.5)) + 1))
        part = varnet.read(path)
        print(f"{len(part.triangles)} facets\n")
        beside_the_kit(sys.argv[1], path)
        beside_others(path)
        two_threads(part)
        ctrl_c(part, path)


if __name__ == "__main__":
    main()
