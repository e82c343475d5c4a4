#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "orvane/spatial/RTree.h"
#include "orvane/spatial/internal/RadixSort.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using TTree = TRTree<int>;
using TNode = TRTreeNode<int>;

// Checks the structure through the read-only node handles: every non-data node has
// children of one kind, all data nodes hang at one depth, every box holds its children's
// boxes, nodes keep within the fan-out, and the data nodes are exactly the values held.
void ExpectSound(const TTree& Tree) {
  const TNode root = Tree.GetRoot();
  if (root.IsNil()) {
    ASSERT_EQ(Tree.Count(), 0);
    return;
  }
  ASSERT_TRUE(root.IsRoot());
  int dataDepth = -1;
  int data = 0;
  std::vector<std::pair<TNode, int>> stack{{root, 0}};
  while (!stack.empty()) {
    const auto [node, depth] = stack.back();
    stack.pop_back();
    if (node.IsDataNode()) {
      if (dataDepth < 0) dataDepth = depth;
      ASSERT_EQ(depth, dataDepth) << "data nodes at different levels";
      ASSERT_EQ(Tree.DataNodeOf(node.GetData()), node);
      ++data;
      continue;
    }
    ASSERT_GE(node.ChildCount(), 1);
    ASSERT_LE(node.ChildCount(), Tree.GetMaxChildCount());
    ASSERT_EQ(node.IsLeaf(), node.ChildNode(0).IsDataNode());
    const TRect2D box = node.GetBox();
    for (int i = 0; i < node.ChildCount(); ++i) {
      const TNode child = node.ChildNode(i);
      ASSERT_EQ(child.IsDataNode(), node.IsLeaf());
      ASSERT_EQ(child.GetParent(), node);
      const TRect2D childBox = child.GetBox();
      if (childBox.IsValid()) {
        ASSERT_EQ(box.ExtendedRect(childBox), box) << "a box does not hold its child";
      }
      stack.emplace_back(child, depth + 1);
    }
  }
  ASSERT_EQ(data, Tree.Count());
}

std::vector<int> Sorted(std::vector<int> Values) {
  std::sort(Values.begin(), Values.end());
  return Values;
}

// A model of the tree: values in insertion order with their boxes.
struct TModel {
  std::vector<std::pair<int, TRect2D>> Items;

  std::vector<int> Meeting(const TRect2D& Region, double Tol) const {
    std::vector<int> hits;
    for (const auto& [value, box] : Items) {
      if (box.RelationWithRect(Region, Tol) != 0) hits.push_back(value);
    }
    return Sorted(hits);
  }
  std::vector<int> Holding(const TPoint2D& Pt, double Tol) const {
    std::vector<int> hits;
    for (const auto& [value, box] : Items) {
      if (box.IsValid() &&
          !(box.XMin - Tol > Pt.X || Pt.X > box.XMax + Tol || box.YMin - Tol > Pt.Y || Pt.Y > box.YMax + Tol))
        hits.push_back(value);
    }
    return Sorted(hits);
  }
};

// Boxes on a half-unit grid, so that touching and reaching exactly to a tolerance is common;
// some are points, some repeat, some are invalid.
TRect2D RandomBox(std::mt19937& Rng) {
  std::uniform_int_distribution<int> pos(0, 80);
  std::uniform_int_distribution<int> size(0, 6);
  std::uniform_int_distribution<int> kind(0, 19);
  const int k = kind(Rng);
  if (k == 0) return TRect2D::Invalid();
  if (k == 1) return {4.0, 4.0, 6.0, 6.5};  // a repeated box
  const double x = pos(Rng) * 0.5;
  const double y = pos(Rng) * 0.5;
  if (k == 2) return TRect2D(TPoint2D(x, y));
  return {x, y, x + size(Rng) * 0.5, y + size(Rng) * 0.5};
}

void ExpectQueriesMatch(const TTree& Tree, const TModel& Model, std::mt19937& Rng) {
  const double tols[] = {0.0, 1e-6, 0.5, 1.0};
  TList<int> hits;
  for (int q = 0; q < 12; ++q) {
    const double tol = tols[q % 4];
    const TRect2D region = RandomBox(Rng);
    hits.Clear();
    Tree.Search(region, hits, tol);
    ASSERT_EQ(Sorted(hits.ToArray()), Model.Meeting(region, tol)) << "box query, tol " << tol;
    ASSERT_EQ(Tree.MayIntersect(region), !Model.Meeting(region, 1e-6).empty());
    const TPoint2D pt = region.IsValid() ? region.MaxPoint() : TPoint2D(3.0, 3.0);
    hits.Clear();
    Tree.Search(pt, hits, tol);
    ASSERT_EQ(Sorted(hits.ToArray()), Model.Holding(pt, tol)) << "point query, tol " << tol;
  }
}

TEST(GenericRTree, MatchesBruteForceThroughMixedChanges) {
  for (const int fanOut : {3, 4, 8, 40}) {
    std::mt19937 rng(1234u + static_cast<unsigned>(fanOut));
    auto tree = std::make_unique<TTree>(fanOut);
    // The same changes on a tree of strings, which keeps its values outside the entries.
    auto named = std::make_unique<TRTree<std::string>>(fanOut);
    const auto name = [](int Value) { return "part-" + std::to_string(Value); };
    TModel model;
    int next = 0;
    for (int step = 0; step < 2500; ++step) {
      const int op = std::uniform_int_distribution<int>(0, 99)(rng);
      if (op < 60) {
        const TRect2D box = RandomBox(rng);
        tree->Insert(next, box);
        named->Insert(name(next), box);
        model.Items.emplace_back(next++, box);
      } else if (op < 97) {
        // Removal of a held value, or now and then of one never held.
        const int value =
            model.Items.empty() || op > 93
                ? -1
                : model.Items[std::uniform_int_distribution<std::size_t>(0, model.Items.size() - 1)(rng)].first;
        tree->Remove(value);
        named->Remove(name(value));
        std::erase_if(model.Items, [&](const auto& item) { return item.first == value; });
      } else {
        // A fresh bulk load.
        const int n = std::uniform_int_distribution<int>(0, 300)(rng);
        TList<int> values;
        TList<std::string> names;
        TList<TRect2D> boxes;
        model.Items.clear();
        for (int i = 0; i < n; ++i) {
          values.Add(next);
          names.Add(name(next));
          boxes.Add(RandomBox(rng));
          model.Items.emplace_back(next++, boxes.Last());
        }
        tree = std::make_unique<TTree>(values, boxes, fanOut);
        named = std::make_unique<TRTree<std::string>>(names, boxes, fanOut);
      }
      ASSERT_NO_FATAL_FAILURE(ExpectSound(*tree)) << "step " << step;
      ASSERT_EQ(tree->Count(), static_cast<int>(model.Items.size()));
      if (step % 10 == 0) {
        std::vector<int> order;
        for (const auto& item : model.Items) order.push_back(item.first);
        ASSERT_EQ(tree->GetAllData().ToArray(), order) << "insertion order";
        if (!order.empty()) {
          ASSERT_EQ(tree->GetRandomData(), order.front());
        }
        ASSERT_NO_FATAL_FAILURE(ExpectQueriesMatch(*tree, model, rng)) << "step " << step;
        const TRect2D region = RandomBox(rng);
        std::vector<std::string> want, got = named->Search(region, 0.5).ToArray();
        for (const int v : model.Meeting(region, 0.5)) want.push_back(name(v));
        std::sort(want.begin(), want.end());
        std::sort(got.begin(), got.end());
        ASSERT_EQ(got, want) << "strings, step " << step;
        ASSERT_EQ(named->Count(), tree->Count());
        if (!order.empty()) {
          EXPECT_EQ(named->GetRandomData(), name(order.front()));
          EXPECT_THROW(named->Insert(name(order.back()), {0, 0, 1, 1}), ERTreeError);
        }
      }
    }
  }
}

// The summed area of the leaves' boxes: a measure of how well a tree groups its boxes.
double LeafArea(const TTree& Tree) {
  double sum = 0.0;
  std::vector<TNode> stack{Tree.GetRoot()};
  while (!stack.empty()) {
    const TNode node = stack.back();
    stack.pop_back();
    if (node.IsLeaf()) {
      sum += node.GetBox().AreaAbs();
      continue;
    }
    for (int i = 0; i < node.ChildCount(); ++i) stack.push_back(node.ChildNode(i));
  }
  return sum;
}

TEST(GenericRTree, LargeBulkLoadsMatchBruteForce) {
  // Beyond RadixSortMinCount boxes the levels are radix sorted, and beyond 2^15 values the
  // dictionary is built in slices of home slots. Boxes on the grid repeat their centres
  // often (ties keep the list's order); a shifted half reaches negative centres.
  std::mt19937 rng(2024);
  const int n = 40000;
  ASSERT_GT(static_cast<std::size_t>(n), 8 * internal::RadixSortMinCount);
  TList<int> values;
  TList<TRect2D> boxes;
  TModel model;
  for (int i = 0; i < n; ++i) {
    TRect2D box = RandomBox(rng);
    if (i % 2 == 1 && box.IsValid()) box = box.Translate(TPoint2D(-20.0, -20.0));
    values.Add(7 * i + 3);
    boxes.Add(box);
    model.Items.emplace_back(7 * i + 3, box);
  }
  TTree tree(values, boxes, 8);
  ASSERT_NO_FATAL_FAILURE(ExpectSound(tree));
  EXPECT_EQ(tree.GetAllData().ToArray(), values.ToArray());
  // Insertion one by one groups the boxes about as tightly as the packed load does.
  TTree grown(8);
  for (int i = 0; i < n; ++i) grown.Insert(values[i], boxes[i]);
  ASSERT_NO_FATAL_FAILURE(ExpectSound(grown));
  EXPECT_LT(LeafArea(grown), 1.5 * LeafArea(tree));
  ASSERT_NO_FATAL_FAILURE(ExpectQueriesMatch(tree, model, rng));
  // Removal from the large dictionary keeps every other value findable.
  for (int i = 0; i < n; i += 3) tree.Remove(7 * i + 3);
  std::erase_if(model.Items, [](const auto& Item) { return (Item.first - 3) / 7 % 3 == 0; });
  ASSERT_NO_FATAL_FAILURE(ExpectSound(tree));
  for (int i = 0; i < n; ++i) ASSERT_EQ(tree.Contains(7 * i + 3), i % 3 != 0) << i;
  ASSERT_NO_FATAL_FAILURE(ExpectQueriesMatch(tree, model, rng));
  // The removed values come back, every other one with a new box.
  for (int i = 0; i < n; i += 3) {
    const TRect2D box = i % 2 == 0 ? boxes[i] : RandomBox(rng);
    tree.Insert(7 * i + 3, box);
    model.Items.emplace_back(7 * i + 3, box);
  }
  ASSERT_NO_FATAL_FAILURE(ExpectSound(tree));
  ASSERT_NO_FATAL_FAILURE(ExpectQueriesMatch(tree, model, rng));

  // The level sort itself against std::stable_sort: ties, -0 with +0, both signs.
  struct TItem {
    double Key;
    int Seq;
  };
  std::vector<TItem> items;
  std::uniform_int_distribution<int> key(-300, 300);
  for (int i = 0; i < 3 * static_cast<int>(internal::RadixSortMinCount); ++i) {
    const int k = key(rng);
    items.push_back({k == 0 ? (i % 2 == 0 ? 0.0 : -0.0) : k * 0.25 + (k % 7 == 0 ? 1e-300 : 0.0), i});
  }
  items.push_back({-1e308, -1});
  items.push_back({1e308, -2});
  std::vector<TItem> expected = items;
  std::stable_sort(expected.begin(), expected.end(), [](const TItem& A, const TItem& B) { return A.Key < B.Key; });
  std::vector<TItem> scratch;
  internal::StableSortByKey(items, scratch, [](const TItem& Item) { return Item.Key; });
  ASSERT_EQ(items.size(), expected.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    ASSERT_EQ(items[i].Seq, expected[i].Seq) << i;
  }
}

TEST(GenericRTree, SplitsAndPacksAsStated) {
  // Two clusters of unit squares ten apart: the split of the overfull root leaf goes along X
  // (the margins of its distributions are far smaller than along Y) and between the
  // clusters, the only place where the halves do not overlap. A later small box joins the
  // cluster that already holds it.
  TTree tree(4);
  tree.Insert(0, {0, 0, 1, 1});
  tree.Insert(1, {10, 0, 11, 1});
  tree.Insert(2, {0.5, 0.5, 1.5, 1.5});
  tree.Insert(3, {10.5, 0.5, 11.5, 1.5});
  tree.Insert(4, {0.2, 0.2, 0.3, 0.3});
  tree.Insert(5, {10.2, 0.2, 10.3, 0.3});
  auto valuesOf = [](const TNode& leaf) {
    std::vector<int> values;
    for (int i = 0; i < leaf.ChildCount(); ++i) values.push_back(leaf.ChildNode(i).GetData());
    return values;
  };
  const TNode root = tree.GetRoot();
  ASSERT_EQ(root.ChildCount(), 2);
  EXPECT_EQ(valuesOf(root.ChildNode(0)), (std::vector<int>{0, 4, 2}));
  EXPECT_EQ(valuesOf(root.ChildNode(1)), (std::vector<int>{1, 3, 5}));
  EXPECT_EQ(root.ChildNode(0).GetBox(), TRect2D(0, 0, 1.5, 1.5));
  EXPECT_EQ(root.GetBox(), TRect2D(0, 0, 11.5, 1.5));

  // Points on a line have no area and overlap nothing: the split cuts the widest gap, which
  // leaves the least margin.
  TTree line(4);
  for (int i = 0; i < 4; ++i) line.Insert(i, TRect2D(TPoint2D(i, 0)));
  line.Insert(4, TRect2D(TPoint2D(10, 0)));
  EXPECT_EQ(valuesOf(line.GetRoot().ChildNode(0)), (std::vector<int>{0, 1, 2, 3}));
  EXPECT_EQ(valuesOf(line.GetRoot().ChildNode(1)), (std::vector<int>{4}));

  // Bulk loads: M + 1 values give a root with two children, M * M + 1 values three levels.
  for (const int n : {9, 65}) {
    TList<int> values;
    TList<TRect2D> boxes;
    for (int i = 0; i < n; ++i) {
      values.Add(i);
      boxes.Add({double(i % 7), double(i / 7), i % 7 + 0.5, i / 7 + 0.5});
    }
    const TTree packed(values, boxes, 8);
    EXPECT_EQ(packed.GetRoot().ChildCount(), 2);
    EXPECT_EQ(packed.GetRoot().ChildNode(0).IsLeaf(), n == 9);
    if (n == 65) {
      EXPECT_TRUE(packed.GetRoot().ChildNode(0).ChildNode(0).IsLeaf());
    }
    EXPECT_EQ(packed.GetAllData().ToArray(), values.ToArray());
  }
}

TEST(GenericRTree, EmptyTreesErrorsAndEdges) {
  TTree tree(8);
  TList<int> hits;
  tree.Search(TRect2D(-1e300, -1e300, 1e300, 1e300), hits, 1.0);
  EXPECT_EQ(hits.Count(), 0);
  EXPECT_FALSE(tree.MayIntersect({0, 0, 1, 1}));
  testing::ExpectRaise<ERTreeError>([&] { (void)tree.GetRandomData(); }, "[Error] TRTree<T>.GetRandomData: R树为空");

  // The only value goes and comes back.
  tree.Insert(7, {0, 0, 1, 1});
  tree.Remove(7);
  EXPECT_TRUE(tree.GetRoot().IsNil());
  EXPECT_EQ(tree.Count(), 0);
  tree.Insert(7, {0, 0, 1, 1});
  EXPECT_EQ(tree.Search(TRect2D(TPoint2D(1, 1)), 0.0).ToArray(), std::vector<int>{7});

  // Refused input leaves the tree as it was.
  EXPECT_THROW(tree.Insert(7, {2, 2, 3, 3}), ERTreeError);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_THROW(tree.Insert(8, {0, nan, 1, 1}), EParamError);
  EXPECT_THROW(tree.Insert(8, {0, 0, inf, 1}), EParamError);
  EXPECT_THROW(TTree(2), EParamError);
  EXPECT_EQ(tree.Count(), 1);
  EXPECT_FALSE(tree.Contains(8));
  EXPECT_FALSE(tree.MayIntersect({2, 2, 3, 3}));
  hits.Clear();
  tree.Search(TPoint2D(nan, 0.5), hits, 1.0);
  tree.Search(TRect2D(0, 0, 1, 1), hits, nan);
  EXPECT_EQ(hits.Count(), 0);
  // An invalid box made of infinities is held, and never found.
  tree.Insert(9, {inf, inf, -inf, -inf});
  EXPECT_TRUE(tree.Contains(9));
  EXPECT_EQ(tree.Search(TRect2D(-1e300, -1e300, 1e300, 1e300), 1.0).ToArray(), std::vector<int>{7});
  // Not even under an infinite tolerance, which every valid box meets, alone under a node
  // whose box is as invalid as its own.
  TTree lone(4);
  lone.Insert(9, {inf, inf, -inf, -inf});
  EXPECT_TRUE(lone.Search(TRect2D(5, 5, 6, 6), inf).ToArray().empty());
  tree.Insert(10, {20, 20, 21, 21});
  EXPECT_EQ(Sorted(tree.Search(TRect2D(5, 5, 6, 6), inf).ToArray()), (std::vector<int>{7, 10}));

  // More values than boxes fails the bulk load's assertion; duplicate values are refused.
  TList<int> values{1, 2, 3};
  TList<TRect2D> boxes{{0, 0, 1, 1}, {1, 1, 2, 2}};
  try {
    TTree bad(values, boxes, 8);
    FAIL() << "no exception";
  } catch (const EAssertionFailed& e) {
    EXPECT_STREQ(e.what(), "[Error] TRTree<T>.Initialize: 数据错误");
    EXPECT_EQ(e.Source, "RTree");
  }
  TList<int> twice{1, 1};
  EXPECT_THROW(TTree(twice, boxes, 8), ERTreeError);
  EXPECT_EQ(TTree(TList<int>(), TList<TRect2D>(), 8).Count(), 0);
}

}  // namespace
}  // namespace orvane
