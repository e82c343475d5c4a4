#pragma once
// TVPoint2DList: a growable list of points that implements IVGeometry2D; the base of the
// vertex polyline and the monotone chain.

#include <memory>
#include <string>
#include <utility>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/vertex/Geometry2D.h"

namespace orvane {

class ORVANE_API TVPoint2DList : public TList<TPoint2D>, public IVGeometry2D {
 public:
  TVPoint2DList() = default;
  TVPoint2DList(std::initializer_list<TPoint2D> Points) : TList<TPoint2D>(Points) {}
  explicit TVPoint2DList(const TDynPoints2D& Points) { FItems = Points; }
  explicit TVPoint2DList(TDynPoints2D&& Points) { FItems = std::move(Points); }
  // An object with identity, like every vertex geometry: copied through Clone, never moved.
  TVPoint2DList(TVPoint2DList&&) = delete;
  TVPoint2DList& operator=(TVPoint2DList&&) = delete;

  // An empty list of the receiver's own class; every derived class overrides it, so that
  // Clone keeps the class.
  virtual std::unique_ptr<TVPoint2DList> New() const;
  // New, then all points copied (through CopyFrom, which derived classes extend to carry
  // their own state).
  std::unique_ptr<IVGeometry2D> Clone() const override;

  // Signed area of the closed outline, positive counter-clockwise; 0 below 3 points.
  double Area() const override;
  // Mean of the X coordinates; MaxDouble for an empty list.
  double AverageX() const;
  TRect2D BoundBox() const override;
  void RoundTo(int Accuracy) override;
  // A new base-class list with the points S1 .. S2 - 1; empty when S1 >= S2, S1 < 0 or
  // S2 > Count.
  std::unique_ptr<TVPoint2DList> Snip(int S1, int S2) const;
  void Translate(const TPoint2D& Vector) override;
  void Rotate(double Radian) override;
  void RotateBy90() override;
  void RotateBy_90() override;
  void YMirror() override;
  void Transform(const TMatrix2D& Matrix) override;
  // Scaling about the origin. Virtual like the other bulk changes: they rewrite the points
  // without a notification per point, so a derived class that keeps state derived from
  // its points overrides them.
  virtual void Zoom(double Coeff);
  // Index of a point equal to Pt within Tol in a list sorted by CompareByXY, or -1. The
  // neighbourhood of the binary search's last probe is scanned as well, since a tolerance
  // may cross the exact order that the search follows.
  int IndexOfByXY(const TPoint2D& Pt, double Tol) const;
  // Index of the first point with the largest (IsMax) or smallest coordinate; Coordinate 0
  // selects X, 1 selects Y; -1 for an empty list.
  int FindMostValueId(int Coordinate, bool IsMax) const;

  // The points as a dynamic array.
  const TDynPoints2D& Points() const { return FItems; }

  // JSON files of the points, [[x,y],...], each coordinate the shortest text that reads
  // back to the same double: a JSON number (SaveTo) or a JSON string (SaveToStrJson).
  // EParamError for a point that is not finite; EInOutError when the file cannot be written.
  void SaveTo(const std::string& FileName) const;
  void SaveToStrJson(const std::string& FileName) const;
  // The points of such a file replace the list's; each coordinate may be a number or a
  // string that holds one. EInOutError, naming the file and the place, for a file that
  // cannot be read or has another shape; the list then keeps its points.
  void ReadFrom(const std::string& FileName);
  void ReadFromStrJson(const std::string& FileName);

 protected:
  // Copies the points of Source into this (empty, freshly made) list.
  virtual void CopyFrom(const TVPoint2DList& Source);
};

}  // namespace orvane
