#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Shapes.h"
#include "TestFiles.h"
#include "Varnet64.h"

// One small file of each kind that the library reads, the operations that read them, and those that write.

/// An operation that reads the file of a path into a model, or writes the model to it. Takes and returns what
/// the library's operations do.
struct FileOperation {
    std::string name;
    std::function<int(CSTLModel&, char*)> run;
};

inline std::vector<FileOperation> ModelReaders() {
    constexpr int kStlHeader = 80;
    return {
        {"ReadSTLFile", [](CSTLModel& model, char* path) { return model.ReadSTLFile(path, 0); }},
        {"ReadSTLASCII", [](CSTLModel& model, char* path) { return model.ReadSTLASCII(path, 0); }},
        {"ReadSTLBINARY",
         [](CSTLModel& model, char* path) { return model.ReadSTLBINARY(path, 0, kStlHeader); }},
        {"ReadOLTPFile", [](CSTLModel& model, char* path) { return model.ReadOLTPFile(path, 0); }},
        {"Read3DMFModel", [](CSTLModel& model, char* path) { return model.Read3DMFModel(path); }},
        {"ReadCSMFile", [](CSTLModel& model, char* path) { return model.ReadCSMFile(path); }},
        {"ReadCSMFile1", [](CSTLModel& model, char* path) { return model.ReadCSMFile1(path, 0); }},
    };
}

inline std::vector<FileOperation> ModelWriters() {
    return {
        {"SaveSTLFile", [](CSTLModel& model, char* path) { return model.SaveSTLFile(path, 2); }},
        {"SaveCSMFile", [](CSTLModel& model, char* path) { return model.SaveCSMFile(path); }},
        {"SaveCSMFile1", [](CSTLModel& model, char* path) { return model.SaveCSMFile1(path); }},
        {"ExtractFacetForCSM, numbers of steps",
         [](CSTLModel& model, char* path) { return model.ExtractFacetForCSM(1, path, 1, nullptr, 0); }},
        {"ExtractFacetForCSM, floats",
         [](CSTLModel& model, char* path) { return model.ExtractFacetForCSM(0, path, 0, nullptr, 0); }},
    };
}

inline void AddShape(CSTLModel& model, shapes::Mesh const& mesh) {
    for (shapes::Triangle const& t : mesh) {
        tagFACET facet;
        for (std::size_t i = 0; i < t.size(); ++i) facet.m_ptVertex[i] = CPoint3D(t[i].x, t[i].y, t[i].z);
        model.AddFacet(facet);
    }
}

inline std::string ThreeDmfOf(shapes::Mesh const& mesh) {
    std::string vertices = "<VERTICES>\n";
    std::string triangles = "<TRIANGLES>\n";
    int nVertex = 0;
    for (shapes::Triangle const& t : mesh) {
        triangles += "<TRIANGLE";
        for (std::size_t i = 0; i < t.size(); ++i) {
            vertices += "<VERTEX x=\"" + std::to_string(t[i].x) + "\" y=\"" + std::to_string(t[i].y) +
                        "\" z=\"" + std::to_string(t[i].z) + "\"/>\n";
            triangles += " v" + std::to_string(i) + "=\"" + std::to_string(nVertex++) + "\"";
        }
        triangles += "/>\n";
    }
    return vertices + "</VERTICES>\n" + triangles + "</TRIANGLES>\n";
}

/// The bytes of small files with this mesh, one of each kind and layout.
inline std::vector<std::string> FilesOf(shapes::Mesh const& mesh) {
    TestFolder const folder;
    std::string const stl = shapes::ToBinaryStl(mesh);
    std::vector<std::string> files = {stl, shapes::ToAsciiStl(mesh), std::string(256, 'o') + stl.substr(80),
                                      ThreeDmfOf(mesh)};
    for (FileOperation const& writer : ModelWriters()) {
        CSTLModel model;
        AddShape(model, mesh);
        WidePath path(folder / "file");
        if (writer.run(model, path) != 0) files.push_back(ReadBytes(folder / "file"));
    }
    return files;
}

/// How many files this process has open.
inline std::size_t OpenFiles() {
    std::size_t nFiles = 0;
    for ([[maybe_unused]] auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++nFiles;
    return nFiles;
}
