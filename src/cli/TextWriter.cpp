// Layers written as lines of text.

#include <charconv>
#include <cstring>
#include <string_view>

#include "cli/CommandTable.h"
#include "cli/LayerFormats.h"
#include "contours/LoopWalk.h"
#include "foundation/text/FixedDecimal.h"

namespace varnet {

namespace {

constexpr int kHeightDigits = 2;
constexpr int kCoordinateDigits = 3;

// Room in the file for a piece of text that is not known in length, from the first character to the last.
class TextPiece {
public:
    TextPiece(ByteWriter& file, std::size_t nMost)
        : m_File(file), m_pNext(reinterpret_cast<char*>(file.Room(nMost))), m_pEnd(m_pNext + nMost) {}
    TextPiece(TextPiece const&) = delete;
    TextPiece& operator=(TextPiece const&) = delete;
    ~TextPiece() { m_File.TakeBack(static_cast<std::size_t>(m_pEnd - m_pNext)); }

    TextPiece& Add(std::string_view text) {
        std::memcpy(m_pNext, text.data(), text.size());
        m_pNext += text.size();
        return *this;
    }
    TextPiece& Add(int nValue) {
        m_pNext = std::to_chars(m_pNext, m_pEnd, nValue).ptr;
        return *this;
    }
    TextPiece& Add(double dValue, int nDigits) {
        m_pNext = WriteFixed(m_pNext, dValue, nDigits);
        return *this;
    }
    TextPiece& AddPlace(CPoint2D const& p) {
        return Add(" ").Add(p.x, kCoordinateDigits).Add(" ").Add(p.y, kCoordinateDigits);
    }

private:
    ByteWriter& m_File;
    char* m_pNext;
    char* m_pEnd;
};

constexpr std::size_t kMostPlace = 2 * (1 + kLongestFixed);
constexpr std::size_t kMostStart = 100;  // a command with three whole numbers
constexpr std::size_t kMostLayer = 100 + kLongestFixed;

void WriteHatches(ByteWriter& file, CHatch const& hatch) {
    TextPiece(file, kMostStart)
        .Add(EntryOf(Command::kHatches).text)
        .Add(hatch.m_nID)
        .Add(" ")
        .Add(hatch.m_EdgeList.GetCount())
        .Add("    ");
    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        TextPiece(file, 2 * kMostPlace).AddPlace(p->data.m_ptStart).AddPlace(p->data.m_ptEnd);
    }
    TextPiece(file, 1).Add("\n");
}

void WriteLoop(ByteWriter& file, tagLoopTreeNode const& loop) {
    LOOPDIRECT const direction = loop.m_bClosed != 0 ? loop.m_nDirection : LOOPDIRECT_NONE;
    TextPiece(file, kMostStart)
        .Add(EntryOf(Command::kPolyline).text)
        .Add(loop.m_nID)
        .Add(" ")
        .Add(static_cast<int>(direction))
        .Add(" ")
        .Add(PointCount(loop))
        .Add(" ");
    for (PointNode const* p = FirstPoint(loop); p != nullptr; p = p->pNext) {
        TextPiece(file, kMostPlace).AddPlace(p->data);
    }
    TextPiece(file, 1).Add("\n");
}

}  // namespace

void WriteTextTree(ByteWriter& file, tagLoopTreeNode& root) {
    WalkTree(root, [&file](tagLoopTreeNode& loop) {
        if (PointCount(loop) == 0) return false;
        WriteLoop(file, loop);
        return true;
    });
}

void WriteTextLayer(ByteWriter& file, CLayer const& layer) {
    TextPiece(file, kMostLayer).Add(EntryOf(Command::kLayer).text).Add(layer.m_dZ, kHeightDigits).Add(" \n");
    ForEachLoop(layer.m_RawLoopList, [&file](tagLoopTreeNode& loop) { WriteTextTree(file, loop); });
    ForEachHatch(layer.m_HatchList, [&file](CHatch& hatch) {
        if (hatch.m_EdgeList.IsEmpty() == 0) WriteHatches(file, hatch);
    });
}

}  // namespace varnet
