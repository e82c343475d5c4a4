#include "orvane/curves/GeObject.h"

#include <pugixml.hpp>

#include "orvane/curves/internal/ClassRegistry.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"

namespace orvane {

TGeObject::~TGeObject() = default;

void TGeObject::AssignTo(TPersistent& /*Dest*/) const {}

std::string TGeObject::ClassName() const { return "TGeObject"; }

std::unique_ptr<TGeObject> TGeObject::CreateEmpty() const { return std::make_unique<TGeObject>(); }

void TGeObject::LoadFromXmlNode(const pugi::xml_node& /*ANode*/) {}

void TGeObject::SaveToXmlNode(pugi::xml_node& /*ANode*/) const {}

void TGeObject::LoadGeoData(IFbsReader& AReader) { AReader.NextRecord().Release(); }

void TGeObject::SaveGeoData(IFbsWriter& AWriter) const { AWriter.BeginRecord(GetFilerName(), 1).Release(); }

void TGeObject::WriteToXmlNode(pugi::xml_node& ANode) const {
  pugi::xml_node child = ANode.append_child(GetFilerName().c_str());
  SaveToXmlNode(child);
}

std::unique_ptr<TGeObject> TGeObject::ReadFromXmlNodeOf(const pugi::xml_node& ANode, TIsA AIsA) {
  using internal::TXmlNodeHelper;
  if (TXmlNodeHelper::Depth(ANode, IFbsReader::MaxNesting) > IFbsReader::MaxNesting) {
    TXmlNodeHelper::Fail(ANode, "TGeObject.ReadFromXmlNode",
                         Format("curves nest deeper than %d elements", IFbsReader::MaxNesting));
  }
  std::string_view key = ANode.attribute("Class").value();
  if (key.empty()) key = ANode.name();
  std::unique_ptr<TGeObject> obj = CreateByFilerName(key);
  if (obj == nullptr || !AIsA(*obj)) return nullptr;
  obj->LoadFromXmlNode(ANode);
  return obj;
}

void TGeObject::SaveGeObjToDb(const TGeObject& AObj, IFbsWriter& AWriter) {
  AWriter.BeginRecord(AObj.GetFilerName(), 1).Release();
  AObj.SaveGeoData(AWriter);
}

std::unique_ptr<TGeObject> TGeObject::ReadFromGeoDataOf(IFbsReader& AReader, TIsA AIsA) {
  AReader.EnterObject();
  struct TLeave {
    IFbsReader& Reader;
    ~TLeave() { Reader.LeaveObject(); }
  } leave{AReader};
  const std::string name = AReader.NextRecord().GetName();
  std::unique_ptr<TGeObject> obj = CreateByFilerName(name);
  if (obj == nullptr || !AIsA(*obj)) return nullptr;
  obj->LoadGeoData(AReader);
  return obj;
}

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
