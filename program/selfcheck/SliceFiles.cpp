// Stacks of layers, and their files.

#include <cstdlib>
#include <memory>

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

// The layers of a file from where it stands, in other units.
void ReadLayers(CLayerModel& stack, FILE* file) {
    while (true) {
        auto layer = std::make_unique<CLayer>();
        layer->m_dUnits = 0.1;
        if (stack.ReadLayer(layer.get(), static_cast<unsigned long>(std::ftell(file))) == 0) return;
        stack.AddTailLayer(layer.release());
    }
}

void AddCounts(Record& record, CLayerModel& stack) {
    for (int i = 1; i <= stack.GetLayerCount(); ++i) {
        CLayer const& layer = *stack.GetLayerAt(i);
        record.AddAll(layer.m_RawLoopList.GetCount(), layer.m_HatchList.GetCount());
    }
}

// Header and layers as they are written, and what comes back. What is disguised is so by the C library's
// rand, and rounded in the disguise.
void AddFile(Record& record, CLayerModel& stack, int mode, std::filesystem::path const& folder) {
    OpenFile file(folder / "layers");
    std::srand(1);
    record.Add(stack.SaveCLIHead(file, mode, 0));
    for (int i = 1; i <= stack.GetLayerCount(); ++i)
        record.Add(stack.SaveLayer(stack.GetLayerAt(i), file, mode));
    if (mode == kText) std::fputs("$$GEOMETRYEND\n", file);
    std::string const bytes = file.Bytes();
    CLayerModel back;
    back.m_pFile = file;
    record.Add(back.ReadCLIHead());
    record.AddAll(back.GetFileMode(), back.m_dUnits, back.m_nVersion, g_nCLILayers);
    ReadLayers(back, file);
    record.Add(back.GetLayerCount());
    if (mode == kDisguised) {
        AddCounts(record, back);
    } else {
        record.Add(std::string_view(bytes));
        AddStack(record, back);
    }
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
