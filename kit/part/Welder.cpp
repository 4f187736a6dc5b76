#include "part/Welder.h"

#include <algorithm>
#include <bit>

#include "part/PointHash.h"
#include "varnet/Error.h"

namespace varnet {

namespace {

// So many points are on their way at a time.
constexpr std::size_t kGroup = 96;

constexpr std::size_t kSmallest = 64;

// Half of the table stays empty.
constexpr std::size_t kSlotsPerPoint = 2;

// Half-edges, three a facet, are numbered in 32 bits.
constexpr std::size_t kMostPoints = 0x7FFFFFFF / 3;

std::uint32_t ShortHashOf(Point3 const& point) { return static_cast<std::uint32_t>(HashOf(point)); }

}  // namespace

Welder::Welder(LargeVector<Point3>& points, std::size_t expected) : m_Points(points) {
    m_Slots.assign(std::bit_ceil(std::max(kSmallest, kSlotsPerPoint * expected)), 0);
    m_Mask = m_Slots.size() - 1;
}

std::int32_t Welder::Add(Point3 const& point) { return Find(point, ShortHashOf(point)); }

void Welder::Add(std::span<Point3 const> points, std::int32_t* numbers) {
    std::uint32_t hashes[kGroup];
    for (std::size_t first = 0; first < points.size(); first += kGroup) {
        std::size_t const count = std::min(kGroup, points.size() - first);
        for (std::size_t i = 0; i < count; ++i) {
            hashes[i] = ShortHashOf(points[first + i]);
            BringNear(&m_Slots[hashes[i] & m_Mask]);
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::uint64_t const slot = m_Slots[hashes[i] & m_Mask];
            if (slot != 0) BringNear(m_Points.data() + (static_cast<std::uint32_t>(slot) - 1));
        }
        for (std::size_t i = 0; i < count; ++i) numbers[first + i] = Find(points[first + i], hashes[i]);
    }
}

std::int32_t Welder::Find(Point3 const& point, std::uint32_t hash) {
    for (std::size_t place = hash & m_Mask;; place = (place + 1) & m_Mask) {
        std::uint64_t const slot = m_Slots[place];
        if (slot == 0) {
            if (m_Points.size() >= kMostPoints) throw Error(ErrorKind::kContent, "too many corners");
            m_Points.push_back(point);
            m_Slots[place] = std::uint64_t{hash} << 32 | m_Points.size();
            auto const number = static_cast<std::int32_t>(m_Points.size() - 1);
            if (kSlotsPerPoint * m_Points.size() > m_Slots.size()) Grow();
            return number;
        }
        auto const number = static_cast<std::uint32_t>(slot) - 1;
        if (slot >> 32 == hash && m_Points[number] == point) return static_cast<std::int32_t>(number);
    }
}

void Welder::Grow() {
    LargeVector<std::uint64_t> slots(2 * m_Slots.size(), 0);
    m_Mask = slots.size() - 1;
    for (std::uint64_t const slot : m_Slots) {
        if (slot == 0) continue;
        std::size_t place = (slot >> 32) & m_Mask;
        while (slots[place] != 0) place = (place + 1) & m_Mask;
        slots[place] = slot;
    }
    m_Slots = std::move(slots);
}

}  // namespace varnet
