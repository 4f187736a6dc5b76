#include "slice/Cut.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "part/LargeVector.h"

namespace varnet {

namespace {

constexpr std::int32_t kNone = -1;

// A closed path whose area is below this share of its squared length encloses nothing: a wall that the height
// touches from below, gone along and back.
constexpr double kNoArea = 1e-13;

// So many edges without facets may always be kept.
constexpr std::size_t kFewDead = 1024;

// A table is made for so many edges: a part may be of hundreds of thousands of small bodies.
constexpr std::size_t kFewEdges = 8;

// Ends and edges have numbers of 32 bits.
constexpr std::size_t kMostCut = std::size_t{1} << 29;

// How far ahead of its turn a facet is asked for: KitCut of many spheres is fastest near these.
constexpr std::size_t kTrianglesAhead = 16;
constexpr std::size_t kPointsAhead = 8;

bool IsBeginning(std::int32_t end) { return end % 2 == 0; }
std::int32_t OtherEnd(std::int32_t end) { return end ^ 1; }
std::size_t SegmentOf(std::int32_t end) { return static_cast<std::size_t>(end / 2); }
std::size_t Index(std::int32_t n) { return static_cast<std::size_t>(n); }

bool EnclosesNothing(std::span<Point2 const> path) {
    if (path.size() < 3) return true;
    double const length = LengthOf(path, true);
    return !(std::fabs(SignedArea(path)) > kNoArea * length * length);
}

}  // namespace

void CutSweep::Cut(int number, Paths& paths, Pulse& pulse) {
    GoTo(number, pulse);
    AddSegments();
    pulse.Beat(4 * m_Active.size());
    SettleCrowds();
    Chain(paths);
    pulse.Beat(4 * m_Active.size());
}

// ---- the facets that are cut, and their edges

void CutSweep::GoTo(int number, Pulse& pulse) {
    int from = m_Number + 1;
    if (number <= m_Number) {
        m_Active.clear();
        m_Edges.clear();
        m_Table.clear();
        m_DeadEdges = 0;
        from = 1;
    }
    m_Number = number;
    m_Height = m_Source->Heights().CutHeight(number);
    LetGo(number);
    TakeUp(from, number, pulse);
}

void CutSweep::LetGo(int number) {
    std::erase_if(m_Active, [this, number](Active const& facet) {
        if (facet.last >= number) return false;
        for (std::int32_t const edge : {facet.lowMiddle, facet.middleHigh, facet.lowHigh}) {
            if (--m_Edges[Index(edge)].facets == 0) ++m_DeadEdges;
        }
        return true;
    });
    bool const mayStay = !m_Source->ReusesNumbers();
    if (m_DeadEdges > 0 && !(mayStay && (m_DeadEdges <= kFewDead || m_DeadEdges <= m_Edges.size() / 2))) {
        DropDeadEdges();
    }
}

void CutSweep::DropDeadEdges() {
    m_NewNumbers.resize(m_Edges.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i < m_Edges.size(); ++i) {
        if (m_Edges[i].facets == 0) continue;
        m_NewNumbers[i] = static_cast<std::int32_t>(count);
        m_Edges[count++] = m_Edges[i];
    }
    m_Edges.resize(count);
    m_DeadEdges = 0;
    for (Active& facet : m_Active) {
        facet.lowMiddle = m_NewNumbers[Index(facet.lowMiddle)];
        facet.middleHigh = m_NewNumbers[Index(facet.middleHigh)];
        facet.lowHigh = m_NewNumbers[Index(facet.lowHigh)];
    }
    MakeTable(count);
}

void CutSweep::TakeUp(int from, int number, Pulse& pulse) {
    pulse.Beat(Index(number) - Index(from) + 1);
    m_Source->Deliver(from, number, [&](FacetBatch const& batch) {
        TakeUp(batch, number);
        pulse.Beat(batch.facets.size());
    });
}

// Facets that begin at one height lie anywhere in memory: they are asked for ahead.
void CutSweep::TakeUp(FacetBatch const& batch, int number) {
    auto const& [facets, triangles, points] = batch;
    m_Points = points;
    for (std::size_t i = 0; i < facets.size(); ++i) {
        if (i + kTrianglesAhead < facets.size()) BringNear(&triangles[facets[i + kTrianglesAhead]]);
        if (i + kPointsAhead < facets.size()) {
            for (std::int32_t const corner : triangles[facets[i + kPointsAhead]]) {
                BringNear(&points[Index(corner)]);
            }
        }
        Activate(triangles[facets[i]], number);
    }
}

void CutSweep::Activate(Triangle const& triangle, int number) {
    auto const z = [this](std::int32_t point) { return m_Points[Index(point)].z; };
    // Turned until the lowest corner is in front: then the middle one comes next, or the highest.
    std::size_t const lowest = z(triangle[0]) <= z(triangle[1]) ? (z(triangle[0]) <= z(triangle[2]) ? 0 : 2)
                                                                : (z(triangle[1]) <= z(triangle[2]) ? 1 : 2);
    std::int32_t const low = triangle[lowest];
    std::int32_t middle = triangle[lowest == 2 ? 0 : lowest + 1];
    std::int32_t high = triangle[lowest == 0 ? 2 : lowest - 1];
    bool const middleIsNext = z(middle) <= z(high);
    if (!middleIsNext) std::swap(middle, high);
    LayerHeights const& heights = m_Source->Heights();
    int const last = heights.FirstAbove(z(high)) - 1;
    if (last < number) return;
    if (m_Active.size() >= kMostCut) {
        throw Error(ErrorKind::kContent, "a layer cuts more than 536870912 facets");
    }
    // Going round the facet, which faces outward, the side that goes down is where the segment begins, and
    // the side that goes up where it ends: so the solid is on its left.
    bool const beginsOnLong = middleIsNext != m_Source->AreTurned();
    m_Active.push_back({EdgeBetween(low, middle), EdgeBetween(middle, high), EdgeBetween(low, high),
                        heights.FirstAbove(z(middle)), last, beginsOnLong});
}

// Edges between vertices of one height are never cut, and may be told either way round.
std::int32_t CutSweep::EdgeBetween(std::int32_t below, std::int32_t above) {
    if (2 * (m_Edges.size() + 1) > m_Table.size()) MakeTable(2 * m_Edges.size() + kFewEdges);
    std::size_t const mask = m_Table.size() - 1;
    std::size_t slot = SlotOf(below, above);
    for (; m_Table[slot] != kNone; slot = (slot + 1) & mask) {
        Edge& edge = m_Edges[Index(m_Table[slot])];
        if (edge.below != below || edge.above != above) continue;
        if (edge.facets++ == 0) --m_DeadEdges;
        return m_Table[slot];
    }
    m_Table[slot] = static_cast<std::int32_t>(m_Edges.size());
    m_Edges.push_back({below, above, 1, 0, kNone, 0, {}});
    return m_Table[slot];
}

std::size_t CutSweep::SlotOf(std::int32_t below, std::int32_t above) const {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15u;
    std::uint64_t const key = static_cast<std::uint64_t>(static_cast<std::uint32_t>(below)) << 32 |
                              static_cast<std::uint32_t>(above);
    return static_cast<std::size_t>((key ^ key >> 29) * kOdd >> m_Shift);
}

void CutSweep::MakeTable(std::size_t edges) {
    std::size_t const slots = std::bit_ceil(std::max<std::size_t>(3 * edges, 2));
    m_Table.assign(slots, kNone);
    m_Shift = 64 - std::countr_zero(slots);
    for (std::size_t i = 0; i < m_Edges.size(); ++i) {
        std::size_t slot = SlotOf(m_Edges[i].below, m_Edges[i].above);
        while (m_Table[slot] != kNone) slot = (slot + 1) & (slots - 1);
        m_Table[slot] = static_cast<std::int32_t>(i);
    }
}

// ---- the segments, and which of their ends meet

void CutSweep::AddSegments() {
    m_EdgeOfEnd.resize(2 * m_Active.size());
    m_Partner.resize(2 * m_Active.size());
    m_Used.assign(m_Active.size(), 0);
    m_Crowd.clear();
    m_Lonely = 0;
    std::int32_t end = 0;
    for (Active const& facet : m_Active) {
        std::int32_t const shortEdge = m_Number >= facet.middleBelow ? facet.middleHigh : facet.lowMiddle;
        AddEnd(facet.beginsOnLong ? facet.lowHigh : shortEdge, end);
        AddEnd(facet.beginsOnLong ? shortEdge : facet.lowHigh, end + 1);
        end += 2;
    }
}

void CutSweep::AddEnd(std::int32_t number, std::int32_t end) {
    Edge& edge = m_Edges[Index(number)];
    m_EdgeOfEnd[Index(end)] = number;
    m_Partner[Index(end)] = kNone;
    if (edge.layer != m_Number) {
        edge.layer = m_Number;
        edge.firstEnd = end;
        edge.ends = 1;
        edge.place = PlaceOn(edge);
        ++m_Lonely;
    } else if (++edge.ends == 2) {
        Pair(edge.firstEnd, end);
        --m_Lonely;
    } else {
        m_Crowd.push_back({number, end});
    }
}

// The same numbers for every facet of the edge, and those of the upper vertex where the cut goes through it.
Point2 CutSweep::PlaceOn(Edge const& edge) const {
    Point3 const& a = m_Points[Index(edge.below)];
    Point3 const& b = m_Points[Index(edge.above)];
    if (b.z == m_Height) return {b.x, b.y};
    double const share = (m_Height - a.z) / (b.z - a.z);
    return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)};
}

Point2 const& CutSweep::PlaceOf(std::int32_t end) const {
    return m_Edges[Index(m_EdgeOfEnd[Index(end)])].place;
}

void CutSweep::Pair(std::int32_t end, std::int32_t other) {
    m_Partner[Index(end)] = other;
    m_Partner[Index(other)] = end;
}

// First all segments are dropped that others make up for; then what is left around each edge is paired.
void CutSweep::SettleCrowds() {
    if (m_Crowd.empty()) return;
    std::sort(m_Crowd.begin(), m_Crowd.end(), [](Crowded const& a, Crowded const& b) {
        return std::pair(a.edge, a.end) < std::pair(b.edge, b.end);
    });
    // The first two ends wait with the others.
    std::size_t const count = m_Crowd.size();
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t const number = m_Crowd[i].edge;
        if (i > 0 && m_Crowd[i - 1].edge == number) continue;
        std::int32_t const first = m_Edges[Index(number)].firstEnd;
        std::int32_t const second = m_Partner[Index(first)];
        m_Crowd.push_back({number, first});
        m_Crowd.push_back({number, second});
        m_Partner[Index(first)] = m_Partner[Index(second)] = kNone;
    }
    std::sort(m_Crowd.begin(), m_Crowd.end(), [](Crowded const& a, Crowded const& b) {
        return std::pair(a.edge, a.end) < std::pair(b.edge, b.end);
    });
    FindNeeded();
    for (std::size_t i = 0; i < m_Crowd.size();) {
        CollectEnds(i);
        DropDoubled();
    }
    for (std::size_t i = 0; i < m_Crowd.size();) {
        CollectEnds(i);
        PairAround();
    }
}

// The ends at the next crowded edge that belong to segments not dropped.
void CutSweep::CollectEnds(std::size_t& next) {
    m_Around.clear();
    std::int32_t const edge = m_Crowd[next].edge;
    for (; next < m_Crowd.size() && m_Crowd[next].edge == edge; ++next) {
        if (m_Used[SegmentOf(m_Crowd[next].end)] == 0) m_Around.push_back(m_Crowd[next].end);
    }
}

// The ends around an edge, those together whose segments run to the same other edge: these are of facets with
// the same corners. Calls visit(ends, balance), how many more of them begin here than end here.
template <class Visit>
void CutSweep::VisitDoubled(Visit const& visit) {
    auto const other = [this](std::int32_t end) { return m_EdgeOfEnd[Index(OtherEnd(end))]; };
    std::sort(m_Around.begin(), m_Around.end(), [&](std::int32_t a, std::int32_t b) {
        return std::pair(other(a), a) < std::pair(other(b), b);
    });
    for (std::size_t i = 0; i < m_Around.size();) {
        std::size_t const first = i;
        int balance = 0;
        for (; i < m_Around.size() && other(m_Around[i]) == other(m_Around[first]); ++i) {
            balance += IsBeginning(m_Around[i]) ? 1 : -1;
        }
        visit(std::span<std::int32_t const>(m_Around).subspan(first, i - first), balance);
    }
}

// Where facets with the same corners, each counted once, leave an edge with an end too many, and all of them
// leave none, all are needed: solids that lie in each other have a wall in common. The same is asked of the
// edges at the other ends of those then.
void CutSweep::FindNeeded() {
    m_Needed.assign(m_Active.size(), 0);
    m_Asked.clear();
    for (std::size_t i = 0; i < m_Crowd.size(); ++i) {
        if (i == 0 || m_Crowd[i - 1].edge != m_Crowd[i].edge) m_Asked.push_back(m_Crowd[i].edge);
    }
    while (!m_Asked.empty()) {
        std::int32_t const edge = m_Asked.back();
        m_Asked.pop_back();
        auto const place =
            std::lower_bound(m_Crowd.begin(), m_Crowd.end(), edge,
                             [](Crowded const& end, std::int32_t of) { return end.edge < of; });
        if (place == m_Crowd.end() || place->edge != edge) continue;
        auto next = static_cast<std::size_t>(place - m_Crowd.begin());
        CollectEnds(next);
        int once = 0;
        int all = 0;
        VisitDoubled([&](std::span<std::int32_t const> ends, int balance) {
            all += balance;
            once += m_Needed[SegmentOf(ends[0])] != 0 ? balance : (balance > 0) - (balance < 0);
        });
        if (once == 0 || all != 0) continue;
        VisitDoubled([&](std::span<std::int32_t const> ends, int balance) {
            if (std::abs(balance) < 2 || m_Needed[SegmentOf(ends[0])] != 0) return;
            for (std::int32_t const end : ends) m_Needed[SegmentOf(end)] = 1;
            m_Asked.push_back(m_EdgeOfEnd[Index(OtherEnd(ends[0]))]);
        });
    }
}

// Of segments of facets with the same corners one stays where more run one way than the other, or as many as
// run that way beyond the others, if they are needed; and none where as many run each way.
void CutSweep::DropDoubled() {
    VisitDoubled([this](std::span<std::int32_t const> ends, int balance) {
        bool const needed = m_Needed[SegmentOf(ends[0])] != 0;
        int wanted = needed ? std::abs(balance) : std::min(std::abs(balance), 1);
        for (std::int32_t const end : ends) {
            bool const keep = wanted > 0 && IsBeginning(end) == (balance > 0);
            if (!keep) m_Used[SegmentOf(end)] = 1;
            wanted -= keep ? 1 : 0;
            // At the other edge the partner of what goes, if it has one yet, is alone then. Two that are
            // needed there are no partners: they run the same way.
            if (keep && !needed) continue;
            std::int32_t const partner = std::exchange(m_Partner[Index(OtherEnd(end))], kNone);
            if (partner != kNone) m_Partner[Index(partner)] = kNone;
        }
    });
}

// By the direction in which the segments leave the edge, counter-clockwise.
void CutSweep::SortAround() {
    auto const direction = [this](std::int32_t end) {
        Point2 const& a = PlaceOf(end);
        Point2 const& b = PlaceOf(OtherEnd(end));
        return std::atan2(b.y - a.y, b.x - a.x);
    };
    std::sort(m_Around.begin(), m_Around.end(), [&](std::int32_t end, std::int32_t other) {
        return std::pair(direction(end), end) < std::pair(direction(other), other);
    });
}

// The solid lies from a segment that begins here on, counter-clockwise, up to one that ends here. Ends are
// matched like brackets on a circle; those of one kind that are left over are joined in their order, but for
// those of facets with the same corners, along which a path would turn back.
void CutSweep::PairAround() {
    if (m_Around.size() == 2 && m_Needed[SegmentOf(m_Around[0])] == 0) {
        Pair(m_Around[0], m_Around[1]);
        return;
    }
    SortAround();
    m_Open.clear();
    for (int round : {0, 1}) {
        for (std::int32_t const end : m_Around) {
            if (m_Partner[Index(end)] != kNone) continue;
            if (IsBeginning(end)) {
                if (round == 0) m_Open.push_back(end);
            } else if (!m_Open.empty()) {
                Pair(m_Open.back(), end);
                m_Open.pop_back();
            }
        }
    }
    std::int32_t alone = kNone;
    for (std::int32_t const end : m_Around) {
        if (m_Partner[Index(end)] != kNone || m_Needed[SegmentOf(end)] != 0) continue;
        if (alone == kNone) {
            alone = end;
        } else {
            Pair(alone, end);
            alone = kNone;
        }
    }
}

// ---- the paths

void CutSweep::Chain(Paths& paths) {
    auto const ends = static_cast<std::int32_t>(m_EdgeOfEnd.size());
    auto const chainFrom = [&](std::int32_t end) {
        if (m_Used[SegmentOf(end)] == 0) ChainFrom(end, paths);
    };
    if (m_Lonely > 0 || !m_Crowd.empty()) {
        // Paths of one winding begin where their first segment does; what else is open has an end somewhere.
        for (std::int32_t first : {0, 1}) {
            for (std::int32_t end = first; end < ends; end += 2) {
                if (m_Partner[Index(end)] == kNone) chainFrom(end);
            }
        }
    }
    for (std::int32_t end = 0; end < ends; end += 2) chainFrom(end);
}

void CutSweep::ChainFrom(std::int32_t end, Paths& paths) {
    std::size_t const begin = paths.points.size();
    double along = 0.0;
    double against = 0.0;
    auto const visit = [&](Point2 const& place) {
        if (paths.points.size() == begin || !(place == paths.points.back())) paths.points.push_back(place);
    };
    std::int32_t const start = end;
    do {
        Point2 const& from = PlaceOf(end);
        Point2 const& to = PlaceOf(OtherEnd(end));
        visit(from);
        (IsBeginning(end) ? along : against) += std::fabs(to.x - from.x) + std::fabs(to.y - from.y);
        m_Used[SegmentOf(end)] = 1;
        end = m_Partner[Index(OtherEnd(end))];
        if (end == kNone) visit(to);
    } while (end != kNone && end != start);
    bool const closed = end == start;
    auto const first = paths.points.begin() + static_cast<std::ptrdiff_t>(begin);
    if (closed) {
        while (paths.points.size() > begin + 1 && paths.points.back() == *first) paths.points.pop_back();
    }
    std::span<Point2 const> const path(paths.points.data() + begin, paths.points.size() - begin);
    if (closed ? EnclosesNothing(path) : path.size() < 2) {
        paths.points.resize(begin);
        return;
    }
    if (against > along) std::reverse(first, paths.points.end());
    paths.Finish(closed);
}

}  // namespace varnet
