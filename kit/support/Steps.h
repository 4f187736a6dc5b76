#pragma once

#include "varnet/Error.h"

namespace varnet {

/// Tells a callback of the steps of a piece of work, and ends it where the callback says so.
class Steps {
public:
    explicit Steps(Progress const& progress) : m_Progress(progress) {}

    /// Throws Error of kind kCancelled.
    void Done(double share) const {
        if (m_Progress && !m_Progress(share)) throw Error(ErrorKind::kCancelled, "stopped");
    }

private:
    Progress const& m_Progress;
};

}  // namespace varnet
