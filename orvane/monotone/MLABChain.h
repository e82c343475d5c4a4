#pragma once
// TMLABChain: a run of a mixed outline's lines and arcs whose y climbs, each segment stored
// from its lower end P1 up to P4 (or level). TMLABPolygon cuts outlines into such chains
// after every Bezier has become arcs and every arc has been cut at the top and bottom of its
// circle, so that each segment is monotone in y. Two chains are compared by a walk upward in
// y that pairs only the segments whose heights meet, and measures each pair exactly: arcs
// stay arcs.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/mixed/LABPolyline.h"

namespace orvane {

class ORVANE_API TMLABChain : public TLABPolyline {
 public:
  // Empty, climbing, no successor.
  TMLABChain() = default;

  std::unique_ptr<TLABPolyline> New() const override;
  // The segments, Positive and fresh bounds. Next stays nil: a copy must never point into
  // the polygon it was copied from; TMLABPolygon's Clone relinks the ring among the copies.
  std::unique_ptr<IVGeometry2D> Clone() const override;
  // The segments and the x range alike.
  void Translate(const TPoint2D& Vector) override;
  // A chain is monotone in y; a rotation would break that silently, so all three refuse.
  void Rotate(double Radian) override;
  void RotateBy90() override;
  void RotateBy_90() override;

  // x from Left and Right, y from the first P1 and the last P4, without a scan.
  TRect2D BoundBox() const override;
  // Recomputes Left and Right from all segments, the arcs' side bulges included. An empty
  // chain keeps +max / -max.
  void ResetBound();

  // True if the chains touch (within Tol, Euclidean) or cross. Every pair of segments
  // whose heights meet within Tol is measured exactly: line to line, line to arc, arc to arc,
  // arcs on one circle included. Linear in the two lengths for chains whose segments are
  // not crowded within Tol of one height. Both chains must climb, as TMLABPolygon builds them.
  bool IsOverlap(const TMLABChain& Chain, double Tol) const;

  double GetLeft() const { return FLeft; }
  double GetRight() const { return FRight; }
  bool GetPositive() const { return FPositive; }
  void SetPositive(bool Value) { FPositive = Value; }
  // The next chain along the outline; not owned, read by nothing here.
  TMLABChain* GetNext() const { return FNext; }
  void SetNext(TMLABChain* Value) { FNext = Value; }

 protected:
  // An added segment widens the bounds by its own extent only, so filling a chain is linear
  // in its length; a removal or replacement recomputes them.
  void Notify(const TLABSegline& Item, TCollectionNotification Action) override;

 private:
  void Widen(const TLABSegline& Seg);

  double FLeft = 1.7976931348623157e308;
  double FRight = -1.7976931348623157e308;
  bool FPositive = true;
  TMLABChain* FNext = nullptr;
};

namespace internal {
// The smallest distance between two lines or arcs (an arc runs from P1 to P4 about the
// centre P2, counter-clockwise for a positive Bulge, less than a full turn), exact up to
// rounding. Within Tol is reported as soon as it is seen, so the result is only trusted
// beyond Tol.
ORVANE_API double MLABSegDistance(const TLABSegline& A, const TLABSegline& B, double Tol);
// Whether the polar angle Theta lies in the angular range from Start sweeping Sweep (either
// sign, less than a full turn), AngTol beyond its ends. Both are taken modulo a turn, so
// clockwise ranges and ranges across angle 0 are handled alike.
ORVANE_API bool AngleInSweep(double Theta, double Start, double Sweep, double AngTol);
}  // namespace internal

}  // namespace orvane
