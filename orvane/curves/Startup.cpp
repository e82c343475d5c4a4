#include "orvane/curves/Startup.h"

#include <cstring>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GePolyBezier2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GeStrings.h"
#include "orvane/curves/internal/ClassRegistry.h"
#include "orvane/splines/GeSpline2D.h"

namespace orvane {

std::string SGeLineFmt;
std::string SGeCirArc2DFmt;
std::string SGeCW;
std::string SGeCCW;
std::string SGePolySegFmt;
std::string SGePolyBezier;
std::string SGePolyBezierSegFmt;
std::string SGeKnotCountFmt;
std::string SGeCtrlPt;
std::string SGeSplineFmt;
std::string SGeSplineInfoFmt;
std::string SGePolylineFmt;
std::string SGeKnot;
std::string SGeClosedCompCurveFmt;
std::string SGeCompCurveFmt;
std::string SGeWrapCurve;

namespace {

struct TGeText {
  std::string* Text;
  const char* Key;
  const char* Default;
  // False for the one text that keeps its format whatever the language.
  bool Localised;
};

// In the order in which the locale procedure reads them.
const TGeText GeTexts[] = {
    {&SGeLineFmt, "SGeLineFmt", "直线: %s + u * %s", true},
    {&SGeCirArc2DFmt, "SGeCirArc2DFmt", "圆心(%.2f, %.2f), 半径%.2f, 起始角 %.2f 旋转角 %.2f", true},
    {&SGeCW, "SGeCW", "顺时针", true},
    {&SGeCCW, "SGeCCW", "逆时针", true},
    {&SGePolySegFmt, "SGePolySegFmt", "多段线单段: %s + u * %s", true},
    {&SGePolyBezier, "SGePolyBezier", "多段贝塞尔曲线 ", true},
    {&SGePolyBezierSegFmt, "SGePolyBezierSegFmt", "P0: %s, P1: %s, P2: %s, P3: %s", false},
    {&SGeKnotCountFmt, "SGeKnotCountFmt", "节点数: %d", true},
    {&SGeCtrlPt, "SGeCtrlPt", "控制点：", true},
    {&SGeSplineFmt, "SGeSplineFmt", "%d次样条", true},
    {&SGeSplineInfoFmt, "SGeSplineInfoFmt", "%d次样条, 节点数: %d, 控制点: %d", true},
    {&SGePolylineFmt, "SGePolylineFmt", "%d段多段线", true},
    {&SGeKnot, "SGeKnot", "节点向量：", true},
    {&SGeClosedCompCurveFmt, "SGeClosedCompCurveFmt", "%d段闭合组合曲线", true},
    {&SGeCompCurveFmt, "SGeCompCurveFmt", "%d段组合曲线", true},
    {&SGeWrapCurve, "SGeWrapCurve", "包覆曲线", true},
};

TGeClassDictionary* FClassDict = nullptr;

// Each unit's load counter: 0 unloaded, decremented by every start, incremented by every
// stop; the work runs only on the steps between 0 and -1.
std::int32_t RtreeCount = 0;
std::int32_t GeObjectCount = 0;
std::int32_t OrvaneCount = 0;
std::int32_t MchainCount = 0;
std::int32_t PackageCount = 0;

template <std::int32_t& Counter>
bool EnterUnit() {
  return --Counter == -1;
}

template <std::int32_t& Counter>
bool LeaveUnit() {
  return ++Counter == 0;
}

void RtreeInit() { EnterUnit<RtreeCount>(); }
void RtreeFinit() { LeaveUnit<RtreeCount>(); }

void GeObjectInit() {
  if (EnterUnit<GeObjectCount>()) internal::CreateClassDict();
}
void GeObjectFinit() {
  if (LeaveUnit<GeObjectCount>()) internal::FreeClassDict();
}

void OrvaneInit() {
  if (!EnterUnit<OrvaneCount>()) return;
  // TPointL2D::Zero is a compile-time constant: nothing to set.
  // The filed curve classes, in the order of their keys: Line2D, CircularArc2D, Spline2D,
  // CompositeCurve2D, Polyline2D, Polygon2D, PolyBezier2D. A class joins at its place here.
  TGeClassDictionary& dict = *internal::ClassDict();
  dict.Add("Line2D", TGeClass::Of<TGeLine2D>("TGeLine2D"));
  dict.Add("CircularArc2D", TGeClass::Of<TGeCircularArc2D>("TGeCircularArc2D"));
  dict.Add("Spline2D", TGeClass::Of<TGeSpline2D>("TGeSpline2D"));
  dict.Add("CompositeCurve2D", TGeClass::Of<TGeCompositeCurve2D>("TGeCompositeCurve2D"));
  dict.Add("Polyline2D", TGeClass::Of<TGePolyline2D>("TGePolyline2D"));
  dict.Add("Polygon2D", TGeClass::Of<TGePolygon2D>("TGePolygon2D"));
  dict.Add("PolyBezier2D", TGeClass::Of<TGePolyBezier2D>("TGePolyBezier2D"));
  // Every start from unloaded gives the default texts, also after an earlier stop emptied them.
  for (const TGeText& text : GeTexts) *text.Text = text.Default;
  LocaleProcs().Add(&GeometryStringsLocaleProc);
}

void OrvaneFinit() {
  if (!LeaveUnit<OrvaneCount>()) return;
  for (const TGeText& text : GeTexts) text.Text->clear();
  // The registry outlives this library when the host keeps its own copy: forget the
  // procedure, so that a later change of language never calls into an unloaded module.
  LocaleProcs().Remove(&GeometryStringsLocaleProc);
  // The dictionary's entries go with the unit that made them; the dictionary itself goes
  // with the curve root, after this.
  if (TGeClassDictionary* dict = internal::ClassDict()) dict->Clear();
}

void MchainInit() { EnterUnit<MchainCount>(); }
void MchainFinit() { LeaveUnit<MchainCount>(); }

void PackageInit() { EnterUnit<PackageCount>(); }
void PackageFinit() { LeaveUnit<PackageCount>(); }

const TPackageUnitEntry Units[] = {
    {"Rtree", &RtreeInit, &RtreeFinit},           {"TGeObject", &GeObjectInit, &GeObjectFinit},
    {"Orvane", &OrvaneInit, &OrvaneFinit},        {"Mchain", &MchainInit, &MchainFinit},
    {"Ketraorvane", &PackageInit, &PackageFinit},
};

const TPackageInfoTable PackageInfo{static_cast<std::int32_t>(std::size(Units)), Units};

// Loading the library starts it, unloading stops it. Defined after the texts, so that they
// exist before the start fills them and are still there when the stop empties them.
struct TLibraryLoad {
  TLibraryLoad() { Initialize(); }
  ~TLibraryLoad() { Finalize(); }
  TLibraryLoad(const TLibraryLoad&) = delete;
  TLibraryLoad& operator=(const TLibraryLoad&) = delete;
};
const TLibraryLoad LibraryLoad;

}  // namespace

namespace internal {

TGeClassDictionary* ClassDict() { return FClassDict; }

void CreateClassDict() {
  if (FClassDict == nullptr) FClassDict = new TGeClassDictionary();
}

void FreeClassDict() {
  delete FClassDict;
  FClassDict = nullptr;
}

}  // namespace internal

extern "C" {

const TPackageInfoTable* GetPackageInfoTable() { return &PackageInfo; }

void Initialize() {
  for (const TPackageUnitEntry& unit : Units) unit.Init();
}

void Finalize() {
  for (auto it = std::rbegin(Units); it != std::rend(Units); ++it) it->FInit();
}
}

std::int32_t GetUnitLoadCount(const char* AUnitName) {
  if (AUnitName == nullptr) return 1;
  const std::int32_t* counters[] = {&RtreeCount, &GeObjectCount, &OrvaneCount, &MchainCount, &PackageCount};
  for (std::size_t i = 0; i < std::size(Units); ++i) {
    if (std::strcmp(Units[i].Name, AUnitName) == 0) return *counters[i];
  }
  return 1;
}

void GeometryStringsLocaleProc(const TVorLocaleResource* AResource) {
  if (AResource == nullptr || !AResource->Ready) return;
  for (const TGeText& text : GeTexts) {
    if (text.Localised) AResource->ReadStr(GeometryStringsSection, text.Key, *text.Text);
  }
}

}  // namespace orvane
