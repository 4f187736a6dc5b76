#pragma once

#include <functional>
#include <memory>

#include "slice/LayerMaker.h"

namespace varnet {

/// The layers of a plan's range in their order, made as they are asked for or by threads ahead.
class LayerLine {
public:
    virtual ~LayerLine() = default;
    /// The next one; not to be called behind the last one. Looks up now and then by the function, in the
    /// calling thread; what it throws, or the work, comes out of here and ends the line.
    virtual SlicedLayer Next(std::function<void()> const& look) = 0;
};

/// As many threads as the settings say, where the system has them.
std::unique_ptr<LayerLine> MakeLayerLine(SlicePlan const& plan);

}  // namespace varnet
