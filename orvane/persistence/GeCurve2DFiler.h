#pragma once
// TGeCurve2DFiler: whole XML files of curves. The root element "Curve2DList" holds one child
// per curve, named by the curve's filer name ("Line2D", "CircularArc2D", "Polyline2D",
// "Polygon2D", "Spline2D", "CompositeCurve2D"). Sub-curves of a composite are children of its element.

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/splines/GeSpline2D.h"

namespace pugi {
class xml_node;
}

namespace orvane {

class ORVANE_API TGeCurve2DFiler {
 public:
  TGeCurve2DFiler() = delete;

  // A file of the one curve. EInOutError when the file cannot be written.
  static void SaveCurve(const TGeCurve2D& ACurve, const std::string& AFilename);
  // A file of the list's curves in order; nil items and curves of a class that the format
  // does not hold write nothing.
  static void SaveCurveList(const TList<TGeCurve2D*>& AList, const std::string& AFilename);
  static void SaveCurveList(const TList<TGeCurve2D*>& AList, std::ostream& AStream);
  // Appends a child for ACurve to ANode, named by the class the curve belongs to (a class
  // that derives from a filed class files as that class); nothing for another class.
  static void WriteCurve(pugi::xml_node& ANode, const TGeCurve2D& ACurve);

  // Appends ReadCurve of each child element of the root, in document order, nil entries
  // included, so that positions stay those of the file. Every error is an EInOutError that
  // names the file and the place (element path or byte offset); AList is then untouched.
  static void ReadCurveList(TObjectList<TGeCurve2D>& AList, const std::string& AFilename);
  // The same from a stream; ASourceName names it in messages.
  static void ReadCurveList(TObjectList<TGeCurve2D>& AList, std::istream& AStream, std::string_view ASourceName);
  // The curve of the element: its name, without a leading "TGe" (exact case), compared
  // without regard to ASCII letter case with the filer names. Nil for any other name.
  static std::unique_ptr<TGeCurve2D> ReadCurve(const pugi::xml_node& ANode);
  static std::unique_ptr<TGeLine2D> ReadLine(const pugi::xml_node& ANode);
  static std::unique_ptr<TGeCircularArc2D> ReadArc(const pugi::xml_node& ANode);
  // Nil unless the element's "PointCount" is at least 1.
  static std::unique_ptr<TGePolyline2D> ReadPolyline(const pugi::xml_node& ANode);
  static std::unique_ptr<TGePolygon2D> ReadPolygon(const pugi::xml_node& ANode);
  // Malformed splines (a degree outside 1..3 among them) are an EInOutError, not nil: a
  // curve the file holds is never dropped without a word.
  static std::unique_ptr<TGeSpline2D> ReadSpline(const pugi::xml_node& ANode);
  // Its children in order; a child of no known curve class is dropped.
  static std::unique_ptr<TGeCompositeCurve2D> ReadCompositeCurve(const pugi::xml_node& ANode);
};

}  // namespace orvane
