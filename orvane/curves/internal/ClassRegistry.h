#pragma once
// The storage of the class dictionary, shared by the curve root and the start-up.

#include "orvane/curves/ClassDict.h"

namespace orvane::internal {

// The dictionary of the process; nil before start-up and after the last finalisation.
TGeClassDictionary* ClassDict();
// Creates the empty dictionary when there is none, and frees it.
void CreateClassDict();
void FreeClassDict();

}  // namespace orvane::internal
