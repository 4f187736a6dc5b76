// Sorting the loop list of a layer by the centres of its loops' boxes.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "contours/Layer.h"
#include "contours/LoopWalk.h"

using namespace varnet;

namespace {

struct KeyedLoop {
    double dKey;
    void* pLoop;
};

double CenterX(tagLoopTreeNode const& loop) { return (loop.m_Box.m_ptMax.x + loop.m_Box.m_ptMin.x) * 0.5; }
double CenterY(tagLoopTreeNode const& loop) { return (loop.m_Box.m_ptMax.y + loop.m_Box.m_ptMin.y) * 0.5; }

bool IsBefore(KeyedLoop const& a, KeyedLoop const& b) { return a.dKey < b.dKey; }

// Only one order is right when all keys are numbers and no two are equal.
bool SortIfUnique(std::vector<KeyedLoop>& loops) {
    for (KeyedLoop const& loop : loops) {
        if (std::isnan(loop.dKey)) return false;
    }
    std::vector<KeyedLoop> sorted(loops);
    std::sort(sorted.begin(), sorted.end(), IsBefore);
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        if (!IsBefore(sorted[i - 1], sorted[i])) return false;
    }
    loops.swap(sorted);
    return true;
}

// The order among equal keys is that of this very way of sorting.
void ExchangeSort(std::vector<KeyedLoop>& loops) {
    for (std::size_t i = 0; i < loops.size(); ++i) {
        for (std::size_t k = i + 1; k < loops.size(); ++k) {
            if (IsBefore(loops[k], loops[i])) std::swap(loops[k], loops[i]);
        }
    }
}

template <class Key>
void SortByKey(LoopList& list, Key key) {
    std::vector<KeyedLoop> loops;
    loops.reserve(static_cast<std::size_t>(list.GetCount()));
    ForEachLoop(list, [&](tagLoopTreeNode& loop) { loops.push_back({key(loop), &loop}); });
    if (!SortIfUnique(loops)) ExchangeSort(loops);
    auto sorted = loops.begin();
    for (LoopNode* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        if (p->data != nullptr) p->data = (sorted++)->pLoop;
    }
}

}  // namespace

int CLayer::CompareBoxCenterX(tagLoopTreeNode* a, tagLoopTreeNode* b) {
    return CenterX(*a) > CenterX(*b) ? 1 : 0;
}

int CLayer::CompareBoxCenterY(tagLoopTreeNode* a, tagLoopTreeNode* b) {
    return CenterY(*a) > CenterY(*b) ? 1 : 0;
}

void CLayer::SortLoopListByBoxCenterX() { SortByKey(m_LoopList, CenterX); }

void CLayer::SortLoopListByBoxCenterY() { SortByKey(m_LoopList, CenterY); }
