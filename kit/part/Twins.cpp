#include "part/Twins.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "part/LargeVector.h"
#include "part/PointHash.h"

namespace varnet {

namespace {

constexpr std::size_t kSlotsPerPoint = 2;

// So many points are on their way at a time.
constexpr std::size_t kGroup = 64;

// Farther from its place than this no hash stands, unless somebody has chosen the points for it.
constexpr std::size_t kMostSteps = 64;

// Hashes of points, one half of which leads to the place where the other half stands: an open table with
// linear probing, 0 for empty.
class Hashes {
public:
    explicit Hashes(std::size_t points)
        : m_Slots(std::bit_ceil(std::max(kGroup, kSlotsPerPoint * points)), 0), m_Mask(m_Slots.size() - 1) {}

    void BringNear(std::uint64_t hash) const { varnet::BringNear(&m_Slots[hash & m_Mask]); }
    /// False when the hash is there, or no place for it is found.
    bool Add(std::uint64_t hash) {
        std::uint32_t const mark = static_cast<std::uint32_t>(hash >> 32) | 1;
        for (std::size_t step = 0; step < kMostSteps; ++step) {
            std::uint32_t& slot = m_Slots[(hash + step) & m_Mask];
            if (slot == mark) return false;
            if (slot != 0) continue;
            slot = mark;
            return true;
        }
        return false;
    }

private:
    LargeVector<std::uint32_t> m_Slots;
    std::size_t m_Mask;
};

}  // namespace

bool MayHaveTwins(std::span<Point3 const> points) {
    Hashes seen(points.size());
    bool positive = false;
    bool negative = false;
    std::array<std::uint64_t, kGroup> hashes;
    for (std::size_t first = 0; first < points.size(); first += kGroup) {
        auto const group = points.subspan(first, std::min(kGroup, points.size() - first));
        for (std::size_t i = 0; i < group.size(); ++i) {
            Point3 const& p = group[i];
            if (std::isnan(p.x) || std::isnan(p.y) || std::isnan(p.z)) return true;
            positive |= p.z == 0.0 && !std::signbit(p.z);
            negative |= p.z == 0.0 && std::signbit(p.z);
            hashes[i] = HashOf(p);
            seen.BringNear(hashes[i]);
        }
        for (std::size_t i = 0; i < group.size(); ++i) {
            if (!seen.Add(hashes[i])) return true;
        }
    }
    return positive && negative;
}

}  // namespace varnet
