#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <type_traits>
#include <utility>

#include "Binding.h"

// Long calls: without Python's lock, with its progress callback, ended by Ctrl-C.

namespace varnet::python {

/// Sees to it, now and then during long work, that a person is told how far it is and can stop it.
class Waiter {
public:
    /// progress is None, a callable, or True for a bar of tqdm under this title. With Python's lock.
    Waiter(py::object const& progress, char const* title);
    Waiter(Waiter const&) = delete;
    Waiter& operator=(Waiter const&) = delete;
    /// Takes the bar away. With Python's lock.
    ~Waiter();

    /// For the kit; good as long as this lives.
    Progress Callback() {
        return [this](double share) { return Tell(share); };
    }
    /// Looks after signals and tells the share, but not more often than every 40 ms: false to stop. Without
    /// Python's lock.
    bool Tell(double share);
    /// Throws what the callback raised, or KeyboardInterrupt, if that is why the work stopped. With Python's
    /// lock.
    void ThrowIfStopped();

private:
    bool Look(double share);

    using Clock = std::chrono::steady_clock;
    py::object m_Callback;  // or None
    py::object m_Bar;       // or None
    unsigned long m_MainThread = 0;
    Clock::time_point m_Last = Clock::now();
    std::optional<py::error_already_set> m_Raised;
};

/// Does work that takes a Progress, without Python's lock.
template <class Work>
auto DoLong(py::object const& progress, char const* title, Work&& work) {
    Waiter waiter(progress, title);
    try {
        py::gil_scoped_release const release;
        return work(waiter.Callback());
    } catch (Error const&) {
        waiter.ThrowIfStopped();
        throw;
    }
}

/// Runs a function by a thread of its own; false where the system has none to give. Python's end waits for
/// it.
bool StartThread(std::function<void()> function);
void WaitForThreads();

/// Does work that asks its Progress too seldom for a person who waits, or never: by a thread of its own,
/// which is left behind when the work is to stop, and ends at its next question or at its end. The work must
/// own what it uses, and nothing of Python.
template <class Work>
auto DoAside(py::object const& progress, char const* title, Work work) {
    using Result = std::invoke_result_t<Work, Progress const&>;
    struct Aside {
        explicit Aside(Work&& given) : work(std::move(given)) {}
        std::optional<Work> work;
        std::mutex mutex;
        std::condition_variable ended;
        bool done = false;
        std::optional<Result> result;
        std::exception_ptr error;
        std::atomic<bool> stop = false;
        std::atomic<double> share = 0.0;
    };
    auto const aside = std::make_shared<Aside>(std::move(work));
    auto const run = [aside] {
        try {
            aside->result = (*aside->work)(Progress([state = aside.get()](double share) {
                state->share.store(share, std::memory_order_relaxed);
                return !state->stop.load(std::memory_order_relaxed);
            }));
        } catch (...) {
            aside->error = std::current_exception();
        }
        aside->work.reset();
        std::lock_guard const lock(aside->mutex);
        aside->done = true;
        aside->ended.notify_all();
    };
    Waiter waiter(progress, title);
    {
        py::gil_scoped_release const release;
        if (!StartThread(run)) run();
        std::unique_lock lock(aside->mutex);
        while (
            !aside->ended.wait_for(lock, std::chrono::milliseconds(40), [&aside] { return aside->done; })) {
            lock.unlock();
            if (!waiter.Tell(aside->share.load(std::memory_order_relaxed))) {
                aside->stop.store(true, std::memory_order_relaxed);
                break;
            }
            lock.lock();
        }
    }
    if (aside->stop.load(std::memory_order_relaxed)) {
        waiter.ThrowIfStopped();
        throw Error(ErrorKind::kCancelled, "stopped");
    }
    if (aside->error) std::rethrow_exception(aside->error);
    return std::move(*aside->result);
}

}  // namespace varnet::python
