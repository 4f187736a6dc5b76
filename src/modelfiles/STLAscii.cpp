// ASCII STL: seven lines a facet, taken by position. No keyword is looked at, but for the first facet's.

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Counter.h"
#include "foundation/files/ByteStream.h"
#include "foundation/files/Path.h"
#include "foundation/text/TextScanner.h"
#include "foundation/text/TextSearch.h"
#include "mesh/FacetIntake.h"
#include "mesh/STLModel.h"

using namespace varnet;

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

// False when the line does not give the corner's z, which then stays.
bool ParseCorner(std::string_view line, CPoint3D& corner) {
    TextScanner text(line);
    text.SkipWord();
    text.Number(corner.x);
    text.Number(corner.y);
    return text.Number(corner.z);
}

enum class NormalLine { kParse, kSkip };

// Which z of a facet's corners its lines gave, one after the other.
using GivenZ = std::array<bool, 3>;
constexpr GivenZ kAllGiven = {true, true, true};

// The lines of a facet, each taken with nextLine(), which gives an optional line. Nothing at the end of the
// file.
template <NormalLine kNormalLine, class NextLine>
std::optional<GivenZ> ReadFacetLines(NextLine const& nextLine, tagFACET& facet) {
    std::optional<std::string_view> line = nextLine();
    if (!line) return std::nullopt;
    if constexpr (kNormalLine == NormalLine::kParse) ParseNormal(*line, facet);
    if (!nextLine()) return std::nullopt;
    GivenZ given;
    for (std::size_t i = 0; i < given.size(); ++i) {
        line = nextLine();
        if (!line) return std::nullopt;
        given[i] = ParseCorner(*line, facet.m_ptVertex[i]);
    }
    nextLine();
    nextLine();
    return given;
}

// Goes to the start of the first line that holds "FACET", in any case, or to the end of the file.
void SkipPreamble(ByteReader& lines) {
    while (std::optional<std::string_view> const line = lines.NextLine(kPreambleLine - 1)) {
        if (HoldsWord(*line, "FACET")) {
            lines.UnreadLine();
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
    ByteReader lines(file.get());
    SkipPreamble(lines);
    FacetIntake intake(*this, static_cast<std::size_t>(m_nTotalFacet));
    FacetQueue facets(intake);
    tagFACET facet;
    auto const nextLine = [&lines] { return lines.NextLine(kFacetLine - 1); };
    // A facet that enters a model gets its normal from its corners, whatever the file says.
    while (LoadShared(m_bStopRead) == 0) {
        std::optional<GivenZ> const given = ReadFacetLines<NormalLine::kSkip>(nextLine, facet);
        if (!given) break;
        if (*given != kAllGiven) {
            // What a line does not give stays from the facet before, which has entered the model by now.
            facets.Flush();
            for (std::size_t i = 0; i < given->size(); ++i) {
                if (!(*given)[i]) facet.m_ptVertex[i].z = facets.Last().m_ptVertex[i].z;
            }
        }
        facets.Add(facet);
    }
    facets.Flush();
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
