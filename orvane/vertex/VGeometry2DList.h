#pragma once
// TVGeometry2DList<T>: a list of objects that each implement IVGeometry2D, itself an
// IVGeometry2D, so that one call reaches every point of a nested structure.

#include <memory>
#include <type_traits>

#include "orvane/foundation/List.h"
#include "orvane/vertex/Geometry2D.h"

namespace orvane {

template <class T>
class TVGeometry2DList : public TObjectList<T>, public IVGeometry2D {
 public:
  explicit TVGeometry2DList(bool AOwnsObjects = true) : TObjectList<T>(AOwnsObjects) {
    static_assert(std::is_base_of_v<IVGeometry2D, T>, "items must implement IVGeometry2D");
  }
  // An object with identity, like every vertex geometry: copied through Clone, never moved.
  TVGeometry2DList(TVGeometry2DList&&) = delete;
  TVGeometry2DList& operator=(TVGeometry2DList&&) = delete;

  // An empty list of the receiver's class; every derived class overrides it.
  virtual std::unique_ptr<TVGeometry2DList<T>> New(bool AOwnsObjects) const {
    return std::make_unique<TVGeometry2DList<T>>(AOwnsObjects);
  }
  // New with the receiver's own ownership. An owning list fills the copy with each item's
  // Clone; a list that does not own its items shares them with the copy.
  std::unique_ptr<IVGeometry2D> Clone() const override {
    std::unique_ptr<TVGeometry2DList<T>> copy = New(this->GetOwnsObjects());
    for (T* item : *this) {
      if (this->GetOwnsObjects())
        copy->Add(CloneItem(*item));
      else
        copy->Add(item);
    }
    return copy;
  }

  // The sum of the items' signed areas.
  double Area() const override {
    double sum = 0.0;
    for (const T* item : *this) sum += item->Area();
    return sum;
  }
  TRect2D BoundBox() const override {
    TRect2D box = TRect2D::Invalid();
    for (const T* item : *this) box.Extend(item->BoundBox());
    return box;
  }
  void RoundTo(int Accuracy) override {
    ForEach([&](IVGeometry2D& g) { g.RoundTo(Accuracy); });
  }
  void Translate(const TPoint2D& Vector) override {
    ForEach([&](IVGeometry2D& g) { g.Translate(Vector); });
  }
  void Rotate(double Radian) override {
    ForEach([&](IVGeometry2D& g) { g.Rotate(Radian); });
  }
  void RotateBy90() override {
    ForEach([](IVGeometry2D& g) { g.RotateBy90(); });
  }
  void RotateBy_90() override {
    ForEach([](IVGeometry2D& g) { g.RotateBy_90(); });
  }
  void YMirror() override {
    ForEach([](IVGeometry2D& g) { g.YMirror(); });
  }
  void Transform(const TMatrix2D& Matrix) override {
    ForEach([&](IVGeometry2D& g) { g.Transform(Matrix); });
  }

 protected:
  static std::unique_ptr<T> CloneItem(const T& Item) {
    std::unique_ptr<T> copy = static_cast<const IVGeometry2D&>(Item).template CloneAs<T>();
    Assert(copy != nullptr, "[Assert] TVGeometry2DList.Clone: an item's Clone did not keep its class");
    return copy;
  }

 private:
  template <class F>
  void ForEach(F&& Fn) {
    for (T* item : *this) Fn(static_cast<IVGeometry2D&>(*item));
  }
};

}  // namespace orvane
