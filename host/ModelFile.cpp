#include "ModelFile.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>

#include "Failure.h"
#include "Progress.h"

namespace {

namespace fs = std::filesystem;

// The library says 0 for every file that it cannot read; this says why.
std::string WhyUnreadable(std::string const& file) {
    std::error_code error;
    fs::file_status const status = fs::status(file, error);
    if (!fs::exists(status)) return "no such file";
    if (fs::is_directory(status)) return "is a folder";
    errno = 0;
    if (!std::ifstream(file, std::ios::binary)) return std::strerror(errno);
    constexpr std::uintmax_t kShortest = 80;
    if (fs::is_regular_file(status) && fs::file_size(file, error) < kShortest) {
        return "too short for an STL file (fewer than 80 bytes)";
    }
    return "not an STL file that can be read";
}

std::int32_t Load(std::int32_t& nValue) { return std::atomic_ref(nValue).load(std::memory_order_relaxed); }

double ShareRead(CSTLModel& model) {
    std::int32_t const nTotal = Load(model.m_nTotalFacet);
    return nTotal > 0 ? static_cast<double>(Load(model.m_Status.m_nFacetNum)) / nTotal : 0.0;
}

}  // namespace

WidePath::WidePath(fs::path const& path) {
    try {
        m_Text = path.u16string();
    } catch (std::exception const&) {
        throw Failure(path.string(), "the name is not valid UTF-8");
    }
}

void ReadModel(std::string const& file, CSTLModel& model) {
    ThrowIfInterrupted();
    WidePath path(file);
    int nResult = 0;
    RunWithProgress(
        "Reading " + fs::path(file).filename().string(), [&] { nResult = model.ReadSTLFile(path.Get(), 0); },
        [&model] { return ShareRead(model); }, [&model] { model.StopReadModel(); });
    ThrowIfInterrupted();
    if (nResult == 0) throw Failure(file, WhyUnreadable(file));
}

void WriteModel(CSTLModel& model, std::string const& file) {
    constexpr int kBinary = 2;
    constexpr long long kHeader = 84;
    constexpr long long kRecord = 50;
    WriteWhole(
        file,
        [&model](fs::path const& path) { return model.SaveSTLFile(WidePath(path).Get(), kBinary) == 1; },
        kHeader + kRecord * model.GetFacetsNum());
}

void WriteBytes(std::string const& file, std::string const& bytes) {
    WriteWhole(
        file,
        [&bytes](fs::path const& partial) {
            std::ofstream stream(partial, std::ios::binary);
            return static_cast<bool>(stream << bytes);
        },
        static_cast<long long>(bytes.size()));
}

void WriteWhole(std::string const& file, std::function<bool(fs::path const&)> const& write,
                long long nBytes) {
    fs::path const partial = fs::path(file).concat(".part");
    std::error_code error;
    bool const bWritten = write(partial);
    bool const bWhole =
        bWritten && (nBytes < 0 || fs::file_size(partial, error) == static_cast<std::uintmax_t>(nBytes));
    if (bWhole && !IsInterrupted()) {
        fs::rename(partial, file, error);
        if (!error) return;
    }
    std::error_code ignored;
    if (bWritten) fs::remove(partial, ignored);
    ThrowIfInterrupted();
    if (error) throw Failure(file, "cannot be written: " + error.message());
    throw Failure(file, bWritten ? "could not be written whole (is the disk full?)" : "cannot be created");
}
