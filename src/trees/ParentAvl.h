#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace varnet {

// The balanced tree of Avl.h over nodes that are known by their places in a table and know their parents, so
// that a node can be put in where no way down has been walked. It gets the same shape.
//
// A node has nChildren[2], nParent and nBalance. The first of the table stands above the root, which is its
// left child; no node has it for a child, so that its place says that there is none.

namespace parent_avl {

inline constexpr std::uint32_t kTop = 0;
inline constexpr std::uint32_t kNothing = 0;

// Greater keys are on the left. A node's balance is 0 when both sides are equally deep, +1 when the left side
// is deeper, -1 when the right side is.
inline constexpr std::size_t kLeft = 0;
inline constexpr std::size_t kRight = 1;
constexpr std::size_t OtherSide(std::size_t nSide) { return 1 - nSide; }
constexpr std::int8_t TiltTo(std::size_t nSide) { return nSide == kLeft ? 1 : -1; }

/// A side of a node.
struct Link {
    std::uint32_t nNode;
    std::size_t nSide;
};

template <class Nodes>
std::uint32_t& At(Nodes& nodes, Link const& link) {
    return nodes[link.nNode].nChildren[link.nSide];
}

/// Puts the node's child on the side in its place, and the node below the child on the other side.
template <class Nodes>
void Rotate(Nodes& nodes, std::uint32_t nNode, std::size_t nSide) {
    auto& node = nodes[nNode];
    std::uint32_t const nChild = node.nChildren[nSide];
    auto& child = nodes[nChild];
    std::uint32_t const nInner = std::exchange(child.nChildren[OtherSide(nSide)], nNode);
    node.nChildren[nSide] = nInner;
    if (nInner != kNothing) nodes[nInner].nParent = nNode;
    auto& parent = nodes[node.nParent];
    parent.nChildren[parent.nChildren[kLeft] == nNode ? kLeft : kRight] = nChild;
    child.nParent = std::exchange(node.nParent, nChild);
}

/// Restores the node whose side has grown two deeper than the other.
template <class Nodes, class BeforeRotation>
void Rebalance(Nodes& nodes, std::uint32_t nNode, std::size_t nSide, BeforeRotation const& beforeRotation) {
    std::size_t const nOther = OtherSide(nSide);
    auto& node = nodes[nNode];
    std::uint32_t const nChild = node.nChildren[nSide];
    auto& child = nodes[nChild];
    if (child.nBalance == TiltTo(nSide)) {
        node.nBalance = 0;
        child.nBalance = 0;
    } else {
        std::uint32_t const nGrandchild = child.nChildren[nOther];
        auto& grandchild = nodes[nGrandchild];
        node.nBalance = grandchild.nBalance == TiltTo(nSide) ? TiltTo(nOther) : std::int8_t{0};
        child.nBalance = grandchild.nBalance == TiltTo(nOther) ? TiltTo(nSide) : std::int8_t{0};
        grandchild.nBalance = 0;
        beforeRotation(nChild, nGrandchild);
        Rotate(nodes, nChild, nOther);
    }
    beforeRotation(nNode, node.nChildren[nSide]);
    Rotate(nodes, nNode, nSide);
}

/// Puts a node without children into the empty link, as avl::Insert does: nodes above tilt to the side that
/// has become deeper, up to one that was tilted already. beforeRotation(node, child) is called before the
/// child takes the place of the node, two times at most.
template <class Nodes, class BeforeRotation>
void PutIn(Nodes& nodes, std::uint32_t nNode, Link const& link, BeforeRotation const& beforeRotation) {
    At(nodes, link) = nNode;
    nodes[nNode].nParent = link.nNode;
    std::size_t nSide = link.nSide;
    for (std::uint32_t nAbove = link.nNode; nAbove != kTop;) {
        auto& above = nodes[nAbove];
        if (above.nBalance == TiltTo(nSide)) return Rebalance(nodes, nAbove, nSide, beforeRotation);
        above.nBalance = static_cast<std::int8_t>(above.nBalance + TiltTo(nSide));
        if (above.nBalance == 0) return;
        nSide = nodes[above.nParent].nChildren[kLeft] == nAbove ? kLeft : kRight;
        nAbove = above.nParent;
    }
}

}  // namespace parent_avl

}  // namespace varnet
