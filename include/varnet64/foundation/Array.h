#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

#include "foundation/Export.h"

/// A growable array of pointers.
///
/// The array owns its storage (malloc, realloc, free), never what the elements point to. There are no checks:
/// an index outside the array or a negative count is the caller's mistake. Copy construction and assignment
/// are shallow: both arrays then share one storage, only one of them may free or grow it, and assignment does
/// not free what the target held.
///
/// m_nMaxSize counts the elements that fit without growing. Behind a large one there may be room to spare, so
/// that growth in steps of 1024 does not copy the array each time; nothing can see that room.
template <class TYPE, class ARG_TYPE>
class VARNET_TEMPLATE_API XR_CArray {
    static_assert(std::is_trivially_copyable_v<TYPE>, "elements are moved as bytes");

public:
    XR_CArray() : m_pData(nullptr), m_nSize(0), m_nMaxSize(0), m_nGrowBy(0) {}
    XR_CArray(XR_CArray const& other)
        : m_pData(other.m_pData),
          m_nSize(other.m_nSize),
          m_nMaxSize(other.m_nMaxSize),
          m_nGrowBy(other.m_nGrowBy) {}
    XR_CArray& operator=(XR_CArray const& other) {
        m_pData = other.m_pData;
        m_nSize = other.m_nSize;
        m_nMaxSize = other.m_nMaxSize;
        m_nGrowBy = other.m_nGrowBy;
        return *this;
    }
    /// Frees the storage. The elements are not touched.
    virtual ~XR_CArray() { std::free(m_pData); }

    int GetSize() const { return m_nSize; }
    int GetUpperBound() const { return m_nSize - 1; }
    TYPE* GetData() { return m_pData; }
    TYPE const* GetData() const { return m_pData; }
    TYPE GetAt(int nIndex) const { return m_pData[nIndex]; }
    TYPE& ElementAt(int nIndex) { return m_pData[nIndex]; }
    void SetAt(int nIndex, ARG_TYPE element) { m_pData[nIndex] = element; }
    TYPE& operator[](int nIndex) { return m_pData[nIndex]; }
    TYPE operator[](int nIndex) const { return m_pData[nIndex]; }

    /// Changes the size; new elements are null. Size 0 frees the storage and forgets the capacity.
    /// An nGrowBy other than -1 becomes the growth step; a step of 0 means an eighth of the size, from 4 to
    /// 1024.
    void SetSize(int nNewSize, int nGrowBy = -1);
    /// Stores the element, growing the array to reach nIndex.
    void SetAtGrow(int nIndex, ARG_TYPE element) {
        if (nIndex >= m_nSize) SetSize(nIndex + 1, -1);
        m_pData[nIndex] = element;
    }
    /// Appends; returns the index of the new element.
    int Add(ARG_TYPE element) {
        int const nIndex = m_nSize;
        if (nIndex < m_nMaxSize) {
            m_pData[nIndex] = element;
            StoreSize(nIndex + 1);
        } else {
            TYPE const value = element;
            SetSize(nIndex + 1, -1);
            m_pData[nIndex] = value;
        }
        return nIndex;
    }
    /// Appends all elements of the other array; returns the former size.
    int Append(XR_CArray const& other);
    /// Takes the other array's size and elements.
    void Copy(XR_CArray const& other);
    /// Gives back capacity that is not used.
    void FreeExtra();
    /// Puts the element nCount times before nIndex; behind the end, the gap is filled with null.
    void InsertAt(int nIndex, ARG_TYPE element, int nCount = 1);
    /// Puts all elements of the other array before nStartIndex.
    void InsertAt(int nStartIndex, XR_CArray* pOther);
    /// Closes the gap; the capacity stays.
    void RemoveAt(int nIndex, int nCount = 1);
    /// Frees the storage; the growth step stays.
    void RemoveAll() { SetSize(0, -1); }

    TYPE* m_pData;
    std::int32_t m_nSize;
    std::int32_t m_nMaxSize;
    std::int32_t m_nGrowBy;

private:
    static std::size_t Bytes(std::int64_t nCount) { return static_cast<std::size_t>(nCount) * sizeof(TYPE); }
    static std::int64_t StorageFor(std::int64_t nCapacity);
    void Reallocate(std::int64_t nCapacity);
    // While a file is read, another thread may look at the size of the growing array to show progress.
    void StoreSize(int nSize) {
#if defined(__GNUC__)
        __atomic_store_n(&m_nSize, nSize, __ATOMIC_RELAXED);
#else
        m_nSize = nSize;
#endif
    }
    void Clear(int nFrom, int nTo) {
        if (nTo > nFrom) std::memset(static_cast<void*>(m_pData + nFrom), 0, Bytes(nTo - nFrom));
    }
};

/// The array of untyped pointers.
class VARNET_API XR_CPtrArray : public XR_CArray<void*, void*> {};

// How many elements the storage behind a capacity holds: the capacity itself while it is small, else rounded
// up to a power of two, of which the part never used is never touched. A function of the capacity alone, so
// that shallow copies agree.
template <class TYPE, class ARG_TYPE>
std::int64_t XR_CArray<TYPE, ARG_TYPE>::StorageFor(std::int64_t nCapacity) {
    constexpr std::int64_t kExactUpTo = 8192;
    if (nCapacity <= kExactUpTo) return nCapacity;
    std::int64_t nPower = kExactUpTo;
    while (nPower < nCapacity) nPower *= 2;
    return nPower;
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::Reallocate(std::int64_t nCapacity) {
    if (m_pData == nullptr || StorageFor(nCapacity) != StorageFor(m_nMaxSize)) {
        void* const pData = std::realloc(static_cast<void*>(m_pData), Bytes(StorageFor(nCapacity)));
        if (pData == nullptr) throw std::bad_alloc();
        m_pData = static_cast<TYPE*>(pData);
    }
    m_nMaxSize = static_cast<std::int32_t>(nCapacity);
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::SetSize(int nNewSize, int nGrowBy) {
    if (nGrowBy != -1) m_nGrowBy = nGrowBy;
    if (nNewSize == 0) {
        std::free(m_pData);
        m_pData = nullptr;
        m_nSize = 0;
        m_nMaxSize = 0;
        return;
    }
    if (m_pData == nullptr) {
        StoreSize(0);
        Reallocate(nNewSize);
    } else if (nNewSize > m_nMaxSize) {
        constexpr std::int64_t kLargestCapacity = 0x7FFFFFFF;
        std::int64_t nStep = m_nGrowBy;
        if (nStep == 0) {
            nStep = m_nSize / 8;
            if (nStep < 4) nStep = 4;
            if (nStep > 1024) nStep = 1024;
        }
        std::int64_t nCapacity = m_nMaxSize + nStep;
        if (nCapacity < nNewSize) nCapacity = nNewSize;
        if (nCapacity > kLargestCapacity) nCapacity = kLargestCapacity;
        Reallocate(nCapacity);
    }
    Clear(m_nSize, nNewSize);
    StoreSize(nNewSize);
}

template <class TYPE, class ARG_TYPE>
int XR_CArray<TYPE, ARG_TYPE>::Append(XR_CArray const& other) {
    int const nOldSize = m_nSize;
    int const nAdded = other.m_nSize;
    SetSize(nOldSize + nAdded, -1);
    if (nAdded > 0) std::memcpy(static_cast<void*>(m_pData + nOldSize), other.m_pData, Bytes(nAdded));
    return nOldSize;
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::Copy(XR_CArray const& other) {
    SetSize(other.m_nSize, -1);
    if (m_nSize > 0) std::memmove(static_cast<void*>(m_pData), other.m_pData, Bytes(m_nSize));
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::FreeExtra() {
    if (m_nSize == m_nMaxSize) return;
    if (m_nSize == 0) {
        SetSize(0, -1);
    } else {
        Reallocate(m_nSize);
    }
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::InsertAt(int nIndex, ARG_TYPE element, int nCount) {
    TYPE const value = element;
    if (nIndex < m_nSize) {
        int const nOldSize = m_nSize;
        SetSize(nOldSize + nCount, -1);
        std::memmove(static_cast<void*>(m_pData + nIndex + nCount), m_pData + nIndex,
                     Bytes(nOldSize - nIndex));
    } else {
        SetSize(nIndex + nCount, -1);
    }
    for (int i = nIndex; i < nIndex + nCount; ++i) m_pData[i] = value;
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::InsertAt(int nStartIndex, XR_CArray* pOther) {
    int const nCount = pOther->m_nSize;
    if (nCount == 0) return;
    InsertAt(nStartIndex, pOther->m_pData[0], nCount);
    for (int i = 0; i < nCount; ++i) {
        // Of this array itself, the elements from the gap on have moved.
        bool const bMoved = pOther == this && i >= nStartIndex;
        m_pData[nStartIndex + i] = pOther->m_pData[bMoved ? i + nCount : i];
    }
}

template <class TYPE, class ARG_TYPE>
void XR_CArray<TYPE, ARG_TYPE>::RemoveAt(int nIndex, int nCount) {
    int const nBehind = m_nSize - (nIndex + nCount);
    if (nBehind > 0) {
        std::memmove(static_cast<void*>(m_pData + nIndex), m_pData + nIndex + nCount, Bytes(nBehind));
    }
    m_nSize -= nCount;
}
