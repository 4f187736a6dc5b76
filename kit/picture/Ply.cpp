#include <bit>
#include <string>

#include "files/File.h"
#include "varnet/Error.h"
#include "varnet/Picture.h"

namespace varnet {

namespace {

// Numbers as a PLY file of format binary_little_endian holds them.
void AddByte(std::string& bytes, std::uint32_t n) { bytes.push_back(static_cast<char>(n & 0xFF)); }

void AddWord(std::string& bytes, std::uint32_t n) {
    for (int shift : {0, 8, 16, 24}) AddByte(bytes, n >> shift);
}

void AddFloat(std::string& bytes, double value) {
    AddWord(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
}

}  // namespace

void WriteBytes(std::filesystem::path const& path, std::string_view bytes) { WriteWhole(path, bytes); }

void WritePly(std::filesystem::path const& path, std::span<Point3 const> points,
              std::span<Triangle const> triangles, std::span<std::uint32_t const> colors) {
    if (colors.size() != triangles.size()) {
        throw Error(ErrorKind::kArgument, path,
                    std::to_string(colors.size()) + " colours were given for " +
                        std::to_string(triangles.size()) + " triangles");
    }
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " +
                        std::to_string(points.size()) +
                        "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                        std::to_string(triangles.size()) +
                        "\nproperty list uchar int vertex_indices\nproperty uchar red\nproperty uchar green\n"
                        "property uchar blue\nend_header\n";
    bytes.reserve(bytes.size() + 12 * points.size() + 16 * triangles.size());
    for (Point3 const& p : points) {
        for (double const value : {p.x, p.y, p.z}) AddFloat(bytes, value);
    }
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        AddByte(bytes, 3);
        for (std::int32_t const corner : triangles[i]) AddWord(bytes, static_cast<std::uint32_t>(corner));
        for (int const shift : {16, 8, 0}) AddByte(bytes, colors[i] >> shift);
    }
    WriteWhole(path, bytes);
}

}  // namespace varnet
