#include "part/NearPoints.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "part/PointHash.h"

namespace varnet {

namespace {

// Cells of the grid are so many tolerances wide: most points then look into one cell or two.
constexpr double kCell = 4.0;

double Distance(Point3 const& a, Point3 const& b) {
    return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}

// The points that have stayed themselves, in lists by the hash of their cell.
class Grid {
public:
    Grid(std::span<Point3 const> points, double tolerance)
        : m_Points(points),
          m_Tolerance(tolerance),
          m_First(std::bit_ceil(2 * points.size() + 1), -1),
          m_Next(points.size(), -1) {}

    void Insert(std::int32_t i) {
        Point3 const& p = m_Points[static_cast<std::size_t>(i)];
        std::int32_t& first = m_First[Slot(Cell(p.x), Cell(p.y), Cell(p.z))];
        m_Next[static_cast<std::size_t>(i)] = first;
        first = i;
    }

    std::int32_t Nearest(Point3 const& p) const {
        std::int32_t nearest = -1;
        double least = m_Tolerance;
        for (double x = Cell(p.x - m_Tolerance); x <= Cell(p.x + m_Tolerance); x += 1.0) {
            for (double y = Cell(p.y - m_Tolerance); y <= Cell(p.y + m_Tolerance); y += 1.0) {
                for (double z = Cell(p.z - m_Tolerance); z <= Cell(p.z + m_Tolerance); z += 1.0) {
                    LookAt(p, Slot(x, y, z), nearest, least);
                }
            }
        }
        return nearest;
    }

private:
    // A whole number.
    double Cell(double value) const { return std::floor(value / (kCell * m_Tolerance)); }
    std::size_t Slot(double x, double y, double z) const {
        return static_cast<std::size_t>(HashOf({x, y, z})) & (m_First.size() - 1);
    }
    void LookAt(Point3 const& p, std::size_t slot, std::int32_t& nearest, double& least) const {
        for (std::int32_t i = m_First[slot]; i >= 0; i = m_Next[static_cast<std::size_t>(i)]) {
            double const distance = Distance(p, m_Points[static_cast<std::size_t>(i)]);
            if (distance > least || (distance == least && nearest >= 0 && i >= nearest)) continue;
            least = distance;
            nearest = i;
        }
    }

    std::span<Point3 const> m_Points;
    double m_Tolerance;
    std::vector<std::int32_t> m_First;
    std::vector<std::int32_t> m_Next;
};

}  // namespace

std::vector<std::int32_t> JoinNear(std::span<Point3 const> points, double tolerance, Pace const& pace) {
    std::vector<std::int32_t> joined(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) joined[i] = static_cast<std::int32_t>(i);
    double largest = 0.0;
    for (Point3 const& p : points) {
        largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    }
    // Where cells cannot be counted, points that differ lie farther apart than the tolerance.
    constexpr double kMostCells = 4503599627370496.0;
    if (!(tolerance > 0.0) || largest + tolerance > kMostCells * tolerance) return joined;
    Grid grid(points, tolerance);
    for (std::size_t i = 0; i < points.size(); ++i) {
        pace.Step(i, points.size());
        std::int32_t const near = grid.Nearest(points[i]);
        if (near >= 0) {
            joined[i] = near;
        } else {
            grid.Insert(static_cast<std::int32_t>(i));
        }
    }
    return joined;
}

}  // namespace varnet
