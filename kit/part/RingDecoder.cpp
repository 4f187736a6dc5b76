#include "part/RingDecoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <set>
#include <string>

#include "part/Bytes.h"

namespace varnet {

namespace {

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

    char const* Take(std::size_t size, char const* what) {
        if (m_Left.size() < size) throw RingError(std::string("the file ends inside ") + what);
        char const* const taken = m_Left.data();
        m_Left.remove_prefix(size);
        return taken;
    }
    double TakeDouble() { return LoadF64(Take(8, "the header")); }
    std::uint32_t TakeCount() { return LoadU32(Take(4, "a region's number of steps")); }
    GridPoint TakePoint() {
        char const* const p = Take(9, "the points");
        return {LoadU24(p), LoadU24(p + 3), LoadU24(p + 6)};
    }

private:
    std::string_view m_Left;
};

// Replays the steps: the ring has the edges between what is decoded and what is not.
class RingReplay {
public:
    RingReplay(Bytes& bytes, RingStream& stream) : m_Bytes(bytes), m_Stream(stream) {}

    void ReplayRegion() {
        std::uint32_t const steps = m_Bytes.TakeCount();
        GridPoint const p1 = TakePoint();
        GridPoint const p2 = TakePoint();
        GridPoint const p3 = TakePoint();
        AddFacet(p1, p2, p3);
        m_Ring = {{p1, p2}, {p2, p3}, {p3, p1}};
        for (std::uint32_t i = 0; i < steps; ++i) ReplayStep();
        if (!m_Ring.empty()) throw RingError("a region ends before its ring is empty");
        ++m_Stream.regions;
    }

private:
    void ReplayStep() {
        char const* const p = m_Bytes.Take(2, "the steps");
        int const byte = static_cast<unsigned char>(p[0]);
        int const position = byte < 128 ? byte : byte - 256;
        std::size_t const run = static_cast<unsigned char>(p[1]);
        ++m_Stream.steps;
        if (position == 0) {
            if (run == 0) throw RingError("a step does nothing");
            RemoveEdges(run);
        } else if (run == 0) {
            if (position < 0) throw RingError("a step drops an edge ahead of the head");
            RotateForward(position - 1);
            RemoveEdges(1);
        } else {
            if (position > 0) RotateForward(position - 1);
            if (position < 0) RotateBackward(-position);
            CloseRun(run);
        }
    }

    void CloseRun(std::size_t run) {
        GridPoint const p = TakePoint();
        if (run > m_Ring.size()) throw RingError("a step takes more edges than the ring has");
        GridPoint const a = m_Ring.front().a;
        GridPoint const b = m_Ring[run - 1].b;
        for (std::size_t i = 0; i < run; ++i) AddFacet(m_Ring[i].b, m_Ring[i].a, p);
        RemoveEdges(run);
        m_Ring.push_front({p, b});
        m_Ring.push_front({a, p});
    }

    void RemoveEdges(std::size_t edges) {
        if (edges > m_Ring.size()) throw RingError("a step takes more edges than the ring has");
        m_Ring.erase(m_Ring.begin(), m_Ring.begin() + static_cast<std::ptrdiff_t>(edges));
    }

    void RotateForward(int times) {
        if (m_Ring.empty()) throw RingError("a step turns an empty ring");
        for (; times > 0; --times) {
            m_Ring.push_back(m_Ring.front());
            m_Ring.pop_front();
        }
    }

    void RotateBackward(int times) {
        if (m_Ring.empty()) throw RingError("a step turns an empty ring");
        for (; times > 0; --times) {
            m_Ring.push_front(m_Ring.back());
            m_Ring.pop_back();
        }
    }

    GridPoint TakePoint() {
        ++m_Stream.points;
        return m_Bytes.TakePoint();
    }

    void AddFacet(GridPoint const& a, GridPoint const& b, GridPoint const& c) {
        std::array<GridPoint, 3> key = {a, b, c};
        std::sort(key.begin(), key.end());
        if (!m_Known.insert(key).second) {
            ++m_Stream.repeated;
            return;
        }
        m_Stream.facets.push_back({ToPoint(a), ToPoint(b), ToPoint(c)});
    }

    Point3 ToPoint(GridPoint const& p) const {
        return {m_Stream.origin.x + p[0] * m_Stream.step, m_Stream.origin.y + p[1] * m_Stream.step,
                m_Stream.origin.z + p[2] * m_Stream.step};
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
    stream.step = left.TakeDouble();
    RingReplay replay(left, stream);
    while (!left.IsAtEnd()) replay.ReplayRegion();
    return stream;
}

}  // namespace varnet
