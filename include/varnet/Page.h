#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "varnet/Error.h"
#include "varnet/Export.h"
#include "varnet/Layer.h"
#include "varnet/Part.h"
#include "varnet/SliceFile.h"
#include "varnet/Supports.h"

namespace varnet {

struct PageSettings {
    std::string title;     ///< any text, UTF-8; the name of what is added first when empty
    bool pictures = true;  ///< SVG pictures for browsers that cannot draw in three dimensions
    Progress progress;     ///< of each operation, from 0 to 1
};

/// What a page says and shows of a part beside its facets. The pointers are looked at during Page::AddPart
/// only.
struct PagePart {
    std::string name;                    ///< any text, UTF-8; Part::Name() when empty
    Supports const* supports = nullptr;  ///< of this part: overhangs, hanging edges and solids
    Surfaces const* surfaces = nullptr;  ///< of this part: it can be coloured by them
};

/// Parts, what supports them, and layers, as one HTML file that a browser shows without a network: the parts
/// to turn, the layers to go through.
///
/// Points are held in 16 bits in the box of their part or layer, so that each coordinate is right to 1/65535
/// of a side of the box. Compressed and as text, ten million points of paths take about 40 MB of page, and a
/// million facets about 8 MB; a page under way takes as much memory.
///
/// Names and headers may hold anything: they are shown as text. The page forbids itself all other scripts
/// and the network.
///
/// Moves; a moved-from one can only be destroyed or assigned to.
class VARNET_KIT_API Page {
public:
    explicit Page(PageSettings settings = {});
    ~Page();
    Page(Page&& other) noexcept;
    Page& operator=(Page&& other) noexcept;

    /// Adds a part; nothing of it is kept but what the page holds. Throws Error: kContent where it has no
    /// facets; kArgument where the surfaces are those of another part; kCancelled.
    void AddPart(Part const& part, PagePart const& about = {});

    /// Adds all layers of a slice file. Throws Error: kContent where the file has no layers, and where a
    /// layer is broken; kFile; kCancelled.
    void AddSlices(SliceFile const& file);

    /// Begins a list of layers, which AddLayer appends to. `about` is a line on where they come from.
    void BeginSlices(std::string const& name, std::string const& about = {});
    /// Appends a layer to the list that was begun last. Points that are no numbers or lie beyond 1e10 mm are
    /// left out. Throws Error of kind kArgument where no list was begun.
    void AddLayer(Layer const& layer);

    /// How many parts and layers were added.
    std::size_t PartCount() const;
    std::size_t LayerCount() const;

    /// The page. Throws Error of kind kContent where nothing was added.
    std::string Html() const;
    /// Writes the page, under its name only when it is complete. Throws Error: kContent where nothing was
    /// added; kFile; kCancelled.
    void Write(std::filesystem::path const& path) const;

private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

}  // namespace varnet
