#pragma once

#include <utility>
#include <vector>

namespace varnet {

/// Places a loop, with its subtree, below a parent, as deep as it goes: it moves on into the child that holds
/// it, takes over the children that it holds, and is appended to the children of the last parent. A child
/// that is taken over is placed below its new parent the same way, before the walk goes on.
///
/// Trees may be as deep as a host makes them, so that calls within calls are kept on the heap. A Tree has
///   Loop                     names a loop
///   Cursor                   a place among children
///   Children(parent, loop)   the place before those that may hold the loop, or lie within it
///   Next(cursor, sibling)    moves to the next of them; false at the end
///   Holds(a, b)              whether b belongs below a
///   TakeOut(parent, cursor)  takes the child at the cursor from its parent
///   Append(parent, loop)     makes the loop the parent's last child
///   Sink(loop)               moves the loop and its subtree one level down
///   Deeper(parent, loop)     a place on the walk from the parent on, with the loop held there: the parent,
///   or
///                            one below it that the walk would come to
template <class Tree>
void PlaceBelow(Tree& tree, typename Tree::Loop parent, typename Tree::Loop loop) {
    struct Walk {
        typename Tree::Loop parent;
        typename Tree::Loop loop;
        typename Tree::Cursor cursor;
    };
    std::vector<Walk> walks;
    auto const begin = [&tree, &walks](typename Tree::Loop under, typename Tree::Loop placed) {
        tree.Sink(placed);
        typename Tree::Loop const from = tree.Deeper(under, placed);
        walks.push_back({from, placed, tree.Children(from, placed)});
    };
    begin(parent, loop);
    while (!walks.empty()) {
        Walk& walk = walks.back();
        typename Tree::Loop sibling;
        if (!tree.Next(walk.cursor, sibling)) {
            tree.Append(walk.parent, walk.loop);
            walks.pop_back();
        } else if (tree.Holds(walk.loop, sibling)) {
            tree.TakeOut(walk.parent, walk.cursor);
            begin(walk.loop, sibling);
        } else if (tree.Holds(sibling, walk.loop)) {
            tree.Sink(walk.loop);
            walk.parent = tree.Deeper(sibling, walk.loop);
            walk.cursor = tree.Children(walk.parent, walk.loop);
        }
    }
}

}  // namespace varnet
