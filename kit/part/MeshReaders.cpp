// The formats other than STL, and the choice between all.

#include "part/MeshReaders.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "part/Bytes.h"
#include "part/Classic.h"
#include "part/FacetSink.h"
#include "part/RingDecoder.h"

namespace varnet {

namespace {

constexpr std::size_t kCsmHeader = 80;

std::string ReadWhole(InputFile& file) {
    std::string bytes(static_cast<std::size_t>(file.Size()), '\0');
    bytes.resize(file.Read(bytes));
    return bytes;
}

std::string TextAtStart(std::string_view bytes, std::size_t size) {
    bytes = bytes.substr(0, size);
    return std::string(bytes.substr(0, bytes.find('\0')));
}

[[noreturn]] void ThrowShort(InputFile const& file, char const* what) {
    throw Error(ErrorKind::kContent, file.Path(), std::string("ends inside ") + what);
}

// Gives all facets of a mesh to the sink.
void AddAll(FlatMesh const& mesh, FacetSink& sink, Pace const& pace) {
    auto const point = [&mesh](std::int32_t i) { return mesh.points[static_cast<std::size_t>(i)]; };
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        pace.Step(i, mesh.triangles.size());
        Triangle const& t = mesh.triangles[i];
        sink.Add(point(t[0]), point(t[1]), point(t[2]));
    }
    sink.Flush();
}

}  // namespace

RawMesh ReadPlainCsm(Reading& reading) {
    std::string const bytes = ReadWhole(reading.file);
    std::size_t const size = bytes.size();
    if (size < kCsmHeader + 4) ThrowShort(reading.file, "its header");
    std::size_t const vertices = LoadU32(bytes.data() + kCsmHeader);
    std::size_t const facetsAt = kCsmHeader + 8 + 12 * vertices;
    if (facetsAt > size) ThrowShort(reading.file, "its vertices");
    std::size_t const facets = LoadU32(bytes.data() + facetsAt - 4);
    if (facetsAt + 12 * facets > size) ThrowShort(reading.file, "its facets");

    RawMesh raw;
    raw.format = MeshFormat::kPlainCsm;
    raw.header = TextAtStart(bytes, kCsmHeader);
    reading.report.facetsInFile = static_cast<std::int64_t>(facets);
    FacetSink sink(raw, reading.report, reading.settings.scale, facets);
    for (std::size_t i = 0; i < facets; ++i) {
        reading.pace.Step(i, facets);
        std::array<Point3, 3> corners;
        for (std::size_t k = 0; k < 3; ++k) {
            std::size_t const at = facetsAt + 12 * i + 4 * k;
            std::size_t const number = LoadU32(bytes.data() + at);
            if (number >= vertices) {
                throw Error::AtByte(reading.file.Path(), at, "a facet names a vertex that there is not");
            }
            char const* const p = bytes.data() + kCsmHeader + 4 + 12 * number;
            corners[k] = {LoadF32(p), LoadF32(p + 4), LoadF32(p + 8)};
        }
        sink.Add(corners[0], corners[1], corners[2]);
    }
    sink.Flush();
    return raw;
}

RawMesh ReadRingCsm(Reading& reading) {
    std::string const bytes = ReadWhole(reading.file);
    RawMesh raw;
    raw.format = MeshFormat::kRingCsm;
    raw.header = TextAtStart(bytes, kCsmHeader);
    try {
        RingStream const stream = DecodeRingStream(bytes);
        reading.report.facetsInFile = static_cast<std::int64_t>(stream.facets.size() + stream.repeated);
        FacetSink sink(raw, reading.report, reading.settings.scale, stream.facets.size());
        for (std::size_t i = 0; i < stream.facets.size(); ++i) {
            reading.pace.Step(i, stream.facets.size());
            sink.Add(stream.facets[i][0], stream.facets[i][1], stream.facets[i][2]);
        }
        sink.Flush();
    } catch (RingError const& error) {
        throw Error(ErrorKind::kContent, reading.file.Path(), error.what());
    }
    return raw;
}

RawMesh ReadClassic(Reading& reading, MeshFormat format) {
    CSTLModel model;
    model.m_VertexTree.m_dTolerance = 0.0;
    ClassicPath path(reading.file.Path());
    int const result =
        format == MeshFormat::kStripCsm ? model.ReadCSMFile1(path.Get(), 0) : model.Read3DMFModel(path.Get());
    if (result == 0)
        throw Error(ErrorKind::kContent, reading.file.Path(), "is broken, or of no kind that is known");
    FlatMesh const mesh = Flatten(model);
    RawMesh raw;
    raw.format = format;
    reading.report.facetsInFile = static_cast<std::int64_t>(mesh.triangles.size());
    FacetSink sink(raw, reading.report, reading.settings.scale, mesh.triangles.size());
    AddAll(mesh, sink, reading.pace);
    return raw;
}

RawMesh ReadMeshFile(std::filesystem::path const& path, IntakeSettings const& settings, IntakeReport& report,
                     Pace const& pace) {
    InputFile file(path);
    MeshFormat const format = Recognise(file);
    Reading reading{file, settings, report, pace};
    auto const read = [&]() -> RawMesh {
        switch (format) {
            case MeshFormat::kBinaryStl:
                return ReadBinaryStl(reading, 80);
            case MeshFormat::kOltp:
                return ReadBinaryStl(reading, 256);
            case MeshFormat::kAsciiStl:
                return ReadAsciiStl(reading);
            case MeshFormat::kPlainCsm:
                return ReadPlainCsm(reading);
            case MeshFormat::kRingCsm:
                return ReadRingCsm(reading);
            default:
                return ReadClassic(reading, format);
        }
    };
    RawMesh raw = read();
    std::uint64_t const left = file.Size() - file.Position();
    bool const isBinary = format == MeshFormat::kBinaryStl;
    if (isBinary && left != 0) {
        report.notes.push_back(std::to_string(left) + (left == 1 ? " byte" : " bytes") +
                               " behind the last facet left out");
    }
    if (raw.mesh.triangles.empty()) {
        bool const all = report.facetsInFile > 0;
        throw Error(ErrorKind::kContent, path, all ? kNoFacetToUse : "holds no facets");
    }
    return raw;
}

}  // namespace varnet
