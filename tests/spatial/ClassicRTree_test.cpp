#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "orvane/spatial/RTree.h"

namespace orvane {
namespace {

// Content that counts how many of its kind have been freed.
struct TPart {
  TPart(int AId, int& Freed) : Id(AId), FFreed(Freed) {}
  ~TPart() { ++FFreed; }
  int Id;
  int& FFreed;
};

std::vector<int> Ids(const TList<void*>& Contents) {
  std::vector<int> ids;
  for (void* c : Contents) ids.push_back(static_cast<TPart*>(c)->Id);
  std::sort(ids.begin(), ids.end());
  return ids;
}

// Entries all at one depth; structure nodes with 2 to 4 children and no content, each range
// holding its children's; contents exactly those expected.
void ExpectSound(const T2DRList& List, std::vector<int> Expected) {
  const auto* top = dynamic_cast<const TRRTree2D*>(List.GetTopNode());
  ASSERT_EQ(top == nullptr, List.GetCount() == 0);
  ASSERT_EQ(List.GetCount(), static_cast<int>(Expected.size()));
  if (top == nullptr) return;
  ASSERT_EQ(top->GetParent(), nullptr);
  int entryDepth = -1;
  std::vector<const TRRTree2D*> stack{top};
  while (!stack.empty()) {
    const TRRTree2D* node = stack.back();
    stack.pop_back();
    if (node->ChildCount() == 0) {
      ASSERT_NE(node->GetContent(), nullptr);
      if (entryDepth < 0) entryDepth = node->GetHeight();
      ASSERT_EQ(node->GetHeight(), entryDepth) << "entries at different levels";
      continue;
    }
    ASSERT_EQ(node->GetContent(), nullptr);
    ASSERT_GE(node->ChildCount(), 2);
    ASSERT_LE(node->ChildCount(), 4);
    for (int i = 0; i < node->ChildCount(); ++i) {
      const TRRTree2D* child = node->Child(i);
      ASSERT_EQ(child->GetParent(), node);
      ASSERT_EQ(node->GetRange().ExtendedRect(child->GetRange()), node->GetRange());
      stack.push_back(child);
    }
  }
  TList<void*> all;
  List.PickUpAllContents(all);
  std::sort(Expected.begin(), Expected.end());
  ASSERT_EQ(Ids(all), Expected);
}

TEST(ClassicRTree, GrowsSplitsAndCollapsesAsStated) {
  int freed = 0;
  T2DRList list(true);
  classic::TRTree* e0 = list.InsertOneNode(std::make_unique<TRRTree2D>(TRect2D(0, 0, 1, 1), new TPart(0, freed)));
  EXPECT_EQ(list.GetTopNode(), e0);  // the first entry is the top itself
  classic::TRTree* e1 = list.InsertOneNode(std::make_unique<TRRTree2D>(TRect2D(5, 5, 6, 6), new TPart(1, freed)));
  classic::TRTree* top = list.GetTopNode();
  EXPECT_EQ(top->GetContent(), nullptr);
  EXPECT_EQ(top->ChildCount(), 2);
  EXPECT_EQ(e1->GetHeight(), 1);
  EXPECT_EQ(dynamic_cast<TRRTree2D*>(top)->GetRange(), TRect2D(0, 0, 6, 6));

  // Deleting one of two entries leaves the other alone at the top; the next insertion
  // builds a new structure node on it.
  list.DeleteOneNode(e1);
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(list.GetTopNode(), e0);
  EXPECT_EQ(e0->GetParent(), nullptr);
  for (int i = 1; i <= 4; ++i) {
    list.InsertOneNode(std::make_unique<TRRTree2D>(TRect2D(2.0 * i, 0, 2.0 * i + 1, 1), new TPart(i, freed)));
  }
  // The fifth entry under one node splits it into 3 and 2; the top node stays the same object.
  top = list.GetTopNode();
  ASSERT_EQ(top->ChildCount(), 2);
  std::vector<int> sizes{top->GetChildren()[0]->ChildCount(), top->GetChildren()[1]->ChildCount()};
  std::sort(sizes.begin(), sizes.end());
  EXPECT_EQ(sizes, (std::vector<int>{2, 3}));
  ExpectSound(list, {0, 1, 2, 3, 4});

  // Queries touch within 1e-6.
  TList<void*> hits;
  list.PickUpContents(TRect2D(3 + 5e-7, 0.5, 3.9, 0.6), hits);
  EXPECT_EQ(Ids(hits), (std::vector<int>{1}));
  hits.Clear();
  list.PickUpContents(TRect2D(3 + 2e-6, 0.5, 3.9, 0.6), hits);
  EXPECT_TRUE(hits.IsEmpty());

  // Misuse is refused and changes nothing.
  TRRTree2D loose(TRect2D(0, 0, 1, 1));
  EXPECT_THROW(list.InsertOneNode(&loose), EParamError);  // no content
  EXPECT_THROW(list.InsertOneNode(e0), EParamError);      // already in the tree
  EXPECT_THROW(list.DeleteOneNode(top), EParamError);     // a structure node
  ExpectSound(list, {0, 1, 2, 3, 4});

  while (list.GetCount() > 0) {
    classic::TRTree* victim = list.GetTopNode();
    while (victim->ChildCount() > 0) victim = victim->GetChildren()[0];
    list.DeleteOneNode(victim);
  }
  EXPECT_EQ(list.GetTopNode(), nullptr);
  hits.Clear();
  list.PickUpAllContents(hits);
  list.PickUpContents(TRect2D(-1e9, -1e9, 1e9, 1e9), hits);
  EXPECT_TRUE(hits.IsEmpty());
  EXPECT_EQ(freed, 6);  // every content made, the first entry 1 included
}

TEST(ClassicRTree, MatchesBruteForceThroughMixedChanges) {
  std::mt19937 rng(99);
  std::uniform_int_distribution<int> pos(0, 60);
  std::uniform_int_distribution<int> size(0, 4);
  int freed = 0;
  {
    T2DRList list(true);
    std::vector<std::pair<classic::TRTree*, TRect2D>> held;
    int next = 0;
    for (int step = 0; step < 3000; ++step) {
      if (held.empty() || std::uniform_int_distribution<int>(0, 99)(rng) < 60) {
        const double x = pos(rng);
        const double y = pos(rng);
        const TRect2D box(x, y, x + size(rng), y + size(rng));
        held.emplace_back(list.InsertOneNode(std::make_unique<TRRTree2D>(box, new TPart(next++, freed))), box);
      } else {
        const std::size_t k = std::uniform_int_distribution<std::size_t>(0, held.size() - 1)(rng);
        list.DeleteOneNode(held[k].first);
        held.erase(held.begin() + static_cast<std::ptrdiff_t>(k));
      }
      std::vector<int> ids;
      for (const auto& item : held) ids.push_back(static_cast<TPart*>(item.first->GetContent())->Id);
      ASSERT_NO_FATAL_FAILURE(ExpectSound(list, ids)) << "step " << step;
      const double x = pos(rng);
      const double y = pos(rng);
      const TRect2D region(x, y, x + size(rng), y + size(rng));
      TList<void*> hits;
      list.PickUpContents(region, hits);
      std::vector<int> expected;
      for (const auto& [node, box] : held) {
        if (box.RelationWithRect(region, 1e-6) != 0) expected.push_back(static_cast<TPart*>(node->GetContent())->Id);
      }
      std::sort(expected.begin(), expected.end());
      ASSERT_EQ(Ids(hits), expected) << "step " << step;
    }
    EXPECT_EQ(freed, next - static_cast<int>(held.size()));
  }
  // The owning list frees what it still holds.
  EXPECT_GT(freed, 0);
}

}  // namespace
}  // namespace orvane
