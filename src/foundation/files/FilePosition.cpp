#include "foundation/files/FilePosition.h"

#if !defined(_WIN32)
#include <sys/types.h>
#endif

namespace varnet {

namespace {

bool Seek(FILE* pFile, std::int64_t nOffset, int nOrigin) {
#if defined(_WIN32)
    return _fseeki64(pFile, nOffset, nOrigin) == 0;
#else
    return fseeko(pFile, static_cast<off_t>(nOffset), nOrigin) == 0;
#endif
}

}  // namespace

std::int64_t FilePosition(FILE* pFile) {
#if defined(_WIN32)
    return _ftelli64(pFile);
#else
    return ftello(pFile);
#endif
}

bool SetFilePosition(FILE* pFile, std::int64_t nPosition) { return Seek(pFile, nPosition, SEEK_SET); }

std::int64_t FileLength(FILE* pFile) {
    std::int64_t const nPosition = FilePosition(pFile);
    if (nPosition < 0 || !Seek(pFile, 0, SEEK_END)) return -1;
    std::int64_t const nLength = FilePosition(pFile);
    SetFilePosition(pFile, nPosition);
    return nLength;
}

}  // namespace varnet
