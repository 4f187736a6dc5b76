#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Ply.h"

/// A model in a picture: its facets with their colours, and how much it hides of what is behind it, up to 1.
struct PicturedModel {
    std::vector<FacetColors::Painted> facets;
    double dOpacity = 1.0;
};

PicturedModel InOneColor(CSTLModel const& model, std::uint32_t nColor, double dOpacity = 1.0);

/// A picture of the models, seen from the front, the right and above, in parallel projection: an SVG document
/// of some hundred pixels a side, without a background. Facets that look away are left out; the others are
/// shaded by their slope, and drawn over each other from the back to the front, with lines along edges where
/// the surface bends sharply or ends.
std::string DrawMeshes(std::vector<PicturedModel> const& models, std::string const& title);
