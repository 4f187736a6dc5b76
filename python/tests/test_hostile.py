"""Files that are broken in every way are errors, and never the end of the interpreter."""

import os
from collections.abc import Callable
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import shapes
import varnet

CORPUS = Path(__file__).parents[2] / "fuzz" / "corpus"
MODELS = os.environ.get("VARNET_MODELS", "")


def use_as_model(path: Path) -> bool:
    """Takes the file down the whole road, as far as it goes."""
    try:
        part = varnet.read(path)
    except varnet.Error:
        return False
    points, triangles = part.points, part.triangles
    assert len(triangles) > 0 and triangles.min() >= 0 and triangles.max() < len(points)
    assert np.isfinite(points).all()
    before = part.open_edges
    assert part.repair(fill_holes=10.0).open_edges_after == part.open_edges <= max(before, part.report.open_edges)
    for body in part.bodies:
        assert len(body.triangles) > 0 and body.triangles.max() < len(body.points)
    height = float(part.box[1, 2] - part.box[0, 2])
    try:
        for layer in varnet.slice(part, layer=max(height / 5.0, 1e-6), hatch=max(height, 1.0)):
            assert sum(len(contour) for contour in layer.contours) == len(layer.points)
    except varnet.Error:
        pass
    return True


def use_as_slices(path: Path) -> bool:
    try:
        file = varnet.SliceFile(path, partial=True)
        for layer in file:
            assert layer.offsets[-1] == len(layer.points) and layer.chain_offsets[-1] == len(layer.strokes)
            repr(layer), layer.area, layer.closed.sum(), layer.parent.sum()
        list(varnet.order(list(file)[:3]))
    except varnet.Error:
        return False
    return True


def files_below(folder: Path) -> list[Path]:
    return sorted(path for path in folder.rglob("*") if path.is_file())


@pytest.mark.parametrize("folder", sorted(path.name for path in CORPUS.iterdir()) if CORPUS.is_dir() else [])
def test_the_corpus_of_the_fuzzers(folder: str) -> None:
    # Twice thirty files of each kind, from the smallest to the largest: all have been through the kit itself.
    files = sorted(files_below(CORPUS / folder), key=lambda path: path.stat().st_size)
    for path in files[:: max(1, len(files) // 60)]:
        use_as_model(path)
        use_as_slices(path)


def test_a_file_of_facets_without_area_is_an_error(tmp_path: Path) -> None:
    path = tmp_path / "needles.stl"
    points = np.array([[0.0, 0, 0], [1, 0, 0], [2, 0, 0]])
    for triangles in ([[0, 1, 2]], [[0, 1, 1], [0, 0, 0]], [[0, 1, 2], [2, 1, 0], [0, 0, 1]]):
        path.write_bytes(shapes.binary_stl((points, np.array(triangles))))
        with pytest.raises(varnet.Error, match="none of its facets can be used"):
            varnet.read(path)


@pytest.mark.skipif(not MODELS, reason="VARNET_MODELS names no folder of models")
def test_real_models() -> None:
    files = files_below(Path(MODELS))
    assert any([use_as_model(path) for path in files if path.suffix.lower() == ".stl"])
    assert any([use_as_slices(path) for path in files if path.suffix.lower() == ".cli"])


@pytest.mark.parametrize("kind", ["binary", "ascii"])
def test_models_cut_anywhere_and_with_wrong_bytes(tmp_path: Path, kind: str) -> None:
    mesh = shapes.cube()
    whole = shapes.binary_stl(mesh) if kind == "binary" else shapes.ascii_stl(mesh).encode()
    path = tmp_path / "a.stl"
    for length in range(0, len(whole), 7):
        path.write_bytes(whole[:length])
        use_as_model(path)
    random = np.random.default_rng(1)
    for _ in range(150):
        changed = np.frombuffer(whole, np.uint8).copy()
        places = random.integers(0, len(whole), 6)
        changed[places] = random.integers(0, 256, 6)
        path.write_bytes(changed.tobytes())
        use_as_model(path)


@pytest.mark.parametrize("mode", ["text", "binary"])
def test_slice_files_cut_anywhere_and_with_wrong_bytes(tmp_path: Path, mode: Any) -> None:
    path = tmp_path / "a.cli"
    varnet.write_slices(path, varnet.slice(varnet.Part(*shapes.cube()), layer=5.0, hatch=3.0), mode=mode)
    whole = path.read_bytes()
    for length in range(0, len(whole), 5):
        path.write_bytes(whole[:length])
        use_as_slices(path)
    random = np.random.default_rng(1)
    for _ in range(150):
        changed = np.frombuffer(whole, np.uint8).copy()
        changed[random.integers(0, len(whole), 4)] = random.integers(0, 256, 4)
        path.write_bytes(changed.tobytes())
        use_as_slices(path)


def test_counts_that_no_file_holds(tmp_path: Path) -> None:
    path = tmp_path / "a.stl"
    path.write_bytes(b"\0" * 80 + b"\xff\xff\xff\xff" + b"\0" * 100)
    assert not use_as_model(path)


@pytest.mark.parametrize("large", [1e9, 1e12, 1e300, 5e-324])
def test_coordinates_at_the_ends_of_numbers(large: float) -> None:
    points, triangles = shapes.cube()
    part = varnet.Part(points * (large / 10.0), triangles)
    repr(part), part.bodies, part._repr_html_(), part.box
    calls: list[Callable[[], object]] = [part.supports, part.surfaces, part.split, part.repair]
    calls.append(lambda: list(varnet.slice(part)))
    for call in calls:
        try:
            call()
        except varnet.Error:
            pass


def test_facets_at_random() -> None:
    random = np.random.default_rng(2)
    for count in (1, 2, 5, 30, 200):
        part = varnet.Part(random.random((count + 2, 3)) * 10.0, random.integers(0, count + 2, (count, 3)))
        part.repair(fill_holes=5.0, outward=True)
        part.supports(), part.surfaces(), part.split(), part.svg()
        list(varnet.slice(part, layer=1.0)) if len(part.triangles) else None


def test_objects_that_were_never_made() -> None:
    """What __new__ alone gives is refused by every operation."""
    kinds: tuple[Any, ...] = (varnet.Part, varnet.Layer, varnet.SliceFile, varnet.SliceWriter, varnet.Slices, varnet.Body)
    for kind in kinds:
        try:
            empty = kind.__new__(kind)
        except TypeError:
            continue
        for name in dir(kind):
            if name.startswith("__"):
                continue
            with pytest.raises((TypeError, RuntimeError, ImportError)):
                member = getattr(empty, name)
                member()
    with pytest.raises((TypeError, RuntimeError)):
        varnet.slice(varnet.Part.__new__(varnet.Part))
