#pragma once

#include <cstddef>

#include "varnet/Error.h"

namespace varnet {

/// Long work's side of a Progress: a stretch of the whole, told as shares of the stretch.
class Pace {
public:
    explicit Pace(Progress const& progress, double from = 0.0, double to = 1.0)
        : m_Progress(&progress), m_From(from), m_To(to) {}

    /// A progress is kept by address: no temporary.
    explicit Pace(Progress&&, double = 0.0, double = 1.0) = delete;
    /// Of work that nobody watches.
    static Pace None() {
        static Progress const none;
        return Pace(none);
    }

    /// Tells that this share of the stretch is done. Throws an Error of kind kCancelled when asked to stop.
    void At(double share) const {
        if (*m_Progress && !(*m_Progress)(m_From + (m_To - m_From) * share)) {
            throw Error(ErrorKind::kCancelled, "stopped");
        }
    }

    /// At(done / total), but only once in so many steps that asking costs nothing.
    void Step(std::size_t done, std::size_t total) const {
        constexpr std::size_t kSteps = std::size_t{1} << 15;
        if (done % kSteps == 0) At(static_cast<double>(done) / static_cast<double>(total));
    }

    /// A stretch of this stretch.
    Pace Between(double from, double to) const {
        return Pace(*m_Progress, m_From + (m_To - m_From) * from, m_From + (m_To - m_From) * to);
    }

private:
    Progress const* m_Progress;
    double m_From;
    double m_To;
};

}  // namespace varnet
