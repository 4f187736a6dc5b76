// Layer.

#include <cmath>

#include "Arrays.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

using SharedLayer = std::shared_ptr<Layer const>;

// One value for all, or one for each.
template <class Value>
std::vector<Value> OneEach(py::object const& given, std::size_t count, char const* name) {
    if (!py::isinstance<py::sequence>(given) && !py::isinstance<py::array>(given))
        return std::vector<Value>(count, given.cast<Value>());
    std::vector<Value> values;
    for (py::handle const value : given) values.push_back(value.cast<Value>());
    if (values.size() != count) {
        ThrowArgument(std::string(name) + ": there are " + std::to_string(values.size()) + " for " +
                      std::to_string(count));
    }
    return values;
}

void AddContours(Layer& layer, py::sequence const& contours, py::object const& closed, py::object const& id) {
    std::vector<bool> const closedOnes = OneEach<bool>(closed, contours.size(), "closed");
    std::vector<std::int32_t> const ids = OneEach<std::int32_t>(id, contours.size(), "id");
    for (std::size_t i = 0; i < contours.size(); ++i) {
        std::string const name = "contour " + std::to_string(i);
        std::vector<Point2> const path = TakePath(contours[i], name);
        Contour contour;
        contour.closed = closedOnes[i];
        contour.id = ids[i];
        if (path.size() < (contour.closed ? 3u : 2u))
            ThrowArgument(name + " has only " + std::to_string(path.size()) + " points");
        contour.level = contour.closed && SignedArea(path) < 0.0 ? 1 : 0;
        layer.AddContour(path, contour);
    }
}

SharedLayer NewLayer(double z, py::sequence const& contours, py::object const& closed, py::object const& id,
                     py::sequence const& chains, py::object const& chainIds, std::int32_t number) {
    auto const layer = std::make_shared<Layer>();
    if (!std::isfinite(z)) ThrowArgument("z is not finite");
    layer->number = number;
    layer->z = z;
    layer->cutHeight = z;
    AddContours(*layer, contours, closed, id);
    std::vector<std::int32_t> ids(chains.size(), kFillId);
    if (!chainIds.is_none()) ids = OneEach<std::int32_t>(chainIds, chains.size(), "chain_ids");
    for (std::size_t i = 0; i < chains.size(); ++i)
        layer->AddChain(TakeStrokes(chains[i], "chain " + std::to_string(i)), ids[i]);
    return layer;
}

py::array Points(SharedLayer const& layer) { return View(layer, std::span(layer->points)); }
py::array Strokes(SharedLayer const& layer) { return View(layer, std::span(layer->strokes)); }

py::array Offsets(SharedLayer const& layer, std::vector<std::size_t> const& offsets) {
    return View(layer, offsets.data(), {Rows(offsets.size())});
}

// One field of all contours, as it lies between the others.
template <class Value>
py::array Column(SharedLayer const& layer, Value Contour::*field) {
    std::vector<Contour> const& all = layer->contours;
    return View(layer, all.empty() ? nullptr : &(all[0].*field), {Rows(all.size())},
                {static_cast<py::ssize_t>(sizeof(Contour))});
}

py::str Svg(SharedLayer const& layer, py::object const& title) {
    return TextOf(DoAside(py::none(), "Drawing",
                          [layer, text = Title(title, "layer " + std::to_string(layer->number))](
                              Progress const&) { return PictureOf(*layer, text); }));
}

}  // namespace

void AddLayer(py::module_& module) {
    using py::arg;
    // A layer does not change, so that Python and views share it.
    auto type = NewClass<Layer, std::shared_ptr<Layer>>(module, "Layer");
    auto const add = [&type](char const* name, auto getter) {
        type.def_property_readonly(name, getter, Doc(std::string("Layer.") + name));
    };
    type.def(
        py::init([](double z, py::sequence const& contours, py::object const& closed, py::object const& id,
                    py::sequence const& chains, py::object const& chainIds, std::int32_t number) {
            return std::const_pointer_cast<Layer>(
                NewLayer(z, contours, closed, id, chains, chainIds, number));
        }),
        Doc("Layer.__init__"), arg("z"), arg("contours") = py::tuple(), py::kw_only(), arg("closed") = true,
        arg("id") = 1, arg("chains") = py::tuple(), arg("chain_ids") = py::none(), arg("number") = 1);
    add("number", [](Layer const& layer) { return layer.number; });
    add("z", [](Layer const& layer) { return layer.z; });
    add("cut_height", [](Layer const& layer) { return layer.cutHeight; });
    add("points", [](std::shared_ptr<Layer> const& layer) { return Points(layer); });
    add("offsets", [](std::shared_ptr<Layer> const& layer) { return Offsets(layer, layer->offsets); });
    add("contours",
        [](std::shared_ptr<Layer> const& layer) { return Pieces(Points(layer), layer->offsets); });
    add("closed", [](std::shared_ptr<Layer> const& layer) { return Column(layer, &Contour::closed); });
    add("parent", [](std::shared_ptr<Layer> const& layer) { return Column(layer, &Contour::parent); });
    add("level", [](std::shared_ptr<Layer> const& layer) { return Column(layer, &Contour::level); });
    add("id", [](std::shared_ptr<Layer> const& layer) { return Column(layer, &Contour::id); });
    add("strokes", [](std::shared_ptr<Layer> const& layer) { return Strokes(layer); });
    add("chain_offsets",
        [](std::shared_ptr<Layer> const& layer) { return Offsets(layer, layer->chainOffsets); });
    add("chain_ids", [](std::shared_ptr<Layer> const& layer) {
        return View(layer, layer->chainIds.data(), {Rows(layer->chainIds.size())});
    });
    add("chains",
        [](std::shared_ptr<Layer> const& layer) { return Pieces(Strokes(layer), layer->chainOffsets); });
    add("area", &Layer::Area);
    add("contour_length", &Layer::ContourLength);
    add("stroke_length", &Layer::StrokeLength);
    add("box", [](Layer const& layer) { return ArrayOf(layer.Box()); });
    type.def(
        "svg", [](std::shared_ptr<Layer> const& layer, py::object const& title) { return Svg(layer, title); },
        Doc("Layer.svg"), py::kw_only(), arg("title") = py::none());
    type.def("_repr_svg_", [](std::shared_ptr<Layer> const& layer) { return Svg(layer, py::none()); });
    type.def(
        "__eq__", [](Layer const& a, Layer const& b) { return a == b; }, py::is_operator());
    type.attr("__hash__") = py::none();
    type.def("__repr__", [](Layer const& layer) {
        return "<varnet.Layer " + std::to_string(layer.number) + " at " +
               std::string(py::str(py::float_(layer.z))) + " mm: " + std::to_string(layer.ContourCount()) +
               " contours, " + std::to_string(layer.strokes.size()) + " strokes>";
    });
}

}  // namespace varnet::python
