#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "part/Bytes.h"
#include "part/InputFile.h"
#include "varnet/Geometry.h"

namespace varnet {

/// What a file holds of whole models, one behind the other: some programs write a solid each. Each has a
/// header, a number of facets above 0, and so many.
struct StlModels {
    std::uint64_t models = 0;
    std::uint64_t facets = 0;  ///< of all of them
    std::uint64_t bytes = 0;   ///< to the end of the last one
};

/// Looks at the header of each model. The file's position is anywhere then.
StlModels FindModels(InputFile& file, std::size_t headerSize);

/// The records of a binary STL file, or of the format that differs from it in the length of its header, one
/// block of them after the other. Where models stand one behind the other, those of all of them.
class StlRecords {
public:
    static constexpr std::size_t kRecord = 50;

    /// Goes to the beginning of the file, which is long enough for a header of so many bytes and a number.
    StlRecords(InputFile& file, std::size_t headerSize);

    /// Of the first model, up to its first zero byte, without spaces and line ends behind.
    std::string const& Header() const { return m_Header; }
    /// Above 1 where models stand one behind the other.
    std::uint64_t Models() const { return m_Models; }
    std::uint64_t Announced() const { return m_Announced; }
    /// What is announced, but no more than the file can hold.
    std::uint64_t Count() const { return m_Count; }
    /// How many blocks that were handed out have held.
    std::uint64_t Done() const { return m_Done; }
    /// The bytes of the next records; none behind the last one. Throws Error of kind kFile.
    std::span<char const> NextBlock();

    /// Number 0 to 8 of a record: x, y and z of its corners.
    static float NumberOf(char const* record, std::size_t number) {
        return LoadF32(record + kCorners + 4 * number);
    }
    /// Corner 0, 1 or 2 of a record.
    static Point3 CornerOf(char const* record, std::size_t corner) {
        return {NumberOf(record, 3 * corner), NumberOf(record, 3 * corner + 1),
                NumberOf(record, 3 * corner + 2)};
    }

private:
    static constexpr std::size_t kCorners = 12;  // behind the normal

    std::uint64_t ReadNumber();

    InputFile& m_File;
    std::size_t m_HeaderSize;
    std::string m_Header;
    std::uint64_t m_Models = 0;
    std::uint64_t m_Announced = 0;
    std::uint64_t m_Count = 0;
    std::uint64_t m_Done = 0;
    std::uint64_t m_Left = 0;  // in the model that is being read
    std::vector<char> m_Block;
};

}  // namespace varnet
