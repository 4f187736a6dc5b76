#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "page/PageMesh.h"
#include "page/PageText.h"
#include "varnet/Page.h"

namespace varnet {

/// A part as a page holds it: packed meshes, and what is said of them as JSON. `firstChunk` is the number
/// that the first of its chunks gets on the page.
struct PackedPart {
    std::string about;                ///< a JSON object
    std::vector<std::string> chunks;  ///< compressed
};
PackedPart PackPart(Part const& part, PagePart const& about, std::size_t firstChunk,
                    Progress const& progress);

/// Pictures of a part and of a layer for browsers that cannot draw in three dimensions; empty where there is
/// too much to draw. The part comes coarser where it has many facets.
std::string PartPicture(Part const& part, PagePart const& about);
std::string LayerPicture(Layer const& layer, std::string const& title);

}  // namespace varnet
