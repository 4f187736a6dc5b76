#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

// Files of the tests, and paths as the library takes them.

/// A path as the library takes it: a char* to a zero-terminated string of 16-bit characters. Alive as long as
/// the object.
class WidePath {
public:
    explicit WidePath(std::filesystem::path const& path) : m_Text(path.u16string()) {}
    operator char*() { return reinterpret_cast<char*>(m_Text.data()); }

private:
    std::u16string m_Text;
};

/// What the path of a test's folder is as a string of bytes, when it is handed over in 16-bit characters: the
/// first character alone, since the second byte of a Latin one is 0.
inline std::string const kPathStart = std::filesystem::temp_directory_path().string().substr(0, 1);

/// A folder of its own for a test, which goes with the object.
class TestFolder {
public:
    TestFolder() {
        std::random_device random;
        do {
            m_Path = std::filesystem::temp_directory_path() / ("varnet-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_Path));
    }
    TestFolder(TestFolder const&) = delete;
    TestFolder& operator=(TestFolder const&) = delete;
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_Path, ignored);
    }
    std::filesystem::path operator/(std::string const& name) const { return m_Path / name; }
    std::filesystem::path const& Path() const { return m_Path; }

    /// Writes a file of these bytes, and returns its path.
    std::filesystem::path Write(std::string const& name, std::string const& bytes) const {
        std::ofstream(m_Path / name, std::ios::binary) << bytes;
        return m_Path / name;
    }

private:
    std::filesystem::path m_Path;
};

/// The two ends of a new pipe, for bytes: the first is read from.
inline std::array<int, 2> OpenPipe() {
    std::array<int, 2> ends{};
#if defined(_WIN32)
    bool const bOpen = _pipe(ends.data(), 1 << 16, _O_BINARY) == 0;
#else
    bool const bOpen = ::pipe(ends.data()) == 0;
#endif
    if (!bOpen) std::abort();
    return ends;
}

/// As the system's write.
inline std::ptrdiff_t WriteSome(int nHandle, char const* pBytes, std::size_t nSize) {
#if defined(_WIN32)
    return _write(nHandle, pBytes, static_cast<unsigned>(nSize));
#else
    return ::write(nHandle, pBytes, nSize);
#endif
}

inline std::string ReadBytes(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}
