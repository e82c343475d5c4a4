#include "orvane/mixed/LABPolylineTree.h"

#include <cmath>
#include <cstddef>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/vertex/internal/OutlineNesting.h"

namespace orvane {

namespace {

std::unique_ptr<TLABPolyline> CloneOutline(const TLABPolyline& Outline) {
  auto copy = static_cast<const IVGeometry2D&>(Outline).CloneAs<TLABPolyline>();
  Assert(copy != nullptr, "[Assert] TLABPolylineTree.Create: a polyline's Clone did not keep its class");
  return copy;
}

// A mixed outline to the nesting: its pieces are its segments. The closing line of an open
// outline is no piece of its own: its ends are segment ends already.
struct TLABNesting {
  using TOutline = TLABPolyline;
  static void Check(const TLABPolyline& P) {
    for (int i = 0; i < P.Count(); ++i) {
      const TLABSegline& s = P[i];
      bool finite = internal::IsFinite(s.P1) && internal::IsFinite(s.P4);
      if (s.SegType == TSegType::stArc) finite = finite && internal::IsFinite(s.P2) && !std::isnan(s.Bulge);
      if (s.SegType == TSegType::stBezier) finite = finite && internal::IsFinite(s.P2) && internal::IsFinite(s.P3);
      if (!finite) throw EParamError("[Error] TLABPolylineTree.Create: segment %d is not finite", i);
    }
  }
  static bool BoundsNothing(const TLABPolyline& P) {
    return P.IsEmpty() || P.IsPoint() || (P.Count() == 1 && P[0].SegType == TSegType::stLine);
  }
  static double AbsArea(const TLABPolyline& P) { return std::fabs(P.Area()); }
  static TRect2D Box(const TLABPolyline& P) { return P.BoundBox(); }
  static std::size_t PieceCount(const TLABPolyline& P) { return static_cast<std::size_t>(P.Count()); }
  static TPoint2D VotePoint(const TLABPolyline& P, std::size_t I) { return P[static_cast<int>(I)].P1; }
  static TPoint2D MidPoint(const TLABPolyline& P, std::size_t I) { return P[static_cast<int>(I)].PointByParam(0.5); }
  // RelationWithPoint works at the nesting tolerance, 1e-6.
  static int Relation(const TLABPolyline& Outer, const TPoint2D& Pt) { return Outer.RelationWithPoint(Pt); }
  static std::unique_ptr<TLABPolyline> Clone(const TLABPolyline& P) { return CloneOutline(P); }
};

}  // namespace

TLABPolylineTree::TLABPolylineTree(const TList<TLABPolyline*>& LABPolylines) {
  internal::AdoptNesting<TLABNesting>(*this, LABPolylines);
}

TLABPolylineTree::~TLABPolylineTree() {
  std::unique_ptr<TNodeList> nodes = PreorderTraversal();
  for (TNode* node : *nodes) {
    delete node->GetData();
    node->SetData(nullptr);
  }
}

std::unique_ptr<TObjectList<TLABPolyline>> TLABPolylineTree::GetLABPolylines(int Clockwise) const {
  auto result = std::make_unique<TObjectList<TLABPolyline>>(true);
  std::unique_ptr<TNodeList> nodes = PreorderTraversal();
  for (const TNode* node : *nodes) {
    // The root that only gathers outlines outside all others has none of its own.
    if (node->GetData() == nullptr) continue;
    std::unique_ptr<TLABPolyline> copy = CloneOutline(*node->GetData());
    switch (Clockwise) {
      case 1: copy->SetIsClockwise(node->GetDepth() % 2 != 0); break;
      case 2: copy->SetIsClockwise(false); break;
      case 3: copy->SetIsClockwise(true); break;
      default: break;
    }
    result->Add(std::move(copy));
  }
  return result;
}

}  // namespace orvane
