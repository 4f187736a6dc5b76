#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace varnet::system {

// What each operating system does in its own way.

/// The path as the system takes it at any length. On Windows a path of about 250 characters and more is made
/// absolute and gets the prefix that lifts the limit of 260; anywhere else the path comes back as it is.
std::filesystem::path AnyLength(std::filesystem::path const& path);

/// As std::fopen, with a path in any alphabet and of any length, and with the x of the mode on every system:
/// fails with EEXIST where the file is there. A mode without b is one with b: bytes stay as they are. Null on
/// failure, with errno.
std::FILE* Open(std::filesystem::path const& path, char const* mode);

/// A new file in the folder, to write and to read, that nobody else can open and that is gone when it is
/// closed, however the process ends: it has no name, or on Windows one that the system removes with its last
/// handle. Null on failure, with errno.
std::FILE* OpenNameless(std::filesystem::path const& folder);

/// Goes to a place in the file, in 64 bits. False on failure, with errno.
bool Seek(std::FILE* file, std::uint64_t place);

/// The number of this process.
int ProcessNumber();

/// Gives an open file the owner and the mode of another, where the system has such. An owner who may not be
/// set is left out: the file is ours then.
void TakeOver(std::filesystem::path const& other, std::FILE* file);

/// Standard output for bytes that stay as they are.
std::FILE* BinaryOutput();

/// What went wrong, in the words of errno on every system, whatever the language that it is set to.
std::string ReasonOf(std::error_code const& error);

}  // namespace varnet::system
