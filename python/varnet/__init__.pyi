# The module's face: types and docstrings. What help() shows at run time is taken from here when it is built.

import builtins
import os
from collections.abc import Callable, Iterable, Iterator, Sequence
from types import TracebackType
from typing import Any, Literal, final, overload

import numpy as np
from numpy.typing import ArrayLike, NDArray

__version__: str

__all__ = [
    "ArgumentError",
    "Body",
    "Cancelled",
    "Error",
    "FileError",
    "HangingEdge",
    "IntakeReport",
    "Layer",
    "Ordered",
    "Overhang",
    "Part",
    "RepairReport",
    "SliceFile",
    "SliceFileReport",
    "SliceReport",
    "SliceWriter",
    "Slices",
    "Supports",
    "Surfaces",
    "View",
    "WriteReport",
    "__version__",
    "join_slices",
    "order",
    "read",
    "slice",
    "view",
    "write_slices",
]

_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]
_Progress = Callable[[float], object] | bool | None
_Floats = NDArray[np.float64]
_Ints = NDArray[np.int32]
_MeshFormat = Literal["binary", "csm", "csm-strips", "csm-rings"]
_Mode = Literal["text", "binary", "disguised"]
_Next = Literal["nearest", "farthest", "random"]

class Error(Exception):
    """What the kit reports: one line for the person at the screen, with the file's name in front where there is one.

    After an error nothing is half done: no file is left, and no object has changed.
    """

    file: str | None
    """The file that it concerns."""
    line: int | None
    """Where in a file of text, counted from 1."""
    byte: int | None
    """Where in a binary file, counted from 0."""

class FileError(Error, OSError):
    """The system refused: no such file, no permission, disk full."""

class ArgumentError(Error, ValueError):
    """An argument that makes no sense; the message names the range that is meant, or the row of an array."""

class Cancelled(Error):
    """A progress callback returned False."""

@final
class IntakeReport:
    """What was found in a mesh, and what was done to it."""

    @property
    def facets_in_file(self) -> int:
        """Announced, or counted in text."""
    @property
    def facets_read(self) -> int:
        """That came out of the file."""
    @property
    def not_finite(self) -> int:
        """Left out: a corner is no number or beyond 1e10."""
    @property
    def degenerate(self) -> int:
        """Left out: two corners are one."""
    @property
    def doubled(self) -> int:
        """Left out: the same three corners in the same order, once too often."""
    @property
    def collinear_turned(self) -> int:
        """Facets without area that were taken out by turning an edge."""
    @property
    def collinear_left(self) -> int:
        """Facets without area that stay: to take them out would open edges."""
    @property
    def split(self) -> int:
        """Facets that were divided at a vertex on their edge."""
    @property
    def welded(self) -> int:
        """Vertices that were joined with a near one."""
    @property
    def weld_tolerance(self) -> float:
        """By which they were, mm; 0 for equal corners alone."""
    @property
    def many_facet_edges(self) -> int:
        """Edges of more than two facets."""
    @property
    def open_edges_exact(self) -> int:
        """Directed edges without their opposite, by equal corners, as in the file."""
    @property
    def open_edges(self) -> int:
        """The same afterwards."""
    @property
    def notes(self) -> list[str]:
        """A line each for a person: what was lost or put right, and where."""

@final
class RepairReport:
    """What a repair did."""

    @property
    def turned(self) -> int:
        """Facets that contradicted their shell."""
    @property
    def doubled(self) -> int:
        """Facets left out that stood there once too often."""
    @property
    def split(self) -> int:
        """Facets divided at a vertex on their edge, once others were turned."""
    @property
    def open_edges_before(self) -> int:
        """By equal corners, as in the file."""
    @property
    def open_edges_after(self) -> int:
        """The same afterwards."""
    @property
    def holes_filled(self) -> int:
        """Plain rims that were closed."""
    @property
    def facets_added(self) -> int:
        """By filling."""
    @property
    def bodies_turned(self) -> int:
        """Whole bodies that were turned outward."""
    @property
    def holes_left(self) -> int:
        """With rims that are longer than asked for."""
    @property
    def notes(self) -> list[str]:
        """A line each for a person."""

@final
class WriteReport:
    """What a file holds beside what was to be written into it."""

    @property
    def facets_before(self) -> int:
        """Of the part."""
    @property
    def facets_after(self) -> int:
        """In the file."""
    @property
    def open_edges_before(self) -> int:
        """Of the part."""
    @property
    def open_edges_after(self) -> int:
        """By equal corners, as the file has them."""
    @property
    def volume_before(self) -> float:
        """Of the part, cubic mm."""
    @property
    def volume_after(self) -> float:
        """In the file, cubic mm."""
    @property
    def largest_error(self) -> float:
        """The largest distance, on an axis, of a point from the nearest one in the file, mm."""

@final
class SliceReport:
    """What came of slicing: of the layers that were made so far. Lengths in mm, volumes in cubic mm."""

    @property
    def layers(self) -> int:
        """That were made."""
    @property
    def contours(self) -> int:
        """Closed ones."""
    @property
    def open_paths(self) -> int:
        """Paths that could not be closed."""
    @property
    def layers_with_open_paths(self) -> int:
        """How many layers have some."""
    @property
    def longest_gap(self) -> float:
        """The longest way over which an end that stayed open would have had to be joined with the next one."""
    @property
    def missing_volume(self) -> float:
        """Cubic millimetres that open paths would enclose, joined over such ways: about what the layers lack."""
    @property
    def gaps_closed(self) -> int:
        """Longer than a micron."""
    @property
    def longest_gap_closed(self) -> float:
        """Of those."""
    @property
    def points(self) -> int:
        """Of contours and open paths."""
    @property
    def strokes(self) -> int:
        """Fill lines in parts."""
    @property
    def support_strokes(self) -> int:
        """Fill lines in supports."""
    @property
    def contour_length(self) -> float:
        """Of all contours."""
    @property
    def volume(self) -> float:
        """Of the layers as they are: area times height."""
    @property
    def mesh_volume(self) -> float:
        """Of the whole parts, whatever the range of layers."""
    @property
    def skipped_facets(self) -> int:
        """Not sliced: a corner is no number or beyond 1e10 mm."""

@final
class SliceFileReport:
    """What was put right on reading a slice file."""

    @property
    def blank_lines(self) -> int:
        """In text."""
    @property
    def comments(self) -> int:
        """In text."""
    @property
    def unknown_commands(self) -> int:
        """In text, $$POWER and the like."""
    @property
    def wrong_counts(self) -> int:
        """Paths with another number of points than announced, in text."""
    @property
    def stray_bytes(self) -> int:
        """Line ends and zeros behind the header or behind the last layer."""
    @property
    def end_missing(self) -> bool:
        """Text without its last line."""
    @property
    def broken(self) -> str | None:
        """Why and where the file could not be read on; None where it could. Only with `partial`."""
    @property
    def notes(self) -> list[str]:
        """The above, a line each for a person."""

@final
class Body:
    """Facets of a part that hang together across edges. It stays as it is when its part is changed."""

    @property
    def points(self) -> _Floats:
        """(n, 3) float64, mm; a read-only view."""
    @property
    def triangles(self) -> _Ints:
        """(m, 3) int32, indexes of points, counter-clockwise from outside; a read-only view."""
    @property
    def box(self) -> _Floats:
        """(2, 3) float64: the lowest and the highest corner, mm."""
    @property
    def area(self) -> float:
        """Square mm."""
    @property
    def volume(self) -> float:
        """Cubic mm; above 0 when facets face outward."""
    @property
    def open_edges(self) -> int:
        """Directed edges without their opposite."""
    @property
    def is_cavity(self) -> bool:
        """Whether it bounds a hollow: it lies inside another body, and faces the other way than that one."""
    @property
    def is_inside_out(self) -> bool:
        """Whether it faces inward, of a cavity outward: by its volume, of an open body with its rims closed.

        Of a part whose bodies have less than no volume together, all are, but for those that lie in no other and face
        outward."""
    @property
    def enclosing(self) -> int | None:
        """Of a cavity the number of the body around it, the smallest of several; else None."""

@final
class Part:
    """A mesh as a person has it, with what can be put right put right, and divided into bodies.

    points: array-like (n, 3) of numbers, mm.
    triangles: array-like (m, 3) of integers, indexes of points, counter-clockwise from outside.
    weld: corners nearer than this on each axis become one, mm; None: equal corners, and those on open edges
        by the smallest of five tolerances up to 0.01 that leaves the fewest.
    scale: every coordinate is multiplied by this.
    heal: False: equal corners are joined, and nothing else is done.
    progress: called with the share that is done, 0 to 1; it ends the work by returning False or raising.
        True: a tqdm bar, where tqdm is installed.

    Raises ValueError that names the row, where a shape is wrong, a point not finite, or an index out of range;
    varnet.ArgumentError, also a ValueError, for settings that make no sense.

    A part may be used by several threads.
    """

    def __init__(
        self,
        points: ArrayLike,
        triangles: ArrayLike,
        *,
        weld: float | None = None,
        scale: float = 1.0,
        heal: bool = True,
        progress: _Progress = None,
    ) -> None: ...
    @property
    def name(self) -> str:
        """The file's name without its extension; empty for a part that comes from none."""
    @property
    def header(self) -> str:
        """The text of the file's header; bytes that are no UTF-8 are replaced."""
    @property
    def format(self) -> str:
        """Of the file, such as "binary STL"."""
    @property
    def points(self) -> _Floats:
        """(n, 3) float64, mm; a read-only view that keeps what it shows when the part is changed."""
    @property
    def triangles(self) -> _Ints:
        """(m, 3) int32, indexes of points, counter-clockwise from outside; a read-only view as points."""
    @property
    def report(self) -> IntakeReport:
        """What was found in the file, and what was done to it."""
    @property
    def box(self) -> _Floats:
        """(2, 3) float64: the lowest and the highest corner, mm; infinite without points."""
    @property
    def area(self) -> float:
        """Square mm."""
    @property
    def volume(self) -> float:
        """Cubic mm; above 0 when facets face outward."""
    @property
    def open_edges(self) -> int:
        """Directed edges without their opposite; 0 for a closed part."""
    @property
    def bodies(self) -> list[Body]:
        """In the order of their first facets. The first time takes about as long as reading."""
    def repair(
        self, *, fill_holes: float = 0.0, outward: bool = False, progress: _Progress = None
    ) -> RepairReport:
        """Turns the facets that contradict their own shell; changes this part, or nothing after an error.

        fill_holes: holes with rims up to this length, mm, are closed, by the triangulation of least area; 0 for none.
        outward: turn whole bodies that are inside out and no cavities.

        Never ends with more open edges than it began. Raises varnet.ArgumentError.
        """
    def transform(self, matrix: ArrayLike) -> None:
        """Moves every point: by a matrix of the shape (3, 4) or (4, 4), applied to columns (x, y, z, 1).

        A map that mirrors turns all facets, so that the outside stays outside. Raises ValueError where a number is
        not finite, the last row of four is not 0 0 0 1, the map flattens space, or a point would land beyond 1e10.
        """
    def split(self) -> list[Part]:
        """A part for each body that is no cavity, with the cavities in it, in the order of the bodies."""
    def surfaces(
        self, rule: Literal["normals", "octants", "shells"] = "normals", *, progress: _Progress = None
    ) -> Surfaces:
        """Divides the part into surfaces.

        rule: "normals": normals of neighbours differ by less than 30 degrees; "octants": by the octant of the
        normal, upright facets apart; "shells": all that hang together.
        """
    def supports(
        self,
        *,
        angle: float = 44.0,
        connect_by_vertex: bool = False,
        min_area: float = 1.0,
        down: float = 0.0,
        edges_up: float = 45.0,
        edges_down: float = 45.0,
        edge_length: float = 1.0,
        stroke: float = 0.5,
        progress: _Progress = None,
    ) -> Supports:
        """Finds what hangs, and builds the solids that hold it. Degrees and mm.

        angle: facets less than this from straight down need support.
        connect_by_vertex: facets that touch in a vertex alone are one region.
        min_area: square mm, projected: smaller regions need to hang free.
        down: solids are closed and of this height; 0: down to the lowest point of the part.
        edges_up, edges_down: facets less than this from straight up, or down, hold an edge.
        edge_length: chains of hanging edges must be longer than this.
        stroke: regions narrower than this are counted as small.

        Raises varnet.ArgumentError.
        """
    def write(
        self,
        path: _Path,
        format: _MeshFormat = "binary",
        *,
        floats: bool = False,
        progress: _Progress = None,
    ) -> WriteReport:
        """Writes a mesh file, under its name only when it is complete, and reads it back to see what it holds.

        format: "binary" STL; "csm" plain, in strips, or in rings.
        floats: CSM in strips: points as floats, not on a grid of 16 bits.

        Raises varnet.FileError where the system refuses, varnet.Error where the format cannot hold the part.
        """
    def svg(self, *, title: str | None = None, colors: ArrayLike | None = None) -> str:
        """A picture from the front, the right and above, as an SVG document.

        title: the part's name where None.
        colors: (m,) integers 0xRRGGBB, one for each triangle, such as those of surfaces().
        """
    def to_trimesh(self) -> Any:
        """A trimesh.Trimesh with copies of points and triangles. Raises ImportError where trimesh is missing."""
    @staticmethod
    def from_trimesh(mesh: Any) -> Part:
        """A part of a trimesh.Trimesh. Raises ImportError where trimesh is missing."""
    def _repr_html_(self) -> str: ...

@final
class Overhang:
    """A region of facets that face down."""

    @property
    def triangles(self) -> _Ints:
        """(k,) int32: rows of the part's triangles."""
    @property
    def area(self) -> float:
        """Square mm."""
    @property
    def projected_area(self) -> float:
        """On the plate, square mm."""
    @property
    def box(self) -> _Floats:
        """(2, 3) float64, mm."""
    @property
    def supported(self) -> bool:
        """Whether it gets a solid."""
    @property
    def why(self) -> str:
        """For a person: "faces down", "rests on the plate"."""

@final
class HangingEdge:
    """A chain of edges from which the part hangs, and that nothing holds."""

    @property
    def points(self) -> _Floats:
        """(k, 3) float64, mm."""
    @property
    def length(self) -> float:
        """Of the chain, mm."""
    @property
    def lowest(self) -> float:
        """The lowest height of it, mm."""

@final
class Supports:
    """What hangs on a part, and the solids that hold it; made by Part.supports()."""

    @property
    def overhangs(self) -> list[Overhang]:
        """Regions that face down, whether they get a solid or not."""
    @property
    def edges(self) -> list[HangingEdge]:
        """Chains of edges that hang."""
    @property
    def solids(self) -> list[tuple[_Floats, _Ints]]:
        """Points (n, 3) and triangles (m, 3) of each solid; those below overhangs first."""
    @property
    def small_regions(self) -> int:
        """Supported regions of less than a stroke's width squared: their solids print badly."""
    def write(self, path: _Path, format: _MeshFormat = "binary") -> None:
        """Writes all solids as one mesh. Raises varnet.FileError; varnet.Error where there is no solid."""
    def svg(self) -> str:
        """A picture of the part on its supports."""
    def _repr_svg_(self) -> str: ...

@final
class Surfaces:
    """A part divided into surfaces; made by Part.surfaces()."""

    @property
    def of_triangle(self) -> _Ints:
        """(m,) int32: for each triangle of the part its surface; -1 for facets of hardly any area."""
    @property
    def facets(self) -> NDArray[np.int64]:
        """(s,) int64: how many each surface has."""
    @property
    def area(self) -> _Floats:
        """(s,) float64, square mm."""
    @property
    def rim_length(self) -> _Floats:
        """(s,) float64, mm."""
    @property
    def colors(self) -> NDArray[np.uint32]:
        """(m,) uint32: 0xRRGGBB for each triangle of the part, for Part.svg()."""
    def __len__(self) -> int: ...

@final
class Layer:
    """One slice of a part, in flat arrays, mm. It does not change.

    Made by varnet.slice() or a SliceFile, or from arrays:

    z: the height of the upper side.
    contours: a sequence of array-likes (k, 2); k at least 3 where closed, else 2. The first point is not stated
        again. Outer contours run counter-clockwise, holes clockwise.
    closed: one bool for all, or one for each contour.
    id: one integer for all, or one for each contour.
    chains: a sequence of array-likes (k, 2, 2): strokes of fill from a point to a point.
    chain_ids: one for each chain; 3 for all where None.
    number: counted from 1.

    Raises ValueError that names the contour and the row.
    """

    def __init__(
        self,
        z: float,
        contours: Sequence[ArrayLike] = ...,
        *,
        closed: bool | Sequence[bool] = True,
        id: int | Sequence[int] = 1,
        chains: Sequence[ArrayLike] = ...,
        chain_ids: Sequence[int] | None = None,
        number: int = 1,
    ) -> None: ...
    @property
    def number(self) -> int:
        """Counted from 1."""
    @property
    def z(self) -> float:
        """Of its upper side, mm."""
    @property
    def cut_height(self) -> float:
        """Where the part was cut, mm: in the middle of the layer."""
    @property
    def points(self) -> _Floats:
        """(n, 2) float64: the points of all contours; a read-only view."""
    @property
    def offsets(self) -> NDArray[np.uint64]:
        """(c + 1,): contour i has the points from offsets[i] up to offsets[i + 1]."""
    @property
    def contours(self) -> list[_Floats]:
        """A view (k, 2) of points for each contour; the list is made each time."""
    @property
    def closed(self) -> NDArray[np.bool_]:
        """(c,): whether each contour is closed; an open path ends where its last point is."""
    @property
    def parent(self) -> _Ints:
        """(c,) int32: the contour right around each; -1 for none, for open paths, and in slice files."""
    @property
    def level(self) -> _Ints:
        """(c,) int32: how many contours go round each; odd for holes."""
    @property
    def id(self) -> _Ints:
        """(c,) int32: as it stands in slice files."""
    @property
    def strokes(self) -> _Floats:
        """(m, 2, 2) float64: straight lines of fill, each from a point to a point; a read-only view."""
    @property
    def chain_offsets(self) -> NDArray[np.uint64]:
        """(d + 1,): chain i has the strokes from chain_offsets[i] up to chain_offsets[i + 1]."""
    @property
    def chain_ids(self) -> _Ints:
        """(d,) int32: 3 in parts, 1000 and above in supports."""
    @property
    def chains(self) -> list[_Floats]:
        """A view (k, 2, 2) of strokes for each chain; the list is made each time."""
    @property
    def area(self) -> float:
        """Of solid, square mm: the signed areas of all closed contours."""
    @property
    def contour_length(self) -> float:
        """Of all contours and open paths, mm."""
    @property
    def stroke_length(self) -> float:
        """Of all strokes, without the way between them, mm."""
    @property
    def box(self) -> _Floats:
        """(2, 2) float64: around contours and strokes, mm; infinite for an empty layer."""
    def svg(self, *, title: str | None = None) -> str:
        """A picture as an SVG document: solid filled, then paths in their order, from blue over green to red."""
    def _repr_svg_(self) -> str: ...
    def __eq__(self, other: object) -> bool: ...

@final
class Slices:
    """The layers of parts, made as they are asked for; from varnet.slice(). Goes through them once."""

    @property
    def layer_count(self) -> int:
        """Of the whole, whatever the range."""
    @property
    def range(self) -> tuple[int, int, int]:
        """The first and the last layer that are made, by number, and layer_count: what write_slices() asks for."""
    @property
    def report(self) -> SliceReport:
        """Of the layers made so far."""
    def at(self, number: int) -> Layer:
        """Any layer by its number, from 1 to layer_count, whatever the range and whatever was made.

        Successive layers are had faster by going through them. Raises varnet.ArgumentError for another number.
        """
    def __iter__(self) -> Slices: ...
    def __next__(self) -> Layer: ...
    def __len__(self) -> int:
        """Layers still to come."""

@final
class Ordered:
    """Layers whose paths are put in order as they are asked for; from varnet.order()."""

    @property
    def before(self) -> tuple[float, int]:
        """Of the layers as they came: the way of the head with the material off, mm, and how often it starts."""
    @property
    def after(self) -> tuple[float, int]:
        """The same of the layers as they went."""
    def __iter__(self) -> Ordered: ...
    def __next__(self) -> Layer: ...
    def __length_hint__(self) -> int:
        """Layers still to come, where the source says so."""

@final
class SliceFile:
    """A slice file (CLI, text or binary), open for reading: a sequence of layers, each read when asked for.

    partial: a broken file gives the layers before the break instead of an error; report.broken says why.

    Raises varnet.FileError where the file cannot be read; varnet.Error, with its line or byte, where it is no
    slice file or broken.
    """

    def __init__(self, path: _Path, *, partial: bool = False, progress: _Progress = None) -> None: ...
    @property
    def path(self) -> str:
        """As it was given."""
    @property
    def size(self) -> int:
        """Bytes."""
    @property
    def mode(self) -> _Mode:
        """How the file holds its layers."""
    @property
    def units(self) -> float:
        """Millimetres a unit of the file; layers are given in mm."""
    @property
    def announced_layers(self) -> int | None:
        """By the header."""
    @property
    def dimension(self) -> _Floats | None:
        """(2, 3) float64, mm: as the header states it, right or not."""
    @property
    def report(self) -> SliceFileReport:
        """What was put right on reading."""
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Layer]: ...
    @overload
    def __getitem__(self, index: int) -> Layer: ...
    @overload
    def __getitem__(self, index: builtins.slice) -> list[Layer]: ...
    def _repr_html_(self) -> str: ...

@final
class SliceWriter:
    """Writes a slice file layer by layer, and stands under its name only after finish().

    layers: how many the header announces.
    mode: "text" with coordinates to three decimals; "binary" with floats; "disguised": binary, each raised by a
        random offset.
    seed: of those offsets; with one the same layers give the same bytes.
    range: where the file holds a part of a build: its first and last layer by number, and the layers of the build,
        so that join_slices() can tell a gap.

    As a context manager it finishes at the end of the block, and leaves nothing after an exception.
    Raises varnet.FileError.
    """

    def __init__(
        self,
        path: _Path,
        layers: int,
        *,
        mode: _Mode = "binary",
        seed: int | None = None,
        range: tuple[int, int, int] | None = None,
    ) -> None: ...
    def write(self, layer: Layer) -> None:
        """Appends a layer. Raises varnet.FileError, where the disk is full for instance."""
    def finish(self) -> None:
        """Puts the file in its place. Raises varnet.ArgumentError where another number of layers was announced."""
    @property
    def layers_written(self) -> int:
        """So far."""
    @property
    def bytes_written(self) -> int:
        """So far."""
    def __enter__(self) -> SliceWriter: ...
    def __exit__(
        self,
        kind: type[BaseException] | None,
        value: BaseException | None,
        traceback: TracebackType | None,
    ) -> None: ...

def read(
    path: _Path,
    *,
    weld: float | None = None,
    scale: float = 1.0,
    heal: bool = True,
    progress: _Progress = None,
) -> Part:
    """Reads a mesh of any format (STL, CSM, 3DMF, OLTP; the content says which), and puts right what can be.

    The settings are those of varnet.Part. Raises varnet.FileError where the system refuses, varnet.Error where the
    file is no model or holds no facets.
    """

def slice(
    parts: Part | Iterable[Part],
    *,
    layer: float = 0.2,
    hatch: float = 0.5,
    angle: float = 45.0,
    tolerance: float = 0.01,
    rule: Literal["winding", "odd"] = "winding",
    close: float = 0.05,
    layers: tuple[int, int] | None = None,
    shard: tuple[int, int] | None = None,
    supports: Supports | Iterable[Supports] = (),
    threads: int = 1,
    progress: _Progress = None,
) -> Slices:
    """Cuts parts, as they lie side by side, into layers: an iterator that makes them as they are asked for.

    layer: height of a layer, mm.
    hatch: from fill line to fill line, mm; 0 for contours alone.
    angle: of the fill lines of the first layer, degrees; each further layer is at right angles.
    tolerance: no point of a cut lies further from its contour, mm; 0 keeps every point.
    rule: what is solid: "winding": where contours go round more often counter-clockwise; "odd": where an odd
        number goes round.
    close: gaps in contours up to this are closed, mm; 0 for never.
    layers: the first and the last number to make, counted from 1; None for all.
    shard: instead of layers, the number of a shard, from 1 on, and the number of shards to which all layers are
        dealt out, each the next ones above those before; see join_slices().
    supports: solids that get fill lines in layers of even numbers.
    threads: the layers are the same for any number.

    The parts may be changed afterwards: what is sliced is what they were. Raises varnet.ArgumentError for settings
    that make no sense, parts without height, and more than a million layers.
    """

def order(
    layers: Iterable[Layer],
    *,
    splice: bool = False,
    contours: _Next = "nearest",
    fill: _Next = "nearest",
    width: float = 0.5,
    cut: float = 0.0,
    start: tuple[float, float] = (0.0, 0.0),
    seed: int = 1,
    mode: _Mode | None = None,
) -> Ordered:
    """Puts the paths of layer after layer in order: an iterator over new layers.

    splice: contours are opened where fill passes, and both printed in one stroke; without it contours come first.
    contours, fill: which path is next, where they are not spliced.
    width: of a stroke, mm: contours link with fill within 1.8 times this.
    cut: the opening of a contour, mm, and what is cut off at the end of a path.
    start: where the head is at first, mm.
    seed: of the random order.
    mode: coordinates are rounded first as a slice file of this mode stores them, so that the order is that which
        the file would be given after reading.

    Contours that are ordered lose their parents. Raises varnet.ArgumentError.
    """

def write_slices(
    path: _Path,
    layers: Iterable[Layer],
    *,
    mode: _Mode = "binary",
    seed: int | None = None,
    range: tuple[int, int, int] | None = None,
) -> int:
    """Writes layers as a slice file while they are made, and returns their number.

    An iterable that does not say its length is gathered first. The other settings are those of varnet.SliceWriter.
    Nothing is left after an error. Raises varnet.FileError.
    """

def join_slices(inputs: Iterable[_Path], output: _Path, *, progress: _Progress = None) -> int:
    """Puts the layers of several files together, given with the lowest first, and returns their number.

    The mode is that of the first. Joined ranges of one build are the very bytes of a file of the whole. Raises varnet.Error where the files differ in mode or units, where their layers
    overlap or leave a gap, and where a file is broken; varnet.FileError.
    """

@final
class View:
    """A page to look at, made by view(): parts to turn, layers to go through. A notebook shows it in a frame."""

    @property
    def parts(self) -> int:
        """How many it shows."""
    @property
    def layers(self) -> int:
        """How many it shows, of all lists of layers together."""
    @property
    def html(self) -> str:
        """The page: it needs no network and nothing else. Made anew at each call."""
    def write(self, path: _Path) -> None:
        """Writes the page, under its name only when it is complete. Raises varnet.FileError."""
    def _repr_html_(self) -> str: ...

def view(
    *items: Part | Supports | Surfaces | SliceFile | Layer | Iterable[Layer],
    title: str | None = None,
    pictures: bool = True,
    height: int = 600,
    progress: _Progress = None,
) -> View:
    """Puts parts and layers on a page for the browser.

    items: a Part; its Supports and its Surfaces behind it, which are shown with it (Supports alone bring their part);
        slice files; layers, one by one or as any iterable, such as varnet.slice(part), which is used up.
    title: any text; the name of the first item when there is none.
    pictures: with SVG pictures for browsers without WebGL.
    height: of the frame in a notebook, in pixels.

    Raises varnet.ArgumentError for surfaces that are not those of the part before them; varnet.Error where there is
    nothing to show; TypeError for other items.
    """
