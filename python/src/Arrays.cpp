#include "Arrays.h"

#include <bit>
#include <cmath>
#include <limits>

namespace varnet::python {

static_assert(sizeof(Point2) == 2 * sizeof(double) && sizeof(Point3) == 3 * sizeof(double));
static_assert(sizeof(Stroke) == 4 * sizeof(double) && sizeof(Triangle) == 3 * sizeof(std::int32_t));

namespace {

double const* NumbersOf(void const* first) { return static_cast<double const*>(first); }

template <class Box, std::size_t N>
py::array BoxArray(Box const& box) {
    auto const owner = std::make_shared<Box const>(box);
    return View(owner, NumbersOf(owner.get()), {2, static_cast<py::ssize_t>(N)});
}

std::string ShapeOf(py::array const& array) {
    std::string text = "(";
    for (py::ssize_t i = 0; i < array.ndim(); ++i)
        text += (i == 0 ? "" : ", ") + std::to_string(array.shape(i));
    return text + (array.ndim() == 1 ? ",)" : ")");
}

// Given values as an array of a kind that numpy's letters name, of the shape (n, ...). An empty one may have
// any shape and any kind.
template <class Value>
py::array_t<Value> Take(py::object const& given, std::string const& name, char const* kinds,
                        char const* meant, std::vector<py::ssize_t> const& row, char const* shape) {
    py::array const array = py::module_::import("numpy").attr("asarray")(given);
    if (array.size() == 0) return py::array_t<Value>(0);
    if (std::string_view(kinds).find(array.dtype().kind()) == std::string_view::npos) {
        ThrowArgument(name + " must be " + meant + ", and not " +
                      std::string(py::str(static_cast<py::object>(array.dtype()))));
    }
    bool fits = array.ndim() == static_cast<py::ssize_t>(row.size()) + 1;
    for (std::size_t i = 0; fits && i < row.size(); ++i)
        fits = array.shape(static_cast<py::ssize_t>(i) + 1) == row[i];
    if (!fits) ThrowArgument(name + " must have the shape " + shape + ", and not " + ShapeOf(array));
    return py::array_t<Value, py::array::c_style | py::array::forcecast>(array);
}

py::array_t<double> TakeNumbers(py::object const& given, std::string const& name,
                                std::vector<py::ssize_t> const& row, char const* shape) {
    return Take<double>(given, name, "fiuO", "numbers", row, shape);
}

// Rows of finite numbers, as structs of them. The copy is what is checked: another thread may write to the
// array meanwhile.
template <class Struct>
std::vector<Struct> CopyRows(py::array_t<double> const& array, std::string const& name) {
    constexpr std::size_t kWidth = sizeof(Struct) / sizeof(double);
    std::vector<Struct> copy(static_cast<std::size_t>(array.size()) / kWidth);
    double const* from = array.data();
    py::gil_scoped_release const release;
    for (std::size_t i = 0; i < copy.size(); ++i) {
        std::array<double, kWidth> values;
        for (double& value : values) value = *from++;
        for (double const value : values) {
            if (!std::isfinite(value)) ThrowArgument(name + ": row " + std::to_string(i) + " is not finite");
        }
        copy[i] = std::bit_cast<Struct>(values);
    }
    return copy;
}

}  // namespace

py::array View(std::shared_ptr<void const> owner, std::span<Point2 const> points) {
    return View(std::move(owner), NumbersOf(points.data()), {Rows(points.size()), 2});
}

py::array View(std::shared_ptr<void const> owner, std::span<Point3 const> points) {
    return View(std::move(owner), NumbersOf(points.data()), {Rows(points.size()), 3});
}

py::array View(std::shared_ptr<void const> owner, std::span<Triangle const> triangles) {
    return View(std::move(owner), triangles.empty() ? nullptr : triangles.data()->data(),
                {Rows(triangles.size()), 3});
}

py::array View(std::shared_ptr<void const> owner, std::span<Stroke const> strokes) {
    return View(std::move(owner), NumbersOf(strokes.data()), {Rows(strokes.size()), 2, 2});
}

py::list Pieces(py::array const& array, std::span<std::size_t const> offsets) {
    std::vector<py::ssize_t> shape(array.shape(), array.shape() + array.ndim());
    std::vector<py::ssize_t> const strides(array.strides(), array.strides() + array.ndim());
    py::dtype const type = array.dtype();
    auto const* const first = static_cast<char const*>(array.data());
    py::list list(offsets.size() - 1);
    for (std::size_t i = 0; i + 1 < offsets.size(); ++i) {
        shape[0] = Rows(offsets[i + 1] - offsets[i]);
        // A view takes the flags of its base, read-only too.
        list[i] = py::array(type, shape, strides, first + Rows(offsets[i]) * strides[0], array);
    }
    return list;
}

py::array ArrayOf(Box2 const& box) { return BoxArray<Box2, 2>(box); }
py::array ArrayOf(Box3 const& box) { return BoxArray<Box3, 3>(box); }

std::vector<Point3> TakePoints(py::object const& given) {
    std::vector<Point3> points = CopyRows<Point3>(TakeNumbers(given, "points", {3}, "(n, 3)"), "points");
    if (points.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        ThrowArgument("points: there are more than 2147483647");
    return points;
}

std::vector<Triangle> TakeTriangles(py::object const& given, std::size_t pointCount) {
    py::array_t<std::int64_t> const array =
        Take<std::int64_t>(given, "triangles", "iu", "integers", {3}, "(m, 3)");
    std::vector<Triangle> copy(static_cast<std::size_t>(array.size()) / 3);
    std::int64_t const* from = array.data();
    py::gil_scoped_release const release;
    for (std::size_t i = 0; i < copy.size(); ++i) {
        for (std::int32_t& corner : copy[i]) {
            std::int64_t const index = *from++;
            if (index < 0 || index >= static_cast<std::int64_t>(pointCount)) {
                ThrowArgument("triangles: row " + std::to_string(i) + " has the index " +
                              std::to_string(index) + ", and there are " + std::to_string(pointCount) +
                              " points");
            }
            corner = static_cast<std::int32_t>(index);
        }
    }
    return copy;
}

std::vector<Point2> TakePath(py::object const& given, std::string const& name) {
    return CopyRows<Point2>(TakeNumbers(given, name, {2}, "(k, 2)"), name);
}

std::vector<Stroke> TakeStrokes(py::object const& given, std::string const& name) {
    return CopyRows<Stroke>(TakeNumbers(given, name, {2, 2}, "(k, 2, 2)"), name);
}

std::vector<std::uint32_t> TakeColors(py::object const& given, std::size_t triangleCount) {
    py::array_t<std::int64_t> const array = Take<std::int64_t>(given, "colors", "iu", "integers", {}, "(m,)");
    if (static_cast<std::size_t>(array.size()) != triangleCount) {
        ThrowArgument("colors: there are " + std::to_string(array.size()) + " for " +
                      std::to_string(triangleCount) + " triangles");
    }
    std::vector<std::uint32_t> colors;
    for (py::ssize_t i = 0; i < array.size(); ++i) {
        std::int64_t const color = array.data()[i];
        if (color < 0 || color > 0xFFFFFF)
            ThrowArgument("colors: row " + std::to_string(i) + " is not from 0 to 0xFFFFFF");
        colors.push_back(static_cast<std::uint32_t>(color));
    }
    return colors;
}

Placement TakePlacement(py::object const& given) {
    py::array_t<double> const array = TakeNumbers(given, "matrix", {4}, "(3, 4) or (4, 4)");
    auto const rows = array.ndim() == 2 ? static_cast<std::size_t>(array.shape(0)) : 0;
    if (rows != 3 && rows != 4) ThrowArgument("matrix must have the shape (3, 4) or (4, 4)");
    Placement placement;
    for (std::size_t i = 0; i < rows; ++i) {
        for (std::size_t k = 0; k < 4; ++k) {
            double const value = array.data()[4 * i + k];
            if (i < 3) {
                placement.rows[i][k] = value;
            } else if (value != (k == 3 ? 1.0 : 0.0)) {
                ThrowArgument("matrix: row 3 must be 0 0 0 1");
            }
        }
    }
    return placement;
}

}  // namespace varnet::python
