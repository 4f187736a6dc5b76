#!/usr/bin/env python3
"""Measures every model of a folder by many workers: a row a file, to a table in CSV or Parquet.

Needs the module varnet and Debian's python3-distributed; a table in Parquet pandas with pyarrow or fastparquet too.

The table depends on the files and the settings alone: it is the same bytes for any number of workers. How long each
file took, and who had it, goes to another file, where --times names one. A file that fails is a row with its error.
Each worker has so much memory to give away, and each file asks for what it needs; one that needs more than any worker
has is a row with that error. A worker that dies costs its files another try; a file at which workers die again and
again is a row with that error.
"""

from __future__ import annotations

import argparse
import csv
import io
import os
import sys
import tempfile
import time
from collections.abc import Callable, Iterable
from dataclasses import dataclass
from itertools import islice
from pathlib import Path
from typing import Any

import dask
from distributed import Client, LocalCluster, as_completed, get_worker
from distributed.scheduler import KilledWorker

import varnet

SUFFIXES = {".stl", ".csm", ".3dmf", ".oltp"}

COLUMNS = (
    "file",
    "bytes",
    "facets",
    "open_edges_in_file",
    "open_edges",
    "healed",
    "bodies",
    "volume",
    "overhangs",
    "support_solids",
    "layers",
    "open_paths",
    "layer_volume",
    "error",
)
TIME_COLUMNS = ("file", "seconds", "worker")

# Bytes that a file asks for: its interpreter, and what each byte of the file becomes. A facet has 50 bytes in a binary
# file. A part takes one and a half times those where facets meet, and twelve times where none do; its supports are found
# in a classic model that stands beside it, nine times in all. What takes more than that, as a field of noise that is
# nothing but overhangs (53 times), has the rest of what its worker has, which runs nothing else meanwhile.
BASE_BYTES = 100_000_000
BYTES_A_BYTE = {False: 12, True: 16}

# A file at which so many workers died is not tried again.
MOST_DEATHS = 3

# So many tasks are under way for each worker: one that it works on, and one that waits there.
BATCHES_A_WORKER = 2

# So many files at most are one task, together asking for so much memory, and the last ones of each worker are one each.
FILES_A_BATCH = 4
BYTES_A_BATCH = 800_000_000
FILES_BEFORE_THE_END = 8

Row = dict[str, Any]


@dataclass(frozen=True)
class Job:
    """What is done with each file. Millimetres."""

    layer: float = 0.2
    hatch: float = 0.5
    supports: bool = True


def bytes_needed(path: Path, job: Job) -> int:
    """The memory that a file asks for."""
    try:
        return BASE_BYTES + BYTES_A_BYTE[job.supports] * path.stat().st_size
    except OSError:
        return BASE_BYTES


def measure(path: str, job: Job) -> Row:
    """The row of one file."""
    row: Row = {"file": Path(path).name, "bytes": os.stat(path).st_size}
    part = varnet.read(path)
    report = part.report
    row["open_edges_in_file"] = report.open_edges_exact
    repair = part.repair()
    row["facets"] = len(part.triangles)
    row["open_edges"] = part.open_edges
    row["healed"] = report.welded + report.split + report.doubled + report.collinear_turned + repair.turned
    row["bodies"] = len(part.bodies)
    row["volume"] = part.volume
    supports = part.supports() if job.supports else None
    if supports is not None:
        row["overhangs"] = len(supports.overhangs)
        row["support_solids"] = len(supports.solids)
    slices = varnet.slice(part, layer=job.layer, hatch=job.hatch, supports=() if supports is None else supports)
    for _ in slices:
        pass
    row["layers"] = slices.report.layers
    row["open_paths"] = slices.report.open_paths
    row["layer_volume"] = slices.report.volume
    return row


def measure_or_say_why(path: str, job: Job) -> tuple[Row, float, str]:
    """The row, or what of it is known and the error; the seconds that it took; and the worker that had it."""
    start = time.perf_counter()
    try:
        row = measure(path, job)
    except (varnet.Error, OSError, MemoryError) as error:
        row = failed(path, str(error) or "there is not enough memory")
    return row, time.perf_counter() - start, get_worker().address


def measure_all(paths: list[str], job: Job) -> list[tuple[Row, float, str]]:
    """A batch of files, one after the other."""
    return [measure_or_say_why(path, job) for path in paths]


def failed(path: str, error: str) -> Row:
    """A row that says no more than why. Messages name the file by the path that it was opened by."""
    return {"file": Path(path).name, "error": error.replace(path, Path(path).name)}


def models_in(folder: Path) -> list[Path]:
    """The files that are tried, by name."""
    return sorted(p for p in folder.iterdir() if p.suffix.lower() in SUFFIXES and not p.is_dir())


def batches_of(files: list[tuple[Path, int]], workers: int) -> Iterable[list[tuple[Path, int]]]:
    """Small files by the handful, since a task costs the scheduler some milliseconds; each by itself at the end, so that
    no worker is left alone with many."""
    singly = len(files) - FILES_BEFORE_THE_END * max(workers, 1)
    batch: list[tuple[Path, int]] = []
    asked = 0
    for number, (path, needed) in enumerate(files):
        full = len(batch) == FILES_A_BATCH or number >= singly or asked + needed > BYTES_A_BATCH
        if batch and full:
            yield batch
            batch, asked = [], 0
        batch.append((path, needed))
        asked += needed
    if batch:
        yield batch


def run(
    client: Client,
    paths: Iterable[Path],
    job: Job,
    memory: int,
    told: Callable[[Row, int, int], None] = lambda row, done, of: None,
) -> tuple[list[Row], list[Row]]:
    """The rows of all files, and those of their times, by name; told() hears of each file as it is done.

    memory: bytes that a worker has to give away, as its resource "memory" says.
    """
    rows: list[Row] = []
    times: list[Row] = []
    files: list[tuple[Path, int]] = []
    for path in paths:
        needed = bytes_needed(path, job)
        if needed > memory:
            rows.append(failed(str(path), f"needs {needed:,} bytes of memory, and a worker has {memory:,}"))
        else:
            files.append((path, needed))
    total = len(rows) + len(files)
    for done, row in enumerate(rows, 1):
        told(row, done, total)

    def add(row: Row) -> None:
        rows.append(row)
        told(row, len(rows), total)

    def submit(batch: list[tuple[Path, int]], attempt: int) -> Any:
        names = [str(path) for path, _ in batch]
        # Keys are sent as UTF-8, which a name need not be.
        key = f"measure-{ascii(names[0])}-{attempt}"
        needed = max(needed for _, needed in batch)
        return client.submit(measure_all, names, job, key=key, resources={"memory": needed}, pure=False)

    def take(future: Any, batch: list[tuple[Path, int]]) -> bool:
        """Adds the rows of a task that has ended. False where its worker died; it has none then."""
        error = future.exception()
        if isinstance(error, KilledWorker):
            return False
        if error is None:
            for row, seconds, worker in future.result():
                times.append({"file": row["file"], "seconds": round(seconds, 3), "worker": worker})
                add(row)
        else:
            for path, _ in batch:
                add(failed(str(path), f"{type(error).__name__}: {error}"))
        return True

    workers = lambda: max(len(client.scheduler_info()["workers"]), 1)  # noqa: E731
    waiting = iter(batches_of(files, workers()))
    under_way: dict[Any, list[tuple[Path, int]]] = {}
    ended = as_completed()
    suspects: list[tuple[Path, int]] = []

    def start() -> None:
        for batch in islice(waiting, max(BATCHES_A_WORKER * workers() - len(under_way), 0)):
            future = submit(batch, 1)
            under_way[future] = batch
            ended.add(future)

    start()
    for future in ended:
        batch = under_way.pop(future)
        start()
        if not take(future, batch):
            suspects += batch
        future.release()
    # Whoever waits at a worker that dies is held to be the cause: now nobody does.
    for suspect in suspects:
        for attempt in range(2, MOST_DEATHS + 1):
            future = submit([suspect], attempt)
            if take(future, [suspect]):
                break
        else:
            add(failed(str(suspect[0]), f"{MOST_DEATHS} workers died while they had it"))
    by_name = lambda row: row["file"]  # noqa: E731
    return sorted(rows, key=by_name), sorted(times, key=by_name)


def to_csv(rows: list[Row], columns: tuple[str, ...]) -> bytes:
    """Numbers as short as they can be read back; an empty field for what is not known."""
    text = io.StringIO()
    writer = csv.DictWriter(text, columns, restval="", lineterminator="\n")
    writer.writeheader()
    writer.writerows(rows)
    return text.getvalue().encode("utf-8", "surrogateescape")


def to_parquet(rows: list[Row], columns: tuple[str, ...]) -> bytes:
    """Needs pandas, and pyarrow or fastparquet."""
    import pandas

    frame = pandas.DataFrame(rows, columns=list(columns)).convert_dtypes()
    return bytes(frame.to_parquet(index=False))


def require_parquet() -> None:
    """Raises ImportError that says what is missing, before hours of work are done for nothing."""
    try:
        import pandas  # noqa: F401
    except ImportError as error:
        raise ImportError("a table in Parquet needs pandas: write .csv, or install it") from error
    for engine in ("pyarrow", "fastparquet"):
        try:
            __import__(engine)
            return
        except ImportError:
            pass
    raise ImportError("a table in Parquet needs pyarrow or fastparquet: write .csv, or install one")


def require_place(path: Path) -> None:
    """Raises OSError where nothing can be written under this name, before hours of work are done for nothing."""
    if path.is_dir():
        raise IsADirectoryError(f"{path}: is a folder")
    if not os.access(path.parent, os.W_OK | os.X_OK):
        raise FileNotFoundError(f"{path.parent}: is no folder that can be written to")


def write_whole(path: Path, content: bytes) -> None:
    """Under its name only when it is complete."""
    handle, partial = tempfile.mkstemp(dir=path.parent or Path("."), prefix=path.name + ".", suffix=".part")
    try:
        with os.fdopen(handle, "wb") as file:
            file.write(content)
        mask = os.umask(0)
        os.umask(mask)
        os.chmod(partial, 0o666 & ~mask)
        os.replace(partial, path)
    except BaseException:
        os.unlink(partial)
        raise


def start_workers(workers: int, memory: int) -> LocalCluster:
    """Processes of this machine, each with so many bytes to give away; one that takes more is started anew."""
    # What a worker had when it died is told at once: run() tries it again.
    dask.config.set({"distributed.scheduler.allowed-failures": 0})
    return LocalCluster(
        n_workers=workers,
        threads_per_worker=1,
        processes=True,
        memory_limit=memory,
        resources={"memory": memory},
        dashboard_address=":0",
        silence_logs=50,
    )


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path, help="with models: " + " ".join(sorted(SUFFIXES)))
    parser.add_argument("table", type=Path, help="to write: .csv or .parquet")
    parser.add_argument("--times", type=Path, help="CSV to write too: seconds and worker of each file")
    parser.add_argument("--workers", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--memory", type=float, default=4.0, help="of each worker, GB (default: 4)")
    parser.add_argument("--scheduler", help="address of a cluster that runs, instead of workers of this machine")
    parser.add_argument("--layer", type=float, default=0.2, help="mm (default: 0.2)")
    parser.add_argument("--hatch", type=float, default=0.5, help="mm (default: 0.5)")
    parser.add_argument("--no-supports", action="store_true")
    options = parser.parse_args()
    try:
        paths = models_in(options.folder)
        for file in filter(None, (options.table, options.times)):
            require_place(file)
        if options.table.suffix == ".parquet":
            require_parquet()
    except (OSError, ImportError) as error:
        print(f"farm: {error}", file=sys.stderr)
        return 2
    memory = int(options.memory * 1e9)
    job = Job(options.layer, options.hatch, not options.no_supports)

    def told(row: Row, done: int, of: int) -> None:
        print(f"{done} of {of}: {row['file']}: {row.get('error') or 'ok'}", file=sys.stderr)

    cluster = options.scheduler or start_workers(options.workers, memory)
    try:
        with Client(cluster) as client:
            rows, times = run(client, paths, job, memory, told)
    finally:
        if isinstance(cluster, LocalCluster):
            cluster.close()
    to_bytes = to_parquet if options.table.suffix == ".parquet" else to_csv
    write_whole(options.table, to_bytes(rows, COLUMNS))
    if options.times:
        write_whole(options.times, to_csv(times, TIME_COLUMNS))
    return 0


if __name__ == "__main__":
    sys.exit(main())
