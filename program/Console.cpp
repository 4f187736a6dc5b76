#include "Console.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace {

// A signal comes in any thread; on Windows in one of its own.
std::atomic<int> g_stopped = 0;
static_assert(std::atomic<int>::is_always_lock_free);

// Whether a bar stands on the line. Work may draw it from another thread than the one that prints.
std::atomic<bool> g_BarStands = false;

#if defined(_WIN32)

BOOL WINAPI OnSignal(DWORD event) {
    g_stopped = 1;
    // With the end of this function a closed console ends the program: what is half done is put away before.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
    return TRUE;
}

bool IsTerminal() { return _isatty(_fileno(stderr)) != 0; }

#else

extern "C" void OnSignal(int) { g_stopped = 1; }

bool IsTerminal() { return isatty(STDERR_FILENO) != 0; }

#endif

class DrawnBar {
public:
    explicit DrawnBar(std::string title) : m_Title(std::move(title)), m_Shown(IsTerminal()) {}
    DrawnBar(DrawnBar const&) = delete;
    DrawnBar& operator=(DrawnBar const&) = delete;
    ~DrawnBar() { ClearBar(); }

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
        g_BarStands = true;
    }

private:
    std::string m_Title;
    bool m_Shown;
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_Last = m_Start;
};

}  // namespace

#if defined(_WIN32)

void CatchSignals() { SetConsoleCtrlHandler(OnSignal, TRUE); }

Utf8Console::Utf8Console() : m_OutputPage(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
    HANDLE const console = GetStdHandle(STD_ERROR_HANDLE);
    m_HasMode = GetConsoleMode(console, &m_ErrorMode) != 0;
    if (m_HasMode) SetConsoleMode(console, m_ErrorMode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

Utf8Console::~Utf8Console() {
    if (m_HasMode) SetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), m_ErrorMode);
    if (m_OutputPage != 0) SetConsoleOutputCP(m_OutputPage);
}

std::string ToUtf8(wchar_t const* text) {
    int const room = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(std::max(room, 1)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), room, nullptr, nullptr);
    utf8.pop_back();
    return utf8;
}

#else

void CatchSignals() {
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    std::signal(SIGHUP, OnSignal);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

#endif

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

void ClearBar() {
    if (g_BarStands.exchange(false)) std::fputs("\r\033[K", stderr);
}

void Warn(std::string const& text) {
    ClearBar();
    std::fprintf(stderr, "varnet: warning: %s\n", text.c_str());
}
