"""Parts: in from arrays and files, arrays out, repaired, divided, written."""

import gc
import os
import sys
import types
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import shapes
import varnet


def test_arrays_come_back_as_they_were_given() -> None:
    points, triangles = shapes.cube()
    part = varnet.Part(points, triangles)
    assert part.points.dtype == np.float64 and part.points.shape == (8, 3)
    assert part.triangles.dtype == np.int32 and part.triangles.shape == (12, 3)
    # The same facets in the same order; points may have other numbers.
    assert np.array_equal(part.points[part.triangles], points[triangles])
    assert part.volume == 1000.0 and part.area == 600.0 and part.open_edges == 0
    assert part.box.tolist() == [[0, 0, 0], [10, 10, 10]]
    assert part.name == "" and part.report.facets_read == 12 and part.report.notes == []


@pytest.mark.parametrize("kind", [np.float32, np.int16, np.uint64, ">f8"])
def test_any_kind_of_numbers_is_taken(kind: Any) -> None:
    points, triangles = shapes.cube()
    for indexes in (triangles.astype(np.uint8), triangles.astype(np.int64), triangles.tolist()):
        assert varnet.Part(points.astype(kind), indexes).volume == 1000.0
    assert varnet.Part(np.asfortranarray(points), triangles[::-1]).volume == 1000.0
    assert varnet.Part(np.concatenate([points, points])[::1], triangles).volume == 1000.0


def test_nothing_gives_an_empty_part() -> None:
    part = varnet.Part([], [])
    assert part.points.shape == (0, 3) and part.triangles.shape == (0, 3)
    assert part.bodies == [] and np.isinf(part.box).all()
    assert varnet.Part(np.zeros((0, 3)), np.zeros((0, 3), int)).split() == []


CUBE = shapes.cube()


def without_types(values: Any) -> Any:
    return values


@pytest.mark.parametrize(
    ("points", "triangles", "words"),
    [
        (CUBE[0], [[0, 1, 2], [0, 1, 8]], "row 1 has the index 8"),
        (CUBE[0], [[0, 1, -1]], "row 0 has the index -1"),
        (CUBE[0], np.array([[0, 1, 2**63]], np.uint64), "row 0 has the index"),
        (CUBE[0], [[0, 1, 2**32]], "row 0 has the index 4294967296"),
        (CUBE[0], [[0.0, 1.0, 2.0]], "integers"),
        (CUBE[0], [[True, False, True]], "integers"),
        (CUBE[0], [0, 1, 2], r"shape \(m, 3\), and not \(3,\)"),
        (CUBE[0], [[0, 1, 2, 3]], "shape"),
        (CUBE[0][:, :2], CUBE[1], r"shape \(n, 3\), and not \(8, 2\)"),
        ([[0, 0, 0], [0, np.nan, 0]], [], "row 1 is not finite"),
        ([[0, 0, 0], [0, 0, 0], [-np.inf, 0, 0]], [], "row 2 is not finite"),
        ([["a", "b", "c"]], [], "numbers"),
        ([[1j, 0, 0]], [], "numbers"),
        ([[0, 0, 0], [1, 2]], [], ""),
        (None, [], "numbers|shape|float"),
    ],
)
def test_what_is_no_mesh_is_a_value_error_that_names_the_row(points: Any, triangles: Any, words: str) -> None:
    with pytest.raises((ValueError, TypeError), match=words):
        varnet.Part(points, triangles)


@pytest.mark.parametrize("settings", [{"scale": float("nan")}, {"scale": 0.0}, {"weld": -1.0}, {"weld": float("inf")}])
def test_settings_that_make_no_sense_are_value_errors(settings: dict[str, float]) -> None:
    with pytest.raises(varnet.ArgumentError) as caught:
        varnet.Part(*CUBE, **settings)  # type: ignore[arg-type]
    assert isinstance(caught.value, ValueError) and isinstance(caught.value, varnet.Error)


def test_arrays_are_read_only_and_outlive_what_they_show() -> None:
    part = varnet.Part(*shapes.cube())
    points, box = part.points, part.bodies[0].points
    with pytest.raises(ValueError):
        points[0, 0] = 1.0
    with pytest.raises(ValueError):
        points.flags.writeable = True
    before = points.copy()
    part.transform([[1, 0, 0, 5], [0, 1, 0, 0], [0, 0, 1, 0]])
    assert np.array_equal(points, before) and np.array_equal(part.points, before + [5.0, 0.0, 0.0])
    del part
    gc.collect()
    assert np.array_equal(points, before) and np.array_equal(np.sort(box, axis=0), np.sort(before, axis=0))


def test_two_looks_show_the_same_memory() -> None:
    part = varnet.Part(*shapes.cube())
    assert np.shares_memory(part.points, part.points)


def test_files_of_both_kinds_are_read_from_any_kind_of_path(tmp_path: Path) -> None:
    mesh = shapes.cube()
    binary = shapes.save(tmp_path / "a cube ü 方.stl", mesh)
    text = tmp_path / "text.stl"
    text.write_text(shapes.ascii_stl(mesh, "my part"))
    paths: tuple[Any, ...] = (binary, str(binary), os.fsencode(binary))
    for path in paths:
        part = varnet.read(path)
        assert part.name == "a cube ü 方" and part.header == "a header" and part.format == "binary STL"
        assert np.array_equal(part.points[part.triangles], mesh[0][mesh[1]])
    assert varnet.read(text).header == "my part"
    assert varnet.read(text, scale=25.4).volume == pytest.approx(254.0**3)


def test_a_header_that_is_no_utf8_is_replaced(tmp_path: Path) -> None:
    path = tmp_path / "a.stl"
    path.write_bytes(shapes.binary_stl(shapes.cube(), b"caf\xe9"))
    assert varnet.read(path).header == "caf\ufffd"


def test_a_missing_file_is_an_os_error_that_names_it(tmp_path: Path) -> None:
    path = tmp_path / "none.stl"
    with pytest.raises(OSError, match="none.stl") as caught:
        varnet.read(path)
    assert isinstance(caught.value, varnet.FileError) and caught.value.file == str(path)
    odd: Any
    for odd in ("", "a\0b"):
        with pytest.raises((varnet.Error, ValueError, TypeError)):
            varnet.read(odd)
    with pytest.raises(TypeError):
        varnet.read(7)  # type: ignore[arg-type]


def test_a_file_that_is_no_model_is_an_error_but_no_os_error(tmp_path: Path) -> None:
    path = tmp_path / "a.stl"
    path.write_text("no model at all")
    with pytest.raises(varnet.Error) as caught:
        varnet.read(path)
    assert not isinstance(caught.value, OSError)


def test_repair_turns_facets_and_fills_holes_in_place() -> None:
    points, triangles = shapes.cube()
    triangles[3] = triangles[3, ::-1]
    part = varnet.Part(points, triangles)
    report = part.repair()
    assert report.turned == 1 and part.volume == 1000.0
    open_part = varnet.Part(points, shapes.cube()[1][1:])
    assert open_part.open_edges == 3
    report = open_part.repair(fill_holes=100.0)
    assert (report.holes_filled, report.facets_added, open_part.open_edges) == (1, 1, 0)
    inside_out = varnet.Part(points, shapes.cube()[1][:, ::-1])
    assert inside_out.bodies[0].is_inside_out
    assert inside_out.repair(outward=True).bodies_turned == 1 and inside_out.volume == 1000.0
    with pytest.raises(ValueError):
        part.repair(fill_holes=-1.0)
    assert "turned=1" in repr(varnet.Part(points, triangles).repair())


def test_bodies_and_split_divide_a_part() -> None:
    part = varnet.Part(
        *shapes.together(
            shapes.cube(30.0),
            (shapes.box((10, 10, 10), (20, 20, 20))[0], shapes.cube()[1][:, ::-1]),
            shapes.box((40, 0, 0), (41, 1, 1)),
        )
    )
    assert [body.volume for body in part.bodies] == pytest.approx([27000, -1000, 1])
    assert [body.enclosing for body in part.bodies] == [None, 0, None]
    assert part.bodies[1].is_cavity and not part.bodies[1].is_inside_out
    bodies = part.bodies
    pieces = part.split()
    assert [piece.volume for piece in pieces] == pytest.approx([26000, 1])
    del part
    part_of_bodies = [shapes.volume((body.points, body.triangles)) for body in bodies]
    assert part_of_bodies == pytest.approx([27000, -1000, 1])


@pytest.mark.parametrize("matrix", [np.eye(4) * np.nan, np.zeros((3, 4)), np.eye(3), 2 * np.eye(4), [], "abc"])
def test_a_map_that_is_none_leaves_the_part(matrix: Any) -> None:
    part = varnet.Part(*shapes.cube())
    with pytest.raises(ValueError):
        part.transform(matrix)
    assert part.volume == 1000.0


def test_a_mirror_keeps_the_outside_outside() -> None:
    part = varnet.Part(*shapes.cube())
    part.transform(np.diag([-1.0, 2.0, 1.0, 1.0]))
    assert part.volume == 2000.0 and part.box.tolist() == [[-10, 0, 0], [0, 20, 10]]


@pytest.mark.parametrize("format", ["binary", "csm", "csm-strips", "csm-rings"])
def test_what_is_written_is_read_again(tmp_path: Path, format: Any) -> None:
    part = varnet.Part(*shapes.sphere(10.0, 20))
    path = tmp_path / "a.model"
    report = part.write(path, format)
    again = varnet.read(path)
    assert report.facets_after == len(again.triangles)
    # The coarsest format has a grid of 16 bits, whose steps are stored as floats.
    assert report.largest_error <= 1.1 * 20.0 / 65535
    assert again.volume == pytest.approx(part.volume, rel=1e-3)


def test_writing_fails_without_a_trace(tmp_path: Path) -> None:
    part = varnet.Part(*shapes.cube())
    with pytest.raises(varnet.FileError):
        part.write(tmp_path / "no folder" / "a.stl")
    with pytest.raises(ValueError, match='"csm-rings"'):
        part.write(tmp_path / "a.stl", "step")  # type: ignore[arg-type]
    assert list(tmp_path.iterdir()) == []


def test_supports_hold_the_plate_of_a_table(tmp_path: Path) -> None:
    part = varnet.Part(*shapes.table())
    supports = part.supports()
    held = [overhang for overhang in supports.overhangs if overhang.supported]
    assert held and held[0].triangles.dtype == np.int32 and held[0].projected_area > 0.0
    assert {overhang.why for overhang in supports.overhangs if not overhang.supported} == {"rests on the plate"}
    points, triangles = supports.solids[0]
    assert points.shape[1] == 3 and triangles.max() < len(points) and points[:, 2].min() == 0.0
    supports.write(tmp_path / "supports.stl")
    assert len(varnet.read(tmp_path / "supports.stl").triangles) > 0
    assert supports.svg().startswith("<svg")
    with pytest.raises(ValueError):
        part.supports(angle=float("nan"))
    solids = part.supports().solids
    gc.collect()
    assert np.isfinite(solids[0][0]).all()
    for edge in supports.edges:
        assert edge.points[:, 2].min() == edge.lowest


def test_a_cube_has_six_surfaces() -> None:
    surfaces = varnet.Part(*shapes.cube()).surfaces()
    assert len(surfaces) == 6 and surfaces.facets.tolist() == [2] * 6
    assert surfaces.area.tolist() == [100.0] * 6 and surfaces.rim_length.tolist() == [40.0] * 6
    assert np.bincount(surfaces.of_triangle).tolist() == [2] * 6
    assert surfaces.colors.shape == (12,) and surfaces.colors.max() <= 0xFFFFFF
    assert len(varnet.Part(*shapes.cube()).surfaces("shells")) == 1
    with pytest.raises(ValueError, match="octants"):
        varnet.Part(*shapes.cube()).surfaces("shades")  # type: ignore[arg-type]


def test_a_part_is_pictured() -> None:
    part = varnet.Part(*shapes.cube())
    assert "<svg" in part._repr_html_() and "1000 mm³" in part._repr_html_()
    assert "a &lt; b" in part.svg(title="a < b")
    assert "#ff0000" in part.svg(colors=np.full(12, 0xFF0000)).lower() or part.svg(colors=[255] * 12) != part.svg()
    wrong: tuple[Any, ...] = ([1, 2], [-1] * 12, [2**24] * 12, [0.5] * 12)
    for colors in wrong:
        with pytest.raises(ValueError):
            part.svg(colors=colors)
    assert "<svg" in varnet.Part([], [])._repr_html_()


def test_trimesh_is_asked_for_where_it_is_missing(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setitem(without_types(sys.modules), "trimesh", None)
    with pytest.raises(ImportError, match="trimesh"):
        varnet.Part(*CUBE).to_trimesh()
    with pytest.raises(ImportError, match="trimesh"):
        varnet.Part.from_trimesh(object())


def test_trimesh_gets_its_own_arrays(monkeypatch: pytest.MonkeyPatch) -> None:
    stand_in = types.ModuleType("trimesh")

    def new(**given: Any) -> types.SimpleNamespace:
        return types.SimpleNamespace(**given)

    setattr(stand_in, "Trimesh", new)
    monkeypatch.setitem(sys.modules, "trimesh", stand_in)
    mesh = varnet.Part(*CUBE).to_trimesh()
    mesh.vertices *= 2.0
    assert varnet.Part.from_trimesh(mesh.__class__(vertices=mesh.vertices, faces=mesh.faces)).volume == 8000.0
    assert mesh.process is False


def test_meshio_round_trip(tmp_path: Path) -> None:
    meshio = pytest.importorskip("meshio")
    part = varnet.Part(*shapes.sphere(5.0, 12))
    mesh = meshio.Mesh(part.points, [("triangle", part.triangles)])
    mesh.write(tmp_path / "a.stl", binary=True)
    again = varnet.read(tmp_path / "a.stl")
    assert len(again.triangles) == len(part.triangles) and again.volume == pytest.approx(part.volume, rel=1e-6)
    part.write(tmp_path / "b.stl")
    back = meshio.read(tmp_path / "b.stl")
    assert varnet.Part(back.points, back.cells_dict["triangle"]).volume == pytest.approx(part.volume, rel=1e-6)
