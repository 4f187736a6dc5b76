#include "Progress.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <future>

#include "Failure.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

volatile std::sig_atomic_t g_bInterrupted = 0;

extern "C" void OnInterrupt(int) { g_bInterrupted = 1; }

bool IsTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

// A bar that appears only when the work takes longer than a moment.
class Bar {
public:
    explicit Bar(std::string title) : m_Title(std::move(title)), m_bShown(IsTerminal()) {}
    Bar(Bar const&) = delete;
    Bar& operator=(Bar const&) = delete;
    ~Bar() {
        if (m_bDrawn) std::fputs("\r\033[K", stderr);
    }

    void Draw(double dShare) {
        if (!m_bShown || std::chrono::steady_clock::now() - m_Start < kPatience) return;
        constexpr int kWidth = 40;
        double const dClamped = std::clamp(dShare, 0.0, 1.0);
        int const nFilled = static_cast<int>(dClamped * kWidth);
        std::string const bar = std::string(static_cast<std::size_t>(nFilled), '#') +
                                std::string(static_cast<std::size_t>(kWidth - nFilled), '.');
        std::fprintf(stderr, "\r%s [%s] %3.0f%%", m_Title.c_str(), bar.c_str(), dClamped * 100.0);
        std::fflush(stderr);
        m_bDrawn = true;
    }

private:
    static constexpr std::chrono::milliseconds kPatience{300};
    std::string m_Title;
    bool m_bShown;
    bool m_bDrawn = false;
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

}  // namespace

void CatchInterrupt() { std::signal(SIGINT, OnInterrupt); }

bool IsInterrupted() { return g_bInterrupted != 0; }

void ThrowIfInterrupted() {
    if (IsInterrupted()) throw Failure("interrupted");
}

void RunWithProgress(std::string const& title, std::function<void()> const& work,
                     std::function<double()> const& progress, std::function<void()> const& stop) {
    constexpr std::chrono::milliseconds kInterval{50};
    std::future<void> done = std::async(std::launch::async, work);
    Bar bar(title);
    bool bStopped = false;
    while (done.wait_for(kInterval) != std::future_status::ready) {
        if (IsInterrupted() && !bStopped) {
            stop();
            bStopped = true;
        }
        bar.Draw(progress());
    }
    done.get();
}
