#include "orvane/curves/CurveConversion.h"

#include <cmath>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyBezier2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {

// The largest float: the bulge written for a full circle, signed by its sense.
constexpr double CircleBulge = 3.4028234663852886e38;
// The tolerance on the sweep under which an arc counts as a full circle.
constexpr double FullTurnTol = 1e-6;

std::unique_ptr<TGeCurve2D> ArcCurve(const TArc2D& Arc) {
  return std::make_unique<TGeCircularArc2D>(Arc.Center, Arc.Radius, Arc.StartAngle, Arc.GetSweepAngle());
}

void AddArc(const TGeCircularArc2D& Arc, TLABPolyline& Result) {
  const double sweep = Arc.GetSweepAngle();
  // An arc without sweep is a point. Its bulge would be 0, and a mixed arc whose ends meet
  // reads as a full circle: the point goes out as a line of length 0 instead.
  if (sweep == 0.0) {
    Result.Add(TLABSegline::CreateLine(Arc.GetStartPoint(), Arc.GetEndPoint()));
    return;
  }
  const TPoint2D centre = Arc.GetCenter();
  const double sense = sweep < 0.0 ? -1.0 : 1.0;
  // A bulge cannot carry more than one turn: whole turns go out as full circles (each
  // starting and ending at the arc's start, which whole turns bring back), then the rest.
  double rest = std::abs(sweep);
  const double turns = std::floor((rest + FullTurnTol) / TwoPi);
  if (turns > internal::MaxArcTurns) {
    throw EParamError("[Error] CreateLABPolyline: an arc of %s full turns is more than %d", FloatToStr(turns),
                      internal::MaxArcTurns);
  }
  const TPoint2D start = Arc.GetStartPoint();
  for (int i = 0; i < static_cast<int>(turns); ++i) {
    Result.Add(TLABSegline::CreateArc(start, start, centre, sense * CircleBulge));
    rest -= TwoPi;
  }
  if (turns > 0.0 && rest <= FullTurnTol) return;
  if (turns == 0.0) {
    Result.Add(TLABSegline::CreateArc(start, Arc.GetEndPoint(), centre, Arc.Bulge()));
    return;
  }
  const TArc2D tail(centre, Arc.GetRadius(), Arc.GetStartAngle(), sense * rest);
  Result.Add(TLABSegline::CreateArc(start, tail.EndPoint(), centre, tail.Bulge()));
}

void AddCurve(const TGeCurve2D& Curve, TLABPolyline& Result, int Depth) {
  if (const auto* line = dynamic_cast<const TGeLine2D*>(&Curve)) {
    Result.Add(TLABSegline::CreateLine(line->GetStartPoint(), line->GetEndPoint()));
  } else if (const auto* arc = dynamic_cast<const TGeCircularArc2D*>(&Curve)) {
    AddArc(*arc, Result);
  } else if (const auto* poly = dynamic_cast<const TGePolyline2D*>(&Curve)) {
    const TDynPoints2D& pts = poly->GetPointsArray();
    for (std::size_t i = 1; i < pts.size(); ++i) Result.Add(TLABSegline::CreateLine(pts[i - 1], pts[i]));
    // A polygon is a ring: its closing edge belongs to it unless the last vertex repeats
    // the first already.
    if (dynamic_cast<const TGePolygon2D*>(&Curve) != nullptr && pts.size() >= 2 &&
        !pts.back().Equals(pts.front(), 1e-6)) {
      Result.Add(TLABSegline::CreateLine(pts.back(), pts.front()));
    }
  } else if (const auto* bez = dynamic_cast<const TGeBezier2D*>(&Curve)) {
    const TBezierSegment2D& b = bez->GetBezierSegment();
    Result.Add(TLABSegline::CreateBezier(b.P0, b.P1, b.P2, b.P3));
  } else if (const auto* pb = dynamic_cast<const TGePolyBezier2D*>(&Curve)) {
    const TDynPoints2D& pts = pb->GetPointsArray();
    for (std::size_t i = 0; i + 3 < pts.size(); i += 3) {
      Result.Add(TLABSegline::CreateBezier(pts[i], pts[i + 1], pts[i + 2], pts[i + 3]));
    }
  } else if (const auto* comp = dynamic_cast<const TGeCompositeCurve2D*>(&Curve)) {
    if (Depth >= internal::MaxCompositeDepth) {
      throw EParamError("[Error] CreateLABPolyline: composites nested deeper than %d", internal::MaxCompositeDepth);
    }
    for (int i = 0; i < comp->GetCurveCount(); ++i) AddCurve(*comp->GetCurve(i), Result, Depth + 1);
  }
}

}  // namespace

std::unique_ptr<TGeCurve2D> CreateGeCurve2D(const TLABSegline& Segline) {
  const char* where = "CreateGeCurve2D";
  internal::CheckFinitePoint<EGeometry>(Segline.P1, where, "P1");
  internal::CheckFinitePoint<EGeometry>(Segline.P4, where, "P4");
  switch (Segline.SegType) {
    case TSegType::stLine:
      return std::make_unique<TGeLine2D>(Segline.P1, Segline.P4);
    case TSegType::stArc: {
      internal::CheckFinitePoint<EGeometry>(Segline.P2, where, "P2");
      // The arc the mixed segment itself means (ToArc): a circle keeps the sense of its
      // bulge's sign, so area and orientation agree in both models.
      const TArc2D arc = Segline.ToArc();
      if (arc.IsLine) return std::make_unique<TGeLine2D>(arc.StartPoint(), arc.EndPoint());
      return ArcCurve(arc);
    }
    case TSegType::stBezier: {
      internal::CheckFinitePoint<EGeometry>(Segline.P2, where, "P2");
      internal::CheckFinitePoint<EGeometry>(Segline.P3, where, "P3");
      auto result = std::make_unique<TGePolyBezier2D>();
      result->AddBezier(Segline.ToBezierSegment());
      return result;
    }
  }
  throw EParamError("[Error] CreateGeCurve2D: unknown segment type %d", static_cast<int>(Segline.SegType));
}

std::unique_ptr<TGeCurve2D> CreateGeCurve2D(const TLABPolyline& Polyline) {
  if (Polyline.Count() == 0) return nullptr;
  if (Polyline.Count() == 1) return CreateGeCurve2D(Polyline[0]);
  auto result = std::make_unique<TGeCompositeCurve2D>();
  for (const TLABSegline& seg : Polyline) result->AddCurve(CreateGeCurve2D(seg));
  return result;
}

std::unique_ptr<TLABPolyline> CreateLABPolyline(const TGeCurve2D& Curve) {
  auto result = std::make_unique<TLABPolyline>();
  AddCurve(Curve, *result, 0);
  return result;
}

std::unique_ptr<TLABPolylineList> CreateLABPolylineList(const TList<const TGeCurve2D*>& Curves) {
  auto result = std::make_unique<TLABPolylineList>(true);
  for (const TGeCurve2D* curve : Curves) {
    if (curve == nullptr) continue;
    auto poly = CreateLABPolyline(*curve);
    if (poly->Count() > 0) result->Add(std::move(poly));
  }
  return result;
}

std::unique_ptr<TLABPolylineList> CreateLABPolylineList(const TList<TGeCurve2D*>& Curves) {
  TList<const TGeCurve2D*> view;
  for (TGeCurve2D* curve : Curves) view.Add(curve);
  return CreateLABPolylineList(view);
}

}  // namespace orvane
