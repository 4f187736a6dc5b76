#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "slice/Pulse.h"
#include "varnet/Slicer.h"

namespace varnet {

/// Where layers are cut, and where they stand. Numbers are counted from 1.
struct LayerHeights {
    double bottom = 0.0;
    double layer = 0.2;
    int count = 0;
    double partTop = 0.0;

    /// Half the height of the layer; of the last one, of what the part fills of it.
    double CutHeight(int number) const {
        return number < count ? bottom + (number - 0.5) * layer : Top(count - 1) + Thickness(count) / 2.0;
    }
    double Top(int number) const { return bottom + number * layer; }
    double Thickness(int number) const {
        return number < count ? layer : std::min(partTop - Top(count - 1), layer);
    }
    /// The first layer that is cut above the height; count + 1 where none is.
    int FirstAbove(double z) const;
};

/// The facets of a mesh in the order of the layers that cut them first: four bytes a facet, and eight a
/// layer. Facets that no layer cuts are left out, and so are those with a corner that is no number or
/// farther away than 1e10.
///
/// May be shared between threads.
class FacetIndex {
public:
    /// The triangles' indexes are in range. The spans must stay as they are. Where all corners are known to
    /// be usable they are not looked at again. The index is the same for any number of threads.
    FacetIndex(SlicerInput const& input, LayerHeights const& heights, bool allUsable, int threads,
               Pulse& pulse);

    SlicerInput const& Input() const { return m_Input; }
    LayerHeights const& Heights() const { return m_Heights; }
    /// The facets that this layer is the first to cut, in the order of the mesh.
    std::span<std::uint32_t const> StartingAt(int number) const;
    /// The last layer that cuts any of them; 0 where there are none.
    int ReachOf(int number) const { return m_Reach[static_cast<std::size_t>(number)]; }

private:
    template <class Visit>
    void ForEachCut(std::size_t begin, std::size_t end, Pulse& pulse, Visit const& visit) const;

    SlicerInput m_Input;
    bool m_AllUsable;
    LayerHeights m_Heights;
    std::vector<std::uint32_t> m_Order;
    std::vector<std::uint32_t> m_First;  // by layer, and one more: where its facets begin
    std::vector<std::int32_t> m_Reach;
};

/// Whether the slicer can use the corners: numbers, and not beyond 1e10.
bool IsUsable(SlicerInput const& input, Triangle const& triangle);

}  // namespace varnet
