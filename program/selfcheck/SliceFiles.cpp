// Stacks of layers, and their files.

#include <cstdlib>

#include "selfcheck/Contours.h"
#include "selfcheck/Record.h"

namespace selfcheck {

namespace {

constexpr int kText = 1;
constexpr int kDisguised = 3;

void FillStack(CLayerModel& stack, Chance& chance) {
    for (int i = 0; i < 6; ++i) {
        auto* const layer = new CLayer;
        FillLayer(*layer, chance);
        layer->m_dZ = 0.25 * (i + 1);
        layer->GetBoundBox();
        if (i % 2 == 0) {
            stack.AddTailLayer(layer);
        } else {
            stack.AddHeadLayer(layer);
        }
    }
}

void AddStack(Record& record, CLayerModel& stack) {
    record.AddAll(stack.GetLayerCount(), stack.m_BoundBox.m_ptMin, stack.m_BoundBox.m_ptMax);
    for (int i = 1; i <= stack.GetLayerCount(); ++i) {
        XR_CList<void*, void*> support;
        record.Add(stack.GetSupportAtLayer(i, &support));
        record.Add(support.GetCount());
        AddLayer(record, *stack.GetLayerAt(i));
    }
}

// Header and layers as they are written, and what comes back, in other units. What is disguised is so by the
// C library's rand: its bytes differ from system to system, what they say does not.
void AddFile(Record& record, CLayerModel& stack, int mode, std::filesystem::path const& folder) {
    OpenFile file(folder / "layers");
    std::srand(1);
    record.Add(stack.SaveCLIHead(file, mode, 0));
    for (int i = 0; i < stack.GetLayerCount(); ++i)
        record.Add(stack.SaveLayer(stack.GetLayerAt(i), file, mode));
    if (mode == kText) std::fputs("$$GEOMETRYEND\n", file);
    std::string const bytes = file.Bytes();
    if (mode != kDisguised) record.Add(std::string_view(bytes));
    CLayerModel back;
    back.m_pFile = file;
    record.Add(back.ReadCLIHead());
    record.AddAll(back.GetFileMode(), back.m_dUnits, back.m_nVersion, g_nCLILayers);
    while (true) {
        auto* const layer = new CLayer;
        long const place = std::ftell(file);
        if (back.ReadLayer(layer, static_cast<unsigned long>(place)) == 0) {
            delete layer;
            break;
        }
        layer->m_dUnits = 0.1;
        back.AddTailLayer(layer);
        if (mode != kDisguised) record.Add(std::ftell(file));
    }
    AddStack(record, back);
    back.m_pFile = nullptr;
    WidePath path(folder / "check.cli");
    record.Add(stack.SaveCLIFile(path, mode));
}

}  // namespace

void CheckSliceFiles(Record& record, std::filesystem::path const& folder) {
    record.BeginRoom("cli");
    Chance chance(6);
    CLayerModel stack;
    FillStack(stack, chance);
    for (int mode = kText; mode <= kDisguised; ++mode) AddFile(record, stack, mode, folder);
    stack.RemoveHeadLayer();
    stack.RemoveTailLayer();
    AddStack(record, stack);
    stack.ReleaseAllLayer();
}

}  // namespace selfcheck
