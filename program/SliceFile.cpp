#include "SliceFile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>

#include "Failure.h"
#include "ModelFile.h"
#include "Progress.h"

namespace {

namespace fs = std::filesystem;

std::string StartOf(std::string const& file) {
    constexpr std::size_t kLookedAt = 4096;
    std::string bytes(kLookedAt, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

// Positions beyond what a long holds do not arise: the library's offsets have 32 bits.
std::int64_t PositionIn(FILE* pFile) { return std::ftell(pFile); }

FILE* OpenOrThrow(std::string const& file) {
    if (fs::is_directory(file)) throw Failure(file, "is a folder");
    FILE* const pFile = std::fopen(file.c_str(), "rb");
    if (pFile == nullptr) throw Failure(file, errno == ENOENT ? "no such file" : std::strerror(errno));
    return pFile;
}

// One pass over the input. Gives the number of layers, which may not be the one in the header.
int WriteLayers(std::string const& input, FILE* pOutput, SliceMode mode, int nInHeader,
                std::function<void(CLayer&)> const& edit, std::atomic<double>& share) {
    SliceReader reader(input);
    CLayerModel writer;
    auto const nMode = static_cast<int>(mode);
    writer.SaveCLIHead(pOutput, nMode, nInHeader);
    for (CLayer layer; reader.Next(layer);) {
        ThrowIfInterrupted();
        edit(layer);
        writer.SaveLayer(&layer, pOutput, nMode);
        share = reader.Share();
    }
    reader.RequireEnd();
    if (mode == SliceMode::kText) std::fputs("$$GEOMETRYEND\n", pOutput);
    return reader.LayersRead();
}

}  // namespace

char const* NameOf(SliceMode mode) {
    constexpr std::array<char const*, 3> kNames = {"CLI slices, text", "CLI slices, binary",
                                                   "CLI slices, disguised"};
    return kNames[static_cast<std::size_t>(mode) - 1];
}

std::optional<SliceMode> SliceModeOf(std::string const& word) {
    if (word == "ascii") return SliceMode::kText;
    if (word == "binary") return SliceMode::kBinary;
    if (word == "coc") return SliceMode::kDisguised;
    return std::nullopt;
}

bool IsSliceFile(std::string const& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && StartOf(file).find("$$HEADERSTART") != std::string::npos;
}

SliceReader::SliceReader(std::string const& file) : m_Name(file), m_pFile(OpenOrThrow(file)) {
    m_nSize = static_cast<std::int64_t>(fs::file_size(file));
    m_Model.m_pFile = m_pFile.get();
    g_nCLILayers = 0;
    if (m_Model.ReadCLIHead() == 0) throw Failure(file, "not a CLI slice file");
    m_nAnnounced = g_nCLILayers;
    m_nLayerStart = PositionIn(m_pFile.get());
}

bool SliceReader::Next(CLayer& layer) {
    layer.ReleaseAll();
    layer.m_Box = CBoundBox2D();
    layer.m_dUnits = m_Model.m_dUnits;
    m_nLayerStart = PositionIn(m_pFile.get());
    if (layer.ReadCLIFile(m_pFile.get(), static_cast<int>(m_Model.m_nFileMode)) == 0) return false;
    layer.GetBoundBox();
    ++m_nLayersRead;
    return true;
}

double SliceReader::Share() const {
    return m_nSize > 0 ? static_cast<double>(PositionIn(m_pFile.get())) / static_cast<double>(m_nSize) : 1.0;
}

void SliceReader::RequireEnd() {
    if (m_nLayerStart >= m_nSize) return;
    constexpr std::string_view kEnd = "$$GEOMETRYEND";
    std::array<char, kEnd.size()> rest{};
    std::fseek(m_pFile.get(), static_cast<long>(m_nLayerStart), SEEK_SET);
    std::size_t const nRead = std::fread(rest.data(), 1, rest.size(), m_pFile.get());
    if (Mode() == SliceMode::kText && std::string_view(rest.data(), nRead) == kEnd) return;
    throw Failure(m_Name, "broken behind layer " + std::to_string(m_nLayersRead) + ", at byte " +
                              std::to_string(m_nLayerStart));
}

int RewriteSlices(std::string const& input, std::string const& output, SliceMode mode,
                  std::function<void(CLayer&)> const& edit) {
    int nLayers = SliceReader(input).Announced();
    std::atomic<double> share = 0.0;
    WriteWhole(output, [&](fs::path const& path) {
        bool bWritten = false;
        auto const pass = [&] {
            std::unique_ptr<FILE, int (*)(FILE*)> pFile(std::fopen(path.string().c_str(), "wb"),
                                                        &std::fclose);
            if (pFile == nullptr) return;
            int const nFound = WriteLayers(input, pFile.get(), mode, nLayers, edit, share);
            bWritten = std::fflush(pFile.get()) == 0 && std::ferror(pFile.get()) == 0 && nFound == nLayers;
            nLayers = nFound;
        };
        auto const run = [&] {
            int const nInHeader = nLayers;
            pass();
            // The announced number was wrong: the header is written anew, with the one that was found.
            if (!bWritten && nLayers != nInHeader) pass();
        };
        std::error_code ignored;
        try {
            RunWithProgress(
                "Writing " + fs::path(output).filename().string(), run, [&share] { return share.load(); },
                [] {});
        } catch (...) {
            fs::remove(path, ignored);
            throw;
        }
        if (!bWritten) fs::remove(path, ignored);
        return bWritten;
    });
    return nLayers;
}

SliceModel::SliceModel(std::string const& file, std::uintmax_t nLimit) : m_Reader(file) {
    std::uintmax_t const nSize = fs::file_size(file);
    if (nSize > std::numeric_limits<std::uint32_t>::max()) {
        throw Failure(file, "larger than 4 GiB: the places of its layers cannot be told");
    }
    std::atomic<double> share = 0.0;
    m_Model.m_pFile = m_Reader.Handle();
    m_Model.m_dUnits = m_Reader.Header().m_dUnits;
    m_Model.m_nFileMode = m_Reader.Header().m_nFileMode;
    m_Model.m_nVersion = m_Reader.Header().m_nVersion;
    m_Model.m_nNozzle = m_Reader.Header().m_nNozzle;
    RunWithProgress(
        "Reading " + fs::path(file).filename().string(),
        [&] {
            auto pLayer = std::make_unique<CLayer>();
            while (m_Reader.Next(*pLayer)) {
                ThrowIfInterrupted();
                share = m_Reader.Share();
                if (nSize > nLimit) {
                    m_Model.m_OffsetList.AddTail(
                        static_cast<int>(static_cast<std::uint32_t>(m_Reader.LayerStart())));
                } else {
                    m_Model.AddTailLayer(pLayer.release());
                    pLayer = std::make_unique<CLayer>();
                }
            }
            if (nSize > nLimit) {
                m_Model.m_bInMemory = 0;
                m_Model.AddTailLayer(pLayer.release());  // the buffer
            }
        },
        [&share] { return share.load(); }, [] {});
}
