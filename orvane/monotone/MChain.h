#pragma once
// TMChain: a run of an outline's vertices that climbs steadily in y, stored in ascending y
// whichever way the outline travelled. Two chains are compared by one merge walk upward in
// y that only remembers which chain lies to the left: a point of contact or a change of
// sides means that the chains touch or cross. TMPolygon cuts an outline into such chains.
//
// All tests here use the fixed tolerance 1e-6 as a Euclidean distance; crossings are decided
// exactly.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

class TMPolygon;

class ORVANE_API TMChain : public TVPolyline2D {
 public:
  // No vertices, climbing along the outline, no successor.
  TMChain() = default;

  std::unique_ptr<TVPoint2DList> New() const override;
  // New, every vertex added in order and Positive copied. Next stays nil: the polygon's own
  // Clone relinks the ring.
  std::unique_ptr<IVGeometry2D> Clone() const override;
  // x from Left and Right, y from the first and last vertex, without a scan of the
  // vertices. The invalid box when there are no vertices.
  TRect2D BoundBox() const override;
  // Moves the vertices and the x range alike. The other bulk changes (Rotate, Transform,
  // Zoom, YMirror, RoundTo ...) keep neither the x range nor the order in y: call
  // ResetBound after them, and rebuild the polygon.
  void Translate(const TPoint2D& Vector) override;

  // Recomputes Left and Right from all vertices; both 0.0 without vertices.
  void ResetBound();

  // True if this chain and Chain touch or cross: one walk upward over the heights of both
  // chains' vertices. Where both chains cover a height, each vertex is placed exactly left
  // or right of the x interval that the other chain covers there (a level run covers an
  // interval): a vertex inside it, or a change of which chain lies left, is a crossing.
  // Chains that do not cross come nearest at a vertex, so each vertex is also measured
  // against the other chain's segments near its height: within 1e-6, Euclidean, is a
  // contact. Stretches where the chains stay apart in x are passed over whole. Linear in
  // the two vertex counts for chains whose vertices are not crowded within 1e-6 of one
  // height, free of allocation; neither chain changes. Both chains must climb in storage,
  // as TMPolygon builds them.
  bool IsOverlap(const TMChain& Chain) const;
  // The first and last vertex index that bracket Pt's height or match it (1e-6), or
  // (-1, -1) when the height is out of the chain's range.
  TPair<int, int> GetRangeIdsByPt(const TPoint2D& Pt) const;

  // The smallest and largest x of the vertices added so far; deleting a vertex narrows
  // nothing until ResetBound.
  double GetLeft() const { return FLeft; }
  double GetRight() const { return FRight; }
  // True if the run climbs along the outline's own direction of travel; false if it falls
  // or runs level, in which case its vertices are stored reversed.
  bool GetPositive() const { return FPositive; }
  void SetPositive(bool Value) { FPositive = Value; }
  // The chain that follows in the outline's order of travel; not owned.
  TMChain* GetNext() const { return FNext; }
  void SetNext(TMChain* Value) { FNext = Value; }

 protected:
  // Keeps Left and Right on every added vertex.
  void Notify(const TPoint2D& Item, TCollectionNotification Action) override;

 private:
  friend class TMPolygon;

  // Add for the polygon's construction, which owns the chain alone while it builds it, so
  // no observer can wait on the notification: the same vertex and bounds, without the
  // virtual call per vertex.
  void AddVertex(const TPoint2D& Pt) {
    FItems.push_back(Pt);
    if (FItems.size() == 1) {
      FLeft = FRight = Pt.X;
    } else {
      FLeft = Pt.X < FLeft ? Pt.X : FLeft;
      FRight = Pt.X > FRight ? Pt.X : FRight;
    }
  }
  void ReserveVertices(std::size_t N) { FItems.reserve(N); }

  double FLeft = 0.0;
  double FRight = 0.0;
  bool FPositive = true;
  TMChain* FNext = nullptr;
};

namespace internal {

// TMChain::IsOverlap's walk over two runs of vertices that climb, such as stretches of two
// chains: true if the runs touch (within 1e-6, Euclidean) or cross.
bool ClimbingRunsOverlap(const TPoint2D* A, int NA, const TPoint2D* B, int NB);

}  // namespace internal

}  // namespace orvane
