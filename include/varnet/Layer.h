#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "varnet/Export.h"
#include "varnet/Geometry.h"

namespace varnet {

/// The ids of the chains of fill lines: in the part, and in what supports it. Ids of 1000 and above are those
/// of supports, which contours are never linked with.
inline constexpr std::int32_t kFillId = 3;
inline constexpr std::int32_t kSupportId = 1003;

/// What a layer says of one of its contours, beside the points.
struct Contour {
    bool closed = true;        ///< an open path ends where its last point is
    std::int32_t parent = -1;  ///< the contour right around it, as an index; -1 for none, and for open paths
    std::int32_t level = 0;    ///< how many contours go round it
    std::int32_t id = 1;       ///< as it stands in slice files
    /// The boundary of a hole; it runs clockwise.
    bool IsHole() const { return closed && level % 2 != 0; }
    bool operator==(Contour const&) const = default;
};

/// A straight line of fill.
struct Stroke {
    Point2 from;
    Point2 to;
    bool operator==(Stroke const&) const = default;
};

/// One slice of a part, in flat arrays. Millimetres.
///
/// Contours: contour i has the points from offsets[i] up to, but not including, offsets[i + 1]. A closed one
/// does not state its first point again. Where the slicer made them:
///   1. closed contours come first, each behind the one around it, and open paths after them;
///   2. outer contours run counter-clockwise, holes clockwise: the solid is on the left;
///   3. a closed contour has at least three points, an open path two.
///
/// Fill: chain i has the strokes from chainOffsets[i] up to chainOffsets[i + 1]. Strokes of a chain follow
/// each other at a short way, turned by turns.
struct VARNET_KIT_API Layer {
    std::int32_t number = 0;  ///< counted from 1
    double z = 0.0;           ///< of its upper side, where it stands in a slice file
    double cutHeight = 0.0;   ///< at which the part was cut: in the middle of the layer
    std::vector<Point2> points;
    std::vector<std::size_t> offsets{0};
    std::vector<Contour> contours;
    std::vector<Stroke> strokes;
    std::vector<std::size_t> chainOffsets{0};
    std::vector<std::int32_t> chainIds;

    bool operator==(Layer const&) const = default;

    std::size_t ContourCount() const { return contours.size(); }
    std::span<Point2 const> ContourPoints(std::size_t i) const {
        return {points.data() + offsets[i], offsets[i + 1] - offsets[i]};
    }
    std::size_t ChainCount() const { return chainIds.size(); }
    std::span<Stroke const> ChainStrokes(std::size_t i) const {
        return {strokes.data() + chainOffsets[i], chainOffsets[i + 1] - chainOffsets[i]};
    }
    void AddContour(std::span<Point2 const> contourPoints, Contour const& contour);
    void AddChain(std::span<Stroke const> chainStrokes, std::int32_t id);

    /// Square millimetres of solid: the signed areas of all closed contours.
    double Area() const;
    /// Of all contours and open paths; closed ones with the side from the last point to the first.
    double ContourLength() const;
    /// Of all strokes, without the way between them.
    double StrokeLength() const;
    std::size_t OpenPathCount() const;
    /// Strokes of chains with an id of 1000 or above.
    std::size_t SupportStrokeCount() const;
    /// Around contours and strokes.
    Box2 Box() const;
};

/// The area that a closed path encloses: above 0 where it runs counter-clockwise.
VARNET_KIT_API double SignedArea(std::span<Point2 const> path);
/// The length of a path; of a closed one with the side from the last point to the first.
VARNET_KIT_API double LengthOf(std::span<Point2 const> path, bool closed);

}  // namespace varnet
