#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "part/LargeVector.h"
#include "varnet/Geometry.h"

namespace varnet {

/// Joins equal points: -0.0 and 0.0 are equal. An open hash table (Knuth, The Art of Computer Programming,
/// vol. 3, 6.4, linear probing) of point numbers and 32 bits of their hashes, so that a point is looked at
/// only where it is very likely the one.
class Welder {
public:
    /// New points go to the end of the list, which nobody else may change meanwhile. There will be about so
    /// many.
    Welder(LargeVector<Point3>& points, std::size_t expected);

    /// The number of the point.
    std::int32_t Add(Point3 const& point);
    /// The numbers of many points; those whose places lie scattered in memory are on their way together.
    void Add(std::span<Point3 const> points, std::int32_t* numbers);

private:
    std::int32_t Find(Point3 const& point, std::uint32_t hash);
    void Grow();

    LargeVector<Point3>& m_Points;
    LargeVector<std::uint64_t> m_Slots;  // hash above, number + 1 below; 0 for empty
    std::size_t m_Mask;
};

}  // namespace varnet
