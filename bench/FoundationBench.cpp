// How many geometric functions, table look-ups and float products a second there are. The arguments are a few
// thousand random ones, so that they stay in the cache and branches are not foreseen.

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "Varnet64.h"

namespace {

constexpr std::size_t kArguments = 4096;

template <class Point>
using Four = std::array<Point, 4>;

std::vector<Four<CPoint2D>> PlanePoints() {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> coordinate(-50.0, 50.0);
    std::vector<Four<CPoint2D>> points(kArguments);
    for (auto& four : points) {
        for (CPoint2D& point : four) point = CPoint2D(coordinate(random), coordinate(random));
    }
    return points;
}

std::vector<Four<CPoint3D>> SpacePoints() {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> coordinate(-50.0, 50.0);
    std::vector<Four<CPoint3D>> points(kArguments);
    for (auto& four : points) {
        for (CPoint3D& point : four) {
            point = CPoint3D(coordinate(random), coordinate(random), coordinate(random));
        }
    }
    return points;
}

// Calls the function once per set of arguments; items are calls.
template <class Arguments, class Function>
void CallEach(benchmark::State& state, std::vector<Arguments> arguments, Function const& function) {
    for (auto _ : state) {
        for (Arguments& four : arguments) benchmark::DoNotOptimize(function(four));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(arguments.size()));
}

// The floor that the others are held against: the cheapest function, behind the same call.
void BM_SquaredDistance(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return D2ofPtoP(p[0], p[1]); });
}
void BM_SideOfLine(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return SideofLine(p[0], p[1], p[2]); });
}
void BM_DistanceFromSegment(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return CalMinD2ofPtoLine(p[0], p[1], p[2]); });
}
void BM_LineIntersect(benchmark::State& state) {
    CPoint2D out;
    CallEach(state, PlanePoints(),
             [&out](Four<CPoint2D>& p) { return LineIntersect(p[0], p[1], p[2], p[3], &out); });
}
void BM_IsInterSect(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return IsInterSect(p[0], p[1], p[2], p[3]); });
}
void BM_IsInTriangle(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return IsInTriangle(p[0], p[1], p[2], p[3]); });
}
void BM_AngleInDegrees(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return CalAngleDeg(p[0], p[1]); });
}
void BM_ExtendLine(benchmark::State& state) {
    CallEach(state, PlanePoints(), [](Four<CPoint2D>& p) { return ExtendLine(&p[0], &p[1], 2.0, 1); });
}
void BM_AreaInSpace(benchmark::State& state) {
    CallEach(state, SpacePoints(), [](Four<CPoint3D>& p) { return CalArea(p[0], p[1], p[2]); });
}
void BM_DistanceFromPlane(benchmark::State& state) {
    CallEach(state, SpacePoints(), [](Four<CPoint3D>& p) { return DisofPtoPlane(p[0], p[1], p[2], p[3]); });
}
void BM_AngleInSpace(benchmark::State& state) {
    CallEach(state, SpacePoints(), [](Four<CPoint3D>& p) { return CalAngle(p[0], p[1], p[2], p[3]); });
}

// Look-ups in a square table of so many lines a side; the larger do not fit the cache.
void BM_TableLookUp(benchmark::State& state) {
    int const nLines = static_cast<int>(state.range(0));
    C2DCompTable table;
    table.SetRowColandBox(nLines, nLines, -45.0, 45.0, -45.0, 45.0);
    for (int i = 0; i < nLines * nLines; ++i) table.m_pValues[i] = i % 100 * 0.01;
    CallEach(state, PlanePoints(), [&table](Four<CPoint2D>& p) { return table.CalComp(p[0].x, p[1].y); });
}

void BM_QuaternionProduct(benchmark::State& state) {
    CallEach(state, SpacePoints(), [](Four<CPoint3D>& p) {
        quaternion const a(1.0f, Vec3f(static_cast<float>(p[0].x), 0.2f, 0.3f));
        quaternion const b(1.0f, Vec3f(0.1f, static_cast<float>(p[0].y), 0.3f));
        return (a * b).w;
    });
}
void BM_RotateVector(benchmark::State& state) {
    Mat4f const rotation = unitquaternion(quaternion(1.0f, Vec3f(0.1f, 0.2f, 0.3f))).ToMatrix();
    CallEach(state, SpacePoints(), [&rotation](Four<CPoint3D>& p) {
        return (Vec3f(static_cast<float>(p[0].x), static_cast<float>(p[0].y), 1.0f) * rotation).x;
    });
}

}  // namespace

BENCHMARK(BM_SquaredDistance);
BENCHMARK(BM_SideOfLine);
BENCHMARK(BM_DistanceFromSegment);
BENCHMARK(BM_LineIntersect);
BENCHMARK(BM_IsInterSect);
BENCHMARK(BM_IsInTriangle);
BENCHMARK(BM_AngleInDegrees);
BENCHMARK(BM_ExtendLine);
BENCHMARK(BM_AreaInSpace);
BENCHMARK(BM_DistanceFromPlane);
BENCHMARK(BM_AngleInSpace);
BENCHMARK(BM_TableLookUp)->Arg(16)->Arg(256)->Arg(4096);
BENCHMARK(BM_QuaternionProduct);
BENCHMARK(BM_RotateVector);
