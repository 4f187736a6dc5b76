// Two random interval lists, then a random walk over all that merges them and works on them.

#include "contours/IntervalLists.h"
#include "FuzzInput.h"
#include "Require.h"

namespace {

using PointList = XR_CList<CPoint2D, CPoint2D&>;

// Small steps with ties, of any code; now and then anything at all.
CPoint2D Point(ByteSource& source) {
    auto const nByte = source.Take<std::uint8_t>();
    double const x = nByte == 255 ? source.Take<double>() : (nByte / 8) * 0.5;
    return CPoint2D(x, static_cast<double>(nByte % 8));
}

void Fill(ByteSource& source, PointList& list) {
    for (int n = source.Take<std::uint8_t>() % 32; n > 0; --n) {
        CPoint2D point(Point(source));
        list.AddTail(point);
    }
}

// Merging takes nothing away; the other operations add nothing.
void Step(ByteSource& source, PointList& list, PointList& other) {
    int const nCount = list.GetCount();
    switch (source.Take<std::uint8_t>() % 9) {
        case 0:
            Fill(source, other);
            return;
        case 1:
            InsertToPL(&list, &other);
            Require(list.GetCount() == nCount + other.GetCount());
            return;
        case 2:
            InsertToPLWithFlag(&list, &other, source.Take<std::uint8_t>() % 4,
                               source.Take<std::uint8_t>() % 4);
            Require(list.GetCount() <= nCount + other.GetCount());
            return;
        case 3:
            UnionPL(&list);
            break;
        case 4:
            IntersectPL(&list);
            break;
        case 5:
            JoinPL(&list, source.Take<std::int32_t>());
            break;
        case 6:
            SubPL(&list);
            break;
        case 7:
            LinkPL(&list, Point(source).x);
            break;
        default:
            RemoveShortPL(&list, Point(source).x);
            break;
    }
    Require(list.GetCount() <= nCount);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    ByteSource source(pData, nSize);
    PointList list;
    PointList other;
    Fill(source, list);
    Fill(source, other);
    // Merging may double a list each time.
    for (int nSteps = 0; nSteps < 64 && !source.IsEmpty() && list.GetCount() < 10000; ++nSteps) {
        Step(source, list, other);
        RequireSound(list);
        RequireSound(other);
    }
    return 0;
}
