// Layers written as binary commands.

#include <cstdint>
#include <cstdlib>
#include <initializer_list>

#include "cli/CommandTable.h"
#include "cli/LayerFormats.h"
#include "contours/LoopWalk.h"
#include "foundation/files/LittleEndian.h"

namespace varnet {

namespace {

// Values as they are.
class Plain {
public:
    explicit Plain(Command command) : m_nWord(EntryOf(command).nLong) {}
    std::uint16_t Word() const { return m_nWord; }
    float Real(double d) const { return static_cast<float>(d); }
    void AddNoise(ByteWriter&) const {}

private:
    std::uint16_t m_nWord;
};

// Values raised by a random offset, which the word tells.
class Disguised {
public:
    explicit Disguised(Command command) : m_nOffset(std::rand() % kDisguiseOffsets), m_Command(command) {}
    std::uint16_t Word() const { return DisguisedWord(m_Command, m_nOffset); }
    float Real(double d) const { return static_cast<float>(d + m_nOffset); }
    void AddNoise(ByteWriter& file) const {
        for (int i = 0; i < m_nOffset; ++i) *file.Room(1) = static_cast<unsigned char>(std::rand() & 0xFF);
    }

private:
    int m_nOffset;
    Command m_Command;
};

constexpr std::size_t kFloat = sizeof(float);

template <class Form>
void WriteStart(ByteWriter& file, Form const& form, std::initializer_list<std::int32_t> wholes) {
    StoreUnsigned(file.Room(sizeof(std::uint16_t)), form.Word());
    for (std::int32_t const n : wholes) {
        StoreUnsigned(file.Room(sizeof n), static_cast<std::uint32_t>(n));
    }
}

template <class Form>
void StorePoint(unsigned char* pTo, Form const& form, CPoint2D const& point) {
    StoreFloat(pTo, form.Real(point.x));
    StoreFloat(pTo + kFloat, form.Real(point.y));
}

template <class Form>
void WriteLayer(ByteWriter& file, CLayer& layer) {
    Form const height(Command::kLayer);
    WriteStart(file, height, {});
    StoreFloat(file.Room(kFloat), height.Real(layer.m_dZ));
    height.AddNoise(file);
    layer.BuildLoopList();
    ForEachLoop(layer.m_LoopList, [&file](tagLoopTreeNode& loop) {
        Form const form(Command::kPolyline);
        WriteStart(file, form, {loop.m_nID, static_cast<std::int32_t>(loop.m_nDirection), PointCount(loop)});
        for (PointNode const* p = FirstPoint(loop); p != nullptr; p = p->pNext) {
            StorePoint(file.Room(2 * kFloat), form, p->data);
        }
    });
    ForEachHatch(layer.m_HatchList, [&file](CHatch& hatch) {
        Form const form(Command::kHatches);
        WriteStart(file, form, {hatch.m_nID, hatch.m_EdgeList.GetCount()});
        for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
            unsigned char* const pTo = file.Room(4 * kFloat);
            StorePoint(pTo, form, p->data.m_ptStart);
            StorePoint(pTo + 2 * kFloat, form, p->data.m_ptEnd);
        }
    });
}

}  // namespace

void WriteBinaryLayer(ByteWriter& file, CLayer& layer, bool bDisguised) {
    if (bDisguised) {
        WriteLayer<Disguised>(file, layer);
    } else {
        WriteLayer<Plain>(file, layer);
    }
}

}  // namespace varnet
