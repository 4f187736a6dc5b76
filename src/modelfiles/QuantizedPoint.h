#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "foundation/BoundBox.h"
#include "foundation/Point.h"
#include "foundation/files/LittleEndian.h"

namespace varnet {

// How the compressed files hold points: as whole numbers of steps from the least corner of the model's box.

/// Where a file's points count from, and steps a millimetre.
struct PointGrid {
    CPoint3D origin;
    double dScale;
};

/// The grid of a box that divides its largest extent, and one millimetre more, into so many steps: so every
/// number of a point in the box stays below that.
inline PointGrid GridOf(CBoundBox3D const& box, double dSteps) {
    CPoint3D const& least = box.m_ptMin;
    CPoint3D const& greatest = box.m_ptMax;
    double const dExtent =
        std::fmax(greatest.x - least.x, std::fmax(greatest.y - least.y, greatest.z - least.z));
    return {least, dSteps / (dExtent + 1.0)};
}

/// The low bits of the number of steps, truncated towards zero; 0 for one that no 64-bit integer holds.
inline std::uint32_t WholeSteps(double dSteps) {
    constexpr double kLimit = 9223372036854775808.0;
    if (!(dSteps > -kLimit && dSteps < kLimit)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(dSteps)));
}

/// A point of the ring stream: three numbers of 24 bits.
namespace ring_point {
inline constexpr double kSteps = 16777216.0;
inline constexpr std::size_t kSize = 9;

inline void Store(unsigned char* pBytes, CPoint3D const& point, PointGrid const& grid) {
    StoreUnsigned24(pBytes, WholeSteps((point.x - grid.origin.x) * grid.dScale));
    StoreUnsigned24(pBytes + 3, WholeSteps((point.y - grid.origin.y) * grid.dScale));
    StoreUnsigned24(pBytes + 6, WholeSteps((point.z - grid.origin.z) * grid.dScale));
}
}  // namespace ring_point

/// A point of the strip stream: three numbers of 16 bits, or three floats where the scale is 0.0. The
/// coordinates go through float in either case.
namespace strip_point {
inline constexpr double kSteps = 65536.0;
inline constexpr std::size_t kLongest = 12;

inline std::size_t Size(double dScale) { return dScale == 0.0 ? kLongest : 6; }

/// Returns the end of what it has written.
inline unsigned char* Store(unsigned char* pBytes, CPoint3D const& point, PointGrid const& grid) {
    std::array<float, 3> const values = {static_cast<float>(point.x), static_cast<float>(point.y),
                                         static_cast<float>(point.z)};
    if (grid.dScale == 0.0) {
        for (std::size_t i = 0; i < 3; ++i) StoreFloat(pBytes + 4 * i, values[i]);
    } else {
        std::array<double, 3> const origin = {grid.origin.x, grid.origin.y, grid.origin.z};
        for (std::size_t i = 0; i < 3; ++i) {
            double const dSteps = (static_cast<double>(values[i]) - origin[i]) * grid.dScale;
            StoreUnsigned(pBytes + 2 * i, static_cast<std::uint16_t>(WholeSteps(dSteps) & 0xFFFF));
        }
    }
    return pBytes + Size(grid.dScale);
}

inline std::array<float, 3> Load(unsigned char const* pBytes, PointGrid const& grid) {
    std::array<float, 3> values;
    if (grid.dScale == 0.0) {
        for (std::size_t i = 0; i < 3; ++i) values[i] = LoadFloat(pBytes + 4 * i);
    } else {
        std::array<double, 3> const origin = {grid.origin.x, grid.origin.y, grid.origin.z};
        for (std::size_t i = 0; i < 3; ++i) {
            double const dSteps = LoadUnsigned<std::uint16_t>(pBytes + 2 * i);
            values[i] = static_cast<float>(dSteps / grid.dScale + origin[i]);
        }
    }
    return values;
}
}  // namespace strip_point

}  // namespace varnet
