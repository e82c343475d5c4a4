// The monotone polygons against GEOS on seeded random pairs and points: grid shapes that
// touch exactly, real part outlines placed against each other, and small outlines whose
// edges climb in steps below the tolerance. Also hand-made cases of such steps and the
// outlines' round trip through the chains, which need no GEOS.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/Monotone.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"

#if ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

TDynPoints2D Scaled(TDynPoints2D P, double K) {
  for (TPoint2D& p : P) p = p * K;
  return P;
}

// Every chain holds its vertices from bottom to top, which the walks and the point test
// take for granted.
bool ChainsClimb(const TMPolygon& Poly) {
  for (const TMChain* c : Poly) {
    const TDynPoints2D& v = c->Points();
    for (std::size_t k = 1; k < v.size(); ++k) {
      if (v[k].Y < v[k - 1].Y) return false;
    }
  }
  return true;
}

namespace fs = std::filesystem;

// The part outlines of the data, closed here where a file leaves the closing vertex out, and
// the words that name each; none when the data are absent.
void ReadOutlines(std::vector<TDynPoints2D>& Rings, std::vector<std::string>& Names) {
  for (const fs::path& file : testing::DataFiles("outlines", ".json")) {
    const nlohmann::json doc = testing::ReadJson(file);
    for (const nlohmann::json& part : doc["parts"]) {
      TDynPoints2D& ring = Rings.emplace_back(testing::JsonRing(part["outer"]));
      if (!ring.empty() && ring.front() != ring.back()) ring.push_back(ring.front());
      Names.push_back(file.filename().string() + " part " + std::to_string(part["id"].get<int>()));
    }
  }
}

// Every part outline comes back from its chains, with its area and its counter-clockwise
// travel.
TEST(MonotoneData, RealOutlines) {
  std::vector<TDynPoints2D> rings;
  std::vector<std::string> names;
  ReadOutlines(rings, names);
  if (rings.empty()) GTEST_SKIP() << "no part outlines in " << ORVANE_SHARED_DATA_DIR;
  EXPECT_GT(rings.size(), 500u);
  for (std::size_t k = 0; k < rings.size(); ++k) {
    const TMPolygon poly{TVPolyline2D(rings[k]), nullptr};
    ASSERT_TRUE(testing::SameCycle(poly.ToVPolyline2D()->ToTDynPoints2D(), rings[k])) << names[k];
    const double area = PolyArea(rings[k]);
    EXPECT_NEAR(poly.Area(), area, 1e-9 * area) << names[k];
    EXPECT_FALSE(poly.IsClockwise()) << names[k];
  }
}

TEST(MonotoneSteps, Reproducers) {
  {
    // A 1e-5 square whose right edge climbs in steps of 5e-7, and a triangle that pokes
    // through that edge.
    TDynPoints2D square{{-1e-5, 0.0}};
    TDynPoints2D edge;
    for (int k = 0; k <= 20; ++k) edge.emplace_back(0.0, 1e-5 * k / 20);
    square.insert(square.end(), edge.begin(), edge.end());
    square.emplace_back(-1e-5, 1e-5);
    square.push_back(square.front());
    const TMPolygon sq(TVPolyline2D(square), nullptr);
    EXPECT_TRUE(ChainsClimb(sq));
    // The steps climb: the edge is one climbing chain, not level pieces between others.
    EXPECT_EQ(sq.Count(), 2);
    if (sq.Count() == 2) {
      const TMChain* climbing = sq[0]->GetPositive() ? sq[0] : sq[1];
      EXPECT_TRUE(climbing->GetPositive());
      EXPECT_EQ(climbing->Points(), edge);
    }
    const TMPolygon tri(TVPolyline2D{{-3e-6, 5e-6}, {5e-6, 3e-6}, {5e-6, 7e-6}, {-3e-6, 5e-6}}, nullptr);
    EXPECT_TRUE(sq.TestOverlap(tri));
    EXPECT_TRUE(tri.TestOverlap(sq));
    // The + prints a wrong answer as a number.
    EXPECT_EQ(+sq.PointIsIn({-5e-6, 5e-6}), 1);
    EXPECT_EQ(+sq.PointIsIn({-3e-6, 5e-6}), 1);
    EXPECT_EQ(+sq.PointIsIn({3e-6, 5e-6}), 0);
    EXPECT_EQ(+sq.PointIsIn({0.0, 2.5e-7}), 2);
    EXPECT_EQ(+sq.PointIsIn({4e-7, 7.3e-6}), 2);
  }
  {
    // O climbs from (10, 0) to (9, 6e-7), a step below the tolerance; I lies inside O, far
    // from its boundary, with corners just below and level with that step's ends.
    const TDynPoints2D o{{0, -10}, {10, 0}, {9, 6e-7}, {-20, 10}, {0, -10}};
    const TDynPoints2D i{{1, -6e-7}, {2, -6e-7}, {2, 0.9999994}, {1, 0.9999994}, {1, -6e-7}};
    const TMPolygon po(TVPolyline2D(o), nullptr);
    const TMPolygon pi(TVPolyline2D(i), nullptr);
    EXPECT_TRUE(ChainsClimb(po));
    // One climbing chain from (0, -10) to (-20, 10), one falling back.
    EXPECT_EQ(po.Count(), 2);
    EXPECT_GT(testing::BoundaryDist(o, i, 10.0), 1.3);
    EXPECT_FALSE(po.TestOverlap(pi));
    EXPECT_FALSE(pi.TestOverlap(po));
    for (const TPoint2D& v : i) EXPECT_EQ(+po.PointIsIn(v), 1) << v.X << ", " << v.Y;
  }
  {
    // A circle of a million vertices, whose chains climb in steps down to 1e-11 near its
    // top and bottom, and a square that reaches 0.001 into it, then one 1e-5 clear of it.
    const int n = 1000000;
    TDynPoints2D circle;
    circle.reserve(n + 1);
    for (int k = 0; k < n; ++k) circle.emplace_back(std::cos(TwoPi * k / n), std::sin(TwoPi * k / n));
    circle.push_back(circle.front());
    const TMPolygon pc(TVPolyline2D(circle), nullptr);
    EXPECT_TRUE(ChainsClimb(pc));
    EXPECT_EQ(pc.Count(), 2);
    const TMPolygon in(TVPolyline2D(TRect2D(0.999, -0.25, 1.5, 0.25)), nullptr);
    EXPECT_TRUE(pc.TestOverlap(in));
    EXPECT_TRUE(in.TestOverlap(pc));
    const TMPolygon clear(TVPolyline2D(TRect2D(1.00001, -0.25, 1.50001, 0.25)), nullptr);
    EXPECT_FALSE(pc.TestOverlap(clear));
    EXPECT_FALSE(clear.TestOverlap(pc));
  }
  {
    // A point on a long, nearly level edge, which its own chain reaches only in its last
    // digits.
    const TMPolygon tri(TVPolyline2D{{10, 0}, {4500, 2}, {1640, 4222}, {10, 0}}, nullptr);
    EXPECT_EQ(+tri.PointIsIn({800.149302806577, 0.35195959946850053}), 2);
  }
  {
    // An edge of half-tolerance steps, crossed by a triangle of the same size.
    const TDynPoints2D outline = Scaled({{0, 4}, {0, 4.5}, {0, 5}, {0, 5.5}, {0, 6}, {-10, 10}, {0, 4}}, 1e-6);
    const TDynPoints2D triangle = Scaled({{-6, 5}, {5, 3}, {5, 7}, {-6, 5}}, 1e-6);
    const TMPolygon po(TVPolyline2D(outline), nullptr);
    const TMPolygon pt(TVPolyline2D(triangle), nullptr);
    EXPECT_TRUE(ChainsClimb(po));
    EXPECT_TRUE(po.TestOverlap(pt));
    EXPECT_TRUE(pt.TestOverlap(po));
  }
}

#if ORVANE_HAVE_GEOS

// Boundaries or a point within MustMeet of a boundary are in contact for the kernel; beyond
// MustMiss they are apart. Between the two, round-off on either side may decide.
constexpr double MustMeet = 0.9e-6;
constexpr double MustMiss = 2e-6;

std::string Num(double V) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.17g", V);
  return buf;
}

std::string Pt(const TPoint2D& P) { return "(" + Num(P.X) + ", " + Num(P.Y) + ")"; }

// The ring as WKT when it is short enough to read; the seed reproduces longer ones.
std::string Show(const TDynPoints2D& Ring) {
  if (Ring.size() > 80) return std::to_string(Ring.size() - 1) + " vertices";
  std::string s = "POLYGON((";
  for (std::size_t k = 0; k < Ring.size(); ++k) s += (k ? ", " : "") + Num(Ring[k].X) + " " + Num(Ring[k].Y);
  return s + "))";
}

// One GEOS context for one test.
struct TGeos {
  GEOSContextHandle_t H = GEOS_init_r();
  TGeos() = default;
  TGeos(const TGeos&) = delete;
  ~TGeos() { GEOS_finish_r(H); }
  GEOSContextHandle_t Handle() const { return H; }
  // A closed ring, owned by the caller.
  GEOSGeometry* Ring(const TDynPoints2D& P) const { return testing::GeosRing(H, P); }
};

// Frees a geometry or a prepared geometry of one context.
struct TGeosFree {
  GEOSContextHandle_t H;
  void operator()(GEOSGeometry* G) const { GEOSGeom_destroy_r(H, G); }
  void operator()(const GEOSPreparedGeometry* P) const { GEOSPreparedGeom_destroy_r(H, P); }
};
using TGeom = std::unique_ptr<GEOSGeometry, TGeosFree>;
using TPrepared = std::unique_ptr<const GEOSPreparedGeometry, TGeosFree>;

// One outline under test: the kernel's polygon, and GEOS's ring and polygon of the same
// vertices, prepared for many questions.
class TSubject {
 public:
  TSubject(const TGeos& G, TDynPoints2D ARing, std::string ALabel)
      : Ring(std::move(ARing)),
        Label(std::move(ALabel)),
        Poly(TVPolyline2D(Ring), nullptr),
        FG(G),
        FRing(G.Ring(Ring), {G.Handle()}),
        FArea(GEOSGeom_createPolygon_r(G.Handle(), G.Ring(Ring), nullptr, 0), {G.Handle()}),
        FPrepRing(GEOSPrepare_r(G.Handle(), FRing.get()), {G.Handle()}),
        FPrepArea(GEOSPrepare_r(G.Handle(), FArea.get()), {G.Handle()}) {}

  // A simple ring, the only kind whose inside GEOS and the kernel define alike.
  bool Valid() const { return GEOSisValid_r(FG.Handle(), FArea.get()) == 1; }
  // The distance between this boundary and the ring Other; NaN when GEOS fails.
  double Distance(const GEOSGeometry* Other) const {
    double d = 0.0;
    return GEOSPreparedDistance_r(FG.Handle(), FPrepRing.get(), Other, &d) == 1 ? d : std::nan("");
  }
  // The distance from P to the boundary, and whether the polygon holds P (asked only
  // beyond MustMiss, where that is unambiguous). False when GEOS fails.
  bool Probe(const TPoint2D& P, double& Dist, bool& Inside) const {
    const TGeom pt(GEOSGeom_createPointFromXY_r(FG.Handle(), P.X, P.Y), {FG.Handle()});
    if (GEOSPreparedDistance_r(FG.Handle(), FPrepRing.get(), pt.get(), &Dist) != 1) return false;
    Inside = false;
    if (Dist < MustMiss) return true;
    const char in = GEOSPreparedContains_r(FG.Handle(), FPrepArea.get(), pt.get());
    Inside = in == 1;
    return in != 2;
  }
  std::string Describe() const { return Label + " " + Show(Ring); }

  const TDynPoints2D Ring;
  const std::string Label;
  const TMPolygon Poly;

 private:
  const TGeos& FG;
  TGeom FRing;
  TGeom FArea;
  TPrepared FPrepRing;
  TPrepared FPrepArea;
};

// The count of one kind of disagreement and the first few cases, to reproduce them. Case
// is asked for its text only for those.
struct TFaults {
  long Count = 0;
  std::string First;
  template <class F>
  void Add(F&& Case) {
    if (Count++ < 4) First += "\n  " + Case();
  }
};

// What one family covered, and what went wrong.
struct TTally {
  long Pairs = 0, Touching = 0, Near = 0, Apart = 0;
  long OnEdge = 0;
  TFaults Missed, Phantom, WrongPoint, Chains, Geos, Copies;

  void Expect(const char* Family) const {
    EXPECT_EQ(0, Missed.Count) << Family << ": boundaries within " << MustMeet << " with no contact found"
                               << Missed.First;
    EXPECT_EQ(0, Phantom.Count) << Family << ": contact found between boundaries more than " << MustMiss << " apart"
                                << Phantom.First;
    EXPECT_EQ(0, WrongPoint.Count) << Family << ": PointIsIn against GEOS" << WrongPoint.First;
    EXPECT_EQ(0, Chains.Count) << Family << ": a chain that does not climb" << Chains.First;
    EXPECT_EQ(0, Geos.Count) << Family << ": GEOS failed" << Geos.First;
    EXPECT_EQ(0, Copies.Count) << Family << ": a copy, a moved polygon or a changed list answers otherwise"
                               << Copies.First;
  }
};

void CheckPoint(const TSubject& A, const TPoint2D& P, TTally& T) {
  double d = 0.0;
  bool inside = false;
  if (!A.Probe(P, d, inside)) {
    T.Geos.Add([&] { return "point " + Pt(P) + " against " + A.Describe(); });
    return;
  }
  const int got = A.Poly.PointIsIn(P);
  int want = -1;
  if (d <= MustMeet) {
    ++T.OnEdge;
    want = 2;
  } else if (d >= MustMiss) {
    want = inside ? 1 : 0;
  }
  if (want >= 0 && got != want) {
    T.WrongPoint.Add([&] {
      return "PointIsIn" + Pt(P) + " = " + std::to_string(got) + ", GEOS distance " + Num(d) +
             (d >= MustMiss ? (inside ? ", inside" : ", outside") : "") + ", of " + A.Describe();
    });
  }
}

// Points around a ring: on random spots of edges and off them across the edge by 1e-7,
// 5e-7 and 3e-6 either way, at vertices and beside them, and spread over the box.
std::vector<TPoint2D> ProbePoints(const TDynPoints2D& R, std::mt19937& Rng, int Edges, int Vertices, int Spread) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const int n = static_cast<int>(R.size()) - 1;
  std::uniform_int_distribution<int> any(0, n - 1);
  std::vector<TPoint2D> pts;
  for (int e = 0; e < Edges; ++e) {
    const int k = Edges >= n ? e % n : any(Rng);
    const TPoint2D d = R[static_cast<std::size_t>(k) + 1] - R[static_cast<std::size_t>(k)];
    const double len = d.Mag();
    if (len == 0.0) continue;
    const TPoint2D on = R[static_cast<std::size_t>(k)] + d * unit(Rng);
    const TPoint2D normal = d.RotateCcw90() / len;
    pts.push_back(on);
    for (const double off : {1e-7, 5e-7, 3e-6}) {
      pts.push_back(on + normal * off);
      pts.push_back(on - normal * off);
    }
  }
  for (int v = 0; v < Vertices; ++v) {
    const TPoint2D& at = R[static_cast<std::size_t>(Vertices >= n ? v % n : any(Rng))];
    pts.push_back(at);
    for (const double off : {1e-7, 5e-7, 3e-6}) {
      const double a = TwoPi * unit(Rng);
      pts.push_back(at + TPoint2D(std::cos(a), std::sin(a)) * off);
    }
  }
  TRect2D box;
  box.SetByPointsExt(R);
  const double margin = 0.1 * std::max(box.Width(), box.Height());
  box = box.InflatedRect(margin, margin);
  for (int s = 0; s < Spread; ++s)
    pts.emplace_back(box.XMin + unit(Rng) * box.Width(), box.YMin + unit(Rng) * box.Height());
  return pts;
}

// One pair: TestOverlap both ways against the GEOS distance of the boundaries, and
// PointIsIn of Probes (vertices of B) in A against GEOS.
void CheckPair(const TGeos& G, const TSubject& A, const TDynPoints2D& B, const std::string& BLabel,
               const TDynPoints2D& Probes, TTally& T, const TMPolygon* Moved = nullptr) {
  const TMPolygon own(TVPolyline2D(Moved ? TDynPoints2D() : B), nullptr);
  // Moved, when given, is B made elsewhere and moved here by Translate, stretches and all.
  const TMPolygon& pb = Moved ? *Moved : own;
  if (!(pb.BoundBox() == CalcAABB(B))) T.Copies.Add([&] { return "the box of " + BLabel; });
  if (!ChainsClimb(pb)) T.Chains.Add([&] { return BLabel + " " + Show(B); });
  const TGeom gb(G.Ring(B), {G.Handle()});
  const double d = A.Distance(gb.get());
  if (!(d >= 0.0)) {
    T.Geos.Add([&] { return "distance of " + A.Describe() + " to " + BLabel + " " + Show(B); });
    return;
  }
  ++T.Pairs;
  const bool ab = A.Poly.TestOverlap(pb);
  const bool ba = pb.TestOverlap(A.Poly);
  auto describe = [&] {
    return "GEOS distance " + Num(d) + ", A.TestOverlap(B) = " + std::to_string(ab) +
           ", B.TestOverlap(A) = " + std::to_string(ba) + "; A = " + A.Describe() + "; B = " + BLabel + " " + Show(B);
  };
  if (d <= MustMeet) {
    ++(d == 0.0 ? T.Touching : T.Near);
    if (!ab || !ba) T.Missed.Add(describe);
  } else if (d > MustMiss) {
    ++T.Apart;
    if (ab || ba) T.Phantom.Add(describe);
  }
  // A copy keeps the stretches that spare walks; a polygon whose list changed has lost them
  // and walks every pair of chains whose boxes meet. Both answer alike.
  auto plain = pb.CloneAs<TMPolygon>();
  plain->Add(plain->Extract(plain->Last()));
  if (pb.CloneAs<TMPolygon>()->TestOverlap(A.Poly) != ba || plain->TestOverlap(A.Poly) != ba ||
      A.Poly.TestOverlap(*plain) != ab)
    T.Copies.Add(describe);
  for (const TPoint2D& p : Probes) CheckPoint(A, p, T);
}

// Turns the ring by Angle about the origin, or by exact quarter turns when Quarters is set.
void Turn(TDynPoints2D& P, double Angle, int Quarters = -1) {
  double c = std::cos(Angle), s = std::sin(Angle);
  if (Quarters >= 0) {
    static constexpr double Cos[] = {1, 0, -1, 0};
    c = Cos[Quarters % 4];
    s = Cos[(Quarters + 3) % 4];
  }
  for (TPoint2D& p : P) p = TPoint2D(c * p.X - s * p.Y, s * p.X + c * p.Y);
}

TDynPoints2D Turned(TDynPoints2D P, double Angle) {
  Turn(P, Angle);
  return P;
}

// Same outline, random start vertex, and reversed half of the time: the seam and the
// direction of travel must not matter.
TDynPoints2D Shuffled(const TDynPoints2D& P, std::mt19937& Rng) {
  const std::size_t n = P.size() - 1;
  const std::size_t start = std::uniform_int_distribution<std::size_t>(0, n - 1)(Rng);
  const std::size_t step = Rng() % 2 ? 1 : n - 1;
  TDynPoints2D q(n + 1);
  for (std::size_t k = 0; k < n; ++k) q[k] = P[(start + k * step) % n];
  q[n] = q[0];
  return q;
}

// How B is put against A.
enum class TPlacement {
  // A random vertex of B on a random spot of A's boundary, moved in a random direction.
  AnyVertex,
  // The vertex of B that reaches farthest toward A, set on a random spot of an edge of A
  // from outside: a corner against a side.
  CornerOnSide,
  // An edge of B laid along an edge of A, from outside: side against side.
  SideOnSide,
};

// B (counter-clockwise) placed against A (counter-clockwise) at random, then moved by Gap
// away from A (negative: into A). B is turned first, by Quarters exact quarter turns or
// else by Angle, unless SideOnSide sets the angle. Returns the index of the vertex of B at
// the spot, for the point probes.
int Place(const TDynPoints2D& A, TDynPoints2D& B, std::mt19937& Rng, double Gap, TPlacement How, double Angle,
          int Quarters, std::string& Label) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const std::size_t na = A.size() - 1;
  const std::size_t nb = B.size() - 1;
  const std::size_t ea = std::uniform_int_distribution<std::size_t>(0, na - 1)(Rng);
  std::size_t eb = std::uniform_int_distribution<std::size_t>(0, nb - 1)(Rng);
  const TPoint2D da = A[ea + 1] - A[ea];
  const TPoint2D spot = A[ea] + da * unit(Rng);
  if (How == TPlacement::SideOnSide) {
    Angle = da.Angle() + Pi - (B[eb + 1] - B[eb]).Angle();
    Quarters = -1;
  }
  Turn(B, Angle, Quarters);
  const double la = da.Mag();
  // The outside of a counter-clockwise ring lies right of its edges.
  TPoint2D away = la > 0.0 ? da.RotateCw90() / la : TPoint2D(1.0, 0.0);
  TPoint2D anchor = B[eb];
  switch (How) {
    case TPlacement::AnyVertex: {
      const double a = TwoPi * unit(Rng);
      away = TPoint2D(std::cos(a), std::sin(a));
      break;
    }
    case TPlacement::CornerOnSide:
      for (std::size_t k = 0; k < nb; ++k) {
        if (B[k].DotMul(away) < B[eb].DotMul(away)) eb = k;
      }
      anchor = B[eb];
      break;
    case TPlacement::SideOnSide: anchor = B[eb] + (B[eb + 1] - B[eb]) * unit(Rng); break;
  }
  const TPoint2D move = spot - anchor + away * Gap;
  for (TPoint2D& p : B) p += move;
  static constexpr const char* Names[] = {"any vertex ", "corner ", "side "};
  Label = Names[static_cast<int>(How)] + std::to_string(eb) + ", turned by " +
          (Quarters >= 0 ? std::to_string(Quarters) + " quarter turns" : Num(Angle) + " rad") + ", moved by " +
          Pt(move);
  return static_cast<int>(eb);
}

// A gap of either sign near the tolerance, or none.
double NearGap(std::mt19937& Rng) {
  static constexpr double Gaps[] = {0.0,    0.0,    1e-7, 3e-7, 5e-7, 8e-7,  1e-6, 1.3e-6,
                                    1.8e-6, 2.5e-6, 3e-6, 4e-6, 1e-5, -5e-7, -3e-6};
  return Gaps[std::uniform_int_distribution<std::size_t>(0, std::size(Gaps) - 1)(Rng)];
}

// The vertices of the closed ring B within Reach of vertex Index, and a few others.
TDynPoints2D AroundVertex(const TDynPoints2D& B, int Index, int Reach, int Others, std::mt19937& Rng) {
  const int n = static_cast<int>(B.size()) - 1;
  TDynPoints2D probes;
  for (int k = -Reach; k <= Reach; ++k) probes.push_back(B[static_cast<std::size_t>(((Index + k) % n + n) % n)]);
  for (int k = 0; k < Others; ++k)
    probes.push_back(B[std::uniform_int_distribution<std::size_t>(0, B.size() - 2)(Rng)]);
  return probes;
}

// Grid shapes on whole numbers at whole offsets: vertices on the other's edges, collinear
// and overlapping level and vertical edges, corners on corners. Half of the offsets carry
// a nudge near the tolerance, along an axis or a diagonal. The partner is made at its own
// place and moved there by Translate.
TEST(MonotoneGeos, GridShapes) {
  const TGeos geos;
  TTally tally;
  std::mt19937 rng(20251);
  std::uniform_int_distribution<int> bars(2, 4);
  auto shape = [&](int Kind) {
    switch (Kind % 3) {
      case 0: return testing::GridRing(rng, 8, 4);
      case 1: return testing::Histogram(rng, bars(rng), 0.0, 0.0);
      default: return testing::GridRing(rng, 6, 6);
    }
  };
  static constexpr double Nudges[] = {2e-7, 6e-7, 8.5e-7, 1.5e-6, 2.5e-6, 5e-6};
  for (int s = 0; s < 300; ++s) {
    const TSubject a(geos, Shuffled(shape(s), rng), "grid shape " + std::to_string(s));
    ASSERT_TRUE(a.Valid()) << a.Describe();
    if (!ChainsClimb(a.Poly)) tally.Chains.Add([&] { return a.Describe(); });
    // The lattice and half-lattice points over the box hit vertices and level and vertical
    // edges exactly.
    const TRect2D box = a.Poly.BoundBox();
    for (double x = box.XMin - 1; x <= box.XMax + 1; x += 0.5)
      for (double y = box.YMin - 1; y <= box.YMax + 1; y += 0.5) CheckPoint(a, {x, y}, tally);
    for (const TPoint2D& p : ProbePoints(a.Ring, rng, 12, 12, 20)) CheckPoint(a, p, tally);

    for (int partner = 0; partner < 3; ++partner) {
      // The first partner is the shape itself, from another seam: at offset 0 every edge
      // lies on its twin.
      const TDynPoints2D b0 = Shuffled(partner == 0 ? a.Ring : shape(s + partner), rng);
      TRect2D bb;
      bb.SetByPointsExt(b0);
      for (int dx = static_cast<int>(box.XMin - bb.XMax); dx <= static_cast<int>(box.XMax - bb.XMin); ++dx) {
        for (int dy = static_cast<int>(box.YMin - bb.YMax); dy <= static_cast<int>(box.YMax - bb.YMin); ++dy) {
          TPoint2D move(dx, dy);
          if (rng() % 2 == 0) {
            const double off = Nudges[rng() % std::size(Nudges)];
            const int dir = static_cast<int>(rng() % 8);
            move += TPoint2D(std::cos(dir * Pi / 4), std::sin(dir * Pi / 4)) * off;
          }
          const TDynPoints2D b = testing::Moved(b0, move);
          TMPolygon pb(TVPolyline2D(b0), nullptr);
          pb.Translate(move);
          CheckPair(geos, a, b, "grid shape moved by " + Pt(move), TDynPoints2D(b.begin(), b.end() - 1), tally, &pb);
        }
      }
    }
  }
  tally.Expect("grid shapes");
  EXPECT_GT(tally.Pairs, 50000);
  EXPECT_GT(tally.Touching, 10000);
  EXPECT_GT(tally.Near, 1000);
  EXPECT_GT(tally.OnEdge, 50000);
}

// Part outlines of the nesting benchmarks, each with thirty others placed against it (see
// TPlacement) at gaps near the tolerance, turned by exact quarter turns, by any angle, or by
// quarter turns and a tilt of 1e-9 to 1e-6 rad, as half of the outlines themselves are.
TEST(MonotoneGeos, RealOutlines) {
  std::vector<TDynPoints2D> rings;
  std::vector<std::string> names;
  ReadOutlines(rings, names);
  if (rings.empty()) GTEST_SKIP() << "no part outlines in " << ORVANE_SHARED_DATA_DIR;
  ASSERT_GT(rings.size(), 800u);

  const TGeos geos;
  TTally tally;
  std::mt19937 rng(7177);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::uniform_int_distribution<std::size_t> pick(0, rings.size() - 1);
  // Level and upright edges tilted by so little that they climb in steps far below the
  // tolerance over their whole length.
  auto tiny = [&] { return (rng() % 2 ? 1.0 : -1.0) * std::pow(10.0, -9.0 + 3.0 * unit(rng)); };
  for (std::size_t s = 0; s < rings.size(); ++s) {
    const double tilt = s % 2 ? tiny() : 0.0;
    const TSubject a(geos, Turned(rings[s], tilt), names[s] + " turned by " + Num(tilt) + " rad");
    ASSERT_TRUE(a.Valid()) << a.Label;
    if (!ChainsClimb(a.Poly)) tally.Chains.Add([&] { return a.Describe(); });
    const int n = static_cast<int>(a.Ring.size()) - 1;
    for (const TPoint2D& p : ProbePoints(a.Ring, rng, std::min(n, 60), std::min(n, 20), 20)) CheckPoint(a, p, tally);
    for (int partner = 0; partner < 30; ++partner) {
      const std::size_t other = pick(rng);
      TDynPoints2D b = rings[other];
      std::string how;
      // Any angle, a quarter turn and a tiny tilt, or exact quarter turns.
      const int quarter = static_cast<int>(rng() % 4);
      const double angle = partner % 4 == 0 ? TwoPi * unit(rng) : quarter * Pi / 2 + tiny();
      const int at = Place(a.Ring, b, rng, NearGap(rng), static_cast<TPlacement>(partner % 3), angle,
                           partner % 4 < 2 ? -1 : quarter, how);
      CheckPair(geos, a, b, names[other] + " " + how, AroundVertex(b, at, 2, 3, rng), tally);
    }
  }
  tally.Expect("real outlines");
  EXPECT_GT(tally.Pairs, 20000);
  EXPECT_GT(tally.Touching, 2000);
  EXPECT_GT(tally.Near, 2000);
  EXPECT_GT(tally.Apart, 2000);
}

// A star of 10^4 corners has thousands of chains, so its point test runs on the index of
// chains by height: against GEOS near and away from the edges, at vertex heights, and again
// after the polygon has been moved and after its chains have been replaced, which must not
// leave the index of the old chains behind.
TEST(MonotoneGeos, PointIsInOnManyChains) {
  const TGeos geos;
  TTally tally;
  std::mt19937 rng(1515);
  const TSubject a(geos, testing::Star(rng, 10000), "star of 10^4 corners");
  ASSERT_TRUE(a.Valid());
  ASSERT_GT(a.Poly.Count(), 1000);
  std::vector<TPoint2D> probes = ProbePoints(a.Ring, rng, 3000, 500, 3000);
  // At the exact height of vertices, where chains begin and end.
  std::uniform_real_distribution<double> across(-11.0, 11.0);
  for (std::size_t k = 0; k < a.Ring.size(); k += 13) probes.emplace_back(across(rng), a.Ring[k].Y);
  for (const TPoint2D& p : probes) CheckPoint(a, p, tally);
  tally.Expect("star of 10^4 corners");

  // The clear answers, to ask again of changed polygons.
  std::vector<std::pair<TPoint2D, std::uint8_t>> clear;
  for (const TPoint2D& p : probes) {
    double d = 0.0;
    bool inside = false;
    if (a.Probe(p, d, inside) && d >= MustMiss) clear.emplace_back(p, inside ? 1 : 0);
  }
  ASSERT_GT(clear.size(), 3000u);
  TMPolygon moved(TVPolyline2D(a.Ring), nullptr);
  EXPECT_EQ(moved.PointIsIn(clear.front().first), clear.front().second);
  const TPoint2D shift(3.5, -2.25);
  moved.Translate(shift);
  TMPolygon replaced(TVPolyline2D(testing::Star(rng, 5000, {40, 40})), nullptr);
  EXPECT_EQ(replaced.PointIsIn({40, 40}), 1);
  replaced.Clear();
  for (const TMChain* c : a.Poly) replaced.Add(static_cast<const IVGeometry2D&>(*c).CloneAs<TMChain>());
  for (const auto& [p, want] : clear) {
    ASSERT_EQ(moved.PointIsIn(p + shift), want) << Pt(p) << " moved by " << Pt(shift);
    ASSERT_EQ(replaced.PointIsIn(p), want) << Pt(p) << " after the chains were replaced";
  }
}

// The ring with every edge cut into pieces whose extent in x and in y is at most a step
// drawn per edge from [MinStep, MaxStep]: steep edges climb in steps of about that size.
// Jitter moves the new vertices by up to that much in x and y, so that runs wobble and
// their chains are cut at every turn of the wobble.
TDynPoints2D Subdivided(const TDynPoints2D& P, std::mt19937& Rng, double MinStep, double MaxStep, double Jitter) {
  std::uniform_real_distribution<double> step(MinStep, MaxStep);
  std::uniform_real_distribution<double> wobble(-Jitter, Jitter);
  TDynPoints2D q;
  for (std::size_t k = 0; k + 1 < P.size(); ++k) {
    const TPoint2D d = P[k + 1] - P[k];
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::max(std::fabs(d.X), std::fabs(d.Y)) / step(Rng))));
    q.push_back(P[k]);
    for (int i = 1; i < pieces; ++i) {
      TPoint2D v = P[k] + d * (static_cast<double>(i) / pieces);
      if (Jitter > 0.0) v += TPoint2D(wobble(Rng), wobble(Rng));
      q.push_back(v);
    }
  }
  q.push_back(q.front());
  return q;
}

// A small counter-clockwise outline, about the origin, whose edges climb in steps below the
// tolerance, and the words that tell what it is.
TDynPoints2D TinyShape(std::mt19937& Rng, int Kind, std::string& Label) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto in = [&](double Lo, double Hi) { return Lo + (Hi - Lo) * unit(Rng); };
  // A tenth of the outlines wobble by 1e-7 about their straight edges.
  const double jitter = Rng() % 10 == 0 ? 1e-7 : 0.0;
  Label = jitter > 0.0 ? "wobbling " : "";
  switch (Kind % 6) {
    case 0: {
      // A square of side 1e-5 and more, level or slightly tilted, a vertex every 5e-7.
      const double side = in(1e-5, 4e-5);
      const double tilt = Rng() % 2 ? in(-0.05, 0.05) : 0.0;
      Label += "square " + Num(side) + " tilted " + Num(tilt);
      const TDynPoints2D sq{{0, 0}, {side, 0}, {side, side}, {0, side}, {0, 0}};
      return Subdivided(Turned(sq, tilt), Rng, 5e-7, 5e-7, jitter);
    }
    case 1: {
      const double r = in(3e-5, 1e-4);
      const int n = static_cast<int>(std::ceil(TwoPi * r / in(2e-7, 9e-7)));
      const double start = TwoPi * unit(Rng);
      Label = "circle of radius " + Num(r) + " with " + std::to_string(n) + " vertices";
      TDynPoints2D c;
      for (int k = 0; k < n; ++k) {
        const double a = start + TwoPi * k / n;
        c.emplace_back(r * std::cos(a), r * std::sin(a));
      }
      c.push_back(c.front());
      return c;
    }
    case 2: {
      const double size = in(1e-5, 5e-5);
      const int corners = static_cast<int>(in(5, 24));
      Label += "star of " + std::to_string(corners) + " corners, size " + Num(size) + ", cut into steps";
      return Subdivided(testing::Star(Rng, corners, {0, 0}, 0.3 * size, size), Rng, 2e-7, 9e-7, jitter);
    }
    case 3: {
      // Corners alone, close enough to climb in steps below the tolerance.
      const double size = in(1e-5, 1e-3);
      const int corners = static_cast<int>(in(20, 300));
      Label = "star of " + std::to_string(corners) + " corners, size " + Num(size);
      return testing::Star(Rng, corners, {0, 0}, 0.5 * size, size);
    }
    case 4: {
      // A grid shape on a lattice finer than the tolerance: its edges climb in whole steps
      // of the lattice, and its vertices and edges meet the other's a few steps apart.
      const double step = in(3e-7, 9e-7);
      Label = "grid shape on a lattice of " + Num(step);
      TDynPoints2D g = Scaled(testing::GridRing(Rng, 8, 6), step);
      return PolyArea(g) < 0.0 ? testing::Reversed(g) : g;
    }
    default: {
      // A thin sliver, nearly level, nearly upright or slanted at any angle.
      const double length = in(2e-5, 1.5e-4);
      const double width = in(1.5e-6, 6e-6);
      const double slant = in(-0.2, 0.2) + (Rng() % 3 == 0 ? Pi / 2 : (Rng() % 2 ? 0.0 : TwoPi * unit(Rng)));
      Label += "sliver " + Num(length) + " by " + Num(width) + " at " + Num(slant) + " rad";
      const TDynPoints2D s{{0, 0}, {length, 0}, {length, width}, {0, width}, {0, 0}};
      return Subdivided(Turned(s, slant), Rng, 2e-7, 9e-7, jitter * 0.2);
    }
  }
}

// Small outlines whose edges climb in steps of 2e-7 to 9e-7 (or far less, near the level
// parts of circles and tilted squares), against each other near the tolerance, about the
// origin and about a point 1e3 away.
TEST(MonotoneGeos, TinySteps) {
  const TGeos geos;
  TTally tally;
  std::mt19937 rng(4242);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int skipped = 0;
  for (int s = 0; s < 300; ++s) {
    std::string label;
    TDynPoints2D ring = TinyShape(rng, s, label);
    const TPoint2D base = s % 3 == 2 ? TPoint2D(1234.5 + unit(rng), -678.25 + unit(rng)) : TPoint2D();
    ring = testing::Moved(ring, base);
    const TSubject a(geos, Shuffled(ring, rng), label + " about " + Pt(base));
    if (!a.Valid()) {
      // A wobble can fold a sharp corner over itself; such a ring has no inside to compare.
      ++skipped;
      continue;
    }
    if (!ChainsClimb(a.Poly)) tally.Chains.Add([&] { return a.Describe(); });
    for (const TPoint2D& p : ProbePoints(a.Ring, rng, 100, 30, 40)) CheckPoint(a, p, tally);
    TRect2D box;
    box.SetByPointsExt(ring);
    const double size = std::max(box.Width(), box.Height());
    for (int partner = 0; partner < 80; ++partner) {
      std::string what;
      TDynPoints2D b = TinyShape(rng, s + 1 + partner, what);
      // Mostly near the tolerance; now and then deep inside or well clear.
      const double gap = partner % 8 == 7 ? size * (unit(rng) - 0.5) : NearGap(rng);
      const int quarters = (partner / 3) % 2 ? -1 : static_cast<int>(rng() % 4);
      std::string how;
      const int at = Place(ring, b, rng, gap, static_cast<TPlacement>(partner % 3), TwoPi * unit(rng), quarters, how);
      const TDynPoints2D probes = AroundVertex(b, at, 3, 2, rng);
      CheckPair(geos, a, Shuffled(b, rng), what + ", " + how, probes, tally);
    }
  }
  tally.Expect("tiny steps");
  EXPECT_LT(skipped, 20);
  EXPECT_GT(tally.Pairs, 20000);
  EXPECT_GT(tally.Touching, 2000);
  EXPECT_GT(tally.Near, 2000);
  EXPECT_GT(tally.Apart, 3000);
}

#else

TEST(MonotoneGeos, NeedsGeos) { GTEST_SKIP() << "GEOS was not found at configuration: no differential tests"; }

#endif

}  // namespace
}  // namespace orvane
