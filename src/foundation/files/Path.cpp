#include "foundation/files/Path.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "foundation/Require.h"
#include "foundation/files/FilePosition.h"

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
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

// Longer paths are taken only whole and behind a prefix. A folder's may have 12 characters less than a file's
// 260, and the system counts what it makes of a relative one.
constexpr std::size_t kLongPath = 248;

std::wstring AnyLength(std::wstring const& path) {
    if (path.starts_with(LR"(\\?\)") || path.starts_with(LR"(\\.\)")) return path;
    DWORD const nRoom = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring whole(nRoom, L'\0');
    whole.resize(nRoom == 0 ? 0 : GetFullPathNameW(path.c_str(), nRoom, whole.data(), nullptr));
    if (whole.size() < kLongPath) return path;
    return whole.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + whole.substr(1) : LR"(\\?\)" + whole;
}

bool IsRegular(FILE* pFile) {
    return GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(pFile)))) == FILE_TYPE_DISK;
}

// Without translation of line ends in either direction, so that files are the same on every system.
File OpenNative(std::u16string const& path, char const* pMode) {
    std::wstring const name = AnyLength(std::wstring(path.begin(), path.end()));
    bool const bRead = *pMode == 'r';
    File file(_wfopen(name.c_str(), bRead ? L"rb" : L"wb"));
    if (file != nullptr && bRead && !IsRegular(file.get())) return nullptr;
    return file;
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
