#include "foundation/files/Path.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "foundation/Require.h"
#include "foundation/files/FilePosition.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace varnet {

namespace {

std::u16string ReadPath(char const* pszPath, std::size_t nMaxBytes) {
    std::u16string path;
    for (std::size_t i = 0; i + sizeof(char16_t) <= nMaxBytes; i += sizeof(char16_t)) {
        char16_t character = 0;
        std::memcpy(&character, pszPath + i, sizeof character);
        if (character == 0) break;
        path += character;
    }
    return path;
}

#if defined(_WIN32)

File OpenNative(std::u16string const& path, char const* pMode) {
    std::wstring const name(path.begin(), path.end());
    std::wstring const mode(pMode, pMode + std::strlen(pMode));
    return File(_wfopen(name.c_str(), mode.c_str()));
}

#else

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void AppendUtf8(std::string& text, char32_t c) {
    auto const byte = [](char32_t bits) { return static_cast<char>(static_cast<unsigned char>(bits)); };
    if (c < 0x80) {
        text += byte(c);
    } else if (c < 0x800) {
        text += byte(0xC0 | c >> 6);
        text += byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        text += byte(0xE0 | c >> 12);
        text += byte(0x80 | (c >> 6 & 0x3F));
        text += byte(0x80 | (c & 0x3F));
    } else {
        text += byte(0xF0 | c >> 18);
        text += byte(0x80 | (c >> 12 & 0x3F));
        text += byte(0x80 | (c >> 6 & 0x3F));
        text += byte(0x80 | (c & 0x3F));
    }
}

std::string ToUtf8(std::u16string const& path) {
    std::string text;
    for (std::size_t i = 0; i < path.size(); ++i) {
        char32_t c = path[i];
        if (IsHighSurrogate(path[i]) && i + 1 < path.size() && IsLowSurrogate(path[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (path[i + 1] - char32_t{0xDC00});
            ++i;
        }
        AppendUtf8(text, c);
    }
    return text;
}

bool IsRegular(int nHandle) {
    struct stat status;
    return fstat(nHandle, &status) == 0 && S_ISREG(status.st_mode);
}

// A pipe that nobody has open at its other end must not keep the program waiting: opening does not block,
// what follows does.
int OpenHandle(char const* pName, bool bRead) {
    int const nFlags = bRead ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
    int const nHandle = open(pName, nFlags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (nHandle < 0) return nHandle;
    if (bRead ? IsRegular(nHandle) : fcntl(nHandle, F_SETFL, 0) == 0) return nHandle;
    close(nHandle);
    return -1;
}

File OpenNative(std::u16string const& path, char const* pMode) {
    int const nHandle = OpenHandle(ToUtf8(path).c_str(), *pMode == 'r');
    if (nHandle < 0) return nullptr;
    File file(fdopen(nHandle, pMode));
    if (file == nullptr) close(nHandle);
    return file;
}

#endif

}  // namespace

File OpenPath(char const* pszPath, char const* pMode, std::size_t nMaxBytes) {
    VARNET_REQUIRE(*pMode == 'r' || *pMode == 'w');
    if (pszPath == nullptr) return nullptr;
    return OpenNative(ReadPath(pszPath, nMaxBytes), pMode);
}

std::int32_t FileSize(FILE* pFile) {
    if (pFile == nullptr) return -1;
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(FileLength(pFile), 0, kLargest));
}

}  // namespace varnet
