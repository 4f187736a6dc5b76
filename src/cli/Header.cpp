// The header of a slice file.

#include <string>

#include "cli/CommandTable.h"
#include "cli/FileWindow.h"
#include "cli/LayerModel.h"
#include "cli/LineTokens.h"
#include "foundation/Counter.h"
#include "foundation/files/FilePosition.h"

using namespace varnet;

std::int32_t g_nCLILayers = 0;

namespace {

// What the writer announces, whatever the model holds.
constexpr std::string_view kUnitsWritten = "/1\n";
constexpr std::string_view kVersionWritten = "/200\n";

template <class Number>
Number ValueOf(std::string_view line) {
    Number value{};
    LineTokens(line).Next(value);
    return value;
}

bool Holds(std::string_view line, std::string_view word) {
    return line.substr(0, line.find('\0')).find(word) != std::string_view::npos;
}

void Apply(Keyword keyword, std::string_view line, CLayerModel& model) {
    switch (keyword) {
        case Keyword::kText:
            model.m_nFileMode = kModeText;
            break;
        case Keyword::kBinary:
            model.m_nFileMode = kModeBinary;
            break;
        case Keyword::kDisguised:
            model.m_nFileMode = kModeDisguised;
            break;
        case Keyword::kUnits:
            model.m_dUnits = ValueOf<double>(line);
            break;
        case Keyword::kVersion:
            model.m_nVersion = ValueOf<int>(line);
            break;
        case Keyword::kNozzle:
            model.m_nNozzle = ValueOf<int>(line);
            break;
        case Keyword::kLayers:
            StoreShared(g_nCLILayers, ValueOf<int>(line));
            break;
        default:
            break;
    }
}

bool FindHeader(FileWindow& file) {
    while (std::optional<std::string_view> const line = file.NextLine(kLongestLine)) {
        if (Holds(*line, kHeaderStart)) return true;
    }
    return false;
}

// Applies the lines up to the end of the header. Gives the position of that line; nothing where the file
// ends first.
std::optional<std::int64_t> ReadKeywords(FileWindow& file, CLayerModel& model) {
    std::int64_t nLineStart = file.Position();
    while (std::optional<std::string_view> const line = file.NextLine(kLongestLine)) {
        std::optional<Keyword> const keyword = KeywordOf(*line);
        if (keyword == Keyword::kHeaderEnd) return nLineStart;
        if (keyword) Apply(*keyword, *line, model);
        nLineStart = file.Position();
    }
    return std::nullopt;
}

}  // namespace

int CLayerModel::ReadCLI(char*, int) { return 1; }

int CLayerModel::ReadCLIHead() {
    if (m_pFile == nullptr) return 0;
    SetFilePosition(m_pFile, 0);
    FileWindow file(m_pFile);
    bool const bFound = FindHeader(file);
    std::optional<std::int64_t> const end = bFound ? ReadKeywords(file, *this) : std::nullopt;
    std::int64_t nGeometry = file.Position();
    bool const bBinary = m_nFileMode == kModeBinary || m_nFileMode == kModeDisguised;
    if (end && bBinary) nGeometry = *end + static_cast<std::int64_t>(SpellingOf(Keyword::kHeaderEnd).size());
    file.Leave(nGeometry);
    if (!bFound) return 0;
    return !end || bBinary || m_nFileMode == kModeText ? 1 : 0;
}

int CLayerModel::SaveCLIHead(FILE* pFile, int nMode, int nLayers) {
    if (pFile == nullptr || !IsFileMode(nMode)) return 0;
    std::string header;
    header.append(kHeaderStart).append("\n");
    header.append(SpellingOf(KeywordOfMode(nMode))).append("\n");
    header.append(SpellingOf(Keyword::kUnits)).append(kUnitsWritten);
    header.append(SpellingOf(Keyword::kVersion)).append(kVersionWritten);
    header.append(SpellingOf(Keyword::kLayers)).append("/");
    header.append(std::to_string(nLayers != 0 ? nLayers : GetLayerCount())).append("\n");
    header.append(SpellingOf(Keyword::kHeaderEnd));
    if (nMode == kModeText) header.append("\n").append(EntryOf(Command::kGeometryStart).text).append("\n");
    std::fwrite(header.data(), 1, header.size(), pFile);
    return 1;
}
