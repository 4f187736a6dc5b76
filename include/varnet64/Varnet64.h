#pragma once

// Varnet64, the geometry core of a 3D-printing host: this header is all that a host includes.

#include "cli/LayerModel.h"
#include "contours/Hatch.h"
#include "contours/HatchLink.h"
#include "contours/IntervalLists.h"
#include "contours/Layer.h"
#include "contours/LoopTreeNode.h"
#include "foundation/Array.h"
#include "foundation/BoundBox.h"
#include "foundation/CompTable.h"
#include "foundation/Export.h"
#include "foundation/Geometry.h"
#include "foundation/List.h"
#include "foundation/Mat4f.h"
#include "foundation/Point.h"
#include "foundation/Quaternion.h"
#include "foundation/Vec3f.h"
#include "mesh/Facet.h"
#include "mesh/STLModel.h"
#include "support/FeatureEdge.h"
#include "support/FeatureSurface.h"
#include "trees/PointTree.h"
#include "trees/VertexTree.h"

/// Marks the module; it has no use beyond that.
class VARNET_API CVarnet {};

/// 0: marks the module.
extern VARNET_API int nVarnet;

/// 42: marks the module.
VARNET_API int fnVarnet();
