#include "files/File.h"

#include <cerrno>
#include <system_error>

#include "files/System.h"
#include "varnet/Error.h"

namespace varnet {

namespace fs = std::filesystem;

namespace {

// Links in a row that are followed before a circle is assumed.
constexpr int kMostLinks = 40;

// What a path names in the end, whether that is there or not.
fs::path BehindLinks(fs::path path) {
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        fs::path const next = fs::read_symlink(path, error);
        if (error) break;
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return path;
}

// A new file beside the target, whose name nobody else has.
FilePointer CreateBeside(fs::path const& target, fs::path& partial) {
    constexpr int kTries = 100;
    FilePointer file;
    for (int i = 0; i < kTries; ++i) {
        partial = target;
        partial += '.' + std::to_string(system::ProcessNumber());
        if (i > 0) partial += '-' + std::to_string(i);
        partial += ".part";
        errno = 0;
        file = OpenFile(partial, "wbx");
        if (file != nullptr || errno != EEXIST) return file;
    }
    return file;
}

// Copies a whole file to an open one. False with errno where the system fails.
bool CopyTo(fs::path const& from, std::FILE* to) {
    FilePointer const file = OpenFile(from, "rb");
    if (file == nullptr) return false;
    std::vector<char> block(std::size_t{1} << 16);
    while (std::size_t const read = std::fread(block.data(), 1, block.size(), file.get())) {
        if (std::fwrite(block.data(), 1, read, to) != read) return false;
    }
    return std::ferror(file.get()) == 0;
}

}  // namespace

FilePointer OpenFile(fs::path const& path, char const* mode) { return FilePointer(system::Open(path, mode)); }

std::string ReasonOf(int error) {
    switch (error) {
        case 0:
            return "could not be written whole";
        case ENOENT:
            return "no such file or folder";
        case ENOSPC:
            return "the disk is full";
        default:
            return std::generic_category().message(error);
    }
}

std::string TextOf(fs::path const& path) {
    std::u8string const text = path.u8string();
    return {text.begin(), text.end()};
}

// ---- reading

SeekableFile::SeekableFile(fs::path const& path) : m_Path(path) {
    std::error_code error;
    fs::path const place = system::AnyLength(path);
    if (fs::is_directory(place, error)) throw Error(ErrorKind::kFile, path, "is a folder");
    errno = 0;
    m_File = OpenFile(path, "rb");
    if (m_File == nullptr) {
        throw Error(ErrorKind::kFile, path,
                    errno == ENOENT ? "no such file" : "cannot be opened: " + ReasonOf(errno));
    }
    m_Size = fs::file_size(place, error);
    if (error || !fs::is_regular_file(place, error)) {
        throw Error(ErrorKind::kFile, path, "is no plain file (a pipe or a device cannot be read here)");
    }
}

std::size_t SeekableFile::ReadAt(std::uint64_t place, std::span<char> bytes) {
    if (place != m_Place && !system::Seek(m_File.get(), place)) {
        throw Error(ErrorKind::kFile, m_Path, "cannot be read: " + ReasonOf(errno));
    }
    std::size_t const read = std::fread(bytes.data(), 1, bytes.size(), m_File.get());
    m_Place = place + read;
    if (std::ferror(m_File.get()) != 0) {
        throw Error(ErrorKind::kFile, m_Path, "cannot be read: " + ReasonOf(errno));
    }
    std::clearerr(m_File.get());
    return read;
}

std::vector<char> ReadWhole(fs::path const& path, std::uint64_t most) {
    SeekableFile file(path);
    if (file.Size() > most) {
        throw Error(ErrorKind::kContent, path, "is larger than " + std::to_string(most) + " bytes");
    }
    std::vector<char> bytes(static_cast<std::size_t>(file.Size()));
    bytes.resize(file.ReadAt(0, bytes));
    return bytes;
}

// ---- writing

OutputFile::OutputFile(fs::path const& target)
    : m_Shown(target), m_Target(BehindLinks(system::AnyLength(target))) {
    std::error_code error;
    if (target == "-") {
        m_Replacing = false;
        m_File = system::BinaryOutput();
        return;
    }
    fs::file_status const status = fs::status(m_Target, error);
    if (fs::is_directory(status)) throw Error(ErrorKind::kFile, m_Shown, "is a folder");
    m_Replacing = !fs::exists(status) || fs::is_regular_file(status);
    m_Owned = m_Replacing ? CreateBeside(m_Target, m_Partial) : OpenFile(m_Target, "wb");
    if (m_Owned == nullptr) throw Error(ErrorKind::kFile, m_Shown, "cannot be created: " + ReasonOf(errno));
    m_File = m_Owned.get();
    if (m_Replacing && fs::exists(status)) system::TakeOver(m_Target, m_File);
}

OutputFile::~OutputFile() {
    m_Owned.reset();
    std::error_code ignored;
    if (!m_Done && !m_Partial.empty()) fs::remove(m_Partial, ignored);
}

void OutputFile::Fail(int error) {
    throw Error(ErrorKind::kFile, m_Shown, "could not be written whole: " + ReasonOf(error));
}

void OutputFile::Write(std::string_view bytes) {
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_File) != bytes.size()) Fail(errno);
    m_Written += bytes.size();
}

void OutputFile::Overwrite(std::uint64_t place, std::span<char const> bytes) {
    errno = 0;
    bool const done = std::fflush(m_File) == 0 && system::Seek(m_File, place) &&
                      std::fwrite(bytes.data(), 1, bytes.size(), m_File) == bytes.size() &&
                      std::fflush(m_File) == 0 && system::Seek(m_File, m_Written);
    if (!done) Fail(errno);
}

// Standard output has no name that every system opens: what is meant for it waits in a file until Commit.
fs::path const& OutputFile::PathForWriter() {
    if (m_File == stdout && m_Partial.empty()) {
        std::error_code error;
        m_Owned = CreateBeside(fs::temp_directory_path(error) / "varnet", m_Partial);
        if (m_Owned == nullptr) Fail(errno);
    }
    // A pipe stays open: whoever reads from it would take the first close for the end.
    if (m_Replacing || m_File == stdout) m_Owned.reset();
    if (m_File == stdout) return m_Partial;
    m_File = nullptr;
    return m_Replacing ? m_Partial : m_Target;
}

void OutputFile::Commit() {
    errno = 0;
    bool const toOutput = m_File == stdout;
    if (toOutput && !m_Partial.empty() && !CopyTo(m_Partial, stdout)) Fail(errno);
    if (m_File != nullptr && std::fflush(m_File) != 0) Fail(errno);
    if (m_Owned != nullptr && std::fclose(m_Owned.release()) != 0) Fail(errno);
    m_File = nullptr;
    if (toOutput) return;
    std::error_code error;
    if (!m_Partial.empty()) fs::rename(m_Partial, m_Target, error);
    if (error) throw Error(ErrorKind::kFile, m_Shown, "cannot be written: " + system::ReasonOf(error));
    m_Done = true;
}

void WriteWhole(fs::path const& path, std::string_view bytes) {
    OutputFile file(path);
    file.Write(bytes);
    file.Commit();
}

}  // namespace varnet
