#pragma once

#include <cstdlib>

/// Ends the program where what must hold does not: a finding.
inline void Require(bool bHolds) {
    if (!bHolds) std::abort();
}

/// Requires of an XR_CList that it reads the same from both ends and has as many elements as it says.
template <class List>
void RequireSound(List const& list) {
    int nCount = 0;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        Require(p->pNext == nullptr ? p == list.m_pNodeTail : p->pNext->pPrev == p);
        ++nCount;
    }
    Require(nCount == list.GetCount());
    Require((nCount == 0) == (list.m_pBlocks == nullptr));
}
