// A random walk over an array, a list and the two trees, beside the standard library's for the first two.

#include <list>
#include <vector>

#include "FuzzInput.h"
#include "MeshInvariants.h"
#include "foundation/Array.h"
#include "foundation/List.h"
#include "trees/PointTree.h"

using namespace varnet;

namespace {

using Array = XR_CArray<std::int64_t, std::int64_t>;
using List = XR_CList<int, int>;

// What an array's elements are: those that come into being without a value are 0.
class ArrayPair {
public:
    void Step(ByteSource& source) {
        auto const nValue = source.Take<std::int8_t>();
        int const nIndex = source.Take<std::uint8_t>() % 64;
        int const nCount = source.Take<std::uint8_t>() % 16;
        int const nSize = m_Array.GetSize();
        auto const place = [this](int n) { return m_Twin.begin() + n; };
        switch (source.Take<std::uint8_t>() % 9) {
            case 0:
                m_Array.Add(nValue);
                m_Twin.push_back(nValue);
                break;
            case 1:
                m_Array.SetAtGrow(nIndex, nValue);
                if (nIndex >= nSize) m_Twin.resize(static_cast<std::size_t>(nIndex) + 1);
                *place(nIndex) = nValue;
                break;
            case 2:
                m_Array.InsertAt(nIndex, nValue, nCount);
                if (nIndex > nSize) m_Twin.resize(static_cast<std::size_t>(nIndex));
                m_Twin.insert(place(nIndex), static_cast<std::size_t>(nCount), nValue);
                break;
            case 3:
                if (nIndex + nCount > nSize) break;
                m_Array.RemoveAt(nIndex, nCount);
                m_Twin.erase(place(nIndex), place(nIndex + nCount));
                break;
            case 4:
                m_Array.SetSize(nIndex, nValue);
                m_Twin.resize(static_cast<std::size_t>(nIndex));
                break;
            case 5:
                m_Array.FreeExtra();
                break;
            case 6: {
                Array other;
                for (int i = 0; i < nCount; ++i) other.Add(i);
                m_Array.InsertAt(nIndex, &other);
                if (nCount == 0) break;
                if (nIndex > nSize) m_Twin.resize(static_cast<std::size_t>(nIndex));
                m_Twin.insert(place(nIndex), other.GetData(), other.GetData() + nCount);
                break;
            }
            case 7: {
                Array copy;
                copy.Copy(m_Array);
                copy.Append(m_Array);
                Require(copy.GetSize() == 2 * nSize);
                for (int i = 0; i < 2 * nSize; ++i) Require(copy[i] == m_Array[i % nSize]);
                break;
            }
            default:
                if (nIndex < 8) {
                    m_Array.RemoveAll();
                    m_Twin.clear();
                }
        }
        Require(m_Array.GetSize() == static_cast<int>(m_Twin.size()));
        for (int i = 0; i < m_Array.GetSize(); ++i) Require(m_Array[i] == *place(i));
    }

private:
    Array m_Array;
    std::vector<std::int64_t> m_Twin;
};

class ListPair {
public:
    void Step(ByteSource& source) {
        int const nValue = source.Take<std::int8_t>();
        int const nIndex = source.Take<std::uint8_t>() % 32;
        XR__POSITION* const position = m_List.FindIndex(nIndex);
        Require((position != nullptr) == (nIndex < m_List.GetCount()));
        auto place = m_Twin.begin();
        if (position != nullptr) std::advance(place, nIndex);
        switch (source.Take<std::uint8_t>() % 8) {
            case 0:
                m_List.AddHead(nValue);
                m_Twin.push_front(nValue);
                break;
            case 1:
                m_List.AddTail(nValue);
                m_Twin.push_back(nValue);
                break;
            case 2:
                m_List.InsertBefore(position, nValue);
                m_Twin.insert(position != nullptr ? place : m_Twin.begin(), nValue);
                break;
            case 3:
                m_List.InsertAfter(position, nValue);
                m_Twin.insert(position != nullptr ? std::next(place) : m_Twin.end(), nValue);
                break;
            case 4:
                if (position == nullptr) break;
                m_List.RemoveAt(position);
                m_Twin.erase(place);
                break;
            case 5:
                if (m_Twin.empty()) break;
                Require(m_List.RemoveHead() == m_Twin.front());
                m_Twin.pop_front();
                break;
            case 6:
                if (m_Twin.empty()) break;
                Require(m_List.RemoveTail() == m_Twin.back());
                m_Twin.pop_back();
                break;
            default: {
                if (m_Twin.size() > 32) {
                    m_List.RemoveAll();
                    m_Twin.clear();
                    break;
                }
                List copy;
                copy.AddTail(&m_List);
                m_List.AddHead(&copy);
                m_Twin.insert(m_Twin.begin(), m_Twin.size(), 0);
                auto from = std::next(m_Twin.begin(), copy.GetCount());
                for (auto to = m_Twin.begin(); from != m_Twin.end(); ++to, ++from) *to = *from;
            }
        }
        RequireSame();
    }

private:
    void RequireSame() const {
        Require(m_List.GetCount() == static_cast<int>(m_Twin.size()));
        auto twin = m_Twin.begin();
        for (XR__POSITION* p = m_List.GetHeadPosition(); p != nullptr;) Require(m_List.GetNext(p) == *twin++);
        auto backward = m_Twin.rbegin();
        for (XR__POSITION* p = m_List.GetTailPosition(); p != nullptr;)
            Require(m_List.GetPrev(p) == *backward++);
        Require(m_Twin.empty() == (m_List.m_pBlocks == nullptr));
    }

    List m_List;
    std::list<int> m_Twin;
};

double Coordinate(ByteSource& source) {
    auto const nByte = source.Take<std::uint8_t>();
    if (nByte == 255) return source.Take<double>();
    return (nByte % 16) * 0.00005 + (nByte / 16) * 1.0;
}

template <class Node>
std::uint32_t CheckedNodes(Node const* pRoot) {
    CheckedDepth(pRoot);
    std::uint32_t nNodes = 0;
    avl::Walk(pRoot, [&nNodes](Node const*) { ++nNodes; });
    return nNodes;
}

// Rebuilding merges nothing, whatever the coordinates have become.
class Trees {
public:
    void Step(ByteSource& source) {
        switch (source.Take<std::uint8_t>() % 8) {
            case 0:
                m_Vertices.ReBuildTree();
                m_Points.ReBuildTree();
                break;
            case 1:
                m_Vertices.ExchangeXYZ(source.Take<std::uint8_t>() % 5);
                break;
            case 2: {
                double matrix[4][4];
                double planar[3][3];
                for (auto& row : matrix) {
                    for (double& d : row) d = Coordinate(source);
                }
                for (auto& row : planar) {
                    for (double& d : row) d = Coordinate(source);
                }
                m_Vertices.Transform(matrix);
                m_Points.Transform(planar);
                break;
            }
            default: {
                CPoint3D point(Coordinate(source), Coordinate(source), Coordinate(source));
                CPoint2D planar(point.x, point.y);
                std::uint32_t const nPoints = m_Points.m_nCount;
                Require(m_Vertices.AddNode(point) != nullptr);
                Require(m_Points.AddNode(planar) != nullptr);
                Require(m_Points.m_nCount == nPoints + 1);
            }
        }
        Require(CheckedNodes(m_Vertices.m_pRoot) == m_Vertices.m_nCount);
        Require(CheckedNodes(m_Points.m_pRoot) == m_Points.m_nCount);
    }

private:
    CVertexTree m_Vertices;
    CPointTree m_Points;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    ByteSource source(pData, nSize);
    ArrayPair arrays;
    ListPair lists;
    Trees trees;
    while (!source.IsEmpty()) {
        switch (source.Take<std::uint8_t>() % 3) {
            case 0:
                arrays.Step(source);
                break;
            case 1:
                lists.Step(source);
                break;
            default:
                trees.Step(source);
        }
    }
    return 0;
}
