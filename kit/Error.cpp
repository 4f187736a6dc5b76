#include "varnet/Error.h"

#include <string>

namespace varnet {

namespace {

// The path as UTF-8, for a message.
std::string NameOf(std::filesystem::path const& file) {
    std::u8string const name = file.u8string();
    return {name.begin(), name.end()};
}

}  // namespace

Error::Error(ErrorKind kind, std::filesystem::path const& file, std::string const& message)
    : std::runtime_error(NameOf(file) + ": " + message), m_Kind(kind), m_File(file) {}

Error Error::AtLine(std::filesystem::path const& file, std::uint64_t line, std::string const& message) {
    Error error(ErrorKind::kContent, NameOf(file) + ", line " + std::to_string(line) + ": " + message);
    error.m_File = file;
    error.m_Line = line;
    return error;
}

Error Error::AtByte(std::filesystem::path const& file, std::uint64_t byte, std::string const& message) {
    Error error(ErrorKind::kContent, NameOf(file) + ", byte " + std::to_string(byte) + ": " + message);
    error.m_File = file;
    error.m_Byte = byte;
    return error;
}

}  // namespace varnet
