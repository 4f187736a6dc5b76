#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "varnet/Export.h"

namespace varnet {

/// What an error is about.
enum class ErrorKind {
    kArgument,  ///< a setting or an argument that makes no sense; the message names the range that is meant
    kFile,      ///< the system refused: no such file, no permission, disk full
    kContent,   ///< a file was read and is not what it should be
    kCancelled  ///< a progress callback asked to stop
};

/// The one exception of the kit. what() is one line for the person at the screen, with the file's name in
/// front where there is one, and says what is wrong and, where that can be told, what to do.
///
/// After an error nothing is half done: no file is left, and no object has changed.
class VARNET_KIT_API Error : public std::runtime_error {
public:
    Error(ErrorKind kind, std::string const& message) : std::runtime_error(message), m_Kind(kind) {}
    /// "part.stl: message"; with a line or a byte "part.stl, line 12: message", "part.stl, byte 84: message".
    Error(ErrorKind kind, std::filesystem::path const& file, std::string const& message);
    static Error AtLine(std::filesystem::path const& file, std::uint64_t line, std::string const& message);
    static Error AtByte(std::filesystem::path const& file, std::uint64_t byte, std::string const& message);

    ErrorKind Kind() const { return m_Kind; }
    /// The file that it concerns; empty where none does.
    std::filesystem::path const& File() const { return m_File; }
    /// Where in the file: the line, counted from 1, or the byte, counted from 0.
    std::optional<std::uint64_t> Line() const { return m_Line; }
    std::optional<std::uint64_t> Byte() const { return m_Byte; }

private:
    ErrorKind m_Kind;
    std::filesystem::path m_File;
    std::optional<std::uint64_t> m_Line;
    std::optional<std::uint64_t> m_Byte;
};

/// Called now and then during long work with the share that is done, from 0 to 1, never decreasing. When it
/// returns false, the work stops soon (within 50 ms on any input) and throws an Error of kind kCancelled. An
/// empty one is never called. It is called by one thread at a time, not always the one that began the work.
using Progress = std::function<bool(double share)>;

}  // namespace varnet
