#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/monotone/MPolygon.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2DList.h"
#include "support/SharedData.h"

using namespace orvane;

namespace {

const std::string Dir = ORVANE_BINARY_DIR "/tests/";

bool SameBits(const TPoint2D& A, const TPoint2D& B) {
  return std::bit_cast<std::uint64_t>(A.X) == std::bit_cast<std::uint64_t>(B.X) &&
         std::bit_cast<std::uint64_t>(A.Y) == std::bit_cast<std::uint64_t>(B.Y);
}

std::string FileText(const std::string& Name) {
  std::ifstream f(Name, std::ios::binary);
  return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

void PutFile(const std::string& Name, const std::string& Text) { std::ofstream(Name, std::ios::binary) << Text; }

// Reads Text through ReadFrom and expects an EInOutError whose message holds Part.
template <class L>
void ExpectReadError(L& List, const std::string& Text, const std::string& Part) {
  // One file per test: ctest runs the tests of this program side by side.
  const std::string file = Dir + ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".bad.json";
  PutFile(file, Text);
  try {
    List.ReadFrom(file);
    ADD_FAILURE() << Text;
  } catch (const EInOutError& e) {
    EXPECT_NE(std::string(e.what()).find(Part), std::string::npos) << e.what();
  }
}

}  // namespace

TEST(JsonExchange, PointListsRoundTripBitForBitInBothForms) {
  const double third = 1.0 / 3.0;
  const double big = std::numeric_limits<double>::max();
  TVPoint2DList pts{{third, -0.0}, {1e-300, 5e-324}, {-big, 0.1}, {1, 2}};
  const std::string file = Dir + "points.json";
  pts.SaveTo(file);
  EXPECT_EQ(FileText(file), "[[0.3333333333333333,-0.0],[1e-300,5e-324],[-1.7976931348623157e+308,0.1],[1,2]]");
  TVPoint2DList back;
  back.ReadFrom(file);
  ASSERT_EQ(back.Count(), 4);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(SameBits(back[i], pts[i])) << i;

  // The string form carries the same shortest text, so it round-trips whole as well.
  pts.SaveToStrJson(file);
  EXPECT_EQ(FileText(file).substr(0, 30), "[[\"0.3333333333333333\",\"-0\"],[");
  TVPoint2DList back2{{7, 7}};
  back2.ReadFromStrJson(file);
  ASSERT_EQ(back2.Count(), 4);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(SameBits(back2[i], pts[i])) << i;

  TVPoint2DList empty;
  empty.SaveTo(file);
  EXPECT_EQ(FileText(file), "[]");
  back.ReadFrom(file);
  EXPECT_EQ(back.Count(), 0);

  TVPoint2DList nan{{std::numeric_limits<double>::quiet_NaN(), 0}};
  EXPECT_THROW(nan.SaveTo(file), EParamError);
}

TEST(JsonExchange, ShapesNumbersAndTheirLimits) {
  TVPoint2DList pts;
  const std::string file = Dir + "edge.json";
  // Extra entries of a pair are skipped; numbers and numeric strings both read; the 64-bit
  // limits and the first integer beyond them become the nearest doubles.
  PutFile(file,
          " [[1, 2, 3, \"x\", null], [\"1.5\", \" -2 \"], [9223372036854775807, -9223372036854775808],"
          " [18446744073709551615, 18446744073709551616], [1E2, -0.0e0]] ");
  pts.ReadFrom(file);
  ASSERT_EQ(pts.Count(), 5);
  EXPECT_EQ(pts[0], TPoint2D(1, 2));
  EXPECT_EQ(pts[1], TPoint2D(1.5, -2));
  EXPECT_EQ(pts[2], TPoint2D(9223372036854775808.0, -9223372036854775808.0));
  EXPECT_EQ(pts[3], TPoint2D(18446744073709551616.0, 18446744073709551616.0));
  EXPECT_TRUE(SameBits(pts[4], TPoint2D(100, -0.0)));

  // Every refusal names the place and leaves the list as it was.
  ExpectReadError(pts, "[[1,2],[3]]", "at $[1]: a point needs two coordinates");
  ExpectReadError(pts, "[[1,2],[3,[4]]]", "at $[1][1]: an array stands");
  ExpectReadError(pts, "[[1,2],5]", "at $[1]: a coordinate stands where an array belongs");
  ExpectReadError(pts, "{\"a\":1}", "an object stands");
  ExpectReadError(pts, "[[1,\"1,5\"]]", "at $[0][1]: the string \"1,5\" is no finite number");
  ExpectReadError(pts, "[[1,\"inf\"]]", "is no finite number");
  ExpectReadError(pts, "[[1,true]]", "a boolean stands");
  ExpectReadError(pts, "[[1,1e400]]", "bad.json");
  ExpectReadError(pts, "[[1,2],", "\"");
  ExpectReadError(pts, "[[1,2]] x", "byte");
  EXPECT_EQ(pts.Count(), 5);
  EXPECT_THROW(pts.ReadFrom(Dir + "no/such/file.json"), EInOutError);
  EXPECT_EQ(pts.Count(), 5);
}

TEST(JsonExchange, PolylineListsAndPolygonsWithHoles) {
  const std::string file = Dir + "lines.json";
  PutFile(file, "[[]]");
  TVPolyline2DList list;
  list.ReadFrom(file);
  ASSERT_EQ(list.Count(), 1);
  EXPECT_EQ(list[0]->Count(), 0);
  list.SaveTo(file);
  EXPECT_EQ(FileText(file), "[[]]");
  ExpectReadError(list, "[[[1,2]],[1,2]]", "at $[1][0]: a coordinate stands");
  EXPECT_EQ(list.Count(), 1);
  TVPolyline2DList borrowed(false);
  EXPECT_THROW(borrowed.ReadFrom(file), EListError);

  // Outline and hole both counter-clockwise on file: the hole comes back clockwise.
  PutFile(file, "[[[0,0],[4,0],[4,4],[0,4],[0,0]],[[1,1],[2,1],[2,2],[1,2],[1,1]]]");
  TVHPolygon poly;
  poly.ReadFrom(file);
  ASSERT_EQ(poly.Count(), 2);
  EXPECT_FALSE(poly.GetIsClockwise());
  EXPECT_FALSE(poly[0]->IsClockwise());
  EXPECT_TRUE(poly[1]->IsClockwise());
  EXPECT_EQ(poly.Area(), 15.0);
  // A closed outline takes the polygon's orientation as it enters; an open one keeps the
  // file's, and the polygon takes it over.
  TVHPolygon cw(true);
  cw.ReadFrom(file);
  EXPECT_TRUE(cw.GetIsClockwise() && cw[0]->IsClockwise() && !cw[1]->IsClockwise());
  PutFile(file, "[[[0,0],[4,0],[4,4],[0,4]],[[1,1],[2,1],[2,2],[1,2],[1,1]]]");
  cw.ReadFrom(file);
  EXPECT_TRUE(!cw.GetIsClockwise() && !cw[0]->IsClockwise() && cw[1]->IsClockwise());
}

// The outlines of real cutting instances come back bit for bit, and our reader agrees with
// nlohmann's tree on every coordinate of the source files.
TEST(JsonExchange, RealOutlinesRoundTrip) {
  const auto sources = orvane::testing::DataFiles("outlines", ".json");
  if (sources.empty()) GTEST_SKIP() << "no outline data in " ORVANE_SHARED_DATA_DIR;
  int rings = 0;
  for (const std::filesystem::path& source : sources) {
    const nlohmann::json doc = orvane::testing::ReadJson(source);
    TVPolyline2DList list;
    for (const auto& part : doc["parts"]) list.Add(std::make_unique<TVPolyline2D>(orvane::testing::JsonRing(part["outer"])));
    const std::string file = Dir + "outline.json";
    list.SaveTo(file);
    TVPolyline2DList back;
    back.ReadFrom(file);
    ASSERT_EQ(back.Count(), list.Count()) << source;
    for (int i = 0; i < list.Count(); ++i) {
      ASSERT_EQ(back[i]->Count(), list[i]->Count());
      for (int k = 0; k < list[i]->Count(); ++k) ASSERT_TRUE(SameBits((*back[i])[k], (*list[i])[k])) << source;
      ++rings;
    }
    // The source's own text of the first outline, read by our reader.
    PutFile(file, doc["parts"][0]["outer"].dump());
    TVPoint2DList first;
    first.ReadFrom(file);
    ASSERT_EQ(first.Count(), list[0]->Count());
    for (int k = 0; k < first.Count(); ++k) ASSERT_TRUE(SameBits(first[k], (*list[0])[k]));
  }
  EXPECT_GT(rings, 100);
}

TEST(TextDump, ExactForms) {
  std::ostringstream out;
  TPoint2DUtils::WriteToFile({1, -2.5}, out, "#ff0000", false);
  TPoint2DUtils::WriteToFile({1.0 / 3.0, 0}, out, "#000000", true);
  EXPECT_EQ(out.str(), "#ff0000 (1.000000, -2.500000) (0.3333333333333333, 0.0000000000000000)");

  TVPolyline2D line{{1, 2}, {3, 4.5}};
  TVPolyline2D empty;
  out.str("");
  line.WriteToFile(out, "#000000", false);
  empty.WriteToFile(out, "red", true);
  EXPECT_EQ(out.str(), "((1.000000, 2.000000), (3.000000, 4.500000))red()");
  EXPECT_EQ(TVPolyline2D{TPoint2D(1, 2)}.ToString(), "(1.0000000000000000, 2.0000000000000000), ");

  TVPolyline2DList list;
  list.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{0, 0}}));
  out.str("");
  list.WriteToFile(out, "c", false);
  EXPECT_EQ(out.str(), "c((0.000000, 0.000000))");
  list.Add(std::make_unique<TVPolyline2D>());
  out.str("");
  list.WriteToFile(out, "c", false);
  EXPECT_EQ(out.str(), "c((0.000000, 0.000000))\nc()");

  // A monotone polygon: its chains in list order, each climbing, black written as no colour.
  // The rectangle from its lower left corner, counter-clockwise: the climbing right side,
  // then the chain that holds both level edges and the left side.
  const TMPolygon rect(TVPolyline2D{{0, 0}, {2, 0}, {2, 1}, {0, 1}, {0, 0}}, nullptr);
  out.str("");
  rect.WriteToFile(out, "#000000", false);
  EXPECT_EQ(out.str(),
            "((2.000000, 0.000000), (0.000000, 0.000000), (0.000000, 1.000000), (2.000000, 1.000000))\n"
            "((2.000000, 0.000000), (2.000000, 1.000000))");
  out.str("");
  TMPolygon().WriteToFile(out, "c", false);
  EXPECT_EQ(out.str(), "");

  std::ostringstream broken;
  broken.setstate(std::ios::badbit);
  EXPECT_THROW(line.WriteToFile(broken, "", true), EInOutError);
}
