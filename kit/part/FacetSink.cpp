#include "part/FacetSink.h"

#include <algorithm>
#include <cmath>

namespace varnet {

FacetSink::FacetSink(RawMesh& raw, IntakeReport& report, double scale, std::size_t expected)
    : m_Raw(raw), m_Report(report), m_Scale(scale), m_Welder(raw.mesh.points, expected / 2 + 2) {
    raw.mesh.points.reserve(expected / 2 + 2);
    raw.mesh.triangles.reserve(expected);
    m_Corners.reserve(kBlock);
    m_Numbers.resize(kBlock);
}

void FacetSink::Flush() {
    m_Report.facetsRead += static_cast<std::int64_t>(m_Corners.size() / 3);
    if (m_Scale != 1.0) {
        for (Point3& p : m_Corners) p = m_Scale * p;
    }
    DropNotFinite();
    Measure();
    m_Welder.Add(m_Corners, m_Numbers.data());
    for (std::size_t i = 0; i + 2 < m_Corners.size(); i += 3) {
        std::int32_t const a = m_Numbers[i];
        std::int32_t const b = m_Numbers[i + 1];
        std::int32_t const c = m_Numbers[i + 2];
        if (a == b || b == c || c == a) {
            ++m_Report.degenerate;
        } else {
            for (std::size_t k = i; k < i + 3; ++k) {
                Point3 const& p = m_Corners[k];
                if (p.x == 0.0 || p.y == 0.0 || p.z == 0.0) NoteZeros(k);
            }
            m_Raw.mesh.triangles.push_back({a, b, c});
        }
    }
    m_Corners.clear();
}

// Of the triangle that comes next.
void FacetSink::NoteZeros(std::size_t corner) {
    auto const negative = [](Point3 const& p) {
        auto const bit = [](double value, unsigned place) {
            return value == 0.0 && std::signbit(value) ? 1u << place : 0u;
        };
        return bit(p.x, 0) | bit(p.y, 1) | bit(p.z, 2);
    };
    unsigned const here = negative(m_Corners[corner]);
    if (here == negative(m_Raw.mesh.points[static_cast<std::size_t>(m_Numbers[corner])])) return;
    m_Raw.zeros.push_back({static_cast<std::int64_t>(3 * m_Raw.mesh.triangles.size() + corner % 3), here});
}

void FacetSink::DropNotFinite() {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < m_Corners.size(); i += 3) {
        if (!(IsInRange(m_Corners[i]) && IsInRange(m_Corners[i + 1]) && IsInRange(m_Corners[i + 2]))) {
            ++m_Report.notFinite;
            continue;
        }
        if (kept != i) {
            for (std::size_t k = 0; k < 3; ++k) m_Corners[kept + k] = m_Corners[i + k];
        }
        kept += 3;
    }
    m_Corners.resize(kept);
}

// What the corners tell while they are at hand. Whether a facet is collinear is judged with room for what the
// order of the corners changes: the judge looks again.
void FacetSink::Measure() {
    constexpr double kRoom = 4.0;
    constexpr double kLimit = kRoom * kCollinear * kCollinear;
    FacetSums sums = m_Raw.sums;
    if (m_Raw.mesh.points.empty() && !m_Corners.empty()) sums.about = m_Corners[0];
    double least = 2.0 * kLimit;
    for (std::size_t i = 0; i < m_Corners.size(); i += 3) {
        Point3 const& a = m_Corners[i];
        Point3 const normal = Cross(m_Corners[i + 1] - a, m_Corners[i + 2] - a);
        double const square = Dot(normal, normal);
        least = std::min(least, square);
        sums.area2 += std::sqrt(square);
        sums.volume6 += Dot(a - sums.about, normal);
        sums.normals = sums.normals + normal;
    }
    m_Raw.hasCollinear |= least <= kLimit;
    m_Raw.sums = sums;
}

}  // namespace varnet
