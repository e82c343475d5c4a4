// The box-to-value R-tree against boost::geometry::index::rtree on one data set: bulk load
// of 10^6 boxes, then 10^6 box queries and 10^6 point queries. Boost packs with its range
// constructor; its R* tree is built by insertion, and so is one of ours (M = 8, as the
// kernel builds its indexes) for comparison with it. The boxes are drawn at random, so the
// insertion order is random too. Every query benchmark runs the whole query set once per
// iteration and reports the hits; before the benchmarks run, every tree's answers to a
// share of the queries are checked against Boost's packed tree, hit for hit.

#include "orvane/spatial/RTree.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <cstdio>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;
using BPoint = bg::model::point<double, 2, bg::cs::cartesian>;
using BBox = bg::model::box<BPoint>;
using BValue = std::pair<BBox, int>;
using BoostPacked = bgi::rtree<BValue, bgi::quadratic<16>>;
using BoostRStar = bgi::rtree<BValue, bgi::rstar<16>>;

constexpr int kCount = 1000000;

// Boxes of up to 10 x 10 scattered over 10000 x 10000, and query boxes and points alike.
struct TData {
  std::vector<int> Values;
  std::vector<orvane::TRect2D> Boxes;
  std::vector<BValue> BoostValues;
  std::vector<orvane::TRect2D> Queries;
  std::vector<orvane::TPoint2D> Points;

  TData() {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> pos(0.0, 10000.0);
    std::uniform_real_distribution<double> size(0.0, 10.0);
    for (int i = 0; i < kCount; ++i) {
      const double x = pos(rng);
      const double y = pos(rng);
      const orvane::TRect2D box(x, y, x + size(rng), y + size(rng));
      Values.push_back(i);
      Boxes.push_back(box);
      BoostValues.emplace_back(BBox(BPoint(box.XMin, box.YMin), BPoint(box.XMax, box.YMax)), i);
      const double qx = pos(rng);
      const double qy = pos(rng);
      Queries.emplace_back(qx, qy, qx + size(rng), qy + size(rng));
      Points.emplace_back(pos(rng), pos(rng));
    }
  }
};

const TData& Data() {
  static const TData data;
  return data;
}

const orvane::TRTree<int>& Ours(int MaxChildCount) {
  static std::unique_ptr<orvane::TRTree<int>> trees[2];
  auto& tree = trees[MaxChildCount == 8 ? 0 : 1];
  if (!tree) tree = std::make_unique<orvane::TRTree<int>>(Data().Values, Data().Boxes, MaxChildCount);
  return *tree;
}
// Built one box at a time, as the kernel's own indexes are.
const orvane::TRTree<int>& OursInserted() {
  static const std::unique_ptr<orvane::TRTree<int>> tree = [] {
    auto t = std::make_unique<orvane::TRTree<int>>(8);
    for (int i = 0; i < kCount; ++i) t->Insert(Data().Values[i], Data().Boxes[i]);
    return t;
  }();
  return *tree;
}
const BoostPacked& Packed() {
  static const BoostPacked tree(Data().BoostValues.begin(), Data().BoostValues.end());
  return tree;
}
const BoostRStar& RStar() {
  static const BoostRStar tree = [] {
    BoostRStar t;
    for (const BValue& v : Data().BoostValues) t.insert(v);
    return t;
  }();
  return tree;
}

void BM_BulkLoad_Orvane(benchmark::State& State) {
  const TData& data = Data();
  const int m = static_cast<int>(State.range(0));
  for (auto _ : State) {
    orvane::TRTree<int> tree(data.Values, data.Boxes, m);
    benchmark::DoNotOptimize(tree.Count());
  }
  State.SetItemsProcessed(State.iterations() * kCount);
}
void BM_BulkLoad_BoostPacking(benchmark::State& State) {
  const TData& data = Data();
  for (auto _ : State) {
    BoostPacked tree(data.BoostValues.begin(), data.BoostValues.end());
    benchmark::DoNotOptimize(tree.size());
  }
  State.SetItemsProcessed(State.iterations() * kCount);
}
void BM_Insert_Orvane(benchmark::State& State) {
  const TData& data = Data();
  const int m = static_cast<int>(State.range(0));
  for (auto _ : State) {
    orvane::TRTree<int> tree(m);
    for (int i = 0; i < kCount; ++i) tree.Insert(data.Values[i], data.Boxes[i]);
    benchmark::DoNotOptimize(tree.Count());
  }
  State.SetItemsProcessed(State.iterations() * kCount);
}
void BM_Insert_BoostRStar(benchmark::State& State) {
  const TData& data = Data();
  for (auto _ : State) {
    BoostRStar tree;
    for (const BValue& v : data.BoostValues) tree.insert(v);
    benchmark::DoNotOptimize(tree.size());
  }
  State.SetItemsProcessed(State.iterations() * kCount);
}

// Queries is a list of boxes or of points: the tree answers both.
template <class TQueries>
void OursQueries(benchmark::State& State, const orvane::TRTree<int>& Tree, const TQueries& Queries) {
  orvane::TList<int> hits;
  std::size_t total = 0;
  for (auto _ : State) {
    total = 0;
    for (const auto& q : Queries) {
      hits.Clear();
      Tree.Search(q, hits, 0.0);
      total += static_cast<std::size_t>(hits.Count());
    }
    benchmark::DoNotOptimize(total);
  }
  State.counters["hits"] = static_cast<double>(total);
  State.SetItemsProcessed(State.iterations() * kCount);
}
void OursBoxQueries(benchmark::State& State, const orvane::TRTree<int>& Tree) { OursQueries(State, Tree, Data().Queries); }
void BM_BoxQuery_Orvane(benchmark::State& State) { OursBoxQueries(State, Ours(static_cast<int>(State.range(0)))); }
void BM_BoxQuery_OrvaneInserted(benchmark::State& State) { OursBoxQueries(State, OursInserted()); }
template <class TBoost>
void BoostBoxQueries(benchmark::State& State, const TBoost& Tree) {
  std::vector<BValue> hits;
  std::size_t total = 0;
  for (auto _ : State) {
    total = 0;
    for (const orvane::TRect2D& q : Data().Queries) {
      hits.clear();
      Tree.query(bgi::intersects(BBox(BPoint(q.XMin, q.YMin), BPoint(q.XMax, q.YMax))), std::back_inserter(hits));
      total += hits.size();
    }
    benchmark::DoNotOptimize(total);
  }
  State.counters["hits"] = static_cast<double>(total);
  State.SetItemsProcessed(State.iterations() * kCount);
}
void BM_BoxQuery_BoostPacking(benchmark::State& State) { BoostBoxQueries(State, Packed()); }
void BM_BoxQuery_BoostRStar(benchmark::State& State) { BoostBoxQueries(State, RStar()); }

void BM_PointQuery_Orvane(benchmark::State& State) {
  OursQueries(State, Ours(static_cast<int>(State.range(0))), Data().Points);
}
template <class TBoost>
void BoostPointQueries(benchmark::State& State, const TBoost& Tree) {
  std::vector<BValue> hits;
  std::size_t total = 0;
  for (auto _ : State) {
    total = 0;
    for (const orvane::TPoint2D& p : Data().Points) {
      hits.clear();
      Tree.query(bgi::intersects(BPoint(p.X, p.Y)), std::back_inserter(hits));
      total += hits.size();
    }
    benchmark::DoNotOptimize(total);
  }
  State.counters["hits"] = static_cast<double>(total);
  State.SetItemsProcessed(State.iterations() * kCount);
}
void BM_PointQuery_OrvaneInserted(benchmark::State& State) { OursQueries(State, OursInserted(), Data().Points); }
void BM_PointQuery_BoostPacking(benchmark::State& State) { BoostPointQueries(State, Packed()); }
void BM_PointQuery_BoostRStar(benchmark::State& State) { BoostPointQueries(State, RStar()); }

BENCHMARK(BM_BulkLoad_Orvane)->Arg(8)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BulkLoad_BoostPacking)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoxQuery_Orvane)->Arg(8)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoxQuery_BoostPacking)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoxQuery_BoostRStar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoxQuery_OrvaneInserted)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointQuery_Orvane)->Arg(8)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointQuery_BoostPacking)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointQuery_BoostRStar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointQuery_OrvaneInserted)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Insert_Orvane)->Arg(8)->Arg(16)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Insert_BoostRStar)->Unit(benchmark::kMillisecond)->Iterations(1);

// The sorted hits of every 10th query, box and point, from each of our trees against Boost's
// packed tree; false with a message at the first difference.
bool SameAnswers() {
  const TData& data = Data();
  const orvane::TRTree<int>* trees[] = {&Ours(8), &Ours(16), &OursInserted()};
  const char* names[] = {"packed M = 8", "packed M = 16", "inserted"};
  std::vector<int> ours;
  orvane::TList<int> ourPoints;
  std::vector<BValue> theirs;
  auto sortedIds = [&]() {
    std::vector<int> ids;
    for (const BValue& v : theirs) ids.push_back(v.second);
    std::sort(ids.begin(), ids.end());
    return ids;
  };
  for (std::size_t t = 0; t < 3; ++t) {
    for (std::size_t i = 0; i < data.Queries.size(); i += 10) {
      const orvane::TRect2D& q = data.Queries[i];
      ours.clear();
      trees[t]->Search(q, ours, 0.0);
      std::sort(ours.begin(), ours.end());
      theirs.clear();
      Packed().query(bgi::intersects(BBox(BPoint(q.XMin, q.YMin), BPoint(q.XMax, q.YMax))), std::back_inserter(theirs));
      const orvane::TPoint2D& p = data.Points[i];
      ourPoints.Clear();
      trees[t]->Search(p, ourPoints, 0.0);
      std::vector<int> points = ourPoints.ToArray();
      std::sort(points.begin(), points.end());
      bool same = ours == sortedIds();
      theirs.clear();
      Packed().query(bgi::intersects(BPoint(p.X, p.Y)), std::back_inserter(theirs));
      same = same && points == sortedIds();
      if (!same) {
        std::fprintf(stderr, "bench_rtree: the %s tree and Boost disagree on query %zu\n", names[t], i);
        return false;
      }
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!SameAnswers()) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
