#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <string>
#include <vector>

/// Gives each facet of a model a colour, as 0xRRGGBB. Facets that are not named are grey.
class FacetColors {
public:
    void Paint(CFeatureSurface const& surface, std::uint32_t nColor);

    struct Painted {
        CFacet const* pFacet;
        std::uint32_t nColor;
    };
    /// All facets of the model, in its order, with their colours; the last colour of a facet counts.
    std::vector<Painted> Of(CSTLModel const& model) const;

private:
    std::vector<Painted> m_Painted;
};

/// Writes the facets of the model as a PLY file, binary and little-endian, with a colour per face.
void WritePly(std::string const& file, CSTLModel const& model, FacetColors const& colors);
