#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "part/FlatMesh.h"
#include "part/Welder.h"

namespace varnet {

/// Takes facets as readers find them: scales them, leaves out those that are none, joins equal corners, and
/// counts. The one who made it calls Flush at the end.
class FacetSink {
public:
    /// There will be about so many facets.
    FacetSink(RawMesh& raw, IntakeReport& report, double scale, std::size_t expected);

    /// A facet's three corners.
    void Add(Point3 const& a, Point3 const& b, Point3 const& c) {
        m_Corners.push_back(a);
        m_Corners.push_back(b);
        m_Corners.push_back(c);
        if (m_Corners.size() >= kBlock) Flush();
    }
    void Flush();

private:
    static constexpr std::size_t kBlock = 3072;  // a thousand facets

    void DropNotFinite();
    void Measure();
    void NoteZeros(std::size_t corner);

    RawMesh& m_Raw;
    IntakeReport& m_Report;
    double m_Scale;
    Welder m_Welder;
    std::vector<Point3> m_Corners;
    std::vector<std::int32_t> m_Numbers;
};

}  // namespace varnet
