// Writing a part, and looking at what was written.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "files/File.h"
#include "part/Bytes.h"
#include "part/Classic.h"
#include "part/Pace.h"
#include "part/PartState.h"
#include "part/PointTree.h"

namespace varnet {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kStlHeader = 80;
constexpr std::size_t kRecord = 50;
constexpr std::string_view kStlText = "Varnet64";
constexpr std::string_view kPlainText = "Quarnell Ziped Model";

// Gathers bytes and writes them in large blocks.
class Output {
public:
    explicit Output(fs::path const& path) : m_File(OpenFile(path, "wb")) {}
    char* Room(std::size_t size) {
        if (m_Used + size > m_Block.size()) Flush();
        m_Used += size;
        return m_Block.data() + m_Used - size;
    }
    bool Close() {
        Flush();
        return m_Good && std::fclose(m_File.release()) == 0;
    }

private:
    void Flush() {
        m_Good =
            m_Good && m_File != nullptr && std::fwrite(m_Block.data(), 1, m_Used, m_File.get()) == m_Used;
        m_Used = 0;
    }

    FilePointer m_File;
    bool m_Good = true;
    std::vector<char> m_Block = std::vector<char>(std::size_t{1} << 16);
    std::size_t m_Used = 0;
};

void StorePoint(char* bytes, Point3 const& p) {
    StoreF32(bytes, static_cast<float>(p.x));
    StoreF32(bytes + 4, static_cast<float>(p.y));
    StoreF32(bytes + 8, static_cast<float>(p.z));
}

Point3 NormalOf(Point3 const& a, Point3 const& b, Point3 const& c) {
    Point3 const normal = Cross(b - a, c - a);
    double const length = Length(normal);
    return length > 0.0 ? (1.0 / length) * normal : Point3{};
}

void SetZeroSigns(Point3& p, unsigned negative) {
    auto const set = [negative](double& value, unsigned place) {
        if (value == 0.0) value = (negative >> place & 1u) != 0 ? -0.0 : 0.0;
    };
    set(p.x, 0);
    set(p.y, 1);
    set(p.z, 2);
}

bool WriteBinaryStl(FlatMesh const& mesh, std::span<ZeroSigns const> zeros, fs::path const& path,
                    Pace const& pace) {
    Output output(path);
    char* const header = output.Room(kStlHeader + 4);
    std::memset(header, 0, kStlHeader);
    std::memcpy(header, kStlText.data(), kStlText.size());
    StoreU32(header + kStlHeader, static_cast<std::uint32_t>(mesh.triangles.size()));
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        pace.Step(i, mesh.triangles.size());
        std::array<Point3, 3> corner;
        for (std::size_t k = 0; k < 3; ++k) {
            corner[k] = mesh.points[static_cast<std::size_t>(mesh.triangles[i][k])];
            if (zeros.empty() || zeros.front().corner != static_cast<std::int64_t>(3 * i + k)) continue;
            SetZeroSigns(corner[k], zeros.front().negative);
            zeros = zeros.subspan(1);
        }
        char* const record = output.Room(kRecord);
        StorePoint(record, NormalOf(corner[0], corner[1], corner[2]));
        for (std::size_t k = 0; k < 3; ++k) StorePoint(record + 12 + 12 * k, corner[k]);
        record[48] = 0;
        record[49] = 0;
    }
    return output.Close();
}

bool WritePlainCsm(FlatMesh const& mesh, fs::path const& path, Pace const& pace) {
    Output output(path);
    char* const header = output.Room(kStlHeader + 4);
    std::memset(header, 0, kStlHeader);
    std::memcpy(header, kPlainText.data(), kPlainText.size());
    StoreU32(header + kStlHeader, static_cast<std::uint32_t>(mesh.points.size()));
    for (Point3 const& p : mesh.points) StorePoint(output.Room(12), p);
    StoreU32(output.Room(4), static_cast<std::uint32_t>(mesh.triangles.size()));
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        pace.Step(i, mesh.triangles.size());
        char* const record = output.Room(12);
        for (std::size_t k = 0; k < 3; ++k)
            StoreU32(record + 4 * k, static_cast<std::uint32_t>(mesh.triangles[i][k]));
    }
    return output.Close();
}

// A header as it will stand in the file: padded to one of the two lengths that can be read back.
std::string PaddedHeader(fs::path const& path) {
    constexpr std::size_t kShort = 80;
    constexpr std::size_t kLong = 4096;
    std::vector<char> const bytes = ReadWhole(path, kLong);
    std::string header(bytes.begin(), bytes.end());
    std::string const text = header.substr(0, std::min(kShort - 1, header.find('\0')));
    auto const holds = [&text](char const* tag) { return text.find(tag) != std::string::npos; };
    bool const isLong = holds("CSM5.0");
    if (!isLong && !holds("CSM3.0") && !holds("CSM4.0")) {
        throw Error(ErrorKind::kContent, path,
                    "a header holds CSM3.0, CSM4.0 or CSM5.0 in its first 79 bytes");
    }
    if (!isLong && header.size() > kShort) {
        throw Error(ErrorKind::kContent, path, "a header of more than 80 bytes holds CSM5.0");
    }
    header.resize(isLong ? kLong : kShort);
    return header;
}

// The writers of the classes do not look at write errors: what the system said last is still there.
bool HasRefusedBytes(int error) {
    constexpr std::array kReasons = {
        ENOSPC,
        EFBIG,
        EIO,
#if defined(EDQUOT)
        EDQUOT
#endif
    };
    return std::find(kReasons.begin(), kReasons.end(), error) != kReasons.end();
}

bool WriteStrips(Part const& part, fs::path const& path, MeshWriteSettings const& settings) {
    std::string header;
    if (!settings.header.empty()) header = PaddedHeader(settings.header);
    std::unique_ptr<CSTLModel> const model = part.Model();
    constexpr std::uint32_t kTooMany = 1u << 21;
    if (model->m_VertexTree.m_nCount >= kTooMany) {
        throw Error(ErrorKind::kContent, path, "CSM in strips holds fewer than 2,097,152 vertices");
    }
    return model->ExtractFacetForCSM(1, ClassicPath(path).Get(), settings.floats ? 0 : 1,
                                     header.empty() ? nullptr : header.data(),
                                     static_cast<int>(header.size())) == 1;
}

bool WriteRing(Part const& part, fs::path const& path) {
    return part.Model()->SaveCSMFile1(ClassicPath(path).Get()) == 1;
}

bool WriteFormat(Part const& part, Part::State const& state, fs::path const& path,
                 MeshWriteSettings const& settings, Pace const& pace) {
    switch (settings.format) {
        case MeshFormat::kBinaryStl:
            return WriteBinaryStl(state.mesh, state.zeros, path, pace);
        case MeshFormat::kPlainCsm:
            return WritePlainCsm(state.mesh, path, pace);
        case MeshFormat::kStripCsm:
            return WriteStrips(part, path, settings);
        case MeshFormat::kRingCsm:
            return WriteRing(part, path);
        default:
            throw Error(ErrorKind::kArgument, std::string(NameOf(settings.format)) + " is not written");
    }
}

// The largest difference, on an axis, of a point from the nearest one of the others; points farther than a
// tenth of the box from all others count with that.
double LargestDifference(std::span<Point3 const> points, std::span<Point3 const> others, Box3 const& box,
                         Pace const& pace) {
    constexpr double kFirstReach = 1.0 / 16384.0;
    constexpr double kLastReach = 0.1;
    constexpr std::size_t kMostLooked = 100000;
    double const size = std::max({box.max.x - box.min.x, box.max.y - box.min.y, box.max.z - box.min.z, 1e-6});
    PointTree const tree(others, pace);
    double largest = 0.0;
    for (std::size_t k = 0; k < points.size(); ++k) {
        pace.Step(k, points.size());
        Point3 const& p = points[k];
        double nearest = size * kLastReach;
        for (double reach = size * kFirstReach;; reach = std::min(reach * 16.0, size * kLastReach)) {
            std::size_t looked = 0;
            tree.NearLine(p, p, reach, kMostLooked, looked, [&](std::size_t i) {
                Point3 const& q = others[i];
                nearest = std::min(
                    nearest, std::max({std::fabs(p.x - q.x), std::fabs(p.y - q.y), std::fabs(p.z - q.z)}));
            });
            if (nearest <= reach || reach >= size * kLastReach) break;
        }
        largest = std::max(largest, nearest);
    }
    return largest;
}

// What narrowing to float costs.
double LargestNarrowing(std::span<Point3 const> points) {
    double largest = 0.0;
    auto const lost = [](double value) {
        return std::fabs(value - static_cast<double>(static_cast<float>(value)));
    };
    for (Point3 const& p : points) largest = std::max({largest, lost(p.x), lost(p.y), lost(p.z)});
    return largest;
}

}  // namespace

WriteReport Part::Write(fs::path const& path, MeshWriteSettings const& settings) const {
    Watch watch(settings.progress);
    Pace const pace = Pace(watch).Between(0.0, 0.5);
    OutputFile file(path);
    errno = 0;
    if (!WriteFormat(*this, *m_State, file.PathForWriter(), settings, pace) || HasRefusedBytes(errno)) {
        throw Error(
            ErrorKind::kFile, path,
            std::string("cannot be written: ") + (errno != 0 ? ReasonOf(errno) : "is the disk full?"));
    }
    // It is read back before it takes its place: whoever stops the work meanwhile finds no file.
    Progress const& progress = settings.progress;
    auto const second =
        progress ? Progress([&](double share) { return progress(0.5 + 0.5 * share); }) : Progress();
    WriteReport const report = file.IsReplacing() ? CompareWith(file.PathForWriter(), second) : WriteReport();
    file.Commit();
    return report;
}

WriteReport Part::Write(fs::path const& path, MeshFormat format, Progress const& progress) const {
    MeshWriteSettings settings;
    settings.format = format;
    settings.progress = progress;
    return Write(path, settings);
}

WriteReport Part::CompareWith(fs::path const& path, Progress const& progress) const {
    WriteReport report;
    report.facetsBefore = static_cast<std::int64_t>(Triangles().size());
    report.openEdgesBefore = Measures().openEdges;
    report.volumeBefore = Measures().volume;
    IntakeSettings settings;
    settings.heal = false;
    settings.progress = progress;
    if (report.facetsBefore == 0) return report;
    Part const written = Read(path, settings);
    report.facetsAfter = static_cast<std::int64_t>(written.Triangles().size());
    report.openEdgesAfter = written.Report().openEdgesExact;
    report.volumeAfter = written.Measures().volume;
    bool const narrowed =
        written.Format() == MeshFormat::kBinaryStl || written.Format() == MeshFormat::kPlainCsm;
    Watch watch(progress);
    report.largestError = narrowed
                              ? LargestNarrowing(Points())
                              : LargestDifference(Points(), written.Points(), Measures().box, Pace(watch));
    return report;
}

void Part::Transform(Placement const& placement) {
    auto const& m = placement.rows;
    auto const minor = [&m](std::size_t a, std::size_t b) { return m[1][a] * m[2][b] - m[1][b] * m[2][a]; };
    double const determinant = m[0][0] * minor(1, 2) - m[0][1] * minor(0, 2) + m[0][2] * minor(0, 1);
    for (auto const& row : m) {
        for (double const value : row) {
            if (!std::isfinite(value))
                throw Error(ErrorKind::kArgument, "a number of the placement is not finite");
        }
    }
    if (determinant == 0.0 || !std::isfinite(determinant)) {
        throw Error(ErrorKind::kArgument, "the placement flattens the part");
    }
    auto state = std::make_shared<State>();
    state->mesh = m_State->mesh;
    state->name = m_State->name;
    state->header = m_State->header;
    state->format = m_State->format;
    state->report = m_State->report;
    state->mayHaveCopies = m_State->mayHaveCopies;
    for (Point3& p : state->mesh.points) {
        auto const along = [p, &m](std::size_t i) {
            return m[i][0] * p.x + m[i][1] * p.y + m[i][2] * p.z + m[i][3];
        };
        p = {along(0), along(1), along(2)};
        if (!IsInRange(p)) throw Error(ErrorKind::kArgument, "the placement moves a point beyond 1e10");
    }
    if (determinant < 0.0) {
        for (Triangle& t : state->mesh.triangles) std::swap(t[1], t[2]);
    }
    SetMeasures(*state, m_State->measures.openEdges);
    m_State = std::move(state);
}

std::vector<Part> Part::Split() const {
    std::span<Body const> const bodies = Bodies();
    std::vector<std::vector<std::size_t>> members(bodies.size());
    for (std::size_t i = 0; i < bodies.size(); ++i) members[bodies[i].Enclosing().value_or(i)].push_back(i);
    std::vector<Part> parts;
    for (std::vector<std::size_t> const& group : members) {
        if (group.empty()) continue;
        auto state = std::make_shared<State>();
        std::int64_t openEdges = 0;
        for (std::size_t const i : group) {
            auto const offset = static_cast<std::int32_t>(state->mesh.points.size());
            state->mesh.points.insert(state->mesh.points.end(), bodies[i].Points().begin(),
                                      bodies[i].Points().end());
            for (Triangle const& t : bodies[i].Triangles()) {
                state->mesh.triangles.push_back({t[0] + offset, t[1] + offset, t[2] + offset});
            }
            openEdges += bodies[i].Measures().openEdges;
        }
        state->name = m_State->name;
        state->header = m_State->header;
        state->format = m_State->format;
        auto const facets = static_cast<std::int64_t>(state->mesh.triangles.size());
        state->report.facetsInFile = facets;
        state->report.facetsRead = facets;
        state->report.openEdgesExact = openEdges;
        state->report.openEdges = openEdges;
        SetMeasures(*state, openEdges);
        parts.push_back(Part(std::move(state)));
    }
    return parts;
}

}  // namespace varnet
