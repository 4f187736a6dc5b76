"""Long calls: other threads run meanwhile, a person is told, and can stop them."""

import os
import signal
import sys
import threading
import types
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import shapes
import varnet

LARGE = shapes.sphere(10.0, 300)


@pytest.fixture(scope="module")
def part() -> varnet.Part:
    return varnet.Part(*LARGE)


@pytest.fixture(scope="module")
def stl(tmp_path_factory: pytest.TempPathFactory) -> Path:
    return shapes.save(tmp_path_factory.mktemp("long") / "large.stl", LARGE)


def slice_all(part: varnet.Part, **settings: Any) -> int:
    return sum(1 for _ in varnet.slice(part, layer=0.02, **settings))


# Each takes longer than the time after which signals are looked after.
LONG: dict[str, Callable[[varnet.Part, Path], object]] = {
    "read": lambda part, stl: [varnet.read(stl) for _ in range(50)],
    "arrays": lambda part, stl: [varnet.Part(*LARGE) for _ in range(50)],
    "repair": lambda part, stl: [part.repair() for _ in range(200)],
    "supports": lambda part, stl: [part.supports() for _ in range(50)],
    "surfaces": lambda part, stl: [part.surfaces() for _ in range(50)],
    "svg": lambda part, stl: [part.svg() for _ in range(50)],
    "slice": lambda part, stl: [slice_all(part) for _ in range(50)],
    "slice by two": lambda part, stl: [slice_all(part, threads=2) for _ in range(50)],
    "write": lambda part, stl: [part.write(stl.with_name("again.stl")) for _ in range(50)],
}


@pytest.fixture
def ctrl_c_raises() -> Iterator[None]:
    # A shell that starts the tests in the background has the signal ignored.
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    yield
    signal.signal(signal.SIGINT, before)


@pytest.mark.usefixtures("ctrl_c_raises")
@pytest.mark.parametrize("work", LONG)
def test_ctrl_c_ends_it(part: varnet.Part, stl: Path, work: str) -> None:
    # The other thread gets to run because the lock was let go.
    with pytest.raises(KeyboardInterrupt):
        timer = threading.Timer(0.02, os.kill, (os.getpid(), signal.SIGINT))
        timer.start()
        LONG[work](part, stl)
    timer.join()


@pytest.mark.parametrize("stop", ["raise", "false"])
def test_a_callback_is_told_and_stops_the_work(part: varnet.Part, stl: Path, tmp_path: Path, stop: str) -> None:
    shares: list[float] = []

    def tell(share: float) -> object:
        shares.append(share)
        if stop == "raise":
            raise RuntimeError("enough")
        return False

    calls: list[Callable[[], object]] = [
        lambda: varnet.read(stl, progress=tell),
        lambda: varnet.Part(*LARGE, progress=tell),
        lambda: part.repair(progress=tell),
        lambda: part.write(tmp_path / "a.stl", progress=tell),
        lambda: list(varnet.slice(part, progress=tell)),
        lambda: list(varnet.slice(part, progress=tell, threads=2)),
        lambda: part.supports(progress=tell),
    ]
    for call in calls:
        shares.clear()
        with pytest.raises(RuntimeError if stop == "raise" else varnet.Cancelled):
            call()
        assert len(shares) == 1 and 0.0 <= shares[0] <= 1.0
    # A file that was complete is being read back.
    for path in tmp_path.iterdir():
        assert path.name == "a.stl" and len(varnet.read(path).triangles) == len(part.triangles)


def test_shares_never_decrease(part: varnet.Part, stl: Path) -> None:
    calls: tuple[Callable[[Callable[[float], None]], object], ...] = (
        lambda tell: varnet.read(stl, progress=tell),
        lambda tell: slice_all(part, progress=tell),
        lambda tell: part.supports(progress=tell),
    )
    for call in calls:
        shares: list[float] = []
        call(shares.append)
        assert shares == sorted(shares) and all(0.0 <= share <= 1.0 for share in shares)


def test_an_iterator_that_was_stopped_has_ended(part: varnet.Part) -> None:
    slices = varnet.slice(part, layer=0.02, progress=lambda share: share < 0.5)
    with pytest.raises(varnet.Cancelled):
        list(slices)
    assert list(slices) == [] and len(slices) == 0


def test_a_bar_is_shown_where_there_is_one(stl: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    bars: list[Any] = []

    class Bar:
        def __init__(self, **settings: object) -> None:
            self.n, self.closed, self.settings = 0.0, False, settings
            bars.append(self)

        def refresh(self) -> None:
            pass

        def close(self) -> None:
            self.closed = True

    stand_in = types.ModuleType("tqdm")
    setattr(stand_in, "tqdm", Bar)
    monkeypatch.setitem(sys.modules, "tqdm", stand_in)
    varnet.read(stl, progress=True)
    list(varnet.slice(varnet.Part(*shapes.cube()), progress=True))
    assert [bar.closed for bar in bars] == [True, True] and bars[0].n == 1.0
    modules: Any = sys.modules
    monkeypatch.setitem(modules, "tqdm", None)
    assert varnet.read(stl, progress=True).open_edges == 0
    for wrong in (7, "yes"):
        with pytest.raises(TypeError):
            varnet.read(stl, progress=wrong)  # type: ignore[arg-type]


def test_tqdm_itself_takes_the_shares(stl: Path, capsys: pytest.CaptureFixture[str]) -> None:
    pytest.importorskip("tqdm")
    varnet.read(stl, progress=True)
    assert "Reading" in capsys.readouterr().err


def in_threads(count: int, work: Callable[[int], None]) -> list[BaseException]:
    raised: list[BaseException] = []

    def run(i: int) -> None:
        try:
            work(i)
        except BaseException as error:
            raised.append(error)

    threads = [threading.Thread(target=run, args=(i,)) for i in range(count)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return raised


def test_one_part_in_many_threads_is_never_more_than_a_surprise() -> None:
    shared = varnet.Part(*shapes.sphere(10.0, 40))
    shift = np.eye(4)
    shift[0, 3] = 1.0

    def work(i: int) -> None:
        for _ in range(20):
            if i % 2 == 0:
                shared.transform(shift)
                shared.repair()
            else:
                assert len(shared.bodies) == 1 and len(shared.points) > 0
                assert sum(1 for _ in varnet.slice(shared, layer=1.0)) == 20

    assert in_threads(4, work) == []


def test_one_iterator_in_many_threads_gives_each_layer_once() -> None:
    slices = varnet.slice(varnet.Part(*shapes.sphere(10.0, 100)), layer=0.05)
    numbers: list[int] = []

    def work(_: int) -> None:
        while True:
            try:
                numbers.append(next(slices).number)
            except StopIteration:
                return
            except RuntimeError as error:
                assert "another thread" in str(error)

    assert in_threads(3, work) == []
    assert sorted(numbers) == list(range(1, 401))


def test_a_thread_that_is_not_the_main_one_works_and_tells(stl: Path) -> None:
    shares: list[float] = []

    def work(_: int) -> None:
        varnet.read(stl, progress=shares.append)

    assert in_threads(2, work) == []
    assert shares.count(1.0) >= 2
