#include "varnet/Layer.h"

#include <cmath>

namespace varnet {

double SignedArea(std::span<Point2 const> path) {
    if (path.size() < 3) return 0.0;
    Point2 const& p = path.front();
    double doubled = 0.0;
    for (std::size_t i = 1; i + 1 < path.size(); ++i) {
        Point2 const& q = path[i];
        Point2 const& r = path[i + 1];
        doubled += (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
    }
    return doubled / 2.0;
}

double LengthOf(std::span<Point2 const> path, bool closed) {
    if (path.size() < 2) return 0.0;
    double length = 0.0;
    Point2 last = closed ? path.back() : path.front();
    for (Point2 const& p : path) {
        double const dx = p.x - last.x;
        double const dy = p.y - last.y;
        length += std::sqrt(dx * dx + dy * dy);
        last = p;
    }
    return length;
}

void Layer::AddContour(std::span<Point2 const> contourPoints, Contour const& contour) {
    points.insert(points.end(), contourPoints.begin(), contourPoints.end());
    offsets.push_back(points.size());
    contours.push_back(contour);
}

void Layer::AddChain(std::span<Stroke const> chainStrokes, std::int32_t id) {
    strokes.insert(strokes.end(), chainStrokes.begin(), chainStrokes.end());
    chainOffsets.push_back(strokes.size());
    chainIds.push_back(id);
}

double Layer::Area() const {
    double area = 0.0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        if (contours[i].closed) area += SignedArea(ContourPoints(i));
    }
    return area;
}

double Layer::ContourLength() const {
    double length = 0.0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        length += LengthOf(ContourPoints(i), contours[i].closed);
    }
    return length;
}

double Layer::StrokeLength() const {
    double length = 0.0;
    for (Stroke const& stroke : strokes) {
        double const dx = stroke.to.x - stroke.from.x;
        double const dy = stroke.to.y - stroke.from.y;
        length += std::sqrt(dx * dx + dy * dy);
    }
    return length;
}

std::size_t Layer::OpenPathCount() const {
    std::size_t count = 0;
    for (Contour const& contour : contours) count += contour.closed ? 0 : 1;
    return count;
}

std::size_t Layer::SupportStrokeCount() const {
    constexpr std::int32_t kFirstSupportId = 1000;
    std::size_t count = 0;
    for (std::size_t i = 0; i < chainIds.size(); ++i) {
        if (chainIds[i] >= kFirstSupportId) count += chainOffsets[i + 1] - chainOffsets[i];
    }
    return count;
}

Box2 Layer::Box() const {
    Box2 box;
    for (Point2 const& p : points) box.Add(p);
    for (Stroke const& stroke : strokes) {
        box.Add(stroke.from);
        box.Add(stroke.to);
    }
    return box;
}

}  // namespace varnet
