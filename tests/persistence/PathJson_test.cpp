// Integer paths as JSON, and the text dump of mixed polylines.
#include <gtest/gtest.h>

#include <sstream>

#include "orvane/foundation/Exception.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/mixed/LABPolylineList.h"
#include "orvane/paths/PathUtils.h"

using namespace orvane;

TEST(PathJson, IntegersToTheLimitsStringsAndShapes) {
  const std::int64_t lo = std::numeric_limits<std::int64_t>::min();
  const std::int64_t hi = std::numeric_limits<std::int64_t>::max();
  const TPaths64 paths{{{1, -2}, {hi, lo}}, {}};
  const std::string doc = TPathUtils::CreatePathsJson(paths);
  EXPECT_EQ(doc, "[[[1,-2],[9223372036854775807,-9223372036854775808]],[]]");
  EXPECT_EQ(TPathUtils::CreatePaths(doc), paths);
  EXPECT_EQ(TPathUtils::CreatePathJson({}), "[]");
  EXPECT_TRUE(TPathUtils::CreatePath(" [ ] ").empty());

  // Integers as strings are integers; entries behind Y are ignored.
  EXPECT_EQ(TPathUtils::CreatePath(R"([["-9223372036854775808","7",1.5],[3,"4"]])"),
            (TPath64{{lo, 7}, {3, 4}}));

  // A path coordinate is an integer or nothing: no fraction, no float that looks whole, no
  // text beyond 64 bits.
  for (const char* text : {"[[1.5,0]]", "[[1.0,0]]", "[[1e3,0]]", "[[0,\"2.5\"]]", "[[0,\" 2\"]]", "[[0,\"\"]]",
                           "[[9223372036854775808,0]]", "[[0,\"-9223372036854775809\"]]", "[[true,0]]",
                           "[[null,0]]", "[[[0],0]]"}) {
    EXPECT_THROW(TPathUtils::CreatePath(text), EConvertError) << text;
  }
  // Shapes outside the format.
  for (const char* text : {"{}", "[[1]]", "[1,2]", "[{\"x\":1,\"y\":2}]", "[[1,2]", "", "[[3e808,0]]"}) {
    EXPECT_THROW(TPathUtils::CreatePath(text), EInOutError) << text;
  }
  try {
    TPathUtils::CreatePaths("[[[0,0]],[[1,2],[3,0.5]]]");
    ADD_FAILURE();
  } catch (const EConvertError& e) {
    EXPECT_NE(e.Message.find("$[1][1][1]"), std::string::npos) << e.Message;
  }
  EXPECT_THROW(TPathUtils::CreatePaths("[[[0,0]],5]"), EInOutError);
}

TEST(PathJson, MixedPolylineTextDump) {
  TLABPolylineList list;
  auto lines = std::make_unique<TLABPolyline>();
  lines->Add(TLABSegline::CreateLine({0, 0}, {1, 0}));
  lines->Add(TLABSegline::CreateLine({1, 0}, {1, 0.5}));
  list.Add(std::move(lines));
  auto curve = std::make_unique<TLABPolyline>();
  curve->Add(TLABSegline::CreateBezier({0, 0}, {0, 1}, {1, 1}, {1, 0}));
  list.Add(std::move(curve));

  // Lines give both ends, so the shared vertex comes twice; black writes no colour.
  std::ostringstream one;
  list[0]->WriteToFile(one, 0, "#000000", false);
  EXPECT_EQ(one.str(), "((0.000000, 0.000000), (1.000000, 0.000000), (1.000000, 0.000000), (1.000000, 0.500000))");

  // A curved segment gives its 101 samples at step 0.01; a line end between items only.
  std::ostringstream all;
  list.WriteToFile(all, 7, "#FF0000", true);
  const std::string text = all.str();
  const std::size_t nl = text.find('\n');
  ASSERT_NE(nl, std::string::npos);
  EXPECT_EQ(text.find('\n', nl + 1), std::string::npos);
  EXPECT_EQ(text.substr(0, 8), "#FF0000(");
  const std::string second = text.substr(nl + 1);
  EXPECT_EQ(std::count(second.begin(), second.end(), '('), 102);
  EXPECT_EQ(second.substr(0, 50), "#FF0000((0.0000000000000000, 0.0000000000000000), ");
  EXPECT_EQ(second.substr(second.size() - 41), "(1.0000000000000000, 0.0000000000000000))");
  EXPECT_NE(second.find("(0.5000000000000000, 0.7500000000000000)"), std::string::npos);
}
