// The records of the polyline family, Beziers and composites in both formats.
#include <gtest/gtest.h>

#include <bit>
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

using namespace orvane;

namespace {

const double Third = 1.0 / 3.0;

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

// line -> composite(polyline, composite(polygon, poly-Bezier), arc): three levels.
std::unique_ptr<TGeCompositeCurve2D> ThreeLevels() {
  auto inner = std::make_unique<TGeCompositeCurve2D>();
  inner->AddCurve(std::make_unique<TGePolygon2D>(TDynPoints2D{{2, 0}, {3, 0}, {3, 1e-300}}));
  inner->AddCurve(std::make_unique<TGePolyBezier2D>(TDynPoints2D{{3, 1}, {Third, -0.0}, {4, 2}, {5, 5e-324}}));
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
  EXPECT_EQ(Shape(*xml[0]), "C(Line2D,C(Polyline2D,C(Polygon2D,PolyBezier2D)),CircularArc2D)");
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

  // Counts that the elements present do not back, bad values, and deep nesting: each an
  // EInOutError naming the source, and the list keeps what it had.
  std::string deep;
  for (int i = 0; i < 70; ++i) deep += "<CompositeCurve2D>";
  for (int i = 0; i < 70; ++i) deep += "</CompositeCurve2D>";
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
      deep,
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
