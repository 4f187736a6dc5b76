#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "part/FlatMesh.h"
#include "varnet/Supports.h"

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

/// The facet lists of many vertices in one block, which is faster than a block for each. The vertices have
/// lost their lists when it goes: it goes before they do, and nobody adds a facet to them meanwhile.
class LentLists {
public:
    LentLists() = default;
    LentLists(LentLists&&) = default;
    LentLists& operator=(LentLists&&) = delete;
    ~LentLists();
    /// Gives each vertex, which has none, a list of so many facets, 0 for none, which the caller sets.
    /// Returns the first list; the others stand behind it in the order of the vertices.
    CFacet** Lend(std::vector<tagVertexNode*> vertices, std::span<std::int32_t const> counts);

private:
    std::vector<tagVertexNode*> m_Vertices;
    LargeVector<CFacet*> m_Facets;
};

/// Whether the lists of a model's vertices are the vertices' own, as a host takes them, or lent, for work
/// that adds no facets and looks for no vertex: its tree holds the vertices in any order.
enum class FacetLists { kOwn, kLent };

/// Whether triangles may stand on the same three corners: kNo is known by the caller.
enum class Copies { kNo, kMaybe };

/// A classic model, and which triangles it was made of.
struct ClassicMesh {
    std::unique_ptr<CSTLModel> model;
    std::vector<std::int32_t> triangles;  ///< of each facet of the model's surface, in its order; ascending
    LentLists lists;                      ///< the last member: it goes before the model
};

/// A classic model of these facets, in their order, in which equal corners alone are one: bit for bit what
/// CSTLModel::AddFacet makes of them with a tolerance of 0 (but for the tree's order where lists are lent).
/// Of facets on the same three corners it holds one, or none where as many face each way: these close each
/// other. Facets whose doubled area is not above kCollinear are refused.
ClassicMesh MakeClassic(std::span<Point3 const> points, std::span<Triangle const> triangles,
                        FacetLists lists = FacetLists::kOwn, Copies copies = Copies::kMaybe);

/// The model's facets, in the order of its surfaces.
FlatMesh Flatten(CSTLModel const& model);
SupportSolid FlattenSolid(CSTLModel const& model);

}  // namespace varnet
