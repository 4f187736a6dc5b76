#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

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

/// A folder of its own for a test, which goes with the object.
class TestFolder {
public:
    TestFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "varnet-test-XXXXXX").string();
        m_Path = ::mkdtemp(pattern.data());
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

inline std::string ReadBytes(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}
