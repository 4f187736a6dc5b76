#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Require.h"

namespace varnet {

/// A set of whole numbers below a limit, and the question which of them is the next one above or below a
/// number. A bit a number, and a bit for each word of bits that has one, level above level: a step goes up as
/// far as it must, and down again.
class RankSet {
public:
    static constexpr std::uint32_t kNone = static_cast<std::uint32_t>(-1);

    /// Empty, for numbers below nLimit.
    explicit RankSet(std::size_t nLimit) {
        do {
            nLimit = (nLimit + kBits - 1) / kBits;
            m_Levels.emplace_back(nLimit);
        } while (nLimit > 1);
    }

    bool Has(std::uint32_t n) const {
        VARNET_REQUIRE(n / kBits < m_Levels[0].size());
        return (m_Levels[0][n / kBits] >> (n % kBits) & 1) != 0;
    }

    void Add(std::uint32_t n) {
        VARNET_REQUIRE(n / kBits < m_Levels[0].size());
        for (auto& words : m_Levels) {
            words[n / kBits] |= std::uint64_t{1} << (n % kBits);
            n /= kBits;
        }
    }

    /// Takes the number out, and maybe others: to be called for all before the set is used again.
    void Forget(std::uint32_t n) {
        for (auto& words : m_Levels) {
            n /= kBits;
            words[n] = 0;
        }
    }

    /// The least number above n; kNone where there is none.
    std::uint32_t Above(std::uint32_t n) const {
        for (std::size_t nLevel = 0; nLevel < m_Levels.size(); ++nLevel, n /= kBits) {
            std::uint64_t const nRest = m_Levels[nLevel][n / kBits] & (kAllButOne << (n % kBits));
            if (nRest == 0) continue;
            return Descend<LowestBit>(nLevel, n, nRest);
        }
        return kNone;
    }

    /// The greatest number below n; kNone where there is none.
    std::uint32_t Below(std::uint32_t n) const {
        for (std::size_t nLevel = 0; nLevel < m_Levels.size(); ++nLevel, n /= kBits) {
            std::uint64_t const nRest = m_Levels[nLevel][n / kBits] & ((std::uint64_t{1} << (n % kBits)) - 1);
            if (nRest == 0) continue;
            return Descend<HighestBit>(nLevel, n, nRest);
        }
        return kNone;
    }

private:
    static constexpr std::uint32_t kBits = 64;
    static constexpr std::uint64_t kAllButOne = ~std::uint64_t{1};

    static int LowestBit(std::uint64_t nWord) { return std::countr_zero(nWord); }
    static int HighestBit(std::uint64_t nWord) { return 63 - std::countl_zero(nWord); }

    // From the level on, where nRest are bits of the word in which n lies, to the number itself.
    template <int (*pPick)(std::uint64_t)>
    std::uint32_t Descend(std::size_t nLevel, std::uint32_t n, std::uint64_t nRest) const {
        n = n / kBits * kBits + static_cast<std::uint32_t>(pPick(nRest));
        while (nLevel-- > 0) n = n * kBits + static_cast<std::uint32_t>(pPick(m_Levels[nLevel][n]));
        return n;
    }

    std::vector<std::vector<std::uint64_t>> m_Levels;
};

}  // namespace varnet
