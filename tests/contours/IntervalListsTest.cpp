#include "contours/IntervalLists.h"

#include <algorithm>

#include "contours/Paths.h"

namespace {

// A list of positions and codes; the points are marked with their numbers.
class Intervals {
public:
    Intervals(std::initializer_list<Place> places) : Intervals(Places(places)) {}
    explicit Intervals(Places const& places, int nFirstNumber = 0) {
        for (auto const& [x, y] : places) {
            CPoint2D point = Marked(x, y, nFirstNumber++);
            m_List.AddTail(point);
        }
    }
    PointList* operator&() { return &m_List; }
    Places Get() const { return PlacesOf(m_List); }
    std::vector<ExactPoint> Exact() const { return ExactPoints(m_List); }
    void ExpectSound() const { ::ExpectSound(m_List); }

private:
    PointList m_List;
};

using Points = std::vector<CPoint2D>;

Points PointsOf(PointList const& list) {
    Points points;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) points.push_back(p->data);
    return points;
}

std::vector<ExactPoint> Exactly(Points const& points) {
    std::vector<ExactPoint> exact;
    for (CPoint2D const& p : points) exact.push_back(Exact(p));
    return exact;
}

Points LiteralInsert(Points dst, Points const& src) {
    std::size_t c = 0;
    for (CPoint2D const& s : src) {
        if (c < dst.size() && dst[c].x > s.x) {
            dst.insert(dst.begin() + static_cast<std::ptrdiff_t>(c), s);
            ++c;
            continue;
        }
        while (c < dst.size() && !(dst[c].x > s.x)) ++c;
        dst.insert(dst.begin() + static_cast<std::ptrdiff_t>(c), s);
        ++c;
    }
    return dst;
}

Points LiteralInsertWithFlag(Points dst, Points& src, int nOpen, int nClose) {
    std::size_t c = 0;
    for (std::size_t i = 0; i + 1 < src.size(); i += 2) {
        src[i].y = nOpen;
        src[i + 1].y = nClose;
        double const m = src[i].x + src[i + 1].x;
        auto const insert = [&] {
            dst.insert(dst.begin() + static_cast<std::ptrdiff_t>(c), {src[i], src[i + 1]});
            c += 2;
        };
        if (c >= dst.size() || dst[c].x + dst[c + 1].x > m) {
            insert();
            continue;
        }
        c += 2;
        if (c >= dst.size() || dst[c].x + dst[c + 1].x > m) insert();
    }
    return dst;
}

Points LiteralJoin(Points const& points, int nDepth) {
    Points left;
    int nOpen = 0;
    for (CPoint2D const& p : points) {
        bool bRemove = false;
        if (p.y == 0.0) {
            ++nOpen;
            bRemove = nOpen < nDepth;
        } else if (p.y == 1.0) {
            --nOpen;
            bRemove = nOpen < nDepth - 1;
        }
        if (!bRemove) left.push_back(p);
    }
    return left;
}

Points LiteralUnion(Points const& points) {
    Points left;
    int nOpen = 0;
    for (CPoint2D const& p : points) {
        bool bRemove = false;
        if (p.y == 0.0) {
            ++nOpen;
            bRemove = nOpen > 1;
        } else if (p.y == 1.0) {
            --nOpen;
            bRemove = nOpen > 0;
        }
        if (!bRemove) left.push_back(p);
    }
    return left;
}

Points LiteralIntersect(Points const& points) {
    Points left;
    int nOpen = 0;
    for (CPoint2D const& p : points) {
        bool bRemove = false;
        if (p.y == 0.0) {
            ++nOpen;
            bRemove = nOpen == 1;
        } else if (p.y == 1.0) {
            bRemove = nOpen == 1;
            --nOpen;
        }
        if (!bRemove) left.push_back(p);
    }
    return left;
}

Points LiteralSub(Points const& points) {
    Points left;
    bool bInSub = false;
    bool bInMain = false;
    for (CPoint2D const& p : points) {
        bool bRemove = false;
        if (p.y == 0.0) {
            bRemove = bInSub;
            bInMain = true;
        } else if (p.y == 1.0) {
            bRemove = bInSub;
            bInMain = false;
        } else if (p.y == 2.0) {
            bRemove = !bInMain;
            bInSub = true;
        } else if (p.y == 3.0) {
            bRemove = !bInMain;
            bInSub = false;
        }
        if (!bRemove) left.push_back(p);
    }
    return left;
}

Points WithoutShortPairs(Points const& points, std::size_t nFirst, double dLimit) {
    Points left(points.begin(),
                points.begin() + static_cast<std::ptrdiff_t>(std::min(nFirst, points.size())));
    std::size_t i = nFirst;
    for (; i + 1 < points.size(); i += 2) {
        if (dLimit > points[i + 1].x - points[i].x) continue;
        left.push_back(points[i]);
        left.push_back(points[i + 1]);
    }
    if (i < points.size()) left.push_back(points[i]);
    return left;
}

// Ascending positions with many ties, and codes of any kind.
Places RandomPlaces(Lattice& random, bool bEven) {
    std::vector<double> positions;
    for (std::uint32_t n = random.Below(14) * 2 + (bEven ? 0 : random.Below(2)); n > 0; --n)
        positions.push_back(random.Step(9));
    std::sort(positions.begin(), positions.end());
    Places places;
    for (double const x : positions) {
        double const codes[] = {0.0, 1.0, 2.0, 3.0, 4.0, -0.0, 0.5};
        places.emplace_back(x, codes[random.Below(7)]);
    }
    return places;
}

}  // namespace

TEST(InsertToPL, MergesAndPutsEqualPositionsBehind) {
    Intervals dst({{0, 0}, {5, 1}, {8, 0}});
    Intervals src(Places{{-1, 7}, {5, 7}, {5, 8}, {9, 7}}, 50);
    InsertToPL(&dst, &src);
    EXPECT_EQ(dst.Get(), (Places{{-1, 7}, {0, 0}, {5, 1}, {5, 7}, {5, 8}, {8, 0}, {9, 7}}));
    EXPECT_EQ(Bits((&dst)->GetHead()), 50u) << "attributes come along";
    EXPECT_EQ(src.Get().size(), 4u);
    dst.ExpectSound();
}

TEST(InsertToPL, EmptyListsOnEitherSide) {
    Intervals dst({});
    Intervals src({{1, 0}, {2, 1}});
    InsertToPL(&dst, &src);
    EXPECT_EQ(dst.Get(), (Places{{1, 0}, {2, 1}}));
    Intervals none({});
    InsertToPL(&dst, &none);
    EXPECT_EQ(dst.Get().size(), 2u);
}

TEST(InsertToPLWithFlag, MergesPairsByTheirMiddlesAndStampsCodes) {
    Intervals dst({{0, 0}, {2, 1}, {10, 0}, {12, 1}});
    Intervals src({{4, 9}, {6, 9}, {20, 9}, {22, 9}});
    InsertToPLWithFlag(&dst, &src, 2, 3);
    EXPECT_EQ(dst.Get(), (Places{{0, 0}, {2, 1}, {4, 2}, {6, 3}, {10, 0}, {12, 1}, {20, 2}, {22, 3}}));
    EXPECT_EQ(src.Get(), (Places{{4, 2}, {6, 3}, {20, 2}, {22, 3}}));
}

TEST(InsertToPLWithFlag, DropsAPairThatBelongsFurtherOnButStampsIt) {
    Intervals dst({{0, 0}, {2, 1}, {10, 0}, {12, 1}, {30, 0}, {32, 1}});
    Intervals src({{20, 9}, {22, 9}});
    InsertToPLWithFlag(&dst, &src, 2, 3);
    EXPECT_EQ(dst.Get(), (Places{{0, 0}, {2, 1}, {10, 0}, {12, 1}, {30, 0}, {32, 1}}));
    EXPECT_EQ(src.Get(), (Places{{20, 2}, {22, 3}}));
}

TEST(InsertToPLWithFlag, AnEmptyListReceivesThePairs) {
    Intervals dst({});
    Intervals src({{20, 9}, {22, 9}, {5, 9}, {6, 9}});
    InsertToPLWithFlag(&dst, &src, 0, 1);
    EXPECT_EQ(dst.Get(), (Places{{20, 0}, {22, 1}, {5, 0}, {6, 1}}));
    Intervals none({});
    InsertToPLWithFlag(&dst, &none, 0, 1);
    EXPECT_EQ(dst.Get().size(), 4u);
}

TEST(InsertToPLWithFlag, PointsWithoutAPartnerArePassedOver) {
    Intervals dst({{0, 0}, {2, 1}, {10, 0}});
    Intervals src({{4, 9}, {6, 9}, {8, 9}});
    InsertToPLWithFlag(&dst, &src, 2, 3);
    EXPECT_EQ(dst.Get(), (Places{{0, 0}, {2, 1}, {10, 0}, {4, 2}, {6, 3}}));
    EXPECT_EQ(src.Get(), (Places{{4, 2}, {6, 3}, {8, 9}}));
}

TEST(UnionPL, LeavesTheEndsOfTheUnion) {
    Intervals list({{0, 0}, {5, 0}, {6, 1}, {10, 1}});
    UnionPL(&list);
    EXPECT_EQ(list.Get(), (Places{{0, 0}, {10, 1}}));
}

TEST(IntersectPL, LeavesTheEndsOfTheIntersection) {
    Intervals list({{0, 0}, {5, 0}, {6, 1}, {10, 1}});
    IntersectPL(&list);
    EXPECT_EQ(list.Get(), (Places{{5, 0}, {6, 1}}));
    Intervals one({{0, 0}, {5, 1}});
    IntersectPL(&one);
    EXPECT_EQ(one.Get(), Places{});
    one.ExpectSound();
}

TEST(IntervalLists, CodesThatAnOperationDoesNotKnowStay) {
    Places const places = {{0, 7}, {1, -1}, {2, 0.5}};
    auto const expectKept = [&places](auto operation) {
        Intervals list(places);
        operation(&list);
        EXPECT_EQ(list.Get(), places);
    };
    expectKept([](PointList* p) { UnionPL(p); });
    expectKept([](PointList* p) { IntersectPL(p); });
    expectKept([](PointList* p) { JoinPL(p, 1); });
    expectKept([](PointList* p) { JoinPL(p, 9); });
    expectKept([](PointList* p) { SubPL(p); });
}

TEST(JoinPL, OfDepthOneIsTheUnionAndOfDepthTwoTheIntersection) {
    Places const places = {{0, 0}, {5, 0}, {6, 1}, {10, 1}, {12, 0}, {13, 1}};
    Intervals two(places);
    JoinPL(&two, 2);
    EXPECT_EQ(two.Get(), (Places{{5, 0}, {6, 1}}));
    // Depth 1 removes nothing that opens: it is the union where no more than one is open.
    Intervals apart({{0, 0}, {5, 1}, {6, 0}, {10, 1}});
    JoinPL(&apart, 1);
    EXPECT_EQ(apart.Get(), (Places{{0, 0}, {5, 1}, {6, 0}, {10, 1}}));
    Intervals one(places);
    JoinPL(&one, 1);
    EXPECT_EQ(one.Get(), places);
}

TEST(JoinPL, ComparesSigned) {
    Intervals list({{0, 1}, {1, 1}, {2, 0}});
    JoinPL(&list, 0);
    EXPECT_EQ(list.Get(), (Places{{0, 1}})) << "counts -1, -2, -1 against -1, -1, 0";
    Intervals all({{0, 0}, {1, 1}});
    JoinPL(&all, -2147483647 - 1);
    EXPECT_EQ(all.Get().size(), 2u);
}

TEST(SubPL, TakesTheSecondKindAway) {
    Intervals list({{0, 0}, {3, 2}, {4, 3}, {10, 1}});
    SubPL(&list);
    EXPECT_EQ(list.Get(), (Places{{0, 0}, {3, 2}, {4, 3}, {10, 1}}));
}

TEST(SubPL, RemovesTheSecondKindOutsideTheFirst) {
    Intervals list({{0, 0}, {3, 1}, {4, 2}, {10, 3}});
    SubPL(&list);
    EXPECT_EQ(list.Get(), (Places{{0, 0}, {3, 1}}));
}

TEST(SubPL, CutsEndsThatAreCovered) {
    Intervals list({{0, 2}, {3, 0}, {4, 3}, {8, 2}, {9, 1}, {10, 3}});
    SubPL(&list);
    EXPECT_EQ(list.Get(), (Places{{4, 3}, {8, 2}})) << "a 3.0 opens, a 2.0 closes";
}

TEST(LinkPL, JoinsAcrossGapsThatAreTrulySmaller) {
    Intervals list({{0, 0}, {5, 1}, {5.5, 0}, {9, 1}});
    LinkPL(&list, 1.0);
    EXPECT_EQ(list.Get(), (Places{{0, 0}, {9, 1}}));
    Intervals equal({{0, 0}, {5, 1}, {5.5, 0}, {9, 1}});
    LinkPL(&equal, 0.5);
    EXPECT_EQ(equal.Get().size(), 4u);
}

TEST(RemoveShortPL, DropsShortIntervals) {
    Intervals list({{0, 0}, {0.5, 1}, {2, 0}, {9, 1}});
    RemoveShortPL(&list, 1.0);
    EXPECT_EQ(list.Get(), (Places{{2, 0}, {9, 1}}));
    Intervals all({{0, 0}, {0.5, 1}});
    RemoveShortPL(&all, 1.0);
    EXPECT_EQ(all.Get(), Places{});
    all.ExpectSound();
}

TEST(IntervalLists, EmptyListsReturnAtOnce) {
    Intervals list({});
    AssertPL(&list);
    AssertPL(nullptr);
    UnionPL(&list);
    IntersectPL(&list);
    JoinPL(&list, 3);
    SubPL(&list);
    LinkPL(&list, 1.0);
    RemoveShortPL(&list, 1.0);
    EXPECT_EQ(list.Get(), Places{});
}

TEST(IntervalLists, AgreeWithTheirStepsOnRandomLists) {
    Lattice random(41);
    for (int i = 0; i < 5000; ++i) {
        Places const places = RandomPlaces(random, false);
        auto const check = [&](auto work, auto expect) {
            Intervals list(places);
            Points const expected = expect(PointsOf(*&list));
            work(&list);
            EXPECT_EQ(list.Exact(), Exactly(expected));
            list.ExpectSound();
        };
        int const nDepth = static_cast<int>(random.Below(5)) - 1;
        double const dLimit = random.Step(4);
        check(UnionPL, LiteralUnion);
        check(IntersectPL, LiteralIntersect);
        check([&](PointList* p) { JoinPL(p, nDepth); },
              [&](Points const& p) { return LiteralJoin(p, nDepth); });
        check(SubPL, LiteralSub);
        check([&](PointList* p) { LinkPL(p, dLimit); },
              [&](Points const& p) { return WithoutShortPairs(p, 1, dLimit); });
        check([&](PointList* p) { RemoveShortPL(p, dLimit); },
              [&](Points const& p) { return WithoutShortPairs(p, 0, dLimit); });
        if (HasFailure()) FAIL() << i;
    }
}

TEST(IntervalLists, MergesAgreeWithTheirStepsOnRandomLists) {
    Lattice random(42);
    for (int i = 0; i < 5000; ++i) {
        Places const a = RandomPlaces(random, true);
        Places const b = RandomPlaces(random, true);
        {
            Intervals dst(a);
            Intervals src(b, 100);
            auto const expected = Exactly(LiteralInsert(PointsOf(*&dst), PointsOf(*&src)));
            auto const source = src.Exact();
            InsertToPL(&dst, &src);
            ASSERT_EQ(dst.Exact(), expected) << i;
            ASSERT_EQ(src.Exact(), source) << i;
            dst.ExpectSound();
        }
        Intervals dst(a);
        Intervals src(b, 100);
        Points source = PointsOf(*&src);
        auto const expected = Exactly(LiteralInsertWithFlag(PointsOf(*&dst), source, 2, 3));
        InsertToPLWithFlag(&dst, &src, 2, 3);
        ASSERT_EQ(dst.Exact(), expected) << i;
        ASSERT_EQ(src.Exact(), Exactly(source)) << i;
    }
}
