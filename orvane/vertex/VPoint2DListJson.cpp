// The JSON files of point lists.

#include "orvane/persistence/internal/JsonPoints.h"
#include "orvane/vertex/VPoint2DList.h"

namespace orvane {

namespace {

void ReadPoints(TVPoint2DList& List, const std::string& FileName, const char* Where) {
  // Read in full before the list changes, so that a bad file leaves the list as it was.
  const TDynPoints2D points = internal::PointsFromJson(internal::ReadWholeFile(FileName, Where), Where, FileName);
  List.Clear();
  List.AddRange(points);
}

}  // namespace

void TVPoint2DList::SaveTo(const std::string& FileName) const {
  static constexpr const char* Where = "TVPoint2DList.SaveTo";
  internal::WriteWholeFile(FileName, internal::PointsToJson(FItems, internal::TJsonCoordForm::Number, Where), Where);
}

// Strings hold the shortest round-trip text rather than sixteen digits, so that a file of
// either form gives back every double bit for bit.
void TVPoint2DList::SaveToStrJson(const std::string& FileName) const {
  static constexpr const char* Where = "TVPoint2DList.SaveToStrJson";
  internal::WriteWholeFile(FileName, internal::PointsToJson(FItems, internal::TJsonCoordForm::String, Where), Where);
}

void TVPoint2DList::ReadFrom(const std::string& FileName) { ReadPoints(*this, FileName, "TVPoint2DList.ReadFrom"); }

void TVPoint2DList::ReadFromStrJson(const std::string& FileName) {
  ReadPoints(*this, FileName, "TVPoint2DList.ReadFromStrJson");
}

}  // namespace orvane
