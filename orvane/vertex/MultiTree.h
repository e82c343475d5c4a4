#pragma once
// The kernel's general tree: TTreeNode<T>, a node with a value, a parent and ordered
// children; TMultiTree<T>, a tree that owns its nodes; TMultiTreeList<T>, a list of trees.
//
// A node never owns its value. For class types instantiate with a pointer
// (TMultiTree<TVPolyline2D*>): the value is then a reference to an object that someone else
// frees, which is what a derived tree that owns its data does in its own destructor.

#include <cstddef>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/List.h"

namespace orvane {

template <class T>
class TTreeNode {
 public:
  using TNodeList = TList<TTreeNode<T>*>;

  // A loose node: depth -1 until it is added to a parent.
  explicit TTreeNode(const T& Data) : FData(Data) {}
  TTreeNode(const T& Data, int Depth) : FData(Data), FDepth(Depth) {}
  // Frees the child list, not the children: whoever owns the tree frees them.
  virtual ~TTreeNode() = default;
  TTreeNode(const TTreeNode&) = delete;
  TTreeNode& operator=(const TTreeNode&) = delete;

  const T& GetData() const { return FData; }
  T& GetData() { return FData; }
  void SetData(const T& Value) { FData = Value; }
  int GetDepth() const { return FDepth; }
  void SetDepth(int Value) { FDepth = Value; }
  TTreeNode<T>* GetParent() const { return FParent; }
  const TNodeList& GetChildNodes() const { return FChildNodes; }
  int ChildCount() const { return FChildNodes.Count(); }
  TTreeNode<T>* ChildNode(int Index) const { return FChildNodes[Index]; }

  virtual bool IsRoot() const { return FParent == nullptr; }
  virtual bool IsLeaf() const { return FChildNodes.IsEmpty(); }

  // Appends ChildNode, making this node its parent and its depth this node's plus one. A node
  // that already has a parent, or that would close a cycle, is refused: either would leave
  // a node reachable twice.
  virtual void AddChildNode(TTreeNode<T>* ChildNode) {
    if (ChildNode == nullptr) throw EParamError("[Error] TTreeNode<T>.AddChildNode: 参数错误");
    if (ChildNode->FParent != nullptr)
      throw EParamError("[Error] TTreeNode<T>.AddChildNode: the node already has a parent");
    // Only a node with children can be a proper ancestor of this one.
    if (ChildNode == this) throw EParamError("[Error] TTreeNode<T>.AddChildNode: the node is an ancestor");
    for (const TTreeNode<T>* p = ChildNode->FChildNodes.IsEmpty() ? nullptr : this; p != nullptr; p = p->FParent) {
      if (p == ChildNode) throw EParamError("[Error] TTreeNode<T>.AddChildNode: the node is an ancestor");
    }
    FChildNodes.Add(ChildNode);
    ChildNode->FParent = this;
    ChildNode->FDepth = FDepth + 1;
  }

  // Frees every child and empties the child list; with DoesRecursive each child's subtree
  // goes first. Without it the grandchildren are left to whoever holds them, detached from
  // the freed children.
  void ClearFreeChildNodes(bool DoesRecursive) {
    std::vector<TTreeNode<T>*> children = FChildNodes.ToArray();
    FChildNodes.Clear();
    for (TTreeNode<T>* child : children) {
      child->FParent = nullptr;
      if (!DoesRecursive) {
        for (TTreeNode<T>* grandChild : child->FChildNodes) grandChild->FParent = nullptr;
        delete child;
        continue;
      }
      // Descendants before their ancestors, without recursion, so deep trees are safe.
      std::unique_ptr<TNodeList> subtree = child->PostOrderTraversal();
      for (TTreeNode<T>* node : *subtree) delete node;
    }
  }

  // The subtree's nodes level by level from this node, each level in child order.
  virtual std::unique_ptr<TNodeList> HierarchicalTraversal() {
    auto result = std::make_unique<TNodeList>();
    std::deque<TTreeNode<T>*> queue{this};
    while (!queue.empty()) {
      TTreeNode<T>* node = queue.front();
      queue.pop_front();
      result->Add(node);
      for (TTreeNode<T>* child : node->FChildNodes) queue.push_back(child);
    }
    return result;
  }
  // Each node before its children, the children in order.
  virtual std::unique_ptr<TNodeList> PreorderTraversal() {
    auto result = std::make_unique<TNodeList>();
    std::vector<TTreeNode<T>*> stack{this};
    while (!stack.empty()) {
      TTreeNode<T>* node = stack.back();
      stack.pop_back();
      result->Add(node);
      const std::vector<TTreeNode<T>*>& children = node->FChildNodes.List();
      for (auto it = children.rbegin(); it != children.rend(); ++it) stack.push_back(*it);
    }
    return result;
  }
  // Each node after all its descendants: the reverse of a walk that visits a node first and
  // its children from the last to the first.
  virtual std::unique_ptr<TNodeList> PostOrderTraversal() {
    std::vector<TTreeNode<T>*> walk;
    std::vector<TTreeNode<T>*> stack{this};
    while (!stack.empty()) {
      TTreeNode<T>* node = stack.back();
      stack.pop_back();
      walk.push_back(node);
      for (TTreeNode<T>* child : node->FChildNodes) stack.push_back(child);
    }
    auto result = std::make_unique<TNodeList>();
    result->SetCapacity(static_cast<int>(walk.size()));
    for (auto it = walk.rbegin(); it != walk.rend(); ++it) result->Add(*it);
    return result;
  }

 protected:
  T FData;
  int FDepth = -1;
  TTreeNode<T>* FParent = nullptr;
  TNodeList FChildNodes;
};

template <class T>
class TMultiTree {
 public:
  using TNode = TTreeNode<T>;
  using TNodeList = typename TNode::TNodeList;

  TMultiTree() = default;
  explicit TMultiTree(const T& RootData) : FRoot(new TNode(RootData, 0)) {}
  virtual ~TMultiTree() { FreeNodes(); }
  TMultiTree(const TMultiTree&) = delete;
  TMultiTree& operator=(const TMultiTree&) = delete;

  bool IsEmpty() const { return FRoot == nullptr; }
  TNode* GetRoot() const { return FRoot; }
  // Frees the present nodes and takes ARoot, with its subtree, as the new root at depth 0.
  void SetRoot(std::unique_ptr<TNode> ARoot) {
    if (ARoot != nullptr && ARoot->GetParent() != nullptr)
      throw EParamError("[Error] TMultiTree<T>.SetRoot: the node already has a parent");
    FreeNodes();
    FRoot = ARoot.release();
    if (FRoot != nullptr) FRoot->SetDepth(0);
  }

  // The first node in hierarchical order whose value equals Data; nil if none.
  TNode* NodeOfData(const T& Data) const {
    if (FRoot == nullptr) return nullptr;
    std::unique_ptr<TNodeList> nodes = FRoot->HierarchicalTraversal();
    for (TNode* node : *nodes) {
      if (node->GetData() == Data) return node;
    }
    return nullptr;
  }

  // Hangs ChildNode under ParentNode, a node of this tree; the tree owns it from then on.
  // A node that already hangs in a tree, or this tree's own root, is refused and left to
  // its owner.
  virtual TNode* AddChildNode(TNode& ParentNode, std::unique_ptr<TNode> ChildNode) {
    TNode* child = ChildNode.get();
    if (child != nullptr && (child->GetParent() != nullptr || child == FRoot)) {
      (void)ChildNode.release();
      throw EParamError("[Error] TMultiTree<T>.AddChildNode: the node already belongs to a tree");
    }
    ParentNode.AddChildNode(child);
    return ChildNode.release();
  }

  // The root's traversals; the caller owns the list. An empty tree gives an empty list.
  virtual std::unique_ptr<TNodeList> HierarchicalTraversal() const {
    return FRoot != nullptr ? FRoot->HierarchicalTraversal() : std::make_unique<TNodeList>();
  }
  virtual std::unique_ptr<TNodeList> PreorderTraversal() const {
    return FRoot != nullptr ? FRoot->PreorderTraversal() : std::make_unique<TNodeList>();
  }
  virtual std::unique_ptr<TNodeList> PostOrderTraversal() const {
    return FRoot != nullptr ? FRoot->PostOrderTraversal() : std::make_unique<TNodeList>();
  }

 protected:
  void FreeNodes() {
    if (FRoot == nullptr) return;
    FRoot->ClearFreeChildNodes(true);
    delete FRoot;
    FRoot = nullptr;
  }

  TNode* FRoot = nullptr;
};

// A list of trees; an owning list frees its trees.
template <class T>
class TMultiTreeList : public TObjectList<TMultiTree<T>> {
 public:
  using TObjectList<TMultiTree<T>>::TObjectList;
};

}  // namespace orvane
