#pragma once
// The node-object R-tree: the caller makes one node per entry (its range and a reference to
// its content) and inserts it; the tree hangs entries under structure nodes with a fan-out
// of 2 to 4, and its top node changes as it grows and shrinks. TRList and T2DRList hold the
// top node for the caller.
//
// Naming: the generic index TRTree<T> (GenericRTree.h) and this tree's base class share the
// name TRTree, which C++ cannot give to a class template and a class in one namespace. This
// tree therefore lives in orvane::classic (orvane::classic::TRTree); its other names are
// brought into orvane as well: orvane::TRRTree2D, orvane::TRList, orvane::T2DRList,
// orvane::TRTrees.
//
// Content is any object of the caller's, held as an untyped reference: a node made from a
// C* remembers how to free a C, so that freeing contents (DestroyAll(true), an owning
// TRList) deletes it as what it is. Read it back with ContentAs<C>().

#include <cstddef>
#include <memory>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane::classic {

class TRTree;
// The children of a node; the list does not own them.
using TRTrees = TList<TRTree*>;

class ORVANE_API TRTree {
 public:
  // A structure node: no content.
  TRTree() = default;
  explicit TRTree(std::nullptr_t) {}
  template <class C>
  explicit TRTree(C* AContent) : FContent(AContent), FFreeContent(AContent != nullptr ? &FreeAs<C> : nullptr) {}
  // Frees the child list, not the children, and never the content.
  virtual ~TRTree() = default;
  TRTree(const TRTree&) = delete;
  TRTree& operator=(const TRTree&) = delete;

  // A node with content is an entry; one without is a structure node.
  void* GetContent() const { return FContent; }
  template <class C>
  C* ContentAs() const {
    return static_cast<C*>(FContent);
  }
  TRTree* GetParent() const { return FParent; }
  const TRTrees& GetChildren() const { return FChildren; }
  int ChildCount() const { return FChildren.Count(); }
  // The number of ancestors: 0 at the top node.
  int GetHeight() const;

  // An empty structure node of the receiver's class.
  virtual std::unique_ptr<TRTree> New() const = 0;
  // How much B's range grows if it takes in A's.
  virtual double Judgement(const TRTree& A, const TRTree& B) const = 0;
  // Takes two children out of this node and hangs each under a new structure node.
  virtual void ChooseSeeds(TRTree*& Left, TRTree*& Right) = 0;
  // Makes this node's range that of its children.
  virtual void RenewRange() = 0;
  virtual int MinChildCount() const { return 2; }
  virtual int MaxChildCount() const { return 4; }

  // Frees this node and its whole subtree, children first, and with FreeContent each
  // node's content. The node must not be used afterwards.
  void DestroyAll(bool FreeContent);
  // Called on a new entry with the present top node; returns the new top node. The entry
  // belongs to the tree from here on.
  TRTree* Insert(TRTree* Root);
  // Called on an entry of a tree: frees it (and with FreeContent its content) and returns
  // the new top node, nil when the tree has become empty. On a structure node nothing
  // changes and the top node is returned.
  TRTree* Delete(bool FreeContent);

 protected:
  // Appends Child and makes this node its parent.
  void HangChild(TRTree* Child) { Hang(this, Child); }
  static void Hang(TRTree* Parent, TRTree* Child);
  void QuadraticSplit();
  void DoSplit(TRTree* Left, TRTree* Right);
  // RenewRange on this node and each of its ancestors.
  void RenewUpward();
  // Frees the content if asked, then the node.
  void FreeNode(bool FreeContent);

  TRTrees FChildren;

 private:
  template <class C>
  static void FreeAs(void* Content) {
    delete static_cast<C*>(Content);
  }
  void InsertBelow(TRTree* Node);
  void CollectEntries(TRTrees& Entries);

  void* FContent = nullptr;
  void (*FFreeContent)(void*) = nullptr;
  TRTree* FParent = nullptr;
};

// A node whose range is a 2D box.
class ORVANE_API TRRTree2D : public TRTree {
 public:
  // A range with a NaN is refused with EParamError.
  explicit TRRTree2D(const TRect2D& ARange) : FRange(CheckedRange(ARange)) {}
  TRRTree2D(const TRect2D& ARange, std::nullptr_t) : FRange(CheckedRange(ARange)) {}
  template <class C>
  TRRTree2D(const TRect2D& ARange, C* AContent) : TRTree(AContent), FRange(CheckedRange(ARange)) {}

  const TRect2D& GetRange() const { return FRange; }
  // The child as a TRRTree2D; nil when it is of another class.
  TRRTree2D* Child(int Index) const;
  // Adds to Contents the content of every entry whose range meets ARange within 1e-6,
  // breadth first from this node.
  void PickUpContents(const TRect2D& ARange, TList<void*>& Contents) const;

  std::unique_ptr<TRTree> New() const override;
  double Judgement(const TRTree& A, const TRTree& B) const override;
  // The two children whose union wastes most area, the first pair on a tie.
  void ChooseSeeds(TRTree*& Left, TRTree*& Right) override;
  void RenewRange() override;

 protected:
  TRect2D FRange;

 private:
  static TRect2D CheckedRange(const TRect2D& ARange);
};

// Holds the top node of a tree and counts its entries. An owning list frees the contents
// with their nodes.
class ORVANE_API TRList {
 public:
  explicit TRList(bool Own) : FOwn(Own) {}
  virtual ~TRList() { Clear(); }
  TRList(const TRList&) = delete;
  TRList& operator=(const TRList&) = delete;

  bool GetOwn() const { return FOwn; }
  TRTree* GetTopNode() const { return FTopNode; }
  int GetCount() const { return FCount; }

  // Inserts an entry (a node with content, in no tree); the list's tree owns it from here
  // on. Anything else is refused with EParamError.
  void InsertOneNode(TRTree* ANode);
  TRTree* InsertOneNode(std::unique_ptr<TRTree> ANode);
  // Deletes an entry of this list's tree; a node that is not one is refused with EParamError.
  void DeleteOneNode(TRTree* ANode);
  void Clear();
  // Every content of the tree, children before their parent.
  void PickUpAllContents(TList<void*>& Contents) const;

 protected:
  bool FOwn;
  TRTree* FTopNode = nullptr;
  int FCount = 0;
};

class ORVANE_API T2DRList : public TRList {
 public:
  using TRList::TRList;
  // TRRTree2D::PickUpContents from the top node; nothing for an empty list.
  void PickUpContents(const TRect2D& ARange, TList<void*>& Contents) const;
};

}  // namespace orvane::classic

namespace orvane {
using classic::T2DRList;
using classic::TRList;
using classic::TRRTree2D;
using classic::TRTrees;
}  // namespace orvane
