#include "orvane/paths/clipping/Clipper2.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/internal/ClipperEngine.h"
#include "orvane/paths/clipping/internal/OffsetJob.h"

namespace orvane::Clipper2 {

using internal::FromEngine;
using internal::ToEngine;

namespace {

const char* const SPolyTreeUnassigned = "The TPolyTree parameter must be assigned.";
const char* const SClippingError = "Undefined clipping error";
const char* const SPrecisionError = "The decimal rounding value is invalid";

// Runs Body; the engine's own failures surface as "Undefined clipping error".
template <class F>
auto Guarded(F&& Body) -> decltype(Body()) {
  try {
    return Body();
  } catch (const ClipperLib::clipperException&) {
    throw Exception(SClippingError);
  }
}

// Fills Tree from the engine's closed nodes; the engine's open nodes (top-level only) go to
// Open when given.
void FillTree(const ClipperLib::PolyTree& Source, TPolyPathBase& Tree, TPaths64* Open, bool Reverse) {
  Tree.Clear();
  std::vector<std::pair<const ClipperLib::PolyNode*, TPolyPathBase*>> queue{{&Source, &Tree}};
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const auto [src, dst] = queue[i];
    for (const ClipperLib::PolyNode* c : src->Childs) {
      TPath64 path = FromEngine(c->Contour);
      if (c->IsOpen()) {
        if (Open != nullptr) Open->push_back(std::move(path));
        continue;
      }
      if (Reverse) std::reverse(path.begin(), path.end());
      queue.emplace_back(c, dst->AddChild(path));
    }
  }
}

}  // namespace

// ---- Trees ------------------------------------------------------------------------------

TPolyPathBase::TPolyPathBase() = default;

TPolyPathBase::~TPolyPathBase() { Clear(); }

void TPolyPathBase::Clear() {
  // Breadth first through a queue: deep nesting never deepens the call stack.
  std::deque<std::unique_ptr<TPolyPathBase>> queue;
  for (auto& c : FChilds) queue.push_back(std::move(c));
  FChilds.clear();
  while (!queue.empty()) {
    std::unique_ptr<TPolyPathBase> node = std::move(queue.front());
    queue.pop_front();
    for (auto& c : node->FChilds) queue.push_back(std::move(c));
    node->FChilds.clear();
  }
}

TPolyPathBase* TPolyPathBase::GetChild(int Index) const {
  if (Index < 0 || Index >= GetChildCnt()) return nullptr;
  return FChilds[static_cast<std::size_t>(Index)].get();
}

int TPolyPathBase::GetLevel() const {
  int level = 0;
  for (const TPolyPathBase* p = FParent; p != nullptr; p = p->FParent) ++level;
  return level;
}

bool TPolyPathBase::GetIsHole() const {
  const int level = GetLevel();
  return level > 0 && level % 2 == 0;
}

std::unique_ptr<TPolyPathBase> TPolyPathBase::RemoveChild(int Idx, bool DoesDestroy) {
  if (Idx < 0 || Idx >= GetChildCnt()) return nullptr;
  const auto pos = FChilds.begin() + Idx;
  std::unique_ptr<TPolyPathBase> child = std::move(*pos);
  FChilds.erase(pos);
  for (std::size_t i = static_cast<std::size_t>(Idx); i < FChilds.size(); ++i) FChilds[i]->FIdx = static_cast<int>(i);
  child->FParent = nullptr;
  child->FIdx = 0;
  if (DoesDestroy) return nullptr;
  return child;
}

TPolyPathBase* TPolyPathBase::Adopt(std::unique_ptr<TPolyPathBase> Child) {
  Child->FParent = this;
  Child->FIdx = GetChildCnt();
  FChilds.push_back(std::move(Child));
  return FChilds.back().get();
}

TPolyPathBase* TPolyPathBase::NextNode() const {
  if (!FChilds.empty()) return FChilds.front().get();
  const TPolyPathBase* node = this;
  while (node->FParent != nullptr) {
    const TPolyPathBase* parent = node->FParent;
    if (node->FIdx + 1 < parent->GetChildCnt()) return parent->FChilds[static_cast<std::size_t>(node->FIdx + 1)].get();
    node = parent;
  }
  return nullptr;
}

TPolyPathBase* TPolyPath64::AddChild(const TPath64& Path) { return Adopt(std::make_unique<TPolyPath64>(Path)); }

// Every node below a TPolyPath64 was made by its AddChild, so the casts below are exact.
TPolyPath64* TPolyPath64::GetChild64(int Index) const { return static_cast<TPolyPath64*>(GetChild(Index)); }

TPolyPath64* TPolyPath64::GetNext() const { return static_cast<TPolyPath64*>(NextNode()); }

TPolyPathD::TPolyPathD(const TPath64& Path, double Scale) : FScale(Scale) {
  FPolygon.reserve(Path.size());
  for (const TPoint64& p : Path)
    FPolygon.emplace_back(static_cast<double>(p.X) / Scale, static_cast<double>(p.Y) / Scale);
}

TPolyPathBase* TPolyPathD::AddChild(const TPath64& Path) { return Adopt(std::make_unique<TPolyPathD>(Path, FScale)); }

TPolyPathD* TPolyPathD::GetChildD(int Index) const { return static_cast<TPolyPathD*>(GetChild(Index)); }

// ---- TClipper64 -------------------------------------------------------------------------

TClipper64::TClipper64() : FEngine(std::make_unique<internal::TEngineClipper>()) {
  FEngine->Engine.PreserveCollinear(true);
}

TClipper64::TClipper64(TInitOptions InitOptions) : FEngine(std::make_unique<internal::TEngineClipper>()) {
  FEngine->Engine.PreserveCollinear(InitOptions.Contains(TInitOption::ioPreserveCollinear));
  FEngine->Engine.ReverseSolution(InitOptions.Contains(TInitOption::ioReverseSolution));
}

TClipper64::~TClipper64() = default;

void TClipper64::Clear() { FEngine->Clear(); }
void TClipper64::AddSubject(const TPath64& Subject) { FEngine->AddPath(Subject, TPathType::ptSubject, true); }
void TClipper64::AddSubject(const TPaths64& Subjects) { FEngine->AddPaths(Subjects, TPathType::ptSubject, true); }
void TClipper64::AddOpenSubject(const TPath64& Subject) { FEngine->AddPath(Subject, TPathType::ptSubject, false); }
void TClipper64::AddOpenSubject(const TPaths64& Subjects) { FEngine->AddPaths(Subjects, TPathType::ptSubject, false); }
void TClipper64::AddClip(const TPath64& Clip) { FEngine->AddPath(Clip, TPathType::ptClip, true); }
void TClipper64::AddClip(const TPaths64& Clips) { FEngine->AddPaths(Clips, TPathType::ptClip, true); }

bool TClipper64::AddPath(const TPath64& Path, TPathType PathType, bool Closed) {
  FEngine->AddPath(Path, PathType, Closed);
  return true;
}

bool TClipper64::AddPaths(const TPaths64& Paths, TPathType PathType, bool Closed) {
  FEngine->AddPaths(Paths, PathType, Closed);
  return true;
}

bool TClipper64::Execute(TClipType ClipType, TFillRule FillRule, TPaths64& ClosedSolutions) {
  TPaths64 open;
  return Execute(ClipType, FillRule, ClosedSolutions, open);
}

bool TClipper64::Execute(TClipType ClipType, TFillRule FillRule, TPaths64& ClosedSolutions, TPaths64& OpenSolutions) {
  ClosedSolutions.clear();
  OpenSolutions.clear();
  return Guarded([&] {
    if (!FEngine->HasOpenPaths) {
      ClipperLib::Paths out;
      const bool ok = FEngine->ExecutePaths(ClipType, out, FillRule, FillRule);
      FromEngine(out, ClosedSolutions);
      return ok;
    }
    ClipperLib::PolyTree tree;
    const bool ok = FEngine->ExecuteTree(ClipType, tree, FillRule, FillRule);
    ClipperLib::Paths closed, open;
    ClipperLib::ClosedPathsFromPolyTree(tree, closed);
    ClipperLib::OpenPathsFromPolyTree(tree, open);
    FromEngine(closed, ClosedSolutions);
    FromEngine(open, OpenSolutions);
    return ok;
  });
}

bool TClipper64::Execute(TClipType ClipType, TFillRule FillRule, TPolyTree64* SolutionTree, TPaths64& OpenSolutions) {
  if (SolutionTree == nullptr) throw Exception(SPolyTreeUnassigned);
  OpenSolutions.clear();
  return Guarded([&] {
    ClipperLib::PolyTree tree;
    const bool ok = FEngine->ExecuteTree(ClipType, tree, FillRule, FillRule);
    FillTree(tree, *SolutionTree, &OpenSolutions, false);
    return ok;
  });
}

bool TClipper64::Execute(TClipType ClipType, TPaths64& Solution, TFillRule FillRule) {
  Solution.clear();
  return Execute(ClipType, FillRule, Solution);
}

namespace {

// Adds both sets for a one-shot run. With two fill rules each closed set is first united
// under its own rule, and the run then needs only even-odd; the rule to run with comes back.
TFillRule AddWithFillRules(TClipper64& C, const TPaths64& SubjPaths, const TPaths64& ClipPaths, bool SubjIsClosed,
                           bool ClipIsClosed, TFillRule SubjFillRule, TFillRule ClipFillRule) {
  if (SubjFillRule == ClipFillRule) {
    C.AddPaths(SubjPaths, TPathType::ptSubject, SubjIsClosed);
    C.AddPaths(ClipPaths, TPathType::ptClip, ClipIsClosed);
    return SubjFillRule;
  }
  C.AddPaths(UnionIfClosed(SubjPaths, SubjIsClosed, SubjFillRule), TPathType::ptSubject, SubjIsClosed);
  C.AddPaths(UnionIfClosed(ClipPaths, ClipIsClosed, ClipFillRule), TPathType::ptClip, ClipIsClosed);
  return TFillRule::frEvenOdd;
}

}  // namespace

bool TClipper64::Execute(const TPaths64& SubjPaths, const TPaths64& ClipPaths, bool SubjIsClosed, bool ClipIsClosed,
                         TFillRule SubjFillRule, TFillRule ClipFillRule, TClipType ClipType, TInitOptions InitOptions,
                         TPaths64& Solution) {
  TClipper64 c(InitOptions);
  Solution.clear();
  const TFillRule fill =
      AddWithFillRules(c, SubjPaths, ClipPaths, SubjIsClosed, ClipIsClosed, SubjFillRule, ClipFillRule);
  return c.Execute(ClipType, fill, Solution);
}

bool TClipper64::Execute(const TPaths64& SubjPaths, const TPaths64& ClipPaths, bool SubjIsClosed, bool ClipIsClosed,
                         TFillRule SubjFillRule, TFillRule ClipFillRule, TClipType ClipType, TInitOptions InitOptions,
                         TPolyTree64* PolyTree, TPaths64& OpenPaths) {
  if (PolyTree == nullptr) throw Exception(SPolyTreeUnassigned);
  TClipper64 c(InitOptions);
  PolyTree->Clear();
  OpenPaths.clear();
  const TFillRule fill =
      AddWithFillRules(c, SubjPaths, ClipPaths, SubjIsClosed, ClipIsClosed, SubjFillRule, ClipFillRule);
  return c.Execute(ClipType, fill, PolyTree, OpenPaths);
}

bool TClipper64::GetPreserveCollinear() const { return FEngine->Engine.PreserveCollinear(); }
void TClipper64::SetPreserveCollinear(bool Value) { FEngine->Engine.PreserveCollinear(Value); }
bool TClipper64::GetReverseSolution() const { return FEngine->Engine.ReverseSolution(); }
void TClipper64::SetReverseSolution(bool Value) { FEngine->Engine.ReverseSolution(Value); }

// ---- TClipperD --------------------------------------------------------------------------

namespace {

int CheckPrecision(int Precision) {
  if (Precision < -8 || Precision > 8) throw Exception(SPrecisionError);
  return Precision;
}

TPath64 ScalePath(const TPathD& Path, double Scale) {
  constexpr double hi = static_cast<double>(Clipper::HiRange);
  TPath64 out;
  out.reserve(Path.size());
  for (const TPointD& p : Path) {
    const double x = p.X * Scale, y = p.Y * Scale;
    if (!(std::fabs(x) <= hi) || !(std::fabs(y) <= hi)) throw Exception(internal::SCoordinateRange);
    out.emplace_back(Round(x), Round(y));
  }
  return out;
}

TPaths64 ScalePaths(const TPathsD& Paths, double Scale) {
  return internal::MapPaths(Paths, [&](const TPathD& p) { return ScalePath(p, Scale); });
}

TPathD UnscalePath(const TPath64& Path, double Scale) {
  TPathD out;
  out.reserve(Path.size());
  for (const TPoint64& p : Path) out.emplace_back(static_cast<double>(p.X) / Scale, static_cast<double>(p.Y) / Scale);
  return out;
}

TPathsD UnscalePaths(const TPaths64& Paths, double Scale) {
  return internal::MapPaths(Paths, [&](const TPath64& p) { return UnscalePath(p, Scale); });
}

double PrecisionScale(int Precision) { return std::pow(10.0, CheckPrecision(Precision)); }

}  // namespace

TClipperD::TClipperD(int RoundingDecimalPrecision) : FScale(PrecisionScale(RoundingDecimalPrecision)) {}

TClipperD::~TClipperD() = default;

void TClipperD::Clear() { FClipper.Clear(); }
void TClipperD::AddSubject(const TPathD& Subject) { FClipper.AddSubject(ScalePath(Subject, FScale)); }
void TClipperD::AddSubject(const TPathsD& Subjects) { FClipper.AddSubject(ScalePaths(Subjects, FScale)); }
void TClipperD::AddOpenSubject(const TPathD& Subject) { FClipper.AddOpenSubject(ScalePath(Subject, FScale)); }
void TClipperD::AddOpenSubject(const TPathsD& Subjects) { FClipper.AddOpenSubject(ScalePaths(Subjects, FScale)); }
void TClipperD::AddClip(const TPathD& Clip) { FClipper.AddClip(ScalePath(Clip, FScale)); }
void TClipperD::AddClip(const TPathsD& Clips) { FClipper.AddClip(ScalePaths(Clips, FScale)); }

bool TClipperD::Execute(TClipType ClipType, TFillRule FillRule, TPathsD& ClosedSolutions) {
  TPathsD open;
  return Execute(ClipType, FillRule, ClosedSolutions, open);
}

bool TClipperD::Execute(TClipType ClipType, TFillRule FillRule, TPathsD& ClosedSolutions, TPathsD& OpenSolutions) {
  TPaths64 closed, open;
  const bool ok = FClipper.Execute(ClipType, FillRule, closed, open);
  ClosedSolutions = UnscalePaths(closed, FScale);
  OpenSolutions = UnscalePaths(open, FScale);
  return ok;
}

bool TClipperD::Execute(TClipType ClipType, TFillRule FillRule, TPolyTreeD* SolutionTree, TPathsD& OpenSolutions) {
  if (SolutionTree == nullptr) throw Exception(SPolyTreeUnassigned);
  SolutionTree->Clear();
  SolutionTree->SetScale(FScale);
  TPolyTree64 tree;
  TPaths64 open;
  const bool ok = FClipper.Execute(ClipType, FillRule, &tree, open);
  // Copy the integer tree over, scaled.
  std::vector<std::pair<const TPolyPath64*, TPolyPathBase*>> queue{{&tree, SolutionTree}};
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const auto [src, dst] = queue[i];
    for (int k = 0; k < src->GetChildCnt(); ++k) {
      const TPolyPath64* c = src->GetChild64(k);
      queue.emplace_back(c, dst->AddChild(c->GetPolygon()));
    }
  }
  OpenSolutions = UnscalePaths(open, FScale);
  return ok;
}

bool TClipperD::GetPreserveCollinear() const { return FClipper.GetPreserveCollinear(); }
void TClipperD::SetPreserveCollinear(bool Value) { FClipper.SetPreserveCollinear(Value); }
bool TClipperD::GetReverseSolution() const { return FClipper.GetReverseSolution(); }
void TClipperD::SetReverseSolution(bool Value) { FClipper.SetReverseSolution(Value); }

// ---- TClipperOffset64 -------------------------------------------------------------------

TClipperOffset64::TClipperOffset64(double MiterLimit, double ArcTolerance, bool PreserveCollinear, bool ReverseSolution)
    : FJob(std::make_unique<internal::TOffsetJob>()),
      FMiterLimit(MiterLimit),
      FArcTolerance(ArcTolerance),
      FPreserveCollinear(PreserveCollinear),
      FReverseSolution(ReverseSolution) {}

TClipperOffset64::~TClipperOffset64() = default;

void TClipperOffset64::AddPath(const TPath64& Path, TJoinType JoinType, TEndType EndType) {
  FJob->Add(Path, JoinType, EndType);
}

void TClipperOffset64::AddPaths(const TPaths64& Paths, TJoinType JoinType, TEndType EndType) {
  FJob->Add(Paths, JoinType, EndType);
}

void TClipperOffset64::Clear() { FJob->Clear(); }

double TClipperOffset64::EngineArcTolerance(double Delta) const {
  if (FArcTolerance > 0) return FArcTolerance;
  return std::max(std::fabs(Delta) / 500.0, 0.25);
}

void TClipperOffset64::Execute(double Delta, TPaths64& Solution) {
  Solution.clear();
  Guarded([&] {
    ClipperLib::Paths out;
    FJob->Execute(Delta, FMiterLimit, EngineArcTolerance(Delta), out);
    FromEngine(out, Solution);
  });
  if (FReverseSolution)
    for (TPath64& p : Solution) std::reverse(p.begin(), p.end());
}

void TClipperOffset64::Execute(double Delta, TPolyTree64* SolutionTree) {
  if (SolutionTree == nullptr) throw Exception(SPolyTreeUnassigned);
  Guarded([&] {
    ClipperLib::PolyTree out;
    FJob->Execute(Delta, FMiterLimit, EngineArcTolerance(Delta), out);
    FillTree(out, *SolutionTree, nullptr, FReverseSolution);
  });
}

void TClipperOffset64::Execute(TPaths64& Solution, double Delta) { Execute(Delta, Solution); }

void TClipperOffset64::Execute(TPolyTree64* Solution, double Delta) { Execute(Delta, Solution); }

// ---- Top-level functions ----------------------------------------------------------------

TPaths64 BooleanOp(TClipType ClipType, const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule) {
  TClipper64 c;
  c.AddSubject(Subjects);
  c.AddClip(Clips);
  TPaths64 out;
  c.Execute(ClipType, FillRule, out);
  return out;
}

void BooleanOp(TClipType ClipType, const TPaths64& Subjects, const TPaths64& Clips, TPolyTree64* PolyTree,
               TFillRule FillRule) {
  if (PolyTree == nullptr) throw Exception(SPolyTreeUnassigned);
  TClipper64 c;
  c.AddSubject(Subjects);
  c.AddClip(Clips);
  TPaths64 open;
  c.Execute(ClipType, FillRule, PolyTree, open);
}

TPathsD BooleanOp(TClipType ClipType, const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule,
                  int Precision) {
  TClipperD c(Precision);
  c.AddSubject(Subjects);
  c.AddClip(Clips);
  TPathsD out;
  c.Execute(ClipType, FillRule, out);
  return out;
}

TPaths64 Intersect(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule) {
  return BooleanOp(TClipType::ctIntersection, Subjects, Clips, FillRule);
}
TPathsD Intersect(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision) {
  return BooleanOp(TClipType::ctIntersection, Subjects, Clips, FillRule, Precision);
}
TPaths64 Union(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule) {
  return BooleanOp(TClipType::ctUnion, Subjects, Clips, FillRule);
}
TPaths64 Union(const TPaths64& Subjects, TFillRule FillRule) {
  return BooleanOp(TClipType::ctUnion, Subjects, TPaths64(), FillRule);
}
TPathsD Union(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision) {
  return BooleanOp(TClipType::ctUnion, Subjects, Clips, FillRule, Precision);
}
TPathsD Union(const TPathsD& Subjects, TFillRule FillRule, int Precision) {
  return BooleanOp(TClipType::ctUnion, Subjects, TPathsD(), FillRule, Precision);
}
TPaths64 Difference(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule) {
  return BooleanOp(TClipType::ctDifference, Subjects, Clips, FillRule);
}
TPathsD Difference(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision) {
  return BooleanOp(TClipType::ctDifference, Subjects, Clips, FillRule, Precision);
}
TPaths64 XOR_(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule) {
  return BooleanOp(TClipType::ctXor, Subjects, Clips, FillRule);
}
TPathsD XOR_(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision) {
  return BooleanOp(TClipType::ctXor, Subjects, Clips, FillRule, Precision);
}

TPaths64 InflatePaths(const TPaths64& Paths, double Delta, TJoinType JoinType, TEndType EndType, double MiterLimit,
                      double ArcTolerance) {
  TClipperOffset64 co(MiterLimit, ArcTolerance);
  co.AddPaths(Paths, JoinType, EndType);
  TPaths64 out;
  co.Execute(Delta, out);
  return out;
}

TPathsD InflatePaths(const TPathsD& Paths, double Delta, TJoinType JoinType, TEndType EndType, double MiterLimit,
                     int Precision, double ArcTolerance) {
  const double scale = PrecisionScale(Precision);
  TClipperOffset64 co(MiterLimit, ArcTolerance * scale);
  co.AddPaths(ScalePaths(Paths, scale), JoinType, EndType);
  TPaths64 out;
  co.Execute(Delta * scale, out);
  return UnscalePaths(out, scale);
}

TPaths64 RectClip(const TRect64& Rect, const TPaths64& Paths) { return TRectClip64(Rect).Execute(Paths); }
TPaths64 RectClip(const TRect64& Rect, const TPath64& Path) { return TRectClip64(Rect).Execute(TPaths64{Path}); }
TPaths64 RectClipLines(const TRect64& Rect, const TPaths64& Paths) { return TRectClipLines64(Rect).Execute(Paths); }
TPaths64 RectClipLines(const TRect64& Rect, const TPath64& Path) {
  return TRectClipLines64(Rect).Execute(TPaths64{Path});
}

TPath64 TranslatePath(const TPath64& Path, std::int64_t DX, std::int64_t DY) {
  TPath64 out(Path);
  for (TPoint64& p : out) {
    p.X += DX;
    p.Y += DY;
  }
  return out;
}

TPaths64 TranslatePaths(const TPaths64& Paths, std::int64_t DX, std::int64_t DY) {
  return internal::MapPaths(Paths, [&](const TPath64& p) { return TranslatePath(p, DX, DY); });
}

TPathD TranslatePath(const TPathD& Path, double DX, double DY) {
  TPathD out(Path);
  for (TPointD& p : out) {
    p.X += DX;
    p.Y += DY;
  }
  return out;
}

TPathsD TranslatePaths(const TPathsD& Paths, double DX, double DY) {
  return internal::MapPaths(Paths, [&](const TPathD& p) { return TranslatePath(p, DX, DY); });
}

TPaths64 MinkowskiSum(const TPath64& Pattern, const TPath64& Path, bool PathIsClosed) {
  return Clipper::MinkowskiSum(Pattern, Path, PathIsClosed);
}

TPaths64 MinkowskiDiff(const TPath64& Pattern, const TPath64& Path, bool PathIsClosed) {
  // Path minus Pattern is Path plus the pattern turned half round about the origin.
  TPath64 turned(Pattern);
  for (TPoint64& p : turned) p = TPoint64(-p.X, -p.Y);
  return Clipper::MinkowskiSum(turned, Path, PathIsClosed);
}

TPath64 MakePath(const std::vector<std::int64_t>& Coords) {
  TPath64 out;
  out.reserve(Coords.size() / 2);
  for (std::size_t i = 0; i + 1 < Coords.size(); i += 2) out.emplace_back(Coords[i], Coords[i + 1]);
  return out;
}

TPath64 MakePath(const std::vector<double>& Coords) {
  TPath64 out;
  out.reserve(Coords.size() / 2);
  for (std::size_t i = 0; i + 1 < Coords.size(); i += 2) out.push_back(Clipper::IntPoint(Coords[i], Coords[i + 1]));
  return out;
}

TPathD MakePathD(const std::vector<double>& Coords) {
  TPathD out;
  out.reserve(Coords.size() / 2);
  for (std::size_t i = 0; i + 1 < Coords.size(); i += 2) out.emplace_back(Coords[i], Coords[i + 1]);
  return out;
}

TPaths64 PolyTreeToPaths64(const TPolyTree64& PolyTree) {
  TPaths64 out;
  for (const TPolyPath64* n = PolyTree.GetNext(); n != nullptr; n = n->GetNext()) out.push_back(n->GetPolygon());
  return out;
}

TPathsD PolyTreeToPathsD(const TPolyTreeD& PolyTree) {
  TPathsD out;
  std::vector<const TPolyPathD*> stack{&PolyTree};
  while (!stack.empty()) {
    const TPolyPathD* n = stack.back();
    stack.pop_back();
    if (n != &PolyTree) out.push_back(n->GetPolygon());
    for (int i = n->GetChildCnt() - 1; i >= 0; --i) stack.push_back(n->GetChildD(i));
  }
  return out;
}

std::string PathToString(const TPath64& Path) {
  std::string s;
  for (std::size_t i = 0; i < Path.size(); ++i) {
    if (i > 0) s += ' ';
    s += std::to_string(Path[i].X);
    s += ',';
    s += std::to_string(Path[i].Y);
  }
  return s;
}

std::string PathsToString(const TPaths64& Paths) {
  std::string s;
  for (const TPath64& p : Paths) {
    s += PathToString(p);
    s += '\n';
  }
  return s;
}

void ShowPolyTreeStructure(const TPolyTree64& PolyTree, std::vector<std::string>& Strings) {
  auto plural = [](int n) { return n == 1 ? "" : "s"; };
  const int top = PolyTree.GetChildCnt();
  Strings.push_back(Format("Polytree with %d polygon%s", top, plural(top)));
  // Depth first, parents before children; only nodes with children get a line.
  std::vector<const TPolyPath64*> stack;
  for (int i = top - 1; i >= 0; --i) stack.push_back(PolyTree.GetChild64(i));
  while (!stack.empty()) {
    const TPolyPath64* n = stack.back();
    stack.pop_back();
    const int count = n->GetChildCnt();
    if (count == 0) continue;
    const std::string indent(static_cast<std::size_t>(n->GetLevel() * 2), ' ');
    if (n->GetIsHole())
      Strings.push_back(Format("%sA hole containing %d nested polygon%s", indent.c_str(), count, plural(count)));
    else
      Strings.push_back(Format("%sA polygon containing %d hole%s", indent.c_str(), count, plural(count)));
    for (int i = count - 1; i >= 0; --i) stack.push_back(n->GetChild64(i));
  }
}

TPointInPolygonResult PointInPolygon2(const TPoint64& Pt, const TPath64& Polygon) {
  return Clipper::Core::PointInPolygon(Pt, Polygon);
}

// ---- Compatibility ------------------------------------------------------------------------

double Area(const TPath64& Path) { return Clipper::Core::Area(Path); }
double Area(const TPaths64& Paths) { return Clipper::Core::Area(Paths); }
bool Orientation(const TPath64& Path) { return Clipper::Core::Area(Path) >= 0.0; }
TRect64 GetBounds(const TPath64& Path) { return Clipper::Core::GetBounds(Path); }
TRect64 GetBounds(const TPaths64& Paths) { return Clipper::Core::GetBounds(Paths); }
TPath64 ReversePath(const TPath64& Path) { return Clipper::ReversePath(Path); }
TPaths64 ReversePaths(const TPaths64& Paths) { return Clipper::ReversePaths(Paths); }

TPaths64 SimplifyPolygon(const TPath64& Path, TFillRule FillRule) { return Union(TPaths64{Path}, FillRule); }
TPaths64 SimplifyPolygons(const TPaths64& Paths, TFillRule FillRule) { return Union(Paths, FillRule); }
TPath64 CleanPolygon(const TPath64& Path, double Distance) { return SimplifyPath(Path, Distance, false); }
TPaths64 CleanPolygons(const TPaths64& Paths, double Distance) { return SimplifyPaths(Paths, Distance, false); }

TPath64 TranslatePath(const TPath64& Path, const TPoint64& Delta) { return TranslatePath(Path, Delta.X, Delta.Y); }

TPaths64 UnionIfClosed(const TPaths64& Paths, bool IsClosed, TFillRule FillRule) {
  if (!IsClosed) return Paths;
  TClipper64 c(TInitOptions{});
  c.AddPaths(Paths, TPathType::ptSubject, true);
  TPaths64 out;
  c.Execute(TClipType::ctUnion, FillRule, out);
  return out;
}

void FreePaths(TPaths64& Paths) { Clipper::FreePaths(Paths); }
void FreePathsAndNil(TPaths64& Paths) { Clipper::FreeAllPaths(Paths); }
TPaths64 PolyTreeToPaths(const TPolyTree64& PolyTree) { return PolyTreeToPaths64(PolyTree); }
TPaths64 MinkowskiDiff(const TPath64& Path1, const TPath64& Path2) { return Clipper::MinkowskiDiff(Path1, Path2); }

TPaths64 MinkowskiSum(const TPath64& Pattern, const TPaths64& Paths, TFillRule FillRule, bool Closed) {
  return Clipper::MinkowskiSum(Pattern, Paths, FillRule, Closed);
}

}  // namespace orvane::Clipper2
