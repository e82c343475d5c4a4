// Start-up: the unit order and load counters, the class dictionary, the texts and the
// locale procedure. Each test leaves the library started, with the default texts.

#include "orvane/curves/Startup.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GeStrings.h"
#include "orvane/foundation/PointL2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

struct TExpectedText {
  const std::string* Text;
  const char* Key;
  const char* Bytes;
};

// The defaults as UTF-8 bytes, written out so that a change of encoding or a typo shows.
const TExpectedText Defaults[] = {
    {&SGeLineFmt, "SGeLineFmt", "\xE7\x9B\xB4\xE7\xBA\xBF: %s + u * %s"},
    {&SGeCirArc2DFmt, "SGeCirArc2DFmt",
     "\xE5\x9C\x86\xE5\xBF\x83(%.2f, %.2f), \xE5\x8D\x8A\xE5\xBE\x84%.2f, \xE8\xB5\xB7\xE5\xA7\x8B\xE8\xA7\x92 %.2f "
     "\xE6\x97\x8B\xE8\xBD\xAC\xE8\xA7\x92 %.2f"},
    {&SGeCW, "SGeCW", "\xE9\xA1\xBA\xE6\x97\xB6\xE9\x92\x88"},
    {&SGeCCW, "SGeCCW", "\xE9\x80\x86\xE6\x97\xB6\xE9\x92\x88"},
    {&SGePolySegFmt, "SGePolySegFmt", "\xE5\xA4\x9A\xE6\xAE\xB5\xE7\xBA\xBF\xE5\x8D\x95\xE6\xAE\xB5: %s + u * %s"},
    {&SGePolyBezier, "SGePolyBezier",
     "\xE5\xA4\x9A\xE6\xAE\xB5\xE8\xB4\x9D\xE5\xA1\x9E\xE5\xB0\x94\xE6\x9B\xB2\xE7\xBA\xBF "},
    {&SGePolyBezierSegFmt, "SGePolyBezierSegFmt", "P0: %s, P1: %s, P2: %s, P3: %s"},
    {&SGeKnotCountFmt, "SGeKnotCountFmt", "\xE8\x8A\x82\xE7\x82\xB9\xE6\x95\xB0: %d"},
    {&SGeCtrlPt, "SGeCtrlPt", "\xE6\x8E\xA7\xE5\x88\xB6\xE7\x82\xB9\xEF\xBC\x9A"},
    {&SGeSplineFmt, "SGeSplineFmt", "%d\xE6\xAC\xA1\xE6\xA0\xB7\xE6\x9D\xA1"},
    {&SGeSplineInfoFmt, "SGeSplineInfoFmt",
     "%d\xE6\xAC\xA1\xE6\xA0\xB7\xE6\x9D\xA1, \xE8\x8A\x82\xE7\x82\xB9\xE6\x95\xB0: %d, "
     "\xE6\x8E\xA7\xE5\x88\xB6\xE7\x82\xB9: %d"},
    {&SGePolylineFmt, "SGePolylineFmt", "%d\xE6\xAE\xB5\xE5\xA4\x9A\xE6\xAE\xB5\xE7\xBA\xBF"},
    {&SGeKnot, "SGeKnot", "\xE8\x8A\x82\xE7\x82\xB9\xE5\x90\x91\xE9\x87\x8F\xEF\xBC\x9A"},
    {&SGeClosedCompCurveFmt, "SGeClosedCompCurveFmt",
     "%d\xE6\xAE\xB5\xE9\x97\xAD\xE5\x90\x88\xE7\xBB\x84\xE5\x90\x88\xE6\x9B\xB2\xE7\xBA\xBF"},
    {&SGeCompCurveFmt, "SGeCompCurveFmt", "%d\xE6\xAE\xB5\xE7\xBB\x84\xE5\x90\x88\xE6\x9B\xB2\xE7\xBA\xBF"},
    {&SGeWrapCurve, "SGeWrapCurve", "\xE5\x8C\x85\xE8\xA6\x86\xE6\x9B\xB2\xE7\xBA\xBF"},
};

void ExpectDefaultTexts() {
  for (const TExpectedText& t : Defaults) EXPECT_EQ(*t.Text, t.Bytes) << t.Key;
}

TEST(Startup, UnitsRunInOrderAndTheLibraryStartsOnLoad) {
  const TPackageInfoTable* table = GetPackageInfoTable();
  ASSERT_NE(table, nullptr);
  std::vector<std::string> names;
  for (int i = 0; i < table->UnitCount; ++i) names.emplace_back(table->Units[i].Name);
  EXPECT_EQ(names, (std::vector<std::string>{"Rtree", "TGeObject", "Orvane", "Mchain", "Ketraorvane"}));
  for (const std::string& name : names) EXPECT_EQ(GetUnitLoadCount(name.c_str()), -1) << name;
  EXPECT_EQ(GetUnitLoadCount("Vormui"), 1);
  ExpectDefaultTexts();
  EXPECT_EQ(TPointL2D::Zero, TPointL2D(0, 0));
}

TEST(Startup, DictionaryHoldsTheFiledClassesInKeyOrder) {
  const TGeClassDictionary* dict = TGeObject::GetClassDict();
  ASSERT_NE(dict, nullptr);
  // The keys present appear in this order; curve kinds join as they are built.
  const std::vector<std::string> order{"Line2D",     "CircularArc2D", "Spline2D",    "CompositeCurve2D",
                                       "Polyline2D", "Polygon2D",     "PolyBezier2D"};
  const std::vector<std::string> keys = dict->Keys();
  ASSERT_GE(keys.size(), 2u);
  EXPECT_EQ(keys[0], "Line2D");
  EXPECT_EQ(keys[1], "CircularArc2D");
  std::size_t at = 0;
  for (const std::string& key : keys) {
    while (at < order.size() && order[at] != key) ++at;
    ASSERT_LT(at, order.size()) << key << " is out of order or unknown";
    // Each key makes its own class, whose filer name is the key again.
    std::unique_ptr<TGeObject> obj = TGeObject::CreateByFilerName(key);
    ASSERT_NE(obj, nullptr) << key;
    EXPECT_EQ(obj->ClassName(), "TGe" + key);
    EXPECT_EQ(obj->GetFilerName(), key);
  }
  // The Bezier curve has a filer name but no key; names compare exactly.
  EXPECT_EQ(TGeObject::CreateByFilerName("Bezier2D"), nullptr);
  EXPECT_EQ(TGeObject::CreateByFilerName("line2d"), nullptr);
  EXPECT_EQ(TGeObject::CreateByFilerName(""), nullptr);
  TGeClass found{"untouched", nullptr};
  EXPECT_FALSE(dict->TryGetValue("Nothing2D", found));
  EXPECT_EQ(found.ClassName, "untouched");
  // A class of the wrong kind is not handed out.
  EXPECT_EQ(TGeObject::CreateByFilerNameAs<TGeCircularArc2D>("Line2D"), nullptr);
  EXPECT_NE(TGeObject::CreateByFilerNameAs<TGeCurve2D>("Line2D"), nullptr);
  EXPECT_EQ(TGeObject::FilerNameOf("TGeTGeX"), "TGeX");
  EXPECT_EQ(TGeObject::FilerNameOf("TPersistent"), "TPersistent");
  orvane::testing::ExpectRaise<EParamError>(
      [&] { const_cast<TGeClassDictionary*>(dict)->Add("Line2D", TGeClass::Of<TGeLine2D>("TGeLine2D")); },
      "[Error] TGeClassDictionary.Add: key Line2D is present already");
}

TEST(Startup, StartingTwiceAndStoppingOnceKeepsTheLibraryStarted) {
  const int procs = LocaleProcs().Count();
  Initialize();
  EXPECT_EQ(GetUnitLoadCount("Orvane"), -2);
  EXPECT_EQ(TGeObject::GetClassDict()->Count(), 7);
  EXPECT_EQ(LocaleProcs().Count(), procs);
  Finalize();
  EXPECT_EQ(GetUnitLoadCount("Orvane"), -1);
  ASSERT_NE(TGeObject::GetClassDict(), nullptr);
  EXPECT_EQ(TGeObject::GetClassDict()->Count(), 7);
  EXPECT_TRUE(LocaleProcs().Contains(&GeometryStringsLocaleProc));
  ExpectDefaultTexts();
}

TEST(Startup, StopThenStartRestoresTheDefaultTexts) {
  SGeCW = "cw";
  Finalize();
  EXPECT_EQ(GetUnitLoadCount("TGeObject"), 0);
  EXPECT_EQ(TGeObject::GetClassDict(), nullptr);
  EXPECT_EQ(TGeObject::CreateByFilerName("Line2D"), nullptr);
  EXPECT_FALSE(LocaleProcs().Contains(&GeometryStringsLocaleProc));
  for (const TExpectedText& t : Defaults) EXPECT_TRUE(t.Text->empty()) << t.Key;
  Initialize();
  ExpectDefaultTexts();
  EXPECT_NE(TGeObject::CreateByFilerName("CircularArc2D"), nullptr);
  EXPECT_TRUE(LocaleProcs().Contains(&GeometryStringsLocaleProc));
}

TEST(Startup, LocaleResourceReplacesTheTextsItHas) {
  std::istringstream ini(
      "\xEF\xBB\xBF; language pack\n"
      "[GeometryStrings]\n"
      "SGeCW = clockwise \n"
      "SGeCCW=counter-clockwise\r\n"
      "SGePolyBezierSegFmt=never read\n"
      "\n"
      "[Other]\n"
      "SGeLineFmt=not this section\n");
  TVorLocaleResource res;
  res.LoadFromStream(ini);
  std::string value = "kept";
  EXPECT_FALSE(res.ReadStr("GeometryStrings", "SGeKnot", value));
  EXPECT_EQ(value, "kept");

  // Not ready: nothing changes, and a nil resource is harmless.
  LocaleProcs().Apply(&res);
  LocaleProcs().Apply(nullptr);
  ExpectDefaultTexts();

  res.Ready = true;
  LocaleProcs().Apply(&res);
  EXPECT_EQ(SGeCW, " clockwise ");
  EXPECT_EQ(SGeCCW, "counter-clockwise");
  EXPECT_EQ(SGePolyBezierSegFmt, "P0: %s, P1: %s, P2: %s, P3: %s");
  EXPECT_EQ(SGeLineFmt, Defaults[0].Bytes);
  const TGeCircularArc2D arc(TPoint2D(1.0, 2.0), 3.0, 0.0, -1.5);
  EXPECT_EQ(arc.ToString().substr(0, 11), " clockwise ");

  // A broken line is refused with its number; what came before it stays.
  std::istringstream bad("[GeometryStrings]\nSGeKnot=k\njust text\n");
  orvane::testing::ExpectRaise<EInOutError>(
      [&] { res.LoadFromStream(bad); },
      "[Error] TVorLocaleResource.LoadFromStream: line 3 is neither a section nor a key in one");
  EXPECT_TRUE(res.ReadStr("GeometryStrings", "SGeKnot", value));
  EXPECT_EQ(value, "k");

  Finalize();
  Initialize();
  ExpectDefaultTexts();
}

}  // namespace
}  // namespace orvane
