"""The examples for many workers, each with a real cluster of processes."""

from __future__ import annotations

import csv
import io
import os
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path
from typing import Any, Iterator

import numpy as np
import pytest

import varnet

distributed = pytest.importorskip("distributed", reason="Debian's python3-distributed is not installed")

EXAMPLES = Path(__file__).resolve().parents[1]
for folder in (EXAMPLES / "farm", EXAMPLES / "cluster", EXAMPLES.parent / "python" / "tests"):
    sys.path.insert(0, str(folder))
import farm  # noqa: E402
import slabs  # noqa: E402
from shapes import box, cube, table, together  # noqa: E402

MEMORY = 2_000_000_000


def write(path: Path, *meshes: Any) -> Path:
    varnet.Part(*together(*meshes)).write(path)
    return path


@pytest.fixture(scope="module")
def models(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """Good files and bad ones."""
    folder = tmp_path_factory.mktemp("models")
    write(folder / "cube.stl", cube(10.0))
    write(folder / "table.STL", table())
    write(folder / "two.stl", cube(4.0), box((10, 0, 0), (12, 3, 1)))
    points, triangles = cube(6.0)
    varnet.Part(points, triangles[:-1]).write(folder / "open.stl")
    (folder / "cut.stl").write_bytes((folder / "cube.stl").read_bytes()[:300])
    (folder / "empty.stl").write_bytes(b"")
    (folder / "flat.stl").write_bytes(flat())
    (folder / "notes.txt").write_text("no model")
    (folder / "folder.stl").mkdir()
    return folder


def flat() -> bytes:
    record = np.zeros(1, [("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("count", "<u2")])
    record["corners"] = [[[0, 0, 0], [1, 0, 0], [0, 1, 0]]]
    return b"\0" * 80 + np.uint32(1).tobytes() + record.tobytes()


@pytest.fixture(scope="module")
def client() -> Iterator[Any]:
    """Two workers, each a process."""
    with farm.start_workers(2, MEMORY) as cluster, distributed.Client(cluster) as client:
        yield client


def by_file(rows: list[dict[str, Any]]) -> dict[str, dict[str, Any]]:
    return {row["file"]: row for row in rows}


def test_a_row_says_what_is_known_of_a_file(models: Path) -> None:
    row = farm.measure(str(models / "table.STL"), farm.Job(layer=0.5))
    # Two legs of 4 by 10 by 10.5 and a plate of 20 by 10 by 2, each a body.
    assert row["volume"] == pytest.approx(2 * 420 + 400)
    assert (row["facets"], row["bodies"], row["open_edges"], row["healed"]) == (36, 3, 0, 0)
    assert (row["layers"], row["open_paths"]) == (24, 0)
    assert row["support_solids"] == 1
    # Where the legs reach into the plate there is one solid.
    assert row["layer_volume"] == pytest.approx(2 * 420 + 400 - 2 * 20)
    assert set(row) == set(farm.COLUMNS) - {"error"}
    bare = farm.measure(str(models / "table.STL"), farm.Job(supports=False))
    assert "support_solids" not in bare


def test_a_file_that_fails_is_a_row_with_its_error(models: Path, client: Any) -> None:
    rows, times = farm.run(client, farm.models_in(models), farm.Job(), MEMORY)
    assert [row["file"] for row in rows] == sorted(
        ["cube.stl", "cut.stl", "empty.stl", "flat.stl", "open.stl", "table.STL", "two.stl"]
    )
    found = by_file(rows)
    assert found["empty.stl"]["error"] == "empty.stl: is empty"
    assert "cut short" in found["cut.stl"]["error"]
    assert "no height" in found["flat.stl"]["error"]
    assert "error" not in found["open.stl"]
    assert found["open.stl"]["open_edges"] == 3
    assert found["two.stl"]["bodies"] == 2
    assert [row["file"] for row in times] == [row["file"] for row in rows]
    assert all(row["seconds"] >= 0 for row in times)


@pytest.mark.skipif(sys.platform != "linux", reason="elsewhere all names are text")
def test_a_name_that_is_no_text_is_measured_too(models: Path, tmp_path: Path, client: Any) -> None:
    name = os.fsdecode(b"cube\xff.stl")
    (tmp_path / name).write_bytes((models / "cube.stl").read_bytes())
    rows, _ = farm.run(client, farm.models_in(tmp_path), farm.Job(), MEMORY)
    assert by_file(rows)[name]["volume"] == 1000.0
    assert b"cube\xff.stl,684," in farm.to_csv(rows, farm.COLUMNS)


def test_a_file_that_needs_more_memory_than_a_worker_has_is_a_row(models: Path, client: Any) -> None:
    least = farm.bytes_needed(models / "cube.stl", farm.Job())
    told: list[tuple[str, int, int]] = []
    rows, _ = farm.run(
        client,
        [models / "cube.stl", models / "empty.stl"],
        farm.Job(),
        least - 1,
        lambda row, done, of: told.append((row["file"], done, of)),
    )
    found = by_file(rows)
    assert told == [("cube.stl", 1, 2), ("empty.stl", 2, 2)]
    assert found["cube.stl"]["error"] == f"needs {least:,} bytes of memory, and a worker has {least - 1:,}"
    assert found["empty.stl"]["error"] == "empty.stl: is empty"
    # Each file asks for twelve or sixteen times its bytes.
    assert least == farm.BASE_BYTES + 16 * 684
    assert farm.bytes_needed(models / "cube.stl", farm.Job(supports=False)) == farm.BASE_BYTES + 12 * 684


class Pipe:
    """A file that workers wait at until it is fed. Both ends are held, so that none of them waits to open it."""

    def __init__(self, path: Path) -> None:
        os.mkfifo(path)
        self.path = path
        self.end = os.open(path, os.O_RDWR)

    def readers(self) -> list[int]:
        """The other processes that have it open."""
        found = []
        for handles in Path("/proc").glob("[0-9]*/fd"):
            try:
                targets = [os.readlink(handle) for handle in handles.iterdir()]
            except OSError:
                continue
            if str(self.path) in targets and int(handles.parent.name) != os.getpid():
                found.append(int(handles.parent.name))
        return found

    def reader(self) -> int:
        """The process that reads, as soon as one does."""
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            if found := self.readers():
                return found[0]
        raise AssertionError("nobody reads the pipe")

    def kill_reader(self) -> None:
        pid = self.reader()
        os.kill(pid, signal.SIGKILL)
        while pid in self.readers():
            pass

    def feed(self, content: bytes) -> None:
        self.reader()
        os.write(self.end, content)

    def close(self) -> None:
        """Who reads finds the end of the file; who comes later, no file."""
        self.path.unlink()
        os.close(self.end)


needs_proc = pytest.mark.skipif(not Path("/proc/self/fd").exists(), reason="who reads a pipe is seen by /proc")


@needs_proc
def test_a_worker_that_is_killed_costs_a_try_and_not_the_run(models: Path, tmp_path: Path) -> None:
    for name in ("cube.stl", "two.stl", "open.stl"):
        (tmp_path / name).write_bytes((models / name).read_bytes())
    pipe = Pipe(tmp_path / "midway.stl")

    def kill_once_and_feed() -> None:
        try:
            pipe.kill_reader()
            pipe.feed((models / "cube.stl").read_bytes())
        finally:
            pipe.close()

    with farm.start_workers(2, MEMORY) as cluster, distributed.Client(cluster) as client:
        killer = threading.Thread(target=kill_once_and_feed)
        paths = farm.models_in(tmp_path)
        killer.start()
        rows, _ = farm.run(client, paths, farm.Job(), MEMORY)
        killer.join()
    found = by_file(rows)
    assert len(rows) == 4
    assert [row["error"] for row in rows if "error" in row] == []
    assert found["midway.stl"]["volume"] == found["cube.stl"]["volume"] == 1000.0


def run_while_readers_die(pipe: Pipe, folder: Path) -> tuple[list[farm.Row], list[farm.Row]]:
    """What farm.run gives while a worker dies at the pipe each time it is tried."""

    def kill_all() -> None:
        try:
            for _ in range(farm.MOST_DEATHS):
                pipe.kill_reader()
        finally:
            pipe.close()

    with farm.start_workers(1, MEMORY) as cluster, distributed.Client(cluster) as client:
        killer = threading.Thread(target=kill_all)
        paths = farm.models_in(folder)
        killer.start()
        result = farm.run(client, paths, farm.Job(), MEMORY)
        killer.join()
    return result


@needs_proc
def test_a_file_at_which_workers_die_is_a_row_after_three(models: Path, tmp_path: Path) -> None:
    (tmp_path / "cube.stl").write_bytes((models / "cube.stl").read_bytes())
    rows, _ = run_while_readers_die(Pipe(tmp_path / "deadly.stl"), tmp_path)
    found = by_file(rows)
    assert found["deadly.stl"]["error"] == "3 workers died while they had it"
    assert found["cube.stl"]["volume"] == 1000.0


@needs_proc
def test_of_a_batch_at_which_workers_die_each_file_is_tried_by_itself(models: Path, tmp_path: Path) -> None:
    names = [f"{number}.stl" for number in range(farm.FILES_BEFORE_THE_END + farm.FILES_A_BATCH - 1)]
    for name in names:
        (tmp_path / name).write_bytes((models / "cube.stl").read_bytes())
    # By name the second one of the first batch.
    rows, times = run_while_readers_die(Pipe(tmp_path / "0a.stl"), tmp_path)
    found = by_file(rows)
    assert found.pop("0a.stl")["error"] == "3 workers died while they had it"
    assert sorted(found) == sorted(names)
    assert {row["volume"] for row in found.values()} == {1000.0}
    assert sorted(row["file"] for row in times) == sorted(names)


def test_batches_hold_all_files_in_order_small_ones_by_the_handful() -> None:
    def sizes(needs: list[int], workers: int) -> list[int]:
        files = [(Path(str(number)), needed) for number, needed in enumerate(needs)]
        batches = list(farm.batches_of(files, workers))
        assert [file for batch in batches for file in batch] == files
        return [len(batch) for batch in batches]

    last = farm.FILES_BEFORE_THE_END
    half = farm.BYTES_A_BATCH // 2
    assert sizes([], 1) == []
    assert sizes([1] * last, 1) == [1] * last
    assert sizes([1] * (last + 9), 1) == [4, 4] + [1] * (last + 1)
    assert sizes([1] * (2 * last + 8), 2) == [4, 4] + [1] * (2 * last)
    assert sizes([half, half, half, 1, 2 * half, 2 * half + 1] + [1] * last, 1) == [2, 2, 1, 1] + [1] * last


def run_farm(*arguments: Any) -> subprocess.CompletedProcess[str]:
    return subprocess.run(
        [sys.executable, str(EXAMPLES / "farm" / "farm.py"), *map(str, arguments)],
        capture_output=True,
        text=True,
        timeout=240,
    )


def test_the_table_is_the_same_bytes_for_any_number_of_workers(models: Path, tmp_path: Path) -> None:
    tables = []
    for workers in (1, 2, 4):
        file = tmp_path / f"{workers}.csv"
        done = run_farm("--workers", workers, "--memory", 1, "--times", tmp_path / "times.csv", models, file)
        assert done.returncode == 0, done.stderr
        assert "7 of 7" in done.stderr
        tables.append(file.read_bytes())
    assert tables[0] == tables[1] == tables[2]
    rows = list(csv.DictReader(io.StringIO(tables[0].decode())))
    assert tuple(rows[0]) == farm.COLUMNS
    assert len(rows) == 7
    assert float(by_file(rows)["cube.stl"]["volume"]) == 1000.0
    times = list(csv.DictReader((tmp_path / "times.csv").open()))
    assert tuple(times[0]) == farm.TIME_COLUMNS
    assert not list(tmp_path.glob("*.part"))


def test_a_place_that_cannot_be_written_is_said_before_the_work(models: Path, tmp_path: Path) -> None:
    for wrong in (["nowhere/table.csv"], ["."], ["table.csv", "--times", tmp_path / "nowhere/times.csv"]):
        done = run_farm(models, tmp_path / wrong[0], *wrong[1:])
        assert done.returncode == 2, done.stderr
        assert "is no folder" in done.stderr or "is a folder" in done.stderr
        assert " of 7" not in done.stderr
    assert not list(tmp_path.iterdir())


def test_what_cannot_be_written_is_said_before_the_work(models: Path, tmp_path: Path) -> None:
    for module in ("pyarrow", "fastparquet"):
        if __import__("importlib.util", fromlist=["util"]).find_spec(module):
            pytest.skip(f"{module} is installed")
    done = run_farm(models, tmp_path / "table.parquet")
    assert done.returncode == 2
    assert "a table in Parquet needs" in done.stderr
    assert not (tmp_path / "table.parquet").exists()
    done = run_farm(tmp_path / "nowhere", tmp_path / "table.csv")
    assert done.returncode == 2
    assert "nowhere" in done.stderr


# ---- one model in slabs


@pytest.mark.parametrize("order", [False, True])
@pytest.mark.parametrize("mode", ["text", "binary", "disguised"])
def test_slabs_joined_are_the_bytes_of_one_run(
    models: Path, tmp_path: Path, client: Any, mode: Any, order: bool
) -> None:
    model = models / "table.STL"
    settings: dict[str, Any] = {"layer": 0.5, "hatch": 1.0}
    seed = 5 if mode == "disguised" else None
    whole = tmp_path / "whole.cli"
    varnet.write_slices(whole, varnet.slice(varnet.read(model), **settings), mode=mode, seed=seed)
    if order:
        stored = varnet.SliceFile(whole)
        varnet.write_slices(tmp_path / "ordered.cli", varnet.order(stored), mode=mode, seed=seed)
        whole = tmp_path / "ordered.cli"
    for number in (1, 2, 3, 7, 1000):
        joined = tmp_path / "joined.cli"
        layers = slabs.build(client, model, joined, number, settings, mode=mode, seed=seed, order=order)
        assert layers == 24
        assert joined.read_bytes() == whole.read_bytes(), number
    assert not list(tmp_path.glob(".*"))


def test_slabs_hold_all_layers_once() -> None:
    assert slabs.slabs_of(10, 3) == [(1, 3), (4, 6), (7, 10)]
    assert slabs.slabs_of(2, 5) == [(1, 1), (2, 2)]
    assert slabs.slabs_of(1, 1) == [(1, 1)]


def test_a_build_that_fails_leaves_nothing(models: Path, tmp_path: Path, client: Any) -> None:
    with pytest.raises(varnet.Error, match="cut short"):
        slabs.build(client, models / "cut.stl", tmp_path / "no.cli", 2, {})
    assert not list(tmp_path.iterdir())
