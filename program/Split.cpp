#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "ModelFile.h"
#include "Progress.h"
#include "Split.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

// So many shells are listed; a file may hold thousands.
constexpr std::size_t kListed = 50;

void SetFileName(CSTLModel& model, std::string const& name) {
    auto& field = model.m_Status.m_szFileName;
    std::size_t const nLength = std::min(name.size(), sizeof field - 1);
    std::memcpy(field, name.data(), nLength);
    field[nLength] = '\0';
}

}  // namespace

std::vector<std::unique_ptr<CSTLModel>> SplitModel(CSTLModel& model, std::string const& name) {
    SetFileName(model, name);
    XR_CList<void*, void*> list;
    RunWithProgress(
        "Splitting " + name, [&model, &list] { model.Disjoin(list); }, [] { return 0.0; },
        [&model] { model.StopCurOperate(); });
    std::vector<std::unique_ptr<CSTLModel>> shells;
    while (list.IsEmpty() == 0) shells.emplace_back(static_cast<CSTLModel*>(list.RemoveHead()));
    ThrowIfInterrupted();
    return shells;
}

void RunSplit(SplitOptions const& options) {
    CSTLModel model;
    ReadModel(options.input, model);
    auto const shells = SplitModel(model, fs::path(options.input).filename().string());

    std::error_code error;
    fs::create_directories(options.folder, error);
    if (error) throw Failure(options.folder, "cannot be made: " + error.message());
    Table table(options.input + " -> " + options.folder);
    table.Add("shells", Count(static_cast<long long>(shells.size())));
    for (std::size_t i = 0; i < shells.size(); ++i) {
        CSTLModel& shell = *shells[i];
        std::string const name = shell.m_Status.m_szFileName;
        WriteModel(shell, (fs::path(options.folder) / name).string());
        if (i < kListed)
            table.Add(name, Count(shell.GetFacetsNum()) + " facets, volume " + Number(shell.Volume()));
    }
    if (shells.size() > kListed) {
        table.Add("...", Count(static_cast<long long>(shells.size() - kListed)) + " more");
    }
    table.Print();
}
