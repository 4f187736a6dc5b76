#include "RingDecoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <set>
#include <string>

namespace {

template <class Number>
Number LoadNumber(char const* pBytes) {
    Number number;
    std::memcpy(&number, pBytes, sizeof(number));
    return number;
}

double LoadDouble(char const* pBytes) { return LoadNumber<double>(pBytes); }
std::uint32_t LoadUnsigned(char const* pBytes) { return LoadNumber<std::uint32_t>(pBytes); }
std::uint32_t LoadUnsigned24(char const* pBytes) {
    std::uint32_t n = 0;
    std::memcpy(&n, pBytes, 3);
    return n;
}

constexpr std::size_t kHeaderSize = 80;
constexpr std::string_view kHeaderText = "Quarnell Ziped Model -- CSM2.0";

// A point as the file has it: whole numbers of steps.
using GridPoint = std::array<std::uint32_t, 3>;

struct Edge {
    GridPoint a;
    GridPoint b;
};

// Takes the file apart, and throws where it ends too soon.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : m_Left(bytes) {}
    bool IsAtEnd() const { return m_Left.empty(); }

    char const* Take(std::size_t nSize, char const* pWhat) {
        if (m_Left.size() < nSize) throw RingError(std::string("the file ends inside ") + pWhat);
        char const* const pTaken = m_Left.data();
        m_Left.remove_prefix(nSize);
        return pTaken;
    }
    double TakeDouble() { return LoadDouble(Take(8, "the header")); }
    std::uint32_t TakeCount() { return LoadUnsigned(Take(4, "a region's number of steps")); }
    GridPoint TakePoint() {
        char const* const p = Take(9, "the points");
        return {LoadUnsigned24(p), LoadUnsigned24(p + 3), LoadUnsigned24(p + 6)};
    }

private:
    std::string_view m_Left;
};

// Replays the steps: the ring has the edges between what is decoded and what is not.
class RingReplay {
public:
    RingReplay(Bytes& bytes, RingStream& stream) : m_Bytes(bytes), m_Stream(stream) {}

    void ReplayRegion() {
        std::uint32_t const nSteps = m_Bytes.TakeCount();
        GridPoint const p1 = TakePoint();
        GridPoint const p2 = TakePoint();
        GridPoint const p3 = TakePoint();
        AddFacet(p1, p2, p3);
        m_Ring = {{p1, p2}, {p2, p3}, {p3, p1}};
        for (std::uint32_t i = 0; i < nSteps; ++i) ReplayStep();
        if (!m_Ring.empty()) throw RingError("a region ends before its ring is empty");
        ++m_Stream.nRegions;
    }

private:
    void ReplayStep() {
        char const* const p = m_Bytes.Take(2, "the steps");
        int const nByte = static_cast<unsigned char>(p[0]);
        int const nPosition = nByte < 128 ? nByte : nByte - 256;
        std::size_t const nRun = static_cast<unsigned char>(p[1]);
        ++m_Stream.nSteps;
        if (nPosition == 0) {
            if (nRun == 0) throw RingError("a step does nothing");
            RemoveEdges(nRun);
        } else if (nRun == 0) {
            if (nPosition < 0) throw RingError("a step drops an edge ahead of the head");
            RotateForward(nPosition - 1);
            RemoveEdges(1);
        } else {
            if (nPosition > 0) RotateForward(nPosition - 1);
            if (nPosition < 0) RotateBackward(-nPosition);
            CloseRun(nRun);
        }
    }

    void CloseRun(std::size_t nRun) {
        GridPoint const p = TakePoint();
        if (nRun > m_Ring.size()) throw RingError("a step takes more edges than the ring has");
        GridPoint const a = m_Ring.front().a;
        GridPoint const b = m_Ring[nRun - 1].b;
        for (std::size_t i = 0; i < nRun; ++i) AddFacet(m_Ring[i].b, m_Ring[i].a, p);
        RemoveEdges(nRun);
        m_Ring.push_front({p, b});
        m_Ring.push_front({a, p});
    }

    void RemoveEdges(std::size_t nEdges) {
        if (nEdges > m_Ring.size()) throw RingError("a step takes more edges than the ring has");
        m_Ring.erase(m_Ring.begin(), m_Ring.begin() + static_cast<std::ptrdiff_t>(nEdges));
    }

    void RotateForward(int nTimes) {
        if (m_Ring.empty()) throw RingError("a step turns an empty ring");
        for (; nTimes > 0; --nTimes) {
            m_Ring.push_back(m_Ring.front());
            m_Ring.pop_front();
        }
    }

    void RotateBackward(int nTimes) {
        if (m_Ring.empty()) throw RingError("a step turns an empty ring");
        for (; nTimes > 0; --nTimes) {
            m_Ring.push_front(m_Ring.back());
            m_Ring.pop_back();
        }
    }

    GridPoint TakePoint() {
        ++m_Stream.nPoints;
        return m_Bytes.TakePoint();
    }

    void AddFacet(GridPoint const& a, GridPoint const& b, GridPoint const& c) {
        std::array<GridPoint, 3> key = {a, b, c};
        std::sort(key.begin(), key.end());
        if (!m_Known.insert(key).second) {
            ++m_Stream.nRepeated;
            return;
        }
        tagFACET& facet = m_Stream.facets.emplace_back();
        facet.m_ptVertex[0] = ToPoint(a);
        facet.m_ptVertex[1] = ToPoint(b);
        facet.m_ptVertex[2] = ToPoint(c);
    }

    CPoint3D ToPoint(GridPoint const& p) const {
        return CPoint3D(m_Stream.origin.x + p[0] * m_Stream.dStep, m_Stream.origin.y + p[1] * m_Stream.dStep,
                        m_Stream.origin.z + p[2] * m_Stream.dStep);
    }

    Bytes& m_Bytes;
    RingStream& m_Stream;
    std::deque<Edge> m_Ring;
    std::set<std::array<GridPoint, 3>> m_Known;
};

}  // namespace

RingStream DecodeRingStream(std::string_view bytes) {
    Bytes left(bytes);
    std::string_view const header(left.Take(kHeaderSize, "the header"), kHeaderSize);
    if (header.substr(0, header.find('\0')) != kHeaderText) throw RingError("not a ring stream");
    RingStream stream;
    stream.origin.x = left.TakeDouble();
    stream.origin.z = left.TakeDouble();
    stream.origin.y = left.TakeDouble();
    stream.dStep = left.TakeDouble();
    RingReplay replay(left, stream);
    while (!left.IsAtEnd()) replay.ReplayRegion();
    return stream;
}
