// Supports and Surfaces of a part.

#include "Arrays.h"
#include "Holders.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

constexpr std::pair<char const*, SurfaceRule> kSurfaceRules[] = {
    {"normals", SurfaceRule::kNormals}, {"octants", SurfaceRule::kOctants}, {"shells", SurfaceRule::kShells}};
constexpr std::uint32_t kGrey = 0xC0C0C0;
constexpr std::uint32_t kSolidColor = 0xE8A040;

struct OverhangHolder {
    std::shared_ptr<Supports const> owner;
    Overhang const* overhang = nullptr;
};
struct EdgeHolder {
    std::shared_ptr<Supports const> owner;
    HangingEdge const* edge = nullptr;
};

SupportsHolder MakeSupports(PartHolder const& holder, SupportSettings settings, py::object const& progress) {
    return DoAside(progress, "Building support",
                   [part = holder.part, settings](Progress const& callback) mutable {
                       settings.progress = callback;
                       return SupportsHolder{part, std::make_shared<Supports const>(part, settings)};
                   });
}

SurfacesHolder MakeSurfaces(PartHolder const& holder, std::string const& word, py::object const& progress) {
    SurfaceRule const rule = Meaning(kSurfaceRules, word, "rule");
    return DoAside(progress, "Dividing", [part = holder.part, rule](Progress const& callback) {
        return SurfacesHolder{std::make_shared<Surfaces const>(part, rule, callback)};
    });
}

py::str Svg(SupportsHolder const& holder) {
    return TextOf(DoAside(py::none(), "Drawing", [holder](Progress const&) {
        std::vector<PicturedMesh> meshes(1);
        meshes[0].points = holder.part.Points();
        meshes[0].triangles = holder.part.Triangles();
        for (SupportSolid const& solid : holder.supports->Solids()) {
            PicturedMesh& mesh = meshes.emplace_back();
            mesh.points = solid.points;
            mesh.triangles = solid.triangles;
            mesh.color = kSolidColor;
            mesh.opacity = 0.35;
        }
        return PictureOf(meshes, holder.part.Name());
    }));
}

// A colour for each triangle of the part.
py::array Colors(SurfacesHolder const& holder) {
    auto const colors = std::make_shared<std::vector<std::uint32_t>>();
    for (std::int32_t const surface : holder.surfaces->ofTriangle)
        colors->push_back(surface < 0 ? kGrey
                                      : holder.surfaces->all[static_cast<std::size_t>(surface)].color);
    return View(colors, colors->data(), {Rows(colors->size())});
}

// One field of all surfaces, as it lies between the others.
template <class Value>
py::array Column(SurfacesHolder const& holder, Value Surface::*field) {
    std::vector<Surface> const& all = holder.surfaces->all;
    return View(holder.surfaces, all.empty() ? nullptr : &(all[0].*field), {Rows(all.size())},
                {static_cast<py::ssize_t>(sizeof(Surface))});
}

void AddPieces(py::module_& module) {
    auto overhang = NewClass<OverhangHolder>(module, "Overhang");
    auto const add = [&overhang](char const* name, auto getter) {
        overhang.def_property_readonly(name, getter, Doc(std::string("Overhang.") + name));
    };
    add("triangles", [](OverhangHolder const& o) {
        return View(o.owner, o.overhang->triangles.data(), {Rows(o.overhang->triangles.size())});
    });
    add("area", [](OverhangHolder const& o) { return o.overhang->area; });
    add("projected_area", [](OverhangHolder const& o) { return o.overhang->projectedArea; });
    add("box", [](OverhangHolder const& o) { return ArrayOf(o.overhang->box); });
    add("supported", [](OverhangHolder const& o) { return o.overhang->supported; });
    add("why", [](OverhangHolder const& o) { return TextOf(o.overhang->why); });

    NewClass<EdgeHolder>(module, "HangingEdge")
        .def_property_readonly(
            "points", [](EdgeHolder const& e) { return View(e.owner, std::span(e.edge->points)); },
            Doc("HangingEdge.points"))
        .def_property_readonly(
            "length", [](EdgeHolder const& e) { return e.edge->length; }, Doc("HangingEdge.length"))
        .def_property_readonly(
            "lowest", [](EdgeHolder const& e) { return e.edge->lowest; }, Doc("HangingEdge.lowest"));
}

void AddSupportsClass(py::module_& module) {
    auto supports = NewClass<SupportsHolder, std::shared_ptr<SupportsHolder>>(module, "Supports");
    auto const add = [&supports](char const* name, auto getter) {
        supports.def_property_readonly(name, getter, Doc(std::string("Supports.") + name));
    };
    add("overhangs", [](SupportsHolder const& h) {
        py::list list;
        for (Overhang const& overhang : h.supports->Overhangs())
            list.append(OverhangHolder{h.supports, &overhang});
        return list;
    });
    add("edges", [](SupportsHolder const& h) {
        py::list list;
        for (HangingEdge const& edge : h.supports->Edges()) list.append(EdgeHolder{h.supports, &edge});
        return list;
    });
    add("solids", [](SupportsHolder const& h) {
        py::list list;
        for (SupportSolid const& solid : h.supports->Solids()) {
            list.append(py::make_tuple(View(h.supports, std::span(solid.points)),
                                       View(h.supports, std::span(solid.triangles))));
        }
        return list;
    });
    add("small_regions", [](SupportsHolder const& h) { return h.supports->SmallRegions(); });
    supports.def(
        "write",
        [](SupportsHolder const& h, std::filesystem::path const& path, std::string const& format) {
            MeshFormat const meant = Meaning(kMeshFormats, format, "format");
            std::shared_ptr<Supports const> const kept = h.supports;
            py::gil_scoped_release const release;
            kept->Write(path, meant);
        },
        Doc("Supports.write"), py::arg("path"), py::arg("format") = "binary");
    supports.def("svg", &Svg, Doc("Supports.svg"));
    supports.def("_repr_svg_", &Svg);
    supports.def("__repr__", [](SupportsHolder const& h) {
        return "<varnet.Supports: " + std::to_string(h.supports->Solids().size()) + " solids>";
    });
}

void AddSurfacesClass(py::module_& module) {
    auto surfaces = NewClass<SurfacesHolder>(module, "Surfaces");
    auto const add = [&surfaces](char const* name, auto getter) {
        surfaces.def_property_readonly(name, getter, Doc(std::string("Surfaces.") + name));
    };
    add("of_triangle", [](SurfacesHolder const& h) {
        return View(h.surfaces, h.surfaces->ofTriangle.data(), {Rows(h.surfaces->ofTriangle.size())});
    });
    add("facets", [](SurfacesHolder const& h) { return Column(h, &Surface::facets); });
    add("area", [](SurfacesHolder const& h) { return Column(h, &Surface::area); });
    add("rim_length", [](SurfacesHolder const& h) { return Column(h, &Surface::rimLength); });
    add("colors", &Colors);
    surfaces.def("__len__", [](SurfacesHolder const& h) { return h.surfaces->all.size(); });
    surfaces.def("__repr__", [](SurfacesHolder const& h) {
        return "<varnet.Surfaces: " + std::to_string(h.surfaces->all.size()) + ">";
    });
}

}  // namespace

void AddSupports(py::module_& module) {
    using py::arg;
    AddPieces(module);
    AddSupportsClass(module);
    AddSurfacesClass(module);
    py::object const type = module.attr("Part");
    auto part = py::reinterpret_borrow<py::class_<PartHolder, std::shared_ptr<PartHolder>>>(type);
    part.def(
        "supports",
        [](PartHolder const& holder, double angle, bool connectByVertex, double minArea, double down,
           double edgesUp, double edgesDown, double edgeLength, double stroke, py::object const& progress) {
            SupportSettings settings;
            settings.angle = angle;
            settings.connectByVertex = connectByVertex;
            settings.minArea = minArea;
            settings.down = down;
            settings.edgesUp = edgesUp;
            settings.edgesDown = edgesDown;
            settings.edgeLength = edgeLength;
            settings.stroke = stroke;
            return MakeSupports(holder, settings, progress);
        },
        Doc("Part.supports"), py::kw_only(), arg("angle") = 44.0, arg("connect_by_vertex") = false,
        arg("min_area") = 1.0, arg("down") = 0.0, arg("edges_up") = 45.0, arg("edges_down") = 45.0,
        arg("edge_length") = 1.0, arg("stroke") = 0.5, arg("progress") = py::none());
    part.def("surfaces", &MakeSurfaces, Doc("Part.surfaces"), arg("rule") = "normals", py::kw_only(),
             arg("progress") = py::none());
}

}  // namespace varnet::python
