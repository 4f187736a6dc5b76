// Part, Body, and the reports.

#include <cstdio>

#include "Arrays.h"
#include "Holders.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

// Above this a picture makes a notebook slow; svg() draws any.
constexpr std::size_t kMostPicturedInHtml = 30'000;

struct BodyHolder {
    std::shared_ptr<Part const> owner;
    Body const* body = nullptr;
};

IntakeSettings SettingsOf(std::optional<double> weld, double scale, bool heal) {
    IntakeSettings settings;
    settings.weld = weld;
    settings.scale = scale;
    settings.heal = heal;
    return settings;
}

template <class Make>
PartHolder TakeIn(IntakeSettings settings, py::object const& progress, Make&& make) {
    return DoLong(progress, "Reading", [&](Progress callback) {
        settings.progress = std::move(callback);
        return PartHolder{make(settings)};
    });
}

PartHolder NewPart(py::object const& givenPoints, py::object const& givenTriangles,
                   std::optional<double> weld, double scale, bool heal, py::object const& progress) {
    std::vector<Point3> const points = TakePoints(givenPoints);
    std::vector<Triangle> const triangles = TakeTriangles(givenTriangles, points.size());
    return TakeIn(SettingsOf(weld, scale, heal), progress,
                  [&](IntakeSettings const& settings) { return Part(points, triangles, settings); });
}

RepairReport Repair(PartHolder& holder, double fillHoles, bool outward, py::object const& progress) {
    Part part = holder.part;
    RepairReport const report = DoLong(progress, "Repairing", [&](Progress callback) {
        RepairSettings settings;
        settings.fillHoles = fillHoles;
        settings.outward = outward;
        settings.progress = std::move(callback);
        return part.Repair(settings);
    });
    holder.part = std::move(part);
    return report;
}

void Transform(PartHolder& holder, py::object const& matrix) {
    Placement const placement = TakePlacement(matrix);
    Part part = holder.part;
    {
        py::gil_scoped_release const release;
        part.Transform(placement);
    }
    holder.part = std::move(part);
}

py::list Split(PartHolder const& holder) {
    std::vector<Part> parts =
        DoAside(py::none(), "Splitting", [part = holder.part](Progress const&) { return part.Split(); });
    py::list list;
    for (Part& part : parts) list.append(PartHolder{std::move(part)});
    return list;
}

std::shared_ptr<Part const> WithBodies(PartHolder const& holder) {
    return DoAside(py::none(), "Dividing", [part = holder.Shared()](Progress const&) {
        part->Bodies();
        return part;
    });
}

py::list Bodies(PartHolder const& holder) {
    std::shared_ptr<Part const> const part = WithBodies(holder);
    py::list list;
    for (Body const& body : part->Bodies()) list.append(BodyHolder{part, &body});
    return list;
}

WriteReport Write(PartHolder const& holder, std::filesystem::path const& path, std::string const& format,
                  bool floats, py::object const& progress) {
    MeshWriteSettings settings;
    settings.format = Meaning(kMeshFormats, format, "format");
    settings.floats = floats;
    Part const part = holder.part;
    return DoLong(progress, "Writing", [&](Progress callback) {
        settings.progress = std::move(callback);
        return part.Write(path, settings);
    });
}

std::string PictureOfPart(Part const& part, std::string const& title, std::vector<std::uint32_t> colors) {
    return DoAside(py::none(), "Drawing", [part, title, colors = std::move(colors)](Progress const&) {
        PicturedMesh mesh;
        mesh.points = part.Points();
        mesh.triangles = part.Triangles();
        mesh.colors = colors;
        return PictureOf(std::span(&mesh, 1), title);
    });
}

py::str Svg(PartHolder const& holder, py::object const& title, py::object const& colors) {
    std::vector<std::uint32_t> taken;
    if (!colors.is_none()) taken = TakeColors(colors, holder.part.Triangles().size());
    return TextOf(PictureOfPart(holder.part, Title(title, holder.part.Name()), std::move(taken)));
}

std::string Row(char const* name, std::string const& value) {
    return std::string("<tr><th>") + name + "</th><td>" + varnet::EscapedMarkup(value) + "</td></tr>";
}

std::string Short(double value) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.6g", value);
    return text.data();
}

std::string SizeOf(Box3 const& box) {
    if (box.IsEmpty()) return "empty";
    return Short(box.max.x - box.min.x) + " x " + Short(box.max.y - box.min.y) + " x " +
           Short(box.max.z - box.min.z) + " mm";
}

py::str Html(PartHolder const& holder) {
    Part const part = holder.part;
    MeshMeasures const& measures = part.Measures();
    std::string html = "<table>" + Row("part", part.Name()) +
                       Row("facets", std::to_string(part.Triangles().size())) +
                       Row("size", SizeOf(measures.box)) + Row("volume", Short(measures.volume) + " mm³") +
                       Row("area", Short(measures.area) + " mm²") +
                       Row("open edges", std::to_string(measures.openEdges)) + "</table>";
    if (part.Triangles().size() <= kMostPicturedInHtml) html += PictureOfPart(part, part.Name(), {});
    return TextOf(html);
}

py::str Repr(PartHolder const& holder) {
    MeshMeasures const& measures = holder.part.Measures();
    return TextOf(
        "<varnet.Part '" + holder.part.Name() + "': " + std::to_string(holder.part.Triangles().size()) +
        " facets, " + SizeOf(measures.box) +
        (measures.openEdges == 0 ? ", closed>" : ", " + std::to_string(measures.openEdges) + " open edges>"));
}

py::module_ Trimesh() {
    try {
        return py::module_::import("trimesh");
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_ImportError)) throw;
        throw py::import_error("this needs the package trimesh, which is not installed: pip install trimesh");
    }
}

void AddReports(py::module_& module) {
    RecordClass<IntakeReport>(module, "IntakeReport")
        .Add("facets_in_file", &IntakeReport::facetsInFile)
        .Add("facets_read", &IntakeReport::facetsRead)
        .Add("not_finite", &IntakeReport::notFinite)
        .Add("degenerate", &IntakeReport::degenerate)
        .Add("doubled", &IntakeReport::doubled)
        .Add("collinear_turned", &IntakeReport::collinearTurned)
        .Add("collinear_left", &IntakeReport::collinearLeft)
        .Add("split", &IntakeReport::split)
        .Add("welded", &IntakeReport::welded)
        .Add("weld_tolerance", &IntakeReport::weldTolerance)
        .Add("many_facet_edges", &IntakeReport::manyFacetEdges)
        .Add("open_edges_exact", &IntakeReport::openEdgesExact)
        .Add("open_edges", &IntakeReport::openEdges)
        .Add("notes", &IntakeReport::notes);
    RecordClass<RepairReport>(module, "RepairReport")
        .Add("turned", &RepairReport::turned)
        .Add("doubled", &RepairReport::doubled)
        .Add("split", &RepairReport::split)
        .Add("open_edges_before", &RepairReport::openEdgesBefore)
        .Add("open_edges_after", &RepairReport::openEdgesAfter)
        .Add("holes_filled", &RepairReport::holesFilled)
        .Add("facets_added", &RepairReport::facetsAdded)
        .Add("bodies_turned", &RepairReport::bodiesTurned)
        .Add("holes_left", &RepairReport::holesLeft)
        .Add("notes", &RepairReport::notes);
    RecordClass<WriteReport>(module, "WriteReport")
        .Add("facets_before", &WriteReport::facetsBefore)
        .Add("facets_after", &WriteReport::facetsAfter)
        .Add("open_edges_before", &WriteReport::openEdgesBefore)
        .Add("open_edges_after", &WriteReport::openEdgesAfter)
        .Add("volume_before", &WriteReport::volumeBefore)
        .Add("volume_after", &WriteReport::volumeAfter)
        .Add("largest_error", &WriteReport::largestError);
}

void AddBody(py::module_& module) {
    auto body = NewClass<BodyHolder>(module, "Body");
    auto const add = [&body](char const* name, auto getter) {
        body.def_property_readonly(name, getter, Doc(std::string("Body.") + name));
    };
    add("points", [](BodyHolder const& b) { return View(b.owner, b.body->Points()); });
    add("triangles", [](BodyHolder const& b) { return View(b.owner, b.body->Triangles()); });
    add("box", [](BodyHolder const& b) { return ArrayOf(b.body->Measures().box); });
    add("area", [](BodyHolder const& b) { return b.body->Measures().area; });
    add("volume", [](BodyHolder const& b) { return b.body->Measures().volume; });
    add("open_edges", [](BodyHolder const& b) { return b.body->Measures().openEdges; });
    add("is_cavity", [](BodyHolder const& b) { return b.body->IsCavity(); });
    add("is_inside_out", [](BodyHolder const& b) { return b.body->IsInsideOut(); });
    add("enclosing", [](BodyHolder const& b) { return b.body->Enclosing(); });
}

}  // namespace

void AddPart(py::module_& module) {
    using py::arg;
    AddReports(module);
    AddBody(module);
    auto part = NewClass<PartHolder, std::shared_ptr<PartHolder>>(module, "Part");
    auto const add = [&part](char const* name, auto getter) {
        part.def_property_readonly(name, getter, Doc(std::string("Part.") + name));
    };
    part.def(py::init(&NewPart), Doc("Part.__init__"), arg("points"), arg("triangles"), py::kw_only(),
             arg("weld") = py::none(), arg("scale") = 1.0, arg("heal") = true, arg("progress") = py::none());
    add("name", [](PartHolder const& h) { return TextOf(h.part.Name()); });
    add("header", [](PartHolder const& h) { return TextOf(h.part.Header()); });
    add("format", [](PartHolder const& h) { return NameOf(h.part.Format()); });
    add("points", [](PartHolder const& h) { return View(h.Shared(), h.part.Points()); });
    add("triangles", [](PartHolder const& h) { return View(h.Shared(), h.part.Triangles()); });
    add("report", [](PartHolder const& h) { return h.part.Report(); });
    add("box", [](PartHolder const& h) { return ArrayOf(h.part.Measures().box); });
    add("area", [](PartHolder const& h) { return h.part.Measures().area; });
    add("volume", [](PartHolder const& h) { return h.part.Measures().volume; });
    add("open_edges", [](PartHolder const& h) { return h.part.Measures().openEdges; });
    add("bodies", &Bodies);
    part.def("repair", &Repair, Doc("Part.repair"), py::kw_only(), arg("fill_holes") = 0.0,
             arg("outward") = false, arg("progress") = py::none());
    part.def("transform", &Transform, Doc("Part.transform"), arg("matrix"));
    part.def("split", &Split, Doc("Part.split"));
    part.def("write", &Write, Doc("Part.write"), arg("path"), arg("format") = "binary", py::kw_only(),
             arg("floats") = false, arg("progress") = py::none());
    part.def("svg", &Svg, Doc("Part.svg"), py::kw_only(), arg("title") = py::none(),
             arg("colors") = py::none());
    part.def(
        "to_trimesh",
        [](py::object const& self) {
            py::module_ const numpy = py::module_::import("numpy");
            return Trimesh().attr("Trimesh")(arg("vertices") = numpy.attr("array")(self.attr("points")),
                                             arg("faces") = numpy.attr("array")(self.attr("triangles")),
                                             arg("process") = false);
        },
        Doc("Part.to_trimesh"));
    part.def_static(
        "from_trimesh",
        [](py::object const& mesh) {
            Trimesh();
            return NewPart(mesh.attr("vertices"), mesh.attr("faces"), std::nullopt, 1.0, true, py::none());
        },
        Doc("Part.from_trimesh"), arg("mesh"));
    part.def("_repr_html_", &Html);
    part.def("__repr__", &Repr);
    module.def(
        "read",
        [](std::filesystem::path const& path, std::optional<double> weld, double scale, bool heal,
           py::object const& progress) {
            return TakeIn(SettingsOf(weld, scale, heal), progress,
                          [&](IntakeSettings const& settings) { return Part::Read(path, settings); });
        },
        Doc("read"), arg("path"), py::kw_only(), arg("weld") = py::none(), arg("scale") = 1.0,
        arg("heal") = true, arg("progress") = py::none());
}

}  // namespace varnet::python
