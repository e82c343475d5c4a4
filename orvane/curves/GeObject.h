#pragma once
// Roots of the curve objects: TGeObject (cloning, the class dictionary, the persistence
// hooks) and TGeEntity2D (placement in the plane, every transform through one matrix).

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "orvane/curves/ClassDict.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Persistent.h"
#include "orvane/foundation/Point2D.h"

namespace pugi {
class xml_node;
}

namespace orvane {

class IFbsReader;
class IFbsWriter;

class ORVANE_API TGeObject : public TPersistent {
 public:
  TGeObject() = default;
  ~TGeObject() override;

  // Copying between unrelated object classes silently does nothing; a class that holds data
  // copies it into Dest when Dest is of its own class or derives from it.
  void AssignTo(TPersistent& Dest) const override;
  std::string ClassName() const override;
  // A new, empty object of this object's own class.
  virtual std::unique_ptr<TGeObject> CreateEmpty() const;

  // Persistence hooks, filled by the classes that can be filed: the XML form and the binary
  // record form. Each class calls the inherited hook first. In XML the root files nothing;
  // in the binary form it writes (and reads) one empty record named by the filer name.
  virtual void LoadFromXmlNode(const pugi::xml_node& ANode);
  virtual void SaveToXmlNode(pugi::xml_node& ANode) const;
  virtual void LoadGeoData(IFbsReader& AReader);
  virtual void SaveGeoData(IFbsWriter& AWriter) const;

  // Appends a child named by GetFilerName to ANode and saves this object into it.
  void WriteToXmlNode(pugi::xml_node& ANode) const;
  // The object of the element ANode, keyed by its attribute "Class" or else its name (exact,
  // no prefix removed): nil when the class is unknown or no T. Malformed values raise
  // EInOutError with the element's path, and so does nesting deeper than
  // IFbsReader::MaxNesting elements.
  template <class T = TGeObject>
  static std::unique_ptr<T> ReadFromXmlNode(const pugi::xml_node& ANode) {
    return Downcast<T>(ReadFromXmlNodeOf(ANode, &IsA<T>));
  }
  // One whole object to the binary form: a record named by its filer name, then SaveGeoData.
  static void SaveGeObjToDb(const TGeObject& AObj, IFbsWriter& AWriter);
  // The next object of the binary form: nil when the class of its first record is unknown or
  // no T (and then its further records stay unread). Read errors are EInOutError.
  template <class T = TGeObject>
  static std::unique_ptr<T> ReadFromGeoData(IFbsReader& AReader) {
    return Downcast<T>(ReadFromGeoDataOf(AReader, &IsA<T>));
  }

  // The class name without its first "TGe": the key of the class dictionary ("Line2D").
  std::string GetFilerName() const;
  static std::string FilerNameOf(std::string_view AClassName);

  // A new object of this object's own class with this object's content.
  std::unique_ptr<TGeObject> Clone() const;
  // Clone as T; nil when this object is no T.
  template <class T>
  std::unique_ptr<T> CloneAs() const {
    std::unique_ptr<TGeObject> copy = Clone();
    if (dynamic_cast<T*>(copy.get()) == nullptr) return nullptr;
    return std::unique_ptr<T>(static_cast<T*>(copy.release()));
  }

  // Equality of content; the root compares identity. Obj may be nil.
  virtual bool Equals(const TGeObject* Obj) const;
  // A readable description; the root gives its class name.
  virtual std::string ToString() const;

  // The class dictionary of the process; nil while the library is not started.
  static const TGeClassDictionary* GetClassDict();
  // An empty object of the class filed under AFilerName; nil when the name is unknown or the
  // library is not started.
  static std::unique_ptr<TGeObject> CreateByFilerName(std::string_view AFilerName);
  // The same, and nil too when the class found is no T: a reader asked for a curve must not
  // hand out another kind of object.
  template <class T>
  static std::unique_ptr<T> CreateByFilerNameAs(std::string_view AFilerName) {
    std::unique_ptr<TGeObject> obj = CreateByFilerName(AFilerName);
    if (dynamic_cast<T*>(obj.get()) == nullptr) return nullptr;
    return std::unique_ptr<T>(static_cast<T*>(obj.release()));
  }

 private:
  using TIsA = bool (*)(const TGeObject&);
  template <class T>
  static bool IsA(const TGeObject& Obj) {
    if constexpr (std::is_base_of_v<T, TGeObject>) {
      return true;
    } else {
      return dynamic_cast<const T*>(&Obj) != nullptr;
    }
  }
  template <class T>
  static std::unique_ptr<T> Downcast(std::unique_ptr<TGeObject> Obj) {
    return std::unique_ptr<T>(static_cast<T*>(Obj.release()));
  }
  // The readers behind the templates: the class found must pass AIsA before it is loaded.
  static std::unique_ptr<TGeObject> ReadFromXmlNodeOf(const pugi::xml_node& ANode, TIsA AIsA);
  static std::unique_ptr<TGeObject> ReadFromGeoDataOf(IFbsReader& AReader, TIsA AIsA);
};

class ORVANE_API TGeEntity2D : public TGeObject {
 public:
  // Every concrete entity names its own class and makes its own kind, so that a clone or a
  // filed object comes back as the class it was.
  std::string ClassName() const override = 0;
  std::unique_ptr<TGeObject> CreateEmpty() const override = 0;

  virtual bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol) const = 0;
  // Point reflection through Org (a half turn about it).
  virtual void Mirror(const TPoint2D& Org);
  // Reflection in the line through Line's two points; EGeometry when they coincide.
  virtual void Mirror(const TLine2D& Line);
  virtual void RotateBy(double Angle, const TPoint2D& Base);
  virtual void ScaleBy(double Size, const TPoint2D& Base);
  virtual void TransformBy(const TMatrix2D& Mtx) = 0;
  virtual void TranslateBy(double dx, double dy);

  // About the origin.
  void RotateBy(double Angle);
  void ScaleBy(double Size);
  void TranslateBy(const TPoint2D& offset);
};

}  // namespace orvane
