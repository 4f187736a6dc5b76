// Binary STL: a header, the number of facets, and records of a normal, three corners and two bytes.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "part/Bytes.h"
#include "part/FacetSink.h"
#include "part/MeshReaders.h"

namespace varnet {

namespace {

constexpr std::size_t kRecord = 50;
constexpr std::size_t kCorners = 12;  // behind the normal
constexpr std::size_t kBlockRecords = 1024;

Point3 LoadPoint(char const* bytes) { return {LoadF32(bytes), LoadF32(bytes + 4), LoadF32(bytes + 8)}; }

std::string HeaderText(std::string header) {
    header.resize(std::min(header.size(), header.find('\0')));
    while (!header.empty() && (header.back() == ' ' || header.back() == '\n')) header.pop_back();
    return header;
}

}  // namespace

RawMesh ReadBinaryStl(Reading& reading, std::size_t headerSize) {
    RawMesh raw;
    raw.format = headerSize == 80 ? MeshFormat::kBinaryStl : MeshFormat::kOltp;
    std::string header(headerSize, '\0');
    reading.file.Read(header);
    raw.header = HeaderText(std::move(header));
    std::array<char, 4> number{};
    reading.file.Read(number);
    std::uint64_t const announced = LoadU32(number.data());
    std::uint64_t const held = (reading.file.Size() - headerSize - 4) / kRecord;
    auto const facets = static_cast<std::size_t>(std::min(announced, held));
    reading.report.facetsInFile = static_cast<std::int64_t>(announced);

    FacetSink sink(raw, reading.report, reading.settings.scale, facets);
    std::vector<char> block(kBlockRecords * kRecord);
    for (std::size_t done = 0; done < facets;) {
        reading.pace.Step(done, facets);
        std::size_t const wanted = std::min(kBlockRecords, facets - done);
        std::size_t const read = reading.file.Read(std::span(block).first(wanted * kRecord)) / kRecord;
        if (read < wanted)
            throw Error(ErrorKind::kFile, reading.file.Path(), "has become shorter while read");
        for (char const* p = block.data(); p != block.data() + read * kRecord; p += kRecord) {
            sink.Add(LoadPoint(p + kCorners), LoadPoint(p + kCorners + 12), LoadPoint(p + kCorners + 24));
        }
        done += read;
    }
    sink.Flush();
    return raw;
}

}  // namespace varnet
