#include "Fill.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <numbers>
#include <tuple>
#include <utility>

#include "Failure.h"

namespace {

using PointList = XR_CList<CPoint2D, CPoint2D&>;

// Shares of the spacing.
constexpr double kUnseenGap = 0.05;
constexpr double kInset = 0.5;
constexpr double kShortest = 1.0;
// How far a chain may go from one stroke to the next.
constexpr double kLongestStep = 3.0;

// So many strokes make a chain at most: a line of text that says more might not be read back whole.
constexpr int kLongestChain = 200;

// So many lines may cross one side of a contour.
constexpr double kMostLines = 1e6;

// Codes of interval lists.
constexpr double kOpens = 0.0;
constexpr double kCloses = 1.0;
constexpr double kOpensClear = 2.0;
constexpr double kClosesClear = 3.0;

// Coordinates in which the lines run along u, at v = (line + 0.5) spacings.
class Turn {
public:
    explicit Turn(double dAngle)
        : m_dCos(std::cos(dAngle * std::numbers::pi / 180.0)),
          m_dSin(std::sin(dAngle * std::numbers::pi / 180.0)) {}
    double U(CPoint2D const& p) const { return p.x * m_dCos + p.y * m_dSin; }
    double V(CPoint2D const& p) const { return p.y * m_dCos - p.x * m_dSin; }
    CPoint2D Back(double u, double v) const {
        return CPoint2D(u * m_dCos - v * m_dSin, u * m_dSin + v * m_dCos);
    }

private:
    double m_dCos;
    double m_dSin;
};

// Where a contour of a region meets a line. Regions to keep clear have numbers behind all others.
struct Crossing {
    std::int64_t nLine;
    std::size_t nRegion;
    double u;
    bool operator<(Crossing const& other) const {
        return std::tie(nLine, nRegion, u) < std::tie(other.nLine, other.nRegion, other.u);
    }
};

struct Stroke {
    double dFrom;
    double dTo;
};

class Lines {
public:
    explicit Lines(FillStyle const& style) : m_dSpacing(style.dSpacing), m_Turn(style.dAngle) {}

    void Cross(FillRegion const& region, std::size_t nRegion) {
        for (auto const& contour : region.contours) {
            for (std::size_t i = 0; i < contour.size(); ++i) {
                CrossSide(contour[i], contour[i + 1 < contour.size() ? i + 1 : 0], nRegion);
            }
        }
    }

    // In order: by line, region, and place on the line.
    std::vector<Crossing> TakeCrossings() {
        std::sort(m_Crossings.begin(), m_Crossings.end());
        return std::move(m_Crossings);
    }

    CPoint2D Place(std::int64_t nLine, double u) const {
        return m_Turn.Back(u, (static_cast<double>(nLine) + 0.5) * m_dSpacing);
    }

private:
    // A side meets the lines from its lower end up to, but not at, its upper end: two sides that share a
    // point meet a line through it once if they pass it, and not at all or twice if they turn there.
    void CrossSide(CPoint2D const& a, CPoint2D const& b, std::size_t nRegion) {
        double const va = m_Turn.V(a);
        double const vb = m_Turn.V(b);
        double const dFirst = FirstLine(std::min(va, vb));
        double const dEnd = FirstLine(std::max(va, vb));
        if (!(dEnd > dFirst)) return;
        if (!(dEnd - dFirst <= kMostLines && std::fabs(dFirst) < 1e15)) {
            throw Failure("the fill lines are too close for a part of this size");
        }
        double const ua = m_Turn.U(a);
        double const dSlope = (m_Turn.U(b) - ua) / (vb - va);
        for (double dLine = dFirst; dLine < dEnd; dLine += 1.0) {
            double const v = (dLine + 0.5) * m_dSpacing;
            m_Crossings.push_back({static_cast<std::int64_t>(dLine), nRegion, ua + (v - va) * dSlope});
        }
    }

    // The number of the first line at or above v.
    double FirstLine(double v) const { return std::ceil(v / m_dSpacing - 0.5); }

    double m_dSpacing;
    Turn m_Turn;
    std::vector<Crossing> m_Crossings;
};

using CrossingIterator = std::vector<Crossing>::const_iterator;

// The crossings of one line up to a region's number, as intervals united over the regions.
void Unite(CrossingIterator& it, CrossingIterator end, std::size_t nEndRegion, PointList& united) {
    while (it != end && it->nRegion < nEndRegion) {
        std::size_t const nRegion = it->nRegion;
        PointList one;
        bool bInside = false;
        for (; it != end && it->nRegion == nRegion; ++it, bInside = !bInside) {
            CPoint2D boundary(it->u, bInside ? kCloses : kOpens);
            one.AddTail(boundary);
        }
        InsertToPL(&united, &one);
    }
    UnionPL(&united);
}

void TakeAway(PointList& list, PointList& clear) {
    if (clear.IsEmpty() != 0) return;
    XR__POSITION* position = clear.GetHeadPosition();
    while (position != nullptr) {
        CPoint2D& boundary = clear.GetNext(position);
        boundary.y = boundary.y == kOpens ? kOpensClear : kClosesClear;
    }
    InsertToPL(&list, &clear);
    SubPL(&list);
}

// The strokes of one line, whose crossings these are.
std::vector<Stroke> StrokesOf(CrossingIterator begin, CrossingIterator end, std::size_t nRegions,
                              double dSpacing) {
    PointList list;
    PointList clear;
    CrossingIterator it = begin;
    Unite(it, end, nRegions, list);
    Unite(it, end, SIZE_MAX, clear);
    TakeAway(list, clear);
    LinkPL(&list, dSpacing * kUnseenGap);
    RemoveShortPL(&list, dSpacing * (kShortest + 2.0 * kInset));
    std::vector<Stroke> strokes;
    XR__POSITION* position = list.GetHeadPosition();
    while (position != nullptr) {
        double const dFrom = list.GetNext(position).x;
        double const dTo = list.GetNext(position).x;
        strokes.push_back({dFrom + dSpacing * kInset, dTo - dSpacing * kInset});
    }
    return strokes;
}

// Lays strokes, line by line, into hatches.
class Chains {
public:
    Chains(CLayer& layer, FillStyle const& style, Lines const& lines)
        : m_Layer(layer), m_Style(style), m_Lines(lines) {}

    void AddLine(std::int64_t nLine, std::vector<Stroke> const& strokes) {
        if (nLine != m_nLine + 1) m_Last.clear();
        std::vector<Last> now;
        now.reserve(strokes.size());
        std::size_t nBefore = 0;
        for (std::size_t i = 0; i < strokes.size(); ++i) {
            Stroke const& stroke = strokes[i];
            while (nBefore < m_Last.size() && m_Last[nBefore].stroke.dTo <= stroke.dFrom) ++nBefore;
            Last const* const pLast = OnlyOneBelow(strokes, i, nBefore);
            now.push_back(pLast != nullptr && GoesOn(*pLast, stroke) ? Continue(*pLast, nLine, stroke)
                                                                     : Start(nLine, stroke));
        }
        m_Last = std::move(now);
        m_nLine = nLine;
        m_nStrokes += strokes.size();
    }

    std::size_t Strokes() const { return m_nStrokes; }

private:
    // The last stroke of a chain.
    struct Last {
        Stroke stroke;
        CHatch* pHatch;
        bool bTurned;
    };

    // The stroke of the line before that overlaps this one, nBefore being the first that may, if there is
    // just one and it overlaps no other.
    Last const* OnlyOneBelow(std::vector<Stroke> const& strokes, std::size_t i, std::size_t nBefore) const {
        auto const overlap = [](Stroke const& a, Stroke const& b) {
            return a.dFrom < b.dTo && b.dFrom < a.dTo;
        };
        if (nBefore >= m_Last.size() || !overlap(m_Last[nBefore].stroke, strokes[i])) return nullptr;
        Last const& last = m_Last[nBefore];
        if (nBefore + 1 < m_Last.size() && overlap(m_Last[nBefore + 1].stroke, strokes[i])) return nullptr;
        if (i > 0 && overlap(last.stroke, strokes[i - 1])) return nullptr;
        if (i + 1 < strokes.size() && overlap(last.stroke, strokes[i + 1])) return nullptr;
        return &last;
    }

    bool GoesOn(Last const& last, Stroke const& next) const {
        double const dSide = last.bTurned ? next.dFrom - last.stroke.dFrom : next.dTo - last.stroke.dTo;
        return std::fabs(dSide) <= m_Style.dSpacing * kLongestStep &&
               last.pHatch->m_EdgeList.GetCount() < kLongestChain;
    }

    Last Start(std::int64_t nLine, Stroke const& stroke) {
        auto pHatch = std::make_unique<CHatch>();
        pHatch->m_nID = m_Style.nID;
        m_Layer.m_HatchList.AddTail(pHatch.get());
        return Add({stroke, pHatch.release(), false}, nLine);
    }

    Last Continue(Last const& last, std::int64_t nLine, Stroke const& stroke) {
        return Add({stroke, last.pHatch, !last.bTurned}, nLine);
    }

    Last Add(Last const& last, std::int64_t nLine) {
        CEdge2D edge(m_Lines.Place(nLine, last.stroke.dFrom), m_Lines.Place(nLine, last.stroke.dTo));
        if (last.bTurned) edge.Reverse();
        last.pHatch->m_EdgeList.AddTail(edge);
        return last;
    }

    CLayer& m_Layer;
    FillStyle const& m_Style;
    Lines const& m_Lines;
    std::vector<Last> m_Last;
    std::int64_t m_nLine = INT64_MIN;
    std::size_t m_nStrokes = 0;
};

}  // namespace

std::vector<FillRegion> RegionsOf(CLayer const& layer) {
    std::vector<FillRegion> regions;
    std::map<int, std::size_t> places;
    for (auto const* pNode = layer.m_LoopList.m_pNodeHead; pNode != nullptr; pNode = pNode->pNext) {
        auto const& loop = *static_cast<tagLoopTreeNode const*>(pNode->data);
        if (loop.m_bClosed == 0 || loop.m_pPointList == nullptr) continue;
        auto const [it, bNew] = places.try_emplace(loop.m_nUser1, regions.size());
        if (bNew) regions.emplace_back();
        std::vector<CPoint2D>& contour = regions[it->second].contours.emplace_back();
        for (auto const* p = loop.m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
            contour.push_back(p->data);
        }
    }
    return regions;
}

std::size_t Fill(CLayer& layer, FillStyle const& style, std::vector<FillRegion> const& regions,
                 std::vector<FillRegion> const& clear) {
    Lines lines(style);
    for (std::size_t i = 0; i < regions.size(); ++i) lines.Cross(regions[i], i);
    for (std::size_t i = 0; i < clear.size(); ++i) lines.Cross(clear[i], regions.size() + i);
    std::vector<Crossing> const crossings = lines.TakeCrossings();
    Chains chains(layer, style, lines);
    for (CrossingIterator it = crossings.begin(); it != crossings.end();) {
        CrossingIterator const begin = it;
        while (it != crossings.end() && it->nLine == begin->nLine) ++it;
        chains.AddLine(begin->nLine, StrokesOf(begin, it, regions.size(), style.dSpacing));
    }
    return chains.Strokes();
}
