#pragma once
// TVPolyline2DList: an ordered set of vertex polylines that can drop repeated ones, join open
// pieces whose ends meet into longer polylines until the closed contours stand, find the
// polyline nearest to a point and sort by area.

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/paths/Path64.h"
#include "orvane/vertex/VGeometry2DList.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

namespace internal {
class TJoinPlan;
}  // namespace internal

class ORVANE_API TVPolyline2DList : public TVGeometry2DList<TVPolyline2D> {
 public:
  // A polyline end tied to the index of its polyline in the list.
  struct TPointLink {
    TPoint2D FPoint;
    std::int32_t FIdx = 0;

    TPointLink() = default;
    TPointLink(const TPoint2D& APoint, std::int32_t AIdx) : FPoint(APoint), FIdx(AIdx) {}
  };

  explicit TVPolyline2DList(bool AOwnsObjects = true) : TVGeometry2DList<TVPolyline2D>(AOwnsObjects) {}

  // An empty TVPolyline2DList.
  std::unique_ptr<TVGeometry2DList<TVPolyline2D>> New(bool AOwnsObjects) const override;

  // One ToPath(Rate) per polyline, in order; ToPath's conversion error passes through.
  TPaths64 ToPaths(double Rate) const;
  // The distance from Pt to the nearest polyline, with the index of that polyline and of the
  // segment in it (0 for a polyline of one vertex). Polylines are pruned by their boxes
  // through an R-tree, searched within the smallest box distance plus 1e-5, and segments by
  // their boxes, against the best distance so far under 1e-6; among equally near segments
  // the first found wins. MaxDouble and both ids -1 without polylines. EParamError when Pt
  // or a vertex is not finite.
  //
  // The nearest box may belong to a polyline farther than another whose box is a little
  // farther. When the best distance found exceeds the square searched, the search is
  // repeated over the square of that distance, so that the answer is the nearest polyline
  // and not only the nearest among the first hits.
  double DistanceTo(const TPoint2D& Pt, int& PolylineId, int& SeglineId) const;
  // ConnectHeadTail on each polyline.
  void ConnectHeadTail();
  // Deletes every polyline that IsEqualTo (or, with DoesCheckReverse, IsEqualToReverse) an
  // earlier polyline that stays, within Tol; the earlier one survives. Candidates are found
  // by the midpoint of their two ends, so the cost stays near linear for any number of
  // polylines. EParamError when Tol is not a finite number of at least 0.
  void DeleteRepeat(bool DoesCheckReverse, double Tol);
  // Joins open pieces whose ends meet within Tolerance into longer polylines: repeated
  // pieces go first, pieces that follow each other in the list are joined next, then every
  // end is sorted by its point so that coincident ends become neighbours, and neighbours
  // are joined in one pass from the back. Only neighbours in that order are tried: ends
  // within Tolerance of each other that another end parts in the order (one lying between
  // them in X, beyond Tolerance from the first) stay apart. A polyline counts as a closed
  // loop when it has 3 or more vertices and its first vertex Equals its last. Nothing
  // happens with fewer than two polylines. EParamError when Tolerance is not a finite number of at least 0; an empty
  // polyline that a join would read raises the list's index error. Either way the list
  // stays as it was.
  //
  // A polyline that takes a join keeps its identity (and class) and receives the joined
  // vertices through Assign; a polyline joined into another is
  // deleted (an owning list frees it, and is notified) once all joins are done. A join is
  // recorded as a splice of vertex ranges and written out only at the end, so that the
  // whole costs about n log n however long the chains grow.
  void ConnectPolylines(double Tolerance);
  // Sorts by the absolute Area of each polyline, each computed once. The sort is stable.
  void SortByArea(bool Descending);

  // A JSON file of the polylines, [[[x,y],...],...], coordinates as JSON numbers written
  // as the shortest text that reads back to the same double. EParamError for a vertex that
  // is not finite; EInOutError when the file cannot be written.
  void SaveTo(const std::string& FileName) const;
  // Replaces the items by one new TVPolyline2D per array of such a file, each added through
  // the list's notification. EInOutError, naming the file and the place, for a file that
  // cannot be read or has another shape, and EListError for a list that does not own its
  // items; the list then keeps its items.
  virtual void ReadFrom(const std::string& FileName);
  // The text dump of every polyline in Color, a line end between two and none behind the
  // last. EInOutError when the stream fails.
  void WriteToFile(std::ostream& F, std::string_view Color, bool HighPrecision) const;

 protected:
  // The three joiners behind ConnectPolylines. They are protected rather than private, so
  // that a derived list can run one on its own. Each keeps the list as it was when it
  // raises, like ConnectPolylines.
  //
  // The simple greedy joiner: each polyline in turn is joined with the first later one
  // that meets one of its ends, again and again, until it closes or nothing meets it.
  void Connect(double Tolerance);
  // Joins each open piece to its predecessor in the list (the first wraps to the last),
  // from the back; pieces of fewer than 3 vertices that are not open pieces go.
  void TryConnectByOrder(double Tolerance);
  // DeleteRepeat, TryConnectByOrder, then the sorted-ends pass described at
  // ConnectPolylines.
  void ConnectOptimize(double Tolerance);

 private:
  // Writes the joins and deletions that Plan has worked out into the list: joined vertices
  // first, then the deleted polylines leave the list, notified from the back.
  ORVANE_LOCAL void Apply(const internal::TJoinPlan& Plan);
};

}  // namespace orvane
