#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "part/Pace.h"
#include "varnet/Geometry.h"

namespace varnet {

/// Points in a tree of boxes, each halved across its longest side. (Bentley, Multidimensional binary search
/// trees used for associative searching, 1975.)
class PointTree {
public:
    PointTree(std::span<Point3 const> points, Pace const& pace);

    /// Calls found(i) for each point that may lie within the distance, on each axis, of the line from a to b.
    /// Boxes and points are counted in `looked`; when there are `most` of them, it ends.
    template <class Found>
    void NearLine(Point3 const& a, Point3 const& b, double distance, std::size_t most, std::size_t& looked,
                  Found const& found) const {
        if (m_Nodes.empty()) return;
        std::vector<std::int32_t> open = {0};
        while (!open.empty() && looked < most) {
            ++looked;
            Node const& node = m_Nodes[static_cast<std::size_t>(open.back())];
            open.pop_back();
            if (!Hits(a, b, node.box, distance)) continue;
            if (node.left < 0) {
                looked += node.end - node.begin;
                for (std::size_t i = node.begin; i < node.end; ++i) found(m_Order[i]);
            } else {
                open.push_back(node.left);
                open.push_back(node.left + 1);
            }
        }
    }

private:
    struct Node {
        Box3 box;
        std::size_t begin;
        std::size_t end;
        std::int32_t left;  // the right one stands behind it; -1 for none
    };

    static bool Hits(Point3 const& a, Point3 const& b, Box3 const& box, double distance);

    std::vector<std::size_t> m_Order;
    std::vector<Node> m_Nodes;
};

}  // namespace varnet
