#pragma once
// TGeCompositeCurve2D: any curves, also further composites, chained into one curve. Sub-curve
// i takes the parameters from the sum of the earlier sub-curves' parameter ranges on, one
// range of its own length; nothing forces the chain to be connected (CheckContinuous tells).
//
// The composite keeps the parameter offsets and the running lengths of its sub-curves, made
// on the first query that needs them and dropped by every change made through the
// composite. Sub-curves are handed out read-only for that reason; a caller that keeps
// ownership of the sub-curves (a composite that does not own its list) and changes one calls
// Changed. One composite is not to be read from two threads at once.

#include <memory>
#include <string>
#include <vector>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"

namespace orvane {

class ORVANE_API TGeCompositeCurve2D : public TGeCurve2D {
 public:
  using TGeCurve2D::GetClosedPointTo;
  using TGeCurve2D::GetSamplePoints;
  using TGeCurve2D::IsOn;
  using TGeCurve2D::ParamOfLength;
  using TGeCurve2D::SubCurve;
  using TGeEntity2D::Mirror;
  using TGeEntity2D::RotateBy;
  using TGeEntity2D::ScaleBy;
  using TGeEntity2D::TranslateBy;

  // An empty composite that owns its sub-curves.
  TGeCompositeCurve2D();
  // The curves of List in order. With OwnsCurve the composite takes them over (the list's
  // caller must not free them); without, the caller stays their owner and they must outlive
  // the composite. EParamError for a nil item.
  TGeCompositeCurve2D(const TList<TGeCurve2D*>& List, bool OwnsCurve);
  ~TGeCompositeCurve2D() override;

  // A slot along Y of width AWidth, ends of radius ARadius. EGeometry "Invalid Parameter for
  // CreateRound!" unless 0 <= ARadius <= AWidth / 2.
  static std::unique_ptr<TGeCompositeCurve2D> CreateRound(double AWidth, double ARadius);
  // EGeometry "Invalid Parameter for CreateRoundRect!" unless 0 <= ARadius and ARadius + 1e-6
  // stays within half of either side.
  static std::unique_ptr<TGeCompositeCurve2D> CreateRoundRect(double AWidth, double AHeight, double ARadius);
  // The open C profile: height APrmH, width APrmB, the right side stopping APrmA from the
  // top and bottom, corners of radius ARadius.
  static std::unique_ptr<TGeCompositeCurve2D> CreateInnerC(double APrmA, double APrmB, double APrmH, double ARadius);
  // The closed H profile: flanges EdgeA wide and Thickness1 thick at top and bottom, EdgeB
  // high overall, a web Thickness2 thick, fillets of Radius between web and flanges; Angle
  // in (0, pi/2) splits each fillet there.
  static std::unique_ptr<TGeCompositeCurve2D> CreateHSection(double EdgeA, double EdgeB, double Thickness1,
                                                             double Thickness2, double Radius, double Angle);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  // Into another composite: Dest's sub-curves are dropped (freed when Dest owned them) and
  // Dest then owns clones of these, whatever list it had.
  void AssignTo(TPersistent& Dest) const override;
  // Persistence hooks of the XML and binary record forms; filled with the readers and
  // writers of the curve formats.
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  // Appends a curve that the composite then owns. EListError on a composite that does not own
  // its curves; EParamError for nil.
  void AddCurve(std::unique_ptr<TGeCurve2D> Curve);
  // Appends a curve that the caller owns, on a composite that does not own its curves (an
  // owning composite takes it over). EParamError for nil or the composite itself.
  void AddCurve(TGeCurve2D* Curve);
  void Clear();
  // EListError for an index outside the list.
  const TGeCurve2D* GetCurve(int Idx) const { return FCurves[Idx]; }
  int GetCurveCount() const { return FCurves.Count(); }
  int IndexOfCurve(const TGeCurve2D* ACurve) const;
  bool GetOwnsCurves() const { return FCurves.GetOwnsObjects(); }
  // A new list of the sub-curves, which owns none of them.
  std::unique_ptr<TList<const TGeCurve2D*>> GetCurves() const;
  // Tells the composite that a sub-curve was changed from outside.
  void Changed() const;

  // The sub-curve that holds Param (Curve, nil for an empty composite) and the parameter on
  // it. At a joint isLeft picks the one that ends there. A closed composite wraps any
  // parameter round; an open one holds it to its ends.
  double SubParam(double Param, const TGeCurve2D*& Curve, bool isLeft) const;

  TPoint2D GetStartPoint() const override;
  TPoint2D GetEndPoint() const override;
  double GetCurveLength() const override;
  TGeInterval GetInterval() const override;
  double LengthAt(double Param) const override;
  TRect2D BoundBlock() const override;
  TRect2D GetRoughBoundBlock() const override;
  TPoint2D EvalPoint(double Param) const override;
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override;
  TPoint2D DerivLeft(double Param) const override;
  TPoint2D DerivRight(double Param) const override;
  bool GetIsClosedTol(const TGeTolerance& ATol) const override;
  bool GetIsClockwise() const override;
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // The first sub-curve that holds Pnt gives Param; Param stays as it was when none does.
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  // The parameter Len along the chain from ParamStart, backward for a negative Len. An open
  // composite stops at its ends; a closed one goes round, whole laps dropping out.
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override;
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  // No samples for a reversed range or one outside the parameter range.
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override;
  // A composite of new curves along the stretch; through the seam of a closed composite when
  // PrmFrom > PrmTo. Nil for an empty stretch, a bound outside the range, or a reversed one
  // on an open composite.
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  // A new composite, owning all its curves, in which each sub-curve that has a simpler form
  // is replaced by it; nil when none has.
  std::unique_ptr<TGeCurve2D> CalcDegradeCurve() const override;
  // The same loop from any start on a closed composite; without CheckDir also reversed.
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  void ReverseDir() override;
  void TransformBy(const TMatrix2D& Mtx) override;
  std::string ToString() const override;

  // Each sub-curve ends where the next one starts (within 1e-6).
  bool CheckContinuous() const;

 private:
  // FOffsets[i] is the parameter at which sub-curve i starts, FOffsets[n] the end;
  // FLengths[i] the length before sub-curve i.
  const std::vector<double>& Offsets() const;
  const std::vector<double>& Lengths() const;
  TGeCurve2D* Item(int Idx) const { return FCurves[Idx]; }
  // The index of the sub-curve that holds the composite parameter T (already within range).
  int IndexAt(double T, bool isLeft) const;

  TObjectList<TGeCurve2D> FCurves;
  mutable std::vector<double> FOffsets;
  mutable std::vector<double> FLengths;
};

}  // namespace orvane
