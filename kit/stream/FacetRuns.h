#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "slice/Pulse.h"
#include "stream/ScratchFile.h"

namespace varnet {

/// A facet on its way through a file: the layer that cuts it first, and its corners as they are in the STL.
struct FacetRecord {
    std::int32_t layer = 0;
    std::array<float, 9> corners{};
};

/// Facets in the order of the layers that cut them first, and those of one layer as they came: sorted on disk
/// in runs that fit into memory, which are merged as they are read. (Knuth, The Art of Computer Programming,
/// vol. 3, 5.4, external sorting.)
class FacetRuns {
public:
    /// A run holds so many facets, at least one, and there will be no more than so many in all. Layers are
    /// from 1 to the last one. Throws Error of kind kFile.
    FacetRuns(std::filesystem::path const& folder, std::size_t facetsInRun, std::uint64_t most,
              std::int32_t lastLayer);

    /// Throws Error of kind kFile, as where the disk is full.
    void Add(FacetRecord const& facet, Pulse& pulse);
    /// To be called behind the last Add.
    void Finish(Pulse& pulse);

    std::uint64_t BytesOnDisk() const { return m_File.Size(); }
    /// Begins anew with the first facet. Throws Error of kind kFile.
    void Rewind();
    /// The next facet of a layer up to this one, good until the next call; null where there is none. Throws
    /// Error of kind kFile.
    FacetRecord const* Next(std::int32_t layer);

private:
    // A run that is read. The next facet is at [at] of what of it is in memory.
    struct Run {
        std::uint64_t begin = 0;  // of the file, in bytes
        std::uint64_t count = 0;
        std::uint64_t loaded = 0;  // facets
        std::size_t at = 0;
        std::vector<FacetRecord> block;
    };
    struct Head {
        std::int32_t layer;
        std::uint32_t run;
        // The heap has what comes first on top.
        bool operator<(Head const& other) const {
            return layer != other.layer ? layer > other.layer : run > other.run;
        }
    };

    void WriteRun(Pulse& pulse);
    void Append(std::vector<FacetRecord>& block);
    bool Load(Run& run);

    ScratchFile m_File;
    std::size_t m_RunLength;
    std::vector<FacetRecord> m_Gathered;
    std::vector<std::uint32_t> m_Begin;  // by layer
    std::vector<std::uint32_t> m_Order;
    std::vector<Run> m_Runs;
    std::size_t m_BlockLength = 1;
    std::vector<Head> m_Heap;
};

}  // namespace varnet
