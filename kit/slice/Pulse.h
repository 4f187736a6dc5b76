#pragma once

#include <cstddef>
#include <functional>

namespace varnet {

/// Lets long work look up now and then, without asking the time at each step.
class Pulse {
public:
    Pulse() = default;
    /// The function is called at every few thousand steps; what it throws ends the work.
    explicit Pulse(std::function<void()> look) : m_Look(std::move(look)) {}
    void Beat(std::size_t steps = 1) {
        m_Steps += steps;
        if (m_Steps < kOften) return;
        m_Steps = 0;
        if (m_Look) m_Look();
    }

private:
    static constexpr std::size_t kOften = 1 << 14;
    std::function<void()> m_Look;
    std::size_t m_Steps = 0;
};

}  // namespace varnet
