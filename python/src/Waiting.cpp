#include "Waiting.h"

#include <thread>

namespace varnet::python {

namespace {

// Threads that are under way. Never destroyed, so that the last of them may use it at any time.
struct Threads {
    std::mutex mutex;
    std::condition_variable ended;
    int count = 0;
};

Threads& TheThreads() {
    static auto* const threads = new Threads;
    return *threads;
}

py::object NewBar(char const* title) {
    try {
        return py::module_::import("tqdm").attr("tqdm")(
            py::arg("total") = 1.0, py::arg("desc") = title, py::arg("leave") = false,
            py::arg("bar_format") = "{l_bar}{bar}| {elapsed}<{remaining}");
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_ImportError)) throw;
        return py::none();
    }
}

}  // namespace

Waiter::Waiter(py::object const& progress, char const* title) : m_Callback(py::none()), m_Bar(py::none()) {
    if (PyCallable_Check(progress.ptr()) != 0) {
        m_Callback = progress;
    } else if (progress.ptr() == Py_True) {
        m_Bar = NewBar(title);
    } else if (!progress.is_none() && progress.ptr() != Py_False) {
        throw py::type_error("progress is a callable, True for a bar, or None");
    }
    // Python sees to signals in its main thread alone.
    m_MainThread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
}

Waiter::~Waiter() {
    if (m_Bar.is_none()) return;
    try {
        m_Bar.attr("close")();
    } catch (py::error_already_set& error) {
        error.discard_as_unraisable("varnet's bar");
    }
}

bool Waiter::Tell(double share) {
    Clock::time_point const now = Clock::now();
    bool const told = !m_Callback.is_none() || !m_Bar.is_none();
    if (!told && PyThread_get_thread_ident() != m_MainThread) return true;
    if (now - m_Last < std::chrono::milliseconds(40) && !(told && share >= 1.0)) return true;
    m_Last = now;
    if (m_Raised.has_value()) return false;
    py::gil_scoped_acquire const acquire;
    return Look(share);
}

bool Waiter::Look(double share) {
    try {
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (!m_Callback.is_none()) return m_Callback(share).ptr() != Py_False;
        if (!m_Bar.is_none()) {
            m_Bar.attr("n") = share;
            m_Bar.attr("refresh")();
        }
    } catch (py::error_already_set& error) {
        m_Raised = std::move(error);
        return false;
    }
    return true;
}

void Waiter::ThrowIfStopped() {
    if (!m_Raised.has_value()) return;
    py::error_already_set raised = std::move(*m_Raised);
    m_Raised.reset();
    throw raised;
}

bool StartThread(std::function<void()> function) {
    Threads& threads = TheThreads();
    {
        std::lock_guard const lock(threads.mutex);
        ++threads.count;
    }
    auto const end = [&threads] {
        std::lock_guard const lock(threads.mutex);
        --threads.count;
        threads.ended.notify_all();
    };
    try {
        std::thread([run = std::move(function), end]() mutable {
            run();
            run = nullptr;
            end();
        }).detach();
        return true;
    } catch (std::system_error const&) {
        end();
        return false;
    }
}

void WaitForThreads() {
    Threads& threads = TheThreads();
    std::unique_lock lock(threads.mutex);
    // A process that was forked meanwhile has the count, and not the threads.
    threads.ended.wait_for(lock, std::chrono::seconds(20), [&threads] { return threads.count == 0; });
}

}  // namespace varnet::python
