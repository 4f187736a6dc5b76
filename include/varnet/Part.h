#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "varnet/Error.h"
#include "varnet/Export.h"
#include "varnet/Geometry.h"

class CSTLModel;  // of the door, Varnet64.h

namespace varnet {

/// The formats of meshes. All are read; kAsciiStl, kOltp and kThreeDmf are not written.
enum class MeshFormat { kAsciiStl, kBinaryStl, kOltp, kThreeDmf, kPlainCsm, kStripCsm, kRingCsm };
/// "binary STL"
VARNET_KIT_API char const* NameOf(MeshFormat format);

/// The tolerances that are tried, millimetres, where corners that are equal leave open edges.
inline constexpr std::array<double, 5> kWeldTolerances = {1e-6, 1e-5, 1e-4, 1e-3, 1e-2};

/// How a mesh is taken in.
struct IntakeSettings {
    /// Corners nearer than this (millimetres, on each axis) become one. Without it corners are joined where
    /// they are equal, and where that leaves open edges, the corners on open edges by the smallest of
    /// kWeldTolerances that leaves the fewest.
    std::optional<double> weld;
    double scale = 1.0;  ///< every coordinate is multiplied by this: 25.4 for inches, 1000 for metres
    bool heal = true;    ///< false: equal corners are joined, and nothing else is done
    Progress progress;
};

/// What was found in a mesh, and what was done to it.
struct IntakeReport {
    std::int64_t facetsInFile = 0;     ///< announced, or counted in text
    std::int64_t facetsRead = 0;       ///< that came out of the file
    std::int64_t notFinite = 0;        ///< left out: a corner is no number or beyond 1e10
    std::int64_t degenerate = 0;       ///< left out: two corners are one
    std::int64_t doubled = 0;          ///< left out: the same three corners in the same order, once too often
    std::int64_t collinearTurned = 0;  ///< facets without area that were taken out by turning an edge
    std::int64_t collinearLeft = 0;    ///< facets without area that stay: to take them out would open edges
    std::int64_t tiny = 0;             ///< facets that stay, of less area than a classic model takes
    std::int64_t split = 0;            ///< facets that were divided at a vertex on their edge
    std::int64_t welded = 0;           ///< vertices that were joined with a near one
    double weldTolerance = 0.0;        ///< by which they were; 0 for equal corners alone
    std::int64_t manyFacetEdges = 0;   ///< edges of more than two facets
    /// By equal corners, as in the file: directed edges without their opposite.
    std::int64_t openEdgesExact = 0;
    std::int64_t openEdges = 0;      ///< afterwards
    std::vector<std::string> notes;  ///< a line each for a person: what was lost or put right, and where
};

/// What one wants to know of a body or a part.
struct MeshMeasures {
    Box3 box;
    double area = 0.0;
    /// Signed: above 0 when the facets of a closed mesh face outward. That of an open one is measured about
    /// the origin.
    double volume = 0.0;
    std::int64_t openEdges = 0;
};

/// What a repair did.
struct RepairReport {
    std::int64_t turned = 0;           ///< facets that contradicted their shell
    std::int64_t doubled = 0;          ///< facets left out that stood there once too often
    std::int64_t split = 0;            ///< facets divided at a vertex on their edge, once others were turned
    std::int64_t openEdgesBefore = 0;  ///< by equal corners, as in the file
    std::int64_t openEdgesAfter = 0;
    std::int64_t holesFilled = 0;
    std::int64_t facetsAdded = 0;    ///< by filling
    std::int64_t bodiesTurned = 0;   ///< whole bodies that were turned outward, where that was asked for
    std::int64_t holesLeft = 0;      ///< with rims that are longer than asked for
    std::vector<std::string> notes;  ///< a line each for a person
};

/// A hole whose rim has more edges than this is filled in parts.
inline constexpr std::size_t kMostRimEdges = 400;

struct RepairSettings {
    /// Millimetres: holes with rims up to this length are closed, by the triangulation of least area; 0 for
    /// none. A rim that touches itself is several. One of more than kMostRimEdges edges is filled in parts,
    /// each with the least area: for the whole the work would grow with the third power. A facet that hangs
    /// together with no other stays open, as do edges of facets that contradict each other.
    double fillHoles = 0.0;
    bool outward = false;  ///< turn whole bodies that are inside out
    Progress progress;
};

/// What a file holds beside what was to be written into it.
struct WriteReport {
    std::int64_t facetsBefore = 0;
    std::int64_t facetsAfter = 0;
    std::int64_t openEdgesBefore = 0;
    std::int64_t openEdgesAfter = 0;  ///< by equal corners, as the file has them
    double volumeBefore = 0.0;
    double volumeAfter = 0.0;
    /// The largest distance, on an axis, of a point from the nearest one in the file.
    double largestError = 0.0;
};

/// How a mesh is written.
struct MeshWriteSettings {
    MeshFormat format = MeshFormat::kBinaryStl;
    bool floats = false;           ///< CSM in strips: points as floats, not on a grid of 16 bits
    std::filesystem::path header;  ///< CSM in strips: a file with the header's text; none when empty
    Progress progress;
};

/// A map of space: three rows of a matrix and, behind each, an offset in millimetres. A point p goes to
/// (row 0 . p + offset, row 1 . p + offset, row 2 . p + offset).
struct Placement {
    std::array<std::array<double, 4>, 3> rows = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
};

class Part;

/// Facets of a part that hang together across edges. Where more than two facets share an edge, they are
/// paired by the angle about it, the solid between them, so that bodies which only touch are several.
///
/// A body belongs to its part, and is valid as long as that is neither destroyed, assigned to nor changed. It
/// does not change, and may be used by several threads at a time.
class VARNET_KIT_API Body {
public:
    Body(Body&& other) noexcept;
    Body& operator=(Body&& other) noexcept;
    ~Body();

    /// Points, and triangles of their indexes in the order of the part. Where the part has one body only,
    /// these are the part's own.
    std::span<Point3 const> Points() const { return m_Points; }
    std::span<Triangle const> Triangles() const { return m_Triangles; }
    MeshMeasures const& Measures() const { return m_Measures; }
    /// Whether it bounds a hollow: it lies inside another body, and its facets face the other way than that
    /// one's.
    bool IsCavity() const { return m_Enclosing.has_value(); }
    /// Of a cavity the number of the body around it, the smallest of several; else nothing.
    std::optional<std::size_t> Enclosing() const { return m_Enclosing; }
    /// Whether its facets face inward, of a cavity outward. Facets face inward where the volume is below 0:
    /// of an open body not the one that is measured, which depends on where it stands, but with its rims
    /// closed. Of a part whose bodies have less than no volume together, all bodies are inside out, with
    /// their cavities, but for those that lie in no other and face outward.
    bool IsInsideOut() const { return m_IsInsideOut; }

    /// The body as a model of the classic kind, made on each call: with a tolerance of 0, each facet given to
    /// AddFacet in order. Of facets on the same three corners such a model holds one, or none where as many
    /// face each way; facets whose doubled area is not above 1e-10 square millimetres it refuses. How many
    /// were left out goes to `refused` where that is given.
    std::unique_ptr<CSTLModel> Model(std::int64_t* refused = nullptr) const;

private:
    friend class Part;
    Body();

    std::vector<Point3> m_OwnPoints;
    std::vector<Triangle> m_OwnTriangles;
    std::span<Point3 const> m_Points;
    std::span<Triangle const> m_Triangles;
    MeshMeasures m_Measures;
    bool m_IsInsideOut = false;
    std::optional<std::size_t> m_Enclosing;
};

/// A mesh as a person has it: read from a file or given as arrays, with what can be put right put right, and
/// divided into bodies.
///
/// What it hands out by reference or as a span is good until the part is changed, assigned to or destroyed.
///
/// Copies are cheap: they share what does not change. A part that is not changed may be used by several
/// threads at a time. Operations that throw leave it as it was.
class VARNET_KIT_API Part {
public:
    /// Without facets.
    Part();
    /// Reads a file of any format; its content says which. Several solids in one STL file are one part.
    /// Throws an Error of kind kFile where the system refuses, of kind kContent where the file is no model or
    /// holds no facets that can be used, of kind kArgument where a setting makes no sense, of kind
    /// kCancelled.
    ///
    /// Takes about one and a half times the bytes of a binary file whose facets meet, up to twelve times
    /// those of one where no two do, and no more for what a file announces.
    static Part Read(std::filesystem::path const& path, IntakeSettings const& settings = {});
    /// From points and triangles of their indexes. Throws an Error of kind kArgument that names a triangle
    /// whose index no point has, and for settings that make no sense; of kind kCancelled.
    Part(std::span<Point3 const> points, std::span<Triangle const> triangles,
         IntakeSettings const& settings = {});
    /// From the facets of a classic model, in the order of its surfaces. The model is not changed and not
    /// kept.
    explicit Part(CSTLModel const& model, IntakeSettings const& settings = {});

    /// The file's name without its extension; empty for a part that comes from none.
    std::string const& Name() const;
    /// The text of the file's header: of ASCII STL the name behind `solid`.
    std::string const& Header() const;
    /// Of the file; kBinaryStl for a part that comes from none.
    MeshFormat Format() const;

    /// Points, and triangles of their indexes, in the order of the file but for what was put right: a facet
    /// that was divided stands as its pieces in its place.
    std::span<Point3 const> Points() const;
    std::span<Triangle const> Triangles() const;
    /// What was found in the file, and what was done to it.
    IntakeReport const& Report() const;
    /// Of all facets.
    MeshMeasures const& Measures() const;
    /// In the order of their first facets. The first call takes some time, about as long as reading.
    std::span<Body const> Bodies() const;
    /// All facets in one model of the classic kind; see Body::Model.
    std::unique_ptr<CSTLModel> Model(std::int64_t* refused = nullptr) const;

    /// Turns the facets that contradict their own shell, closes holes where that is asked for, and turns
    /// bodies outward where that is. A closed part whose facets agree is not changed. Never ends with more
    /// open edges than it began. Throws an Error of kind kArgument for settings that make no sense, of kind
    /// kCancelled.
    RepairReport Repair(RepairSettings const& settings = {});
    /// The part as a slicer takes it: where facets contradict their own shell, as Repair turns them, else the
    /// part itself. Made when it is first asked for, and good as long as what the part hands out.
    Part const& AsSliced() const;
    /// Moves every point. A map that mirrors turns all facets, so that the outside stays outside. Throws an
    /// Error of kind kArgument where a number of the map is not finite, the map flattens space, or a point
    /// would land beyond 1e10.
    void Transform(Placement const& placement);
    /// A part for each body that is no cavity, with the cavities in it, in the order of the bodies.
    std::vector<Part> Split() const;

    /// Writes a file, under its name only when it is complete, and reads it back to see what it holds.
    /// Devices and pipes are written to directly, and not read back; "-" is standard output; a file that is
    /// replaced keeps owner and mode. Coordinates are narrowed to float, in compressed formats to the grid of
    /// the format. Throws an Error of kind kArgument for a format that is not
    /// written, of kind kFile where the system refuses, of kind kContent where the format cannot hold the
    /// part, of kind kCancelled.
    WriteReport Write(std::filesystem::path const& path, MeshWriteSettings const& settings) const;
    WriteReport Write(std::filesystem::path const& path, MeshFormat format = MeshFormat::kBinaryStl,
                      Progress const& progress = {}) const;
    /// What the file holds beside this part.
    WriteReport CompareWith(std::filesystem::path const& path, Progress const& progress = {}) const;

    struct State;  ///< of the kit's inside

private:
    explicit Part(std::shared_ptr<State const> state);
    static std::vector<Body> MakeBodies(State const& state);
    std::shared_ptr<State const> m_State;
};

}  // namespace varnet
