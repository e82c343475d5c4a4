// Piles of touching polygons: hand-worked piles, the Plug links' lifetime, flat outlines,
// random layouts and placed nesting layouts against a brute-force union-find.

#include "orvane/monotone/MPolygonList.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>
#include <random>
#include <vector>

#include "orvane/vertex/VPolyline2D.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

TDynPoints2D Box(double X0, double Y0, double X1, double Y1) {
  return {{X0, Y0}, {X1, Y0}, {X1, Y1}, {X0, Y1}, {X0, Y0}};
}

TMPolygon* AddTo(TMPolygonList& L, const TDynPoints2D& Ring) {
  auto p = std::make_unique<TMPolygon>(TVPolyline2D(Ring), nullptr);
  TMPolygon* raw = p.get();
  L.Add(std::move(p));
  return raw;
}

// Components of the pairs for which Touch is true, as a sorted list of sorted index lists.
template <class F>
std::vector<std::vector<int>> Components(int N, F&& Touch) {
  std::vector<int> parent(static_cast<std::size_t>(N));
  std::iota(parent.begin(), parent.end(), 0);
  const auto find = [&](int x) {
    while (parent[static_cast<std::size_t>(x)] != x) x = parent[static_cast<std::size_t>(x)] = parent[static_cast<std::size_t>(parent[static_cast<std::size_t>(x)])];
    return x;
  };
  for (int i = 0; i < N; ++i)
    for (int j = i + 1; j < N; ++j)
      if (Touch(i, j)) parent[static_cast<std::size_t>(find(i))] = find(j);
  std::map<int, std::vector<int>> groups;
  for (int i = 0; i < N; ++i) groups[find(i)].push_back(i);
  std::vector<std::vector<int>> out;
  for (auto& [root, g] : groups) out.push_back(g);
  std::sort(out.begin(), out.end());
  return out;
}

std::vector<std::vector<int>> PilesAsIndices(const TMPolygonList& L, const TMPolyline2DsList& Heaps) {
  std::vector<std::vector<int>> out;
  for (const TMPolygonList* pile : Heaps) {
    std::vector<int> g;
    for (TMPolygon* p : *pile) g.push_back(L.IndexOf(p));
    std::sort(g.begin(), g.end());
    out.push_back(g);
  }
  std::sort(out.begin(), out.end());
  return out;
}

// Two piles form first ({A, C} and {B, D}); E joins the first by C, then the contact of D
// with E moves E's pile behind D's, and the first pile goes. Equal left edges keep list order in the sweep, which fixes the order of members.
TEST(MPolygonList, PilesByFirstContact) {
  TMPolygonList list;
  TMPolygon* a = AddTo(list, Box(0, 0, 1, 1));
  TMPolygon* b = AddTo(list, Box(0.5, 5, 1.5, 6));
  TMPolygon* c = AddTo(list, Box(1, 0, 2, 1));
  TMPolygon* d = AddTo(list, Box(1.5, 5, 2.5, 6));
  TMPolygon* e = AddTo(list, Box(2, 0, 3, 5.5));
  TMPolygon* lone = AddTo(list, Box(10, 10, 11, 11));
  TMPolyline2DsList heaps;
  list.Merge(heaps);
  ASSERT_EQ(heaps.Count(), 2);
  EXPECT_EQ(heaps[0]->ToArray(), (std::vector<TMPolygon*>{b, d, a, c, e}));
  EXPECT_EQ(heaps[1]->ToArray(), (std::vector<TMPolygon*>{lone}));
  EXPECT_EQ(d->Plug, heaps[0]);

  // A stack with one left edge, listed top, bottom, middle: the sweep keeps that order.
  TMPolygonList stack;
  TMPolygon* top = AddTo(stack, Box(0, 2, 1, 3));
  TMPolygon* bottom = AddTo(stack, Box(0, 0, 1, 1));
  TMPolygon* middle = AddTo(stack, Box(0, 1, 1, 2));
  TMPolyline2DsList stackHeaps;
  stack.Merge(stackHeaps);
  ASSERT_EQ(stackHeaps.Count(), 1);
  EXPECT_EQ(stackHeaps[0]->ToArray(), (std::vector<TMPolygon*>{top, middle, bottom}));
}

TEST(MPolygonList, ContactToleranceNestingAndFlatOutlines) {
  TMPolygonList list;
  AddTo(list, Box(0, 0, 10, 10));
  AddTo(list, Box(2, 2, 4, 4));                 // inside, no contact: a pile of its own
  AddTo(list, Box(10 + 5e-7, 0, 12, 10));       // within 1e-6 of the first
  AddTo(list, Box(12 + 2e-6, 3, 14, 10 + 3e-7)); // 2e-6 from the third: apart
  AddTo(list, Box(0, 10 + 8e-7, 1, 11));        // above the first
  TMPolyline2DsList heaps;
  list.Merge(heaps);
  EXPECT_EQ(PilesAsIndices(list, heaps), (std::vector<std::vector<int>>{{0, 2, 4}, {1}, {3}}));

  // Eight unit boxes stacked 5e-7 apart make two strips whose common edge falls in the gap
  // between the fourth and the fifth box: the contact must still be seen.
  TMPolygonList column;
  for (int k = 0; k < 8; ++k) AddTo(column, Box(0, k * (1 + 5e-7), 1, k * (1 + 5e-7) + 1));
  TMPolyline2DsList columnHeaps;
  column.Merge(columnHeaps);
  EXPECT_EQ(columnHeaps.Count(), 1);

  // An empty list adds nothing to the caller's piles.
  TMPolygonList().Merge(heaps);
  EXPECT_EQ(heaps.Count(), 3);

  // Outlines without height: the strips cannot be sized by a mean height, and one strip
  // holds all of them.
  TMPolygonList flat;
  AddTo(flat, {{0, 0}, {1, 0}});
  AddTo(flat, {{1, 0}, {2, 0}});
  AddTo(flat, {{5, 0}, {6, 0}});
  TMPolyline2DsList flatHeaps;
  flat.Merge(flatHeaps);
  EXPECT_EQ(PilesAsIndices(flat, flatHeaps), (std::vector<std::vector<int>>{{0, 1}, {2}}));
}

// Plug never dangles: freeing the piles clears the links, so a later Merge starts afresh;
// freeing the polygons first empties the piles they were in.
TEST(MPolygonList, PlugLinksFollowThePiles) {
  TMPolygonList list;
  for (int i = 0; i < 4; ++i) AddTo(list, Box(i, 0, i + 1, 1));
  auto heaps = std::make_unique<TMPolyline2DsList>();
  list.Merge(*heaps);
  ASSERT_EQ(heaps->Count(), 1);
  list.Merge(*heaps);  // all in piles already: nothing added
  EXPECT_EQ(heaps->Count(), 1);
  heaps.reset();
  for (const TMPolygon* p : list) EXPECT_EQ(p->Plug, nullptr);
  TMPolyline2DsList again(false);  // piles the caller frees
  list.Merge(again);
  ASSERT_EQ(again.Count(), 1);
  EXPECT_EQ(again[0]->Count(), 4);
  list.Delete(1);  // freed: leaves its pile first
  EXPECT_EQ(again[0]->Count(), 3);
  list.Clear();
  EXPECT_EQ(again[0]->Count(), 0);
  delete again[0];

  // Both piles end up in one when a later contact joins them; the emptied pile of a
  // non-owning Heaps is freed by Merge itself (the leak checker of a sanitizer build sees it).
  TMPolygonList two;
  AddTo(two, Box(0, 0, 1, 1));
  AddTo(two, Box(5, 0, 6, 1));
  AddTo(two, Box(1, 0, 2, 1));
  AddTo(two, Box(4, 0, 5, 1));
  AddTo(two, Box(2, 0, 4, 1));
  TMPolyline2DsList loose(false);
  two.Merge(loose);
  ASSERT_EQ(loose.Count(), 1);
  EXPECT_EQ(loose[0]->Count(), 5);
  delete loose[0];
  for (const TMPolygon* p : two) EXPECT_EQ(p->Plug, nullptr);

  // A polygon the caller frees by itself leaves its pile on the way.
  auto a = std::make_unique<TMPolygon>(TVPolyline2D(Box(0, 0, 1, 1)), nullptr);
  auto b = std::make_unique<TMPolygon>(TVPolyline2D(Box(1, 0, 2, 1)), nullptr);
  TMPolygonList kept(false);  // freed before the polygons it lists
  kept.Add(a.get());
  kept.Add(b.get());
  TMPolyline2DsList piles;
  kept.Merge(piles);
  ASSERT_EQ(piles.Count(), 1);
  kept.Remove(a.get());
  a.reset();
  EXPECT_EQ(piles[0]->Count(), 1);
  EXPECT_EQ((*piles[0])[0], b.get());
}

// Random boxes and stars: Merge's piles against a union-find over every pair's boundary
// distance, with pairs close to the tolerance left out of the layout.
TEST(MPolygonList, RandomLayoutsAgreeWithUnionFind) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> pos(0.0, 40.0), size(0.5, 4.0);
  for (int round = 0; round < 10; ++round) {
    std::vector<TDynPoints2D> rings;
    for (int i = 0; i < 120; ++i) {
      if (i % 3 == 0) {
        rings.push_back(testing::Star(rng, 7, {pos(rng), pos(rng)}, 0.5, 2.5));
      } else {
        const double x = std::floor(pos(rng)), y = std::floor(pos(rng));  // grid: exact contacts
        rings.push_back(Box(x, y, x + std::floor(size(rng)), y + std::floor(size(rng))));
      }
    }
    std::vector<std::vector<double>> dist(rings.size(), std::vector<double>(rings.size()));
    bool ambiguous = false;
    for (std::size_t i = 0; i < rings.size(); ++i)
      for (std::size_t j = i + 1; j < rings.size(); ++j) {
        dist[i][j] = testing::BoundaryDist(rings[i], rings[j]);
        ambiguous = ambiguous || (dist[i][j] > 1e-9 && dist[i][j] < 1e-5);
      }
    if (ambiguous) continue;
    TMPolygonList list;
    for (const TDynPoints2D& r : rings) AddTo(list, r);
    TMPolyline2DsList heaps;
    list.Merge(heaps);
    const auto want = Components(static_cast<int>(rings.size()), [&](int i, int j) {
      return dist[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] <= 1e-6;
    });
    ASSERT_EQ(PilesAsIndices(list, heaps), want) << "round " << round;
  }
}

// Placed nesting layouts: every pair of parts whose boxes come within 1e-5 has TestOverlap
// checked against the brute-force boundary distance, and the piles equal a union-find over
// boundary contact (1e-6).
TEST(MPolygonList, PlacedLayoutsAgreeWithUnionFind) {
  namespace fs = std::filesystem;
  const auto files = testing::DataFiles("layouts", ".json");
  if (files.empty()) GTEST_SKIP() << "no layouts in " << ORVANE_SHARED_DATA_DIR;
  int layouts = 0, piled = 0, pairs = 0, touching = 0;
  for (const fs::path& file : files) {
    const nlohmann::json doc = testing::ReadJson(file);
    std::vector<const nlohmann::json*> placements;
    if (doc.contains("placements")) placements.push_back(&doc["placements"]);
    if (doc.contains("solutions"))
      for (const auto& s : doc["solutions"]) placements.push_back(&s["placements"]);
    for (const nlohmann::json* placed : placements) {
      std::vector<TDynPoints2D> rings;
      TMPolygonList list;
      for (const auto& p : *placed) {
        TDynPoints2D r;
        for (const auto& xy : p["placed"]) r.emplace_back(xy[0].get<double>(), xy[1].get<double>());
        r.push_back(r.front());
        rings.push_back(std::move(r));
        AddTo(list, rings.back());
      }
      const std::size_t n = rings.size();
      std::vector<std::vector<double>> dist(n, std::vector<double>(n, 1.0));
      for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = a + 1; b < n; ++b) {
          if (list[int(a)]->BoundBox().RelationWithRect(list[int(b)]->BoundBox(), 1e-5) == 0) continue;
          ++pairs;
          const double d = dist[a][b] = testing::BoundaryDist(rings[a], rings[b]);
          const bool got = list[int(a)]->TestOverlap(*list[int(b)]);
          ASSERT_EQ(got, list[int(b)]->TestOverlap(*list[int(a)]));
          touching += d <= 1e-9 ? 1 : 0;
          // Between 1e-9 and 1e-5 (the layouts keep gaps down to 5e-7) a contact found must
          // at least be a near one.
          if (d <= 1e-9 || d >= 1e-5 || got) {
            EXPECT_EQ(got, d <= 2e-6) << file.filename() << " parts " << a << ", " << b << " apart by " << d;
          }
        }
      }
      TMPolyline2DsList heaps;
      list.Merge(heaps);
      const auto want = Components(static_cast<int>(n), [&](int i, int j) {
        return dist[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] <= 1e-6;
      });
      ASSERT_EQ(PilesAsIndices(list, heaps), want) << file.filename();
      ++layouts;
      piled += heaps.Count() < list.Count() ? 1 : 0;
    }
  }
  EXPECT_GE(layouts, 30);
  EXPECT_GT(piled, 10);
  EXPECT_GT(pairs, 1000);
  EXPECT_GT(touching, 100);
}

}  // namespace
}  // namespace orvane
