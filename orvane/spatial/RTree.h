#pragma once
// The spatial index: the generic R-tree TRTree<T> that maps boxes to values, and the
// node-object R-tree of orvane::classic (TRRTree2D, TRList, T2DRList).

#include "orvane/spatial/ClassicRTree.h"
#include "orvane/spatial/GenericRTree.h"
