#pragma once
// TMLABPolygon: one mixed outline of lines, arcs and Beziers held as y-monotone TMLABChains.
// PreProcessing first turns Beziers into arcs within the caller's tolerance and cuts every
// arc at the top and bottom of its circle; the chains then answer overlap and point queries
// at arc precision, with no linearisation.

#include <memory>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/monotone/MLABChain.h"
#include "orvane/vertex/VGeometry2DList.h"

namespace orvane {

class ORVANE_API TMLABPolygon : public TVGeometry2DList<TMLABChain> {
 public:
  explicit TMLABPolygon(bool AOwnsObjects = true) : TVGeometry2DList<TMLABChain>(AOwnsObjects) {}
  // The chains of Polyline, which stays the caller's. IsClosed is Polyline.IsClosed(1e-6).
  // EParamError for a coordinate or bulge that is not finite, or a Tol below 0.
  TMLABPolygon(const TLABPolyline& Polyline, double Tol, bool AOwnsObjects = true);

  std::unique_ptr<TVGeometry2DList<TMLABChain>> New(bool AOwnsObjects) const override;
  // A deep copy for an owning polygon, IsClosed copied, and the Next ring rebuilt among the
  // copies (a copy never points into its source).
  std::unique_ptr<IVGeometry2D> Clone() const override;
  // The union of the chains' boxes, kept from construction (and by Translate): change the
  // polygon as a whole, not chain by chain.
  TRect2D BoundBox() const override { return FBoundBox; }
  void Translate(const TPoint2D& Vector) override;

  // The monotone form of Polyline, a new outline:
  // - each Bezier becomes arcs and lines within Tol;
  // - each arc, full circles included, is cut at the top and bottom of its circle, unless
  //   its start or end lies there within Tol; a half circle between them has Bulge +-1.0;
  // - every joint is made exact, and the seam too when Polyline itself is closed within
  //   1e-6 (the outline given decides, not any polygon that is being built);
  // - pieces with ends within 1e-6, or |Bulge| below 1e-6, become lines, and so does an arc
  //   whose start lies on its centre.
  // EParamError for a coordinate or bulge that is not finite, or a Tol below 0.
  static std::unique_ptr<TLABPolyline> PreProcessing(const TLABPolyline& Polyline, double Tol);
  // The arc lies on the right half of its circle; decided by the ends' heights (1e-6) and,
  // for ends at one height, by their mean x against the centre. Tol is not read.
  static bool IsRightArc(const TLABSegline& Seg, double Tol = 1e-6);

  // Some chain touches or crosses (Tol) some chain of MPolygon. Works on open outlines.
  bool IsCrossWith(const TMLABPolygon& MPolygon, double Tol) const;
  // srOn within 1e-8 of the outline, else srIn or srOut by the parity of crossings of a ray
  // to the right. srOut for an empty polygon. Exception "Polygon is not closed!" for an
  // open outline.
  TShapeRelation RelationWithPoint(const TPoint2D& Pnt) const;

  bool GetIsClosed() const { return FIsClosed; }
  // The start of the first segment of the first chain in list order, kept from
  // construction (and moved by Translate) so that a query reaches it without walking into
  // the chains; false without chains.
  bool ReferencePoint(TPoint2D& Pt) const {
    if (!FHasRef) return false;
    Pt = FRef;
    return true;
  }

 private:
  void SortChains();
  void UpdateBoundBox();

  bool FIsClosed = false;
  TRect2D FBoundBox = TRect2D::Invalid();
  TPoint2D FRef;
  bool FHasRef = false;
  // The chains' boxes in list order, side by side in memory, so that the pairs of chains
  // that cannot meet are passed over without reaching into the chains themselves.
  std::vector<TRect2D> FChainBoxes;
};

}  // namespace orvane
