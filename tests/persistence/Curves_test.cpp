// The records of the polyline family, Beziers, splines and composites in both formats.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <pugixml.hpp>
#include <sstream>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyBezier2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/GeCurve2DFiler.h"
#include "splines/DxfSplines.h"
#include "support/SharedData.h"

using namespace orvane;

namespace {

const double Third = 1.0 / 3.0;

// Control points and weights as given, knots Lo times 0 then 1 to the end.
std::unique_ptr<TGeSpline2D> Make(int Degree, const TDynPoints2D& Pts, const TFloatDynArray& W, int Lo) {
  auto s = std::make_unique<TGeSpline2D>(static_cast<int>(Pts.size()), Degree);
  for (int i = 0; i < s->GetCtrlPointCount(); ++i) s->SetCtrlPoint(i, Pts[i]), s->SetWeight(i, W[i]);
  for (int i = Lo; i < s->GetKnotCount(); ++i) s->SetKnots(i, 1.0);
  return s;
}

bool SameBits(const TPoint2D& A, const TPoint2D& B) {
  return std::bit_cast<std::uint64_t>(A.X) == std::bit_cast<std::uint64_t>(B.X) &&
         std::bit_cast<std::uint64_t>(A.Y) == std::bit_cast<std::uint64_t>(B.Y);
}

std::string SaveXml(const std::vector<const TGeCurve2D*>& Curves) {
  TList<TGeCurve2D*> list;
  for (const TGeCurve2D* c : Curves) list.Add(const_cast<TGeCurve2D*>(c));
  std::ostringstream out;
  TGeCurve2DFiler::SaveCurveList(list, out);
  return out.str();
}

void ReadXml(const std::string& Text, TObjectList<TGeCurve2D>& List) {
  std::istringstream in(Text);
  TGeCurve2DFiler::ReadCurveList(List, in, "mem.xml");
}

std::string Doc(const std::string& Children) { return "<Curve2DList>" + Children + "</Curve2DList>"; }

std::string WriteBin(const std::vector<const TGeObject*>& Objects) {
  std::ostringstream out;
  TFbsStreamWriter writer(out, "mem");
  for (const TGeObject* obj : Objects) TGeObject::SaveGeObjToDb(*obj, writer);
  writer.Flush();
  return out.str();
}

std::vector<std::unique_ptr<TGeObject>> ReadBin(const std::string& Bytes) {
  std::istringstream in(Bytes);
  TFbsStreamReader reader(in, "mem");
  std::vector<std::unique_ptr<TGeObject>> objs;
  while (!reader.AtEnd()) objs.push_back(TGeObject::ReadFromGeoData(reader));
  return objs;
}

// line -> composite(polyline, composite(polygon, poly-Bezier, spline), arc): three levels.
std::unique_ptr<TGeCompositeCurve2D> ThreeLevels() {
  auto inner = std::make_unique<TGeCompositeCurve2D>();
  inner->AddCurve(std::make_unique<TGePolygon2D>(TDynPoints2D{{2, 0}, {3, 0}, {3, 1e-300}}));
  inner->AddCurve(std::make_unique<TGePolyBezier2D>(TDynPoints2D{{3, 1}, {Third, -0.0}, {4, 2}, {5, 5e-324}}));
  inner->AddCurve(Make(2, {{5, 5e-324}, {6, 1e-300}, {7, -0.0}}, {1, Third, 1}, 3));
  auto mid = std::make_unique<TGeCompositeCurve2D>();
  mid->AddCurve(std::make_unique<TGePolyline2D>(TDynPoints2D{{1, 0}, {-0.0, Third}, {2, 0}}));
  mid->AddCurve(std::move(inner));
  auto top = std::make_unique<TGeCompositeCurve2D>();
  top->AddCurve(std::make_unique<TGeLine2D>(TPoint2D{0, 0}, TPoint2D{1, 0}));
  top->AddCurve(std::move(mid));
  top->AddCurve(std::make_unique<TGeCircularArc2D>(TPoint2D{5, 1}, 1.0, -Third, Third));
  return top;
}

// The class names of a composite tree, depth first: "C(Line2D,C(...))".
std::string Shape(const TGeCurve2D& C) {
  const auto* comp = dynamic_cast<const TGeCompositeCurve2D*>(&C);
  if (comp == nullptr) return C.GetFilerName();
  std::string s = "C(";
  for (int i = 0; i < comp->GetCurveCount(); ++i) s += (i > 0 ? "," : "") + Shape(*comp->GetCurve(i));
  return s + ")";
}

}  // namespace

TEST(CurveRecords, GoldenXmlOfEachClass) {
  const TGePolyline2D polyline(TDynPoints2D{{0, 0}, {1.5, -0.25}});
  const TGePolygon2D polygon(TDynPoints2D{{0, 0}, {4, 0}, {4, Third}});
  const TGeBezier2D bezier({0, 0}, {1, 1}, {2, 1}, {3, 0});
  TGeCompositeCurve2D comp;
  comp.AddCurve(bezier.CloneAs<TGeCurve2D>());
  comp.AddCurve(std::make_unique<TGePolyBezier2D>(TDynPoints2D{{3, 0}, {4, -1}, {5, -1}, {6, 0}}));
  auto nested = std::make_unique<TGeCompositeCurve2D>();
  nested->AddCurve(std::make_unique<TGeLine2D>(TPoint2D{6, 0}, TPoint2D{7, 0}));
  comp.AddCurve(std::move(nested));
  // The filer writes no Bezier at the top level, but a composite files its Bezier child.
  const std::string text = SaveXml({&polyline, &polygon, &bezier, &comp});
  EXPECT_EQ(text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<Curve2DList>\n"
            "  <Polyline2D PointCount=\"2\">\n"
            "    <Point X=\"0\" Y=\"0\" />\n"
            "    <Point X=\"1.5\" Y=\"-0.25\" />\n"
            "  </Polyline2D>\n"
            "  <Polygon2D PointCount=\"3\">\n"
            "    <Point X=\"0\" Y=\"0\" />\n"
            "    <Point X=\"4\" Y=\"0\" />\n"
            "    <Point X=\"4\" Y=\"0.3333333333333333\" />\n"
            "  </Polygon2D>\n"
            "  <CompositeCurve2D CurveCount=\"3\">\n"
            "    <Bezier2D>\n"
            "      <P0 X=\"0\" Y=\"0\" />\n"
            "      <P1 X=\"1\" Y=\"1\" />\n"
            "      <P2 X=\"2\" Y=\"1\" />\n"
            "      <P3 X=\"3\" Y=\"0\" />\n"
            "    </Bezier2D>\n"
            "    <PolyBezier2D CtrlCount=\"4\">\n"
            "      <CtrlPoint0 X=\"3\" Y=\"0\" />\n"
            "      <CtrlPoint1 X=\"4\" Y=\"-1\" />\n"
            "      <CtrlPoint2 X=\"5\" Y=\"-1\" />\n"
            "      <CtrlPoint3 X=\"6\" Y=\"0\" />\n"
            "    </PolyBezier2D>\n"
            "    <CompositeCurve2D CurveCount=\"1\">\n"
            "      <Line2D>\n"
            "        <LineStart X=\"6\" Y=\"0\" />\n"
            "        <LineVector X=\"1\" Y=\"0\" />\n"
            "      </Line2D>\n"
            "    </CompositeCurve2D>\n"
            "  </CompositeCurve2D>\n"
            "</Curve2DList>\n");

  // Read back: the polygon stays a polygon, the Bezier child (no class of the dictionary) is
  // dropped, the poly-Bezier inside the composite is kept.
  TObjectList<TGeCurve2D> back;
  ReadXml(text, back);
  ASSERT_EQ(back.Count(), 3);
  EXPECT_EQ(back[0]->ClassName(), "TGePolyline2D");
  EXPECT_EQ(back[1]->ClassName(), "TGePolygon2D");
  EXPECT_EQ(Shape(*back[2]), "C(PolyBezier2D,C(Line2D))");
}

TEST(CurveRecords, EveryClassAndNestedCompositesRoundTripBitForBitInBothFormats) {
  const std::unique_ptr<TGeCompositeCurve2D> tree = ThreeLevels();
  const TGePolygon2D polygon(TDynPoints2D{{-0.0, 5e-324}, {Third, 1e-300}, {1, 1}});
  const TGePolyBezier2D polyBezier(TDynPoints2D{{0, 0}, {Third, 1}, {2, 1}, {3, 0}, {4, -1}, {5, -Third}, {6, 0}});

  // XML: the text written again from what was read is the same text, and the values that
  // only shortest round-trip digits keep come back to the bit.
  const std::string text = SaveXml({tree.get(), &polygon});
  TObjectList<TGeCurve2D> xml;
  ReadXml(text, xml);
  ASSERT_EQ(xml.Count(), 2);
  EXPECT_EQ(SaveXml({xml[0], xml[1]}), text);
  EXPECT_EQ(Shape(*xml[0]), "C(Line2D,C(Polyline2D,C(Polygon2D,PolyBezier2D,Spline2D)),CircularArc2D)");
  EXPECT_EQ(xml[1]->ClassName(), "TGePolygon2D");
  EXPECT_TRUE(SameBits(static_cast<TGePolygon2D*>(xml[1])->GetPoint(0), {-0.0, 5e-324}));
  EXPECT_TRUE(SameBits(static_cast<TGePolygon2D*>(xml[1])->GetPoint(1), {Third, 1e-300}));

  // Binary: the same bytes again, classes and order kept.
  const std::string bytes = WriteBin({tree.get(), &polygon, &polyBezier});
  const auto bin = ReadBin(bytes);
  ASSERT_EQ(bin.size(), 3u);
  EXPECT_EQ(WriteBin({bin[0].get(), bin[1].get(), bin[2].get()}), bytes);
  EXPECT_EQ(Shape(static_cast<TGeCurve2D&>(*bin[0])), Shape(*tree));
  EXPECT_EQ(bin[1]->ClassName(), "TGePolygon2D");
  EXPECT_TRUE(bin[2]->Equals(&polyBezier));

  // The Bezier is in neither reader's dictionary: its hooks round-trip on their own.
  const TGeBezier2D bezier({-0.0, Third}, {1e-300, 1}, {2, 5e-324}, {3, -Third});
  pugi::xml_document doc;
  pugi::xml_node root = doc.append_child("Curve2DList");
  bezier.WriteToXmlNode(root);
  TGeBezier2D fromXml;
  fromXml.LoadFromXmlNode(root.first_child());
  std::istringstream in(WriteBin({&bezier}));
  TFbsStreamReader reader(in, "mem");
  reader.NextRecord().Release();
  TGeBezier2D fromBin;
  fromBin.LoadGeoData(reader);
  for (const TGeBezier2D* b : {&fromXml, &fromBin}) {
    const TBezierSegment2D& s = b->GetBezierSegment();
    EXPECT_TRUE(SameBits(s.P0, {-0.0, Third}) && SameBits(s.P3, {3, -Third}));
    EXPECT_TRUE(SameBits(s.P1, {1e-300, 1}) && SameBits(s.P2, {2, 5e-324}));
  }
}

TEST(CurveRecords, TruncatedThreeLevelCompositeIsAnInOutErrorAtEveryByte) {
  const std::unique_ptr<TGeCompositeCurve2D> tree = ThreeLevels();
  const std::string bytes = WriteBin({tree.get()});
  ASSERT_GT(bytes.size(), 500u);
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    std::istringstream in(bytes.substr(0, n));
    EXPECT_THROW(
        {
          TFbsStreamReader reader(in, "cut");
          TGeObject::ReadFromGeoData(reader);
        },
        EInOutError)
        << "cut at " << n;
  }
}

TEST(CurveRecords, HostileBinaryRecordsAreRefused) {
  const auto object = [](const char* Name, auto&& Fields) {
    std::ostringstream out;
    {
      TFbsStreamWriter w(out, "mem");
      for (int i = 0; i < 2; ++i) w.BeginRecord(Name, 1).Release();
      TFbsRecord r = w.BeginRecord(Name, 1);
      Fields(w);
    }
    return out.str();
  };
  const TGeBezier2D bezier({0, 0}, {1, 1}, {2, 1}, {3, 0});
  TGeCompositeCurve2D withBezier;
  withBezier.AddCurve(bezier.CloneAs<TGeCurve2D>());
  const std::string cases[] = {
      // A count that the record's bytes cannot back: refused before anything is sized.
      object("Polyline2D", [](IFbsWriter& w) { w.WriteInteger(0x7fffffff), w.WritePoint({0, 0}); }),
      object("Polygon2D", [](IFbsWriter& w) { w.WriteInteger(-1); }),
      object("PolyBezier2D", [](IFbsWriter& w) { w.WriteInteger(1000000), w.WritePoint({0, 0}); }),
      // Two control points make no cubic.
      object("PolyBezier2D", [](IFbsWriter& w) { w.WriteInteger(2), w.WritePoint({0, 0}), w.WritePoint({1, 0}); }),
      object("Polyline2D", [](IFbsWriter& w) { w.WriteInteger(1), w.WritePoint({0, 1e308 * 10}); }),
      // A composite claiming more sub-curves than follow ends at the stream's end.
      object("CompositeCurve2D", [](IFbsWriter& w) { w.WriteInteger(0x7fffffff); }),
      object("CompositeCurve2D", [](IFbsWriter& w) { w.WriteInteger(-3); }),
      // A nil sub-curve (no known class) would leave the records behind it out of step.
      WriteBin({&withBezier}),
  };
  for (const std::string& bytes : cases) {
    std::istringstream in(bytes);
    TFbsStreamReader r(in, "mem");
    EXPECT_THROW(TGeObject::ReadFromGeoData(r), EInOutError);
  }

  // Composites nested deeper than the cap.
  auto chain = std::make_unique<TGeCompositeCurve2D>();
  chain->AddCurve(std::make_unique<TGeLine2D>(TPoint2D{0, 0}, TPoint2D{1, 0}));
  for (int i = 0; i < IFbsReader::MaxNesting; ++i) {
    auto outer = std::make_unique<TGeCompositeCurve2D>();
    outer->AddCurve(std::move(chain));
    chain = std::move(outer);
  }
  EXPECT_THROW(ReadBin(WriteBin({chain.get()})), EInOutError);
}

TEST(CurveRecords, XmlCountsNamesAndNesting) {
  TObjectList<TGeCurve2D> list;
  // The filer asks for "PointCount" >= 1; the class-keyed reader takes the empty polyline.
  ReadXml(Doc("<Polyline2D/><TGePolygon2D PointCount='1'><Point X='1' Y='2'/></TGePolygon2D>"
              "<TGEPolyline2D PointCount='1'><Point/></TGEPolyline2D><PolyBezier2D/>"),
          list);
  ASSERT_EQ(list.Count(), 4);
  EXPECT_EQ(list[0], nullptr);
  ASSERT_NE(list[1], nullptr);
  EXPECT_EQ(list[1]->ClassName(), "TGePolygon2D");
  EXPECT_EQ(list[2], nullptr);
  EXPECT_EQ(list[3], nullptr);
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string("<Polyline2D/>"));
  const auto empty = TGeObject::ReadFromXmlNode<TGePolyline2D>(doc.first_child());
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->GetPointCount(), 0);

  // "CurveCount" does not decide; a missing CtrlPoint index stays at the origin.
  list.Clear();
  ReadXml(Doc("<CompositeCurve2D CurveCount='9'><PolyBezier2D CtrlCount='4'><CtrlPoint3 X='3' Y='0'/>"
              "<CtrlPoint1 X='1' Y='1'/><CtrlPoint01 X='7' Y='7'/><CtrlPoint2 X='2' Y='1'/></PolyBezier2D>"
              "</CompositeCurve2D>"),
          list);
  const auto* comp = dynamic_cast<const TGeCompositeCurve2D*>(list[0]);
  ASSERT_TRUE(comp != nullptr && comp->GetCurveCount() == 1);
  const auto* pb = dynamic_cast<const TGePolyBezier2D*>(comp->GetCurve(0));
  ASSERT_NE(pb, nullptr);
  EXPECT_EQ(pb->GetPointsArray(), (TDynPoints2D{{0, 0}, {1, 1}, {2, 1}, {3, 0}}));

  // Counts that the elements present do not back, and bad values: each an EInOutError
  // naming the source, and the list keeps what it had.
  const std::string bad[] = {
      "<Polyline2D PointCount='1000000000'><Point/></Polyline2D>",
      "<Polyline2D PointCount='1'><Point/><Point/></Polyline2D>",
      "<CompositeCurve2D><Polygon2D PointCount='-2'/></CompositeCurve2D>",
      "<Polyline2D PointCount='1'><Point X='inf'/></Polyline2D>",
      "<Polyline2D PointCount='1.5'><Point/></Polyline2D>",
      "<CompositeCurve2D><PolyBezier2D CtrlCount='2147483647'><CtrlPoint0/></PolyBezier2D></CompositeCurve2D>",
      "<CompositeCurve2D><PolyBezier2D CtrlCount='3'><CtrlPoint0/><CtrlPoint1/><CtrlPoint2/></PolyBezier2D>"
      "</CompositeCurve2D>",
      "<CompositeCurve2D><Bezier2D Class='PolyBezier2D'/><Line2D><LineStart X='a'/></Line2D></CompositeCurve2D>",
  };
  for (const std::string& b : bad) {
    TObjectList<TGeCurve2D> keep;
    try {
      ReadXml(Doc(b), keep);
      ADD_FAILURE() << b;
    } catch (const EInOutError& e) {
      EXPECT_NE(e.Message.find("mem.xml"), std::string::npos) << e.Message;
    }
    EXPECT_EQ(keep.Count(), 0);
  }
}

// Splines: written text and bytes are injective in every double (shortest round-trip digits,
// raw words), so equal rewrites mean equal bits.
TEST(SplineRecords, GoldenXmlAndAHandWorkedPointAfterReading) {
  const auto s = Make(2, {{1, 0}, {1, 1}, {-0.0, 1}}, {1, 0.5, 1}, 3);
  const std::string text = SaveXml({s.get()});
  EXPECT_EQ(text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Curve2DList>\n"
            "  <Spline2D CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\" IsPeriodic=\"false\" IsRational=\"true\">\n"
            "    <Knot0>0</Knot0>\n    <Knot1>0</Knot1>\n    <Knot2>0</Knot2>\n"
            "    <Knot3>1</Knot3>\n    <Knot4>1</Knot4>\n    <Knot5>1</Knot5>\n"
            "    <CtrlPoint0 X=\"1\" Y=\"0\" Wt=\"1\" />\n"
            "    <CtrlPoint1 X=\"1\" Y=\"1\" Wt=\"0.5\" />\n"
            "    <CtrlPoint2 X=\"-0\" Y=\"1\" Wt=\"1\" />\n"
            "  </Spline2D>\n</Curve2DList>\n");
  // At 1/2 the basis is 1/4, 1/2, 1/4 and each weighted term 1/4: the point (2/3, 2/3).
  // "IsRational" does not decide: equal weights read back as not rational.
  std::string flagged = SaveXml({Make(1, {{0, 0}, {1, 0}}, {2, 2}, 2).get()});
  flagged.replace(flagged.find("IsRational=\"false\""), 18, "IsRational=\"true\"");
  TObjectList<TGeCurve2D> back;
  ReadXml(text, back);
  ReadXml(flagged, back);
  ASSERT_EQ(back.Count(), 2);
  const auto& r = dynamic_cast<const TGeSpline2D&>(*back[0]);
  EXPECT_NEAR(r.EvalPoint(0.5).X, 2.0 / 3.0, 1e-15);
  EXPECT_NEAR(r.EvalPoint(0.5).Y, 2.0 / 3.0, 1e-15);
  EXPECT_FALSE(dynamic_cast<const TGeSpline2D&>(*back[1]).GetIsRational());
}

TEST(SplineRecords, DrawingSplinesRoundTripBitForBitAloneAndInComposites) {
  const auto drawings = orvane::testing::DataFiles("curves", ".dxf");
  if (drawings.empty()) GTEST_SKIP() << "no shared drawings in " ORVANE_SHARED_DATA_DIR;
  TGeCompositeCurve2D all;
  std::vector<const TGeCurve2D*> top{&all};
  for (const std::filesystem::path& drawing : drawings) {
    for (orvane::testing::TDxfSpline& d : orvane::testing::ReadDxfSplines(drawing)) {
      if (d.Weights.empty()) d.Weights.assign(d.Pts.size(), 1.0);
      std::unique_ptr<TGeSpline2D> s;
      if (!(d.Flags & 2)) {
        s = Make(d.Degree, d.Pts, d.Weights, 0);
        for (int i = 0; i < s->GetKnotCount(); ++i) s->SetKnots(i, d.Knots[i]);
      } else {
        s = internal::WrapPeriodicSpline(d.Pts, d.Weights, d.Knots, d.Degree);
        // Why the binary record keeps the flag: without it the wrapped curve is not closed.
        const auto plain = s->CloneAs<TGeSpline2D>();
        plain->SetPeriodic(false);
        EXPECT_TRUE(s->GetIsClosed() && !plain->GetIsClosed());
      }
      top.push_back(s.get());
      all.AddCurve(std::move(s));
    }
  }
  ASSERT_GT(all.GetCurveCount(), 200);
  const std::string text = SaveXml(top);
  TObjectList<TGeCurve2D> xml;
  ReadXml(text, xml);
  ASSERT_EQ(xml.Count(), static_cast<int>(top.size()));
  EXPECT_EQ(SaveXml({xml.begin(), xml.end()}), text);
  const std::string bytes = WriteBin({&all});
  std::istringstream in(bytes);
  TFbsStreamReader reader(in, "mem");
  const auto bin = TGeObject::ReadFromGeoData<TGeCompositeCurve2D>(reader);
  ASSERT_NE(bin, nullptr);
  EXPECT_EQ(WriteBin({bin.get()}), bytes);
  EXPECT_EQ(SaveXml({bin.get()}), SaveXml({&all}));
}

TEST(SplineRecords, MalformedRecordsAreReadErrorsThatLeaveTheSplineAsItWas) {
  const std::string good = SaveXml({Make(2, {{1, 0}, {1, 1}, {0, 1}}, {1, 0.5, 1}, 3).get()});
  const auto edit = [&](const std::string& From, const std::string& To) {
    std::string t = good;
    return t.replace(t.find(From), From.size(), To);
  };
  const auto target = Make(1, {{0, 0}, {1, 0}}, {1, 1}, 2);
  const std::string before = SaveXml({target.get()});
  for (const std::string& b : {
           edit("Degree=\"2\" KnotCount=\"6\"", "Degree=\"0\" KnotCount=\"4\""),
           edit("CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\"", "CtrlCount=\"5\" Degree=\"4\" KnotCount=\"10\""),
           edit("Degree=\"2\"", "Degree=\"3\""), edit("KnotCount=\"6\"", "KnotCount=\"7\""),
           edit("CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\"", "CtrlCount=\"2147483646\" Degree=\"1\" KnotCount=\"0\""),
           edit("<Knot1>0", "<Knot1>2"), edit("<Knot3>1", "<Knot3>0"), edit("<Knot4>1", "<Knot4>nan"),
           edit("Wt=\"0.5\"", "Wt=\"0\""), edit("Wt=\"0.5\"", "Wt=\"-1\""), edit("Wt=\"0.5\"", ""),
           edit("Y=\"1\" Wt=\"0.5\"", "Y=\"1e999\" Wt=\"0.5\""), edit("<CtrlPoint2", "<CtrlPoint02")}) {
    TObjectList<TGeCurve2D> list;
    try {
      ReadXml(b, list);
      ADD_FAILURE() << b;
    } catch (const EInOutError& e) {
      EXPECT_NE(e.Message.find("/Curve2DList/Spline2D"), std::string::npos) << e.Message;
    }
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string(b.c_str()));
    EXPECT_THROW(target->LoadFromXmlNode(doc.document_element().first_child()), EInOutError);
    EXPECT_EQ(SaveXml({target.get()}), before);
  }

  // The binary record: counts n, p, k; k knots; n points with weights; the periodic flag.
  const auto record = [](int N, int P, std::vector<double> Knots, double W, bool Cut = false, int K = -1) {
    std::ostringstream out;
    TFbsStreamWriter w(out, "mem");
    w.BeginRecord("Spline2D", 1).Release();
    TFbsRecord r = w.BeginRecord("Spline2D", 1);
    w.WriteInteger(N), w.WriteInteger(P), w.WriteInteger(K < 0 ? static_cast<int>(Knots.size()) : K);
    for (double k : Knots) w.WriteDouble(k);
    for (int i = 0; i < std::min(N, 9); ++i) w.WritePoint({double(i), 0}), w.WriteDouble(i == 1 ? W : 1.0);
    if (!Cut) w.WriteBoolean(true);
    r.Release();
    w.Flush();
    return out.str();
  };
  for (const std::string& bytes :
       {record(2, 0, {0, 0, 1}, 1), record(5, 4, {0, 0, 0, 0, 0, 1, 1, 1, 1, 1}, 1), record(2, 1, {0, 0, 1}, 1),
        record(2, 1, {0, 1, 0, 1}, 1), record(2, 1, {0, 0, 0, 0}, 1), record(2, 1, {0, 0, 1, 1}, 0),
        record(2, 1, {0, 0, 1, 1}, -1e-300), record(2, 1, {0, 0, 1, 1e308 * 10}, 1), record(2, 1, {0, 0, 1, 1}, 1, true),
        record(0x7ffffff0, 1, {}, 1, true, 0x7ffffff2)}) {
    std::istringstream in(bytes);
    TFbsStreamReader r(in, "mem");
    EXPECT_THROW(target->LoadGeoData(r), EInOutError);
    EXPECT_EQ(SaveXml({target.get()}), before);
  }
  std::istringstream in(record(2, 1, {0, 0, 1, 1}, 1));
  TFbsStreamReader r(in, "mem");
  target->LoadGeoData(r);
  EXPECT_TRUE(target->GetIsPeriodic());
}

// A spline element is read by a quick walk over plainly written values and, when that meets
// anything else, by a careful one: both must read the same spline and, in a file with
// several faults, name the one a single careful reader meets first (count, flags, values).
TEST(SplineRecords, EveryValueFormReadsAlikeAndTheFirstFaultIsNamed) {
  const std::string good = SaveXml({Make(2, {{1, 0}, {1, 1}, {0, 1}}, {1, 0.5, 1}, 3).get()});
  const auto edit = [](std::string T, const std::vector<std::pair<std::string, std::string>>& Edits) {
    for (const auto& [from, to] : Edits) T.replace(T.find(from), from.size(), to);
    return T;
  };
  const auto message = [](const std::string& Text) {
    TObjectList<TGeCurve2D> list;
    try {
      ReadXml(Text, list);
      return std::string("read");
    } catch (const EInOutError& e) {
      return e.Message;
    }
  };
  // Blanks around values, a repeated index and text between elements read as the plain file.
  TObjectList<TGeCurve2D> plain;
  ReadXml(good, plain);
  for (const std::string& same :
       {edit(good, {{"<Knot4>1<", "<Knot4> 1 <"}, {"Y=\"1\" Wt=\"0.5\"", "Y=\" 1\" Wt=\"0.5 \""}}),
        edit(good, {{"<CtrlPoint1 ", "<CtrlPoint1 X=\"1\" Y=\"1\" Wt=\"0.5\"/>text<CtrlPoint1 X=\"9\" "}})}) {
    TObjectList<TGeCurve2D> back;
    ReadXml(same, back);
    EXPECT_EQ(SaveXml({back.begin(), back.end()}), SaveXml({plain.begin(), plain.end()}));
  }
  // Processing instructions named like values are no elements: ignored.
  for (const std::string pi : {"<?Knot0 7?>", "<?CtrlPoint0 ?>"}) {
    const std::string withPi = edit(good, {{"<Knot0>", pi + "<Knot0>"}});
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string(withPi.c_str(), pugi::parse_default | pugi::parse_pi));
    auto read = Make(1, {{0, 0}, {1, 0}}, {1, 1}, 2);
    read->LoadFromXmlNode(doc.document_element().first_child());
    EXPECT_EQ(SaveXml({read.get()}), SaveXml({plain.begin(), plain.end()}));
  }

  // Too few elements, a bad flag and a bad value: the count; then the flag; then the value.
  // An empty first element of an index counts.
  const std::string header = "CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\" IsPeriodic=\"false\"";
  const std::string maybe = "IsPeriodic=\"maybe\"";
  const std::pair<std::string, std::string> bad = {"<Knot4>1</Knot4>", "<Knot4>x</Knot4>"};
  for (const auto& [text, fault] : std::vector<std::pair<std::string, std::string>>{
           {edit(good, {{header, "CtrlCount=\"10\" Degree=\"2\" KnotCount=\"13\" " + maybe}, bad}),
            "the control point count 10 exceeds the elements present"},
           {edit(good, {{"IsPeriodic=\"false\"", maybe}, bad}), "IsPeriodic \"maybe\" is no boolean"},
           {edit(good, {bad}), "the value \"x\" is no finite number"},
           {edit(good, {{"<CtrlPoint2 ", "<CtrlPoint2/><CtrlPoint2 "}}), "weight 2 is not a positive number"}}) {
    EXPECT_NE(message(text).find(fault), std::string::npos) << message(text);
  }

  // Beyond a thousand control points the count is checked before the arrays are made.
  const int n = 1500;
  TDynPoints2D pts;
  for (int i = 0; i < n; ++i) pts.push_back({double(i), double(i % 7)});
  const std::string large = SaveXml({Make(3, pts, TFloatDynArray(n, 1.0), 4).get()});
  TObjectList<TGeCurve2D> back;
  ReadXml(large, back);
  ASSERT_EQ(back.Count(), 1);
  EXPECT_EQ(SaveXml({back[0]}), large);
  std::string cut = large;
  cut.erase(cut.find("    <Knot0>"), cut.find("    <CtrlPoint0 ") - cut.find("    <Knot0>"));
  cut.erase(cut.find("    <CtrlPoint1499 "), cut.find("  </Spline2D>") - cut.find("    <CtrlPoint1499 "));
  EXPECT_NE(message(cut).find("the control point count 1500 exceeds the elements present"), std::string::npos)
      << message(cut);
}
