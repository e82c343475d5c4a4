#include "orvane/vertex/VPolyline2DList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

// Opens the joiners behind ConnectPolylines.
class TJoinList : public TVPolyline2DList {
 public:
  using TVPolyline2DList::Connect;
  using TVPolyline2DList::TryConnectByOrder;
};

using TRefList = std::vector<std::unique_ptr<TVPolyline2D>>;

// The joining rules as stated, with one polyline copy per join and one pass over all links
// per rewrite: the reference that the spliced chains must reproduce vertex for vertex.
bool EndsMeet(const TVPolyline2D& P, double Tol) { return P.First().Equals(P.Last(), Tol); }
bool IsLoop(const TVPolyline2D& P, double Tol) { return P.Count() >= 3 && EndsMeet(P, Tol); }
void Erase(TRefList& L, std::size_t I) { L.erase(L.begin() + static_cast<std::ptrdiff_t>(I)); }

void RefDeleteRepeat(TRefList& L, double Tol) {
  for (std::size_t i = 0; i < L.size(); ++i) {
    for (std::size_t j = i + 1; j < L.size();) {
      L[j]->IsEqualTo(*L[i], Tol) || L[j]->IsEqualToReverse(*L[i], Tol) ? Erase(L, j) : void(++j);
    }
  }
}

void RefByOrder(TRefList& L, double Tol) {
  for (std::size_t i = L.size(); i-- > 0;) {
    TVPolyline2D r;
    if (L[i]->Count() > 1 && !EndsMeet(*L[i], Tol)) {
      const std::size_t j = i > 0 ? i - 1 : L.size() - 1;
      if (j == i) break;
      if (!EndsMeet(*L[j], Tol) && L[i]->TryConnect(*L[j], r, Tol)) L[j]->Assign(r.Points()), Erase(L, i);
    } else if (L[i]->Count() < 3) {
      Erase(L, i);
    }
  }
}

void RefSortedEnds(TRefList& L, double Tol) {
  std::vector<TVPolyline2DList::TPointLink> links;
  for (std::size_t k = 0; k < L.size(); ++k) {
    if (!IsLoop(*L[k], Tol)) links.insert(links.end(), {{L[k]->First(), int(k)}, {L[k]->Last(), int(k)}});
  }
  std::stable_sort(links.begin(), links.end(), [Tol](const auto& A, const auto& B) {
    if (std::fabs(A.FPoint.X - B.FPoint.X) > Tol) return A.FPoint.X < B.FPoint.X;
    if (std::fabs(A.FPoint.Y - B.FPoint.Y) > Tol) return A.FPoint.Y < B.FPoint.Y;
    return A.FIdx < B.FIdx;
  });
  for (std::size_t i = links.size(); i-- > 1;) {
    const int ia = links[i].FIdx;
    const int ib = links[i - 1].FIdx;
    TVPolyline2D& a = *L[std::size_t(ia)];
    TVPolyline2D& b = *L[std::size_t(ib)];
    TVPolyline2D r;
    if (a.IsEmpty() || IsLoop(a, Tol) || ia == ib || b.IsEmpty() || IsLoop(b, Tol)) continue;
    if (!links[i].FPoint.Equals(links[i - 1].FPoint, Tol) || !a.TryConnect(b, r, Tol)) continue;
    a.Assign(r.Points());
    b.Clear();
    for (auto& link : links) link.FIdx = link.FIdx == ib ? ia : link.FIdx;
  }
  for (std::size_t k = L.size(); k-- > 0;) {
    if (L[k]->IsEmpty()) Erase(L, k);
  }
}

// Runs ConnectPolylines (or TryConnectByOrder alone) on the list and on the reference: both
// raise, keeping the list whole, or both give the same vertices.
void ExpectSameJoins(const std::vector<TDynPoints2D>& Pieces, double Tol, bool ByOrderOnly) {
  TJoinList list;
  TRefList ref;
  for (const TDynPoints2D& p : Pieces) {
    list.Add(std::make_unique<TVPolyline2D>(p));
    ref.push_back(std::make_unique<TVPolyline2D>(p));
  }
  bool refRaised = false;
  try {
    if (!ByOrderOnly) RefDeleteRepeat(ref, Tol);
    RefByOrder(ref, Tol);
    if (!ByOrderOnly) RefSortedEnds(ref, Tol);
  } catch (const EListError&) {
    refRaised = true;
    ref.clear();
    for (const TDynPoints2D& p : Pieces) ref.push_back(std::make_unique<TVPolyline2D>(p));
  }
  try {
    ByOrderOnly ? list.TryConnectByOrder(Tol) : list.ConnectPolylines(Tol);
    EXPECT_FALSE(refRaised);
  } catch (const EListError&) {
    EXPECT_TRUE(refRaised);
  }
  ASSERT_EQ(list.Count(), static_cast<int>(ref.size()));
  for (int k = 0; k < list.Count(); ++k) ASSERT_EQ(list[k]->Points(), ref[std::size_t(k)]->Points());
}

TEST(VPolyline2DList, JoinersAgreeWithTheRulesOnCrowdedPieces) {
  // Short pieces on a coarse grid: ends meet three and four at a time, pieces repeat, run
  // backwards, close on themselves, have one vertex or none. Every tenth list is long, so
  // that chains grow through many joins.
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> noise(-0.02, 0.02);
  int raised = 0;
  for (int round = 0; round < 600; ++round) {
    const bool longList = round % 10 == 9;
    std::uniform_int_distribution<int> grid(0, longList ? 12 : 4);
    std::uniform_int_distribution<int> len(0, longList ? 6 : 4);
    const double tol = round % 3 == 0 ? 0.0 : 0.05;
    std::vector<TDynPoints2D> pieces(static_cast<std::size_t>(longList ? 300 : 2 + round % 25));
    for (TDynPoints2D& p : pieces) {
      const int n = len(rng) == 0 && round % 7 == 0 ? 0 : 1 + len(rng);
      for (int v = 0; v < n; ++v) p.emplace_back(grid(rng) + (tol > 0 ? noise(rng) : 0), grid(rng));
    }
    if (round % 4 == 0) pieces.push_back(TDynPoints2D(pieces[0].rbegin(), pieces[0].rend()));
    for (const bool byOrderOnly : {false, true}) {
      ExpectSameJoins(pieces, tol, byOrderOnly);
      if (HasFatalFailure()) FAIL() << "round " << round;
    }
    raised += std::any_of(pieces.begin(), pieces.end(), [](const TDynPoints2D& p) { return p.empty(); });
  }
  EXPECT_GT(raised, 10);
}

// Cuts each ring (closed, first vertex repeated) at Cuts random vertices into pieces that
// share their cut vertices, moves each shared end by up to 0.3 Tol, turns some pieces round
// and shuffles them all.
std::vector<TDynPoints2D> CutRings(const std::vector<TDynPoints2D>& Rings, double Tol, std::mt19937& Rng) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto nudge = [&](const TPoint2D& P) {
    const double a = TwoPi * unit(Rng);
    return P + TPoint2D(std::cos(a), std::sin(a)) * (0.3 * Tol * unit(Rng));
  };
  std::vector<TDynPoints2D> pieces;
  for (const TDynPoints2D& ring : Rings) {
    const int n = static_cast<int>(ring.size()) - 1;
    std::vector<int> cuts;
    for (int v = 0; v < n; ++v) {
      if (unit(Rng) < 0.3) cuts.push_back(v);
    }
    if (cuts.empty()) cuts.push_back(0);
    for (std::size_t c = 0; c < cuts.size(); ++c) {
      const int from = cuts[c];
      const int to = c + 1 < cuts.size() ? cuts[c + 1] : cuts[0] + n;
      TDynPoints2D piece;
      for (int v = from; v <= to; ++v) piece.push_back(ring[static_cast<std::size_t>(v % n)]);
      piece.front() = nudge(piece.front());
      piece.back() = nudge(piece.back());
      if (unit(Rng) < 0.5) std::reverse(piece.begin(), piece.end());
      pieces.push_back(piece);
    }
  }
  std::shuffle(pieces.begin(), pieces.end(), Rng);
  return pieces;
}

// Got is closed within Tol and runs through Ring's vertices in order, either way round and
// from any start, each within Tol.
bool SameLoop(const TDynPoints2D& Got, const TDynPoints2D& Ring, double Tol) {
  const std::size_t n = Ring.size() - 1;
  if (Got.size() != n + 1 || !Got.front().Equals(Got.back(), Tol)) return false;
  for (std::size_t s = 0; s < n; ++s) {
    for (const std::size_t step : {std::size_t{1}, n - 1}) {
      bool same = true;
      for (std::size_t k = 0; k < n && same; ++k) same = Got[k].Equals(Ring[(s + k * step) % n], Tol);
      if (same) return true;
    }
  }
  return false;
}

// Both the sorted-ends joiner and the greedy one rebuild every ring.
void ExpectRingsJoinBack(const std::vector<TDynPoints2D>& Rings, double Tol, std::mt19937& Rng, bool Greedy) {
  TJoinList list;
  for (TDynPoints2D& p : CutRings(Rings, Tol, Rng)) list.Add(std::make_unique<TVPolyline2D>(std::move(p)));
  Greedy ? list.Connect(Tol) : list.ConnectPolylines(Tol);
  ASSERT_EQ(list.Count(), static_cast<int>(Rings.size()));
  std::vector<bool> found(Rings.size());
  for (const TVPolyline2D* got : list) {
    std::size_t r = 0;
    while (r < Rings.size() && (found[r] || !SameLoop(got->Points(), Rings[r], Tol))) ++r;
    ASSERT_LT(r, Rings.size()) << "a joined loop matches no ring";
    found[r] = true;
  }
}

TEST(VPolyline2DList, LoosePiecesJoinBackIntoTheirRings) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int round = 0; round < 40; ++round) {
    // Star-shaped rings (simple by construction) side by side on a grid.
    std::vector<TDynPoints2D> rings;
    for (int r = 0; r < 1 + round % 12; ++r) {
      const int corners = 3 + static_cast<int>(60 * unit(rng));
      rings.push_back(testing::Star(rng, corners, TPoint2D(25.0 * (r % 4), 25.0 * (r / 4)), 2.0, 10.0));
    }
    ExpectRingsJoinBack(rings, round % 2 == 0 ? 1e-3 : 1e-9, rng, round % 3 == 0);
    if (HasFatalFailure()) FAIL() << "round " << round;
  }
  // Real part outlines, each at unit size on its own place.
  const auto files = testing::DataFiles("outlines", ".json");
  if (files.empty()) GTEST_SKIP() << "no outline data in " ORVANE_SHARED_DATA_DIR;
  for (const std::filesystem::path& file : files) {
    const nlohmann::json doc = testing::ReadJson(file);
    std::vector<TDynPoints2D> rings;
    for (const nlohmann::json& part : doc["parts"]) {
      TVPolyline2D poly(testing::JsonRing(part["outer"]));
      // Vertices that nearly repeat merged: every edge is far longer than the tolerance.
      poly.Zoom(1.0 / std::max(poly.BoundBox().Width(), poly.BoundBox().Height()));
      poly.DeleteNeighbourClosed(true, 1e-6);
      poly.ConnectHeadTail();
      poly.Translate(TPoint2D(2.0 * static_cast<double>(rings.size()), 0.0) - poly.BoundBox().MinPoint());
      rings.push_back(poly.Points());
    }
    ExpectRingsJoinBack(rings, 1e-7, rng, false);
    if (HasFatalFailure()) FAIL() << file.filename();
  }
}

TEST(VPolyline2DList, DistanceToAgainstEverySegment) {
  std::mt19937 rng(9);
  std::uniform_real_distribution<double> coord(0.0, 100.0);
  int id = 5;
  int seg = 5;
  TVPolyline2DList list;
  EXPECT_TRUE(list.DistanceTo({1, 1}, id, seg) == MaxDouble && id == -1 && seg == -1);
  for (int k = 0; k < 60; ++k) {
    auto poly = std::make_unique<TVPolyline2D>();
    const TPoint2D start(coord(rng), coord(rng));
    for (int v = 0; v <= k % 5; ++v) poly->Add(start + TPoint2D(coord(rng), coord(rng)) * 0.1);
    list.Add(std::move(poly));
  }
  for (int q = 0; q < 400; ++q) {
    const TPoint2D pt(coord(rng), coord(rng));
    double want = MaxDouble;
    TPoint2D nearest;
    for (const TVPolyline2D* p : list) want = std::min(want, p->DistTo(pt, nearest));
    const double got = list.DistanceTo(pt, id, seg);
    // Segments whose boxes come within 1e-6 of the best distance so far are passed over.
    ASSERT_NEAR(got, want, 1e-6);
    const TVPolyline2D& hit = *list[id];
    EXPECT_NEAR(hit.Count() == 1 ? pt.DistanceTo(hit.First()) : hit.Line(seg).DistanceLimit(pt), got, 1e-12);
  }
  EXPECT_THROW(list.DistanceTo({std::nan(""), 0}, id, seg), EParamError);
}

TEST(VPolyline2DList, ListEdgesAndFailures) {
  TVPolyline2DList list;
  list.Add(std::make_unique<TVPolyline2D>(TPoint2D(1, 1)));
  list.ConnectPolylines(1e-6);  // a single item stays, even of one vertex
  ASSERT_EQ(list.Count(), 1);
  list.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{0, 0}, {1, 1}}));
  list.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{1, 1}, {0, 0}}));
  for (const double bad : {-1.0, std::nan(""), HUGE_VAL}) EXPECT_THROW(list.ConnectPolylines(bad), EParamError);
  EXPECT_EQ(list.Count(), 3);
  list.DeleteRepeat(false, 1e-6);  // a polyline and its reverse are no repeat
  EXPECT_EQ(list.Count(), 3);
  list.DeleteRepeat(true, 1e-6);
  ASSERT_EQ(list.Count(), 2);
}

}  // namespace
}  // namespace orvane
