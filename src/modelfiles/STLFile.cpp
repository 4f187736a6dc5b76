// Telling the kinds of STL files apart, and the operations on files of either kind.

#include <algorithm>
#include <array>
#include <cstring>

#include "foundation/files/Path.h"
#include "mesh/STLModel.h"
#include "modelfiles/StoredName.h"

using namespace varnet;

namespace {

constexpr int kUnknownType = 0;
constexpr int kAsciiType = 1;
constexpr int kBinaryType = 2;

constexpr int kHeaderLen = 80;

// Only so many bytes from the start of a file are looked at to tell its kind.
constexpr std::int32_t kLookedAt = 256;

}  // namespace

int CSTLModel::GetSTLType(char* pszPath) {
    File const file = OpenPath(pszPath, "rb");
    if (file == nullptr) return kUnknownType;
    std::int32_t const nSize = FileSize(file.get());
    if (nSize < kHeaderLen) return kUnknownType;
    std::array<unsigned char, kLookedAt> bytes{};
    auto const nBytes = static_cast<std::size_t>(std::min(nSize, kLookedAt));
    if (std::fread(bytes.data(), 1, nBytes, file.get()) != nBytes) return kUnknownType;
    bool const bHighByte =
        std::any_of(bytes.begin() + kHeaderLen, bytes.begin() + static_cast<std::ptrdiff_t>(nBytes),
                    [](unsigned char byte) { return byte >= 0x80; });
    return bHighByte ? kBinaryType : kAsciiType;
}

int CSTLModel::ReadSTLFile(char* pszPath, int bCountOnly) {
    m_Status.m_nFileType = GetSTLType(pszPath);
    StoreFileName(pszPath, m_Status);
    if (m_Status.m_nFileType == kAsciiType) return ReadSTLASCII(pszPath, bCountOnly);
    if (m_Status.m_nFileType == kBinaryType) return ReadSTLBINARY(pszPath, bCountOnly, kHeaderLen);
    return 0;
}

void CSTLModel::ReadSTLHeader(char* pszPath) {
    File const file = OpenPath(pszPath, "r");
    if (file == nullptr) return;
    std::fread(m_Status.m_szHeader, 1, kHeaderLen, file.get());
}

int CSTLModel::SaveSTLFile(char* pszPath, int nType) {
    if (nType != kBinaryType || pszPath == nullptr) return 0;
    if (pszPath[0] != '\0') return SaveSTLBINARY(pszPath);
    // The stored name ends in one zero byte, a path in two: a name that fills its field ends behind it.
    std::array<char, sizeof m_Status.m_szFileName + 2> name{};
    std::memcpy(name.data(), m_Status.m_szFileName, sizeof m_Status.m_szFileName);
    return SaveSTLBINARY(name.data());
}
