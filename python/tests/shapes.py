"""Shapes whose measures are known, made with NumPy alone."""

import struct
from pathlib import Path

import numpy as np
from numpy.typing import NDArray

Points = NDArray[np.float64]
Triangles = NDArray[np.int32]
Mesh = tuple[Points, Triangles]

# Of a box whose corner i has x, y, z from the bits 4, 2, 1 of i.
BOX_FACETS = (
    (0, 1, 3), (0, 3, 2), (4, 6, 7), (4, 7, 5), (0, 4, 5), (0, 5, 1),
    (2, 3, 7), (2, 7, 6), (0, 2, 6), (0, 6, 4), (1, 5, 7), (1, 7, 3),
)  # fmt: skip


def box(low: tuple[float, float, float], high: tuple[float, float, float]) -> Mesh:
    corners = [[(low, high)[i >> 2 & 1][0], (low, high)[i >> 1 & 1][1], (low, high)[i & 1][2]] for i in range(8)]
    return np.array(corners, np.float64), np.array(BOX_FACETS, np.int32)


def cube(side: float = 10.0) -> Mesh:
    return box((0.0, 0.0, 0.0), (side, side, side))


def together(*meshes: Mesh) -> Mesh:
    points = np.concatenate([mesh[0] for mesh in meshes])
    starts = np.cumsum([0] + [len(mesh[0]) for mesh in meshes[:-1]])
    triangles = np.concatenate([mesh[1] + np.int32(start) for mesh, start in zip(meshes, starts)])
    return points, triangles.astype(np.int32)


def table() -> Mesh:
    """Two legs and a plate that hangs between them: 20 mm wide, 10 deep, 12 high."""
    return together(
        box((0, 0, 0), (4, 10, 10.5)), box((16, 0, 0), (20, 10, 10.5)), box((0, 0, 10), (20, 10, 12))
    )


def sphere(radius: float, rows: int) -> Mesh:
    """A torus-free sphere of rows * 2 * (rows - 1) * 2 facets or so, closed."""
    columns = 2 * rows
    polar = np.linspace(0.0, np.pi, rows + 1)[1:-1]
    around = np.arange(columns) * (2.0 * np.pi / columns)
    ring = np.stack(
        [
            np.outer(np.sin(polar), np.cos(around)),
            np.outer(np.sin(polar), np.sin(around)),
            np.outer(np.cos(polar), np.ones(columns)),
        ],
        axis=-1,
    ).reshape(-1, 3)
    points = radius * np.concatenate([ring, [[0.0, 0.0, 1.0], [0.0, 0.0, -1.0]]])
    i, j = np.meshgrid(np.arange(rows - 2), np.arange(columns), indexing="ij")
    a, b = i * columns + j, i * columns + (j + 1) % columns
    c, d = a + columns, b + columns
    sides = np.concatenate([np.stack([a, c, d], -1).reshape(-1, 3), np.stack([a, d, b], -1).reshape(-1, 3)])
    column = np.arange(columns)
    after = (column + 1) % columns
    top, bottom = len(points) - 2, len(points) - 1
    last = (rows - 2) * columns
    caps = np.concatenate(
        [
            np.stack([np.full(columns, top), column, after], -1),
            np.stack([np.full(columns, bottom), last + after, last + column], -1),
        ]
    )
    return points, np.concatenate([sides, caps]).astype(np.int32)


def binary_stl(mesh: Mesh, header: bytes = b"a header") -> bytes:
    points, triangles = mesh
    facets = np.zeros(len(triangles), np.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("tag", "<u2")]))
    facets["corners"] = points[triangles]
    return header.ljust(80, b"\0") + struct.pack("<I", len(triangles)) + facets.tobytes()


def ascii_stl(mesh: Mesh, name: str = "shape") -> str:
    points, triangles = mesh
    lines = [f"solid {name}"]
    for triangle in points[triangles]:
        lines += ["facet normal 0 0 0", "outer loop"]
        lines += [f"vertex {x!r} {y!r} {z!r}" for x, y, z in triangle.tolist()]
        lines += ["endloop", "endfacet"]
    return "\n".join([*lines, f"endsolid {name}", ""])


def save(path: Path, mesh: Mesh) -> Path:
    path.write_bytes(binary_stl(mesh))
    return path


def signed_area(path: Points) -> float:
    """By the shoelace formula."""
    x, y = path[:, 0], path[:, 1]
    return float(np.sum(x * np.roll(y, -1) - np.roll(x, -1) * y) / 2.0)


def volume(mesh: Mesh) -> float:
    """By tetrahedra to the origin."""
    corners = mesh[0][mesh[1]]
    return float(np.sum(corners[:, 0] * np.cross(corners[:, 1], corners[:, 2])) / 6.0)
