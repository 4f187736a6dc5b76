// Prints how many corners of each shape the readers' table of vertices hands to the tree although their
// vertices are there.

#include <SizedShapes.h>

#include <algorithm>
#include <cstdio>

#include "mesh/FacetIntake.h"

using namespace varnet;

namespace {

constexpr std::size_t kBlock = 1024;

double NeedlessPercent(shapes::Mesh const& mesh, double dTolerance) {
    CSTLModel model;
    model.m_VertexTree.m_dTolerance = dTolerance;
    FacetIntake intake(model, mesh.size());
    std::vector<tagFACET> block;
    for (std::size_t i = 0; i < mesh.size(); i += kBlock) {
        block.assign(std::min(kBlock, mesh.size() - i), tagFACET());
        for (std::size_t n = 0; n < block.size(); ++n) {
            for (std::size_t k = 0; k < 3; ++k) {
                shapes::Corner const& c = mesh[i + n][k];
                block[n].m_ptVertex[k] = CPoint3D(c.x, c.y, c.z);
            }
        }
        intake.AddAll(block);
    }
    return 100.0 * static_cast<double>(intake.m_Cache.NeedlessDescents()) /
           (3.0 * static_cast<double>(mesh.size()));
}

}  // namespace

int main() {
    std::printf(
        "| Corners that go down the tree in vain | tolerance 0.0001 | 0.000001 | 0 |\n|---|---|---|---|\n");
    for (shapes::SizedShape const& shape : shapes::SizedShapes()) {
        shapes::Mesh const mesh = shape.pMake(1000000);
        std::printf("| %s |", shape.pName);
        for (double const dTolerance : {0.0001, 0.000001, 0.0})
            std::printf(" %.2f %% |", NeedlessPercent(mesh, dTolerance));
        std::printf("\n");
    }
    return 0;
}
