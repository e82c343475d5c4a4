// The text dump of points and polylines: a colour in front of each object, then its points.
// Mixed polylines are dumped as the vertex polyline they flatten to, monotone polygons as
// their chains.

#include <ostream>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/mixed/LABPolylineList.h"
#include "orvane/monotone/MPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"

namespace orvane {

namespace {

// Black is the dump's default and is left out.
std::string_view DumpColor(std::string_view Color) { return Color == "#000000" ? std::string_view() : Color; }

void AppendPoint(std::string& Out, const TPoint2D& Pt, bool HighPrecision) {
  Out += HighPrecision ? Format("(%.16f, %.16f)", Pt.X, Pt.Y) : Format("(%f, %f)", Pt.X, Pt.Y);
}

void AppendPolyline(std::string& Out, const TVPolyline2D& Line, std::string_view Color, bool HighPrecision) {
  Out += DumpColor(Color);
  Out += '(';
  for (int i = 0; i < Line.Count(); ++i) {
    if (i > 0) Out += ", ";
    AppendPoint(Out, Line[i], HighPrecision);
  }
  Out += ')';
}

void Flatten(const TLABPolyline& Line, TVPolyline2D& flat) {
  for (int i = 0; i < Line.Count(); ++i) {
    const TLABSegline& seg = Line[i];
    if (seg.IsLine(1e-6)) {
      flat.Add(seg.P1);
      flat.Add(seg.P4);
    } else {
      const std::unique_ptr<TVPolyline2D> pts = seg.Sample(0.01);
      for (int j = 0; j < pts->Count(); ++j) flat.Add((*pts)[j]);
    }
  }
}

void Put(std::ostream& F, const std::string& Text, const char* Where) {
  F.write(Text.data(), static_cast<std::streamsize>(Text.size()));
  if (!F) throw EInOutError("[Error] %s: writing to the stream failed", Where);
}

}  // namespace

void TPoint2DUtils::WriteToFile(const TPoint2D& Pt, std::ostream& F, std::string_view Color, bool HighPrecision) {
  std::string text(DumpColor(Color));
  text += ' ';
  AppendPoint(text, Pt, HighPrecision);
  Put(F, text, "TPoint2DUtils.WriteToFile");
}

void TVPolyline2D::WriteToFile(std::ostream& F, std::string_view Color, bool HighPrecision) const {
  std::string text;
  AppendPolyline(text, *this, Color, HighPrecision);
  Put(F, text, "TVPolyline2D.WriteToFile");
}

void TVPolyline2DList::WriteToFile(std::ostream& F, std::string_view Color, bool HighPrecision) const {
  std::string text;
  for (int i = 0; i < Count(); ++i) {
    if (i > 0) text += '\n';
    AppendPolyline(text, *(*this)[i], Color, HighPrecision);
  }
  Put(F, text, "TVPolyline2DList.WriteToFile");
}

void TMPolygon::WriteToFile(std::ostream& F, std::string_view Color, bool HighPrecision) const {
  std::string text;
  for (int i = 0; i < Count(); ++i) {
    if (i > 0) text += '\n';
    AppendPolyline(text, *(*this)[i], Color, HighPrecision);
  }
  Put(F, text, "TMPolygon.WriteToFile");
}

void TLABPolyline::WriteToFile(std::ostream& F, int /*Flag*/, std::string_view Color, bool HighPrecision) const {
  std::string text;
  TVPolyline2D flat;
  Flatten(*this, flat);
  AppendPolyline(text, flat, Color, HighPrecision);
  Put(F, text, "TLABPolyline.WriteToFile");
}

void TLABPolylineList::WriteToFile(std::ostream& F, int /*Flag*/, std::string_view Color, bool HighPrecision) const {
  std::string text;
  for (int i = 0; i < Count(); ++i) {
    if (i > 0) text += '\n';
    TVPolyline2D flat;
    Flatten(*(*this)[i], flat);
    AppendPolyline(text, flat, Color, HighPrecision);
  }
  Put(F, text, "TLABPolylineList.WriteToFile");
}

}  // namespace orvane
