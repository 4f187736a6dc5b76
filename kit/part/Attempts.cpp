#include "part/Attempts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "part/Closing.h"
#include "part/NearPoints.h"
#include "part/PointHash.h"
#include "part/Slivers.h"

namespace varnet {

namespace {

// More open edges are not closed in every way: each takes as long as the first.
constexpr std::int64_t kMostOpen = 200000;

struct Attempt {
    FlatMesh mesh;
    EdgeTable edges;
    IntakeReport report;
    std::int64_t vanished = 0;  // open edges of facets that went: nothing is closed by that

    std::int64_t Open() const { return edges.open + vanished; }
};

void Close(Attempt& attempt, std::span<double const> tolerances, Pace const& pace) {
    if (attempt.edges.open == 0) return;
    ClosingCounts const counts = CloseOpenEdges(attempt.mesh, attempt.edges, tolerances, pace);
    attempt.report.welded += counts.welded;
    attempt.report.split += counts.split;
    attempt.report.degenerate += counts.dropped;
    attempt.report.weldTolerance = std::max(attempt.report.weldTolerance, counts.tolerance);
}

std::int64_t LeaveOut(Attempt& attempt, Pace const& pace) {
    std::int64_t const count = LeaveOutCopies(attempt.mesh, attempt.edges, pace);
    attempt.report.doubled += count;
    return count;
}

// Returns whether any was left out ahead of all else.
bool LeaveOutAndClose(Attempt& attempt, std::span<double const> tolerances, Pace const& pace) {
    std::int64_t const welded = attempt.report.welded;
    bool const leftOut = LeaveOut(attempt, pace.Between(0.0, 0.1)) > 0;
    Close(attempt, tolerances, pace.Between(0.1, 0.8));
    // Facets with corners that lay apart are copies only now.
    if (attempt.edges.open > 0 && attempt.report.welded > welded &&
        LeaveOut(attempt, pace.Between(0.8, 0.9)) > 0) {
        Close(attempt, tolerances, pace.Between(0.9, 1.0));
    }
    return leftOut;
}

std::vector<std::int32_t> PointsOnOpenEdges(FlatMesh const& mesh, EdgeTable const& edges) {
    std::vector<std::int32_t> points;
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        if (edges.across[i] >= 0) continue;
        auto const edge = static_cast<std::int32_t>(i);
        points.push_back(StartOf(mesh.triangles, edge));
        points.push_back(EndOf(mesh.triangles, edge));
    }
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
}

// Points on open edges, all points within the reach of one of them, and a few others, by hashes of cells.
std::vector<std::int32_t> PointsNearOpenEdges(FlatMesh const& mesh, EdgeTable const& edges, double reach) {
    auto const cell = [reach](double value) { return std::floor(value / reach); };
    std::vector<std::uint64_t> keys;
    for (std::int32_t const number : PointsOnOpenEdges(mesh, edges)) {
        Point3 const& p = mesh.points[static_cast<std::size_t>(number)];
        for (double const x : {-1.0, 0.0, 1.0}) {
            for (double const y : {-1.0, 0.0, 1.0}) {
                for (double const z : {-1.0, 0.0, 1.0})
                    keys.push_back(HashOf({cell(p.x) + x, cell(p.y) + y, cell(p.z) + z}));
            }
        }
    }
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    std::vector<std::int32_t> points;
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        Point3 const& p = mesh.points[i];
        if (std::binary_search(keys.begin(), keys.end(), HashOf({cell(p.x), cell(p.y), cell(p.z)})))
            points.push_back(static_cast<std::int32_t>(i));
    }
    return points;
}

// Joins those of the points that lie within the tolerance; facets that lose a corner go. Returns how many
// were joined.
std::int64_t JoinThose(Attempt& attempt, std::vector<std::int32_t> const& numbers, double tolerance,
                       Pace const& pace) {
    FlatMesh& mesh = attempt.mesh;
    std::vector<Point3> points;
    points.reserve(numbers.size());
    for (std::int32_t const number : numbers) points.push_back(mesh.points[static_cast<std::size_t>(number)]);
    std::vector<std::int32_t> const joined = JoinNear(points, tolerance, pace.Between(0.0, 0.5));
    std::vector<std::int32_t> becomes(mesh.points.size());
    for (std::size_t i = 0; i < becomes.size(); ++i) becomes[i] = static_cast<std::int32_t>(i);
    std::int64_t count = 0;
    for (std::size_t i = 0; i < joined.size(); ++i) {
        becomes[static_cast<std::size_t>(numbers[i])] = numbers[static_cast<std::size_t>(joined[i])];
        count += joined[i] != static_cast<std::int32_t>(i);
    }
    if (count == 0) return 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Triangle& t = mesh.triangles[i];
        for (std::int32_t& corner : t) corner = becomes[static_cast<std::size_t>(corner)];
        if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) continue;
        t = {-1, -1, -1};
        ++attempt.report.degenerate;
        for (std::size_t k = 0; k < 3; ++k) attempt.vanished += attempt.edges.across[3 * i + k] < 0 ? 1 : 0;
    }
    DropMarked(mesh.triangles);
    attempt.report.welded += count;
    attempt.report.weldTolerance = std::max(attempt.report.weldTolerance, tolerance);
    attempt.edges = FindEdges(mesh.triangles, mesh.points.size(), pace.Between(0.5, 1.0));
    return count;
}

double ExtentOf(FlatMesh const& mesh) {
    Box3 box;
    for (Point3 const& p : mesh.points) box.Add(p);
    return Length(box.max - box.min);
}

Attempt Begin(FlatMesh const& original, IntakeReport const& report, Pace const& pace) {
    return {original, FindEdges(original.triangles, original.points.size(), pace), report};
}

// Takes, in the place of the best attempt, those that join what is near first, if they close more.
void JoinFirst(FlatMesh const& original, IntakeReport const& before, std::span<double const> tolerances,
               Attempt& best, Pace const& pace) {
    double const most = kMostOfExtent * ExtentOf(original);
    std::vector<double> few;
    for (double const tolerance : tolerances) {
        if (tolerance > 0.0 && tolerance <= most) few.push_back(tolerance);
    }
    if (few.empty()) return;
    Attempt const begun = Begin(original, before, pace.Between(0.0, 0.0));
    std::vector<std::int32_t> const points =
        PointsNearOpenEdges(original, begun.edges, *std::max_element(few.begin(), few.end()));
    std::int64_t joined = 0;
    for (std::size_t i = 0; i < few.size() && best.Open() > 0; ++i) {
        double const done = static_cast<double>(i) / static_cast<double>(few.size());
        Pace const stretch = pace.Between(done, done);
        Attempt attempt = begun;
        std::int64_t const count = JoinThose(attempt, points, few[i], stretch);
        // As many as with a smaller tolerance are the same ones, but for rare cases.
        if (count == std::exchange(joined, count)) continue;
        LeaveOutAndClose(attempt, tolerances, stretch);
        if (attempt.Open() < best.Open()) best = std::move(attempt);
    }
}

}  // namespace

void CloseByBest(FlatMesh& mesh, EdgeTable& edges, std::span<double const> tolerances, IntakeReport& report,
                 Pace const& pace) {
    FlatMesh const original = mesh;
    IntakeReport const before = report;
    std::int64_t const openBefore = edges.open;
    Attempt best{std::move(mesh), std::move(edges), report};
    bool const leftOut = LeaveOutAndClose(best, tolerances, pace.Between(0.0, 0.5));
    if (best.Open() > 0 && leftOut) {
        Attempt attempt = Begin(original, before, pace.Between(0.5, 0.5));
        Close(attempt, tolerances, pace.Between(0.5, 0.6));
        if (attempt.Open() < best.Open()) best = std::move(attempt);
    }
    if (best.Open() > 0 && openBefore <= kMostOpen) {
        JoinFirst(original, before, tolerances, best, pace.Between(0.6, 1.0));
    }
    mesh = std::move(best.mesh);
    edges = std::move(best.edges);
    report = std::move(best.report);
}

}  // namespace varnet
