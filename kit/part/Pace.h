#pragma once

#include <algorithm>
#include <cstddef>

#include "varnet/Error.h"

namespace varnet {

/// Who is told how far work has come, and what was told last. An operation makes one at its beginning.
class Watch {
public:
    /// The progress must live as long.
    explicit Watch(Progress const& progress) : m_Progress(progress) {}
    explicit Watch(Progress&&) = delete;
    Watch(Watch const&) = delete;
    Watch& operator=(Watch const&) = delete;

    /// Tells the share, or that of before where that was more. Throws an Error of kind kCancelled when asked
    /// to stop.
    void Tell(double share) {
        m_Last = std::max(m_Last, share);
        if (m_Progress && !m_Progress(m_Last)) throw Error(ErrorKind::kCancelled, "stopped");
    }

private:
    Progress const& m_Progress;
    double m_Last = 0.0;
};

/// A stretch of the work, told as shares of the stretch.
class Pace {
public:
    explicit Pace(Watch& watch) : m_Watch(&watch) {}
    /// Of work that nobody watches.
    static Pace None() { return Pace(); }

    /// Tells that this share of the stretch is done. Throws an Error of kind kCancelled when asked to stop.
    void At(double share) const {
        if (m_Watch != nullptr) m_Watch->Tell(m_From + (m_To - m_From) * share);
    }

    /// At(done / total), but only once in so many steps that asking costs nothing.
    void Step(std::size_t done, std::size_t total) const {
        constexpr std::size_t kSteps = std::size_t{1} << 15;
        if (done % kSteps == 0) At(static_cast<double>(done) / static_cast<double>(total));
    }

    /// A stretch of this stretch.
    Pace Between(double from, double to) const {
        Pace part = *this;
        part.m_From = m_From + (m_To - m_From) * from;
        part.m_To = m_From + (m_To - m_From) * to;
        return part;
    }

private:
    Pace() = default;

    Watch* m_Watch = nullptr;
    double m_From = 0.0;
    double m_To = 1.0;
};

}  // namespace varnet
