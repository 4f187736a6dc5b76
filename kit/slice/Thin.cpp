#include "slice/Thin.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace varnet {

namespace {

// The squared cosine of 10 degrees: a path that turns by more from its first direction is not thinned.
constexpr double kTurn2 = 0.969846310392954;

// Squared millimetres: two points nearer than that have no direction of their own, but that of the stretch.
constexpr double kNoDirection2 = 1e-6;

// What is left of the tolerance for certain after rounding.
constexpr double kSafe = 1.0 - 1e-9;

// The chords from an anchor that pass all points so far within the tolerance. They form a wedge, which is
// kept as slopes against the stretch's first direction. (J. Sklansky and V. Gonzalez, "Fast polygonal
// approximation of digitized curves", 1980.) Distances are taken at right angles to that direction, which is
// no less than they are, and points have to go ahead along it, so that each lies beside the chord.
class Wedge {
public:
    Wedge(Point2 const& anchor, Point2 const& first, double tolerance)
        : m_Anchor(anchor), m_Last(first), m_Tolerance(tolerance * kSafe) {
        m_Axis = {first.x - anchor.x, first.y - anchor.y};
        m_Length2 = m_Axis.x * m_Axis.x + m_Axis.y * m_Axis.y;
        double const length = std::sqrt(m_Length2);
        m_Axis = {m_Axis.x / length, m_Axis.y / length};
        m_Along = length;
    }

    // Whether the chord may go on to this point, the one before it being left out.
    bool GoesOnTo(Point2 const& p) {
        if (!(m_Length2 > 0.0) || !RunsOn(p)) return false;
        m_Lowest = std::max(m_Lowest, (m_Across - m_Tolerance) / m_Along);
        m_Highest = std::min(m_Highest, (m_Across + m_Tolerance) / m_Along);
        double const dx = p.x - m_Anchor.x;
        double const dy = p.y - m_Anchor.y;
        double const along = dx * m_Axis.x + dy * m_Axis.y;
        double const across = m_Axis.x * dy - m_Axis.y * dx;
        if (!(along >= m_Along)) return false;
        double const slope = across / along;
        if (!(slope >= m_Lowest && slope <= m_Highest)) return false;
        m_Along = along;
        m_Across = across;
        m_Last = p;
        return true;
    }

private:
    bool RunsOn(Point2 const& p) const {
        double const dx = p.x - m_Last.x;
        double const dy = p.y - m_Last.y;
        double const step2 = dx * dx + dy * dy;
        if (step2 < kNoDirection2) return true;
        double const dot = dx * m_Axis.x + dy * m_Axis.y;
        return dot > 0.0 && dot * dot >= kTurn2 * step2;
    }

    Point2 m_Anchor;
    Point2 m_Last;
    Point2 m_Axis;
    double m_Length2 = 0.0;
    double m_Tolerance;
    double m_Along = 0.0;
    double m_Across = 0.0;
    double m_Lowest = -std::numeric_limits<double>::infinity();
    double m_Highest = std::numeric_limits<double>::infinity();
};

// Adds the points that stay of those from `first` on, up to but not including the last one, going round.
void Walk(std::span<Point2 const> path, std::size_t first, std::size_t steps, double tolerance,
          std::vector<Point2>& points) {
    auto const at = [&](std::size_t i) -> Point2 const& {
        std::size_t const k = first + i;
        return path[k < path.size() ? k : k - path.size()];
    };
    for (std::size_t anchor = 0; anchor < steps;) {
        points.push_back(at(anchor));
        std::size_t end = anchor + 1;
        Wedge wedge(at(anchor), at(end), tolerance);
        while (end < steps && wedge.GoesOnTo(at(end + 1))) ++end;
        anchor = end;
    }
}

void ThinClosed(std::span<Point2 const> path, double tolerance, std::vector<Point2>& points) {
    // The leftmost point is a corner for certain.
    auto const leftmost = std::min_element(path.begin(), path.end(), [](Point2 const& a, Point2 const& b) {
        return a.x != b.x ? a.x < b.x : a.y < b.y;
    });
    Walk(path, static_cast<std::size_t>(leftmost - path.begin()), path.size(), tolerance, points);
}

}  // namespace

void ThinContours(SolidContours const& contours, double tolerance, SolidContours& thinned) {
    std::vector<int> numbers(contours.parents.size(), -1);
    std::vector<Point2> points;
    for (std::size_t i = 0; i < contours.parents.size(); ++i) {
        int const parent = contours.parents[i];
        int const newParent = parent < 0 ? -1 : numbers[static_cast<std::size_t>(parent)];
        if (parent >= 0 && newParent < 0) continue;
        std::span<Point2 const> path = contours.paths.At(i);
        if (tolerance > 0.0) {
            points.clear();
            ThinClosed(path, tolerance, points);
            path = points;
        }
        if (path.size() < 3) continue;
        numbers[i] = static_cast<int>(thinned.parents.size());
        thinned.Add(path, newParent);
    }
}

void ThinPaths(Paths const& paths, double tolerance, Paths& thinned) {
    std::vector<Point2> points;
    for (std::size_t i = 0; i < paths.Count(); ++i) {
        std::span<Point2 const> path = paths.At(i);
        if (tolerance > 0.0 && path.size() > 2) {
            points.clear();
            Walk(path, 0, path.size() - 1, tolerance, points);
            points.push_back(path.back());
            path = points;
        }
        thinned.Add(path, false);
    }
}

}  // namespace varnet
