"""Layers: sliced, put in order, written, read."""

import copy
import gc
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import shapes
import varnet


def hollow_cube() -> varnet.Part:
    """A side of 30, a hollow of 10 in the middle."""
    inner = shapes.box((10, 10, 10), (20, 20, 20))
    return varnet.Part(*shapes.together(shapes.cube(30.0), (inner[0], inner[1][:, ::-1])))


def test_a_hollow_cube_gives_squares_and_holes() -> None:
    slices = varnet.slice(hollow_cube(), layer=1.0, hatch=0.0)
    assert iter(slices) is slices and len(slices) == slices.layer_count == 30
    layers = list(slices)
    assert len(slices) == 0 and next(slices, None) is None
    assert [layer.number for layer in layers] == list(range(1, 31))
    assert [layer.z for layer in layers] == pytest.approx(np.arange(1.0, 31.0))
    assert [layer.area for layer in layers] == pytest.approx([900.0] * 10 + [800.0] * 10 + [900.0] * 10)
    middle = layers[15]
    assert middle.cut_height == 15.5
    assert [shapes.signed_area(contour) for contour in middle.contours] == pytest.approx([900.0, -100.0])
    assert middle.closed.tolist() == [True, True] and middle.closed.dtype == np.bool_
    assert middle.parent.tolist() == [-1, 0] and middle.level.tolist() == [0, 1] and middle.id.dtype == np.int32
    assert middle.box.tolist() == [[0, 0], [30, 30]] and middle.contour_length == pytest.approx(160.0)
    assert slices.report.layers == 30 and slices.report.volume == pytest.approx(26000.0)


def test_contours_are_views_of_one_array_that_outlive_the_layer() -> None:
    layer = next(varnet.slice(hollow_cube(), layer=1.0, layers=(15, 15)))
    contours, points = layer.contours, layer.points
    assert all(np.shares_memory(contour, points) for contour in contours)
    assert np.array_equal(np.concatenate(contours), points) and layer.offsets.tolist() == [0, 4, 8]
    with pytest.raises(ValueError):
        contours[0][0, 0] = 1.0
    with pytest.raises(ValueError):
        contours[0].flags.writeable = True
    before, levels = points.copy(), layer.level
    del layer, points
    gc.collect()
    assert np.array_equal(np.concatenate(contours), before) and levels.tolist() == [0, 1]


def test_strokes_lie_in_the_solid_half_a_millimetre_apart() -> None:
    layer = next(varnet.slice(varnet.Part(*shapes.cube()), layer=1.0, hatch=0.5, angle=0.0))
    strokes = layer.strokes
    assert strokes.dtype == np.float64 and strokes.shape[1:] == (2, 2) and len(strokes) in (19, 20, 21)
    assert strokes.min() >= 0.0 and strokes.max() <= 10.0
    lengths = np.linalg.norm(strokes[:, 1] - strokes[:, 0], axis=1)
    assert layer.stroke_length == pytest.approx(lengths.sum())
    assert np.diff(np.sort(strokes[:, 0, 1])) == pytest.approx([0.5] * (len(strokes) - 1))
    assert layer.chain_ids.tolist() == [3] * len(layer.chains)
    assert np.array_equal(np.concatenate(layer.chains), strokes)
    assert layer.chain_offsets[-1] == len(strokes)


def test_a_range_has_the_layers_of_the_whole_for_any_number_of_threads() -> None:
    part = varnet.Part(*shapes.sphere(10.0, 30))
    whole = list(varnet.slice(part))
    again = varnet.slice([part], layers=(40, 60), threads=3)
    assert again.layer_count == 100 and len(again) == 21
    assert list(again) == whole[39:60]
    assert again.at(1) == whole[0] and again.at(100) == whole[-1]
    assert not (whole[0] == whole[1]) and whole[0] != 7
    for number in (0, 101, -1):
        with pytest.raises(varnet.ArgumentError):
            again.at(number)


def test_what_is_sliced_is_what_the_part_was() -> None:
    part = varnet.Part(*shapes.cube())
    slices = varnet.slice(part, layer=1.0)
    part.transform(np.diag([5.0, 5.0, 5.0, 1.0]))
    del part
    gc.collect()
    assert [layer.area for layer in slices] == pytest.approx([100.0] * 10)


def test_supports_get_fill_in_even_layers() -> None:
    part = varnet.Part(*shapes.table())
    layers = list(varnet.slice(part, supports=part.supports(), layer=0.5))
    held = [bool((layer.chain_ids >= 1000).any()) for layer in layers]
    assert any(held) and not any(held[0::2])
    assert sum(len(layer.chains) for layer in varnet.slice(part, supports=[], layer=0.5)) > 0


@pytest.mark.parametrize(
    "settings",
    [
        {"layer": 0.0},
        {"layer": float("nan")},
        {"hatch": -1.0},
        {"angle": float("inf")},
        {"threads": 0},
        {"layers": (0, 5)},
        {"layers": (5, 4)},
        {"layers": (90, 99)},
        {"rule": "even"},
        {"close": -1.0},
        {"layer": 1e-7},
    ],
)
def test_settings_that_make_no_sense_are_value_errors(settings: dict[str, Any]) -> None:
    with pytest.raises(ValueError):
        list(varnet.slice(varnet.Part(*shapes.cube()), **settings))


def test_only_parts_are_sliced() -> None:
    for wrong in (7, [7], "part", None, [None]):
        with pytest.raises((TypeError, RuntimeError)):
            varnet.slice(wrong)  # type: ignore[arg-type]
    with pytest.raises(ValueError):
        varnet.slice([])
    with pytest.raises(ValueError):
        varnet.slice(varnet.Part([], []))


@pytest.mark.parametrize(("mode", "step"), [("text", 0.0005), ("binary", 1e-5), ("disguised", 1e-2)])
def test_a_slice_file_holds_the_layers(tmp_path: Path, mode: Any, step: float) -> None:
    path = tmp_path / "a.cli"
    layers = list(varnet.slice(hollow_cube(), layer=1.0))
    assert varnet.write_slices(path, layers, mode=mode, seed=5) == 30
    file = varnet.SliceFile(path)
    assert len(file) == 30 and file.mode == mode and file.announced_layers == 30 and file.units == 1.0
    assert file.size == path.stat().st_size and file.path == str(path)
    for layer, read in zip(layers, file):
        assert read.z == pytest.approx(layer.z, abs=0.005) and read.points == pytest.approx(layer.points, abs=step)
        assert read.strokes.shape == layer.strokes.shape and read.closed.all()
    assert file[0] == list(file)[0] and file[-1] == file[29] and file[5:9:2] == [file[5], file[7]]
    assert file[::-1][0] == file[29] and file[99:] == []
    for index in (30, -31, 2**40):
        with pytest.raises(IndexError):
            file[index]
    assert "<svg" in file._repr_html_() and "30 layers" in repr(file)


def test_layers_are_written_while_they_are_made_and_put_in_order(tmp_path: Path) -> None:
    part = hollow_cube()
    ordered = varnet.order(varnet.slice(part, layer=1.0), mode="binary")
    assert varnet.write_slices(tmp_path / "a.cli", ordered) == 30
    assert ordered.after[0] < ordered.before[0] and ordered.after[1] > 0
    # The same order from the file of the layers as they came.
    varnet.write_slices(tmp_path / "b.cli", varnet.slice(part, layer=1.0))
    varnet.write_slices(tmp_path / "c.cli", varnet.order(varnet.SliceFile(tmp_path / "b.cli")))
    assert (tmp_path / "c.cli").read_bytes() == (tmp_path / "a.cli").read_bytes()
    with varnet.SliceWriter(tmp_path / "d.cli", 30) as writer:
        for layer in varnet.slice(part, layer=1.0):
            assert not (tmp_path / "d.cli").exists()
            writer.write(layer)
    assert writer.layers_written == 30 and writer.bytes_written == (tmp_path / "d.cli").stat().st_size
    assert (tmp_path / "d.cli").read_bytes() == (tmp_path / "b.cli").read_bytes()


@pytest.mark.parametrize("way", [{"splice": True}, {"contours": "farthest"}, {"fill": "random", "seed": 3}, {"cut": 0.1}])
def test_order_keeps_what_is_printed(way: dict[str, Any]) -> None:
    layer = next(varnet.slice(hollow_cube(), layer=1.0, layers=(15, 15)))
    (ordered,) = varnet.order([layer], **way)
    assert ordered.number == layer.number and ordered is not layer
    if "cut" not in way and "splice" not in way:
        assert ordered.stroke_length == pytest.approx(layer.stroke_length)
        assert ordered.contour_length == pytest.approx(layer.contour_length)


def test_nothing_is_left_where_writing_ends_early(tmp_path: Path) -> None:
    def broken() -> Iterator[varnet.Layer]:
        yield next(varnet.slice(hollow_cube()))
        raise RuntimeError("enough")

    path = tmp_path / "a.cli"
    with pytest.raises(RuntimeError, match="enough"):
        varnet.write_slices(path, broken())
    with pytest.raises(RuntimeError), varnet.SliceWriter(path, 2) as writer:
        writer.write(next(varnet.slice(hollow_cube())))
        raise RuntimeError
    with pytest.raises(varnet.ArgumentError), varnet.SliceWriter(path, 2) as writer:
        writer.write(next(varnet.slice(hollow_cube())))
    with pytest.raises(varnet.ArgumentError):
        writer.finish()
    with pytest.raises((TypeError, RuntimeError)):
        varnet.write_slices(path, [7])  # type: ignore[list-item]
    assert list(tmp_path.iterdir()) == []
    with pytest.raises(varnet.FileError):
        varnet.SliceWriter(tmp_path, 1)
    with pytest.raises(ValueError):
        varnet.SliceWriter(path, -1)


def test_ranges_join_to_the_whole(tmp_path: Path) -> None:
    part = varnet.Part(*shapes.cube())
    for name, first, last in (("a", 1, 20), ("b", 21, 50), ("late", 25, 50)):
        slices = varnet.slice(part, layers=(first, last))
        varnet.write_slices(tmp_path / name, slices, range=(first, last, slices.layer_count))
    varnet.write_slices(tmp_path / "whole", varnet.slice(part))
    assert varnet.join_slices([tmp_path / "a", tmp_path / "b"], tmp_path / "joined") == 50
    assert (tmp_path / "joined").read_bytes() == (tmp_path / "whole").read_bytes()
    for wrong in (["a", "a"], ["a", "late"], ["b", "a"]):
        with pytest.raises(varnet.Error, match=wrong[1]):
            varnet.join_slices([tmp_path / name for name in wrong], tmp_path / "wrong")
    with pytest.raises(ValueError):
        varnet.join_slices([], tmp_path / "wrong")
    assert not (tmp_path / "wrong").exists()


@pytest.mark.parametrize("shards", [1, 3, 7])
def test_shards_join_to_the_whole(tmp_path: Path, shards: int) -> None:
    part = varnet.Part(*shapes.cube())
    varnet.write_slices(tmp_path / "whole", varnet.slice(part))
    for number in range(1, shards + 1):
        slices = varnet.slice(part, shard=(number, shards))
        first, last, count = slices.range
        assert count == slices.layer_count == 50 and last - first + 1 == len(slices) in (50 // shards, 50 // shards + 1)
        varnet.write_slices(tmp_path / str(number), slices, range=slices.range)
    varnet.join_slices([tmp_path / str(number) for number in range(1, shards + 1)], tmp_path / "joined")
    assert (tmp_path / "joined").read_bytes() == (tmp_path / "whole").read_bytes()


@pytest.mark.parametrize("shard", [(0, 3), (4, 3), (-1, -1), (1, 51)])
def test_shards_that_there_are_not_are_refused(shard: tuple[int, int]) -> None:
    part = varnet.Part(*shapes.cube())
    with pytest.raises(varnet.ArgumentError):
        varnet.slice(part, shard=shard)
    with pytest.raises(varnet.ArgumentError):
        varnet.slice(part, shard=(1, 3), layers=(1, 2))


def test_layers_are_made_from_arrays(tmp_path: Path) -> None:
    square = [[0, 0], [10, 0], [10, 10], [0, 10]]
    hole = [[2, 2], [2, 4], [4, 4], [4, 2]]
    layer = varnet.Layer(
        0.2, [square, hole, [[1, 1], [9, 1]]], closed=[True, True, False], id=[1, 1, 7], chains=[[[[0, 0], [1, 1]]]]
    )
    assert layer.area == 96.0 and layer.level.tolist() == [0, 1, 0] and layer.id.tolist() == [1, 1, 7]
    assert layer.chain_ids.tolist() == [3] and layer.strokes.tolist() == [[[0, 0], [1, 1]]]
    varnet.write_slices(tmp_path / "a.cli", [layer])
    assert varnet.SliceFile(tmp_path / "a.cli")[0].area == 96.0
    assert varnet.Layer(1.0).points.shape == (0, 2) and np.isinf(varnet.Layer(1.0).box).all()
    assert "<svg" in layer.svg(title="a & b") and "a &amp; b" in layer.svg(title="a & b")


@pytest.mark.parametrize(
    ("given", "words"),
    [
        ({"contours": [[[0, 0], [1, 0]]]}, "contour 0 has only 2"),
        ({"contours": [[[0, 0], [1, 0], [0, np.nan]]]}, "contour 0: row 2"),
        ({"contours": [[[0, 0, 0]]]}, "shape"),
        ({"contours": [[[0, 0], [1, 0], [0, 1]]], "closed": [True, False]}, "closed"),
        ({"contours": [[[0, 0], [1, 0], [0, 1]]], "id": [1, 2, 3]}, "id"),
        ({"chains": [[[0, 0], [1, 1]]]}, "shape"),
        ({"chains": [], "chain_ids": [3]}, "chain_ids"),
        ({"z": np.nan}, "finite"),
    ],
)
def test_layers_of_wrong_arrays_are_value_errors(given: dict[str, Any], words: str) -> None:
    settings: dict[str, Any] = {"z": 1.0} | given
    with pytest.raises(ValueError, match=words):
        varnet.Layer(**settings)


def test_layers_do_not_pretend_to_be_copied() -> None:
    # Like other objects that hold what lies outside of Python: an error, not half an object.
    with pytest.raises(TypeError):
        copy.deepcopy(varnet.Layer(1.0))
