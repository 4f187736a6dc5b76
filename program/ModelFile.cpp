#include "ModelFile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "Failure.h"
#include "PlainCsm.h"
#include "Progress.h"
#include "RingDecoder.h"
#include "SliceFile.h"

namespace {

namespace fs = std::filesystem;

std::int32_t Load(std::int32_t& nValue) { return std::atomic_ref(nValue).load(std::memory_order_relaxed); }

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
    return "not a file that can be read: broken, or of no kind that is known";
}

// The start of a file, from which its kind is told.
std::string StartOf(std::string const& file) {
    constexpr std::size_t kLookedAt = std::size_t{1} << 16;
    std::string bytes(kLookedAt, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

std::string InCapitals(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

bool Holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

std::optional<FileKind> CsmKindOf(std::string_view start) {
    std::string_view header = start.substr(0, 80);
    header = header.substr(0, header.find('\0'));
    for (char const* const pTag : {"CSM3.0", "CSM4.0", "CSM5.0"}) {
        if (Holds(header, pTag)) return FileKind::kStripCsm;
    }
    if (Holds(header, "CSM2.0")) return FileKind::kRingCsm;
    if (header == "Quarnell Ziped Model") return FileKind::kPlainCsm;
    return std::nullopt;
}

// Whether the file has the very size of a header and the facets that are announced behind it.
bool HasSizeOfRecords(std::string const& file, std::string_view start, std::size_t nHeader) {
    if (start.size() < nHeader + 4) return false;
    std::uintmax_t nFacets = 0;
    for (std::size_t i = 4; i > 0; --i) {
        nFacets = nFacets << 8 | static_cast<unsigned char>(start[nHeader + i - 1]);
    }
    std::error_code error;
    return fs::file_size(file, error) == nHeader + 4 + 50 * nFacets;
}

int ReadRing(std::string const& file, CSTLModel& model) {
    std::ifstream stream(file, std::ios::binary);
    std::string const bytes(std::istreambuf_iterator<char>(stream), {});
    for (tagFACET& facet : DecodeRingStream(bytes).facets) {
        if (Load(model.m_bStopRead) != 0) return 0;
        model.AddFacet(facet);
    }
    return 1;
}

int Read(FileKind kind, std::string const& file, CSTLModel& model) {
    WidePath path(file);
    switch (kind) {
        case FileKind::kOltp:
            return model.ReadOLTPFile(path.Get(), 0);
        case FileKind::kThreeDmf:
            return model.Read3DMFModel(path.Get());
        case FileKind::kPlainCsm:
            return ReadPlainCsm(model, path.Get());
        case FileKind::kStripCsm:
            return model.ReadCSMFile1(path.Get(), 0);
        case FileKind::kRingCsm:
            return ReadRing(file, model);
        default:
            return model.ReadSTLFile(path.Get(), 0);
    }
}

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

FileKind KindOf(std::string const& file) {
    if (!std::ifstream(file, std::ios::binary) || fs::is_directory(file)) {
        throw Failure(file, WhyUnreadable(file));
    }
    if (IsSliceFile(file)) throw Failure(file, "holds slices, not a mesh: varnet layers shows them");
    std::string const start = StartOf(file);
    if (std::optional<FileKind> const kind = CsmKindOf(start)) return *kind;
    std::string const extension = InCapitals(fs::path(file).extension().string());
    if (extension == ".3DMF") return FileKind::kThreeDmf;
    if (extension == ".OLTP") return FileKind::kOltp;
    std::string const text = InCapitals(start);
    if (Holds(text, "VERTICES") && !Holds(text, "FACET")) return FileKind::kThreeDmf;
    if (HasSizeOfRecords(file, start, 256) && !HasSizeOfRecords(file, start, 80)) return FileKind::kOltp;
    switch (CSTLModel::GetSTLType(WidePath(file).Get())) {
        case 1:
            return FileKind::kAsciiStl;
        case 2:
            return FileKind::kBinaryStl;
        default:
            throw Failure(file, WhyUnreadable(file));
    }
}

char const* NameOf(FileKind kind) {
    constexpr std::array<char const*, 7> kNames = {"ASCII STL", "binary STL",    "OLTP",           "3DMF",
                                                   "plain CSM", "CSM in strips", "CSM ring stream"};
    return kNames[static_cast<std::size_t>(kind)];
}

FileKind ReadModel(std::string const& file, CSTLModel& model) {
    ThrowIfInterrupted();
    FileKind const kind = KindOf(file);
    int nResult = 0;
    try {
        RunWithProgress(
            "Reading " + fs::path(file).filename().string(), [&] { nResult = Read(kind, file, model); },
            [&model] { return ShareRead(model); }, [&model] { model.StopReadModel(); });
    } catch (RingError const& error) {
        throw Failure(file, error.what());
    }
    ThrowIfInterrupted();
    if (nResult == 0) throw Failure(file, WhyUnreadable(file));
    return kind;
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
    std::error_code ignored;
    bool bWritten = false;
    try {
        bWritten = write(partial);
    } catch (...) {
        fs::remove(partial, ignored);
        throw;
    }
    bool const bWhole =
        bWritten && (nBytes < 0 || fs::file_size(partial, error) == static_cast<std::uintmax_t>(nBytes));
    if (bWhole && !IsInterrupted()) {
        fs::rename(partial, file, error);
        if (!error) return;
    }
    bool const bCreated = fs::remove(partial, ignored);
    ThrowIfInterrupted();
    if (error) throw Failure(file, "cannot be written: " + error.message());
    throw Failure(file, bCreated ? "could not be written whole (is the disk full?)" : "cannot be created");
}
