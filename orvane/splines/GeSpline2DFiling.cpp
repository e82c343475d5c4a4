// The spline's XML element and binary record. Both readers build the arrays aside, check the
// whole spline, and only then take it, so that a bad file never leaves a spline that
// evaluation would refuse, nor changes the spline it was loaded into.

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/NumberText.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"
#include "orvane/splines/GeSpline2D.h"

namespace orvane {

namespace {

// Evaluation and the Bezier conversions serve degrees 1 to 3.
constexpr std::int32_t CMinDegree = 1;
constexpr std::int32_t CMaxDegree = 3;

// What is wrong with the counts of a record, or an empty text.
std::string CountsFault(std::int32_t CtrlCount, std::int32_t Degree, std::int32_t KnotCount) {
  if (Degree < CMinDegree || Degree > CMaxDegree) {
    return Format("the degree %d lies outside %d..%d", Degree, CMinDegree, CMaxDegree);
  }
  if (CtrlCount < Degree + 1) return Format("%d control points are too few for degree %d", CtrlCount, Degree);
  if (static_cast<std::int64_t>(KnotCount) != static_cast<std::int64_t>(CtrlCount) + Degree + 1) {
    return Format("%d knots do not fit %d control points of degree %d", KnotCount, CtrlCount, Degree);
  }
  return {};
}

// What is wrong with the values, or an empty text. The counts are those CountsFault passed.
std::string ValuesFault(int Degree, const TFloatDynArray& Knots, const TDynPoints2D& Pts,
                        const TFloatDynArray& Weights) {
  for (std::size_t i = 0; i < Knots.size(); ++i) {
    if (!std::isfinite(Knots[i])) return Format("knot %d is not finite", static_cast<std::int64_t>(i));
    if (i > 0 && Knots[i] < Knots[i - 1]) return Format("the knots fall at knot %d", static_cast<std::int64_t>(i));
  }
  const std::size_t n = Pts.size();
  const std::size_t p = static_cast<std::size_t>(Degree);
  if (!(Knots[p] < Knots[n])) return "the knots span no parameter range";
  for (std::size_t i = 0; i < n; ++i) {
    if (!std::isfinite(Pts[i].X) || !std::isfinite(Pts[i].Y)) {
      return Format("control point %d is not finite", static_cast<std::int64_t>(i));
    }
    if (!(Weights[i] > 0.0) || !std::isfinite(Weights[i])) {
      return Format("weight %d is not a positive number", static_cast<std::int64_t>(i));
    }
  }
  return {};
}

// The index behind Prefix in an element name such as "Knot12": canonical decimal (no sign,
// no leading zero) below Count; -1 for any other name. Read in place, as the names of a
// large file are many.
std::int32_t IndexAfter(const char* Name, std::string_view Prefix, std::int32_t Count) {
  for (const char c : Prefix) {
    if (*Name++ != c) return -1;
  }
  if (*Name < '0' || *Name > '9' || (*Name == '0' && Name[1] != '\0')) return -1;
  std::int64_t idx = 0;
  for (; *Name != '\0'; ++Name) {
    if (*Name < '0' || *Name > '9') return -1;
    idx = idx * 10 + (*Name - '0');
    if (idx >= Count) return -1;
  }
  return static_cast<std::int32_t>(idx);
}

// Name equals Expected; inline, as it runs for every attribute of a large file.
bool NameIs(const char* Name, std::string_view Expected) {
  for (const char c : Expected) {
    if (*Name++ != c) return false;
  }
  return *Name == '\0';
}

// "Knot7" and the like without a heap allocation per element.
struct TIndexedName {
  std::array<char, 24> Buf{};
  const char* Make(std::string_view Prefix, std::size_t Idx) {
    std::copy(Prefix.begin(), Prefix.end(), Buf.begin());
    char* end = std::to_chars(Buf.data() + Prefix.size(), Buf.data() + Buf.size() - 1, Idx).ptr;
    *end = '\0';
    return Buf.data();
  }
};

// Splines with at most this many control points are read in one walk over the children,
// which also counts them; a larger count is first checked against the children present, so
// that a forged count sizes nothing.
constexpr std::int32_t CWalkOnce = 1024;

// The arrays of a spline being read, and which indices have been read (on the stack for the
// usual small spline). The first element of an index counts; a knot without its element is
// 0.0, a control point without its element has weight 0 and is refused later.
struct TReadArrays {
  TFloatDynArray Knots;
  TDynPoints2D Pts;
  TFloatDynArray Weights;
  std::array<char, 256> SeenSmall;
  std::vector<char> SeenLarge;
  char* Seen = nullptr;

  TReadArrays(std::int32_t K, std::int32_t N) { Reset(K, N); }
  void Reset(std::int32_t K, std::int32_t N) {
    Knots.assign(static_cast<std::size_t>(K), 0.0);
    Pts.assign(static_cast<std::size_t>(N), TPoint2D());
    Weights.assign(static_cast<std::size_t>(N), 0.0);
    const std::size_t indices = static_cast<std::size_t>(K) + static_cast<std::size_t>(N);
    Seen = SeenSmall.data();
    if (indices > SeenSmall.size()) {
      SeenLarge.assign(indices, 0);
      Seen = SeenLarge.data();
    }
    std::fill_n(Seen, indices, char{0});
  }
};

// One pass over the children of a spline element into A; Children counts them all. The quick
// pass (Careful false) reads only values written plainly and answers false at the first
// other one, or at a named node without a value, which could be no element at all: text
// and comments have no name, so they match no index. The careful pass reads every form and
// words the faults.
template <bool Careful>
bool ReadChildren(const pugi::xml_node& ANode, std::int32_t K, std::int32_t N, TReadArrays& A,
                  std::int64_t& Children) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGeSpline2D.LoadFromXmlNode";
  for (pugi::xml_node c = ANode.first_child(); !internal::IsEmpty(c); c = c.next_sibling()) {
    ++Children;
    if (Careful && c.type() != pugi::node_element) continue;
    const char* name = c.name();
    if (const std::int32_t i = IndexAfter(name, "Knot", K); i >= 0) {
      const auto at = static_cast<std::size_t>(i);
      if (A.Seen[at] != 0) continue;
      if (!internal::TextToDouble(c.child_value(), A.Knots[at])) {
        if (!Careful) return false;
        A.Knots[at] = TXmlNodeHelper::ReadDoubleText(c, Where);
      }
      A.Seen[at] = 1;
    } else if (const std::int32_t j = IndexAfter(name, "CtrlPoint", N); j >= 0) {
      const auto at = static_cast<std::size_t>(j);
      if (A.Seen[static_cast<std::size_t>(K) + at] != 0) continue;
      pugi::xml_attribute a = c.first_attribute();
      if (!Careful && internal::IsEmpty(a)) return false;
      // The attributes are walked once rather than looked up, and no further than the three.
      double* slot[3] = {&A.Pts[at].X, &A.Pts[at].Y, &A.Weights[at]};
      unsigned got = 0;
      for (; !internal::IsEmpty(a); a = a.next_attribute()) {
        const char* an = a.name();
        const int v = (an[0] == 'X' || an[0] == 'Y') && an[1] == '\0' ? an[0] - 'X'
                      : an[0] == 'W' && an[1] == 't' && an[2] == '\0' ? 2
                                                                        : -1;
        if (v < 0 || (got >> v & 1u) != 0) continue;
        got |= 1u << v;
        if (!internal::TextToDouble(a.value(), *slot[v])) {
          if (!Careful) return false;
          *slot[v] = TXmlNodeHelper::ReadDoubleAttr(c, a, Where);
        }
        if (got == 7u) break;
      }
      A.Seen[static_cast<std::size_t>(K) + at] = 1;
    }
  }
  return true;
}

}  // namespace

void TGeSpline2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGeCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WriteAttr(ANode, "CtrlCount", static_cast<std::int32_t>(FCtrlPoints.size()));
  TXmlNodeHelper::WriteAttr(ANode, "Degree", static_cast<std::int32_t>(FDegree));
  TXmlNodeHelper::WriteAttr(ANode, "KnotCount", static_cast<std::int32_t>(FKnots.size()));
  TXmlNodeHelper::WriteAttr(ANode, "IsPeriodic", FPeriodic);
  TXmlNodeHelper::WriteAttr(ANode, "IsRational", GetIsRational());
  TIndexedName name;
  for (std::size_t i = 0; i < FKnots.size(); ++i) TXmlNodeHelper::WriteValue(ANode, name.Make("Knot", i), FKnots[i]);
  for (std::size_t i = 0; i < FCtrlPoints.size(); ++i) {
    pugi::xml_node child = ANode.append_child(name.Make("CtrlPoint", i));
    TXmlNodeHelper::WriteAttr(child, "X", FCtrlPoints[i].X);
    TXmlNodeHelper::WriteAttr(child, "Y", FCtrlPoints[i].Y);
    TXmlNodeHelper::WriteAttr(child, "Wt", i < FWeights.size() ? FWeights[i] : 0.0);
  }
}

void TGeSpline2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGeSpline2D.LoadFromXmlNode";
  TGeCurve2D::LoadFromXmlNode(ANode);
  // One walk over the attributes; the first of a name counts. They are read in a fixed order
  // whatever their order in the file, so that a file with several faults names the same one.
  pugi::xml_attribute ctrlAttr, degreeAttr, knotAttr, periodicAttr, rationalAttr;
  const char* ctrlText = nullptr;
  const char* degreeText = nullptr;
  const char* knotText = nullptr;
  const char* periodicText = nullptr;
  const char* rationalText = nullptr;
  for (pugi::xml_attribute a = ANode.first_attribute(); !internal::IsEmpty(a); a = a.next_attribute()) {
    const char* an = a.name();
    const auto take = [&](pugi::xml_attribute& Slot, const char** Text) {
      if (*Text != nullptr) return;
      Slot = a;
      *Text = a.value();
    };
    if (NameIs(an, "CtrlCount")) {
      take(ctrlAttr, &ctrlText);
    } else if (NameIs(an, "Degree")) {
      take(degreeAttr, &degreeText);
    } else if (NameIs(an, "KnotCount")) {
      take(knotAttr, &knotText);
    } else if (NameIs(an, "IsPeriodic")) {
      take(periodicAttr, &periodicText);
    } else if (NameIs(an, "IsRational")) {
      take(rationalAttr, &rationalText);
    }
  }
  // Plain counts read straight; the helper reads the rest and words the faults.
  const auto count = [&](const pugi::xml_attribute& A, const char* Text) {
    std::int32_t v = 0;
    return Text != nullptr && internal::TextToInt32(Text, v) ? v : TXmlNodeHelper::ReadIntAttr(ANode, A, Where);
  };
  const std::int32_t n = count(ctrlAttr, ctrlText);
  const std::int32_t p = count(degreeAttr, degreeText);
  const std::int32_t k = count(knotAttr, knotText);
  if (const std::string fault = CountsFault(n, p, k); !fault.empty()) TXmlNodeHelper::Fail(ANode, Where, fault);
  // A control point without its element would have weight 0 and is refused below; the knots
  // are fewer than the points plus 5. So the child nodes bound every array. Text straight
  // inside the element is one of them, whether the parser kept it as a child or as the
  // element's own value.
  const std::int64_t ownText = *ANode.value() != '\0' ? 1 : 0;
  const auto countChildren = [&] {
    std::int64_t children = ownText;
    for (pugi::xml_node c = ANode.first_child(); !internal::IsEmpty(c) && children < n; c = c.next_sibling()) {
      ++children;
    }
    return children;
  };
  const auto checkCount = [&](std::int64_t Children) {
    if (Children < n) {
      TXmlNodeHelper::Fail(ANode, Where, Format("the control point count %d exceeds the elements present", n));
    }
  };
  if (n > CWalkOnce) checkCount(countChildren());
  TReadArrays arrays(k, n);
  std::int64_t children = ownText;
  const bool plain = ReadChildren<false>(ANode, k, n, arrays, children);
  // The faults in the order a careful reader meets them: the count, the flags, the values.
  if (n <= CWalkOnce) checkCount(plain ? children : countChildren());
  // The flags as written read straight, the helper reads any other form.
  const auto flag = [&](const pugi::xml_attribute& A, const char* Text) {
    if (Text == nullptr) return false;
    if (NameIs(Text, "false")) return false;
    return NameIs(Text, "true") || TXmlNodeHelper::ReadBoolAttr(ANode, A, Where);
  };
  const bool periodic = flag(periodicAttr, periodicText);
  // Checked for form only: the weights decide rationality, whatever the flag says.
  flag(rationalAttr, rationalText);
  if (!plain) {
    arrays.Reset(k, n);
    children = ownText;
    ReadChildren<true>(ANode, k, n, arrays, children);
  }
  TFloatDynArray& knots = arrays.Knots;
  TDynPoints2D& pts = arrays.Pts;
  TFloatDynArray& weights = arrays.Weights;
  if (const std::string fault = ValuesFault(p, knots, pts, weights); !fault.empty()) {
    TXmlNodeHelper::Fail(ANode, Where, fault);
  }
  TakeReadArrays(p, std::move(knots), std::move(pts), std::move(weights), periodic);
}

// Behind the fields of the record comes the periodic flag: a wrapped periodic spline does
// not repeat its first control point at its end, so without the flag it would come back
// open, and its stretches would no longer run through the seam.
void TGeSpline2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
  AWriter.WriteInteger(static_cast<std::int32_t>(FCtrlPoints.size()));
  AWriter.WriteInteger(static_cast<std::int32_t>(FDegree));
  AWriter.WriteInteger(static_cast<std::int32_t>(FKnots.size()));
  for (const double knot : FKnots) AWriter.WriteDouble(knot);
  for (std::size_t i = 0; i < FCtrlPoints.size(); ++i) {
    AWriter.WritePoint(FCtrlPoints[i]);
    AWriter.WriteDouble(i < FWeights.size() ? FWeights[i] : 0.0);
  }
  AWriter.WriteBoolean(FPeriodic);
}

void TGeSpline2D::LoadGeoData(IFbsReader& AReader) {
  static constexpr const char* Where = "TGeSpline2D.LoadGeoData";
  TGeObject::LoadGeoData(AReader);
  const TFbsRecord record = AReader.NextRecord();
  const std::int32_t n = AReader.ReadInteger();
  const std::int32_t p = AReader.ReadInteger();
  const std::int32_t k = AReader.ReadInteger();
  if (const std::string fault = CountsFault(n, p, k); !fault.empty()) {
    throw EInOutError("[Error] %s: %s (%s)", Where, fault, AReader.GetPosition());
  }
  // A knot is 8 bytes of value, a control point with its weight 24.
  AReader.CheckCount(static_cast<std::int64_t>(k) + 3 * static_cast<std::int64_t>(n), 8);
  TFloatDynArray knots(static_cast<std::size_t>(k));
  for (double& knot : knots) knot = AReader.ReadDouble();
  TDynPoints2D pts(static_cast<std::size_t>(n));
  TFloatDynArray weights(static_cast<std::size_t>(n));
  for (std::size_t i = 0; i < pts.size(); ++i) {
    pts[i] = AReader.ReadPoint();
    weights[i] = AReader.ReadDouble();
  }
  const bool periodic = AReader.ReadBoolean();
  if (const std::string fault = ValuesFault(p, knots, pts, weights); !fault.empty()) {
    throw EInOutError("[Error] %s: %s (%s)", Where, fault, AReader.GetPosition());
  }
  TakeReadArrays(p, std::move(knots), std::move(pts), std::move(weights), periodic);
}

void TGeSpline2D::TakeReadArrays(int Degree, TFloatDynArray&& Knots, TDynPoints2D&& Pts, TFloatDynArray&& Weights,
                                 bool Periodic) {
  FDegree = Degree;
  FKnots = std::move(Knots);
  FCtrlPoints = std::move(Pts);
  FWeights = std::move(Weights);
  FPeriodic = Periodic;
  FIsDerivative = false;
  Invalidate();
}

}  // namespace orvane
