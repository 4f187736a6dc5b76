#include <cstring>

#include "FileBytes.h"

namespace {

// Binary STL with 256 bytes in front in place of 80.
std::string OltpFile(shapes::Mesh const& mesh) {
    return std::string(176, 'o') + shapes::ToBinaryStl(mesh, "head");
}

}  // namespace

TEST(Oltp, IsBinaryStlWithALongerHeader) {
    TestFolder const folder;
    shapes::Mesh const mesh = shapes::Bracket();
    CSTLModel model;
    WidePath path(folder.Write("part.oltp", OltpFile(mesh)));
    EXPECT_EQ(1, model.ReadOLTPFile(path, 0));
    CSTLModel expected;
    WidePath stl(folder.Write("part.stl", shapes::ToBinaryStl(mesh)));
    EXPECT_EQ(1, expected.ReadSTLFile(stl, 0));
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
    EXPECT_EQ(4, model.m_Status.m_nFileType);
    EXPECT_EQ(std::string(176, 'o') + "head", std::string(model.m_Status.m_szHeader));
    EXPECT_EQ(expected.m_nTotalFacet, model.m_nTotalFacet);
}

TEST(Oltp, CountOnlyGivesTheCountInTheFile) {
    TestFolder const folder;
    CSTLModel model;
    WidePath path(folder.Write("part.oltp", OltpFile(shapes::Cube(5.0f))));
    EXPECT_EQ(12, model.ReadOLTPFile(path, 1));
    EXPECT_EQ(12, model.m_nTotalFacet);
    EXPECT_EQ(0, model.GetFacetsNum());
}

TEST(Oltp, TypeAndNameAreKeptEvenWhenTheFileIsNotThere) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(0, model.ReadOLTPFile(WidePath(folder / "missing.oltp"), 0));
    EXPECT_EQ(4, model.m_Status.m_nFileType);
    EXPECT_EQ(kPathStart, model.m_Status.m_szFileName);  // the second byte of a Latin character is 0
}

TEST(Oltp, FileCutShortDeliversWhatItHas) {
    TestFolder const folder;
    std::string const bytes = OltpFile(shapes::Cube(5.0f));
    for (std::size_t n = 0; n <= bytes.size(); ++n) {
        CSTLModel model;
        EXPECT_EQ(1, model.ReadOLTPFile(WidePath(folder.Write("cut.oltp", bytes.substr(0, n))), 0));
        EXPECT_EQ(n < 260 ? 0 : static_cast<int>((n - 260) / 50), model.GetFacetsNum());
    }
}

TEST(Oltp, StoppedModelReadsNothing) {
    TestFolder const folder;
    CSTLModel model;
    model.StopReadModel();
    EXPECT_EQ(0, model.ReadOLTPFile(WidePath(folder.Write("part.oltp", OltpFile(shapes::Cube(5.0f)))), 0));
    EXPECT_EQ(0, model.GetFacetsNum());
}
