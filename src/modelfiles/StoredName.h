#pragma once

#include <cstddef>

#include "mesh/STLModel.h"

namespace varnet {

/// Keeps the path in m_szFileName: byte by byte up to its first zero byte, which for 16-bit characters of the
/// Latin range is the second byte. A path that does not fit is cut; a null path is an empty one.
inline void StoreFileName(char const* pszPath, tagSTLStatus& status) {
    std::size_t i = 0;
    if (pszPath != nullptr) {
        for (; i + 1 < sizeof status.m_szFileName && pszPath[i] != '\0'; ++i) {
            status.m_szFileName[i] = pszPath[i];
        }
    }
    status.m_szFileName[i] = '\0';
}

}  // namespace varnet
