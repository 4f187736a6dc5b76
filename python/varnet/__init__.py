"""From a part to a slice file: the kit's classes, with NumPy arrays.

    part = varnet.read("bracket.stl")
    part.repair(fill_holes=20.0)
    varnet.write_slices("bracket.cli", varnet.slice(part, layer=0.2))

Lengths are in millimetres, angles in degrees. Arrays are views of what the objects hold: they are read-only,
cost nothing, and keep what they look at alive. Long calls let other threads run, and end on Ctrl-C.
"""

from ._varnet import (
    ArgumentError,
    Body,
    Cancelled,
    Error,
    FileError,
    HangingEdge,
    IntakeReport,
    Layer,
    Ordered,
    Overhang,
    Part,
    RepairReport,
    SliceFile,
    SliceFileReport,
    SliceReport,
    Slices,
    SliceWriter,
    Supports,
    Surfaces,
    View,
    WriteReport,
    __version__,
    join_slices,
    order,
    read,
    slice,
    view,
    write_slices,
)

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
