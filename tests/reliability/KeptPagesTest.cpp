// Pages that are kept for the next mesh: in a child process, in threads, and for a host that watches how much
// memory it has.

#include <gtest/gtest.h>

#include "Shapes.h"
#include "TestFiles.h"
#include "Varnet64.h"

#if defined(__linux__)

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

namespace {

// 20 times 4^6 facets: some large pages.
void FillWithSphere(CSTLModel& model) {
    for (shapes::Triangle const& t : shapes::IcoSphere(10.0, 6)) {
        tagFACET facet;
        for (std::size_t i = 0; i < 3; ++i) facet.m_ptVertex[i] = CPoint3D(t[i].x, t[i].y, t[i].z);
        model.AddFacet(facet);
    }
}

constexpr int kFacets = 20 * 4096;

// Whether a model is made and measured as it should be.
bool CanWork() {
    CSTLModel model;
    FillWithSphere(model);
    double const dVolume = model.CalVolume();
    return model.GetFacetsNum() == kFacets && dVolume > 4180.0 && dVolume < 4189.0;
}

// Waits for the child, and says whether it ended with 0.
bool EndsWell(pid_t child) {
    int nStatus = -1;
    return waitpid(child, &nStatus, 0) == child && WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
}

// Kibibytes, as /proc/self/smaps_rollup has them under a name; -1 where it does not.
long long Kibibytes(std::string const& name) {
    std::ifstream file("/proc/self/smaps_rollup");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":")) return std::stoll(line.substr(name.size() + 1));
    }
    return -1;
}

}  // namespace

TEST(KeptPages, AChildOfAProcessThatHasThemWorksAndFreesAndTheParentGoesOn) {
    ASSERT_TRUE(CanWork());  // and leaves pages behind
    CSTLModel alive;
    FillWithSphere(alive);
    double const dVolume = alive.CalVolume();
    pid_t const child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        bool bGood = alive.GetFacetsNum() == kFacets && CanWork();
        alive.ReleaseAllFacet();
        bGood = bGood && CanWork();
        _exit(bGood ? 0 : 1);
    }
    EXPECT_TRUE(CanWork());
    EXPECT_TRUE(EndsWell(child));
    EXPECT_EQ(kFacets, alive.GetFacetsNum());
    EXPECT_EQ(dVolume, alive.CalVolume());
}

TEST(KeptPages, AChildThatIsMadeWhileAnotherThreadWorksCanWork) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's own locks may be held when the child is made";
#endif
    std::thread worker([] {
        for (int i = 0; i < 4; ++i) EXPECT_TRUE(CanWork());
    });
    for (int i = 0; i < 4; ++i) {
        pid_t const child = fork();
        if (child == 0) _exit(CanWork() ? 0 : 1);
        EXPECT_TRUE(child > 0 && EndsWell(child));
    }
    worker.join();
}

// What the system may take back at any time is told apart from what is in use; work that comes again and
// again takes no more than at first.
TEST(KeptPages, AHostThatWatchesItsMemorySeesNoLeak) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's memory is counted too";
#endif
    if (Kibibytes("LazyFree") < 0) GTEST_SKIP() << "this system does not tell";
    // The heap of the C library has found its size after two rounds.
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(CanWork());
    long long const nFirst = Kibibytes("Rss") - Kibibytes("LazyFree");
    for (int i = 0; i < 8; ++i) ASSERT_TRUE(CanWork());
    long long const nLast = Kibibytes("Rss") - Kibibytes("LazyFree");
    constexpr long long kOneModel = 10 * 1024;  // in eight rounds, a tenth lost in each would be seen
    EXPECT_LT(nLast, nFirst + kOneModel / 4);
    // Not more is kept than is promised.
    EXPECT_LE(Kibibytes("LazyFree"), 192 * 1024);
}

// A thread leaves a page of facets and one of vertices that are hardly begun.
TEST(KeptPages, AThreadThatEndsGivesBackThePagesThatItHadBegun) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's memory is counted too";
#endif
    if (Kibibytes("LazyFree") < 0) GTEST_SKIP() << "this system does not tell";
    auto const workInAThread = [] { std::thread([] { EXPECT_TRUE(CanWork()); }).join(); };
    for (int i = 0; i < 2; ++i) workInAThread();
    long long const nFirst = Kibibytes("Rss") - Kibibytes("LazyFree");
    for (int i = 0; i < 10; ++i) workInAThread();
    long long const nLast = Kibibytes("Rss") - Kibibytes("LazyFree");
    EXPECT_LT(nLast, nFirst + 2 * 1024);
}

#endif
