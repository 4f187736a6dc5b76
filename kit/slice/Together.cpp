#include "slice/Together.h"

#include <atomic>
#include <cstddef>
#include <exception>
#include <thread>
#include <vector>

namespace varnet {

namespace {

// Ends the work of the others.
struct Stopped {};

}  // namespace

void RunTogether(int count, Pulse& pulse, std::function<void(int, Pulse&)> const& work) {
    std::atomic<bool> stop{false};
    std::vector<std::exception_ptr> errors(static_cast<std::size_t>(count));
    auto const run = [&](int i, Pulse& own) {
        try {
            work(i, own);
        } catch (Stopped const&) {
            return;
        } catch (...) {
            errors[static_cast<std::size_t>(i)] = std::current_exception();
            if (&own == &pulse) stop.store(true, std::memory_order_relaxed);
        }
    };
    auto const runAside = [&run, &stop](int i) {
        Pulse own([&stop] {
            if (stop.load(std::memory_order_relaxed)) throw Stopped();
        });
        run(i, own);
    };
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    try {
        for (int i = 1; i < count; ++i) threads.emplace_back(runAside, i);
    } catch (std::exception const&) {
        // The rest is done below.
    }
    auto const started = static_cast<int>(threads.size());
    if (count > 0) run(0, pulse);
    for (int i = started + 1; i < count && !stop.load(std::memory_order_relaxed); ++i) run(i, pulse);
    for (std::thread& thread : threads) thread.join();
    for (std::exception_ptr const& error : errors) {
        if (error) std::rethrow_exception(error);
    }
}

}  // namespace varnet
