// The demo's steps on the mesh: surfaces, smaller files, support.

#include <cmath>

#include "Console.h"
#include "Demo.h"
#include "Reading.h"

namespace {

constexpr double kGlass = 0.4;

}  // namespace

void Demo::ShowSurfaces() {
    varnet::Surfaces const surfaces(m_Part);
    std::vector<std::uint32_t> colors;
    double area = 0.0;
    double rim = 0.0;
    for (std::int32_t const surface : surfaces.ofTriangle)
        colors.push_back(surfaces.all.at(static_cast<std::size_t>(surface)).color);
    for (varnet::Surface const& surface : surfaces.all) {
        area += surface.area;
        rim += surface.rimLength;
    }
    Check(surfaces.all.size() > 10 && surfaces.all.size() < 100, "the bracket has some dozens of surfaces");
    Check(IsNear(area, m_Part.Measures().area, 1e-4), "their areas add up to that of the part");
    varnet::WritePly(File("bracket_surfaces.ply"), m_Part.Points(), m_Part.Triangles(), colors);
    m_Page.BeginSection(
        "Surfaces",
        "Facets that turn little against their neighbours are one surface: planes, bores, and the flanks of "
        "the keel.");
    varnet::PicturedMesh const mesh{m_Part.Points(), m_Part.Triangles(), kSteel, colors, 1.0};
    Draw("bracket_surfaces.svg", std::span(&mesh, 1),
         "The bracket with every plane and bore in a colour of its own",
         "Feature surfaces, each in its colour. The same colours are in bracket_surfaces.ply.");
    Report report("bracket_surfaces.ply");
    report.Add("surfaces", "surfaces", static_cast<long long>(surfaces.all.size()));
    report.Add("length of all rims, mm", "rim", rim);
    Show(report);
}

void Demo::ShowFormats() {
    struct Format {
        char const* name;
        char const* what;
        varnet::MeshFormat format;
    };
    std::vector<std::vector<std::string>> rows;
    for (auto const& [name, what, format] :
         {Format{"bracket_strips.csm", "strips of 16-bit points", varnet::MeshFormat::kStripCsm},
          Format{"bracket_ring.csm", "ring stream of 24-bit points", varnet::MeshFormat::kRingCsm},
          Format{"bracket_plain.csm", "plain, points in float", varnet::MeshFormat::kPlainCsm}}) {
        varnet::WriteReport const written = m_Part.Write(File(name), format);
        Check(written.facetsAfter == written.facetsBefore, "the CSM file holds all facets");
        Check(IsNear(written.volumeAfter, written.volumeBefore, 1e-3), "and the part has its volume");
        double const stl = 84.0 + 50.0 * static_cast<double>(written.facetsBefore);
        long long const bytes = BytesOf(m_Folder / name);
        rows.push_back({name, what, Count(bytes),
                        Count(std::lround(100.0 * static_cast<double>(bytes) / stl)) + " %",
                        Number(written.volumeAfter), Rounded(written.largestError, 2)});
    }
    m_Page.BeginSection("Smaller files", "The same mesh in the three CSM layouts, read back and compared.");
    m_Page.AddTable("Mesh files",
                    {"file", "what", "bytes", "of STL", "volume read back, mm3", "largest error, mm"}, rows);
}

void Demo::ShowSupports() {
    m_Supports = varnet::Supports(m_Part);
    varnet::SupportSettings low;
    low.down = 3.0;
    varnet::Supports(m_Part, low).Write(File("bracket_support.stl"));
    varnet::Part const solids = ReadPart(TextOf(m_Folder / "bracket_support.stl"), {});
    Check(!m_Supports.Overhangs().empty() && m_Supports.Overhangs().size() < 100,
          "the bracket has regions that face down");
    Check(m_Supports.Edges().size() == 1, "the boss's keel hangs in the air");
    Check(m_Supports.Solids().size() > 1, "solids are made for them");
    Check(solids.Measures().openEdges == 0, "and those of a height are closed");
    m_Page.BeginSection("Support",
                        "Regions that look down by less than 44 degrees, and edges that nothing holds, get "
                        "solids below them: "
                        "of 3 mm in bracket_support.stl, down to the plate for slicing.");
    std::vector<varnet::PicturedMesh> meshes = {{m_Part.Points(), m_Part.Triangles(), kSteel, {}, 1.0}};
    for (varnet::SupportSolid const& solid : m_Supports.Solids()) {
        meshes.push_back({solid.points, solid.triangles, kAmber, {}, kGlass});
    }
    Draw("bracket_support.svg", meshes,
         "The bracket with glassy amber solids that fill the room below its shelf",
         "The part on the solids that hold it while it is printed.");
    Report report("bracket_support.stl");
    report.Add("regions that face down", "regions", static_cast<long long>(m_Supports.Overhangs().size()));
    report.Add("hanging edges", "edges", static_cast<long long>(m_Supports.Edges().size()));
    report.Add("solids", "solids", static_cast<long long>(m_Supports.Solids().size()));
    report.Add("volume, mm3", "volume", solids.Measures().volume);
    Show(report);
}
