// What is told of work under way.

#include "part/Pace.h"

#include <gtest/gtest.h>

#include <vector>

namespace varnet {
namespace {

using Told = std::vector<double>;

TEST(Pace, AStretchOfAStretchTellsItsSharesOfTheWhole) {
    Told told;
    Progress const progress = [&told](double share) {
        told.push_back(share);
        return true;
    };
    Watch watch(progress);
    Pace const all(watch);
    all.At(0.125);
    Pace const half = all.Between(0.25, 0.75);
    half.At(0.0);
    half.At(0.5);
    Pace const end = half.Between(0.5, 1.0);
    end.At(0.0);
    end.At(0.5);
    end.At(1.0);
    all.At(1.0);
    EXPECT_EQ(told, (Told{0.125, 0.25, 0.5, 0.5, 0.625, 0.75, 1.0}));
}

TEST(Pace, SharesThatFallAreToldAsTheLastOne) {
    Told told;
    Progress const progress = [&told](double share) {
        told.push_back(share);
        return true;
    };
    Watch watch(progress);
    Pace const pace(watch);
    pace.At(0.5);
    pace.At(0.25);
    pace.Between(0.0, 0.5).At(0.5);
    pace.At(0.75);
    EXPECT_EQ(told, (Told{0.5, 0.5, 0.5, 0.75}));
}

TEST(Pace, StepsAreToldOnceIn32768) {
    Told told;
    Progress const progress = [&told](double share) {
        told.push_back(share);
        return true;
    };
    Watch watch(progress);
    Pace const pace = Pace(watch).Between(0.5, 1.0);
    for (std::size_t i = 0; i < 65537; ++i) pace.Step(i, 131072);
    EXPECT_EQ(told, (Told{0.5, 0.625, 0.75}));
}

TEST(Pace, WhoeverSaysNoStopsTheWork) {
    int calls = 0;
    Progress const progress = [&calls](double) { return ++calls < 2; };
    Watch watch(progress);
    Pace const pace(watch);
    pace.At(0.0);
    try {
        pace.At(0.5);
        ADD_FAILURE() << "went on";
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::kCancelled);
    }
    // Without anybody nothing is told.
    Pace::None().At(0.5);
    Pace::None().Between(0.0, 0.5).Step(0, 1);
    Progress const none;
    Watch unwatched(none);
    Pace(unwatched).At(0.5);
}

}  // namespace
}  // namespace varnet
