#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "varnet/Geometry.h"

namespace varnet {

/// The corners of the facets that are being cut: equal ones have one number. Numbers of points that no facet
/// has any more go to new ones. An open hash table (Knuth, The Art of Computer Programming, vol. 3, 6.4,
/// linear probing).
class LivePoints {
public:
    std::span<Point3 const> All() const { return m_Points; }
    void Clear();
    /// The number of a point that is needed up to this layer. 0.0 and -0.0 are equal. Throws Error of kind
    /// kContent for more points than numbers.
    std::int32_t Add(Point3 const& point, std::int32_t lastLayer);
    /// Points that are needed below this layer only may be forgotten.
    void Forget(std::int32_t layer);

private:
    std::size_t SlotOf(Point3 const& point) const;
    std::int32_t NewNumber();
    void MakeTable(std::size_t points);

    std::vector<Point3> m_Points;
    std::vector<std::int32_t> m_LastLayer;  // by number; 0 for a free one
    std::vector<std::int32_t> m_Free;
    std::vector<std::int32_t> m_Table;  // numbers, -1 for none
    std::size_t m_Count = 0;            // in the table
    std::size_t m_Kept = 0;             // when it was last looked through
};

}  // namespace varnet
