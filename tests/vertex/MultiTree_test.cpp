#include "orvane/vertex/MultiTree.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace orvane {
namespace {

// Counts the nodes that have been freed.
struct TCountedNode : TTreeNode<int> {
  TCountedNode(int Data, int& Freed) : TTreeNode<int>(Data), FFreed(Freed) {}
  ~TCountedNode() override { ++FFreed; }
  int& FFreed;
};

std::vector<int> Values(const TList<TTreeNode<int>*>& Nodes) {
  std::vector<int> values;
  for (const TTreeNode<int>* node : Nodes) values.push_back(node->GetData());
  return values;
}

// 0 -> (1 -> (3, 4), 2 -> (5))
std::unique_ptr<TMultiTree<int>> SampleTree(int& Freed) {
  auto tree = std::make_unique<TMultiTree<int>>();
  tree->SetRoot(std::make_unique<TCountedNode>(0, Freed));
  TTreeNode<int>* root = tree->GetRoot();
  TTreeNode<int>* a = tree->AddChildNode(*root, std::make_unique<TCountedNode>(1, Freed));
  TTreeNode<int>* b = tree->AddChildNode(*root, std::make_unique<TCountedNode>(2, Freed));
  tree->AddChildNode(*a, std::make_unique<TCountedNode>(3, Freed));
  tree->AddChildNode(*a, std::make_unique<TCountedNode>(4, Freed));
  tree->AddChildNode(*b, std::make_unique<TCountedNode>(5, Freed));
  return tree;
}

TEST(MultiTree, DepthsAndTraversalOrders) {
  TTreeNode<int> loose(7);
  EXPECT_EQ(loose.GetDepth(), -1);

  int freed = 0;
  {
    std::unique_ptr<TMultiTree<int>> owner = SampleTree(freed);
    TMultiTree<int>& tree = *owner;
    TTreeNode<int>* root = tree.GetRoot();
    TTreeNode<int>* a = tree.NodeOfData(1);
    TTreeNode<int>* b = tree.NodeOfData(2);
    TTreeNode<int>* c = tree.NodeOfData(3);
    EXPECT_EQ(root->GetDepth(), 0);
    EXPECT_EQ(c->GetDepth(), 2);
    EXPECT_EQ(c->GetParent(), a);
    EXPECT_FALSE(a->IsLeaf());

    EXPECT_EQ(Values(*tree.HierarchicalTraversal()), (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(Values(*tree.PreorderTraversal()), (std::vector<int>{0, 1, 3, 4, 2, 5}));
    EXPECT_EQ(Values(*tree.PostOrderTraversal()), (std::vector<int>{3, 4, 1, 5, 2, 0}));
    EXPECT_EQ(Values(*b->PostOrderTraversal()), (std::vector<int>{5, 2}));

    // A node in a tree, or one that would close a cycle, cannot be hung again.
    EXPECT_THROW(b->AddChildNode(c), EParamError);
    EXPECT_THROW(c->AddChildNode(root), EParamError);
    EXPECT_EQ(Values(*tree.PreorderTraversal()), (std::vector<int>{0, 1, 3, 4, 2, 5}));
  }
  EXPECT_EQ(freed, 6);
}

TEST(MultiTree, NodeOfDataFindsTheFirstInLevelOrder) {
  TMultiTree<int> tree(1);
  TTreeNode<int>* a = tree.AddChildNode(*tree.GetRoot(), std::make_unique<TTreeNode<int>>(2));
  tree.AddChildNode(*a, std::make_unique<TTreeNode<int>>(9));  // first 9 in preorder, deeper
  TTreeNode<int>* shallow = tree.AddChildNode(*tree.GetRoot(), std::make_unique<TTreeNode<int>>(9));
  EXPECT_EQ(tree.NodeOfData(9), shallow);
  EXPECT_EQ(tree.NodeOfData(4), nullptr);
}

TEST(MultiTree, EmptyTreesAndFreeing) {
  TMultiTree<int> empty;
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(empty.HierarchicalTraversal()->Count(), 0);
  EXPECT_EQ(empty.PreorderTraversal()->Count(), 0);
  EXPECT_EQ(empty.PostOrderTraversal()->Count(), 0);
  EXPECT_EQ(empty.NodeOfData(0), nullptr);

  // Without recursion only the children go; the grandchildren are left detached.
  int freed = 0;
  TCountedNode root(0, freed);
  auto* child = new TCountedNode(1, freed);
  auto* grandChild = new TCountedNode(2, freed);
  root.AddChildNode(child);
  child->AddChildNode(grandChild);
  root.ClearFreeChildNodes(false);
  EXPECT_EQ(freed, 1);
  EXPECT_TRUE(root.IsLeaf());
  EXPECT_EQ(grandChild->GetParent(), nullptr);
  delete grandChild;

  // An owning list of trees frees every node of every tree; a deep chain frees without
  // recursion.
  freed = 0;
  {
    TMultiTreeList<int> list(true);
    list.Add(SampleTree(freed));
    auto chain = std::make_unique<TMultiTree<int>>();
    chain->SetRoot(std::make_unique<TCountedNode>(0, freed));
    TTreeNode<int>* tip = chain->GetRoot();
    for (int i = 1; i < 200000; ++i) tip = chain->AddChildNode(*tip, std::make_unique<TCountedNode>(i, freed));
    list.Add(std::move(chain));
  }
  EXPECT_EQ(freed, 6 + 200000);
}

}  // namespace
}  // namespace orvane
