// The layout checker: hand-made layouts with hand-worked answers, bad input through the
// command itself, and every published layout against the figures its file states.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>

#include "Check.h"
#include "Layout.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/foundation/Rect2D.h"
#include "support/SharedData.h"

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
  // CTest runs the tests of this file side by side: each process has its own output files.
  const std::string tag = std::to_string(::getpid());
  const std::string out = dir + "/out-" + tag + ".txt";
  const std::string err = dir + "/err-" + tag + ".txt";
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

TEST(LayoutCheck, ContactIsADistanceAndOverlapsAreNeverMissed) {
  TCheckOptions tenth;
  tenth.Tol = 0.1;
  // 0.09 apart across a 45-degree edge (0.127 along x): a contact at 0.1.
  const double c = 0.09 * std::sqrt(2.0);
  const std::string slanted =
      "[[" + FloatToStr(10 + c) + ",0],[" + FloatToStr(10 + c) + ",10],[" + FloatToStr(c) + ",10]]";
  EXPECT_EQ(CheckText(Layout(Square(-1, -1, 30), {"[[0,0],[10,0],[0,10]]", slanted}), tenth).ContactPairs, 1);
  // Corners 0.127 apart: no contact at 0.1, one at 0.13.
  const std::string corners = Layout(Square(-1, -1, 30), {Square(0, 0, 1), Square(1.0898, 1.0898, 1)});
  EXPECT_EQ(CheckText(corners, tenth).ContactPairs, 0);
  TCheckOptions wider;
  wider.Tol = 0.13;
  EXPECT_EQ(CheckText(corners, wider).ContactPairs, 1);

  // Edges that climb in steps below the kernel's tolerance, and a larger --tol, must not
  // hide an overlap.
  TCheckOptions one;
  one.Tol = 1;
  TCheckReport r = CheckText(
      "{\"parts\":[{\"outer\":[[0,4],[0,4.5],[0,5],[0,5.5],[0,6],[-10,10]]},{\"outer\":[[-6,5],[5,3],[5,7]]}]}", one);
  EXPECT_EQ(r.ContactPairs, 1);
  EXPECT_NEAR(r.OverlapAreaMax, 2.7889, 1e-3);
  EXPECT_FALSE(r.Clean);
  r = CheckText(
      "{\"parts\":[{\"id\":\"O\",\"outer\":[[0,-10],[10,0],[9,6e-7],[-20,10]]},"
      "{\"id\":\"I\",\"outer\":[[1,-6e-7],[2,-6e-7],[2,0.9999994],[1,0.9999994]]}]}");
  EXPECT_EQ(r.ContactPairs, 0);
  EXPECT_EQ(r.ContainedParts, std::vector<int>{1});
  EXPECT_FALSE(r.Clean);
}

TEST(LayoutCheck, HelpAndVersion) {
  for (const char* args : {"--help", "-h", "help"}) {
    const TRun r = RunTool(args);
    EXPECT_EQ(r.Code, 0) << args;
    EXPECT_NE(r.Out.find("check LAYOUT.json"), std::string::npos) << args;
    EXPECT_TRUE(r.Err.empty()) << args;
  }
  for (const char* args : {"help check", "check --help", "check -h"}) {
    const TRun r = RunTool(args);
    EXPECT_EQ(r.Code, 0) << args;
    EXPECT_NE(r.Out.find("--max-protrusion"), std::string::npos) << args;
  }
  const TRun v = RunTool("--version");
  EXPECT_EQ(v.Code, 0);
  EXPECT_EQ(v.Out.rfind("orvane ", 0), 0u);
  for (const char* args : {"frob", "help frob", "check --frob x.json"}) {
    const TRun r = RunTool(args);
    EXPECT_EQ(r.Code, 2) << args;
    EXPECT_TRUE(r.Out.empty()) << args;
    EXPECT_EQ(std::count(r.Err.begin(), r.Err.end(), '\n'), 1) << args << ": " << r.Err;
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
      {"deep-id.json",
       "{\"parts\":[{\"id\":" + std::string(100000, '[') + std::string(100000, ']') + ",\"outer\":" + Square(0, 0, 1) +
           "}]}",
       "nested deeper"},
      {"no-solutions.json", "{\"shapes\":[],\"solutions\":[]}", "solutions is empty"},
      {"nul.json", std::string("{\"parts\":[]}") + '\0' + "garbage", "NUL byte"},
      {"out-of-range.json", Layout(Square(0, 0, 9), {"[[0,0],[1e14,0],[0,1]]"}), "coordinate range"},
      {"huge-rotated.json",
       "{\"shapes\":[{\"part\":0,\"outer\":[[0,0],[1e200,0],[0,1e200]]}],\"placements\":[{\"part\":0,"
       "\"rotation_deg\":45,\"translation\":[1e308,0]}]}",
       "coordinate range"},
      {"collinear.json", Layout(Square(0, 0, 9), {"[[0,0],[1,1],[3,3]]"}), "part 0 (id 0) outer ring has no area"},
      {"flat-container.json", Layout("[[0,0],[5,0],[9,0]]", {Square(1, 1, 1)}), "container has no area"},
      {"bow-tie.json", Layout(Square(0, 0, 9), {"[[0,0],[1,1],[1,0],[0,1]]"}), "crosses or touches itself"},
      {"hole-outside.json",
       Layout(Square(0, 0, 9), {},
              "{\"id\":\"f\",\"outer\":" + Square(1, 1, 2) + ",\"holes\":[" + Square(4, 4, 1) + "]}"),
       "part 0 (id f) hole 0 reaches outside"},
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
  // A whole number of turns as large as a double gets is still a rotation.
  r = RunTool("check " + WriteTemp("spun.json", "{\"shapes\":[{\"part\":0,\"outer\":" + Square(0, 0, 1) +
                                                    "}],\"placements\":[{\"part\":0,\"rotation_deg\":1e300}]}"));
  EXPECT_EQ(r.Code, 0) << r.Err;
  // Ids with control characters and bytes that are not UTF-8, and a file name that is not
  // UTF-8: the JSON report and the picture stay well-formed.
  const std::string odd =
      WriteTemp(std::string("odd\xff-name.json"), "{\"parts\":[{\"id\":\"a\\u0001b<&>\",\"outer\":" + Square(0, 0, 2) +
                                                      "},{\"id\":\"x\",\"outer\":" + Square(1, 1, 2) + "}]}");
  const std::string oddSvg = (std::filesystem::temp_directory_path() / "orvane-tool-test" / "odd.svg").string();
  r = RunTool("check --json '" + odd + "' --svg " + oddSvg);
  EXPECT_EQ(r.Code, 1) << r.Err;
  EXPECT_TRUE(nlohmann::json::accept(r.Out)) << r.Out;
  std::ifstream oddPic(oddSvg);
  std::stringstream oddText;
  oddText << oddPic.rdbuf();
  EXPECT_EQ(oddText.str().find('\x01'), std::string::npos);
  EXPECT_NE(oddText.str().find("a\xEF\xBF\xBD"
                               "b&lt;&amp;&gt;"),
            std::string::npos);
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
  const auto files = orvane::testing::DataFiles("layouts", ".json");
  if (files.empty()) GTEST_SKIP() << "outside layout data not found in " ORVANE_SHARED_DATA_DIR;
  int solutions = 0;
  for (const std::filesystem::path& file : files) {
    for (const TLayout& layout : ReadLayoutFile(file.string())) {
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

#if ORVANE_HAVE_GEOS
#include "support/Geos.h"

namespace {

// A part as a GEOS polygon with its holes.
GEOSGeometry* GeosPart(GEOSContextHandle_t H, const TLayoutPart& Part) {
  auto ring = [&](const TDynPoints2D& Pts) { return orvane::testing::GeosRing(H, Pts); };
  std::vector<GEOSGeometry*> holes;
  for (const TDynPoints2D& h : Part.Holes) holes.push_back(ring(h));
  return GEOSGeom_createPolygon_r(H, ring(Part.Outer), holes.data(), static_cast<unsigned>(holes.size()));
}

}  // namespace

// Contact at --tol T is "the boundaries come within T": the pairs found at each T are the
// pairs whose boundary distance, measured by GEOS, is at most T, so the counts never fall
// as T grows.
TEST(LayoutCheck, ContactsAtEveryTolAreThePairsGeosFindsWithinIt) {
  const auto files = orvane::testing::DataFiles("layouts", ".json");
  if (files.empty()) GTEST_SKIP() << "outside layout data not found in " ORVANE_SHARED_DATA_DIR;
  GEOSContextHandle_t h = GEOS_init_r();
  const std::vector<double> tols = {1e-6, 1e-4, 1e-2, 1.0};
  int solutions = 0, compared = 0;
  for (const std::filesystem::path& file : files) {
    for (const TLayout& layout : ReadLayoutFile(file.string())) {
      ++solutions;
      std::vector<GEOSGeometry*> boundary;
      for (const TLayoutPart& part : layout.Parts) {
        GEOSGeometry* poly = GeosPart(h, part);
        boundary.push_back(GEOSBoundary_r(h, poly));
        GEOSGeom_destroy_r(h, poly);
      }
      std::vector<TRect2D> boxes;
      for (const TLayoutPart& part : layout.Parts) boxes.push_back(CalcAABB(part.Outer));
      int lastContacts = -1, lastOverlaps = -1;
      std::map<std::pair<int, int>, double> distance;  // pairs whose boxes lie within the largest T
      for (std::size_t i = 0; i < boxes.size(); ++i) {
        for (std::size_t j = i + 1; j < boxes.size(); ++j) {
          if (boxes[i].RelationWithRect(boxes[j], tols.back()) == 0) continue;
          double d = 0.0;
          GEOSDistanceIndexed_r(h, boundary[i], boundary[j], &d);
          distance[{static_cast<int>(i), static_cast<int>(j)}] = d;
        }
      }
      for (double tol : tols) {
        TCheckOptions options;
        options.Tol = tol;
        const TCheckReport r = CheckLayout(layout, options);
        EXPECT_GE(r.ContactPairs, lastContacts) << layout.Name << " at " << tol;
        EXPECT_GE(r.PositiveOverlapPairs, lastOverlaps) << layout.Name << " at " << tol;
        lastContacts = r.ContactPairs;
        lastOverlaps = r.PositiveOverlapPairs;
        const std::set<std::pair<int, int>> ours(r.Contacts.begin(), r.Contacts.end());
        for (const auto& [pair, d] : distance) {
          // Distances this close to T are round-off either way.
          if (std::fabs(d - tol) <= 1e-9 + 1e-7 * tol) continue;
          ++compared;
          EXPECT_EQ(ours.count(pair) == 1, d <= tol) << layout.Name << ": parts " << pair.first << " and "
                                                     << pair.second << " lie " << d << " apart, --tol " << tol;
        }
      }
      for (GEOSGeometry* g : boundary) GEOSGeom_destroy_r(h, g);
    }
  }
  GEOS_finish_r(h);
  EXPECT_GE(solutions, 38);
  EXPECT_GT(compared, 1000);
}
#endif

// The bundled layout of parts with arcs, as the README shows it: the discs overlap, the
// picture draws the arcs as arcs; a bad bulge is one line and exit code 2.
TEST(LayoutCheck, BulgedExampleAndBadBulges) {
  const std::string svg = WriteTemp("bulged.svg", "");
  TRun r = RunTool("check " + std::string(ORVANE_SOURCE_DIR) + "/examples/bulged_parts.json --svg " + svg);
  EXPECT_EQ(r.Code, 1);
  EXPECT_NE(r.Out.find("pairs in contact: 3 "), std::string::npos) << r.Out;
  EXPECT_NE(r.Out.find("#3 x #4: area 0.654"), std::string::npos) << r.Out;
  std::ifstream in(svg);
  std::stringstream picture;
  picture << in.rdbuf();
  // A quarter circle of plate A's corner, and a half circle of disc D.
  EXPECT_NE(picture.str().find("L20 2 A2 2 0 0 1 22 4 "), std::string::npos);
  EXPECT_NE(picture.str().find("M44 20 A2 2 0 0 1 48 20 "), std::string::npos);
  const std::string bad = WriteTemp("bad-bulge.json", "{\"parts\":[{\"outer\":[[0,0],[1,0,1e9],[1,1]]}]}");
  r = RunTool("check " + bad);
  EXPECT_EQ(r.Code, 2);
  EXPECT_EQ(r.Err, "orvane: " + bad +
                       ": part 0 outer ring: point 1 has bulge 1e+09; a bulge lies within +-1e+06, "
                       "an arc of less than a full turn\n");
}
