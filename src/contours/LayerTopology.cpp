// Nesting: which loop lies in which, and which way each of them runs.

#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "contours/nesting/NestingTree.h"
#include "contours/nesting/Placement.h"

using namespace varnet;

namespace {

// The tree as the lists of the layer hold it.
class ListTree {
public:
    using Loop = tagLoopTreeNode*;
    struct Cursor {
        LoopNode* pCurrent;
        LoopNode* pNext;
    };

    static Cursor Children(Loop parent, Loop /*loop*/) { return {nullptr, parent->m_ChildList.m_pNodeHead}; }

    static bool Next(Cursor& cursor, Loop& sibling) {
        if (cursor.pNext == nullptr) return false;
        cursor.pCurrent = cursor.pNext;
        cursor.pNext = cursor.pNext->pNext;
        sibling = LoopAt(cursor.pCurrent);
        return true;
    }

    static bool Holds(Loop a, Loop b) {
        PointNode* const pHead = FirstPoint(*b);
        return pHead != nullptr && BoxRelation(a->m_Box, b->m_Box) == 0 && IsInLoop(a, pHead->data) != 0;
    }

    static void TakeOut(Loop parent, Cursor const& cursor) {
        parent->m_ChildList.RemoveAt(reinterpret_cast<XR__POSITION*>(cursor.pCurrent));
    }

    static void Append(Loop parent, Loop loop) { parent->m_ChildList.AddTail(loop); }

    static void Sink(Loop loop) { loop->LevelAdd(); }

    static Loop Deeper(Loop parent, Loop /*loop*/) { return parent; }
};

}  // namespace

void CLayer::MakeTopology(int bRefresh) {
    BuildLoopList();
    NestingTree tree(*this, bRefresh != 0 ? NestingTree::Boxes::kRefreshed : NestingTree::Boxes::kCached);
    tree.Nest();
    tree.Store();
    BuildLoopList();
    if (bRefresh != 0) tree.Orient();
}

void CLayer::AddInTree(tagLoopTreeNode* pParent, tagLoopTreeNode* pChild) {
    ListTree lists;
    PlaceBelow(lists, pParent, pChild);
}
