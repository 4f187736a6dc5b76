#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "varnet/Geometry.h"

namespace varnet {

/// What a ring stream holds, the CSM layout that the classic model writes and does not read.
struct RingStream {
    Point3 origin;      ///< the least corner of the model's box
    double step = 0.0;  ///< millimetres a unit of the points
    std::vector<std::array<Point3, 3>> facets;
    std::size_t regions = 0;
    std::size_t steps = 0;
    std::size_t points = 0;    ///< written in the file, those of the seeds included
    std::size_t repeated = 0;  ///< facets that the file states again; they are left out
};

/// Says why a ring stream cannot be decoded.
class RingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Decodes the bytes of a whole file. Vertices are one where their numbers in the file are equal; a facet of
/// three vertices that already have one, in either winding, is left out. Throws RingError where the bytes are
/// not a ring stream: when steps or points run short, when a step has no meaning or takes more edges than the
/// ring has, and when a region ends with edges left in its ring.
RingStream DecodeRingStream(std::string_view bytes);

}  // namespace varnet
