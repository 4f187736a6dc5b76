#include "stream/FacetRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <string_view>
#include <tuple>

#include "TestFiles.h"
#include "stream/LivePoints.h"
#include "stream/ScratchFile.h"
#include "varnet/Error.h"

namespace varnet {
namespace {

// Each facet is told by its first number.
std::vector<FacetRecord> RandomFacets(std::size_t count, int layers, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<FacetRecord> facets(count);
    for (std::size_t i = 0; i < count; ++i) {
        facets[i].layer = 1 + static_cast<int>(random() % static_cast<unsigned>(layers));
        facets[i].corners[0] = static_cast<float>(i);
        facets[i].corners[8] = static_cast<float>(random() % 100);
    }
    return facets;
}

TEST(FacetRuns, GivesFacetsByLayerAndThoseOfALayerAsTheyCame) {
    TestFolder const folder;
    Pulse pulse;
    for (auto const& [count, layers, run] :
         {std::tuple{0, 5, 3}, {1, 1, 1}, {7, 3, 1}, {100, 10, 7}, {1000, 3, 1000}, {50000, 200, 333}}) {
        std::vector<FacetRecord> facets = RandomFacets(static_cast<std::size_t>(count), layers, 3);
        FacetRuns runs(folder.Path(), static_cast<std::size_t>(run), 10, layers);
        for (FacetRecord const& facet : facets) runs.Add(facet, pulse);
        runs.Finish(pulse);
        EXPECT_EQ(runs.BytesOnDisk(), 40u * facets.size());
        std::stable_sort(facets.begin(), facets.end(),
                         [](FacetRecord const& a, FacetRecord const& b) { return a.layer < b.layer; });
        for (int const step : {1, 4}) {
            runs.Rewind();
            std::size_t next = 0;
            for (int layer = step; layer < layers + step; layer += step) {
                while (FacetRecord const* const facet = runs.Next(layer)) {
                    ASSERT_LT(next, facets.size());
                    ASSERT_LE(facet->layer, layer);
                    ASSERT_EQ(facet->layer, facets[next].layer);
                    ASSERT_EQ(facet->corners, facets[next].corners);
                    ++next;
                }
            }
            EXPECT_EQ(next, facets.size());
            EXPECT_EQ(runs.Next(layers + step), nullptr);
        }
    }
}

TEST(FacetRuns, LayersMayBeLeftOut) {
    TestFolder const folder;
    Pulse pulse;
    FacetRuns runs(folder.Path(), 2, 3, 9);
    for (int const layer : {9, 4, 4}) runs.Add({layer, {}}, pulse);
    runs.Finish(pulse);
    runs.Rewind();
    EXPECT_EQ(runs.Next(3), nullptr);
    EXPECT_EQ(runs.Next(8)->layer, 4);
    runs.Rewind();
    EXPECT_EQ(runs.Next(9)->layer, 4);
    EXPECT_EQ(runs.Next(9)->layer, 4);
    EXPECT_EQ(runs.Next(9)->layer, 9);
    EXPECT_EQ(runs.Next(9), nullptr);
}

TEST(LivePoints, EqualPointsHaveOneNumberAsLongAsTheyAreNeeded) {
    LivePoints points;
    std::mt19937 random(1);
    using Key = std::tuple<double, double, double>;
    std::map<Key, std::pair<std::int32_t, int>> alive;  // number, last layer
    std::size_t most = 0;
    for (int layer = 1; layer <= 60; ++layer) {
        points.Forget(layer);
        std::erase_if(alive, [layer](auto const& entry) { return entry.second.second < layer; });
        for (int i = 0; i < 3000; ++i) {
            auto const coordinate = [&] { return static_cast<double>(random() % 40) / 8.0; };
            Point3 const p{coordinate(), coordinate(), layer + coordinate()};
            int const last = layer + static_cast<int>(random() % 3);
            std::int32_t const number = points.Add(p, last);
            ASSERT_EQ(points.All()[static_cast<std::size_t>(number)], p);
            auto const [it, isNew] = alive.try_emplace({p.x, p.y, p.z}, number, last);
            ASSERT_EQ(it->second.first, number);
            it->second.second = std::max(it->second.second, last);
        }
        most = std::max(most, alive.size());
        // No number twice, and what is needed stays as it is.
        std::set<std::int32_t> numbers;
        for (auto const& [key, entry] : alive) {
            ASSERT_TRUE(numbers.insert(entry.first).second);
            Point3 const& p = points.All()[static_cast<std::size_t>(entry.first)];
            ASSERT_EQ(Key(p.x, p.y, p.z), key);
        }
    }
    EXPECT_LT(points.All().size(), 4 * most) << "numbers are used again";
    points.Clear();
    EXPECT_TRUE(points.All().empty());
}

TEST(LivePoints, ZerosOfEitherSignAreEqualAndTheFirstIsKept) {
    LivePoints points;
    std::int32_t const number = points.Add({-0.0, 1.0, 0.0}, 1);
    EXPECT_EQ(points.Add({0.0, 1.0, -0.0}, 1), number);
    EXPECT_TRUE(std::signbit(points.All()[static_cast<std::size_t>(number)].x));
    EXPECT_FALSE(std::signbit(points.All()[static_cast<std::size_t>(number)].z));
}

TEST(ScratchFile, GivesWhatStandsAtAPlaceAndFailsWhereThatIsNotWhole) {
    TestFolder const folder;
    ScratchFile file(folder.Path());
    file.Append(std::string_view("abc"));
    file.Append(std::string_view("defg"));
    EXPECT_EQ(file.Size(), 7u);
    std::array<char, 3> bytes{};
    file.ReadAt(2, bytes);
    EXPECT_EQ(std::string_view(bytes.data(), 3), "cde");
    file.ReadAt(4, bytes);
    EXPECT_EQ(std::string_view(bytes.data(), 3), "efg");
    for (std::uint64_t const place : {5u, 7u, 100u}) {
        try {
            file.ReadAt(place, bytes);
            ADD_FAILURE() << place;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kFile);
            EXPECT_EQ(error.what(), folder.Path().string() + ": a temporary file could not be read");
        }
    }
    file.Append(std::string_view("h"));
    file.ReadAt(5, bytes);
    EXPECT_EQ(std::string_view(bytes.data(), 3), "fgh");
}

}  // namespace
}  // namespace varnet
