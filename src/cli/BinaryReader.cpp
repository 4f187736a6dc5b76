// Layers read from binary commands.

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "cli/CommandTable.h"
#include "cli/LayerFormats.h"
#include "contours/LoopWalk.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/memory/AddNew.h"

namespace varnet {

namespace {

// List nodes come in blocks of their count, at most this many.
constexpr int kMostNodesAtOnce = 1024;
constexpr std::size_t kMostWholes = 3;

// The numbers of a command as its form has them.
class Numbers {
public:
    explicit Numbers(BinaryCommand const& command, double dUnits)
        : m_bShort(command.bShort), m_dUnits(dUnits), m_dOffset(command.nOffset) {}

    std::size_t Size() const { return m_bShort ? sizeof(std::uint16_t) : sizeof(std::uint32_t); }

    std::int32_t Whole(unsigned char const* pBytes) const {
        return m_bShort ? LoadUnsigned<std::uint16_t>(pBytes)
                        : static_cast<std::int32_t>(LoadUnsigned<std::uint32_t>(pBytes));
    }
    double Real(unsigned char const* pBytes) const {
        double const dStored = m_bShort ? static_cast<double>(LoadUnsigned<std::uint16_t>(pBytes))
                                        : static_cast<double>(LoadFloat(pBytes));
        return dStored * m_dUnits - m_dOffset;
    }
    CPoint2D Point(unsigned char const* pBytes) const {
        return CPoint2D(Real(pBytes), Real(pBytes + Size()));
    }

private:
    bool m_bShort;
    double m_dUnits;
    double m_dOffset;
};

class BinaryReader {
public:
    BinaryReader(FileWindow& file, CLayer& layer) : m_File(file), m_Layer(layer) {}

    // Reads what follows a command's word. False where the file does not hold it whole.
    bool ReadParameters(BinaryCommand const& command) {
        switch (command.pEntry->command) {
            case Command::kLayer:
                return ReadHeight(command);
            case Command::kPolyline:
                return ReadPolyline(command);
            default:
                return ReadHatches(command);
        }
    }

private:
    // Noise as long as the offset follows a disguised height.
    bool ReadHeight(BinaryCommand const& command) {
        Numbers const numbers(command, m_Layer.m_dUnits);
        unsigned char const* const pBytes = m_File.Take(numbers.Size());
        if (pBytes == nullptr) return false;
        m_Layer.m_dZ = numbers.Real(pBytes);
        return m_File.Take(static_cast<std::size_t>(command.nOffset)) != nullptr;
    }

    // The whole numbers of a command, and whether the file can hold the items that the last one announces.
    bool ReadWholes(BinaryCommand const& command, Numbers const& numbers,
                    std::array<std::int32_t, kMostWholes>& wholes) {
        auto const nWholes = static_cast<std::size_t>(command.pEntry->nWholes);
        unsigned char const* const pBytes = m_File.Take(nWholes * numbers.Size());
        if (pBytes == nullptr) return false;
        for (std::size_t i = 0; i < nWholes; ++i) wholes[i] = numbers.Whole(pBytes + i * numbers.Size());
        std::int32_t const nItems = wholes[nWholes - 1];
        std::uint64_t const nItemSize = static_cast<std::uint64_t>(command.pEntry->nReals) * numbers.Size();
        return nItems >= 0 && m_File.CanHold(nItemSize * static_cast<std::uint64_t>(nItems));
    }

    // Adds nItems elements of nSize bytes each to a list, as make(bytes) gives them.
    template <class List, class Make>
    bool ReadItems(List& list, std::size_t nSize, std::int32_t nItems, Make make) {
        int const nUsual = list.m_nBlockSize;
        list.m_nBlockSize = std::clamp(nItems, 1, kMostNodesAtOnce);
        for (auto nLeft = static_cast<std::size_t>(nItems); nLeft > 0;) {
            auto const bytes = m_File.TakeItems(nSize, nLeft);
            if (bytes.empty()) return false;
            for (std::size_t i = 0; i < bytes.size(); i += nSize) {
                auto element = make(bytes.data() + i);
                list.AddTail(element);
            }
            nLeft -= bytes.size() / nSize;
        }
        list.m_nBlockSize = nUsual;
        return true;
    }

    bool ReadPolyline(BinaryCommand const& command) {
        Numbers const numbers(command, m_Layer.m_dUnits);
        std::array<std::int32_t, kMostWholes> wholes{};
        if (!ReadWholes(command, numbers, wholes)) return false;
        auto const [nID, nDirection, nPoints] = wholes;
        auto pLoop = NewPath();
        pLoop->m_dZ = m_Layer.m_dZ;
        pLoop->m_nID = nID;
        pLoop->m_nDirection = static_cast<LOOPDIRECT>(nDirection);
        pLoop->m_bClosed = nDirection < 2 ? 1 : 0;
        auto const makePoint = [&numbers](unsigned char const* p) { return numbers.Point(p); };
        if (!ReadItems(*pLoop->m_pPointList, 2 * numbers.Size(), nPoints, makePoint)) return false;
        AddOwned(m_Layer.m_RawLoopList, std::move(pLoop));
        return true;
    }

    bool ReadHatches(BinaryCommand const& command) {
        Numbers const numbers(command, m_Layer.m_dUnits);
        std::array<std::int32_t, kMostWholes> wholes{};
        if (!ReadWholes(command, numbers, wholes)) return false;
        auto pHatch = std::make_unique<CHatch>();
        pHatch->m_nID = wholes[0];
        auto const makeEdge = [&numbers](unsigned char const* p) {
            return CEdge2D(numbers.Point(p), numbers.Point(p + 2 * numbers.Size()));
        };
        if (!ReadItems(pHatch->m_EdgeList, 4 * numbers.Size(), wholes[1], makeEdge)) return false;
        AddOwned(m_Layer.m_HatchList, std::move(pHatch));
        return true;
    }

    FileWindow& m_File;
    CLayer& m_Layer;
};

}  // namespace

LayerEnd ReadBinaryLayer(FileWindow& file, CLayer& layer, bool bDisguised) {
    BinaryReader reader(file, layer);
    bool bSeen = false;
    std::int64_t nMark = file.Position();  // behind the last command
    while (unsigned char const* const pWord = file.Take(sizeof(std::uint16_t))) {
        auto const nWord = LoadUnsigned<std::uint16_t>(pWord);
        std::optional<BinaryCommand> const command =
            bDisguised ? DisguisedCommandOf(nWord) : BinaryCommandOf(nWord);
        if (!command) {
            file.Leave(file.Position());
            return {0, false};
        }
        bool const bLayer = command->pEntry->command == Command::kLayer;
        if (bLayer && bSeen) {
            file.Leave(nMark);
            layer.GetBoundBox();
            return {1, true};
        }
        bSeen = bSeen || bLayer;
        if (!reader.ReadParameters(*command)) {
            file.LeaveAtEnd();
            return {0, false};
        }
        nMark = file.Position();
    }
    file.Leave(file.Position());
    layer.GetBoundBox();
    return {bSeen ? 1 : 0, true};
}

}  // namespace varnet
