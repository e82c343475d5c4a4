// The layout checker: hand-made layouts with hand-worked answers, bad input through the
// command itself, and every published layout against the figures its file states.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "Check.h"
#include "Layout.h"
#include "orvane/foundation/Exception.h"

using namespace orvane;
using namespace orvane::tool;

namespace {

TCheckReport CheckText(const std::string& Text, const TCheckOptions& Options = {}) {
  const std::vector<TLayout> layouts = ParseLayout(Text, "hand-made");
  EXPECT_EQ(layouts.size(), 1u);
  return CheckLayout(layouts.at(0), Options);
}

std::string Square(double X, double Y, double Side) {
  const std::string x0 = FloatToStr(X), y0 = FloatToStr(Y), x1 = FloatToStr(X + Side), y1 = FloatToStr(Y + Side);
  return "[[" + x0 + "," + y0 + "],[" + x1 + "," + y0 + "],[" + x1 + "," + y1 + "],[" + x0 + "," + y1 + "]]";
}

std::string Layout(const std::string& Container, const std::vector<std::string>& Outers,
                   const std::string& ExtraPart = "") {
  std::string parts;
  for (std::size_t i = 0; i < Outers.size(); ++i) {
    parts += (i ? "," : "") + std::string("{\"id\":") + std::to_string(i) + ",\"outer\":" + Outers[i] + "}";
  }
  if (!ExtraPart.empty()) parts += (parts.empty() ? "" : ",") + ExtraPart;
  return "{\"container\":" + Container + ",\"parts\":[" + parts + "]}";
}

struct TRun {
  int Code = -1;
  std::string Out;
  std::string Err;
};

TRun RunTool(const std::string& Args) {
  const std::string dir = std::filesystem::temp_directory_path() / "orvane-tool-test";
  std::filesystem::create_directories(dir);
  const std::string out = dir + "/out.txt";
  const std::string err = dir + "/err.txt";
  const std::string cmd = std::string(ORVANE_BINARY_DIR) + "/tools/orvane " + Args + " >" + out + " 2>" + err;
  TRun run;
  const int status = std::system(cmd.c_str());
  run.Code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::ifstream o(out), e(err);
  std::stringstream so, se;
  so << o.rdbuf();
  se << e.rdbuf();
  run.Out = so.str();
  run.Err = se.str();
  return run;
}

std::string WriteTemp(const std::string& Name, const std::string& Text) {
  const std::filesystem::path p = std::filesystem::temp_directory_path() / "orvane-tool-test" / Name;
  std::filesystem::create_directories(p.parent_path());
  std::ofstream(p) << Text;
  return p.string();
}

}  // namespace

TEST(LayoutCheck, HandWorkedLayouts) {
  const std::string sheet = Square(0, 0, 10);
  {  // Two squares sharing an edge: contact, nothing overlaps.
    const TCheckReport r = CheckText(Layout(sheet, {Square(1, 1, 2), Square(3, 1, 2)}));
    EXPECT_EQ(r.CandidatePairs, 1);
    EXPECT_EQ(r.ContactPairs, 1);
    EXPECT_EQ(r.OverlapPairs, 0);
    EXPECT_NEAR(r.OverlapAreaMax, 0.0, 1e-9);
    EXPECT_TRUE(r.ContainedParts.empty());
    EXPECT_TRUE(r.Clean);
  }
  {  // Overlap by a 1 x 1 square, a quarter of either part.
    const TCheckReport r = CheckText(Layout(sheet, {Square(1, 1, 2), Square(2, 2, 2)}));
    EXPECT_EQ(r.ContactPairs, 1);
    EXPECT_EQ(r.OverlapPairs, 1);
    EXPECT_NEAR(r.OverlapAreaMax, 1.0, 1e-9);
    EXPECT_NEAR(r.OverlapMaxRelative, 0.25, 1e-9);
    ASSERT_EQ(r.Overlaps.size(), 1u);
    EXPECT_EQ(r.Overlaps[0].A, 0);
    EXPECT_EQ(r.Overlaps[0].B, 1);
    EXPECT_FALSE(r.Clean);
  }
  {  // A part wholly inside another, without contact: found by the point test.
    const TCheckReport r = CheckText(Layout(sheet, {Square(1, 1, 4), Square(2, 2, 1)}));
    EXPECT_EQ(r.ContactPairs, 0);
    EXPECT_EQ(r.ContainedParts, std::vector<int>{1});
    EXPECT_NEAR(r.OverlapMaxRelative, 1.0, 1e-12);
    EXPECT_NEAR(r.OverlapAreaMax, 1.0, 1e-9);
    EXPECT_FALSE(r.Clean);
  }
  {  // A part in the hole of another is clean; one across the hole's edge is not.
    const std::string holed =
        "{\"id\":\"frame\",\"outer\":" + Square(1, 1, 6) + ",\"holes\":[" + Square(2, 2, 4) + "]}";
    TCheckReport r = CheckText(Layout(sheet, {Square(3, 3, 1)}, holed));
    EXPECT_EQ(r.ContactPairs, 0);
    EXPECT_TRUE(r.ContainedParts.empty());
    EXPECT_TRUE(r.Clean);
    r = CheckText(Layout(sheet, {Square(5.5, 3, 1)}, holed));
    EXPECT_EQ(r.ContactPairs, 1);
    EXPECT_NEAR(r.OverlapAreaMax, 0.5, 1e-9);
    EXPECT_FALSE(r.Clean);
  }
  {  // Sticking out of the container by 1 (the limit is 1e-4 of the height, 10).
    const TCheckReport r = CheckText(Layout(sheet, {Square(9, 4, 2)}));
    EXPECT_EQ(r.OutsideParts, std::vector<int>{0});
    EXPECT_NEAR(r.MaxProtrusion, 1.0, 1e-12);
    EXPECT_FALSE(r.Clean);
    EXPECT_TRUE(CheckText(Layout(sheet, {Square(8, 4, 2 + 5e-4)})).Clean);
  }
  {  // An L-shaped sheet: a part over the notch sticks out by its overlap with the notch.
    const std::string ell = "[[0,0],[10,0],[10,5],[5,5],[5,10],[0,10]]";
    TCheckReport r = CheckText(Layout(ell, {Square(1, 1, 3), Square(4, 4, 3)}));
    EXPECT_EQ(r.OutsideParts, std::vector<int>{1});
    EXPECT_NEAR(r.MaxProtrusion, 2.0, 1e-9);
    r = CheckText(Layout(ell, {Square(6, 1, 3), Square(1, 6, 3)}));
    EXPECT_TRUE(r.Clean);
  }
  {  // The contact distance follows --tol.
    const std::string text = Layout(sheet, {Square(1, 1, 2), Square(3.0000005, 1, 2)});
    EXPECT_EQ(CheckText(text).ContactPairs, 1);
    TCheckOptions fine;
    fine.Tol = 1e-7;
    EXPECT_EQ(CheckText(text, fine).ContactPairs, 0);
  }
}

TEST(LayoutCheck, BadInputGetsOneLineAndExitCode2) {
  const std::string missing = "/nonexistent/layout.json";
  TRun r = RunTool("check " + missing);
  EXPECT_EQ(r.Code, 2);
  EXPECT_EQ(r.Err, "orvane: " + missing + ": no such file\n");

  struct TCase {
    const char* Name;
    std::string Text;
    const char* Says;
  };
  const std::vector<TCase> cases = {
      {"malformed.json", "{\"parts\": [", "malformed JSON"},
      {"short-ring.json", Layout(Square(0, 0, 9), {"[[0,0],[1,0],[0,0]]"}), "at least 3"},
      {"infinite.json", Layout(Square(0, 0, 9), {"[[0,0],[1e999,0],[0,1]]"}), "not finite"},
      {"unknown-shape.json",
       "{\"shapes\":[{\"part\":0,\"outer\":" + Square(0, 0, 1) +
           "}],\"placements\":[{\"part\":7,\"rotation_deg\":0,\"translation\":[0,0]}]}",
       "unknown shape 7"},
      {"not-a-layout.json", "[1, 2, 3]", "not a JSON object"},
  };
  for (const TCase& c : cases) {
    const std::string path = WriteTemp(c.Name, c.Text);
    r = RunTool("check " + path);
    EXPECT_EQ(r.Code, 2) << c.Name;
    EXPECT_EQ(r.Err.rfind("orvane: " + path + ": ", 0), 0u) << r.Err;
    EXPECT_NE(r.Err.find(c.Says), std::string::npos) << r.Err;
    EXPECT_EQ(std::count(r.Err.begin(), r.Err.end(), '\n'), 1) << r.Err;
    EXPECT_TRUE(r.Out.empty());
  }
  EXPECT_EQ(RunTool("check").Code, 2);
  EXPECT_EQ(RunTool("check " + WriteTemp("ok.json", Layout(Square(0, 0, 9), {Square(1, 1, 1)})) + " --tol -1").Code, 2);

  // A clean and a dirty layout through the command: exit codes 0 and 1, JSON keys present.
  r = RunTool("check --json " + WriteTemp("ok.json", Layout(Square(0, 0, 9), {Square(1, 1, 1)})));
  EXPECT_EQ(r.Code, 0);
  const nlohmann::json j = nlohmann::json::parse(r.Out);
  for (const char* key :
       {"parts", "candidate_pairs", "contact_pairs", "overlap_pairs", "overlap_area_total", "overlap_area_max",
        "overlap_max_relative_to_smaller_part", "contained_parts", "outside_container", "seconds"}) {
    EXPECT_TRUE(j.contains(key)) << key;
  }
  const std::string svg = (std::filesystem::temp_directory_path() / "orvane-tool-test" / "dirty.svg").string();
  r = RunTool("check " + WriteTemp("dirty.json", Layout(Square(0, 0, 9), {Square(1, 1, 2), Square(2, 2, 2)})) +
              " --svg " + svg);
  EXPECT_EQ(r.Code, 1);
  EXPECT_NE(r.Out.find("verdict: NOT clean"), std::string::npos);
  std::ifstream pic(svg);
  std::stringstream text;
  text << pic.rdbuf();
  EXPECT_NE(text.str().find("#e00000"), std::string::npos);  // the overlap drawn in red
}

TEST(LayoutCheck, PublishedLayoutsAgreeWithTheirStatedFigures) {
  const std::filesystem::path dir = std::filesystem::path(ORVANE_SHARED_DATA_DIR) / "layouts";
  if (!std::filesystem::exists(dir)) GTEST_SKIP() << "outside layout data not found at " << dir;
  int solutions = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.path().extension() != ".json") continue;
    for (const TLayout& layout : ReadLayoutFile(entry.path().string())) {
      ASSERT_TRUE(layout.Expected.has_value()) << layout.Name;
      const TExpectedChecks& want = *layout.Expected;
      const TCheckReport r = CheckLayout(layout, {});
      ++solutions;
      EXPECT_EQ(r.Clean, want.Clean) << layout.Name << ": relative overlap " << r.OverlapMaxRelative << " (stated "
                                     << want.OverlapMaxRelative << "), protrusion " << r.MaxProtrusion;
      if (!want.Clean) {
        EXPECT_NEAR(r.OverlapMaxRelative, want.OverlapMaxRelative, 0.01 * want.OverlapMaxRelative) << layout.Name;
        EXPECT_NEAR(r.MaxProtrusion, want.MaxProtrusion, 0.01 * want.MaxProtrusion) << layout.Name;
      }
    }
  }
  EXPECT_GE(solutions, 38);  // 21 sparrow records and 17 published solutions
}
