// The DXF reader: hand-written drawings with hand-worked geometry, every refusal with its
// message, and the shared drawings against ezdxf (entity counts and curve lengths).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <numbers>
#include <sstream>
#include <string>

#include "DxfDrawing.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/splines/GeSpline2D.h"
#include "support/SharedData.h"

using namespace orvane;
using namespace orvane::tool;

namespace {

constexpr double kPi = std::numbers::pi;

// "0 LINE|10 0|..." as DXF text: pairs split at '|', code and value at the first space.
std::string Pairs(const std::string& S) {
  std::string out;
  std::istringstream in(S);
  for (std::string item; std::getline(in, item, '|');) {
    const auto sp = item.find(' ');
    out += item.substr(0, sp) + "\n" + item.substr(sp + 1) + "\n";
  }
  return out;
}
std::string Doc(const std::string& Entities, const std::string& Blocks = "") {
  std::string s = Pairs("0 SECTION|2 HEADER|9 $INSUNITS|70 4|0 ENDSEC");
  if (!Blocks.empty()) s += Pairs("0 SECTION|2 BLOCKS|" + Blocks + "|0 ENDSEC");
  return s + Pairs("0 SECTION|2 ENTITIES|" + Entities + "|0 ENDSEC|0 EOF");
}

void ExpectNear(const TPoint2D& A, const TPoint2D& B) {
  EXPECT_NEAR(A.X, B.X, 1e-12);
  EXPECT_NEAR(A.Y, B.Y, 1e-12);
}

}  // namespace

TEST(DxfReader, ReadsEntitiesWithTheirFrames) {
  const std::string text =
      Doc("0 LINE|8 Cut|10 0|20 0|11 3|21 4"
          // extrusion -Z: the arc about (1, 0) counter-clockwise in its frame is the arc about
          // (-1, 0) clockwise in the drawing
          "|0 ARC|10 1|20 0|40 2|50 0|51 90|230 -1"
          // a stadium: bottom edge, semicircle up, top edge, closing semicircle
          "|0 LWPOLYLINE|90 4|70 1|10 0|20 0|10 4|20 0|42 1|10 4|20 2|10 0|20 2|42 1"
          // a quarter of the unit circle as a rational quadratic
          "|0 SPLINE|70 12|71 2|72 6|73 3|40 0|40 0|40 0|40 1|40 1|40 1|10 1|20 0|41 1|10 1|20 1"
          "|41 0.70710678118654757|10 0|20 1|41 1"
          "|0 ELLIPSE|10 1|20 1|11 2|21 0|40 0.5|41 0|42 1.5707963267948966"
          "|0 ELLIPSE|10 1|20 1|11 2|21 0|40 0.5|41 0|42 1.5707963267948966|230 -1|0 TEXT|10 0|20 0|1 a"
          // a bulge of rounding noise is a straight segment
          "|0 LWPOLYLINE|90 2|10 0|20 0|42 1e-12|10 1|20 0");
  const TDxfDrawing d = ReadDxfText(text);
  ASSERT_EQ(d.Pieces.size(), 7u);
  EXPECT_EQ(d.UnitsName, "millimeters");
  EXPECT_EQ(d.Ignored.at("TEXT"), 1);
  EXPECT_EQ(d.Pieces[0].Layer, "Cut");
  EXPECT_DOUBLE_EQ(d.Pieces[0].Curve->GetCurveLength(), 5.0);

  const auto* arc = dynamic_cast<const TGeCircularArc2D*>(d.Pieces[1].Curve.get());
  ASSERT_NE(arc, nullptr);
  ExpectNear(arc->GetStartPoint(), TPoint2D(-3, 0));
  ExpectNear(arc->GetEndPoint(), TPoint2D(-1, 2));
  ExpectNear(arc->GetCenter(), TPoint2D(-1, 0));
  EXPECT_NEAR(arc->GetSweepAngle(), -kPi / 2, 1e-12);

  const TGeCurve2D& stadium = *d.Pieces[2].Curve;
  EXPECT_NE(dynamic_cast<const TGeCompositeCurve2D*>(&stadium), nullptr);
  EXPECT_NEAR(stadium.GetCurveLength(), 8 + 2 * kPi, 1e-12);
  ExpectNear(stadium.GetEndPoint(), TPoint2D(0, 0));
  const TGeInterval range = stadium.GetInterval();
  ExpectNear(stadium.EvalPoint((range.Lower + range.Upper) / 2), TPoint2D(4, 2));

  const TGeCurve2D& quarter = *d.Pieces[3].Curve;
  for (double t = 0; t <= 1; t += 0.125) EXPECT_NEAR(quarter.EvalPoint(t).DistanceTo(TPoint2D(0, 0)), 1.0, 1e-15);

  // (1, 1) + cos t (2, 0) + sin t (0, +-1): the extrusion turns the minor axis over
  ExpectNear(d.Pieces[4].Curve->GetEndPoint(), TPoint2D(1, 2));
  ExpectNear(d.Pieces[5].Curve->GetEndPoint(), TPoint2D(1, 0));
  ExpectNear(d.Pieces[5].Curve->GetStartPoint(), TPoint2D(3, 1));
  EXPECT_NE(dynamic_cast<const TGePolyline2D*>(d.Pieces[6].Curve.get()), nullptr);
}

TEST(DxfReader, ExpandsNestedMirroredAndStretchedInsertions) {
  const std::string blocks =
      "0 BLOCK|2 Inner|10 0|20 0|0 LINE|8 0|10 0|20 0|11 1|21 0|0 CIRCLE|8 0|10 0|20 0|40 1|0 ENDBLK"
      "|0 BLOCK|2 OUTER|10 0|20 0|0 INSERT|2 INNER|10 1|20 0|41 2|42 2|50 90|0 ENDBLK";
  // OUTER mirrored in x at (10, 10): its inner line (1, 0)-(1, 2) lands on (9, 10)-(9, 12);
  // INNER stretched 2:1 makes its circle an ellipse.
  const std::string text = Doc("0 INSERT|8 Parts|2 outer|10 10|20 10|41 -1|0 INSERT|8 Other|2 INNER|41 2", blocks);
  const TDxfDrawing d = ReadDxfText(text);
  ASSERT_EQ(d.Pieces.size(), 4u);
  EXPECT_EQ(d.Read.at("INSERT"), 3);
  EXPECT_EQ(d.Read.at("CIRCLE"), 2);
  ExpectNear(d.Pieces[0].Curve->GetStartPoint(), TPoint2D(9, 10));
  ExpectNear(d.Pieces[0].Curve->GetEndPoint(), TPoint2D(9, 12));
  EXPECT_EQ(d.Pieces[0].Layer, "Parts");
  const auto* circle = dynamic_cast<const TGeCircularArc2D*>(d.Pieces[1].Curve.get());
  ASSERT_NE(circle, nullptr);
  EXPECT_NEAR(circle->GetRadius(), 2.0, 1e-15);
  EXPECT_GT(circle->GetSweepAngle(), 0.0);  // mirrored, still counter-clockwise
  // The stretched unit circle: x^2 / 4 + y^2 = 1 all round.
  const TGeCurve2D& ellipse = *d.Pieces[3].Curve;
  EXPECT_NE(dynamic_cast<const TGeSpline2D*>(&ellipse), nullptr);
  const TGeInterval range = ellipse.GetInterval();
  for (int k = 0; k <= 16; ++k) {
    const TPoint2D p = ellipse.EvalPoint(range.Lower + (range.Upper - range.Lower) * k / 16);
    EXPECT_NEAR(p.X * p.X / 4 + p.Y * p.Y, 1.0, 1e-14);
  }

  // Layers: chosen without letter case; the rest counted as ignored.
  const TDxfDrawing only = ReadDxfText(text, {"other"});
  EXPECT_EQ(only.Pieces.size(), 2u);
  EXPECT_EQ(only.Ignored.at("INSERT"), 1);
}

TEST(DxfReader, RefusesBadInputWithOneLineMessages) {
  const auto message = [](const std::string& Text) {
    try {
      ReadDxfText(Text);
    } catch (const EDxfError& e) {
      return std::string(e.what());
    }
    return std::string("read without error");
  };
  const std::string good = Doc("0 LINE|10 0|20 0|11 1|21 1");
  const std::string spline = "0 SPLINE|71 2|10 0|20 0|10 1|20 1|10 2|20 0";
  const std::map<std::string, std::string> cases = {
      {"not a DXF file", "hello, world\n"},
      {"truncated", good.substr(0, good.size() - 12)},
      {"line 19: truncated: the group code has no value", good.substr(0, good.size() - 27)},
      {"line 20: the coordinate \"nan\" is not finite", Doc("0 LINE|10 0|20 nan|11 1|21 1")},
      {"line 20: the value \"x\" is not a number", Doc("0 LINE|10 0|20 x|11 1|21 1")},
      {"line 16: the entity type \"3187.74\" is not a name", Doc("0 3187.74|10 0")},
      {"line 16: INSERT of the missing block \"B\"", Doc("0 INSERT|2 B")},
      {"line 20: the block \"A\" inserts itself", Doc("0 INSERT|2 A", "0 BLOCK|2 A|0 INSERT|2 A|0 ENDBLK")},
      {"line 16: SPLINE: 5 knots where 3 control points of degree 2 need 6", Doc(spline + "|40 0|40 0|40 0|40 1|40 1")},
      {"line 42: block insertions expand to more than 5000000 values",
       Doc("0 INSERT|2 B|70 1000", "0 BLOCK|2 B|0 INSERT|2 A|70 1000|71 1000|0 ENDBLK|0 BLOCK|2 A|0 ENDBLK")},
      {"SPLINE: the knots decrease", Doc(spline + "|40 0|40 0|40 0|40 2|40 1|40 1")},
      {"SPLINE: a weight is not positive", Doc(spline + "|40 0|40 0|40 0|40 1|40 1|40 1|41 1|41 0|41 1")},
      {"SPLINE: degree 0 is not in 1..25", Doc("0 SPLINE|71 0|10 0|20 0|40 0|40 1")},
  };
  for (const auto& [expected, text] : cases) EXPECT_NE(message(text).find(expected), std::string::npos) << expected;
  try {
    ReadDxfFile("/nonexistent/drawing.dxf");
    ADD_FAILURE() << "a missing file was read";
  } catch (const EDxfError& e) {
    EXPECT_STREQ(e.what(), "cannot be read: No such file or directory");
  }
}

// Each shared drawing read as ezdxf reads it: the same entities by type (insertions
// expanded) and the same total length of lines, arcs, circles and polylines.
TEST(DxfReader, SharedDrawingsAgreeWithEzdxf) {
  const auto drawings = orvane::testing::DataFiles("curves", ".dxf");
  if (drawings.empty()) GTEST_SKIP() << "shared drawings not found in " ORVANE_SHARED_DATA_DIR;
  const char* script = R"(
import sys, math, ezdxf
def arc_len(a, b, bulge):
    c = math.dist(a, b)
    if bulge == 0: return c
    t = 4 * math.atan(abs(bulge))
    return c / (2 * math.sin(t / 2)) * t
def walk(ents, counts, acc):
    for e in ents:
        t = e.dxftype()
        if t not in ('LINE', 'ARC', 'CIRCLE', 'LWPOLYLINE', 'POLYLINE', 'SPLINE', 'ELLIPSE', 'INSERT'): continue
        counts[t] = counts.get(t, 0) + 1
        if t == 'INSERT': walk(e.virtual_entities(), counts, acc)
        elif t == 'LINE': acc[0] += math.dist(e.dxf.start.vec2, e.dxf.end.vec2)
        elif t == 'CIRCLE': acc[0] += 2 * math.pi * e.dxf.radius
        elif t == 'ARC':
            s = (e.dxf.end_angle - e.dxf.start_angle) % 360.0
            acc[0] += e.dxf.radius * math.radians(s if s > 0 else 360.0)
        elif t == 'LWPOLYLINE':
            p = list(e.get_points('xyb'))
            n = len(p) if e.closed else len(p) - 1
            acc[0] += sum(arc_len(p[i][:2], p[(i + 1) % len(p)][:2], p[i][2]) for i in range(n))
for path in sys.argv[1:]:
    counts, acc = {}, [0.0]
    walk(ezdxf.readfile(path).modelspace(), counts, acc)
    print(path, '%.17g' % acc[0], ' '.join('%s=%d' % kv for kv in sorted(counts.items())))
)";
  const std::filesystem::path scriptFile = std::filesystem::temp_directory_path() / "orvane_dxf_oracle.py";
  FILE* f = std::fopen(scriptFile.c_str(), "w");
  ASSERT_NE(f, nullptr);
  std::fputs(script, f);
  std::fclose(f);
  if (std::system("/usr/bin/python3 -c 'import ezdxf' 2>/dev/null") != 0)
    GTEST_SKIP() << "ezdxf is not installed for /usr/bin/python3";
  std::string command = "/usr/bin/python3 " + scriptFile.string();
  int files = 0;
  for (const std::filesystem::path& drawing : drawings) {
    command += " '" + drawing.string() + "'";
    ++files;
  }
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  for (char buf[4096]; std::fgets(buf, sizeof buf, pipe);) out += buf;
  ASSERT_EQ(pclose(pipe), 0) << "the ezdxf script failed";
  std::istringstream lines(out);
  int checked = 0;
  for (std::string line; std::getline(lines, line); ++checked) {
    std::istringstream in(line);
    std::string path;
    double length = 0;
    in >> path >> length;
    SCOPED_TRACE(path);
    const TDxfDrawing d = ReadDxfFile(path);
    std::string counts;
    for (const auto& [type, n] : d.Read) counts += (counts.empty() ? "" : " ") + type + "=" + std::to_string(n);
    std::string expected;
    std::getline(in >> std::ws, expected);
    EXPECT_EQ(counts, expected);
    double ours = 0;
    for (const TDxfPiece& p : d.Pieces)
      if (p.Entity != "SPLINE" && p.Entity != "ELLIPSE") ours += p.Curve->GetCurveLength();
    EXPECT_NEAR(ours, length, 1e-9 * length);
  }
  EXPECT_EQ(checked, files);
}
