#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

/// A file in memory with the bytes of an input, and its path as the library takes it.
class MemoryFile {
public:
    MemoryFile(std::uint8_t const* pData, std::size_t nSize) : m_nHandle(memfd_create("input", 0)) {
        if (m_nHandle < 0 || write(m_nHandle, pData, nSize) != static_cast<ssize_t>(nSize)) std::abort();
        m_Name = "/proc/self/fd/" + std::to_string(m_nHandle);
        m_Path.assign(m_Name.begin(), m_Name.end());
    }
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;
    ~MemoryFile() { close(m_nHandle); }
    std::string const& Name() const { return m_Name; }
    char* Path() { return reinterpret_cast<char*>(m_Path.data()); }

private:
    int m_nHandle;
    std::string m_Name;
    std::u16string m_Path;
};

/// Takes values from the bytes of an input, and zeros when they are used up.
class ByteSource {
public:
    ByteSource(std::uint8_t const* pData, std::size_t nSize) : m_pData(pData), m_nLeft(nSize) {}
    bool IsEmpty() const { return m_nLeft == 0; }
    template <class T>
    T Take() {
        T value{};
        std::size_t const n = m_nLeft < sizeof value ? m_nLeft : sizeof value;
        if (n > 0) std::memcpy(&value, m_pData, n);
        m_pData += n;
        m_nLeft -= n;
        return value;
    }

private:
    std::uint8_t const* m_pData;
    std::size_t m_nLeft;
};
