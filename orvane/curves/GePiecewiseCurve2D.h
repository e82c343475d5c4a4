#pragma once
// TGePiecewiseCurve2D: a chain of like segments, segment i over the parameters i to i + 1,
// and TGePiecewiseSegment2D, the view of one segment that holds the segment's own curve.
//
// Views are made on the first request and kept in a cache; every change of the curve's
// points, direction or placement drops the views it touches, so a view never shows old
// geometry. A view handed out by GetBufSegment lives until the curve next changes. Queries
// fill the cache, so one curve is not to be read from two threads at once.

#include <memory>
#include <string>
#include <vector>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Export.h"

namespace orvane {

class TGePiecewiseCurve2D;

class ORVANE_API TGePiecewiseSegment2D : public TGeCurve2D {
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

  ~TGePiecewiseSegment2D() override;

  // Copies owner, index and a clone of the segment's curve into another view.
  void AssignTo(TPersistent& Dest) const override;

  // A new curve of this segment, read from the owner; the empty curve of the segment's kind
  // when the view has no owner.
  virtual std::unique_ptr<TGeCurve2D> GetBaseCurve() const = 0;
  // The curve this view holds; never nil.
  const TGeCurve2D& BaseCurve() const { return *FBaseCurve; }
  const TGePiecewiseCurve2D* GetOwner() const { return FOwner; }
  int GetSegIdx() const { return FSegIdx; }

  TPoint2D GetStartPoint() const override { return FBaseCurve->GetStartPoint(); }
  TPoint2D GetEndPoint() const override { return FBaseCurve->GetEndPoint(); }
  double GetCurveLength() const override { return FBaseCurve->GetCurveLength(); }
  TGeInterval GetInterval() const override { return FBaseCurve->GetInterval(); }
  double LengthAt(double Param) const override { return FBaseCurve->LengthAt(Param); }
  TRect2D BoundBlock() const override { return FBaseCurve->BoundBlock(); }
  TRect2D BoundBlockOf(const TGeInterval& Intv) const override { return FBaseCurve->BoundBlockOf(Intv); }
  TPoint2D EvalPoint(double Param) const override { return FBaseCurve->EvalPoint(Param); }
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override { return FBaseCurve->EvalPoint(Param, Deriv); }
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override {
    return FBaseCurve->GetClosedPointTo(Pnt, Tol, Param);
  }
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override {
    return FBaseCurve->GetSamplePointsByChord(EpsChord, Points, Params);
  }
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override {
    return FBaseCurve->GetSamplePointsByChord(paramFrom, paramTo, epsChord, points, params);
  }
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override {
    return FBaseCurve->IsOn(Pnt, Tol, Param);
  }
  // Another view whose curve equals this one's.
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override {
    return FBaseCurve->ParamOfLength(ParamStart, Len, Tol);
  }
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override {
    return FBaseCurve->ParamOfPoint(Pnt, Tol);
  }
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override {
    return FBaseCurve->SubCurve(PrmFrom, PrmTo);
  }
  // A view shows its owner's data and is not changed on its own: both do nothing.
  void ReverseDir() override {}
  void TransformBy(const TMatrix2D& /*Mtx*/) override {}
  std::string ToString() const override { return FBaseCurve->ToString(); }

 protected:
  // Derived constructors finish with InitBaseCurve: the base cannot ask the derived class.
  TGePiecewiseSegment2D(const TGePiecewiseCurve2D* Owner, int SegIdx) : FOwner(Owner), FSegIdx(SegIdx) {}
  void InitBaseCurve() { FBaseCurve = GetBaseCurve(); }

  const TGePiecewiseCurve2D* FOwner;
  int FSegIdx;
  std::unique_ptr<TGeCurve2D> FBaseCurve;
};

class ORVANE_API TGePiecewiseCurve2D : public TGeCurve2D {
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

  ~TGePiecewiseCurve2D() override;

  // The cached view of segment Idx, made on first request; nil for an index outside
  // 0 .. GetSegmentCount() - 1. Valid until the curve next changes.
  virtual const TGePiecewiseSegment2D* GetBufSegment(int Idx) const;
  virtual int GetSegmentCount() const = 0;
  // A new view of segment Idx, which the caller owns.
  virtual std::unique_ptr<TGePiecewiseSegment2D> GetSegment(int Idx) const = 0;
  virtual void SetSegmentCount(int Value);

  // The segment view that holds Param (Curve, nil for a curve without segments) and the
  // parameter on it. At a joint isLeft picks the segment that ends there, otherwise the
  // one that starts there. A closed curve wraps any parameter round; an open one holds it
  // to its ends.
  double SubParam(double Param, const TGeCurve2D*& Curve, bool isLeft) const;

  TGeInterval GetInterval() const override;
  TPoint2D EvalPoint(double Param) const override;
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override;
  TPoint2D DerivLeft(double Param) const override;
  TPoint2D DerivRight(double Param) const override;
  double GetCurveLength() const override;
  TRect2D BoundBlock() const override;
  // The box of the stretch over Intv, held to the parameter range. EGeometry "Invalid
  // Inteval Input for BoundBlockOf! ..." for a reversed interval; the invalid box for a
  // stretch without extent between two joints.
  TRect2D BoundBlockOf(const TGeInterval& Intv) const override;
  bool GetIsClosedTol(const TGeTolerance& ATol) const override;
  // The nearest point over all segments; on a tie the earlier one.
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  // The parameter Len along the curve from ParamStart, backward for a negative Len. An open
  // curve stops at its ends; a closed one goes on through the seam.
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override;
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  // Samples from paramFrom to paramTo, held to the range; none for a reversed range (no
  // wrap through the seam), the one point at paramFrom for an empty one.
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override;
  // Same class, same segment count, segments equal in order; without CheckDir also in
  // reverse order.
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  // Both drop the cached views; derived classes change their data after calling these.
  void ReverseDir() override;
  void TransformBy(const TMatrix2D& Mtx) override;

 protected:
  TGePiecewiseCurve2D() = default;
  void ClearSegmentCache() const;
  // Drops the view of segment Idx, when there is one.
  void DropSegment(int Idx) const;
  // Drops the views of segments Count and up.
  void DropSegmentsFrom(int Count) const;
  // The length of segment I from parameter U0 to U1 (both on the segment).
  double SegmentLength(int I, double U0, double U1) const;

 private:
  mutable std::vector<std::unique_ptr<TGePiecewiseSegment2D>> FBufSegments;
};

}  // namespace orvane
