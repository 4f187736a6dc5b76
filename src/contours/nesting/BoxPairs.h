#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "foundation/PlanBox.h"

namespace varnet {

/// Boxes in a line, and all pairs of them of which one is inside the other, found in one go.
///
/// Each box stands in a square of a grid whose squares are just larger than the box, by its lower left
/// corner. So a box that has another one inside stands in the square of the other's lower left corner or in
/// one of the three to the left of it and below, in the grid for its own size. Squares are found by their
/// hash (B. Mirtich, "Efficient Algorithms for Two-Phase Collision Detection", 1997).
class BoxPairs {
public:
    /// Nothing where that does not pay: where boxes crowd in few squares, where many are inside each other,
    /// or where they reach farther than 500 metres. Coordinates that are not numbers relate to nothing.
    static std::optional<BoxPairs> Find(std::span<PlanBox const> boxes);

    /// The boxes later in line that are inside the box or have it inside, in order.
    std::span<std::uint32_t const> Behind(std::size_t nBox) const {
        return {m_Later.data() + m_First[nBox], m_Later.data() + m_First[nBox + 1]};
    }

private:
    struct Pair {
        std::uint32_t nEarlier;
        std::uint32_t nLater;
    };
    class Grids;

    BoxPairs(std::size_t nBoxes, std::vector<Pair> const& pairs);

    std::vector<std::uint32_t> m_First;  // by box, and one more: where its later ones begin
    std::vector<std::uint32_t> m_Later;
};

}  // namespace varnet
