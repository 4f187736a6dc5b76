#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "varnet/Geometry.h"

namespace varnet {

/// Points in a tree of boxes, each halved across its longest side. (Bentley, Multidimensional binary search
/// trees used for associative searching, 1975.)
class PointTree {
public:
    explicit PointTree(std::span<Point3 const> points);

    /// Calls found(i) for each point within the distance, on each axis, of the box of some part of the line
    /// from a to b; and for some others nearby.
    template <class Found>
    void NearLine(Point3 const& a, Point3 const& b, double distance, Found const& found) const {
        if (m_Nodes.empty()) return;
        std::vector<std::int32_t> open = {0};
        while (!open.empty()) {
            Node const& node = m_Nodes[static_cast<std::size_t>(open.back())];
            open.pop_back();
            if (!Hits(a, b, node.box, distance)) continue;
            if (node.left < 0) {
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
