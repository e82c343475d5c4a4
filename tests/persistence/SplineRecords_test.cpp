// The spline's records in both formats: golden text, the drawings' splines bit for bit, and
// malformed records refused without harm.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <filesystem>
#include <pugixml.hpp>
#include <sstream>

#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/GeCurve2DFiler.h"
#include "splines/DxfSplines.h"

using namespace orvane;

namespace {

std::string SaveXml(const std::vector<const TGeCurve2D*>& Curves) {
  TList<TGeCurve2D*> list;
  for (const TGeCurve2D* c : Curves) list.Add(const_cast<TGeCurve2D*>(c));
  std::ostringstream out;
  TGeCurve2DFiler::SaveCurveList(list, out);
  return out.str();
}

std::string WriteBin(const TGeObject& Obj) {
  std::ostringstream out;
  TFbsStreamWriter writer(out, "mem");
  TGeObject::SaveGeObjToDb(Obj, writer);
  writer.Flush();
  return out.str();
}

template <class T>
bool SameBits(const std::vector<T>& A, const std::vector<T>& B) {
  return A.size() == B.size() && std::memcmp(A.data(), B.data(), A.size() * sizeof(T)) == 0;
}

void ExpectSameSpline(const TGeSpline2D& A, const TGeSpline2D& B) {
  EXPECT_EQ(A.GetDegree(), B.GetDegree());
  EXPECT_EQ(A.GetIsPeriodic(), B.GetIsPeriodic());
  EXPECT_TRUE(SameBits(A.GetKnotVector(), B.GetKnotVector()));
  EXPECT_TRUE(SameBits(A.GetCtrlPoints(), B.GetCtrlPoints()));
  EXPECT_TRUE(SameBits(A.GetWeights(), B.GetWeights()));
  EXPECT_EQ(A.GetStartParam(), B.GetStartParam());
  EXPECT_EQ(A.GetEndParam(), B.GetEndParam());
}

// A quarter circle as a rational quadratic: its middle weight is cos 45 degrees.
std::unique_ptr<TGeSpline2D> Quarter(double MidWeight) {
  auto s = std::make_unique<TGeSpline2D>(3, 2);
  const TPoint2D pts[] = {{1, 0}, {1, 1}, {-0.0, 1}};
  for (int i = 0; i < 3; ++i) {
    s->SetCtrlPoint(i, pts[i]);
    s->SetWeight(i, i == 1 ? MidWeight : 1.0);
  }
  for (int i = 3; i < 6; ++i) s->SetKnots(i, 1.0);
  return s;
}

}  // namespace

TEST(SplineRecords, GoldenXmlAndHandWorkedPointAfterReading) {
  const auto s = Quarter(0.5);
  const std::string text = SaveXml({s.get()});
  EXPECT_EQ(text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<Curve2DList>\n"
            "  <Spline2D CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\" IsPeriodic=\"false\" IsRational=\"true\">\n"
            "    <Knot0>0</Knot0>\n    <Knot1>0</Knot1>\n    <Knot2>0</Knot2>\n"
            "    <Knot3>1</Knot3>\n    <Knot4>1</Knot4>\n    <Knot5>1</Knot5>\n"
            "    <CtrlPoint0 X=\"1\" Y=\"0\" Wt=\"1\" />\n"
            "    <CtrlPoint1 X=\"1\" Y=\"1\" Wt=\"0.5\" />\n"
            "    <CtrlPoint2 X=\"-0\" Y=\"1\" Wt=\"1\" />\n"
            "  </Spline2D>\n"
            "</Curve2DList>\n");
  // At 1/2 the basis is 1/4, 1/2, 1/4; with the weights each term weighs 1/4: (2/3, 2/3).
  TObjectList<TGeCurve2D> back;
  std::istringstream in(text);
  TGeCurve2DFiler::ReadCurveList(back, in, "mem.xml");
  ASSERT_EQ(back.Count(), 1);
  const auto& r = dynamic_cast<const TGeSpline2D&>(*back[0]);
  ExpectSameSpline(r, *s);
  EXPECT_NEAR(r.EvalPoint(0.5).X, 2.0 / 3.0, 1e-15);
  EXPECT_NEAR(r.EvalPoint(0.5).Y, 2.0 / 3.0, 1e-15);
  // The flag in the file does not decide: equal weights are not rational, whatever it says.
  TObjectList<TGeCurve2D> flagged;
  std::string t2 = SaveXml({Quarter(1.0).get()});
  t2.replace(t2.find("IsRational=\"false\""), 18, "IsRational=\"true\"");
  std::istringstream in3(t2);
  TGeCurve2DFiler::ReadCurveList(flagged, in3, "mem.xml");
  EXPECT_FALSE(dynamic_cast<const TGeSpline2D&>(*flagged[0]).GetIsRational());
}

TEST(SplineRecords, DrawingSplinesRoundTripBitForBitAloneAndInComposites) {
  const std::filesystem::path dir = ORVANE_SHARED_DATA_DIR "/curves";
  if (!std::filesystem::exists(dir)) GTEST_SKIP() << "no shared data at " << dir;
  TGeCompositeCurve2D all;
  int periodic = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.path().extension() != ".dxf") continue;
    for (orvane::testing::TDxfSpline& d : orvane::testing::ReadDxfSplines(entry.path())) {
      if (d.Weights.empty()) d.Weights.assign(d.Pts.size(), 1.0);
      std::unique_ptr<TGeSpline2D> s;
      if (d.Flags & 2) {
        ++periodic;
        s = internal::WrapPeriodicSpline(d.Pts, d.Weights, d.Knots, d.Degree);
        // Why the binary record keeps the flag: without it the wrapped curve is not closed.
        const auto plain = s->CloneAs<TGeSpline2D>();
        plain->SetPeriodic(false);
        EXPECT_TRUE(s->GetIsClosed() && !plain->GetIsClosed());
      } else {
        s = std::make_unique<TGeSpline2D>(static_cast<int>(d.Pts.size()), d.Degree);
        for (int i = 0; i < s->GetCtrlPointCount(); ++i) s->SetCtrlPoint(i, d.Pts[i]), s->SetWeight(i, d.Weights[i]);
        for (int i = 0; i < s->GetKnotCount(); ++i) s->SetKnots(i, d.Knots[i]);
      }
      all.AddCurve(std::move(s));
    }
  }
  ASSERT_GT(all.GetCurveCount(), 200);
  ASSERT_EQ(periodic, 1);

  // The composite and, at the top level, each spline: the text and bytes written again from
  // what was read are the same, and every array comes back to the bit.
  std::vector<const TGeCurve2D*> top{&all};
  for (int i = 0; i < all.GetCurveCount(); ++i) top.push_back(all.GetCurve(i));
  const std::string text = SaveXml(top);
  TObjectList<TGeCurve2D> xml;
  std::istringstream in(text);
  TGeCurve2DFiler::ReadCurveList(xml, in, "mem.xml");
  ASSERT_EQ(xml.Count(), static_cast<int>(top.size()));
  EXPECT_EQ(SaveXml({xml.begin(), xml.end()}), text);
  const std::string bytes = WriteBin(all);
  std::istringstream bin(bytes);
  TFbsStreamReader reader(bin, "mem");
  const auto fromBin = TGeObject::ReadFromGeoData<TGeCompositeCurve2D>(reader);
  ASSERT_NE(fromBin, nullptr);
  EXPECT_EQ(WriteBin(*fromBin), bytes);
  const auto& fromXml = dynamic_cast<const TGeCompositeCurve2D&>(*xml[0]);
  ASSERT_EQ(fromXml.GetCurveCount(), all.GetCurveCount());
  ASSERT_EQ(fromBin->GetCurveCount(), all.GetCurveCount());
  for (int i = 0; i < all.GetCurveCount(); ++i) {
    const auto& orig = dynamic_cast<const TGeSpline2D&>(*all.GetCurve(i));
    ExpectSameSpline(dynamic_cast<const TGeSpline2D&>(*fromXml.GetCurve(i)), orig);
    ExpectSameSpline(dynamic_cast<const TGeSpline2D&>(*xml[i + 1]), orig);
    ExpectSameSpline(dynamic_cast<const TGeSpline2D&>(*fromBin->GetCurve(i)), orig);
  }
}

TEST(SplineRecords, MalformedRecordsAreReadErrorsThatLeaveTheSplineAsItWas) {
  const std::string good = SaveXml({Quarter(0.5).get()});
  const auto edit = [&](const std::string& From, const std::string& To) {
    std::string t = good;
    return t.replace(t.find(From), From.size(), To);
  };
  const std::string bad[] = {
      edit("Degree=\"2\" KnotCount=\"6\"", "Degree=\"0\" KnotCount=\"4\""),
      edit("CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\"", "CtrlCount=\"3\" Degree=\"4\" KnotCount=\"8\""),
      edit("CtrlCount=\"3\" Degree=\"2\"", "CtrlCount=\"2\" Degree=\"2\""),
      edit("KnotCount=\"6\"", "KnotCount=\"7\""),
      edit("CtrlCount=\"3\" Degree=\"2\" KnotCount=\"6\"", "CtrlCount=\"2147483646\" Degree=\"1\" KnotCount=\"0\""),
      edit("<Knot1>0</Knot1>", "<Knot1>2</Knot1>"),
      edit("<Knot3>1</Knot3>", "<Knot3>0</Knot3>"),
      edit("<Knot4>1</Knot4>", "<Knot4>nan</Knot4>"),
      edit("Wt=\"0.5\"", "Wt=\"0\""),
      edit("Wt=\"0.5\"", "Wt=\"-1\""),
      edit("Wt=\"0.5\" />", "/>"),
      edit("Y=\"1\" Wt=\"0.5\"", "Y=\"1e999\" Wt=\"0.5\""),
      edit("<CtrlPoint2", "<CtrlPoint02"),
  };
  const auto target = Quarter(0.25);
  const std::string before = SaveXml({target.get()});
  for (const std::string& b : bad) {
    TObjectList<TGeCurve2D> list;
    std::istringstream in(b);
    try {
      TGeCurve2DFiler::ReadCurveList(list, in, "mem.xml");
      ADD_FAILURE() << b;
    } catch (const EInOutError& e) {
      EXPECT_NE(e.Message.find("/Curve2DList/Spline2D"), std::string::npos) << e.Message;
    }
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string(b.c_str()));
    EXPECT_THROW(target->LoadFromXmlNode(doc.document_element().first_child()), EInOutError);
    EXPECT_EQ(SaveXml({target.get()}), before);
  }

  // The binary record: counts, order, weights and values refused alike.
  const auto record = [](auto&& Fields) {
    std::ostringstream out;
    {
      TFbsStreamWriter w(out, "mem");
      for (int i = 0; i < 2; ++i) w.BeginRecord("Spline2D", 1).Release();
      TFbsRecord r = w.BeginRecord("Spline2D", 1);
      Fields(w);
    }
    return out.str();
  };
  // Counts n, p, k, then k knots, n points with weights, and the periodic flag.
  const auto spline = [&](int N, int P, std::vector<double> Knots, double W, bool Periodic = false) {
    return record([=](IFbsWriter& w) {
      w.WriteInteger(N), w.WriteInteger(P), w.WriteInteger(static_cast<int>(Knots.size()));
      for (double k : Knots) w.WriteDouble(k);
      for (int i = 0; i < N; ++i) w.WritePoint({double(i), 0}), w.WriteDouble(i == 1 ? W : 1.0);
      w.WriteBoolean(Periodic);
    });
  };
  const std::string okBytes = spline(2, 1, {0, 0, 1, 1}, 1.0, true);
  const std::string badBytes[] = {
      spline(2, 0, {0, 0, 1}, 1.0), spline(5, 4, {0, 0, 0, 0, 0, 1, 1, 1, 1, 1}, 1.0),
      spline(2, 1, {0, 0, 1}, 1.0), spline(2, 1, {0, 1, 0, 1}, 1.0), spline(2, 1, {0, 0, 0, 0}, 1.0),
      spline(2, 1, {0, 0, 1, 1}, 0.0), spline(2, 1, {0, 0, 1, 1}, -1e-300), spline(2, 1, {0, 0, 1, 1e308 * 10}, 1.0),
      record([](IFbsWriter& w) { w.WriteInteger(0x7ffffff0), w.WriteInteger(1), w.WriteInteger(0x7ffffff2); }),
      okBytes.substr(0, okBytes.size() - 2),
  };
  for (const std::string& bytes : badBytes) {
    std::istringstream in(bytes);
    TFbsStreamReader r(in, "mem");
    r.NextRecord().Release();
    EXPECT_THROW(target->LoadGeoData(r), EInOutError);
    EXPECT_EQ(SaveXml({target.get()}), before);
  }
  std::istringstream in(okBytes);
  TFbsStreamReader r(in, "mem");
  const auto ok = TGeObject::ReadFromGeoData<TGeSpline2D>(r);
  ASSERT_NE(ok, nullptr);
  EXPECT_TRUE(ok->GetIsPeriodic());
}
