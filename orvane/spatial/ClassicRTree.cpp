#include "orvane/spatial/ClassicRTree.h"

#include <cmath>
#include <deque>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane::classic {

int TRTree::GetHeight() const {
  int height = 0;
  for (const TRTree* p = FParent; p != nullptr; p = p->FParent) ++height;
  return height;
}

void TRTree::Hang(TRTree* Parent, TRTree* Child) {
  Parent->FChildren.Add(Child);
  Child->FParent = Parent;
}

void TRTree::RenewUpward() {
  for (TRTree* node = this; node != nullptr; node = node->FParent) node->RenewRange();
}

void TRTree::FreeNode(bool FreeContent) {
  if (FreeContent && FContent != nullptr && FFreeContent != nullptr) FFreeContent(FContent);
  delete this;
}

void TRTree::DestroyAll(bool FreeContent) {
  if (FParent != nullptr) FParent->FChildren.Remove(this);
  for (TRTree* child : FChildren) {
    child->FParent = nullptr;
    child->DestroyAll(FreeContent);
  }
  FChildren.Clear();
  FreeNode(FreeContent);
}

TRTree* TRTree::Insert(TRTree* Root) {
  if (Root->FParent == nullptr && Root->FChildren.IsEmpty()) {
    // A lone entry at the top: both entries go under a new structure node.
    TRTree* top = New().release();
    top->HangChild(Root);
    top->HangChild(this);
    top->RenewRange();
    return top;
  }
  // A split below the top keeps the top node itself, so Root stays the top.
  InsertBelow(Root);
  return Root;
}

void TRTree::InsertBelow(TRTree* Node) {
  for (;;) {
    if (Node->FChildren.First()->FContent != nullptr) {
      Node->HangChild(this);
      if (Node->ChildCount() > Node->MaxChildCount()) {
        Node->QuadraticSplit();
      } else {
        Node->RenewUpward();
      }
      return;
    }
    // The child whose union with this entry grows this entry least; the first on a tie.
    TRTree* best = Node->FChildren.First();
    double bestGrowth = Judgement(*best, *this);
    for (int i = 1; i < Node->ChildCount(); ++i) {
      TRTree* child = Node->FChildren[i];
      const double growth = Judgement(*child, *this);
      if (growth < bestGrowth) {
        bestGrowth = growth;
        best = child;
      }
    }
    Node = best;
  }
}

void TRTree::QuadraticSplit() {
  TRTree* left = nullptr;
  TRTree* right = nullptr;
  ChooseSeeds(left, right);
  const int full = MaxChildCount() - MinChildCount() + 1;
  const std::vector<TRTree*> rest = FChildren.ToArray();
  // The measure looks at this whole node, not at the child placed, so one group takes
  // children until it is full and the other takes the remainder.
  for (std::size_t i = 0; i < rest.size(); ++i) {
    const double d1 = Judgement(*this, *right->FChildren.First());
    const double d2 = Judgement(*this, *left->FChildren.First());
    TRTree* to = d2 > d1 ? right : left;
    TRTree* other = d2 > d1 ? left : right;
    to->HangChild(rest[i]);
    if (to->ChildCount() >= full) {
      for (++i; i < rest.size(); ++i) other->HangChild(rest[i]);
      break;
    }
  }
  left->RenewRange();
  right->RenewRange();
  DoSplit(left, right);
}

void TRTree::DoSplit(TRTree* Left, TRTree* Right) {
  FChildren.Clear();
  TRTree* parent = FParent;
  if (parent == nullptr) {
    // The top node stays the same object, so the caller's reference to it stays good.
    HangChild(Left);
    HangChild(Right);
    RenewRange();
    return;
  }
  parent->FChildren.Remove(this);
  FParent = nullptr;
  parent->HangChild(Left);
  parent->HangChild(Right);
  if (parent->ChildCount() > parent->MaxChildCount()) {
    parent->QuadraticSplit();
  } else {
    parent->RenewUpward();
  }
  delete this;
}

void TRTree::CollectEntries(TRTrees& Entries) {
  if (FChildren.IsEmpty()) return;
  if (FChildren.First()->FContent != nullptr) {
    for (TRTree* child : FChildren) {
      child->FParent = nullptr;
      Entries.Add(child);
    }
    FChildren.Clear();
    return;
  }
  for (TRTree* child : FChildren) child->CollectEntries(Entries);
}

TRTree* TRTree::Delete(bool FreeContent) {
  TRTree* top = this;
  while (top->FParent != nullptr) top = top->FParent;
  if (FContent == nullptr) return top;
  if (this == top) {
    FreeNode(FreeContent);
    return nullptr;
  }
  // Cut off the highest ancestor that would underflow.
  TRTree* cut = this;
  TRTree* parent = FParent;
  while (parent->FParent != nullptr && parent->ChildCount() <= parent->MinChildCount()) {
    cut = parent;
    parent = parent->FParent;
  }
  parent->FChildren.Remove(cut);
  cut->FParent = nullptr;
  if (cut != this) {
    FParent->FChildren.Remove(this);
    FParent = nullptr;
    FreeNode(FreeContent);
  }
  // A top node left with one child gives way to it, which lowers the tree; one left with
  // none leaves the tree empty until the cut entries return.
  if (parent == top && top->ChildCount() == 0) {
    delete top;
    top = nullptr;
  }
  while (top != nullptr && top->ChildCount() == 1 && parent == top) {
    TRTree* only = top->FChildren.First();
    top->FChildren.Clear();
    delete top;
    only->FParent = nullptr;
    top = only;
    parent = only;
  }
  TRTrees entries;
  cut->CollectEntries(entries);
  cut->DestroyAll(FreeContent);
  for (TRTree* entry : entries) top = top == nullptr ? entry : entry->Insert(top);
  return top;
}

TRRTree2D* TRRTree2D::Child(int Index) const { return dynamic_cast<TRRTree2D*>(FChildren[Index]); }

TRect2D TRRTree2D::CheckedRange(const TRect2D& ARange) {
  if (internal::HasNaN(ARange)) throw EParamError("[Error] TRRTree2D.Create: 参数错误");
  return ARange;
}

std::unique_ptr<TRTree> TRRTree2D::New() const { return std::make_unique<TRRTree2D>(TRect2D::Invalid()); }

namespace {
const TRect2D& RangeOf(const TRTree& Node) {
  const auto* node = dynamic_cast<const TRRTree2D*>(&Node);
  Assert(node != nullptr, "[Assert] TRRTree2D.Judgement: 节点类型错误", "RTree");
  return node->GetRange();
}
}  // namespace

double TRRTree2D::Judgement(const TRTree& A, const TRTree& B) const {
  const TRect2D& b = RangeOf(B);
  return RangeOf(A).ExtendedRect(b).AreaAbs() - b.AreaAbs();
}

void TRRTree2D::ChooseSeeds(TRTree*& Left, TRTree*& Right) {
  // Without any pair above the starting value (areas beyond its reach) the first pair wins.
  double worst = -9223372036854775808.0;
  int seedI = 0;
  int seedJ = 1;
  for (int i = 0; i < ChildCount(); ++i) {
    const TRect2D& a = RangeOf(*FChildren[i]);
    for (int j = i + 1; j < ChildCount(); ++j) {
      const TRect2D& b = RangeOf(*FChildren[j]);
      const double waste = a.ExtendedRect(b).AreaAbs() - a.AreaAbs() - b.AreaAbs();
      if (waste > worst) {
        worst = waste;
        seedI = i;
        seedJ = j;
      }
    }
  }
  // j first, so that i keeps its index.
  TRTree* childJ = FChildren[seedJ];
  FChildren.Delete(seedJ);
  TRTree* childI = FChildren[seedI];
  FChildren.Delete(seedI);
  Right = New().release();
  Hang(Right, childJ);
  Left = New().release();
  Hang(Left, childI);
}

void TRRTree2D::RenewRange() {
  if (FChildren.IsEmpty()) return;
  FRange = RangeOf(*FChildren.First());
  for (int i = 1; i < ChildCount(); ++i) FRange.Extend(RangeOf(*FChildren[i]));
}

void TRRTree2D::PickUpContents(const TRect2D& ARange, TList<void*>& Contents) const {
  std::deque<const TRRTree2D*> queue{this};
  while (!queue.empty()) {
    const TRRTree2D* node = queue.front();
    queue.pop_front();
    if (node->FRange.RelationWithRect(ARange, DefaultTol) == 0) continue;
    if (node->GetContent() != nullptr) Contents.Add(node->GetContent());
    for (int i = 0; i < node->ChildCount(); ++i) queue.push_back(&dynamic_cast<const TRRTree2D&>(*node->FChildren[i]));
  }
}

void TRList::InsertOneNode(TRTree* ANode) {
  if (ANode == nullptr || ANode->GetContent() == nullptr || ANode->GetParent() != nullptr || ANode->ChildCount() != 0 ||
      ANode == FTopNode)
    throw EParamError("[Error] TRList.InsertOneNode: 参数错误");
  FTopNode = FCount > 0 ? ANode->Insert(FTopNode) : ANode;
  ++FCount;
}

TRTree* TRList::InsertOneNode(std::unique_ptr<TRTree> ANode) {
  InsertOneNode(ANode.get());
  return ANode.release();
}

void TRList::DeleteOneNode(TRTree* ANode) {
  bool valid = ANode != nullptr && ANode->GetContent() != nullptr && ANode->ChildCount() == 0;
  if (valid) {
    const TRTree* top = ANode;
    while (top->GetParent() != nullptr) top = top->GetParent();
    valid = top == FTopNode;
  }
  if (!valid) throw EParamError("[Error] TRList.DeleteOneNode: 参数错误");
  FTopNode = ANode->Delete(FOwn);
  --FCount;
}

void TRList::Clear() {
  if (FCount > 0 && FTopNode != nullptr) FTopNode->DestroyAll(FOwn);
  FTopNode = nullptr;
  FCount = 0;
}

namespace {
void PickUpAll(const TRTree& Node, TList<void*>& Contents) {
  for (const TRTree* child : Node.GetChildren()) PickUpAll(*child, Contents);
  if (Node.GetContent() != nullptr) Contents.Add(Node.GetContent());
}
}  // namespace

void TRList::PickUpAllContents(TList<void*>& Contents) const {
  if (FTopNode != nullptr) PickUpAll(*FTopNode, Contents);
}

void T2DRList::PickUpContents(const TRect2D& ARange, TList<void*>& Contents) const {
  if (const auto* top = dynamic_cast<const TRRTree2D*>(FTopNode)) top->PickUpContents(ARange, Contents);
}

}  // namespace orvane::classic
