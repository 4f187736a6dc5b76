#include "part/PointTree.h"

#include <numeric>

namespace varnet {

namespace {

constexpr std::size_t kLeaf = 8;

double Along(Point3 const& p, int axis) { return axis == 0 ? p.x : axis == 1 ? p.y : p.z; }

int LongestSide(Box3 const& box) {
    double const x = box.max.x - box.min.x;
    double const y = box.max.y - box.min.y;
    double const z = box.max.z - box.min.z;
    return x >= y && x >= z ? 0 : y >= z ? 1 : 2;
}

}  // namespace

PointTree::PointTree(std::span<Point3 const> points, Pace const& pace) : m_Order(points.size()) {
    if (points.empty()) return;
    std::iota(m_Order.begin(), m_Order.end(), std::size_t{0});
    m_Nodes.push_back({{}, 0, points.size(), -1});
    for (std::size_t n = 0; n < m_Nodes.size(); ++n) {
        Box3 box;
        // Large ranges take long, small ones are many.
        if (n < 64) pace.At(0.0);
        pace.Step(n, m_Nodes.size());
        for (std::size_t i = m_Nodes[n].begin; i < m_Nodes[n].end; ++i) box.Add(points[m_Order[i]]);
        m_Nodes[n].box = box;
        std::size_t const begin = m_Nodes[n].begin;
        std::size_t const end = m_Nodes[n].end;
        if (end - begin <= kLeaf) continue;
        std::size_t const middle = begin + (end - begin) / 2;
        int const axis = LongestSide(box);
        auto const at = [this](std::size_t i) { return m_Order.begin() + static_cast<std::ptrdiff_t>(i); };
        std::nth_element(at(begin), at(middle), at(end), [&](std::size_t a, std::size_t b) {
            double const u = Along(points[a], axis);
            double const v = Along(points[b], axis);
            return u != v ? u < v : a < b;
        });
        m_Nodes[n].left = static_cast<std::int32_t>(m_Nodes.size());
        m_Nodes.push_back({{}, begin, middle, -1});
        m_Nodes.push_back({{}, middle, end, -1});
    }
}

bool PointTree::Hits(Point3 const& a, Point3 const& b, Box3 const& box, double distance) {
    double from = 0.0;
    double to = 1.0;
    for (int axis = 0; axis < 3; ++axis) {
        double const start = Along(a, axis);
        double const way = Along(b, axis) - start;
        double const min = Along(box.min, axis) - distance;
        double const max = Along(box.max, axis) + distance;
        if (way == 0.0) {
            if (start < min || start > max) return false;
            continue;
        }
        double const first = (min - start) / way;
        double const second = (max - start) / way;
        from = std::max(from, std::min(first, second));
        to = std::min(to, std::max(first, second));
    }
    return from <= to;
}

}  // namespace varnet
