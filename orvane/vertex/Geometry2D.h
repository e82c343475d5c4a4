#pragma once
// IVGeometry2D: the contract of every vertex-level container. Each can clone itself,
// report its area and box, and move, turn, mirror and transform itself in place.
// Lifetime never runs through this interface: objects are owned by their list or creator.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

class ORVANE_API IVGeometry2D {
 public:
  virtual ~IVGeometry2D() = default;

  // A deep copy of the receiver's own class.
  virtual std::unique_ptr<IVGeometry2D> Clone() const = 0;
  // Signed area, positive counter-clockwise.
  virtual double Area() const = 0;
  // The invalid box when there is nothing.
  virtual TRect2D BoundBox() const = 0;
  // Every coordinate rounded (half to even) to Accuracy decimals.
  virtual void RoundTo(int Accuracy) = 0;
  virtual void Translate(const TPoint2D& Vector) = 0;
  // Rotation about the origin.
  virtual void Rotate(double Radian) = 0;
  // Quarter turns counter-clockwise / clockwise about the origin, without trigonometry.
  virtual void RotateBy90() = 0;
  virtual void RotateBy_90() = 0;
  // Mirror in the Y axis: (X, Y) becomes (-X, Y).
  virtual void YMirror() = 0;
  virtual void Transform(const TMatrix2D& Matrix) = 0;

  // Clone, typed as the derived class the caller knows the receiver to be (nil otherwise).
  template <class T>
  std::unique_ptr<T> CloneAs() const {
    std::unique_ptr<IVGeometry2D> copy = Clone();
    if (auto* typed = dynamic_cast<T*>(copy.get())) {
      copy.release();
      return std::unique_ptr<T>(typed);
    }
    return nullptr;
  }

 protected:
  IVGeometry2D() = default;
  IVGeometry2D(const IVGeometry2D&) = default;
  IVGeometry2D& operator=(const IVGeometry2D&) = default;
};

}  // namespace orvane
