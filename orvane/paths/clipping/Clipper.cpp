#include "orvane/paths/clipping/Clipper.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/internal/ClipperEngine.h"
#include "orvane/paths/clipping/internal/OffsetJob.h"

namespace orvane::Clipper {

using internal::FromEngine;
using internal::ToEngine;

// ---- TPolyNode / TPolyTree ------------------------------------------------------------------

TPolyNode::TPolyNode() = default;

TPolyNode::~TPolyNode() { ClearChilds(); }

void TPolyNode::ClearChilds() {
  // Breadth first through a queue, so that deep nesting never deepens the call stack.
  std::deque<std::unique_ptr<TPolyNode>> queue;
  for (auto& c : FChilds) queue.push_back(std::move(c));
  FChilds.clear();
  FChilds.shrink_to_fit();
  FChilds.reserve(16);
  while (!queue.empty()) {
    std::unique_ptr<TPolyNode> node = std::move(queue.front());
    queue.pop_front();
    for (auto& c : node->FChilds) queue.push_back(std::move(c));
    node->FChilds.clear();
  }
}

TPolyNode* TPolyNode::GetChild(int Index) const {
  if (Index < 0 || Index >= GetChildCount()) throw Exception(Format("TPolyNode range error: %d", Index));
  return FChilds[static_cast<std::size_t>(Index)].get();
}

bool TPolyNode::GetIsHole() const {
  bool result = true;
  for (const TPolyNode* node = FParent; node != nullptr; node = node->FParent) result = !result;
  return result;
}

TPolyNode* TPolyNode::GetNext() const {
  if (!FChilds.empty()) return FChilds.front().get();
  return GetNextSiblingUp();
}

TPolyNode* TPolyNode::GetNextSiblingUp() const {
  const TPolyNode* node = this;
  while (node->FParent != nullptr) {
    const TPolyNode* parent = node->FParent;
    if (node->FIndex + 1 < parent->GetChildCount())
      return parent->FChilds[static_cast<std::size_t>(node->FIndex + 1)].get();
    node = parent;
  }
  return nullptr;
}

TPolyNode* TPolyNode::AddChild(TPath64 Contour, bool IsOpen) {
  auto node = std::make_unique<TPolyNode>();
  node->FContour = std::move(Contour);
  node->FIsOpen = IsOpen;
  node->FParent = this;
  node->FTree = FTree;
  node->FIndex = GetChildCount();
  TPolyNode* raw = node.get();
  FChilds.push_back(std::move(node));
  if (FTree != nullptr) FTree->FAllNodes.push_back(raw);
  return raw;
}

void TPolyNode::Detach() {
  // Marks the subtree as no longer held by its tree (FTree := nullptr).
  std::vector<TPolyNode*> stack{this};
  while (!stack.empty()) {
    TPolyNode* n = stack.back();
    stack.pop_back();
    n->FTree = nullptr;
    for (auto& c : n->FChilds) stack.push_back(c.get());
  }
}

std::unique_ptr<TPolyNode> TPolyNode::RemoveChild(int Idx, bool DoesDestroy) {
  if (Idx < 0 || Idx >= GetChildCount()) return nullptr;
  const auto pos = FChilds.begin() + Idx;
  std::unique_ptr<TPolyNode> child = std::move(*pos);
  FChilds.erase(pos);
  for (std::size_t i = static_cast<std::size_t>(Idx); i < FChilds.size(); ++i) FChilds[i]->FIndex = static_cast<int>(i);
  child->FParent = nullptr;
  child->FIndex = 0;
  if (TPolyTree* tree = child->FTree) {
    child->Detach();
    std::erase_if(tree->FAllNodes, [](const TPolyNode* n) { return n->FTree == nullptr; });
  }
  if (DoesDestroy) return nullptr;  // the unique_ptr frees the subtree breadth first
  return child;
}

TPolyTree::TPolyTree() {
  FTree = this;
  FChilds.reserve(16);
}

TPolyTree::~TPolyTree() { Clear(); }

void TPolyTree::Clear() {
  for (TPolyNode* n : FAllNodes) n->FTree = nullptr;
  FAllNodes.clear();
  ClearChilds();
  FTree = this;
}

void TPolyTree::UpdateAllNodes() {
  std::vector<TPolyNode*> all;
  all.reserve(1000);
  for (auto& c : FChilds) all.push_back(c.get());
  for (std::size_t i = 0; i < all.size(); ++i)
    for (auto& c : all[i]->FChilds) all.push_back(c.get());
  all.shrink_to_fit();
  FAllNodes = std::move(all);
}

// ---- Tree filling from the engine ---------------------------------------------------------

namespace {

void FillTree(const ClipperLib::PolyTree& Source, TPolyTree& Target) {
  Target.Clear();
  std::vector<std::pair<const ClipperLib::PolyNode*, TPolyNode*>> level{{&Source, &Target}};
  // Breadth first, so that AllNodes comes out in the order UpdateAllNodes gives.
  for (std::size_t i = 0; i < level.size(); ++i) {
    const auto [src, dst] = level[i];
    for (const ClipperLib::PolyNode* c : src->Childs) {
      TPolyNode* node = dst->AddChild(FromEngine(c->Contour), c->IsOpen());
      level.emplace_back(c, node);
    }
  }
}

}  // namespace

// ---- TClipperBase / TClipper ---------------------------------------------------------------

TClipperBase::TClipperBase() : FEngine(std::make_unique<internal::TEngineClipper>()) {}

TClipperBase::~TClipperBase() = default;

void TClipperBase::Clear() { FEngine->Clear(); }

bool TClipperBase::AddPath(const TPath64& Path, TPathType PolyType, bool Closed) {
  return FEngine->AddPath(Path, PolyType, Closed);
}

bool TClipperBase::AddPaths(const TPaths64& Paths, TPathType PolyType, bool Closed) {
  return FEngine->AddPaths(Paths, PolyType, Closed);
}

bool TClipperBase::GetPreserveCollinear() const { return FEngine->Engine.PreserveCollinear(); }
void TClipperBase::SetPreserveCollinear(bool Value) { FEngine->Engine.PreserveCollinear(Value); }
bool TClipperBase::GetStoreIntersection() const { return FEngine->StoreIntersection; }
void TClipperBase::SetStoreIntersection(bool Value) { FEngine->StoreIntersection = Value; }
bool TClipperBase::GetAllIntersection() const { return FEngine->AllIntersection; }
void TClipperBase::SetAllIntersection(bool Value) { FEngine->AllIntersection = Value; }
const std::vector<TIntersectRecord>& TClipperBase::GetStoreIntersectList() const { return FEngine->Records; }

TClipper::TClipper(TInitOptions InitOptions) {
  FEngine->Engine.ReverseSolution(InitOptions.Contains(TInitOption::ioReverseSolution));
  FEngine->Engine.StrictlySimple(InitOptions.Contains(TInitOption::ioStrictlySimple));
  FEngine->Engine.PreserveCollinear(InitOptions.Contains(TInitOption::ioPreserveCollinear));
}

TClipper::~TClipper() = default;

bool TClipper::Execute(TClipType ClipType, TPaths64& Solution, TFillRule FillType) {
  Solution.clear();
  return Execute(ClipType, Solution, FillType, FillType);
}

bool TClipper::Execute(TClipType ClipType, TPaths64& Solution, TFillRule SubjFillType, TFillRule ClipFillType) {
  Solution.clear();
  ClipperLib::Paths out;
  const bool ok = FEngine->ExecutePaths(ClipType, out, SubjFillType, ClipFillType);
  if (ok) FromEngine(out, Solution);
  return ok;
}

bool TClipper::Execute(TClipType ClipType, TPolyTree* PolyTree, TFillRule FillType) {
  return Execute(ClipType, PolyTree, FillType, FillType);
}

bool TClipper::Execute(TClipType ClipType, TPolyTree* PolyTree, TFillRule SubjFillType, TFillRule ClipFillType) {
  if (PolyTree == nullptr || FEngine->Locked) return false;
  ClipperLib::PolyTree out;
  const bool ok = FEngine->ExecuteTree(ClipType, out, SubjFillType, ClipFillType);
  FillTree(out, *PolyTree);
  return ok;
}

bool TClipper::GetReverseSolution() const { return FEngine->Engine.ReverseSolution(); }
void TClipper::SetReverseSolution(bool Value) { FEngine->Engine.ReverseSolution(Value); }
bool TClipper::GetStrictlySimple() const { return FEngine->Engine.StrictlySimple(); }
void TClipper::SetStrictlySimple(bool Value) { FEngine->Engine.StrictlySimple(Value); }

// ---- TClipperOffset --------------------------------------------------------------------------

TClipperOffset::TClipperOffset(double MiterLimit, double ArcTolerance)
    : FJob(std::make_unique<internal::TOffsetJob>()), FMiterLimit(MiterLimit), FArcTolerance(ArcTolerance) {}

TClipperOffset::~TClipperOffset() = default;

void TClipperOffset::AddPath(const TPath64& Path, TJoinType JoinType, TEndType EndType) {
  FJob->Add(Path, JoinType, EndType);
}

void TClipperOffset::AddPaths(const TPaths64& Paths, TJoinType JoinType, TEndType EndType) {
  FJob->Add(Paths, JoinType, EndType);
}

void TClipperOffset::Clear() { FJob->Clear(); }

void TClipperOffset::Execute(TPaths64& Solution, double Delta) {
  Solution.clear();
  ClipperLib::Paths out;
  try {
    FJob->Execute(Delta, FMiterLimit, FArcTolerance, out);
  } catch (const ClipperLib::clipperException& e) {
    internal::RaiseEngineError(e);
  }
  FromEngine(out, Solution);
}

void TClipperOffset::Execute(TPolyTree* Solution, double Delta) {
  if (Solution == nullptr) throw Exception("Error: No PolyTree assigned");
  ClipperLib::PolyTree out;
  try {
    FJob->Execute(Delta, FMiterLimit, FArcTolerance, out);
  } catch (const ClipperLib::clipperException& e) {
    internal::RaiseEngineError(e);
  }
  FillTree(out, *Solution);
}

// ---- Free functions ------------------------------------------------------------------------

TPoint64 IntPoint(double X, double Y) {
  constexpr double hi = static_cast<double>(HiRange);
  if (!(std::fabs(X) <= hi) || !(std::fabs(Y) <= hi)) throw Exception(internal::SCoordinateRange);
  return TPoint64(Round(X), Round(Y));
}

double Area(const TPath64& Path) { return Core::Area(Path); }

bool Orientation(const TPath64& Path) { return ClipperLib::Orientation(ToEngine(Path)); }

int PointInPolygon(const TPoint64& Pt, const TPath64& Path) {
  switch (Core::PointInPolygon(Pt, Path)) {
    case TPointInPolygonResult::pipInside: return 1;
    case TPointInPolygonResult::pipOutside: return 0;
    case TPointInPolygonResult::pipOn: break;
  }
  return -1;
}

TPath64 ReversePath(const TPath64& Path) { return TPath64(Path.rbegin(), Path.rend()); }

TPaths64 ReversePaths(const TPaths64& Paths) {
  return internal::MapPaths(Paths, [&](const TPath64& p) { return ReversePath(p); });
}

TRect64 GetBounds(const TPaths64& Paths) { return Core::GetBounds(Paths); }

TPaths64 SimplifyPolygon(const TPath64& Path, TFillRule FillType) {
  internal::CheckRange(Path);
  ClipperLib::Paths out;
  ClipperLib::SimplifyPolygon(ToEngine(Path), out, internal::ToEngine(FillType));
  return FromEngine(out);
}

TPaths64 SimplifyPolygons(const TPaths64& Paths, TFillRule FillType) {
  internal::CheckRange(Paths);
  ClipperLib::Paths out;
  ClipperLib::SimplifyPolygons(ToEngine(Paths), out, internal::ToEngine(FillType));
  return FromEngine(out);
}

TPath64 CleanPolygon(const TPath64& Path, double Distance) {
  ClipperLib::Path out;
  ClipperLib::CleanPolygon(ToEngine(Path), out, Distance);
  return FromEngine(out);
}

TPaths64 CleanPolygons(const TPaths64& Paths, double Distance) {
  ClipperLib::Paths out;
  ClipperLib::CleanPolygons(ToEngine(Paths), out, Distance);
  return FromEngine(out);
}

TPath64 CleanPolygonEx(const TPath64& Path, double Distance) {
  const std::size_t n = Path.size();
  if (n == 0) return TPath64();
  const double d = static_cast<double>(Round(Distance * Distance));
  std::vector<bool> kept(n, true);
  std::size_t i = 0;
  while (i < n) {
    const std::size_t j = (i + 1) % n;
    const std::size_t k = (j + 1) % n;
    const TPoint64& pi = Path[i];
    const TPoint64& pj = Path[j];
    const TPoint64& pk = Path[k];
    const double a = static_cast<double>(pj.Y - pk.Y);
    const double b = static_cast<double>(pk.X - pj.X);
    const double den = a * a + b * b;
    double distSq;
    if (den == 0.0) {
      const double dx = static_cast<double>(pi.X - pj.X), dy = static_cast<double>(pi.Y - pj.Y);
      distSq = dx * dx + dy * dy;
    } else {
      const double c = a * static_cast<double>(pj.X) + b * static_cast<double>(pj.Y);
      const double v = a * static_cast<double>(pi.X) + b * static_cast<double>(pi.Y) - c;
      distSq = v * v / den;
    }
    if (distSq < d) {
      kept[j] = false;
      i += 2;
    } else {
      i += 1;
    }
  }
  TPath64 out;
  out.reserve(n);
  for (std::size_t m = 0; m < n; ++m)
    if (kept[m]) out.push_back(Path[m]);
  return out;
}

TPaths64 MinkowskiSum(const TPath64& Pattern, const TPath64& Path, bool PathIsClosed) {
  internal::CheckRange(Pattern);
  internal::CheckRange(Path);
  ClipperLib::Paths out;
  ClipperLib::MinkowskiSum(ToEngine(Pattern), ToEngine(Path), out, PathIsClosed);
  return FromEngine(out);
}

TPaths64 MinkowskiSum(const TPath64& Pattern, const TPaths64& Paths, TFillRule PathFillType, bool PathIsClosed) {
  if (Pattern.empty()) return TPaths64();
  internal::CheckRange(Pattern);
  internal::CheckRange(Paths);
  const ClipperLib::Path pattern = ToEngine(Pattern);
  ClipperLib::Clipper c;
  for (const TPath64& p : Paths) {
    const ClipperLib::Path path = ToEngine(p);
    ClipperLib::Paths sum;
    ClipperLib::MinkowskiSum(pattern, path, sum, PathIsClosed);
    c.AddPaths(sum, ClipperLib::ptSubject, true);
    if (PathIsClosed) {
      ClipperLib::Path moved = path;
      for (ClipperLib::IntPoint& q : moved) {
        q.X += pattern[0].X;
        q.Y += pattern[0].Y;
      }
      c.AddPath(moved, ClipperLib::ptClip, true);
    }
  }
  ClipperLib::Paths out;
  const ClipperLib::PolyFillType fill = internal::ToEngine(PathFillType);
  c.Execute(ClipperLib::ctUnion, out, fill, fill);
  return FromEngine(out);
}

TPaths64 MinkowskiDiff(const TPath64& Poly1, const TPath64& Poly2) {
  internal::CheckRange(Poly1);
  internal::CheckRange(Poly2);
  ClipperLib::Paths out;
  ClipperLib::MinkowskiDiff(ToEngine(Poly1), ToEngine(Poly2), out);
  return FromEngine(out);
}

namespace {

// 0 all, 1 closed only, 2 open only.
void CollectPaths(const TPolyTree& PolyTree, int Which, TPaths64& Out) {
  for (TPolyNode* n = PolyTree.GetFirst(); n != nullptr; n = n->GetNext()) {
    if (n->GetContour().empty()) continue;
    if (Which == 1 && n->GetIsOpen()) continue;
    if (Which == 2 && !n->GetIsOpen()) continue;
    Out.push_back(n->GetContour());
  }
}

}  // namespace

TPaths64 PolyTreeToPaths(const TPolyTree& PolyTree) {
  TPaths64 out;
  out.reserve(static_cast<std::size_t>(PolyTree.GetTotal()));
  CollectPaths(PolyTree, 0, out);
  return out;
}

TPaths64 ClosedPathsFromPolyTree(const TPolyTree& PolyTree) {
  TPaths64 out;
  CollectPaths(PolyTree, 1, out);
  return out;
}

TPaths64 OpenPathsFromPolyTree(const TPolyTree& PolyTree) {
  TPaths64 out;
  CollectPaths(PolyTree, 2, out);
  return out;
}

void FreePaths(TPaths64& Paths) {
  for (TPath64& p : Paths) TPath64().swap(p);
}

void FreeAllPaths(TPaths64& Paths) { TPaths64().swap(Paths); }

}  // namespace orvane::Clipper
