// Meshes and their files.

#include <memory>

#include "selfcheck/Record.h"

namespace selfcheck {

namespace {

double g_matrix[4][4] = {
    {0.7, 0.1, -0.3, 0.0}, {0.2, -0.9, 0.4, 0.0}, {0.5, 0.3, 1.1, 0.0}, {3.3, -1.7, 0.9, 1.0}};

void AddNeighbours(Record& record, CSTLModel& model) {
    auto const& facets = model.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    auto const number = [](CFacet const* facet) {
        return facet == nullptr
                   ? -1.0
                   : facet->m_pVertex1->x + 3.0 * facet->m_pVertex2->y + 7.0 * facet->m_pVertex3->z;
    };
    for (int i = 0; i < facets.GetSize(); i += 3) {
        CFacet& facet = *facets[i];
        tagVertexNode* const a = facet.m_pVertex1;
        tagVertexNode* const b = facet.m_pVertex2;
        CFacet* found[4] = {};
        int const count = facet.FindNeighborFacets(a, b, found, 4);
        record.Add(count);
        for (CFacet const* const p : found) record.Add(number(p));
        record.AddAll(number(facet.FindNeighborFacet(a, b)), number(facet.FindNeighborFacetRightNormal(a, b)),
                      number(facet.FindNeighborFacetSameRegion(a, b)), facet.IsUp(), facet.IsLevel(0.1),
                      facet.EightClassify(0.01), facet.IsSupportEdge(a, b));
    }
}

// The shells of a model, which the list hands over.
void AddShells(Record& record, CSTLModel& model) {
    XR_CList<void*, void*> shells;
    model.Disjoin(shells);
    record.Add(shells.GetCount());
    for (XR__POSITION* p = shells.GetHeadPosition(); p != nullptr;) {
        std::unique_ptr<CSTLModel> const shell(static_cast<CSTLModel*>(shells.GetNext(p)));
        AddModel(record, *shell);
        record.Add(shell->m_Status.m_szFileName);
    }
}

void AddRepairs(Record& record, CSTLModel& model) {
    AddModel(record, model);
    AddNeighbours(record, model);
    record.AddAll(model.CalArea(), model.CalVolume(), model.Area(), model.Volume(), model.GetFacetsNum());
    model.FixNormal();
    AddModel(record, model);
    model.Transform(g_matrix);
    double offset[3] = {2.0, 0.5, -1.0};
    model.Transfer(offset);
    AddModel(record, model);
    record.AddAll(model.m_dArea, model.m_dVolume);
    AddShells(record, model);
    CSTLModel copy;
    copy.AddSTLModel(&model);
    copy.ReverseFacet();
    copy.CalculateNormal();
    AddModel(record, copy);
    record.AddAll(copy.Area(), copy.Volume());
}

}  // namespace

void CheckMesh(Record& record) {
    record.BeginRoom("mesh");
    Chance chance(3);
    for (bool const onLattice : {false, true}) {
        CSTLModel model;
        FillWithSoup(model, chance, onLattice);
        AddRepairs(record, model);
    }
    CSTLModel ball;
    FillWithBall(ball, 24, 30.0);
    AddRepairs(record, ball);
}

// ---- files

namespace {

// What a file holds, and the model that is read back from it.
template <class Read>
void AddFile(Record& record, std::filesystem::path const& file, Read const& read) {
    std::string const bytes = BytesOf(file);
    record.Add(std::string_view(bytes));
    CSTLModel back;
    WidePath path(file);
    record.Add(read(back, path));
    record.AddAll(back.m_nTotalFacet, back.m_nStripNum, back.m_nMaxBackRef);
    AddModel(record, back);
}

void AppendNumber(std::string& text, double d) {
    text += ' ';
    text += std::to_string(static_cast<long long>(d * 1000.0));
    text += "e-3";
}

std::string AsciiOf(CSTLModel& model) {
    std::string text = "solid check\r\n";
    auto const& facets = model.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    for (int i = 0; i < facets.GetSize(); ++i) {
        text += "facet normal 0 0 0\r\nouter loop\r\n";
        for (tagVertexNode const* p : {facets[i]->m_pVertex1, facets[i]->m_pVertex2, facets[i]->m_pVertex3}) {
            text += "vertex";
            for (double const d : {p->x, p->y, p->z}) AppendNumber(text, d);
            text += "\r\n";
        }
        text += "endloop\r\nendfacet\r\n";
    }
    return text + "endsolid check\r\n";
}

constexpr char const* kThreeDmf =
    "VERTICES COUNT=4\nVERTEX X=0 Y=0 Z=0\nVERTEX X=1.5 Y=0 Z=0\nVERTEX X=0 Y=2.25 Z=0\nVERTEX X=0 Y=0 "
    "Z=3e0\n/VERTICES\n"
    "TRIANGLE A=0 B=2 C=1\nTRIANGLE A=0 B=1 C=3\nTRIANGLE A=0 B=3 C=2\nTRIANGLE A=1 B=2 C=3\n/TRIANGLES\n";

}  // namespace

void CheckModelFiles(Record& record, std::filesystem::path const& folder) {
    record.BeginRoom("modelfiles");
    CSTLModel model;
    FillWithBall(model, 16, 20.0);
    std::filesystem::path const file = folder / "check.stl";
    WidePath path(file);
    auto const readStl = [](CSTLModel& back, char* p) { return back.ReadSTLFile(p, 0); };
    auto const readStrips = [](CSTLModel& back, char* p) { return back.ReadCSMFile1(p, 0); };
    record.Add(model.SaveSTLFile(path, 2));
    AddFile(record, file, readStl);
    record.AddAll(CSTLModel::GetSTLType(path), model.ReadSTLFile(path, 1));
    std::string const binary = BytesOf(file);
    WriteFile(file, AsciiOf(model));
    AddFile(record, file, readStl);
    record.AddAll(CSTLModel::GetSTLType(path), model.ReadSTLFile(path, 1));
    WriteFile(file, std::string(256, 'o') + binary.substr(80));
    AddFile(record, file, [](CSTLModel& back, char* p) { return back.ReadOLTPFile(p, 0); });
    WriteFile(file, kThreeDmf);
    AddFile(record, file, [](CSTLModel& back, char* p) { return back.Read3DMFModel(p); });
    for (int const compress : {0, 1}) {
        for (int const rotate : {0, 1}) {
            record.Add(model.ExtractFacetForCSM(rotate, path, compress, nullptr, 0));
            AddFile(record, file, readStrips);
        }
    }
    record.Add(model.SaveCSMFile1(path));
    std::string const ring = BytesOf(file);
    record.Add(std::string_view(ring));
}

}  // namespace selfcheck
