#include "foundation/Path.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "foundation/FilePosition.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

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

bool IsDirectory(FILE* pFile) {
    struct stat status;
    return fstat(fileno(pFile), &status) == 0 && S_ISDIR(status.st_mode);
}

File OpenNative(std::u16string const& path, char const* pMode) {
    File file(std::fopen(ToUtf8(path).c_str(), pMode));
    if (file != nullptr && IsDirectory(file.get())) file.reset();
    return file;
}

#endif

}  // namespace

File OpenPath(char const* pszPath, char const* pMode, std::size_t nMaxBytes) {
    if (pszPath == nullptr) return nullptr;
    return OpenNative(ReadPath(pszPath, nMaxBytes), pMode);
}

std::int32_t FileSize(FILE* pFile) {
    if (pFile == nullptr) return -1;
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(FileLength(pFile), 0, kLargest));
}
