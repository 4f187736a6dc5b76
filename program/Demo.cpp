// The demo's road: the part itself, and what is put together at the end.

#include "Demo.h"

#include <chrono>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "PartFacts.h"
#include "Reading.h"
#include "Shapes.h"

// A bracket as a careless program might write it: every ninth facet inside out, one facet twice.
void Demo::ShowPart() {
    shapes::Mesh const clean = shapes::Bracket();
    shapes::Mesh careless = shapes::WithTurned(clean, 9);
    careless.push_back(careless.front());
    varnet::WriteBytes(File("bracket.stl"), shapes::ToBinaryStl(careless));
    varnet::WriteBytes(File("bracket_ascii.stl"), shapes::ToAsciiStl(clean, "bracket"));
    m_Part = ReadPart(TextOf(m_Folder / "bracket.stl"), {});
    Report asRead("bracket.stl, as read");
    AddIntake(asRead, m_Part);
    asRead.Print();
    varnet::RepairReport const repaired = m_Part.Repair();
    m_Part.Write(File("bracket_repaired.stl"));
    varnet::Part const ascii = ReadPart(TextOf(m_Folder / "bracket_ascii.stl"), {});
    Check(m_Part.Triangles().size() == clean.size(), "all facets but the doubled one are in the mesh");
    Check(repaired.doubled == 1, "the doubled facet is counted");
    Check(repaired.openEdgesAfter == 0, "the repaired part is closed");
    Check(repaired.turned == static_cast<std::int64_t>((clean.size() + 7) / 9),
          "the facets turned are turned back");
    Check(m_Part.Bodies().size() == 1, "the bracket is one body");
    Check(IsNear(m_Part.Measures().volume, ascii.Measures().volume, 1e-9), "of the volume of the clean one");
    m_Page.BeginSection(
        "The part",
        "A mounting bracket, written as a careless program might: every ninth facet inside out, one facet "
        "twice. Repair turns what contradicts its shell.");
    varnet::PicturedMesh const mesh{m_Part.Points(), m_Part.Triangles(), kSteel, {}, 1.0};
    Draw("bracket.svg", std::span(&mesh, 1), "A steel bracket with a shelf, a gusset and bores",
         "The part as repaired.");
    Report report("bracket_repaired.stl");
    report.Add("facets turned to agree", "turned", static_cast<long long>(repaired.turned));
    AddMeasures(report, m_Part);
    AddBodies(report, m_Part);
    Show(report);
}

void Demo::ShowPage() {
    varnet::Page page({"A bracket", true, {}});
    varnet::Surfaces const surfaces(m_Part);
    page.AddPart(m_Part, {"bracket", &m_Supports, &surfaces});
    page.AddSlices(varnet::SliceFile(m_Folder / "bracket_ordered.cli"));
    page.Write(File("bracket.html"));
    m_Page.BeginSection("To turn and go through",
                        "The part, its supports and all layers in one file, as varnet view makes it.");
    m_Page.AddPage("bracket.html", "The bracket, its supports and its layers");
}

void Demo::Run() {
    auto const start = std::chrono::steady_clock::now();
    MakeFolder(m_Folder);
    ShowPart();
    ShowSurfaces();
    ShowFormats();
    ShowSupports();
    ThrowIfStopped();
    ShowLayers();
    ShowModes();
    ThrowIfStopped();
    ShowOrder();
    ShowPage();
    m_Page.BeginSection("Files", "All of them stand in this folder, beside this page.");
    m_Page.AddFiles(m_Files);
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    std::string const closing =
        std::to_string(m_Checks) + " checks passed in " + Rounded(seconds.count(), 3) + " seconds";
    varnet::WriteBytes(m_Folder / "index.html", m_Page.Html(closing));
    std::printf("%s; files are in %s, and index.html shows them\n", closing.c_str(),
                TextOf(m_Folder).c_str());
}

void AddDemo(CLI::App& app) {
    auto const folder = std::make_shared<std::string>("varnet-demo");
    CLI::App* const command =
        app.add_subcommand("demo", "Make a part, run everything on it, and show it all on a page");
    command->add_option("DIR", *folder, "Folder for the files that it writes")->capture_default_str();
    command->callback([folder] { Demo(PathOf(*folder)).Run(); });
}
