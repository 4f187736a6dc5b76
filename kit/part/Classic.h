#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "part/FlatMesh.h"

namespace varnet {

/// A path as the classic model takes it: a char* to a zero-terminated string of 16-bit characters. Throws an
/// Error of kind kArgument when the name is not valid text.
class ClassicPath {
public:
    explicit ClassicPath(std::filesystem::path const& path);
    char* Get() { return reinterpret_cast<char*>(m_Text.data()); }

private:
    std::u16string m_Text;
};

/// A classic model, and which triangles it was made of.
struct ClassicMesh {
    std::unique_ptr<CSTLModel> model;
    std::vector<std::int32_t> triangles;  ///< of each facet of the model's surface, in its order; ascending
};

/// A classic model of these facets, in their order, in which equal corners alone are one: bit for bit what
/// CSTLModel::AddFacet makes of them with a tolerance of 0. Of facets on the same three corners it holds one,
/// or none where as many face each way: these close each other. Facets whose doubled area is not above
/// kCollinear are refused.
ClassicMesh MakeClassic(std::span<Point3 const> points, std::span<Triangle const> triangles);

/// The model's facets, in the order of its surfaces.
FlatMesh Flatten(CSTLModel const& model);

}  // namespace varnet
