// What a file is.

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>
#include <string_view>

#include "part/Bytes.h"
#include "part/MeshReaders.h"
#include "part/StlRecords.h"

namespace varnet {

namespace {

constexpr std::size_t kLookedAt = std::size_t{1} << 16;
constexpr std::uint64_t kStlHeader = 80;
constexpr std::uint64_t kOltpHeader = 256;
constexpr std::uint64_t kRecord = StlRecords::kRecord;

std::string InSmallLetters(std::string_view text) {
    std::string small(text);
    for (char& c : small) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return small;
}

bool Holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

std::optional<MeshFormat> CsmFormatOf(std::string_view start) {
    std::string_view header = start.substr(0, 80);
    header = header.substr(0, header.find('\0'));
    for (char const* const tag : {"CSM3.0", "CSM4.0", "CSM5.0"}) {
        if (Holds(header, tag)) return MeshFormat::kStripCsm;
    }
    if (Holds(header, "CSM2.0")) return MeshFormat::kRingCsm;
    if (header == "Quarnell Ziped Model") return MeshFormat::kPlainCsm;
    return std::nullopt;
}

/// The facets that are announced behind a header, and the bytes that follow the last of them; none where the
/// file is too short for them.
struct Records {
    std::uint64_t announced = 0;
    std::optional<std::uint64_t> stray;
};

Records RecordsBehind(std::uint64_t header, std::string_view start, std::uint64_t size) {
    Records records;
    if (start.size() < header + 4) return records;
    records.announced = LoadU32(start.data() + header);
    std::uint64_t const needed = header + 4 + kRecord * records.announced;
    if (needed <= size) records.stray = size - needed;
    return records;
}

bool IsText(std::string_view start) {
    auto const isControl = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t' && c != '\f' &&
               c != '\v';
    };
    return std::none_of(start.begin(), start.end(), isControl);
}

bool IsUtf16(std::string_view start) {
    if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) return true;
    if (start.size() < 16) return false;
    std::size_t even = 0;
    std::size_t odd = 0;
    std::size_t const looked = std::min<std::size_t>(start.size(), 64) / 2 * 2;
    for (std::size_t i = 0; i < looked; i += 2) {
        even += start[i] == '\0';
        odd += start[i + 1] == '\0';
    }
    return (even == looked / 2 && odd == 0) || (odd == looked / 2 && even == 0);
}

/// What a file is that one takes for a model by mistake.
std::optional<char const*> OtherKind(std::string_view start) {
    std::string const small = InSmallLetters(start.substr(0, 1024));
    if (IsUtf16(start)) return "is UTF-16 text: save it as plain text (ASCII or UTF-8), or as binary STL";
    if (Holds(small, "<!doctype html") || Holds(small, "<html")) {
        return "is an HTML page, not a model: download the file itself";
    }
    if (small.starts_with("version https://git-lfs")) {
        return "is a pointer of Git LFS, not the model: fetch it with `git lfs pull`";
    }
    if (Holds(small, "$$headerstart")) return "holds slices, not a mesh";
    if (small.starts_with("pk\x03\x04"))
        return "is a zip archive (as 3MF and downloads are), not a model that is read";
    if (small.starts_with("<?xml")) return "is an XML file, not a model that is read";
    if (small.starts_with("ply\n") || small.starts_with("ply\r")) return "is a PLY file, which is not read";
    return std::nullopt;
}

[[noreturn]] void ThrowContent(InputFile const& file, std::string const& message) {
    throw Error(ErrorKind::kContent, file.Path(), message);
}

[[noreturn]] void ThrowWrongSize(InputFile const& file, Records const& records) {
    std::uint64_t const held = (file.Size() - kStlHeader - 4) / kRecord;
    std::string const announced = "announces " + std::to_string(records.announced) + " facets, ";
    if (records.stray) ThrowContent(file, announced + "and is long enough for " + std::to_string(held));
    ThrowContent(
        file, announced + "and holds " + std::to_string(held) + ": it is cut short, or no binary STL file");
}

bool AreModelsInARow(InputFile& file) {
    StlModels const found = FindModels(file, kStlHeader);
    file.Seek(0);
    return found.models > 1 && file.Size() - found.bytes < kRecord;
}

MeshFormat RecogniseText(InputFile& file, std::string_view start) {
    std::string const small = InSmallLetters(start);
    if (Holds(small, "vertices") && !Holds(small, "facet")) return MeshFormat::kThreeDmf;
    if (!Holds(small, "solid") && !Holds(small, "facet") && !Holds(small, "vertex")) {
        ThrowContent(file, "is text, but no ASCII STL: it has none of its words");
    }
    std::string_view const body = start.substr(0, start.find_last_not_of(" \t\r\n") + 1);
    if (body.find_first_of("\r\n") == std::string_view::npos) {
        ThrowContent(file, start.size() < kLookedAt && !Holds(small, "facet")
                               ? "holds no facets"
                               : "is text on one line: an ASCII STL has a line for each corner");
    }
    return MeshFormat::kAsciiStl;
}

}  // namespace

MeshFormat Recognise(InputFile& file) {
    std::string start(kLookedAt, '\0');
    file.Seek(0);
    start.resize(file.Read(start));
    file.Seek(0);
    if (start.empty()) ThrowContent(file, "is empty");
    Records const stl = RecordsBehind(kStlHeader, start, file.Size());
    Records const oltp = RecordsBehind(kOltpHeader, start, file.Size());
    std::string const extension = InSmallLetters(file.Path().extension().string());
    bool const isStl = stl.stray == 0u && stl.announced != 0;
    std::optional<MeshFormat> const csm = CsmFormatOf(start);
    if (csm && (!isStl || csm == MeshFormat::kPlainCsm)) return *csm;
    if (oltp.stray == 0u && oltp.announced != 0 && (!isStl || extension == ".oltp")) return MeshFormat::kOltp;
    if (isStl) return MeshFormat::kBinaryStl;
    if (std::optional<char const*> const other = OtherKind(start)) ThrowContent(file, *other);
    if (extension == ".3dmf") return MeshFormat::kThreeDmf;
    if (IsText(start)) return RecogniseText(file, start);
    // Text is not taken for a number of facets that small: its bytes are 9 at least.
    if (stl.stray && *stl.stray < kRecord && stl.announced != 0) return MeshFormat::kBinaryStl;
    if (AreModelsInARow(file)) return MeshFormat::kBinaryStl;
    if (file.Size() < kStlHeader + 4) ThrowContent(file, "is too short for a model");
    if (stl.stray && stl.announced == 0 && *stl.stray < kRecord) ThrowContent(file, "holds no facets");
    std::string_view text(start);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\xEF\xBB\xBF"), text.size()));
    bool const looksLikeText =
        InSmallLetters(text.substr(0, 5)) == "solid" && Holds(InSmallLetters(start), "vertex");
    if (looksLikeText) return MeshFormat::kAsciiStl;
    ThrowWrongSize(file, stl);
}

}  // namespace varnet
