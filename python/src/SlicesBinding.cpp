// Slicing and ordering: iterators of layers.

#include "Holders.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

constexpr std::pair<char const*, SolidRule> kSolidRules[] = {{"winding", SolidRule::kWinding},
                                                             {"odd", SolidRule::kOdd}};
constexpr std::pair<char const*, NextPath> kNextPaths[] = {
    {"nearest", NextPath::kNearest}, {"farthest", NextPath::kFarthest}, {"random", NextPath::kRandom}};

std::shared_ptr<Layer> Shared(Layer&& layer) { return std::make_shared<Layer>(std::move(layer)); }

// What is sliced lives as long as its slicer.
struct Sliced {
    std::vector<Part> parts;
    std::vector<std::shared_ptr<Supports const>> supports;
};

std::vector<SlicerInput> InputsOf(Sliced const& sliced) {
    std::vector<SlicerInput> inputs = SlicerInputs(sliced.parts);
    for (std::shared_ptr<Supports const> const& supports : sliced.supports) {
        for (SlicerInput const& input : SlicerInputs({}, std::span(supports.get(), 1)))
            inputs.push_back(input);
    }
    return inputs;
}

// Goes once through the layers, as an iterator of Python does.
class Slices {
public:
    Slices(Sliced sliced, SliceSettings settings, py::object const& progress)
        : m_Sliced(std::move(sliced)), m_Waiter(std::in_place, progress, "Slicing") {
        settings.progress = [this](double share) { return !m_Waiter.has_value() || m_Waiter->Tell(share); };
        // Bodies are made here, which takes a while and asks nobody.
        DoAside(py::none(), "Dividing", [parts = m_Sliced.parts](Progress const&) {
            for (Part const& part : parts) part.AsSliced().Bodies();
            return true;
        });
        Guarded([&] { m_Slicer.emplace(InputsOf(m_Sliced), settings); });
        m_Left = m_Slicer->LastLayer() - m_Slicer->FirstLayer() + 1;
    }

    std::shared_ptr<Layer> Next() {
        Busy const busy(m_Busy);
        std::optional<Layer> layer;
        if (!m_Ended) Guarded([&] { layer = m_Slicer->NextLayer(); });
        if (!layer.has_value()) {
            m_Ended = true;
            m_Left = 0;
            m_Waiter.reset();
            throw py::stop_iteration();
        }
        --m_Left;
        m_Report = m_Slicer->Report();
        return Shared(std::move(*layer));
    }

    std::shared_ptr<Layer> At(std::int32_t number) const {
        py::gil_scoped_release const release;
        return Shared(m_Slicer->LayerAt(number));
    }

    std::int32_t LayerCount() const { return m_Slicer->LayerCount(); }
    auto Range() const {
        return std::tuple(m_Slicer->FirstLayer(), m_Slicer->LastLayer(), m_Slicer->LayerCount());
    }
    SliceReport const& Report() const { return m_Report; }
    std::int32_t Left() const { return m_Left; }

private:
    // Work of the slicer, without Python's lock; after an error nothing comes any more.
    template <class Work>
    void Guarded(Work&& work) {
        try {
            py::gil_scoped_release const release;
            work();
        } catch (...) {
            m_Ended = true;
            m_Left = 0;
            if (m_Waiter.has_value()) m_Waiter->ThrowIfStopped();
            throw;
        }
    }

    Sliced m_Sliced;
    std::optional<Waiter> m_Waiter;
    std::optional<Slicer> m_Slicer;
    SliceReport m_Report;
    std::int32_t m_Left = 0;
    bool m_Ended = false;
    bool m_Busy = false;
};

// One of a class, or an iterable of them.
template <class Holder, class Take>
void ForEach(py::object const& given, Take&& take) {
    if (py::isinstance<Holder>(given)) return take(given.cast<Holder const&>());
    for (py::handle const one : given) take(one.cast<Holder const&>());
}

std::unique_ptr<Slices> Slice(py::object const& parts, double layer, double hatch, double angle,
                              double tolerance, std::string const& rule, double close,
                              std::optional<std::pair<std::int32_t, std::int32_t>> const& layers,
                              std::optional<std::pair<std::int32_t, std::int32_t>> const& shard,
                              py::object const& supports, int threads, py::object const& progress) {
    SliceSettings settings;
    settings.layer = layer;
    settings.hatch = hatch;
    settings.angle = angle;
    settings.tolerance = tolerance;
    settings.rule = Meaning(kSolidRules, rule, "rule");
    settings.close = close;
    settings.threads = threads;
    if (layers.has_value()) {
        if (layers->first < 1 || layers->second < layers->first)
            ThrowArgument("layers are a first and a last number, counted from 1");
        settings.firstLayer = layers->first;
        settings.lastLayer = layers->second;
    }
    if (shard.has_value()) {
        if (shard->first < 1 || shard->second < shard->first)
            ThrowArgument("a shard is its number, from 1 on, and the number of shards");
        settings.shard = shard->first;
        settings.shards = shard->second;
    }
    Sliced sliced;
    ForEach<PartHolder>(parts, [&](PartHolder const& holder) { sliced.parts.push_back(holder.part); });
    ForEach<SupportsHolder>(
        supports, [&](SupportsHolder const& holder) { sliced.supports.push_back(holder.supports); });
    return std::make_unique<Slices>(std::move(sliced), settings, progress);
}

// Puts in order what another iterator gives.
class Ordered {
public:
    Ordered(py::object const& layers, OrderSettings const& settings, std::optional<SliceMode> mode)
        : m_Source(py::iter(layers)), m_Order(settings), m_Mode(mode) {}

    std::shared_ptr<Layer> Next() {
        Busy const busy(m_Busy);
        py::object const next = py::reinterpret_steal<py::object>(PyIter_Next(m_Source.ptr()));
        if (!next) {
            if (PyErr_Occurred() != nullptr) throw py::error_already_set();
            throw py::stop_iteration();
        }
        auto const given = next.cast<std::shared_ptr<Layer>>();
        std::shared_ptr<Layer> layer;
        {
            py::gil_scoped_release const release;
            layer = Shared(m_Mode.has_value() ? AsStored(*given, *m_Mode) : Layer(*given));
            m_Order.Order(*layer);
        }
        m_Before = m_Order.Before();
        m_After = m_Order.After();
        return layer;
    }

    py::object LengthHint() const { return py::module_::import("operator").attr("length_hint")(m_Source); }
    Travel const& Before() const { return m_Before; }
    Travel const& After() const { return m_After; }

private:
    py::object m_Source;
    PathOrder m_Order;
    std::optional<SliceMode> m_Mode;
    Travel m_Before;
    Travel m_After;
    bool m_Busy = false;
};

std::unique_ptr<Ordered> Order(py::object const& layers, bool splice, std::string const& contours,
                               std::string const& fill, double width, double cut,
                               std::pair<double, double> start, unsigned seed,
                               std::optional<std::string> const& mode) {
    OrderSettings settings;
    settings.splice = splice;
    settings.contours = Meaning(kNextPaths, contours, "contours");
    settings.fill = Meaning(kNextPaths, fill, "fill");
    settings.width = width;
    settings.cut = cut;
    settings.start = {start.first, start.second};
    settings.seed = seed;
    std::optional<SliceMode> stored;
    if (mode.has_value()) stored = Meaning(kSliceModes, *mode, "mode");
    return std::make_unique<Ordered>(layers, settings, stored);
}

void AddSliceReport(py::module_& module) {
    RecordClass<SliceReport>(module, "SliceReport")
        .Add("layers", &SliceReport::layers)
        .Add("contours", &SliceReport::contours)
        .Add("open_paths", &SliceReport::openPaths)
        .Add("layers_with_open_paths", &SliceReport::layersWithOpenPaths)
        .Add("longest_gap", &SliceReport::longestGap)
        .Add("missing_volume", &SliceReport::missingVolume)
        .Add("gaps_closed", &SliceReport::gapsClosed)
        .Add("longest_gap_closed", &SliceReport::longestGapClosed)
        .Add("points", &SliceReport::points)
        .Add("strokes", &SliceReport::strokes)
        .Add("support_strokes", &SliceReport::supportStrokes)
        .Add("contour_length", &SliceReport::contourLength)
        .Add("volume", &SliceReport::volume)
        .Add("mesh_volume", &SliceReport::meshVolume)
        .Add("skipped_facets", &SliceReport::skippedFacets);
}

}  // namespace

void AddSlices(py::module_& module) {
    using py::arg;
    AddSliceReport(module);
    NewClass<Slices>(module, "Slices")
        .def_property_readonly("layer_count", &Slices::LayerCount, Doc("Slices.layer_count"))
        .def_property_readonly("range", &Slices::Range, Doc("Slices.range"))
        .def_property_readonly(
            "report", [](Slices const& slices) { return slices.Report(); }, Doc("Slices.report"))
        .def("at", &Slices::At, Doc("Slices.at"), arg("number"))
        .def("__iter__", [](py::object const& self) { return self; })
        .def("__next__", &Slices::Next)
        .def("__len__", &Slices::Left, Doc("Slices.__len__"));
    module.def("slice", &Slice, Doc("slice"), arg("parts"), py::kw_only(), arg("layer") = 0.2,
               arg("hatch") = 0.5, arg("angle") = 45.0, arg("tolerance") = 0.01, arg("rule") = "winding",
               arg("close") = 0.05, arg("layers") = py::none(), arg("shard") = py::none(),
               arg("supports") = py::tuple(), arg("threads") = 1, arg("progress") = py::none());

    auto const pairOf = [](Travel const& travel) { return std::pair(travel.length, travel.starts); };
    NewClass<Ordered>(module, "Ordered")
        .def_property_readonly(
            "before", [pairOf](Ordered const& ordered) { return pairOf(ordered.Before()); },
            Doc("Ordered.before"))
        .def_property_readonly(
            "after", [pairOf](Ordered const& ordered) { return pairOf(ordered.After()); },
            Doc("Ordered.after"))
        .def("__iter__", [](py::object const& self) { return self; })
        .def("__next__", &Ordered::Next)
        .def("__length_hint__", &Ordered::LengthHint, Doc("Ordered.__length_hint__"));
    module.def("order", &Order, Doc("order"), arg("layers"), py::kw_only(), arg("splice") = false,
               arg("contours") = "nearest", arg("fill") = "nearest", arg("width") = 0.5, arg("cut") = 0.0,
               arg("start") = std::pair(0.0, 0.0), arg("seed") = 1u, arg("mode") = py::none());
}

}  // namespace varnet::python
