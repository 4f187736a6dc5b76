#include "slice/Cut.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace varnet {

namespace {

constexpr std::int32_t kNone = -1;

// A closed path whose area is below this share of its squared length encloses nothing: a wall that the height
// touches from below, gone along and back.
constexpr double kNoArea = 1e-13;

bool IsBeginning(int end) { return end % 2 == 0; }
int OtherEnd(int end) { return end ^ 1; }
std::size_t SegmentOf(int end) { return static_cast<std::size_t>(end / 2); }
std::size_t Index(int n) { return static_cast<std::size_t>(n); }

bool EnclosesNothing(std::span<Point2 const> path) {
    if (path.size() < 3) return true;
    double const length = LengthOf(path, true);
    return !(std::fabs(SignedArea(path)) > kNoArea * length * length);
}

}  // namespace

void CutGraph::Begin(std::span<Point3 const> points, double height, std::size_t segments) {
    m_Points = points;
    m_Height = height;
    m_Nodes.clear();
    m_NodeOfEnd.clear();
    m_NextEnd.clear();
    // There are at most two nodes a segment, and one where the mesh is closed.
    std::size_t const slots = std::bit_ceil(std::max<std::size_t>(3 * segments, 2));
    m_Table.assign(slots, kNone);
    m_Shift = 64 - std::countr_zero(slots);
}

void CutGraph::AddSegment(Edge const& from, Edge const& to) {
    AddEnd(NodeOn(from));
    AddEnd(NodeOn(to));
}

void CutGraph::AddEnd(int node) {
    Node& at = m_Nodes[Index(node)];
    m_NodeOfEnd.push_back(node);
    m_NextEnd.push_back(at.firstEnd);
    at.firstEnd = static_cast<std::int32_t>(m_NextEnd.size()) - 1;
    ++at.ends;
}

int CutGraph::NodeOn(Edge const& edge) {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15u;
    std::uint64_t const key = static_cast<std::uint64_t>(static_cast<std::uint32_t>(edge.below)) << 32 |
                              static_cast<std::uint32_t>(edge.above);
    std::size_t const mask = m_Table.size() - 1;
    std::size_t slot = (key ^ key >> 29) * kOdd >> m_Shift;
    while (m_Table[slot] != kNone) {
        if (m_Nodes[Index(m_Table[slot])].edge == edge) return m_Table[slot];
        slot = (slot + 1) & mask;
    }
    m_Table[slot] = static_cast<std::int32_t>(m_Nodes.size());
    m_Nodes.push_back({edge, kNone, 0, PlaceOn(edge)});
    return m_Table[slot];
}

// The same numbers for every facet of the edge, and those of the upper vertex where the cut goes through it.
Point2 CutGraph::PlaceOn(Edge const& edge) const {
    Point3 const& a = m_Points[Index(edge.below)];
    Point3 const& b = m_Points[Index(edge.above)];
    if (b.z == m_Height) return {b.x, b.y};
    double const share = (m_Height - a.z) / (b.z - a.z);
    return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)};
}

Point2 const& CutGraph::PlaceOf(int end) const { return m_Nodes[Index(m_NodeOfEnd[Index(end)])].place; }

void CutGraph::Chain(Paths& paths, Pulse& pulse) {
    m_Used.assign(m_NodeOfEnd.size() / 2, 0);
    PairEnds();
    int const ends = static_cast<int>(m_NodeOfEnd.size());
    auto const chainFrom = [&](int end) {
        if (m_Used[SegmentOf(end)] == 0) ChainFrom(end, paths);
    };
    pulse.Beat(m_NodeOfEnd.size());
    // Paths of one winding begin where their first segment does; what else is open has an end somewhere.
    for (int first : {0, 1}) {
        for (int end = first; end < ends; end += 2) {
            if (m_Partner[Index(end)] == kNone) chainFrom(end);
        }
    }
    for (int end = 0; end < ends; end += 2) chainFrom(end);
}

void CutGraph::CollectEnds(Node const& node) {
    m_Around.clear();
    for (int end = node.firstEnd; end != kNone; end = m_NextEnd[Index(end)]) {
        if (m_Used[SegmentOf(end)] == 0) m_Around.push_back(end);
    }
}

// Of segments between the same two nodes, which are those of facets with the same corners, one stays where
// more run one way than the other, and none where as many run each way.
void CutGraph::DropDoubled(Node const& node) {
    CollectEnds(node);
    auto const other = [this](int end) { return m_NodeOfEnd[Index(OtherEnd(end))]; };
    std::sort(m_Around.begin(), m_Around.end(),
              [&](int a, int b) { return std::pair(other(a), a) < std::pair(other(b), b); });
    for (std::size_t i = 0; i < m_Around.size();) {
        std::size_t next = i;
        int balance = 0;
        for (; next < m_Around.size() && other(m_Around[next]) == other(m_Around[i]); ++next) {
            balance += IsBeginning(m_Around[next]) ? 1 : -1;
        }
        bool kept = balance == 0;
        for (; i < next; ++i) {
            bool const keep = !kept && IsBeginning(m_Around[i]) == (balance > 0);
            kept = kept || keep;
            if (!keep) m_Used[SegmentOf(m_Around[i])] = 1;
        }
    }
}

void CutGraph::PairEnds() {
    m_Partner.assign(m_NodeOfEnd.size(), kNone);
    bool plain = true;
    for (Node const& node : m_Nodes) {
        if (node.ends > 2) {
            plain = false;
            DropDoubled(node);
        } else if (node.ends == 2 && plain) {
            Pair(node.firstEnd, m_NextEnd[Index(node.firstEnd)]);
        }
    }
    if (plain) return;
    m_Partner.assign(m_NodeOfEnd.size(), kNone);
    for (Node const& node : m_Nodes) {
        CollectEnds(node);
        if (m_Around.size() == 2) {
            Pair(m_Around[0], m_Around[1]);
        } else if (m_Around.size() > 2) {
            PairAround();
        }
    }
}

void CutGraph::Pair(int end, int other) {
    m_Partner[Index(end)] = other;
    m_Partner[Index(other)] = end;
}

// By the direction in which the segments leave the node, counter-clockwise.
void CutGraph::SortAround() {
    auto const direction = [this](int end) {
        Point2 const& a = PlaceOf(end);
        Point2 const& b = PlaceOf(OtherEnd(end));
        return std::atan2(b.y - a.y, b.x - a.x);
    };
    std::sort(m_Around.begin(), m_Around.end(), [&](int end, int other) {
        return std::pair(direction(end), end) < std::pair(direction(other), other);
    });
}

// The solid lies from a segment that begins here on, counter-clockwise, up to one that ends here. Ends are
// matched like brackets on a circle; those of one kind that are left over are joined in their order.
void CutGraph::PairAround() {
    SortAround();
    m_Open.clear();
    for (int round : {0, 1}) {
        for (int const end : m_Around) {
            if (m_Partner[Index(end)] != kNone) continue;
            if (IsBeginning(end)) {
                if (round == 0) m_Open.push_back(end);
            } else if (!m_Open.empty()) {
                Pair(m_Open.back(), end);
                m_Open.pop_back();
            }
        }
    }
    int alone = kNone;
    for (int const end : m_Around) {
        if (m_Partner[Index(end)] != kNone) continue;
        if (alone == kNone) {
            alone = end;
        } else {
            Pair(alone, end);
            alone = kNone;
        }
    }
}

void CutGraph::ChainFrom(int end, Paths& paths) {
    std::size_t const begin = paths.points.size();
    double along = 0.0;
    double against = 0.0;
    auto const visit = [&](Point2 const& place) {
        if (paths.points.size() == begin || !(place == paths.points.back())) paths.points.push_back(place);
    };
    int const start = end;
    do {
        Point2 const& from = PlaceOf(end);
        Point2 const& to = PlaceOf(OtherEnd(end));
        visit(from);
        (IsBeginning(end) ? along : against) += std::fabs(to.x - from.x) + std::fabs(to.y - from.y);
        m_Used[SegmentOf(end)] = 1;
        int const exit = OtherEnd(end);
        end = m_Partner[Index(exit)];
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

void CutSweep::Cut(int number, Paths& paths, Pulse& pulse) {
    GoTo(number, pulse);
    std::span<Point3 const> const points = m_Index->Input().points;
    double const height = m_Index->Heights().CutHeight(number);
    bool const turned = m_Index->Input().turned;
    m_Graph.Begin(points, height, m_Active.size());
    for (Active const& facet : m_Active) {
        // Going round the facet, which faces outward, the side that goes down is where the segment begins,
        // and the side that goes up where it ends: so the solid is on its left.
        CutGraph::Edge from{};
        CutGraph::Edge to{};
        bool below[3];
        for (std::size_t i = 0; i < 3; ++i) below[i] = points[Index(facet.corners[i])].z < height;
        for (std::size_t i = 0; i < 3; ++i) {
            std::size_t const k = i == 2 ? 0 : i + 1;
            if (below[i] == below[k]) continue;
            if (below[i]) {
                to = {facet.corners[i], facet.corners[k]};
            } else {
                from = {facet.corners[k], facet.corners[i]};
            }
        }
        if (turned) std::swap(from, to);
        m_Graph.AddSegment(from, to);
    }
    pulse.Beat(m_Active.size());
    m_Graph.Chain(paths, pulse);
}

void CutSweep::GoTo(int number, Pulse& pulse) {
    int from = m_Number + 1;
    if (number < m_Number) {
        m_Active.clear();
        from = 1;
    }
    std::erase_if(m_Active, [number](Active const& facet) { return facet.last < number; });
    TakeUp(from, number, pulse);
    m_Number = number;
}

void CutSweep::TakeUp(int from, int number, Pulse& pulse) {
    for (int i = from; i <= number; ++i) {
        pulse.Beat();
        if (m_Index->ReachOf(i) < number) continue;
        for (std::uint32_t const facet : m_Index->StartingAt(i)) {
            Triangle const& triangle = m_Index->Input().triangles[facet];
            int const last = m_Index->LastOf(triangle);
            if (last >= number) m_Active.push_back({triangle, last});
            pulse.Beat();
        }
    }
}

}  // namespace varnet
