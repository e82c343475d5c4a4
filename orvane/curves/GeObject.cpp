#include "orvane/curves/GeObject.h"

#include "orvane/curves/internal/ClassRegistry.h"

namespace orvane {

TGeObject::~TGeObject() = default;

void TGeObject::AssignTo(TPersistent& /*Dest*/) const {}

std::string TGeObject::ClassName() const { return "TGeObject"; }

std::unique_ptr<TGeObject> TGeObject::CreateEmpty() const { return std::make_unique<TGeObject>(); }

void TGeObject::LoadFromXmlNode(const pugi::xml_node& /*ANode*/) {}

void TGeObject::SaveToXmlNode(pugi::xml_node& /*ANode*/) const {}

// The binary record header is read and written here once the binary format exists; until
// then an object without data of its own files nothing.
void TGeObject::LoadGeoData(IFbsReader& /*AReader*/) {}

void TGeObject::SaveGeoData(IFbsWriter& /*AWriter*/) const {}

std::string TGeObject::GetFilerName() const { return FilerNameOf(ClassName()); }

std::string TGeObject::FilerNameOf(std::string_view AClassName) {
  std::string name(AClassName);
  const auto at = name.find("TGe");
  if (at != std::string::npos) name.erase(at, 3);
  return name;
}

std::unique_ptr<TGeObject> TGeObject::Clone() const {
  std::unique_ptr<TGeObject> copy = CreateEmpty();
  copy->Assign(*this);
  return copy;
}

bool TGeObject::Equals(const TGeObject* Obj) const { return Obj == this; }

std::string TGeObject::ToString() const { return ClassName(); }

const TGeClassDictionary* TGeObject::GetClassDict() { return internal::ClassDict(); }

std::unique_ptr<TGeObject> TGeObject::CreateByFilerName(std::string_view AFilerName) {
  const TGeClassDictionary* dict = internal::ClassDict();
  TGeClass cls;
  if (dict == nullptr || !dict->TryGetValue(AFilerName, cls)) return nullptr;
  return cls.CreateEmpty();
}

void TGeEntity2D::Mirror(const TPoint2D& Org) {
  TMatrix2D m;
  m.SetToMirroring(Org);
  TransformBy(m);
}

void TGeEntity2D::Mirror(const TLine2D& Line) {
  TMatrix2D m;
  m.SetToMirroringLine(Line.P1, Line.P2);
  TransformBy(m);
}

void TGeEntity2D::RotateBy(double Angle, const TPoint2D& Base) {
  TMatrix2D m;
  m.SetToRotation(Angle, Base);
  TransformBy(m);
}

void TGeEntity2D::ScaleBy(double Size, const TPoint2D& Base) {
  TMatrix2D m;
  m.SetToScaleAt(Size, Base);
  TransformBy(m);
}

void TGeEntity2D::TranslateBy(double dx, double dy) {
  TMatrix2D m;
  m.SetToTranslation(dx, dy);
  TransformBy(m);
}

void TGeEntity2D::RotateBy(double Angle) {
  TMatrix2D m;
  m.SetToRotation(Angle);
  TransformBy(m);
}

void TGeEntity2D::ScaleBy(double Size) {
  TMatrix2D m;
  m.SetToScale(Size);
  TransformBy(m);
}

void TGeEntity2D::TranslateBy(const TPoint2D& offset) {
  TMatrix2D m;
  m.SetToTranslation(offset);
  TransformBy(m);
}

}  // namespace orvane
