#include "Console.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

volatile std::sig_atomic_t g_stopped = 0;

extern "C" void OnSignal(int) { g_stopped = 1; }

bool IsTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

class DrawnBar {
public:
    explicit DrawnBar(std::string title) : m_Title(std::move(title)), m_Shown(IsTerminal()) {}
    DrawnBar(DrawnBar const&) = delete;
    DrawnBar& operator=(DrawnBar const&) = delete;
    ~DrawnBar() {
        if (m_Drawn) std::fputs("\r\033[K", stderr);
    }

    void Draw(double share) {
        using namespace std::chrono_literals;
        auto const now = std::chrono::steady_clock::now();
        if (!m_Shown || now - m_Start < 300ms || now - m_Last < 50ms) return;
        m_Last = now;
        constexpr int kWidth = 40;
        double const clamped = std::clamp(share, 0.0, 1.0);
        int const filled = static_cast<int>(clamped * kWidth);
        std::string const bar = std::string(static_cast<std::size_t>(filled), '#') +
                                std::string(static_cast<std::size_t>(kWidth - filled), '.');
        std::fprintf(stderr, "\r%s [%s] %3.0f%%", m_Title.c_str(), bar.c_str(), clamped * 100.0);
        std::fflush(stderr);
        m_Drawn = true;
    }

private:
    std::string m_Title;
    bool m_Shown;
    bool m_Drawn = false;
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_Last = m_Start;
};

}  // namespace

void CatchSignals() {
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
#if !defined(_WIN32)
    std::signal(SIGHUP, OnSignal);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

bool IsStopped() { return g_stopped != 0; }

void ThrowIfStopped() {
    if (IsStopped()) throw varnet::Error(varnet::ErrorKind::kCancelled, "interrupted");
}

varnet::Progress Bar(std::string const& title) {
    auto const bar = std::make_shared<DrawnBar>(title);
    return [bar](double share) {
        bar->Draw(share);
        return !IsStopped();
    };
}

void Warn(std::string const& text) { std::fprintf(stderr, "varnet: warning: %s\n", text.c_str()); }
