// Binary STL: a header, the number of facets, and records of a normal, three corners and two bytes.

#include <algorithm>
#include <array>

#include "part/FacetSink.h"
#include "part/MeshReaders.h"
#include "part/StlRecords.h"

namespace varnet {

namespace {

constexpr std::size_t kBlockRecords = 1024;

std::string HeaderText(std::string header) {
    header.resize(std::min(header.size(), header.find('\0')));
    while (!header.empty() && (header.back() == ' ' || header.back() == '\n')) header.pop_back();
    return header;
}

}  // namespace

StlRecords::StlRecords(InputFile& file, std::size_t headerSize)
    : m_File(file), m_Block(kBlockRecords * kRecord) {
    file.Seek(0);
    std::string header(headerSize, '\0');
    file.Read(header);
    m_Header = HeaderText(std::move(header));
    std::array<char, 4> number{};
    file.Read(number);
    m_Announced = LoadU32(number.data());
    m_Count = std::min(m_Announced, (file.Size() - headerSize - 4) / kRecord);
}

std::span<char const> StlRecords::NextBlock() {
    auto const wanted =
        kRecord * static_cast<std::size_t>(std::min<std::uint64_t>(kBlockRecords, m_Count - m_Done));
    if (m_File.Read(std::span(m_Block).first(wanted)) < wanted) {
        throw Error(ErrorKind::kFile, m_File.Path(), "has become shorter while read");
    }
    m_Done += wanted / kRecord;
    return std::span(m_Block).first(wanted);
}

RawMesh ReadBinaryStl(Reading& reading, std::size_t headerSize) {
    RawMesh raw;
    raw.format = headerSize == 80 ? MeshFormat::kBinaryStl : MeshFormat::kOltp;
    StlRecords records(reading.file, headerSize);
    raw.header = records.Header();
    auto const facets = static_cast<std::size_t>(records.Count());
    reading.report.facetsInFile = static_cast<std::int64_t>(records.Announced());
    FacetSink sink(raw, reading.report, reading.settings.scale, facets);
    while (records.Done() < facets) {
        reading.pace.Step(static_cast<std::size_t>(records.Done()), facets);
        std::span<char const> const block = records.NextBlock();
        for (std::size_t at = 0; at < block.size(); at += StlRecords::kRecord) {
            char const* const record = block.data() + at;
            sink.Add(StlRecords::CornerOf(record, 0), StlRecords::CornerOf(record, 1),
                     StlRecords::CornerOf(record, 2));
        }
    }
    sink.Flush();
    return raw;
}

}  // namespace varnet
