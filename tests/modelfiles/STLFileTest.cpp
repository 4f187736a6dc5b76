#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include "MeshChecks.h"
#include "TestFiles.h"

namespace {

int TypeOf(std::string const& bytes) {
    TestFolder const folder;
    return CSTLModel::GetSTLType(WidePath(folder.Write("file", bytes)));
}

std::string WithByte(std::size_t nSize, std::size_t nPlace, char byte) {
    std::string bytes(nSize, 'a');
    bytes[nPlace] = byte;
    return bytes;
}

std::string CubeFile() { return shapes::ToBinaryStl(shapes::Cube(3.0f)); }

// Makes a folder the present one as long as it lives.
class InFolder {
public:
    explicit InFolder(std::filesystem::path const& path) : m_Before(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    InFolder(InFolder const&) = delete;
    InFolder& operator=(InFolder const&) = delete;
    ~InFolder() { std::filesystem::current_path(m_Before); }

private:
    std::filesystem::path m_Before;
};

void ExpectCube(CSTLModel& model) {
    EXPECT_EQ(12, model.GetFacetsNum());
    EXPECT_EQ(27.0, model.CalVolume());
    ExpectInvariants(model);
}

}  // namespace

TEST(STLType, FilesBelowEightyBytesCannotBeTold) {
    EXPECT_EQ(0, TypeOf(""));
    EXPECT_EQ(0, TypeOf(std::string(79, 'a')));
    EXPECT_EQ(0, TypeOf(std::string(79, '\xFF')));
}

TEST(STLType, FileOfExactlyEightyBytesIsAscii) {
    EXPECT_EQ(1, TypeOf(std::string(80, 'a')));
    EXPECT_EQ(1, TypeOf(std::string(80, '\xC8')));
}

TEST(STLType, HighByteBehindTheHeaderMakesItBinary) {
    EXPECT_EQ(2, TypeOf(WithByte(81, 80, '\xC8')));
    EXPECT_EQ(2, TypeOf(WithByte(81, 80, '\x80')));
    EXPECT_EQ(1, TypeOf(WithByte(81, 80, '\x7F')));
    EXPECT_EQ(1, TypeOf(WithByte(81, 79, '\xC8')));
    EXPECT_EQ(2, TypeOf(WithByte(1000, 255, '\x80')));
}

TEST(STLType, BytesFrom256OnHaveNoInfluence) {
    EXPECT_EQ(1, TypeOf(WithByte(257, 256, '\xFF')));
    EXPECT_EQ(1, TypeOf(WithByte(1000, 500, '\xFF')));
    std::string all(80, '\xFF');
    all.append(176, 'a').append(2000, '\xFF');
    EXPECT_EQ(1, TypeOf(all));
}

TEST(STLType, TheHeadersWordPlaysNoPart) {
    std::string solid = WithByte(134, 100, '\x80');
    solid.replace(0, 5, "solid");
    EXPECT_EQ(2, TypeOf(solid));
}

TEST(STLType, WhatCannotBeOpenedCannotBeTold) {
    TestFolder const folder;
    EXPECT_EQ(0, CSTLModel::GetSTLType(WidePath(folder / "missing")));
    EXPECT_EQ(0, CSTLModel::GetSTLType(WidePath(folder.Path())));
}

TEST(ReadSTLFile, FailsOnWhatCannotBeOpenedAndStoresTheNameAllTheSame) {
    TestFolder const folder;
    for (std::filesystem::path const& path :
         {folder / "missing.stl", folder.Path(), folder / "no" / "x.stl"}) {
        CSTLModel model;
        model.m_Status.m_nFileType = 2;
        std::strcpy(model.m_Status.m_szFileName, "before");
        EXPECT_EQ(0, model.ReadSTLFile(WidePath(path), 0));
        EXPECT_EQ(0, model.m_Status.m_nFileType);
        EXPECT_EQ(kPathStart, model.m_Status.m_szFileName);
        EXPECT_EQ(0, model.ReadSTLFile(WidePath(path), 1));
        EXPECT_EQ(0, model.GetFacetsNum());
    }
}

TEST(ReadSTLFile, FailsOnFilesThatAreTooShort) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(0, model.ReadSTLFile(WidePath(folder.Write("short.stl", std::string(79, 'f'))), 0));
    EXPECT_EQ(0, model.m_Status.m_nFileType);
    EXPECT_EQ(1, model.ReadSTLFile(WidePath(folder.Write("eighty.stl", std::string(80, 'f'))), 0));
    EXPECT_EQ(1, model.m_Status.m_nFileType);
}

#if !defined(_WIN32)

TEST(ReadSTLFile, FailsOnUnreadableFiles) {
    TestFolder const folder;
    std::filesystem::path const path = folder.Write("secret.stl", CubeFile());
    ::chmod(path.c_str(), 0);
    if (std::ifstream(path).is_open()) GTEST_SKIP() << "this user may read every file";
    CSTLModel model;
    EXPECT_EQ(0, model.ReadSTLFile(WidePath(path), 0));
    EXPECT_EQ(0, model.m_Status.m_nFileType);
}

#endif

TEST(ReadSTLFile, TellsTheKindsApart) {
    TestFolder const folder;
    CSTLModel binary;
    EXPECT_EQ(1, binary.ReadSTLFile(WidePath(folder.Write("b.stl", CubeFile())), 0));
    EXPECT_EQ(2, binary.m_Status.m_nFileType);
    EXPECT_EQ(12, binary.m_nTotalFacet);
    ExpectCube(binary);
    CSTLModel ascii;
    EXPECT_EQ(1,
              ascii.ReadSTLFile(WidePath(folder.Write("a.stl", shapes::ToAsciiStl(shapes::Cube(3.0f)))), 0));
    EXPECT_EQ(1, ascii.m_Status.m_nFileType);
    ExpectCube(ascii);
}

// All floats are small powers of two or zero, whose bytes are below 128 but for the exponent: 2.0 is 00 00
// 00 40.
TEST(ReadSTLFile, BinaryFileWithoutAHighByteIsReadAsAsciiAndGivesNoFacet) {
    TestFolder const folder;
    std::string bytes(84, '\0');
    bytes[80] = 4;
    for (int n = 0; n < 4 * 12; ++n) {
        bytes.append(n % 5 == 0 ? std::string("\0\0\0\x40", 4) : std::string(4, '\0'));
        if (n % 12 == 11) bytes.append(2, '\0');
    }
    CSTLModel model;
    EXPECT_EQ(1, model.ReadSTLFile(WidePath(folder.Write("low.stl", bytes)), 0));
    EXPECT_EQ(1, model.m_Status.m_nFileType);
    EXPECT_EQ(0, model.GetFacetsNum());
}

TEST(ReadSTLFile, FileNamesOfAllScriptsAreOpened) {
    TestFolder const folder;
    for (char8_t const* const pName :
         {u8"plain.stl", u8"Κύβος.stl", u8"立方体.stl", u8"cube \U0001F9CA.stl", u8"Ā.stl"}) {
        std::string const name(reinterpret_cast<char const*>(pName));
        folder.Write(name, CubeFile());
        CSTLModel model;
        WidePath path(folder / name);
        EXPECT_EQ(2, CSTLModel::GetSTLType(path)) << name;
        EXPECT_EQ(1, model.ReadSTLFile(path, 0)) << name;
        ExpectCube(model);
    }
}

TEST(ReadSTLFile, StoresThePathByteByByteUpToItsFirstZeroByte) {
    CSTLModel model;
    std::u16string chinese = u"立方体";
    model.ReadSTLFile(reinterpret_cast<char*>(chinese.data()), 0);
    // U+7ACB, U+65B9, U+4F53: no zero byte before the end.
    EXPECT_STREQ("\xCB\x7A\xB9\x65\x53\x4F", model.m_Status.m_szFileName);
    std::u16string latin = u"part.stl";
    model.ReadSTLFile(reinterpret_cast<char*>(latin.data()), 0);
    EXPECT_STREQ("p", model.m_Status.m_szFileName);
    std::u16string zeroFirst = u"Āb";  // U+0100: its first byte is zero
    model.ReadSTLFile(reinterpret_cast<char*>(zeroFirst.data()), 0);
    EXPECT_STREQ("", model.m_Status.m_szFileName);
}

TEST(ReadSTLFile, NameFieldAlwaysEndsInAZeroByteAndNothingBehindItIsTouched) {
    for (std::size_t const nCharacters : {129u, 130u, 131u, 500u, 5000u}) {
        CSTLModel model;
        std::u16string path(nCharacters, u'\u7ACB');
        model.ReadSTLFile(reinterpret_cast<char*>(path.data()), 0);
        std::size_t const nExpected = std::min<std::size_t>(2 * nCharacters, 259);
        EXPECT_EQ(nExpected, strnlen(model.m_Status.m_szFileName, 260)) << nCharacters;
        EXPECT_EQ('\0', model.m_Status.m_szHeader[0]);
    }
}

TEST(ReadSTLHeader, TakesEightyBytesAndAddsNoTerminator) {
    TestFolder const folder;
    CSTLModel model;
    std::memset(model.m_Status.m_szHeader, 'x', sizeof model.m_Status.m_szHeader);
    model.ReadSTLHeader(WidePath(folder.Write("header", std::string(40, 'h') + std::string(60, 'i'))));
    EXPECT_EQ(std::string(40, 'h') + std::string(40, 'i') + std::string(1, 'x'),
              std::string(model.m_Status.m_szHeader, 81));
    model.ReadSTLHeader(WidePath(folder.Write("short", "abc")));
    EXPECT_EQ("abch", std::string(model.m_Status.m_szHeader, 4));
    model.ReadSTLHeader(WidePath(folder / "missing"));
    EXPECT_EQ("abch", std::string(model.m_Status.m_szHeader, 4));
}

TEST(SaveSTLFile, WritesBinaryOnly) {
    TestFolder const folder;
    CSTLModel model;
    AddMesh(model, shapes::Cube(3.0f));
    for (int const nType : {0, 1, 3, 4, -1}) {
        EXPECT_EQ(0, model.SaveSTLFile(WidePath(folder / "none.stl"), nType));
        EXPECT_FALSE(std::filesystem::exists(folder / "none.stl"));
    }
    EXPECT_EQ(1, model.SaveSTLFile(WidePath(folder / "some.stl"), 2));
    EXPECT_EQ(84u + 12u * 50u, ReadBytes(folder / "some.stl").size());
}

TEST(SaveSTLFile, WithoutAPathWritesNothing) {
    CSTLModel model;
    for (int const nType : {1, 2}) EXPECT_EQ(0, model.SaveSTLFile(nullptr, nType));
}

TEST(SaveSTLFile, FailsWhereNoFileCanBeCreated) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(0, model.SaveSTLFile(WidePath(folder / "no" / "such" / "folder.stl"), 2));
    EXPECT_EQ(0, model.SaveSTLFile(WidePath(folder.Path()), 2));
    EXPECT_EQ(0, model.SaveSTLFile(WidePath(folder / std::string(5000, 'n')), 2));
}

TEST(SaveSTLFile, TruncatesWhatWasThere) {
    TestFolder const folder;
    folder.Write("old.stl", std::string(5000, 'o'));
    CSTLModel model;
    EXPECT_EQ(1, model.SaveSTLFile(WidePath(folder / "old.stl"), 2));
    EXPECT_EQ(84u, ReadBytes(folder / "old.stl").size());
}

// A path without a zero byte among its characters is stored whole, and so leads back to the same file.
TEST(SaveSTLFile, EmptyPathWritesToTheStoredName) {
    TestFolder const folder;
    InFolder const inFolder(folder.Path());
    std::u16string name = u"立方体";
    std::string const bytes = CubeFile();
    std::filesystem::path const file = folder.Path() / name;
    std::ofstream(file, std::ios::binary) << bytes << "more";
    CSTLModel model;
    ASSERT_EQ(1, model.ReadSTLFile(reinterpret_cast<char*>(name.data()), 0));
    char empty[2] = {0, 0};
    EXPECT_EQ(0, model.SaveSTLFile(empty, 1));
    EXPECT_EQ(bytes.size() + 4, ReadBytes(file).size());
    EXPECT_EQ(1, model.SaveSTLFile(empty, 2));
    EXPECT_EQ(bytes.size(), ReadBytes(file).size());
}

TEST(SaveSTLFile, EmptyPathWithoutAStoredNameFails) {
    TestFolder const folder;
    InFolder const inFolder(folder.Path());
    CSTLModel model;
    char empty[2] = {0, 0};
    EXPECT_EQ(0, model.SaveSTLFile(empty, 2));
    std::u16string zeroFirst = u"Āb.stl";  // only the first byte is looked at
    EXPECT_EQ(0, model.SaveSTLFile(reinterpret_cast<char*>(zeroFirst.data()), 2));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(SaveSTLFile, NameThatFillsItsFieldIsNotReadBeyondIt) {
    TestFolder const folder;
    InFolder const inFolder(folder.Path());
    CSTLModel model;
    std::memset(model.m_Status.m_szFileName, 'q', sizeof model.m_Status.m_szFileName);
    std::memset(model.m_Status.m_szHeader, 'q', sizeof model.m_Status.m_szHeader);
    char empty[2] = {0, 0};
    // 130 characters of three bytes: too long for a file system that counts bytes, as that of Windows does
    // not.
    EXPECT_EQ(kPathStart == "/" ? 0 : 1, model.SaveSTLFile(empty, 2));
}

namespace {

// Written, read and written again: the same bytes, and the same solid.
void ExpectRoundTrip(CSTLModel& model, std::string const& name) {
    TestFolder const folder;
    WidePath path(folder / (name + ".stl"));
    ASSERT_EQ(1, model.SaveSTLFile(path, 2));
    CSTLModel read;
    ASSERT_EQ(1, read.ReadSTLFile(path, 0)) << name;
    ASSERT_EQ(2, read.m_Status.m_nFileType);
    EXPECT_EQ(model.GetFacetsNum(), read.m_nTotalFacet);
    EXPECT_EQ(model.GetFacetsNum(), read.GetFacetsNum());
    EXPECT_EQ(0, std::memcmp("Deiklug", read.m_Status.m_szHeader, 8));
    ExpectInvariants(read);
    std::string const first = ReadBytes(folder / (name + ".stl"));
    ASSERT_EQ(1, read.SaveSTLFile(path, 2));
    EXPECT_EQ(first.substr(80), ReadBytes(folder / (name + ".stl")).substr(80)) << name;
}

}  // namespace

TEST(SaveSTLFile, ShapesComeBackAsTheyWere) {
    struct Shape {
        char const* pName;
        shapes::Mesh mesh;
    };
    for (Shape const& shape :
         {Shape{"cube", shapes::Moved(shapes::Cube(10.0f), -3.7f, 2.2f, 1.1f)},
          Shape{"torus", shapes::Torus(20.0, 5.0, 40, 20)}, Shape{"sphere", shapes::IcoSphere(15.0, 4)},
          Shape{"bracket", shapes::Bracket()}, Shape{"gyroid", shapes::Gyroid(16)}}) {
        CSTLModel model;
        AddMesh(model, shape.mesh);
        ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(model, shape.pName));
    }
}

TEST(SaveSTLFile, CountIsOfWhatCameIn) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Cube(3.0f);
    mesh.push_back(mesh[0]);
    mesh.push_back({shapes::Corner{0, 0, 0}, shapes::Corner{1, 1, 1}, shapes::Corner{2, 2, 2}});
    CSTLModel model;
    ASSERT_EQ(1, model.ReadSTLFile(WidePath(folder.Write("in.stl", shapes::ToBinaryStl(mesh))), 0));
    EXPECT_EQ(14, model.m_nTotalFacet);
    ASSERT_EQ(1, model.SaveSTLFile(WidePath(folder / "out.stl"), 2));
    EXPECT_EQ(84u + 12u * 50u, ReadBytes(folder / "out.stl").size());
}

TEST(Models, EveryFileOfTheFolderIsReadWrittenAndReadBack) {
    char const* const pFolder = std::getenv("VARNET_MODELS");
    if (pFolder == nullptr) GTEST_SKIP() << "VARNET_MODELS names no folder";
    TestFolder const folder;
    int nFiles = 0;
    for (auto const& entry : std::filesystem::recursive_directory_iterator(pFolder)) {
        if (!entry.is_regular_file() || entry.path().extension() != ".stl") continue;
        SCOPED_TRACE(entry.path().string());
        ++nFiles;
        CSTLModel model;
        WidePath path(entry.path());
        bool const bTold = CSTLModel::GetSTLType(path) != 0;
        ASSERT_EQ(bTold ? 1 : 0, model.ReadSTLFile(path, 0));
        EXPECT_EQ(bTold, entry.file_size() >= 80);
        if (model.m_Status.m_nFileType == 2 && model.m_nTotalFacet >= 0) {
            EXPECT_LE(model.GetFacetsNum(), model.m_nTotalFacet);
        }
        ExpectInvariants(model);
        ASSERT_EQ(1, model.SaveSTLFile(WidePath(folder / "copy.stl"), 2));
        EXPECT_EQ(84u + static_cast<std::size_t>(model.GetFacetsNum()) * 50u,
                  std::filesystem::file_size(folder / "copy.stl"));
        CSTLModel copy;
        ASSERT_EQ(1, copy.ReadSTLBINARY(WidePath(folder / "copy.stl"), 0, 80));
        ExpectInvariants(copy);
        EXPECT_EQ(model.GetFacetsNum(), copy.m_nTotalFacet);
        EXPECT_LE(copy.GetFacetsNum(), model.GetFacetsNum());
    }
    EXPECT_GT(nFiles, 0);
}
