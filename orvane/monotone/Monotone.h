#pragma once
// The monotone chains: outlines cut into runs that climb in y, for fast overlap and point
// tests between outlines that are built once and asked many times.

#include "orvane/monotone/MChain.h"
#include "orvane/monotone/MHPolygon.h"
#include "orvane/monotone/MLABChain.h"
#include "orvane/monotone/MLABHPolygon.h"
#include "orvane/monotone/MLABPolygon.h"
#include "orvane/monotone/MPolygon.h"
#include "orvane/monotone/MPolygonList.h"
