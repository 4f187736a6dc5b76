#include "slice/Together.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace varnet {

namespace {

std::string ErrorOf(int count, Pulse& pulse, std::function<void(int, Pulse&)> const& work) {
    try {
        RunTogether(count, pulse, work);
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "none";
}

}  // namespace

TEST(RunTogether, EachIsDoneOnce) {
    for (int const count : {0, 1, 2, 7}) {
        Pulse pulse;
        std::vector<int> done(static_cast<std::size_t>(count), 0);
        RunTogether(count, pulse, [&done](int i, Pulse&) { ++done[static_cast<std::size_t>(i)]; });
        EXPECT_EQ(std::vector<int>(static_cast<std::size_t>(count), 1), done);
    }
}

TEST(RunTogether, TheFirstIsDoneByTheCallerWithItsPulse) {
    Pulse pulse;
    auto const caller = std::this_thread::get_id();
    std::atomic<int> others{0};
    RunTogether(3, pulse, [&](int i, Pulse& own) {
        if (i == 0) {
            EXPECT_EQ(&pulse, &own);
            EXPECT_EQ(caller, std::this_thread::get_id());
        } else {
            EXPECT_NE(&pulse, &own);
            ++others;
        }
    });
    EXPECT_EQ(2, others);
}

TEST(RunTogether, ErrorOfTheLowestIsThrownWhenAllAreDone) {
    Pulse pulse;
    std::atomic<int> done{0};
    EXPECT_EQ("2", ErrorOf(5, pulse, [&done](int i, Pulse&) {
                  ++done;
                  if (i == 2 || i == 4) throw std::runtime_error(std::to_string(i));
              }));
    EXPECT_EQ(5, done);
}

// The others would go on for ever.
TEST(RunTogether, WhatTheCallersPulseThrowsEndsAll) {
    Pulse pulse([] { throw std::runtime_error("stop"); });
    EXPECT_EQ("stop", ErrorOf(3, pulse, [](int, Pulse& own) {
                  for (;;) own.Beat();
              }));
}

}  // namespace varnet
