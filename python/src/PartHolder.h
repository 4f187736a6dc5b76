#pragma once

#include <memory>

#include "Binding.h"

namespace varnet::python {

/// A part as Python holds it. Work takes copies, which share what the part was at that time.
struct PartHolder {
    Part part;
    std::shared_ptr<Part const> Shared() const { return std::make_shared<Part const>(part); }
};

struct SupportsHolder {
    Part part;
    std::shared_ptr<Supports const> supports;
};

}  // namespace varnet::python
