#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "foundation/Export.h"

/// A place in an XR_CList: an opaque node. A null pointer stands for no place.
struct XR__POSITION;

/// A doubly linked list whose nodes come from blocks of m_nBlockSize nodes.
///
/// Elements are copied in and out by value. Elements that are pointers are not owned: who owns them deletes
/// them first. There are no checks: taking an element from an empty list or at a null position is the
/// caller's mistake. When the last element is removed all blocks go back to the heap, and positions kept from
/// before are dead. Copy construction and assignment are shallow: both lists then share their nodes and
/// blocks, only one of them may be changed or destroyed, and assignment does not free what the target held.
template <class TYPE, class ARG_TYPE>
class VARNET_TEMPLATE_API XR_CList {
public:
    struct XR_CNode {
        XR_CNode* pNext;
        XR_CNode* pPrev;
        TYPE data;
    };

    XR_CList() : XR_CList(10) {}
    /// Nodes are taken from the heap so many at a time.
    explicit XR_CList(int nBlockSize)
        : m_pNodeHead(nullptr),
          m_pNodeTail(nullptr),
          m_nCount(0),
          m_pNodeFree(nullptr),
          m_pBlocks(nullptr),
          m_nBlockSize(nBlockSize) {}
    XR_CList(XR_CList const& other)
        : m_pNodeHead(other.m_pNodeHead),
          m_pNodeTail(other.m_pNodeTail),
          m_nCount(other.m_nCount),
          m_pNodeFree(other.m_pNodeFree),
          m_pBlocks(other.m_pBlocks),
          m_nBlockSize(other.m_nBlockSize) {}
    XR_CList& operator=(XR_CList const& other) {
        m_pNodeHead = other.m_pNodeHead;
        m_pNodeTail = other.m_pNodeTail;
        m_nCount = other.m_nCount;
        m_pNodeFree = other.m_pNodeFree;
        m_pBlocks = other.m_pBlocks;
        m_nBlockSize = other.m_nBlockSize;
        return *this;
    }
    virtual ~XR_CList() { RemoveAll(); }

    int GetCount() const { return m_nCount; }
    int IsEmpty() const { return m_nCount == 0 ? 1 : 0; }
    XR__POSITION* GetHeadPosition() const { return ToPosition(m_pNodeHead); }
    XR__POSITION* GetTailPosition() const { return ToPosition(m_pNodeTail); }
    TYPE& GetHead() { return m_pNodeHead->data; }
    TYPE GetHead() const { return m_pNodeHead->data; }
    TYPE& GetTail() { return m_pNodeTail->data; }
    TYPE GetTail() const { return m_pNodeTail->data; }
    TYPE& GetAt(XR__POSITION* position) { return ToNode(position)->data; }
    TYPE GetAt(XR__POSITION* position) const { return ToNode(position)->data; }
    /// The element at the position, which then moves on; null past the end.
    TYPE& GetNext(XR__POSITION*& position) {
        XR_CNode* const pNode = ToNode(position);
        position = ToPosition(pNode->pNext);
        return pNode->data;
    }
    TYPE GetNext(XR__POSITION*& position) const {
        XR_CNode const* const pNode = ToNode(position);
        position = ToPosition(pNode->pNext);
        return pNode->data;
    }
    /// The element at the position, which then moves back; null before the beginning.
    TYPE& GetPrev(XR__POSITION*& position) {
        XR_CNode* const pNode = ToNode(position);
        position = ToPosition(pNode->pPrev);
        return pNode->data;
    }
    TYPE GetPrev(XR__POSITION*& position) const {
        XR_CNode const* const pNode = ToNode(position);
        position = ToPosition(pNode->pPrev);
        return pNode->data;
    }
    void SetAt(XR__POSITION* position, ARG_TYPE element) { ToNode(position)->data = element; }

    XR__POSITION* AddHead(ARG_TYPE element) { return ToPosition(Link(nullptr, m_pNodeHead, element)); }
    XR__POSITION* AddTail(ARG_TYPE element) { return ToPosition(Link(m_pNodeTail, nullptr, element)); }
    /// Puts all elements of the other list in front, in their order.
    void AddHead(XR_CList* pOther) {
        XR_CNode* pNode = pOther->m_pNodeTail;
        for (int n = pOther->m_nCount; n > 0; --n, pNode = pNode->pPrev) AddHead(pNode->data);
    }
    /// Puts all elements of the other list at the end, in their order.
    void AddTail(XR_CList* pOther) {
        XR_CNode* pNode = pOther->m_pNodeHead;
        for (int n = pOther->m_nCount; n > 0; --n, pNode = pNode->pNext) AddTail(pNode->data);
    }
    /// A null position means the head.
    XR__POSITION* InsertBefore(XR__POSITION* position, ARG_TYPE element) {
        if (position == nullptr) return AddHead(element);
        XR_CNode* const pNode = ToNode(position);
        return ToPosition(Link(pNode->pPrev, pNode, element));
    }
    /// A null position means the tail.
    XR__POSITION* InsertAfter(XR__POSITION* position, ARG_TYPE element) {
        if (position == nullptr) return AddTail(element);
        XR_CNode* const pNode = ToNode(position);
        return ToPosition(Link(pNode, pNode->pNext, element));
    }
    /// Walks from the head; null when the index is outside the list.
    XR__POSITION* FindIndex(int nIndex) const {
        if (nIndex < 0 || nIndex >= m_nCount) return nullptr;
        XR_CNode* pNode = m_pNodeHead;
        for (; nIndex > 0; --nIndex) pNode = pNode->pNext;
        return ToPosition(pNode);
    }

    TYPE RemoveHead() {
        TYPE element(m_pNodeHead->data);
        Unlink(m_pNodeHead);
        return element;
    }
    TYPE RemoveTail() {
        TYPE element(m_pNodeTail->data);
        Unlink(m_pNodeTail);
        return element;
    }
    void RemoveAt(XR__POSITION* position) { Unlink(ToNode(position)); }
    /// Destroys all elements and gives all blocks back to the heap.
    void RemoveAll();

    XR_CNode* m_pNodeHead;
    XR_CNode* m_pNodeTail;
    std::int32_t m_nCount;
    XR_CNode* m_pNodeFree;
    void* m_pBlocks;
    std::int32_t m_nBlockSize;

private:
    // A block starts with the link to the next block, and its nodes follow.
    static constexpr std::size_t kNodesOffset =
        (sizeof(void*) + alignof(XR_CNode) - 1) / alignof(XR_CNode) * alignof(XR_CNode);

    static XR__POSITION* ToPosition(XR_CNode* pNode) { return reinterpret_cast<XR__POSITION*>(pNode); }
    static XR_CNode* ToNode(XR__POSITION* position) { return reinterpret_cast<XR_CNode*>(position); }

    void AllocateBlock();
    XR_CNode* Link(XR_CNode* pPrev, XR_CNode* pNext, TYPE const& element);
    void Unlink(XR_CNode* pNode);
};

// The new nodes go on the free list from the last to the first, so that the first is handed out first.
template <class TYPE, class ARG_TYPE>
void XR_CList<TYPE, ARG_TYPE>::AllocateBlock() {
    int const nNodes = m_nBlockSize > 0 ? m_nBlockSize : 1;
    void* const pBlock = ::operator new(kNodesOffset + static_cast<std::size_t>(nNodes) * sizeof(XR_CNode));
    *static_cast<void**>(pBlock) = m_pBlocks;
    m_pBlocks = pBlock;
    XR_CNode* const pNodes = reinterpret_cast<XR_CNode*>(static_cast<char*>(pBlock) + kNodesOffset);
    for (int i = nNodes - 1; i >= 0; --i) {
        pNodes[i].pNext = m_pNodeFree;
        m_pNodeFree = pNodes + i;
    }
}

template <class TYPE, class ARG_TYPE>
typename XR_CList<TYPE, ARG_TYPE>::XR_CNode* XR_CList<TYPE, ARG_TYPE>::Link(XR_CNode* pPrev, XR_CNode* pNext,
                                                                            TYPE const& element) {
    if (m_pNodeFree == nullptr) AllocateBlock();
    XR_CNode* const pNode = m_pNodeFree;
    m_pNodeFree = pNode->pNext;
    ::new (static_cast<void*>(&pNode->data)) TYPE(element);
    pNode->pPrev = pPrev;
    pNode->pNext = pNext;
    (pPrev != nullptr ? pPrev->pNext : m_pNodeHead) = pNode;
    (pNext != nullptr ? pNext->pPrev : m_pNodeTail) = pNode;
    ++m_nCount;
    return pNode;
}

template <class TYPE, class ARG_TYPE>
void XR_CList<TYPE, ARG_TYPE>::Unlink(XR_CNode* pNode) {
    (pNode->pPrev != nullptr ? pNode->pPrev->pNext : m_pNodeHead) = pNode->pNext;
    (pNode->pNext != nullptr ? pNode->pNext->pPrev : m_pNodeTail) = pNode->pPrev;
    pNode->data.~TYPE();
    pNode->pNext = m_pNodeFree;
    m_pNodeFree = pNode;
    if (--m_nCount == 0) RemoveAll();
}

template <class TYPE, class ARG_TYPE>
void XR_CList<TYPE, ARG_TYPE>::RemoveAll() {
    for (XR_CNode* pNode = m_pNodeHead; pNode != nullptr; pNode = pNode->pNext) pNode->data.~TYPE();
    m_pNodeHead = nullptr;
    m_pNodeTail = nullptr;
    m_nCount = 0;
    m_pNodeFree = nullptr;
    while (m_pBlocks != nullptr) {
        void* const pBlock = m_pBlocks;
        m_pBlocks = *static_cast<void**>(pBlock);
        ::operator delete(pBlock);
    }
}
