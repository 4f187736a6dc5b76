#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "slice/Arrangement.h"
#include "slice/Cut.h"
#include "slice/FacetIndex.h"
#include "slice/JoinEnds.h"
#include "slice/Nesting.h"
#include "slice/Paths.h"
#include "slice/Pulse.h"
#include "varnet/Slicer.h"

namespace varnet {

/// All that is known before the first layer is made. May be shared between threads.
struct SlicePlan {
    SliceSettings settings;
    LayerHeights heights;
    Grid partGrid{Box2()};
    Grid supportGrid{Box2()};
    std::vector<FacetIndex> parts;
    std::vector<FacetIndex> supports;
    double meshVolume = 0.0;
    std::int64_t skippedFacets = 0;
};

/// What is measured of the facets that can be sliced.
struct PlanMeasures {
    Box3 parts;
    Box3 supports;
    double volume = 0.0;       ///< of the parts, by their winding
    std::int64_t skipped = 0;  ///< facets with a corner that is no number or beyond 1e10 mm
};

/// Throws Error of kind kArgument for settings that make no sense whatever is sliced.
void CheckSettings(SliceSettings const& settings);

/// A plan that has no facets yet. Throws Error of kind kArgument, as Slicer says.
SlicePlan PlanFor(PlanMeasures const& measures, SliceSettings const& settings);

/// Throws Error of kind kArgument, as Slicer says.
SlicePlan PlanSlices(std::vector<SlicerInput> const& inputs, SliceSettings const& settings, Pulse& pulse);

/// What is to be said of one layer, beside the layer.
struct LayerFacts {
    JoinFigures joins;
    double cutArea = 0.0;    ///< by the winding of what was cut
    double solidArea = 0.0;  ///< before points were taken out
    double area = 0.0;       ///< of the layer's contours
    double length = 0.0;     ///< of the layer's contours
    bool resolved = false;
};

struct SlicedLayer {
    Layer layer;
    LayerFacts facts;
};

/// Makes layers of a plan, in any order; fastest from below. What a layer is does not depend on those made
/// before.
class LayerMaker {
public:
    explicit LayerMaker(SlicePlan const& plan);
    /// Of a plan without facets, which come from the sweep.
    LayerMaker(SlicePlan const& plan, CutSweep&& sweep);
    SlicedLayer Make(int number, Pulse& pulse);

private:
    void Resolve(Grid const& grid, LayerFacts& facts, Pulse& pulse);
    void MakeParts(SlicedLayer& sliced, Pulse& pulse);
    void MakeSupports(SlicedLayer& sliced, double angle, Pulse& pulse);

    SlicePlan const* m_Plan;
    std::vector<CutSweep> m_Parts;
    std::vector<CutSweep> m_Supports;
    NestingSweep m_Nesting;
    std::vector<Nested> m_Nested;
    Paths m_Cut;
    Paths m_Closed;
    Paths m_Open;
    Paths m_ThinOpen;
    SolidContours m_Solid;
    SolidContours m_Thin;
    SolidContours m_SupportSolid;
};

/// Adds a layer that was made to the report; the part fills so many millimetres of its height.
void Count(SlicedLayer const& sliced, double thickness, SliceReport& report);

}  // namespace varnet
