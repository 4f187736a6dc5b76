// A host program as a user of the package writes it: C++17, no other header of the library.
#if defined(CONSUMER_LONG_INCLUDE)
#include <varnet64/Varnet64.h>
#else
#include <Varnet64.h>
#endif

#include <cstdio>

int main() {
    CSTLModel model;
    tagFACET facet;
    facet.m_ptVertex[1] = CPoint3D(10.0, 0.0, 0.0);
    facet.m_ptVertex[2] = CPoint3D(0.0, 10.0, 0.0);
    model.AddFacet(facet);
    std::printf("%d facet, %u vertices, area %g\n", model.GetFacetsNum(), model.m_VertexTree.m_nCount,
                model.Area());
    return model.GetFacetsNum() == 1 && model.m_VertexTree.m_nCount == 3 && model.Area() == 50.0 &&
                   fnVarnet() == 42
               ? 0
               : 1;
}
