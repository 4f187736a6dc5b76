#include "CutGraph.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace {

constexpr std::int32_t kNone = -1;

// Twice the area, in square millimetres, at and below which a closed contour encloses nothing: a wall that
// the height touches from below, gone along and back.
constexpr double kNoArea = 1e-6;

bool IsBeginning(int nEnd) { return nEnd % 2 == 0; }
int OtherEnd(int nEnd) { return nEnd ^ 1; }
std::size_t SegmentOf(int nEnd) { return static_cast<std::size_t>(nEnd / 2); }
std::size_t Index(int n) { return static_cast<std::size_t>(n); }

std::size_t HashOf(CutGraph::Edge const& edge) {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15u;
    auto const nBelow = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(edge.pBelow));
    auto const nAbove = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(edge.pAbove));
    std::uint64_t const n = (nBelow * kOdd ^ nAbove) * kOdd;
    return static_cast<std::size_t>(n ^ n >> 32);
}

// The same numbers for every facet of the edge, and those of the upper vertex where the cut goes through it.
CPoint2D PlaceOn(CutGraph::Edge const& edge, double dZ) {
    tagVertexNode const& a = *edge.pBelow;
    tagVertexNode const& b = *edge.pAbove;
    if (b.z == dZ) return CPoint2D(b.x, b.y);
    double const dShare = (dZ - a.z) / (b.z - a.z);
    return CPoint2D(a.x + dShare * (b.x - a.x), a.y + dShare * (b.y - a.y));
}

double DoubledArea(std::vector<CPoint2D> const& points) {
    CPoint2D const& p = points.front();
    double dArea = 0.0;
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        CPoint2D const& q = points[i];
        CPoint2D const& r = points[i + 1];
        dArea += (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
    }
    return dArea;
}

bool IsWorthKeeping(Contour const& contour) {
    if (!contour.bClosed) return contour.points.size() > 1;
    return contour.points.size() > 2 && std::fabs(DoubledArea(contour.points)) > kNoArea;
}

}  // namespace

void CutGraph::Begin(double dZ, std::size_t nSegments) {
    m_dZ = dZ;
    m_Points.clear();
    m_PointOfEnd.clear();
    m_NextEnd.clear();
    // There are at most two points a segment, and one where the mesh is closed.
    m_Table.assign(std::bit_ceil(3 * nSegments + 1), kNone);
}

void CutGraph::AddSegment(Edge const& from, Edge const& to) {
    AddEnd(PointOn(from));
    AddEnd(PointOn(to));
}

void CutGraph::AddEnd(int nPoint) {
    Point& point = m_Points[Index(nPoint)];
    m_PointOfEnd.push_back(nPoint);
    m_NextEnd.push_back(point.nFirstEnd);
    point.nFirstEnd = static_cast<int>(m_NextEnd.size()) - 1;
    ++point.nEnds;
}

int CutGraph::PointOn(Edge const& edge) {
    std::size_t const nMask = m_Table.size() - 1;
    std::size_t nSlot = HashOf(edge) & nMask;
    while (m_Table[nSlot] != kNone) {
        if (m_Points[Index(m_Table[nSlot])].edge == edge) return m_Table[nSlot];
        nSlot = (nSlot + 1) & nMask;
    }
    m_Table[nSlot] = static_cast<std::int32_t>(m_Points.size());
    m_Points.push_back({edge, PlaceOn(edge, m_dZ)});
    return m_Table[nSlot];
}

std::vector<Contour> CutGraph::Chain() {
    PairEnds();
    m_Used.assign(m_PointOfEnd.size() / 2, 0);
    std::vector<Contour> contours;
    int const nEnds = static_cast<int>(m_PointOfEnd.size());
    auto const chainFrom = [this, &contours](int nEnd) {
        if (m_Used[SegmentOf(nEnd)] == 0) ChainFrom(nEnd, contours);
    };
    // Chains of one winding begin where their first segment does; what else is open has an end somewhere.
    for (int nFirst : {0, 1}) {
        for (int nEnd = nFirst; nEnd < nEnds; nEnd += 2) {
            if (m_Partner[Index(nEnd)] == kNone) chainFrom(nEnd);
        }
    }
    for (int nEnd = 0; nEnd < nEnds; nEnd += 2) chainFrom(nEnd);
    return contours;
}

void CutGraph::PairEnds() {
    m_Partner.assign(m_PointOfEnd.size(), kNone);
    for (Point const& point : m_Points) {
        if (point.nEnds == 2) {
            Pair(point.nFirstEnd, m_NextEnd[Index(point.nFirstEnd)]);
        } else if (point.nEnds > 2) {
            PairAround(point);
        }
    }
}

void CutGraph::Pair(int nEnd, int nOther) {
    m_Partner[Index(nEnd)] = nOther;
    m_Partner[Index(nOther)] = nEnd;
}

// The solid lies from a segment that begins here on, counter-clockwise, up to one that ends here. Ends are
// matched like brackets on a circle; those of one kind that are left over are joined in their order.
void CutGraph::PairAround(Point const& point) {
    m_Around.clear();
    for (int nEnd = point.nFirstEnd; nEnd != kNone; nEnd = m_NextEnd[Index(nEnd)]) m_Around.push_back(nEnd);
    std::sort(m_Around.begin(), m_Around.end(), [this](int nEnd, int nOther) {
        return std::pair(DirectionOf(nEnd), nEnd) < std::pair(DirectionOf(nOther), nOther);
    });
    m_Open.clear();
    for (int nRound : {0, 1}) {
        for (int const nEnd : m_Around) {
            if (m_Partner[Index(nEnd)] != kNone) continue;
            if (IsBeginning(nEnd)) {
                if (nRound == 0) m_Open.push_back(nEnd);
            } else if (!m_Open.empty()) {
                Pair(m_Open.back(), nEnd);
                m_Open.pop_back();
            }
        }
    }
    int nAlone = kNone;
    for (int const nEnd : m_Around) {
        if (m_Partner[Index(nEnd)] != kNone) continue;
        if (nAlone == kNone) {
            nAlone = nEnd;
        } else {
            Pair(nAlone, nEnd);
            nAlone = kNone;
        }
    }
}

// In which direction the segment leaves the point, in radians.
double CutGraph::DirectionOf(int nEnd) const {
    CPoint2D const& a = m_Points[Index(m_PointOfEnd[Index(nEnd)])].place;
    CPoint2D const& b = m_Points[Index(m_PointOfEnd[Index(OtherEnd(nEnd))])].place;
    return std::atan2(b.y - a.y, b.x - a.x);
}

void CutGraph::ChainFrom(int nEnd, std::vector<Contour>& contours) {
    Contour contour;
    tagVertexNode const* pFirst = nullptr;
    tagVertexNode const* pLast = nullptr;
    auto const visit = [&](int nVisited) {
        Point const& point = m_Points[Index(m_PointOfEnd[Index(nVisited)])];
        tagVertexNode const* const pVertex = point.edge.pAbove->z == m_dZ ? point.edge.pAbove : nullptr;
        if (contour.points.empty()) pFirst = pVertex;
        if (contour.points.empty() || pVertex == nullptr || pVertex != pLast) {
            contour.points.push_back(point.place);
        }
        pLast = pVertex;
    };
    int const nStart = nEnd;
    do {
        visit(nEnd);
        m_Used[SegmentOf(nEnd)] = 1;
        int const nExit = OtherEnd(nEnd);
        nEnd = m_Partner[Index(nExit)];
        if (nEnd == kNone) visit(nExit);
    } while (nEnd != kNone && nEnd != nStart);
    contour.bClosed = nEnd == nStart;
    if (contour.bClosed && contour.points.size() > 1 && pLast != nullptr && pLast == pFirst) {
        contour.points.pop_back();
    }
    if (IsWorthKeeping(contour)) contours.push_back(std::move(contour));
}
