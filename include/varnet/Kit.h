#pragma once

// All of the kit: from a part to a slice file.

#include "varnet/Error.h"
#include "varnet/Geometry.h"
#include "varnet/Layer.h"
#include "varnet/Page.h"
#include "varnet/Part.h"
#include "varnet/PathOrder.h"
#include "varnet/Picture.h"
#include "varnet/SliceFile.h"
#include "varnet/Slicer.h"
#include "varnet/StreamSlicer.h"
#include "varnet/Supports.h"
