#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "varnet/Error.h"
#include "varnet/Export.h"
#include "varnet/Geometry.h"
#include "varnet/Part.h"
#include "varnet/Slicer.h"

namespace varnet {

/// What needs support, and what supports look like. Degrees and millimetres.
struct SupportSettings {
    /// Facets less than this from straight down need support. Chamfers are drawn at 45 degrees so that they
    /// print without: a threshold of 45 finds those that rounding has put on its wrong side, facet by facet,
    /// so the default is below.
    double angle = 44.0;
    bool connectByVertex = false;  ///< facets that touch in a vertex alone are one region
    double minArea = 1.0;          ///< square mm, projected: smaller regions need to hang free
    double down = 0.0;      ///< solids are closed and of this height; 0: down to the lowest point of the part
    double edgesUp = 45.0;  ///< facets less than this from straight up hold an edge,
    double edgesDown = 45.0;  ///< and those less than this from straight down
    double edgeLength = 1.0;  ///< chains of hanging edges must be longer than this
    double stroke = 0.5;      ///< regions narrower than a stroke are counted as small
    Progress progress;
};

/// A region of facets that face down.
struct Overhang {
    std::vector<std::int32_t> triangles;  ///< indexes into Part::Triangles()
    double area = 0.0;
    double projectedArea = 0.0;  ///< on the plate
    Box3 box;
    bool supported = false;  ///< gets a solid
    std::string why;         ///< "faces down", "rests on the plate", ...
};

/// A chain of edges from which the part hangs, and that nothing holds.
struct HangingEdge {
    std::vector<Point3> points;
    double length = 0.0;
    double lowest = 0.0;
};

/// A solid that holds an overhang or a hanging edge up.
struct SupportSolid {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
};

/// What hangs on a part, and the solids that hold it. Facets that contradict their shell count as turned.
class VARNET_KIT_API Supports {
public:
    Supports() = default;
    /// Throws Error of kind kArgument for settings that make no sense; kCancelled.
    explicit Supports(Part const& part, SupportSettings const& settings = {});

    std::span<Overhang const> Overhangs() const { return m_Overhangs; }
    std::span<HangingEdge const> Edges() const { return m_Edges; }
    /// Below supported overhangs first, then below edges. Down to the plate those below faces are open at the
    /// bottom.
    std::span<SupportSolid const> Solids() const { return m_Solids; }
    /// Supported regions whose projected area is less than a stroke's width squared: their solids print
    /// badly.
    std::int64_t SmallRegions() const { return m_SmallRegions; }
    /// All solids as one mesh of the given format, under its name only when it is complete; without solids a
    /// file of no facets. Throws Error of kind kFile.
    void Write(std::filesystem::path const& path, MeshFormat format = MeshFormat::kBinaryStl) const;

private:
    std::vector<Overhang> m_Overhangs;
    std::vector<HangingEdge> m_Edges;
    std::vector<SupportSolid> m_Solids;
    std::int64_t m_SmallRegions = 0;
};

/// What makes facets one surface.
enum class SurfaceRule {
    kNormals,  ///< normals of neighbours differ by less than 30 degrees; small surfaces join a neighbour
    kOctants,  ///< the normal's octant, upright facets apart
    kShells    ///< all that hang together
};

/// A surface of a part.
struct Surface {
    std::int64_t facets = 0;
    double area = 0.0;
    double rimLength = 0.0;
    std::uint32_t color = 0;  ///< 0xRRGGBB, from a palette of eight
};

/// A part divided into surfaces.
struct VARNET_KIT_API Surfaces {
    Surfaces() = default;
    /// Throws Error of kind kCancelled.
    explicit Surfaces(Part const& part, SurfaceRule rule = SurfaceRule::kNormals,
                      Progress const& progress = {});

    std::vector<Surface> all;
    /// For each triangle of the part its surface; -1 where the classic model refused the triangle.
    std::vector<std::int32_t> ofTriangle;
};

/// What a Slicer is to cut: the parts, with facets that contradict their shell and bodies that are inside out
/// as if they were turned, and the solids that support them. Parts and supports must live, and stay as they
/// are, for as long as the Slicer does.
VARNET_KIT_API std::vector<SlicerInput> SlicerInputs(std::span<Part const> parts,
                                                     std::span<Supports const> supports = {});
VARNET_KIT_API std::vector<SlicerInput> SlicerInputs(Part const& part);
VARNET_KIT_API std::vector<SlicerInput> SlicerInputs(Part const& part, Supports const& supports);

}  // namespace varnet
