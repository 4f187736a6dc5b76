#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Binding.h"

// Arrays out and in.

namespace varnet::python {

/// A read-only view of values that the owner holds, which lives as long as the view. Strides in bytes;
/// without them the values lie one behind the other.
template <class Value>
py::array View(std::shared_ptr<void const> owner, Value const* values, std::vector<py::ssize_t> shape,
               std::vector<py::ssize_t> strides = {}) {
    py::capsule const base(new std::shared_ptr<void const>(std::move(owner)),
                           [](void* place) { delete static_cast<std::shared_ptr<void const>*>(place); });
    py::array array(py::dtype::of<Value>(), std::move(shape), std::move(strides), values, base);
    py::detail::array_proxy(array.ptr())->flags &= ~py::detail::npy_api::NPY_ARRAY_WRITEABLE_;
    return array;
}

inline py::ssize_t Rows(std::size_t count) { return static_cast<py::ssize_t>(count); }

/// (n, 2), (n, 3) of coordinates, (m, 3) of indexes, (m, 2, 2) of strokes.
py::array View(std::shared_ptr<void const> owner, std::span<Point2 const> points);
py::array View(std::shared_ptr<void const> owner, std::span<Point3 const> points);
py::array View(std::shared_ptr<void const> owner, std::span<Triangle const> triangles);
py::array View(std::shared_ptr<void const> owner, std::span<Stroke const> strokes);

/// Rows from one offset up to the next, each as a view of the array.
py::list Pieces(py::array const& array, std::span<std::size_t const> offsets);

/// The lowest and the highest corner: (2, 2) or (2, 3).
py::array ArrayOf(Box2 const& box);
py::array ArrayOf(Box3 const& box);

/// Copies of what Python gave, checked. Throw an Error of kind kArgument that names the row, beginning with
/// `name`.
std::vector<Point3> TakePoints(py::object const& given);
std::vector<Triangle> TakeTriangles(py::object const& given, std::size_t pointCount);
std::vector<Point2> TakePath(py::object const& given, std::string const& name);
std::vector<Stroke> TakeStrokes(py::object const& given, std::string const& name);
std::vector<std::uint32_t> TakeColors(py::object const& given, std::size_t triangleCount);
Placement TakePlacement(py::object const& given);

}  // namespace varnet::python
