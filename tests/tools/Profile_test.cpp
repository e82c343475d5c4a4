// The profile command: hand-made drawings with hand-worked answers, bad input through the
// command itself, and every drawing of the shared data against an ezdxf + shapely oracle.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "DxfDrawing.h"
#include "Profile.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Format.h"
#include "support/SharedData.h"

using namespace orvane;
using namespace orvane::tool;

namespace {

namespace fs = std::filesystem;

std::string Line(double X0, double Y0, double X1, double Y1) {
  return Format("0\nLINE\n8\n0\n10\n%.17g\n20\n%.17g\n11\n%.17g\n21\n%.17g\n", X0, Y0, X1, Y1);
}
std::string Circle(double X, double Y, double R) { return Format("0\nCIRCLE\n8\n0\n10\n%g\n20\n%g\n40\n%g\n", X, Y, R); }
std::string Rect(double X0, double Y0, double X1, double Y1) {
  return Line(X0, Y0, X1, Y0) + Line(X1, Y0, X1, Y1) + Line(X1, Y1, X0, Y1) + Line(X0, Y1, X0, Y0);
}
// A clamped single-span spline through the given control points and weights.
std::string Spline(const std::vector<TPoint2D>& P, const std::vector<double>& W = {}) {
  const int n = static_cast<int>(P.size());
  std::string s = Format("0\nSPLINE\n8\n0\n70\n%d\n71\n%d\n72\n%d\n73\n%d\n", W.empty() ? 8 : 12, n - 1, 2 * n, n);
  for (int k = 0; k < 2 * n; ++k) s += Format("40\n%d\n", k < n ? 0 : 1);
  for (const double w : W) s += Format("41\n%.17g\n", w);
  for (const TPoint2D& p : P) s += Format("10\n%.17g\n20\n%.17g\n", p.X, p.Y);
  return s;
}
std::string Dxf(const std::string& Entities) { return "0\nSECTION\n2\nENTITIES\n" + Entities + "0\nENDSEC\n0\nEOF\n"; }

TProfileResult Profile(const std::string& Entities, TProfileOptions Options = {}) {
  return ProfileDrawing(ReadDxfText(Dxf(Entities)), Options);
}

struct TRun {
  int Code = -1;
  std::string Out, Err;
};

TRun RunCommand(const std::string& Cmd) {
  const fs::path dir = fs::temp_directory_path() / ("orvane-profile-test-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const std::string out = (dir / "out.txt").string(), err = (dir / "err.txt").string();
  const int status = std::system((Cmd + " >" + out + " 2>" + err).c_str());
  TRun r;
  r.Code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::stringstream so, se;
  so << std::ifstream(out).rdbuf();
  se << std::ifstream(err).rdbuf();
  r.Out = so.str();
  r.Err = se.str();
  return r;
}

std::string Tool() { return std::string(ORVANE_BINARY_DIR) + "/tools/orvane profile "; }

std::string WriteTemp(const std::string& Name, const std::string& Text) {
  const fs::path p = fs::temp_directory_path() / ("orvane-profile-test-" + std::to_string(::getpid())) / Name;
  fs::create_directories(p.parent_path());
  std::ofstream(p, std::ios::binary) << Text;
  return p.string();
}

}  // namespace

TEST(Profile, SquareWithGapJoinsOnlyWithinTheTolerance) {
  // Four lines of a 10 x 10 square; the last stops 1e-3 short of the first.
  const std::string square = Line(0, 0, 10, 0) + Line(10, 10, 10, 0) + Line(10, 10, 0, 10) + Line(0, 10, 0, 1e-3);
  TProfileOptions wide;
  wide.JoinTol = 1e-2;
  const TProfileResult closed = Profile(square, wide);
  ASSERT_EQ(closed.Parts.size(), 1u);
  EXPECT_NEAR(closed.Parts[0].Area, 100.0, 1e-2);
  EXPECT_NEAR(closed.Contours[static_cast<std::size_t>(closed.Parts[0].Outline)].Length, 40.0 - 1e-3, 1e-12);
  EXPECT_TRUE(closed.Open.empty());
  EXPECT_EQ(closed.ExitCode(), 0);

  TProfileOptions narrow;
  narrow.JoinTol = 1e-4;
  const TProfileResult open = Profile(square, narrow);
  EXPECT_TRUE(open.Parts.empty());
  ASSERT_EQ(open.Open.size(), 1u);
  EXPECT_NEAR(open.Open[0].Gap, 1e-3, 1e-12);
  EXPECT_EQ(open.ExitCode(), 1);
}

TEST(Profile, PlateWithRoundHoleAndIslandInASlot) {
  // Plate 100 x 60, a hole of radius 10, a slot 40 x 20 holding an island 10 x 10.
  const TProfileResult r =
      Profile(Rect(0, 0, 100, 60) + Circle(25, 30, 10) + Rect(50, 20, 90, 40) + Rect(65, 25, 75, 35));
  ASSERT_EQ(r.Parts.size(), 2u);
  EXPECT_NEAR(r.Parts[0].Area, 6000.0 - M_PI * 100.0 - 800.0, 1e-9);
  EXPECT_EQ(r.Parts[0].Holes.size(), 2u);
  EXPECT_NEAR(r.Parts[1].Area, 100.0, 1e-9);
  EXPECT_TRUE(r.Parts[1].Holes.empty());
  const nlohmann::json j = ProfileToJson(r);
  EXPECT_EQ(j["parts"][0]["segments"]["circle"], 1);
  EXPECT_EQ(j["parts"][0]["segments"]["line"], 8);
  EXPECT_EQ(j["parts"][0]["holes"], 2);
}

TEST(Profile, SplinesThatAreArcsAndAnSFittedAtTwoTolerances) {
  // A rational quadratic quarter circle of radius 10 and the usual cubic quarter (k = 0.5523):
  // both recognised as arcs; the quarter closed by two radii is a sector of area 25 pi.
  const double w = std::sqrt(0.5), k = 0.5522847498 * 10;
  const TProfileResult arcs =
      Profile(Spline({{10, 0}, {10, 10}, {0, 10}}, {1, w, 1}) + Line(0, 10, 0, 0) + Line(0, 0, 10, 0) +
          Spline({{30, 0}, {30, k}, {20 + k, 10}, {20, 10}}) + Line(20, 10, 20, 0) + Line(20, 0, 30, 0));
  EXPECT_EQ(arcs.SplinesRead, 2);
  EXPECT_EQ(arcs.SplinesAsArcs, 2);
  ASSERT_EQ(arcs.Parts.size(), 2u);
  EXPECT_NEAR(arcs.Parts[0].Area, 25.0 * M_PI, 1e-9);
  EXPECT_LT(arcs.MaxDeviation, 3e-4 * 10);

  // An S: one cubic that turns both ways, fitted at two tolerances. Every sample of the cubic
  // must lie within the tolerance of the elements, measured here through the curves' own
  // nearest points.
  const std::vector<TPoint2D> s = {{0, 0}, {6, 8}, {4, -8}, {10, 0}};
  const TBezierSegment2D bez(s[0], s[1], s[2], s[3]);
  int previous = 0;
  for (const double tol : {1e-2, 1e-4}) {
    TProfileOptions o;
    o.ArcTol = tol;
    const TProfileResult r = Profile(Spline(s), o);
    EXPECT_EQ(r.CurvesFitted, 1);
    EXPECT_LE(r.MaxDeviation, tol);
    EXPECT_FALSE(r.FitBudgetSpent);
    EXPECT_EQ(r.ExitCode(), 1);  // the S is open
    ASSERT_EQ(r.Contours.size(), 1u);
    const auto& elems = r.Contours[0].Elements;
    EXPECT_GT(static_cast<int>(elems.size()), previous);
    previous = static_cast<int>(elems.size());
    double worst = 0.0;
    for (int i = 0; i <= 2000; ++i) {
      const TPoint2D p = bez.EvalPoint(i / 2000.0);
      double best = HUGE_VAL;
      for (const auto& e : elems) best = std::min(best, p.DistanceTo(e->GetClosedPointTo(p, DefTol)));
      worst = std::max(worst, best);
    }
    EXPECT_LE(worst, tol * 1.001);
    for (std::size_t i = 0; i + 1 < elems.size(); ++i)
      EXPECT_LT(elems[i]->GetEndPoint().DistanceTo(elems[i + 1]->GetStartPoint()), 1e-9);
  }
}

// Bulged outlines inserted at a scale of about 1e6, asked to hold 1e-2 at coordinates near 1e9:
// the fitting stops at the halvings allowed for the drawing and says so, rather than working
// for seconds.
TEST(Profile, AFitBeyondTheBudgetStopsAndSaysSo) {
  std::ifstream in(std::string(ORVANE_SOURCE_DIR) + "/fuzz/slow-profile/huge_coordinates_2.dxf", std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  TProfileOptions o;
  o.ArcTol = 1e-2;
  const TProfileResult r = ProfileDrawing(ReadDxfText(text.str()), o);
  EXPECT_TRUE(r.FitBudgetSpent);
  EXPECT_TRUE(r.Strayed);
  EXPECT_GT(r.MaxDeviation, o.ArcTol);
  EXPECT_EQ(r.ExitCode(), 1);
  EXPECT_LT(r.FitElements, 4 * (1 << 13));
  EXPECT_EQ(ProfileToJson(r)["splines"]["budget_spent"], true);
}

TEST(Profile, BadInputGivesExitTwoAndOneLine) {
  const std::string good = Line(0, 0, 1, 0);
  const std::string knots = "0\nSPLINE\n8\n0\n70\n8\n71\n3\n72\n3\n73\n4\n40\n0\n40\n0\n40\n1\n10\n0\n20\n0\n10\n1\n20\n1\n10\n2\n"
                            "20\n0\n10\n3\n20\n1\n";
  const std::pair<std::string, std::string> cases[] = {
      {"missing.dxf", ""},
      {"text.dxf", WriteTemp("text.dxf", "hello, this is no drawing\n")},
      {"truncated.dxf", WriteTemp("truncated.dxf", Dxf(good).substr(0, 40))},
      {"nan.dxf", WriteTemp("nan.dxf", Dxf(Line(0, 0, 1, 0).replace(Line(0, 0, 1, 0).find("10\n0"), 4, "10\nnan")))},
      {"block.dxf", WriteTemp("block.dxf", Dxf("0\nINSERT\n8\n0\n2\nNOSUCH\n10\n0\n20\n0\n"))},
      {"knots.dxf", WriteTemp("knots.dxf", Dxf(knots))},
  };
  for (const auto& [name, path] : cases) {
    const std::string file = path.empty() ? "/nonexistent/" + name : path;
    const TRun r = RunCommand(Tool() + file);
    EXPECT_EQ(r.Code, 2) << name << ": " << r.Err;
    EXPECT_EQ(r.Err.rfind("orvane profile: " + file + ": ", 0), 0u) << r.Err;
    EXPECT_EQ(std::count(r.Err.begin(), r.Err.end(), '\n'), 1) << r.Err;
  }
}

// Every drawing of the shared data against the ezdxf + shapely oracle: parts, holes and net
// areas, and our output DXF read back, audited and measured against the input.
TEST(Profile, SharedDrawingsAgainstTheOracle) {
  const auto drawings = orvane::testing::DataFiles("curves", ".dxf");
  if (drawings.empty()) GTEST_SKIP() << "no shared drawings in " ORVANE_SHARED_DATA_DIR;
  if (std::system("/usr/bin/python3 -c 'import ezdxf, shapely' >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "the oracle needs /usr/bin/python3 with ezdxf and shapely (scripts/install-deps)";
  const std::string oracle = std::string(ORVANE_SOURCE_DIR) + "/tests/tools/profile_oracle.py";
  int files = 0;
  for (const fs::path& drawing : drawings) {
    ++files;
    const std::string in = drawing.string();
    const std::string out = WriteTemp("profile-out.dxf", "");
    const TRun r = RunCommand(Tool() + in + " --json --dxf " + out);
    ASSERT_NE(r.Code, 2) << in << ": " << r.Err;
    const std::string json = WriteTemp("profile.json", r.Out);
    const TRun o = RunCommand("/usr/bin/python3 " + oracle + " " + in + " " + json + " " + out);
    EXPECT_EQ(o.Code, 0) << in << "\n" << o.Out << o.Err;
    if (drawing.filename().string().starts_with("laser4diy")) {
      const nlohmann::json j = nlohmann::json::parse(r.Out);
      EXPECT_EQ(j["splines"]["as_arcs"], j["splines"]["read"]) << in;
    }
  }
  EXPECT_GE(files, 13);
}
