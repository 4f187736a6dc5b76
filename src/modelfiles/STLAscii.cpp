// ASCII STL: seven lines a facet, taken by position. No keyword is looked at, but for the first facet's.

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Counter.h"
#include "foundation/Path.h"
#include "foundation/TextLines.h"
#include "foundation/TextScanner.h"
#include "foundation/TextSearch.h"
#include "mesh/FacetIntake.h"
#include "mesh/STLModel.h"

namespace {

// The size of a buffer for one line, closing zero included: longer lines fall into several.
constexpr std::size_t kFacetLine = 1024;
constexpr std::size_t kPreambleLine = 10240;
constexpr std::size_t kHeaderLine = 80;

// An average facet in bytes, to guess from a file's size how many facets it holds.
constexpr int kBytesPerFacet = 256;

void ParseNormal(std::string_view line, tagFACET& facet) {
    TextScanner text(line);
    text.SkipWord();
    text.SkipWord();
    for (float& f : facet.m_fNormal) text.Number(f);
}

void ParseCorner(std::string_view line, CPoint3D& corner) {
    TextScanner text(line);
    text.SkipWord();
    text.Number(corner.x);
    text.Number(corner.y);
    text.Number(corner.z);
}

enum class NormalLine { kParse, kSkip };

// The lines of a facet, each taken with nextLine(), which gives an optional line. False at the end of the
// file.
template <NormalLine kNormalLine, class NextLine>
bool ReadFacetLines(NextLine const& nextLine, tagFACET& facet) {
    std::optional<std::string_view> line = nextLine();
    if (!line) return false;
    if constexpr (kNormalLine == NormalLine::kParse) ParseNormal(*line, facet);
    if (!nextLine()) return false;
    for (CPoint3D& corner : facet.m_ptVertex) {
        line = nextLine();
        if (!line) return false;
        ParseCorner(*line, corner);
    }
    nextLine();
    nextLine();
    return true;
}

// Goes to the start of the first line that holds "FACET", in any case, or to the end of the file.
void SkipPreamble(TextLines& lines) {
    while (std::optional<std::string_view> const line = lines.Next(kPreambleLine - 1)) {
        if (HoldsWord(*line, "FACET")) {
            lines.Unread();
            return;
        }
    }
}

}  // namespace

int CSTLModel::ReadSTLASCII(char* pszPath, int bCountOnly) {
    File const file = OpenPath(pszPath, "r");
    if (file == nullptr) return 0;
    std::fgets(m_Status.m_szHeader, kHeaderLine, file.get());
    StoreShared(m_nTotalFacet, FileSize(file.get()) / kBytesPerFacet);
    if (bCountOnly != 0) return m_nTotalFacet;

    std::rewind(file.get());
    TextLines lines(file.get());
    SkipPreamble(lines);
    FacetIntake intake(*this);
    tagFACET facet;
    auto const nextLine = [&lines] { return lines.Next(kFacetLine - 1); };
    // A facet that enters a model gets its normal from its corners, whatever the file says.
    while (ReadFacetLines<NormalLine::kSkip>(nextLine, facet)) {
        if (LoadShared(m_bStopRead) != 0) break;
        intake.Add(facet);
    }
    return LoadShared(m_bStopRead) == 0 ? 1 : 0;
}

int CSTLModel::ReadSTLFacetASCII(FILE* pFile, tagFACET* pFacet) {
    std::array<char, kFacetLine> buffer;
    auto const nextLine = [&buffer, pFile]() -> std::optional<std::string_view> {
        if (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pFile) == nullptr) return std::nullopt;
        return std::string_view(buffer.data());
    };
    return ReadFacetLines<NormalLine::kParse>(nextLine, *pFacet) ? 1 : 0;
}
