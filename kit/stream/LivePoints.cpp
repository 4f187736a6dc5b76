#include "stream/LivePoints.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "varnet/Error.h"

namespace varnet {

namespace {

constexpr std::int32_t kNone = -1;

// So many points are never looked through.
constexpr std::size_t kFew = 1024;

std::uint64_t HashOf(Point3 const& point) {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15u;
    // A sum with 0.0 has no negative zero.
    std::uint64_t hash = std::bit_cast<std::uint64_t>(point.x + 0.0);
    hash = (hash ^ hash >> 32) * kOdd + std::bit_cast<std::uint64_t>(point.y + 0.0);
    hash = (hash ^ hash >> 32) * kOdd + std::bit_cast<std::uint64_t>(point.z + 0.0);
    hash = (hash ^ hash >> 29) * kOdd;
    return hash ^ hash >> 32;
}

std::size_t Index(std::int32_t n) { return static_cast<std::size_t>(n); }

}  // namespace

void LivePoints::Clear() { *this = LivePoints(); }

std::int32_t LivePoints::Add(Point3 const& point, std::int32_t lastLayer) {
    if (2 * (m_Count + 1) > m_Table.size()) MakeTable(2 * (m_Count + 1));
    std::size_t const slot = SlotOf(point);
    std::int32_t& number = m_Table[slot];
    if (number == kNone) {
        number = NewNumber();
        m_Points[Index(number)] = point;
        m_LastLayer[Index(number)] = lastLayer;
        ++m_Count;
    } else {
        m_LastLayer[Index(number)] = std::max(m_LastLayer[Index(number)], lastLayer);
    }
    return number;
}

// Where the point is in the table, or would be.
std::size_t LivePoints::SlotOf(Point3 const& point) const {
    std::size_t const mask = m_Table.size() - 1;
    std::size_t slot = static_cast<std::size_t>(HashOf(point)) & mask;
    while (m_Table[slot] != kNone && !(m_Points[Index(m_Table[slot])] == point)) slot = (slot + 1) & mask;
    return slot;
}

std::int32_t LivePoints::NewNumber() {
    if (!m_Free.empty()) {
        std::int32_t const number = m_Free.back();
        m_Free.pop_back();
        return number;
    }
    if (m_Points.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw Error(ErrorKind::kContent, "a layer cuts facets with more than 2147483647 corners");
    }
    m_Points.emplace_back();
    m_LastLayer.push_back(0);
    return static_cast<std::int32_t>(m_Points.size() - 1);
}

// Once half of them or more may be gone: so each costs a few steps only.
void LivePoints::Forget(std::int32_t layer) {
    if (m_Count <= 2 * m_Kept + kFew) return;
    for (std::size_t i = 0; i < m_Points.size(); ++i) {
        if (m_LastLayer[i] == 0 || m_LastLayer[i] >= layer) continue;
        m_LastLayer[i] = 0;
        m_Free.push_back(static_cast<std::int32_t>(i));
        --m_Count;
    }
    m_Kept = m_Count;
    MakeTable(m_Count);
}

void LivePoints::MakeTable(std::size_t points) {
    m_Table.assign(std::bit_ceil(std::max<std::size_t>(3 * points, kFew)), kNone);
    for (std::size_t i = 0; i < m_Points.size(); ++i) {
        if (m_LastLayer[i] != 0) m_Table[SlotOf(m_Points[i])] = static_cast<std::int32_t>(i);
    }
}

}  // namespace varnet
