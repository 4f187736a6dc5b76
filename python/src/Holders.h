#pragma once

#include <memory>

#include "Binding.h"

// What the objects of the module hold, where several files of it take them.

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

struct SurfacesHolder {
    std::shared_ptr<Surfaces const> surfaces;
};

struct FileHolder {
    std::shared_ptr<SliceFile const> file;
};

}  // namespace varnet::python
