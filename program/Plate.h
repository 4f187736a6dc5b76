#pragma once

#include <Varnet64.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "Fill.h"
#include "Slicer.h"

/// How parts are sliced. Millimetres and degrees.
struct SliceSettings {
    double dLayer = 0.2;   ///< height of a layer
    double dHatch = 0.5;   ///< from fill line to fill line
    double dAngle = 45.0;  ///< of the fill lines of the first layer; each further layer is at right angles
    double dTolerance = 0.01;  ///< by which contours may be thinned out
};

/// What came of slicing so far. Lengths and volumes in millimetres.
struct SliceFigures {
    int nLayers = 0;
    std::size_t nLoops = 0;
    std::size_t nOpenPaths = 0;
    std::size_t nPoints = 0;
    std::size_t nStrokes = 0;
    std::size_t nSupportStrokes = 0;
    double dContourLength = 0.0;
    double dVolume = 0.0;  ///< net area of the contours times the height of a layer
};

/// Parts side by side, and the solids that hold them, sliced layer by layer from below.
///
/// Layers are numbered from 1, the first one resting on the lowest point of the parts. Each is cut at half
/// its height and stands in the file at its upper side. Contours are those of the parts, a part a region, so
/// that parts may touch or overlap. Support solids have no contours: where they are, and the parts are not,
/// the layers of even numbers get fill lines, which is where readers look for them.
class Plate {
public:
    /// Models must stay as they are while they are sliced. Throws Failure where the parts have no height, or
    /// more than a million layers.
    Plate(std::vector<CSTLModel const*> const& parts, std::vector<CSTLModel const*> const& supports,
          SliceSettings const& settings);

    int LayerCount() const { return m_nLayers; }
    /// Makes the next layer: at first layer 1. Called LayerCount() times at most.
    std::unique_ptr<CLayer> NextLayer();
    SliceFigures const& Figures() const { return m_Figures; }

private:
    void AddSupports(CLayer& layer, double dMiddle, double dAngle, std::vector<FillRegion> const& parts);
    void Count(CLayer& layer);

    SliceSettings m_Settings;
    double m_dBottom = 0.0;
    int m_nLayers = 0;
    std::vector<Slicer> m_Parts;
    std::vector<Slicer> m_Supports;
    SliceFigures m_Figures;
};
