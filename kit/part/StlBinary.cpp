// Binary STL: a header, the number of facets, and records of a normal, three corners and two bytes.

#include <algorithm>
#include <array>

#include "part/FacetSink.h"
#include "part/MeshReaders.h"
#include "part/StlRecords.h"

namespace varnet {

namespace {

constexpr std::size_t kBlockRecords = 1024;
constexpr std::size_t kNumber = 4;  // bytes of the number of facets

std::string HeaderText(std::string header) {
    header.resize(std::min(header.size(), header.find('\0')));
    while (!header.empty() && (header.back() == ' ' || header.back() == '\n')) header.pop_back();
    return header;
}

}  // namespace

StlModels FindModels(InputFile& file, std::size_t headerSize) {
    StlModels found;
    while (file.Size() - found.bytes >= headerSize + kNumber) {
        std::array<char, kNumber> number{};
        file.Seek(found.bytes + headerSize);
        if (file.Read(number) < number.size()) break;
        std::uint64_t const facets = LoadU32(number.data());
        std::uint64_t const bytes = headerSize + kNumber + StlRecords::kRecord * facets;
        if (facets == 0 || bytes > file.Size() - found.bytes) break;
        found = {found.models + 1, found.facets + facets, found.bytes + bytes};
    }
    return found;
}

StlRecords::StlRecords(InputFile& file, std::size_t headerSize)
    : m_File(file), m_HeaderSize(headerSize), m_Block(kBlockRecords * kRecord) {
    StlModels const found = FindModels(file, headerSize);
    m_Models = found.models;
    file.Seek(0);
    std::string header(headerSize, '\0');
    file.Read(header);
    m_Header = HeaderText(std::move(header));
    m_Announced = ReadNumber();
    m_Count = std::min(m_Announced, (file.Size() - headerSize - kNumber) / kRecord);
    m_Left = m_Count;
    if (m_Models > 1) m_Announced = m_Count = found.facets;
}

std::uint64_t StlRecords::ReadNumber() {
    std::array<char, kNumber> number{};
    m_File.Read(number);
    return LoadU32(number.data());
}

std::span<char const> StlRecords::NextBlock() {
    if (m_Left == 0 && m_Done < m_Count) {
        m_File.Seek(m_File.Position() + m_HeaderSize);
        m_Left = std::min(ReadNumber(), m_Count - m_Done);
        if (m_Left == 0) throw Error(ErrorKind::kFile, m_File.Path(), "has changed while read");
    }
    auto const wanted = kRecord * static_cast<std::size_t>(std::min<std::uint64_t>(kBlockRecords, m_Left));
    if (m_File.Read(std::span(m_Block).first(wanted)) < wanted) {
        throw Error(ErrorKind::kFile, m_File.Path(), "has become shorter while read");
    }
    m_Left -= wanted / kRecord;
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
    if (records.Models() > 1) {
        reading.report.notes.push_back(std::to_string(records.Models()) + " models, one behind the other");
    }
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
