#pragma once
// How closed outlines of any kind nest by containment: the one nesting behind the
// containment trees of vertex and of mixed outlines. An outline kind takes part through a
// small set of static functions (see NestingOps); the order, the vote and the handling of
// outlines outside all others are the same for every kind.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/spatial/GenericRTree.h"
#include "orvane/vertex/MultiTree.h"

namespace orvane::internal {

// What the nesting needs of an outline kind TOps::TOutline. An outline is read as closed
// and made of PieceCount pieces (edges, segments); piece I starts at VotePoint(I) and has
// MidPoint(I) on its way. Relation gives the ordinal of TShapeRelation at the nesting
// tolerance. Check raises EParamError for an outline that is not finite; BoundsNothing
// tells an outline that encloses no region, which is passed over.
template <class TOps>
concept NestingOps = requires(const typename TOps::TOutline& O, const TPoint2D& Pt, std::size_t I) {
  {TOps::Check(O)};
  { TOps::BoundsNothing(O) } -> std::convertible_to<bool>;
  { TOps::AbsArea(O) } -> std::convertible_to<double>;
  { TOps::Box(O) } -> std::convertible_to<TRect2D>;
  { TOps::PieceCount(O) } -> std::convertible_to<std::size_t>;
  { TOps::VotePoint(O, I) } -> std::convertible_to<TPoint2D>;
  { TOps::MidPoint(O, I) } -> std::convertible_to<TPoint2D>;
  { TOps::Relation(O, Pt) } -> std::convertible_to<int>;
  { TOps::Clone(O) } -> std::convertible_to<std::unique_ptr<typename TOps::TOutline>>;
};

inline constexpr double NestTol = 1e-6;

// At most this many pieces, spread evenly, vote, so that a long outline costs a bounded
// number of passes over the other.
inline constexpr std::size_t MaxNestingVotes = 64;

// Whether Inner lies inside Outer. The first point alone would misjudge outlines that touch
// (a hole whose first point sits on the outline, neighbours sharing a corner), so only
// piece starts of Inner that are not on Outer count, and they vote: outlines that do not
// cross agree on every vote, and an outline that crosses (a defect hole sticking out of a
// hide) goes where most of its pieces start, so the part sticking out stays void instead of
// becoming material of its own. Ties go inside; the count stops as soon as the rest cannot
// change the outcome. When no voting start is off Outer, as many piece midpoints decide; an
// outline wholly on the other's boundary encloses nothing the other does not and counts
// inside it, so a duplicate nests under its twin and the parity cancels both.
template <NestingOps TOps>
bool LiesInside(const typename TOps::TOutline& Inner, const typename TOps::TOutline& Outer) {
  constexpr int on = static_cast<int>(TShapeRelation::srOn);
  constexpr int in = static_cast<int>(TShapeRelation::srIn);
  const std::size_t n = TOps::PieceCount(Inner);
  if (n == 0) return true;
  const std::size_t step = (n + MaxNestingVotes - 1) / MaxNestingVotes;
  const std::size_t votes = (n + step - 1) / step;
  std::size_t inside = 0, outside = 0;
  for (std::size_t k = 0; k < votes; ++k) {
    const int r = TOps::Relation(Outer, TOps::VotePoint(Inner, k * step));
    if (r == in)
      ++inside;
    else if (r != on)
      ++outside;
    const std::size_t rest = votes - k - 1;
    if (inside >= outside + rest || outside > inside + rest) break;
  }
  if (inside + outside > 0) return inside >= outside;
  for (std::size_t i = 0; i < n; i += step) {
    const int r = TOps::Relation(Outer, TOps::MidPoint(Inner, i));
    if (r != on) return r == in;
  }
  return true;
}

// The containment tree of clones of Outlines (which stay the caller's), or nil when no
// outline bounds a region. Null items and outlines that bound nothing are passed over; an
// outline that fails Check raises its error and builds nothing.
//
// Outlines go in by descending absolute area (a stable sort: equal areas keep their input
// order), so an outline can only lie inside one placed before it; each hangs under the
// smallest placed outline that holds it, tested for every outline alike, the largest
// included. An outline outside all others is material at depth 0; when there are several
// such, the root holds no outline (nil data) at depth -1 with them as its children, so
// that none of them is taken for a hole of an unrelated outline. Each node's depth is final
// (TMultiTree::SetRoot would set the root's to 0: use AdoptNesting).
template <NestingOps TOps>
std::unique_ptr<TTreeNode<typename TOps::TOutline*>> NestOutlines(const TList<typename TOps::TOutline*>& Outlines) {
  using TOutline = typename TOps::TOutline;
  using TNode = TTreeNode<TOutline*>;
  struct TEntry {
    const TOutline* Outline;
    double Area;
    TRect2D Box;
  };
  std::vector<TEntry> entries;
  entries.reserve(static_cast<std::size_t>(Outlines.Count()));
  for (const TOutline* o : Outlines) {
    if (o == nullptr) continue;
    TOps::Check(*o);
    if (TOps::BoundsNothing(*o)) continue;
    entries.push_back({o, TOps::AbsArea(*o), TOps::Box(*o)});
  }
  if (entries.empty()) return nullptr;
  // Stable: outlines of equal area keep their input order, so the same input always gives
  // the same tree (the earlier of two duplicates becomes the parent).
  std::stable_sort(entries.begin(), entries.end(), [](const TEntry& A, const TEntry& B) { return A.Area > B.Area; });

  // Placed nodes by index; a box index finds the few placed outlines whose boxes meet the
  // next one (not only those that hold it: an outline that crosses may still belong
  // inside), so a node with many children costs no scan of its siblings. Placed later means
  // smaller, so among the outlines that hold the next one the one placed last is the
  // deepest.
  std::vector<TNode*> placed;
  placed.reserve(entries.size());
  std::vector<TNode*> tops;
  TRTree<int> index(16);
  std::vector<int> hits;
  std::unique_ptr<TNode> root;
  try {
    for (const TEntry& e : entries) {
      hits.clear();
      index.Search(e.Box, hits, NestTol);
      std::sort(hits.begin(), hits.end(), std::greater<int>());
      TNode* parent = nullptr;
      for (const int h : hits) {
        TNode* candidate = placed[static_cast<std::size_t>(h)];
        if (LiesInside<TOps>(*e.Outline, *candidate->GetData())) {
          parent = candidate;
          break;
        }
      }
      std::unique_ptr<TOutline> copy = TOps::Clone(*e.Outline);
      auto node = std::make_unique<TNode>(copy.get(), 0);
      (void)copy.release();
      TNode* raw = node.release();
      placed.push_back(raw);
      if (parent != nullptr)
        parent->AddChildNode(raw);
      else
        tops.push_back(raw);
      index.Insert(static_cast<int>(placed.size() - 1), e.Box);
    }
    if (tops.size() == 1) return std::unique_ptr<TNode>(tops.front());
    root = std::make_unique<TNode>(nullptr, -1);
    for (TNode* top : tops) root->AddChildNode(top);
  } catch (...) {
    root.reset();  // a node frees its child list, not the children: they are freed below
    for (TNode* node : placed) {
      delete node->GetData();
      delete node;
    }
    throw;
  }
  return root;
}

// NestOutlines into Tree, which must be empty and own no data yet; a root without outline
// keeps its depth -1.
template <NestingOps TOps>
void AdoptNesting(TMultiTree<typename TOps::TOutline*>& Tree, const TList<typename TOps::TOutline*>& Outlines) {
  std::unique_ptr<TTreeNode<typename TOps::TOutline*>> root = NestOutlines<TOps>(Outlines);
  if (root == nullptr) return;
  const bool bare = root->GetData() == nullptr;
  Tree.SetRoot(std::move(root));
  if (bare) Tree.GetRoot()->SetDepth(-1);
}

}  // namespace orvane::internal
