// A program on the kit as a user of the package writes it: a cube of four layers.
#include <varnet/Kit.h>

#include <cmath>
#include <cstdio>

int main() {
    std::vector<varnet::Point3> points;
    for (int i = 0; i < 8; ++i) points.push_back({10.0 * (i & 1), 10.0 * (i >> 1 & 1), 10.0 * (i >> 2)});
    std::vector<varnet::Triangle> const triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6},
                                                     {0, 1, 4}, {1, 5, 4}, {2, 6, 3}, {3, 6, 7},
                                                     {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    varnet::Part const part(points, triangles);
    varnet::SliceSettings settings;
    settings.layer = 2.5;
    varnet::Slicer slicer(varnet::SlicerInputs(part), settings);
    double area = 0.0;
    for (varnet::Layer const& layer : slicer) area += layer.Area();
    try {
        varnet::Part::Read("there is no such file.stl");
        return 1;
    } catch (varnet::Error const& error) {
        std::printf("%s\n", error.what());
    }
    std::printf("%d layers, %g mm2\n", slicer.LayerCount(), area);
    return slicer.LayerCount() == 4 && std::fabs(area - 400.0) < 1e-9 && part.Measures().volume == 1000.0 ? 0
                                                                                                          : 1;
}
