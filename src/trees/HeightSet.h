#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <tuple>
#include <vector>

#include "foundation/memory/LargePages.h"

namespace varnet {

/// The distinct heights of the vertices of a tree, more than the tolerance apart from each other, and the
/// question to which of them a new height would be drawn.
class HeightSet {
public:
    explicit HeightSet(double dTolerance);

    /// Adds a height, unless the set has it.
    void Add(double dHeight);

    enum class Near { kNone, kOne, kTwo, kUnknown };
    struct Answer {
        Near near = Near::kNone;
        double dHeight = 0.0;  // the one, or the lower of the two
        double dUpper = 0.0;
    };
    /// Which heights lie within the tolerance of z, as rounded subtraction has it: none, the one or the two
    /// given, or more (or it would take longer to tell).
    Answer Find(double z) const;
    /// Brings what Find looks at into the processor's cache.
    void Prefetch(double z) const;

private:
    // As many heights as share a cache line with their count. Heights are gathered by the interval of four
    // tolerances in which they lie, and intervals by their hash. What finds its line full goes to the one
    // beside it, and where that is full as well to m_Overflow.
    struct Line {
        std::array<double, 7> heights;
        std::uint64_t nCount;  // above the capacity when some heights stand elsewhere instead
    };

    struct Extremes {
        std::size_t nCount = 0;
        double dLeast = std::numeric_limits<double>::infinity();
        double dGreatest = -std::numeric_limits<double>::infinity();
    };

    static constexpr std::size_t kCapacity = std::tuple_size_v<decltype(Line::heights)>;

    std::int64_t IntervalOf(double z) const;
    std::size_t PlaceOf(std::int64_t nInterval) const;
    static void Meet(double dHeight, Answer& answer);
    static std::size_t Beside(std::size_t nPlace) { return nPlace ^ 1; }
    static bool MayHold(Line const& line, double dHeight);
    static bool Holds(Line const& line, double dHeight);
    bool HoldsAt(std::size_t nPlace, double dHeight) const;
    void LookAt(Line const& line, double z, Extremes& near) const;
    Answer FindBeside(double z, std::size_t nFirst, std::size_t nLast) const;
    void Insert(double dHeight);
    void Grow();

    double m_dTolerance;
    double m_dIntervalsPerUnit;
    std::size_t m_nHeights = 0;
    ZeroedTable<Line> m_Lines;  // a power of two
    std::vector<double> m_Overflow;
};

}  // namespace varnet
