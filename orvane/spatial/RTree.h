#pragma once
// The spatial index: the generic R-tree TRTree<T> that maps boxes to values
// (GenericRTree.h), and the node-object R-tree whose entries are the caller's own nodes
// (ClassicRTree.h).
//
// Both trees are called TRTree. C++ cannot give one name to a class template and a class in
// one namespace, so orvane::TRTree<T> is the generic tree and the node-object tree's base
// class is orvane::classic::TRTree; its other classes are reachable under both
// orvane::classic and orvane (TRRTree2D, TRList, T2DRList, TRTrees).

#include "orvane/spatial/ClassicRTree.h"
#include "orvane/spatial/GenericRTree.h"
