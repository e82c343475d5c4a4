#include "orvane/monotone/MPolygon.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/internal/SegmentDistance.h"
#include "orvane/monotone/MPolygonList.h"

namespace orvane {

namespace {

// A step climbs when its end lies higher, by the exact sign of the step: a tolerance here
// would let a run that climbs in steps below it pass for level, and a chain stored in
// reverse would then fall. A level step counts with the falling ones.
inline bool Climbs(const TPoint2D& From, const TPoint2D& To) { return To.Y > From.Y; }

// No coordinate is infinite or NaN: none has every exponent bit set. One more in the
// exponent field carries into the sign bit exactly for those, so the test is an and, an add
// and an or per coordinate, without a branch or a compare.
bool AllFinite(std::span<const TPoint2D> P) {
  constexpr std::uint64_t exponent = 0x7ff0000000000000ull;
  constexpr std::uint64_t unit = 0x0010000000000000ull;
  std::uint64_t bad = 0;
  for (const TPoint2D& v : P) {
    bad |= ((std::bit_cast<std::uint64_t>(v.X) & exponent) + unit) | ((std::bit_cast<std::uint64_t>(v.Y) & exponent) + unit);
  }
  return (bad >> 63) == 0;
}

// A chain's place in the list order, taken apart from the chain: Left, then the first
// vertex's height (1e-6), as Compare orders non-empty chains.
struct TChainKey {
  double Left;
  double Bottom;
  int Index;
};

bool KeyLess(const TChainKey& A, const TChainKey& B) {
  if (A.Left != B.Left) return A.Left < B.Left;
  return TMathUtils::CompareFloat(A.Bottom, B.Bottom, DefaultTol) < 0;
}

// Stable, as Compare's order asks: insertion for the few chains of most outlines, where it
// is the stable sort's own first step; the stable sort above that.
void SortKeys(std::vector<TChainKey>& Keys) {
  constexpr std::size_t insertionLimit = 32;
  if (Keys.size() > insertionLimit) {
    std::stable_sort(Keys.begin(), Keys.end(), KeyLess);
    return;
  }
  // Insertion by KeyLess puts the chains in order of Left, exactly, the earlier first among
  // equal Lefts, and then orders each run of equal Lefts by insertion on the heights. The
  // first step is a strict order, which a plain sort does with fewer moves.
  std::sort(Keys.begin(), Keys.end(), [](const TChainKey& A, const TChainKey& B) {
    return A.Left < B.Left || (A.Left == B.Left && A.Index < B.Index);
  });
  for (std::size_t i = 1; i < Keys.size(); ++i) {
    if (Keys[i].Left != Keys[i - 1].Left) continue;
    const TChainKey key = Keys[i];
    std::size_t j = i;
    for (; j > 0 && Keys[j - 1].Left == key.Left && KeyLess(key, Keys[j - 1]); --j) Keys[j] = Keys[j - 1];
    Keys[j] = key;
  }
}

// The working lists of a construction, kept per thread: a host builds polygons by the
// thousand, and their allocations cost as much as cutting the outline. Reached through a
// call, so that the thread's copy is looked up once per construction, not at every use.
// Run, Block and Span are the polygon's own descriptions of its chains.
template <class Run, class Block, class Span>
struct TBuildScratch {
  std::vector<Run> Runs;
  std::vector<TMChain*> Made;
  // Room for the stretches, written in place and then copied out at their number: it only
  // grows, so it is not cleared again for every polygon.
  std::vector<Block> Blocks;
  std::vector<Span> Spans;
  std::vector<TChainKey> Keys;

  // What one very large outline needed is not kept for the thread's lifetime.
  void Trim() {
    constexpr std::size_t keep = std::size_t{1} << 14;
    if (Blocks.size() > keep) std::vector<Block>().swap(Blocks);
    if (Runs.capacity() > keep) {
      std::vector<Run>().swap(Runs);
      std::vector<TMChain*>().swap(Made);
      std::vector<Span>().swap(Spans);
      std::vector<TChainKey>().swap(Keys);
    }
  }
};

template <class Run, class Block, class Span>
[[gnu::noinline]] TBuildScratch<Run, Block, Span>& BuildScratch() {
  thread_local TBuildScratch<Run, Block, Span> scratch;
  return scratch;
}

}  // namespace

TMPolygon::TMPolygon(bool AOwnsObjects) : TVGeometry2DList<TMChain>(AOwnsObjects), FBoundBox(TRect2D::Invalid()) {}

TMPolygon::~TMPolygon() {
  if (Plug == nullptr) return;
  TMPolygonList* pile = Plug;
  Plug = nullptr;  // the pile's notification must not touch this polygon again
  if (pile->GetOwnsObjects())
    static_cast<void>(pile->Extract(this).release());
  else
    pile->Remove(this);
}

TMPolygon::TMPolygon(const TVPolyline2D& Polyline, void* AOriInf, bool AOwnsObjects)
    : TVGeometry2DList<TMChain>(AOwnsObjects), OriInf(AOriInf), FBoundBox(TRect2D::Invalid()) {
  const TDynPoints2D& p = Polyline.Points();
  const int n = static_cast<int>(p.size());
  // A vertex without a place would break the order in y that everything here rests on.
  // The exponent of every coordinate is looked at first, without a branch per vertex.
  if (!AllFinite(p)) internal::CheckFiniteVertices(p, "TMPolygon.Create");
  if (n < 2) return;
  // A closed polyline's vertex 0 is its last vertex again: the cycle skips it and takes the
  // last vertex for it.
  const bool closed = Polyline.IsClosed(DefaultTol);
  if (closed && n - 1 > 2) {
    const TCycle cycle{p.data(), n - 1, p[static_cast<std::size_t>(n - 1)]};
    MakeChains(&cycle, p, closed);
  } else {
    MakeChains(nullptr, p, closed);
  }
}

std::unique_ptr<TMPolygon> TMPolygon::FromRing(std::span<const TPoint2D> Ring, void* AOriInf, bool AOwnsObjects) {
  if (Ring.size() < 3) {
    TDynPoints2D closed(Ring.begin(), Ring.end());
    if (!closed.empty()) closed.push_back(closed.front());
    return std::make_unique<TMPolygon>(TVPolyline2D(std::move(closed)), AOriInf, AOwnsObjects);
  }
  auto polygon = std::make_unique<TMPolygon>(AOwnsObjects);
  polygon->OriInf = AOriInf;
  if (!AllFinite(Ring)) internal::CheckFiniteVertices(TDynPoints2D(Ring.begin(), Ring.end()), "TMPolygon.Create");
  // The ring's own first vertex stands for the closing one.
  const TCycle cycle{Ring.data(), static_cast<int>(Ring.size()), Ring.front()};
  polygon->MakeChains(&cycle, {}, true);
  return polygon;
}

void TMPolygon::MakeChains(const TCycle* Cycle, const TDynPoints2D& Open, bool Closed) {
  // The outline is walked once, from the cycle's vertex 0. A new chain starts at every
  // change between climbing and falling, and neighbouring chains share the turning vertex.
  // The working lists of the thread's previous construction: nothing below builds another
  // polygon, so no two constructions share them at once.
  auto& scratch = BuildScratch<TRingRun, TChainBlock, TBlockSpan>();
  std::vector<TMChain*>& made = scratch.Made;
  std::vector<TBlockSpan>& spans = scratch.Spans;
  made.clear();
  spans.clear();
  std::vector<std::unique_ptr<TMChain>> owned;
  // Each chain's stretches, in the order the chains are made.
  std::vector<TChainBlock>& blocks = scratch.Blocks;
  int blockCount = 0;
  auto addBlocks = [&](TMChain& Chain) {
    const int got = MakeBlocks(Chain.FItems.data(), Chain.Count(), blocks.data() + blockCount, Chain.FLeft, Chain.FRight);
    spans.push_back({Chain.FLeft, Chain.FRight, Chain.FItems.front().Y, Chain.FItems.back().Y, blockCount, got});
    blockCount += got;
  };
  if (Cycle != nullptr) {
    std::vector<TRingRun>& runs = scratch.Runs;
    RingRuns(*Cycle, runs);
    if (GetOwnsObjects()) {
      owned.reserve(runs.size());
      for (std::size_t k = 0; k < runs.size(); ++k) {
        owned.push_back(std::make_unique<TMChain>());
        made.push_back(owned.back().get());
      }
    } else {
      // Chains that the list will not free live in one block, made and freed at once.
      FChainBlock = std::make_unique<TMChain[]>(runs.size());
      for (std::size_t k = 0; k < runs.size(); ++k) made.push_back(&FChainBlock[k]);
    }
    // A chain of k segments has k / BlockSegments stretches, and one more for a rest; the
    // chains share no segment.
    blocks.resize(std::max(blocks.size(), static_cast<std::size_t>((Cycle->M + 1) / BlockSegments) + runs.size() + 1));
    for (std::size_t k = 0; k < runs.size(); ++k) {
      FillChain(*made[k], *Cycle, runs[k]);
      made[k]->FNext = made[(k + 1) % runs.size()];
      addBlocks(*made[k]);
    }
  } else {
    CutPolyline(Open, Closed, owned);
    std::size_t bound = 0;
    for (const std::unique_ptr<TMChain>& c : owned) bound += static_cast<std::size_t>(c->Count() / BlockSegments + 1);
    blocks.resize(std::max(blocks.size(), bound));
    for (const std::unique_ptr<TMChain>& c : owned) {
      made.push_back(c.get());
      addBlocks(*c);
    }
  }

  // The box is the union of the chains' boxes; the chains climb.
  std::vector<TChainKey>& keys = scratch.Keys;
  keys.resize(made.size());
  double left = MaxDouble, right = -MaxDouble, bottom = MaxDouble, top = -MaxDouble;
  for (std::size_t k = 0; k < made.size(); ++k) {
    const TMChain& c = *made[k];
    const double y0 = c.FItems.front().Y;
    const double y1 = c.FItems.back().Y;
    left = std::min(left, c.FLeft);
    right = std::max(right, c.FRight);
    bottom = std::min(bottom, std::min(y0, y1));
    top = std::max(top, std::max(y0, y1));
    keys[k] = {c.FLeft, y0, static_cast<int>(k)};
  }
  if (!made.empty()) FBoundBox = TRect2D(left, bottom, right, top);

  SortKeys(keys);
  SetCapacity(static_cast<int>(made.size()));
  if (GetOwnsObjects()) {
    // The list takes each chain over; the capacity is reserved, so no Add can fail midway.
    for (std::unique_ptr<TMChain>& c : owned) static_cast<void>(c.release());
  } else {
    FMadeChains = std::move(owned);
  }
  // Straight into the list: a polygon under construction has no index or stretches to drop
  // and no one listening yet, which is all that the notification of each Add would serve.
  for (const TChainKey& key : keys) FItems.push_back(made[static_cast<std::size_t>(key.Index)]);
  FBlockSpans.reserve(keys.size());
  for (const TChainKey& key : keys) FBlockSpans.push_back(spans[static_cast<std::size_t>(key.Index)]);
  FBlocks.assign(blocks.begin(), blocks.begin() + blockCount);
  scratch.Trim();
}

int TMPolygon::MakeBlocks(const TPoint2D* V, int N, TChainBlock* Out, double& Left, double& Right) {
  if (N == 0) return 0;
  if (N == 1) {
    Out[0] = {V[0].X, V[0].X, V[0].Y, V[0].Y};
    Left = Right = V[0].X;
    return 1;
  }
  const int segments = N - 1;
  const int full = segments / BlockSegments;
  double left = V[0].X, right = left;
  // Whole stretches first, at a fixed length the compiler lays out flat.
  for (int b = 0; b < full; ++b) {
    const TPoint2D* q = V + b * BlockSegments;
    double lo = q[0].X, hi = lo;
    for (int k = 1; k <= BlockSegments; ++k) {
      lo = std::min(lo, q[k].X);
      hi = std::max(hi, q[k].X);
    }
    Out[b] = {lo, hi, q[0].Y, q[BlockSegments].Y};
    left = std::min(left, lo);
    right = std::max(right, hi);
  }
  int count = full;
  if (segments % BlockSegments != 0) {
    const int s = full * BlockSegments;
    double lo = V[s].X, hi = lo;
    for (int k = s + 1; k <= segments; ++k) {
      lo = std::min(lo, V[k].X);
      hi = std::max(hi, V[k].X);
    }
    Out[count++] = {lo, hi, V[s].Y, V[segments].Y};
    left = std::min(left, lo);
    right = std::max(right, hi);
  }
  Left = left;
  Right = right;
  return count;
}

bool TMPolygon::ChainsMeet(const TMChain& A, const TChainBlock* BA, int NA, const TMChain& B, const TChainBlock* BB,
                           int NB) {
  if (NA == 0 || NB == 0) return false;
  // Only the heights that both chains reach within the tolerance matter.
  const double lo = std::max(BA[0].Bottom, BB[0].Bottom) - DefaultTol;
  const double hi = std::min(BA[NA - 1].Top, BB[NB - 1].Top) + DefaultTol;
  // The first stretch of each that reaches the common heights: searched on long chains,
  // counted on the short ones that most outlines have.
  const auto reach = [lo](const TChainBlock* K, int N) {
    if (N > 16) return static_cast<int>(std::partition_point(K, K + N, [lo](const TChainBlock& Q) { return Q.Top < lo; }) - K);
    int k = 0;
    while (k < N && K[k].Top < lo) ++k;
    return k;
  };
  int i = reach(BA, NA);
  int from = reach(BB, NB);
  const TPoint2D* va = A.FItems.data();
  const TPoint2D* vb = B.FItems.data();
  const int na = A.Count();
  const int nb = B.Count();
  // The vertices of stretch K of a chain of N vertices.
  const auto first = [](int K) { return K * BlockSegments; };
  const auto last = [](int K, int N) { return std::min(K * BlockSegments + BlockSegments, N - 1); };
  // A run of consecutive stretches of A that meet stretches of B, and the stretches of B
  // they meet; walked together once the run ends.
  int runA0 = -1, runA1 = -1, runB0 = 0, runB1 = 0;
  auto walkRun = [&]() {
    if (runA0 < 0) return false;
    const int a0 = first(runA0), a1 = last(runA1, na);
    const int b0 = first(runB0), b1 = last(runB1, nb);
    runA0 = -1;
    return internal::ClimbingRunsOverlap(va + a0, a1 - a0 + 1, vb + b0, b1 - b0 + 1);
  };
  for (; i < NA && BA[i].Bottom <= hi; ++i) {
    const TChainBlock& a = BA[i];
    while (from < NB && BB[from].Top < a.Bottom - DefaultTol) ++from;
    int j0 = -1, j1 = -1;
    for (int j = from; j < NB && BB[j].Bottom <= a.Top + DefaultTol; ++j) {
      if (BB[j].Left - a.Right <= DefaultTol && a.Left - BB[j].Right <= DefaultTol) {
        if (j0 < 0) j0 = j;
        j1 = j;
      }
    }
    if (j0 < 0) {
      if (walkRun()) return true;
      continue;
    }
    if (runA0 >= 0) {
      runA1 = i;
      runB0 = std::min(runB0, j0);
      runB1 = std::max(runB1, j1);
    } else {
      runA0 = runA1 = i;
      runB0 = j0;
      runB1 = j1;
    }
  }
  return walkRun();
}

bool TMPolygon::OverlapByBlocks(const TMPolygon& Other) const {
  const TBlockSpan* sa = FBlockSpans.data();
  const int na = static_cast<int>(FBlockSpans.size());
  const TBlockSpan* sb = Other.FBlockSpans.data();
  const int nb = static_cast<int>(Other.FBlockSpans.size());
  // The same sorting out as in TestOverlap, on the copies of the chains' boxes.
  double left0 = MaxDouble, right0 = -MaxDouble, bottom0 = MaxDouble, top0 = -MaxDouble;
  for (int k = 0; k < na; ++k) {
    if (sa[k].Count == 0) continue;
    left0 = std::min(left0, sa[k].Left);
    right0 = std::max(right0, sa[k].Right);
    bottom0 = std::min(bottom0, sa[k].Bottom);
    top0 = std::max(top0, sa[k].Top);
  }
  if (left0 > right0) return false;
  constexpr int Room = 64;
  int near[Room];
  int nearCount = 0;
  bool crowded = false;
  double left = MaxDouble, right = -MaxDouble, bottom = MaxDouble, top = -MaxDouble;
  for (int k = 0; k < nb; ++k) {
    const TBlockSpan& b = sb[k];
    if (b.Count == 0 || b.Left - right0 > DefaultTol || left0 - b.Right > DefaultTol || b.Bottom - top0 > DefaultTol ||
        bottom0 - b.Top > DefaultTol)
      continue;
    left = std::min(left, b.Left);
    right = std::max(right, b.Right);
    bottom = std::min(bottom, b.Bottom);
    top = std::max(top, b.Top);
    if (nearCount < Room)
      near[nearCount++] = k;
    else
      crowded = true;
  }
  if (left > right) return false;
  for (int ka = 0; ka < na; ++ka) {
    const TBlockSpan& a = sa[ka];
    if (a.Count == 0) continue;
    // Both lists are sorted by Left.
    if (a.Left - right > DefaultTol) break;
    if (left - a.Right > DefaultTol || a.Bottom - top > DefaultTol || bottom - a.Top > DefaultTol) continue;
    auto meets = [&](int Kb) {
      const TBlockSpan& b = sb[Kb];
      if (b.Count == 0 || a.Left > b.Right + DefaultTol || b.Bottom - a.Top > DefaultTol ||
          a.Bottom - b.Top > DefaultTol)
        return false;
      return ChainsMeet(*FItems[static_cast<std::size_t>(ka)], FBlocks.data() + a.Begin, a.Count,
                        *Other.FItems[static_cast<std::size_t>(Kb)], Other.FBlocks.data() + b.Begin, b.Count);
    };
    if (crowded) {
      for (int kb = 0; kb < nb; ++kb) {
        if (sb[kb].Count != 0 && sb[kb].Left - DefaultTol > a.Right) break;
        if (meets(kb)) return true;
      }
      continue;
    }
    // The chains of this polygon come by rising Left, so a near chain that ends left of this
    // one is left of every later one: it leaves the near list for good.
    int kept = 0;
    int m = 0;
    for (; m < nearCount; ++m) {
      const int kb = near[m];
      if (sb[kb].Left - DefaultTol > a.Right) break;
      if (a.Left > sb[kb].Right + DefaultTol) continue;
      near[kept++] = kb;
      if (meets(kb)) return true;
    }
    for (; m < nearCount; ++m) near[kept++] = near[m];
    nearCount = kept;
  }
  return false;
}

void TMPolygon::DropBlocks() {
  FBlocks.clear();
  FBlockSpans.clear();
}

void TMPolygon::CutPolyline(const TDynPoints2D& P, bool Closed, std::vector<std::unique_ptr<TMChain>>& Chains) {
  // An open polyline, or a closed one of a single step there and back.
  const int n = static_cast<int>(P.size());
  const int start = Closed ? 1 : 0;
  // The length of every run first, so that each chain is allocated once at its size (two
  // more for the vertices the seam may add).
  std::vector<int> runs;
  {
    bool kind = Climbs(P[n - 1], P[start]);
    int length = 1;
    for (int k = start; k <= n - 2; ++k) {
      ++length;
      const bool next = Climbs(P[k], P[k + 1]);
      if (next != kind) {
        runs.push_back(length);
        kind = next;
        length = 1;
      }
    }
    runs.push_back(length + 1);
  }
  Chains.reserve(runs.size());
  auto newChain = [&](bool Positive) {
    Chains.push_back(std::make_unique<TMChain>());
    Chains.back()->FPositive = Positive;
    const std::size_t run = Chains.size() - 1;
    Chains.back()->ReserveVertices(static_cast<std::size_t>(run < runs.size() ? runs[run] : 2) + 2);
    return Chains.back().get();
  };
  TMChain* newest = newChain(Climbs(P[n - 1], P[start]));
  newest->AddVertex(P[n - 1]);

  if (n - start <= 2) {
    // A single step.
    newest->AddVertex(P[start]);
    newest->FNext = newest;
  } else {
    for (int k = start; k <= n - 2; ++k) {
      newest->AddVertex(P[k]);
      const bool kind = Climbs(P[k], P[k + 1]);
      if (kind != newest->FPositive) {
        TMChain* next = newChain(kind);
        newest->FNext = next;
        newest = next;
        newest->AddVertex(P[k]);
      }
    }
    // An open polyline gets no closing edge: the first chain's head, which is the
    // polyline's last vertex, moves to the end of the newest chain.
    TMChain* first = Chains.front().get();
    newest->AddVertex(first->First());
    first->Delete(0);
    first->ResetBound();
    if (first->Count() == 1) Chains.erase(Chains.begin());
    newest->FNext = Chains.front().get();
  }
  for (const std::unique_ptr<TMChain>& c : Chains) {
    if (!c->FPositive) c->Reverse();
  }
}

void TMPolygon::RingRuns(const TCycle& C, std::vector<TRingRun>& Runs) {
  // The cycle's vertices q: q(0) is the seam vertex, q(i) = P[i] for 0 < i < M. Indices
  // run on past the end of the cycle (q(j) = q(j - M)), so that a chain across the seam is
  // one range.
  const int m = C.M;
  const TPoint2D* p = C.P;
  const TPoint2D& seam = C.Seam;
  // One run per stretch between turns; the last one ends at the vertex before the seam.
  std::vector<TRingRun>& runs = Runs;
  runs.clear();
  bool kind = Climbs(seam, p[1]);
  runs.push_back({0, 0, kind});
  const auto step = [&](int I, double NextY) {
    const bool next = NextY > p[I].Y;
    if (next != kind) {
      runs.back().Last = I;
      runs.push_back({I, I, next});
      kind = next;
    }
  };
  for (int i = 1; i + 1 < m; ++i) step(i, p[i + 1].Y);
  step(m - 1, seam.Y);
  runs.back().Last = m - 1;
  if (runs.size() == 1) {
    // One run around the whole ring: it comes back to its first vertex.
    runs.back().Last = m;
    return;
  }
  TRingRun& newest = runs.back();
  std::size_t first = 0;
  // A level first run does not survive on its own: the newest run takes it over.
  bool level = true;
  for (int j = 1; j <= runs.front().Last && level; ++j) level = p[j].Y == seam.Y;
  if (level) {
    newest.Last = runs.front().Last + m;
    first = 1;
  }
  if (runs.size() - first > 1 && newest.Positive == runs[first].Positive) {
    // The seam lies inside a run: the first run joins the newest.
    newest.Last = runs[first].Last + m;
    ++first;
  } else if (!level && !(p[m - 1] == seam)) {
    // The newest run closes the ring at the first run's start.
    newest.Last = m;
  }
  runs.erase(runs.begin(), runs.begin() + static_cast<std::ptrdiff_t>(first));
}

void TMPolygon::FillChain(TMChain& Chain, const TCycle& C, const TRingRun& Run) {
  const int m = C.M;
  const TPoint2D* p = C.P;
  Chain.FPositive = Run.Positive;
  TDynPoints2D& v = Chain.FItems;
  if (Run.Begin >= 1 && Run.Last < m) {
    // Most runs lie within P as it stands: one copy at once.
    if (Run.Positive)
      v.assign(p + Run.Begin, p + Run.Last + 1);
    else
      v.assign(std::make_reverse_iterator(p + Run.Last + 1), std::make_reverse_iterator(p + Run.Begin));
    return;
  }
  v.reserve(static_cast<std::size_t>(Run.Last - Run.Begin + 1));
  // Copied in stretches that are contiguous in P, climbing: a falling run backwards. The
  // cycle's vertex 0 is the seam vertex.
  if (Run.Positive) {
    for (int j = Run.Begin; j <= Run.Last;) {
      const int i = j >= m ? j - m : j;
      if (i == 0) {
        v.push_back(C.Seam);
        ++j;
        continue;
      }
      const int count = std::min(Run.Last - j + 1, m - i);
      v.insert(v.end(), p + i, p + i + count);
      j += count;
    }
  } else {
    for (int j = Run.Last; j >= Run.Begin;) {
      const int i = j >= m ? j - m : j;
      if (i == 0) {
        v.push_back(C.Seam);
        --j;
        continue;
      }
      const int count = std::min(j - Run.Begin + 1, i);
      v.insert(v.end(), std::make_reverse_iterator(p + i + 1), std::make_reverse_iterator(p + i + 1 - count));
      j -= count;
    }
  }
}

std::unique_ptr<TVGeometry2DList<TMChain>> TMPolygon::New(bool AOwnsObjects) const {
  return std::make_unique<TMPolygon>(AOwnsObjects);
}

std::unique_ptr<IVGeometry2D> TMPolygon::Clone() const {
  std::unique_ptr<IVGeometry2D> result = TVGeometry2DList<TMChain>::Clone();
  auto* copy = dynamic_cast<TMPolygon*>(result.get());
  Assert(copy != nullptr, "[Assert] TMPolygon.Clone: New did not make a polygon");
  copy->FBoundBox = FBoundBox;
  // The copies stand in the same list order, with the same vertices.
  copy->FBlocks = FBlocks;
  copy->FBlockSpans = FBlockSpans;
  if (GetOwnsObjects()) {
    // Each copy follows the image of its original's successor.
    std::unordered_map<const TMChain*, TMChain*> image;
    image.reserve(FItems.size());
    for (std::size_t k = 0; k < FItems.size(); ++k) image.emplace(FItems[k], copy->FItems[k]);
    for (std::size_t k = 0; k < FItems.size(); ++k) {
      const auto found = image.find(FItems[k]->FNext);
      copy->FItems[k]->FNext = found != image.end() ? found->second : nullptr;
    }
  }
  return result;
}

int TMPolygon::Compare(TMChain* const& A, TMChain* const& B) {
  const bool aEmpty = A->Count() == 0;
  const bool bEmpty = B->Count() == 0;
  if (aEmpty) return bEmpty ? 0 : -1;
  if (bEmpty) return 1;
  if (A->FLeft < B->FLeft) return -1;
  if (A->FLeft > B->FLeft) return 1;
  return TMathUtils::CompareFloat(A->FItems.front().Y, B->FItems.front().Y, DefaultTol);
}

template <class F>
void TMPolygon::ForEachTravelVertex(F&& Visit, const char* Method) const {
  const TMChain* first = First();
  if (Count() == 1) {
    for (const TPoint2D& v : first->FItems) Visit(v);
    return;
  }
  CheckRing(Method);
  auto travelStart = [](const TMChain* C) -> const TPoint2D& {
    return C->FPositive ? C->FItems.front() : C->FItems.back();
  };
  auto travelEnd = [](const TMChain* C) -> const TPoint2D& {
    return C->FPositive ? C->FItems.back() : C->FItems.front();
  };

  // A ring whose chains all meet is a closed outline and starts at the list's first chain.
  // An open polyline has one seam where a chain does not start at its predecessor's end,
  // and starts after it.
  const TMChain* begin = first;
  const TMChain* c = first;
  do {
    const TMChain* next = c->FNext;
    if (!c->FItems.empty() && !next->FItems.empty() && !travelEnd(c).Equals(travelStart(next), DefaultTol)) {
      begin = next;
      break;
    }
    c = next;
  } while (c != first);

  // Shared vertices appear once: a chain's end waits until the next chain's start is known.
  bool pending = false;
  TPoint2D last;
  c = begin;
  do {
    const int n = c->Count();
    if (n > 0) {
      const TPoint2D* v = c->FItems.data();
      if (pending && !last.Equals(travelStart(c), DefaultTol)) Visit(last);
      if (c->FPositive) {
        for (int k = 0; k < n - 1; ++k) Visit(v[k]);
      } else {
        for (int k = n - 1; k > 0; --k) Visit(v[k]);
      }
      last = travelEnd(c);
      pending = true;
    }
    c = c->FNext;
  } while (c != begin);
  if (pending) Visit(last);
}

void TMPolygon::CheckRing(const char* Method) const {
  // Next must lead from the first chain through every chain of the list and back.
  const TMChain* first = FItems.front();
  const TMChain* c = first;
  for (std::size_t k = 0; k < FItems.size(); ++k) {
    c = c->FNext;
    if (c == nullptr || (c == first && k + 1 < FItems.size())) {
      throw EAssertionFailed(Format("[Assert] TMPolygon.%s: the ring of chains is broken", Method), "Orvane");
    }
  }
  if (c != first)
    throw EAssertionFailed(Format("[Assert] TMPolygon.%s: the ring of chains is broken", Method), "Orvane");
}

double TMPolygon::Area() const {
  bool any = false;
  TPoint2D first;
  TPoint2D prev;
  double sum = 0.0;
  ForEachTravelVertex(
      [&](const TPoint2D& v) {
        if (!any) {
          first = v;
          any = true;
        } else {
          sum += prev.X * v.Y - v.X * prev.Y;
        }
        prev = v;
      },
      "Area");
  if (any) sum += prev.X * first.Y - first.X * prev.Y;
  return 0.5 * sum;
}

bool TMPolygon::IsClockwise() const { return Area() < 0.0; }

TMPolygon::TChainSpan TMPolygon::SpanOf(const TMChain& Chain) {
  const TPoint2D* v = Chain.FItems.data();
  const std::size_t n = Chain.FItems.size();
  const double bottom = v[0].Y;
  const double top = v[n - 1].Y;
  return {bottom - DefaultTol, top + DefaultTol, bottom, top, Chain.FLeft, Chain.FRight, &Chain};
}

int TMPolygon::PlaceAgainst(const TChainSpan& Span, const TPoint2D& Pt) {
  constexpr double tol2 = DefaultTol * DefaultTol;
  // A chain wholly left of the point neither holds it nor crosses the ray.
  if (Pt.X > Span.Right + DefaultTol) return 0;
  const TMChain& chain = *Span.Chain;
  const TPoint2D* v = chain.FItems.data();
  const int n = static_cast<int>(chain.FItems.size());
  if (Pt.X >= Span.Left - DefaultTol) {
    // On the boundary: within the tolerance of a segment, by Euclidean distance, so that
    // a nearly level edge holds the points beside it as a steep one does.
    if (n == 1) return internal::SegmentDist2(Pt, v[0], v[0]) <= tol2 ? 2 : 0;
    const double floor = Pt.Y - DefaultTol;
    int k = static_cast<int>(
                std::partition_point(v + 1, v + n - 1, [floor](const TPoint2D& Q) { return Q.Y < floor; }) - v) -
            1;
    for (; k < n - 1 && v[k].Y <= Pt.Y + DefaultTol; ++k) {
      if (internal::SegmentDist2(Pt, v[k], v[k + 1]) <= tol2) return 2;
    }
  }
  // The ray toward larger x, against the chain over the half-open heights from its bottom
  // to its top: a ray through a shared vertex counts once, a level chain never. The point
  // lies farther than the tolerance from every segment, so the exact sides below are not
  // at the mercy of round-off.
  if (Pt.Y < Span.Bottom || Pt.Y >= Span.Top) return 0;
  if (Pt.X < Span.Left) return 1;
  const double y = Pt.Y;
  const int k = static_cast<int>(std::partition_point(v, v + n, [y](const TPoint2D& Q) { return Q.Y <= y; }) - v) - 1;
  const TPoint2D& s = v[k];
  const TPoint2D& e = v[k + 1];
  const double x = s.X + (y - s.Y) / (e.Y - s.Y) * (e.X - s.X);
  return Pt.X < x ? 1 : 0;
}

namespace {

// Below this many chains a scan over them beats the descent through an index.
constexpr std::size_t MinIndexedChains = 16;

}  // namespace

std::uint8_t TMPolygon::PointIsIn(const TPoint2D& Pt) const {
  bool inside = false;
  // A point without a place has no height to look up: it takes the scan, whose answer for
  // it is the same as ever.
  const bool indexed = FItems.size() >= MinIndexedChains && std::isfinite(Pt.X) && std::isfinite(Pt.Y);
  if (indexed && !FHeightIndex.Built) BuildHeightIndex();
  if (!indexed || FHeightIndex.Unusable) {
    for (const TMChain* chain : FItems) {
      if (chain->FItems.empty()) continue;
      const TChainSpan span = SpanOf(*chain);
      if (Pt.Y < span.Lo || Pt.Y > span.Hi) continue;
      const int placed = PlaceAgainst(span, Pt);
      if (placed == 2) return 2;
      if (placed == 1) inside = !inside;
    }
    return inside ? 1 : 0;
  }

  // Down the interval tree: at each node the chains that hold its centre height, read from
  // the end that the point's height cuts short, then the side of the centre the point is on.
  // Most chains met lie wholly to one side of the point: those are settled from their span.
  const double y = Pt.Y;
  bool on = false;
  auto visit = [&](const TChainSpan& S) {
    // PlaceAgainst's own first tests.
    if (Pt.X > S.Right + DefaultTol) return;
    if (Pt.X < S.Left - DefaultTol) {
      inside = inside != ((y >= S.Bottom) & (y < S.Top));
      return;
    }
    const int placed = PlaceAgainst(S, Pt);
    on = on || placed == 2;
    inside = inside != (placed == 1);
  };
  const THeightNode* nodes = FHeightIndex.Nodes.data();
  int at = FHeightIndex.Nodes.empty() ? -1 : 0;
  while (at >= 0 && !on) {
    const THeightNode& node = nodes[at];
    if (y < node.Center) {
      const TChainSpan* s = FHeightIndex.ByLow.data() + node.Begin;
      for (int k = 0; k < node.Count && s[k].Lo <= y; ++k) visit(s[k]);
      at = node.Below;
    } else if (y > node.Center) {
      const TChainSpan* s = FHeightIndex.ByHigh.data() + node.Begin;
      for (int k = 0; k < node.Count && s[k].Hi >= y; ++k) visit(s[k]);
      at = node.Above;
    } else {
      // At the centre: every chain of the node spans the height, and none below or above.
      const TChainSpan* s = FHeightIndex.ByLow.data() + node.Begin;
      for (int k = 0; k < node.Count; ++k) visit(s[k]);
      at = -1;
    }
  }
  if (on) return 2;
  return inside ? 1 : 0;
}

void TMPolygon::BuildHeightIndex() const {
  THeightIndex& index = FHeightIndex;
  index = THeightIndex();
  index.Built = true;
  std::vector<TChainSpan> spans;
  spans.reserve(FItems.size());
  for (const TMChain* chain : FItems) {
    if (chain->FItems.empty()) continue;
    const TChainSpan span = SpanOf(*chain);
    if (!std::isfinite(span.Lo) || !std::isfinite(span.Hi)) {
      index.Unusable = true;
      return;
    }
    // A chain whose stored heights do not climb holds no height at all.
    if (span.Lo <= span.Hi) spans.push_back(span);
  }
  index.Nodes.reserve(spans.size());
  index.ByLow.reserve(spans.size());
  index.ByHigh.reserve(spans.size());
  BuildHeightNode(spans);
}

int TMPolygon::BuildHeightNode(std::vector<TChainSpan>& Spans) const {
  // The centre is the median of the intervals' ends, so at most half the intervals lie
  // wholly on either side and the tree is at most logarithmically deep.
  if (Spans.empty()) return -1;
  THeightIndex& index = FHeightIndex;
  std::vector<double> ends;
  ends.reserve(2 * Spans.size());
  for (const TChainSpan& s : Spans) {
    ends.push_back(s.Lo);
    ends.push_back(s.Hi);
  }
  const auto middle = ends.begin() + static_cast<std::ptrdiff_t>(ends.size() / 2);
  std::nth_element(ends.begin(), middle, ends.end());
  const double center = *middle;

  std::vector<TChainSpan> below, above;
  const std::size_t begin = index.ByLow.size();
  for (const TChainSpan& s : Spans) {
    if (s.Hi < center)
      below.push_back(s);
    else if (s.Lo > center)
      above.push_back(s);
    else
      index.ByLow.push_back(s);
  }
  const auto first = index.ByLow.begin() + static_cast<std::ptrdiff_t>(begin);
  std::stable_sort(first, index.ByLow.end(), [](const TChainSpan& A, const TChainSpan& B) { return A.Lo < B.Lo; });
  index.ByHigh.insert(index.ByHigh.end(), first, index.ByLow.end());
  std::stable_sort(index.ByHigh.begin() + static_cast<std::ptrdiff_t>(begin), index.ByHigh.end(),
                   [](const TChainSpan& A, const TChainSpan& B) { return A.Hi > B.Hi; });
  Spans.clear();
  Spans.shrink_to_fit();

  const int at = static_cast<int>(index.Nodes.size());
  index.Nodes.push_back({center, static_cast<int>(begin), static_cast<int>(index.ByLow.size() - begin), -1, -1});
  const int lower = BuildHeightNode(below);
  const int upper = BuildHeightNode(above);
  index.Nodes[static_cast<std::size_t>(at)].Below = lower;
  index.Nodes[static_cast<std::size_t>(at)].Above = upper;
  return at;
}

void TMPolygon::DropHeightIndex() {
  if (FHeightIndex.Built) FHeightIndex = THeightIndex();
}

void TMPolygon::Notify(TMChain* const& Item, TCollectionNotification Action) {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::Notify(Item, Action);
}

bool TMPolygon::TestOverlap(const TMPolygon& MPolygon) const {
  if (!FBlockSpans.empty() && !MPolygon.FBlockSpans.empty()) return OverlapByBlocks(MPolygon);
  // This polygon's extent, from its chains' own bounds as they stand now.
  double aLeft0 = MaxDouble, aRight0 = -MaxDouble, aBottom0 = MaxDouble, aTop0 = -MaxDouble;
  for (const TMChain* a : FItems) {
    if (a->FItems.empty()) continue;
    aLeft0 = std::min(aLeft0, a->FLeft);
    aRight0 = std::max(aRight0, a->FRight);
    aBottom0 = std::min(aBottom0, a->FItems.front().Y);
    aTop0 = std::max(aTop0, a->FItems.back().Y);
  }
  if (aLeft0 > aRight0) return false;
  // The other polygon's chains that come near this extent, with their bounds side by side
  // in list order (by Left), so that the pairs below are sorted out without touching the
  // chains; a chain clear of the extent is clear of every chain here. With more such chains
  // than the room on the stack, the chains are read where they are.
  struct TBox {
    double Left, Right, Bottom, Top;
    const TMChain* Chain;
  };
  constexpr std::size_t Room = 64;
  TBox near[Room];
  std::size_t nearCount = 0;
  bool crowded = false;
  double left = MaxDouble, right = -MaxDouble, bottom = MaxDouble, top = -MaxDouble;
  for (const TMChain* other : MPolygon.FItems) {
    if (other->FItems.empty()) continue;
    const TBox box{other->FLeft, other->FRight, other->FItems.front().Y, other->FItems.back().Y, other};
    if (box.Left - aRight0 > DefaultTol || aLeft0 - box.Right > DefaultTol || box.Bottom - aTop0 > DefaultTol ||
        aBottom0 - box.Top > DefaultTol)
      continue;
    left = std::min(left, box.Left);
    right = std::max(right, box.Right);
    bottom = std::min(bottom, box.Bottom);
    top = std::max(top, box.Top);
    if (nearCount < Room)
      near[nearCount++] = box;
    else
      crowded = true;
  }
  if (left > right) return false;
  const std::vector<TMChain*>& others = MPolygon.FItems;
  for (const TMChain* a : FItems) {
    if (a->FItems.empty()) continue;
    const double aLeft = a->FLeft;
    const double aRight = a->FRight;
    // This list is sorted by Left as well: no later chain reaches the other polygon.
    if (aLeft - right > DefaultTol) break;
    if (left - aRight > DefaultTol) continue;
    const double aBottom = a->FItems.front().Y;
    const double aTop = a->FItems.back().Y;
    if (aBottom - top > DefaultTol || bottom - aTop > DefaultTol) continue;
    auto meets = [&](const TBox& B) {
      // IsOverlap's own first test, made here to spare the call.
      if (aLeft > B.Right + DefaultTol || B.Bottom - aTop > DefaultTol || aBottom - B.Top > DefaultTol) return false;
      return a->IsOverlap(*B.Chain);
    };
    if (!crowded) {
      for (std::size_t k = 0; k < nearCount; ++k) {
        // Sorted by Left: no later chain reaches this one.
        if (near[k].Left - DefaultTol > aRight) break;
        if (meets(near[k])) return true;
      }
    } else {
      for (const TMChain* other : others) {
        if (other->FItems.empty()) continue;
        const TBox box{other->FLeft, other->FRight, other->FItems.front().Y, other->FItems.back().Y, other};
        if (box.Left - DefaultTol > aRight) break;
        if (meets(box)) return true;
      }
    }
  }
  return false;
}

bool TMPolygon::PolyIsIn(const TMPolygon* /*AMPoly*/) const { return false; }

std::unique_ptr<TVPolyline2D> TMPolygon::ToVPolyline2D() const {
  auto result = std::make_unique<TVPolyline2D>();
  ForEachTravelVertex([&](const TPoint2D& v) { result->Add(v); }, "ToVPolyline2D");
  return result;
}

void TMPolygon::Translate(const TPoint2D& Vector) {
  DropHeightIndex();
  TVGeometry2DList<TMChain>::Translate(Vector);
  if (FBoundBox.IsValid()) FBoundBox = FBoundBox.Translate(Vector);
  // Rounding keeps the order of values, so the moved stretches' bounds are those of the
  // moved vertices.
  for (TChainBlock& b : FBlocks) {
    b.Left += Vector.X;
    b.Right += Vector.X;
    b.Bottom += Vector.Y;
    b.Top += Vector.Y;
  }
  for (TBlockSpan& b : FBlockSpans) {
    b.Left += Vector.X;
    b.Right += Vector.X;
    b.Bottom += Vector.Y;
    b.Top += Vector.Y;
  }
}

void TMPolygon::RoundTo(int Accuracy) {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::RoundTo(Accuracy);
}

void TMPolygon::Rotate(double Radian) {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::Rotate(Radian);
}

void TMPolygon::RotateBy90() {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::RotateBy90();
}

void TMPolygon::RotateBy_90() {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::RotateBy_90();
}

void TMPolygon::YMirror() {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::YMirror();
}

void TMPolygon::Transform(const TMatrix2D& Matrix) {
  DropHeightIndex();
  DropBlocks();
  TVGeometry2DList<TMChain>::Transform(Matrix);
}

}  // namespace orvane
