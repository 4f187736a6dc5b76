#pragma once

#include <Varnet64.h>

#include <string>
#include <vector>

// Layers as SVG pictures. Millimetres; y goes up.

/// Where the paths of a layer lie on the page: a scale in pixels a millimetre, and the box that is shown.
struct PictureFrame {
    CBoundBox2D box;
    double dScale;
};

/// A layer as an SVG group, with the lower left corner of the frame's box at the origin: material filled by
/// the nesting of the closed loops, then all paths in their order, from blue over green to red - loops
/// and open paths first, in the order of the loop list, then hatches. The layer's loop list is rebuilt, and
/// nothing else changes. Points that are not finite numbers are left out.
std::string LayerGroup(CLayer& layer, PictureFrame const& frame);

/// One part of a picture: a layer, and what is written above it.
struct PicturePanel {
    std::string title;
    CLayer* pLayer;
};

/// The box around the layers' loops and hatches, as their last GetBoundBox left it.
CBoundBox2D BoxAround(std::vector<PicturePanel> const& panels);

/// A whole picture with the panels side by side, all in one scale that shows the box, and a scale bar.
std::string LayerPicture(std::vector<PicturePanel> const& panels, CBoundBox2D const& box);
