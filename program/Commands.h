#pragma once

#include <string>
#include <vector>

// The commands of the varnet program. Each prints its result to standard output, and throws Failure when it
// cannot do its work, and UsageError when it
// was asked for something that there is not.

struct InfoOptions {
    std::vector<std::string> files;
    bool bJson = false;
};
void RunInfo(InfoOptions const& options);

struct RepairOptions {
    std::string input;
    std::string output;
};
void RunRepair(RepairOptions const& options);

struct SplitOptions {
    std::string input;
    std::string folder;
};
void RunSplit(SplitOptions const& options);

struct SurfacesOptions {
    std::string input;
    std::string output;  // empty: no picture
    std::string judge = "normal";
};
void RunSurfaces(SurfacesOptions const& options);

// Angles in degrees, lengths in millimetres.
struct SupportOptions {
    std::string input;
    std::string output;
    std::string ply;  // empty: no picture
    double dAngle = 45.0;
    std::string connect = "edge";
    double dMinArea = 1.0;
    double dDown = 0.0;     // 0: down to the plate
    bool bToPlate = false;  // says what dDown says anyway
    double dEdgesUp = 45.0;
    double dEdgesDown = 45.0;
    double dEdgeLength = 1.0;
    bool bJson = false;
};
void RunSupport(SupportOptions const& options);

// Lengths in millimetres, the angle in degrees.
struct SliceOptions {
    std::vector<std::string> inputs;
    std::string output;
    double dLayer = 0.2;
    double dHatch = 0.5;
    double dAngle = 45.0;
    bool bSupport = false;
    bool bOrder = false;
    bool bSplice = false;
    std::string mode = "binary";
};
void RunSlice(SliceOptions const& options);

struct ConvertOptions {
    std::string input;
    std::string output;
    bool bFloats = false;
    bool bRing = false;
    bool bPlain = false;
    std::string header;  ///< file with the header of a CSM file in strips; none when empty
    std::string mode;    ///< of a slice file: ascii, binary or coc; that of the input when empty
};
void RunConvert(ConvertOptions const& options);
/// The same from slice file to slice file.
void RunConvertSlices(ConvertOptions const& options);

struct LayersOptions {
    std::string input;
    bool bJson = false;
    std::string svg;  ///< folder for pictures; none when empty
    int nLayer = 0;   ///< the only one to show; 0 for all
    double dLimit = 64.0;
};
void RunLayers(LayersOptions const& options);

struct OrderOptions {
    std::string input;
    std::string output;
    std::string hatches = "near";  ///< near, far or random
    std::string loops = "near";
    bool bSplice = false;
    double dWidth = 0.0;  ///< millimetres, like the cut
    double dCut = 0.0;
    std::vector<double> start = {0.0, 0.0};
    unsigned nSeed = 1;
    std::string svg;  ///< folder for pictures; none when empty
};
void RunOrder(OrderOptions const& options);

struct DemoOptions {
    std::string folder = "varnet-demo";
};
void RunDemo(DemoOptions const& options);
