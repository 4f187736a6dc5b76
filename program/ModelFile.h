#pragma once

#include <Varnet64.h>

#include <filesystem>
#include <functional>
#include <string>

/// A path as the library takes it: a char* to a zero-terminated string of 16-bit characters. Throws Failure
/// when the name is not valid text.
class WidePath {
public:
    explicit WidePath(std::filesystem::path const& path);
    char* Get() { return reinterpret_cast<char*>(m_Text.data()); }

private:
    std::u16string m_Text;
};

/// What a file is, as its content tells it, or where that tells nothing its name.
enum class FileKind { kAsciiStl, kBinaryStl, kOltp, kThreeDmf, kPlainCsm, kStripCsm, kRingCsm };

/// Throws Failure when the file cannot be read, or is none of these.
FileKind KindOf(std::string const& file);
/// "binary STL"
char const* NameOf(FileKind kind);

/// Reads a file of any kind into the model, with a progress bar, and says which it was. Throws Failure with
/// what is wrong with the file, or when the read was interrupted.
FileKind ReadModel(std::string const& file, CSTLModel& model);

/// Writes the model as binary STL. The file appears under its name only when it is complete: a failure or
/// Ctrl-C leaves what was there before. Throws Failure.
void WriteModel(CSTLModel& model, std::string const& file);

/// Writes a file of these bytes, under its name only when it is complete.
void WriteBytes(std::string const& file, std::string const& bytes);

/// Lets write() make a file beside the named one, checks its size where nBytes is not negative, and gives it
/// the name. Whatever goes wrong, write() throwing included, no half of a file stays.
void WriteWhole(std::string const& file, std::function<bool(std::filesystem::path const&)> const& write,
                long long nBytes = -1);
