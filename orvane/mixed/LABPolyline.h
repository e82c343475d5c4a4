#pragma once
// TLABPolyline: an outline of line, arc and Bezier segments kept end to end, each
// segment's P1 on the previous segment's P4 (Add keeps that; direct item assignment does
// not). The polyline parameter runs from 0 to Count: its integer part selects a segment,
// its fraction is that segment's own parameter.
//
// What is exact and what is sampled:
// - Area, IsClockwise and RelationWithPoint are exact for every kind of segment: each line,
//   arc and Bezier contributes its own swept area and its own crossings of the test ray, so a
//   circle measures pi r^2, not the area of an inscribed polygon. An open outline counts as
//   closed by the straight line from its end to its start.
// - BoundBox is the union of the segments' exact boxes.
// - Sample gives the sampled vertex polyline, at the caller's steps.

#include <iosfwd>
#include <memory>
#include <string_view>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/mixed/LABSegline.h"
#include "orvane/vertex/Geometry2D.h"

namespace orvane {

class TVPolyline2D;

class ORVANE_API TLABPolyline : public TList<TLABSegline>, public IVGeometry2D {
 public:
  TLABPolyline() = default;
  // One stLine per pair of consecutive vertices, stored as they are (no closing segment);
  // empty for a null polyline.
  explicit TLABPolyline(const TVPolyline2D* Polyline);
  // An object with identity: copied through Clone, never moved.
  TLABPolyline(TLABPolyline&&) = delete;
  TLABPolyline& operator=(TLABPolyline&&) = delete;

  // An empty polyline of the receiver's own class.
  virtual std::unique_ptr<TLABPolyline> New() const;
  // New, then AddRange of the receiver: a gap in the receiver is closed in the copy.
  std::unique_ptr<IVGeometry2D> Clone() const override;

  // Appends Seg. When its start misses the last end by more than 1e-6 it is stored with its
  // P1 moved onto that end, whatever the gap (an arc keeps its centre and bulge); within
  // 1e-6 it is stored as it is.
  int Add(const TLABSegline& Seg);
  void AddRange(const TLABPolyline& LABPolyline);
  // Add for each segment in order (the list's own AddRange would skip the gap closing).
  void AddRange(const std::vector<TLABSegline>& Segs);

  // False for an empty list; else the first P1 equals the last P4 within Tol.
  bool IsClosed(double Tol) const;
  bool IsPoint() const { return Count() == 1 && FItems[0].IsPoint(); }
  bool IsCircle() const { return Count() == 1 && FItems[0].IsCircle(); }
  // Each segment sampled (arcs at ArcParamStep, the others at BezierParamStep), the points
  // in one polyline, the doubled points at the joints removed (1e-6; the seam of a closed
  // outline stays closed).
  std::unique_ptr<TVPolyline2D> Sample(double ArcParamStep, double BezierParamStep) const;
  // The signed area, exact (see above); positive counter-clockwise.
  double Area() const override;
  bool GetIsClockwise() const { return Area() < 0.0; }
  // Reverses (through the virtual Reverse) when the orientation differs.
  void SetIsClockwise(bool Value);
  TRect2D BoundBox() const override;
  // The tangent of the curve arriving at Param (Left) and leaving it (Right), stepping over
  // segments that are points, and across the seam of an outline closed within 1e-6.
  // Exception when Param lies outside 0 .. Count (1e-6), when every segment is a point, and
  // at the open start (Left) or the open end (Right).
  TPoint2D LeftTangentVector(double Param) const;
  TPoint2D RightTangentVector(double Param) const;
  // ToLine of each segment that IsLine(Tol).
  std::unique_ptr<TList<TLine2D>> GetLines(double Tol) const;
  // Joins neighbouring lines that meet exactly, run the same way (sine 1e-4) and are longer
  // than 0.1; at most five joins at one place before the walk moves on.
  void MergeCollinearLines();
  // The ordinal of srOn (within 1e-6 of a segment or of the closing line), srIn or srOut,
  // exact for every kind of segment (see above). srOut for an empty outline.
  int RelationWithPoint(const TPoint2D& Pt) const;
  // Crossings of every segment with SegLine (1e-6), appended in segment order. A crossing at
  // a joint of two segments, the seam of a closed outline included, is reported once, and a
  // point that lies on a collinear overlap already reported is not reported again. True
  // when anything was found.
  bool CrossWithSegLine(const TLine2D& SegLine, TList<TPoint2D>& CrossPoints, TList<TLine2D>& CrossLines) const;

  void RoundTo(int Accuracy) override;
  // TranslateInplace on each segment where it lies.
  void Translate(const TPoint2D& Vector) override;
  void Rotate(double Radian) override;
  void RotateBy90() override;
  void RotateBy_90() override;
  void YMirror() override;
  // A reflecting matrix negates every arc's bulge (see TLABSegline::Transform).
  void Transform(const TMatrix2D& Matrix) override;
  // The list order reversed, then each segment reversed.
  virtual void Reverse();

  // Closes an open outline by a line from the last end to the first start; an outline
  // closed within Tol gets its seam made exact (the last P4 := the first P1). Nothing for
  // an empty list.
  void ConnectHeadTail(double Tol);
  // Drops segments that are too short (within Tol) and lines that continue the previous
  // line, the next segment taking over their start; with IncludeStartEnd also across the
  // seam. Kept segments have been through TryToLine(Tol). Lists of fewer than two segments
  // stay as they are.
  void CollinearSmooth(bool IncludeStartEnd, double Tol);
  // On an outline closed within 1e-6: every P1 := its predecessor's P4, the seam included.
  void ConnectAllSegsStrictly();
  // The text dump of the flattened polyline: a line segment gives its two ends (so a vertex
  // between two lines appears twice), any other segment its Sample(0.01) points; then as
  // TVPolyline2D::WriteToFile. Flag is not read. EInOutError when the stream fails.
  void WriteToFile(std::ostream& F, int Flag, std::string_view Color, bool HighPrecision) const;

 private:
  static bool IsDegenerate(const TLABSegline& S, double Tol);
  static bool IsMergeable(const TLABSegline& A, const TLABSegline& B, double Tol);
  // Param inside 0 .. Count (1e-6), split into segment index and fraction.
  void SplitParam(double Param, const char* Where, int& I, double& T) const;
};

}  // namespace orvane
