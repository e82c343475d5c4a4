#pragma once
// TMPolygon: one outline held as y-monotone chains, cut once at every turn between climbing
// and falling. A point test then looks only at the chains whose height holds the point and
// finds the edge by binary search; an overlap test between two polygons skips chains by
// their x ranges and walks the rest pairwise with TMChain::IsOverlap.
//
// The polygon keeps two orders of its chains: the list order, sorted by left edge, and the
// ring through each chain's Next, in the outline's order of travel. Chains are cut by the
// exact sign of each step, so every chain climbs in storage whatever the size of its
// steps; the tolerance 1e-6 belongs to the contact and point tests alone.

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/monotone/MChain.h"
#include "orvane/vertex/VGeometry2DList.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

class TMPolygonList;

class ORVANE_API TMPolygon : public TVGeometry2DList<TMChain> {
 public:
  // No chains; the box is the invalid one.
  explicit TMPolygon(bool AOwnsObjects = true);
  // Cuts Polyline, which stays the caller's, into chains. Closedness is read from the
  // vertices, as everywhere in the kernel: only a polyline that repeats its first vertex at
  // the end (1e-6) is a closed outline. A ring given without its closing vertex is taken as
  // an open polyline: its polygon holds its edges without the closing edge (so contacts on
  // that edge are not seen, and PointIsIn has no meaning). Add the first vertex at the end
  // first to get the outline. A step climbs when its end lies higher at all; a level step
  // goes with the falling ones.
  // Fewer than two vertices give no chains. A vertex that is not finite raises EParamError
  // "[Error] TMPolygon.Create: vertex <k> is not a finite point". Chains made here are freed
  // with the polygon also when it does not own its items.
  TMPolygon(const TVPolyline2D& Polyline, void* AOriInf, bool AOwnsObjects = true);
  // The polygon of Ring, a closed ring given without its closing vertex: the same chains,
  // in the same order, as the polyline of Ring with its first vertex added at the end gives,
  // without making that polyline. A ring of fewer than three vertices is made from that
  // polyline. The same EParamError for a vertex that is not finite.
  static std::unique_ptr<TMPolygon> FromRing(std::span<const TPoint2D> Ring, void* AOriInf, bool AOwnsObjects = true);
  // A polygon freed while it sits in a pile first leaves that pile.
  ~TMPolygon() override;

  std::unique_ptr<TVGeometry2DList<TMChain>> New(bool AOwnsObjects) const override;
  // The list's deep copy with the box, and the ring rebuilt on the copies. OriInf and Plug
  // stay nil.
  std::unique_ptr<IVGeometry2D> Clone() const override;
  // The box taken at construction (or set by SetBoundBox), not a scan of the chains.
  TRect2D BoundBox() const override { return FBoundBox; }
  void SetBoundBox(const TRect2D& Rect) { FBoundBox = Rect; }
  // Signed area of the outline in its order of travel, positive counter-clockwise.
  // EListError without chains.
  double Area() const override;
  // True for an outline that travels clockwise: Area below 0, as for TVPolyline2D, so an
  // outline without area is not clockwise. A corner test where a falling chain meets the
  // next one would be cheaper, but real outlines have bottoms that are level within the
  // tolerance, where the chains' stored first edges point along noise. EListError without
  // chains.
  bool IsClockwise() const;
  // 0 outside, 1 inside, 2 on the boundary: within 1e-6 of an edge, Euclidean, so that a
  // nearly level edge holds the points beside it as a steep one does. Otherwise a ray
  // toward larger x, counted exactly per chain over the half-open height interval from its
  // bottom to its top. 0 without chains.
  // A polygon of many chains indexes them by height on its first point query, so that a
  // query costs a logarithmic descent plus the chains that span the point's height; every
  // change made through the polygon drops the index. A chain edited in place behind the
  // polygon's back is not seen: rebuild the polygon after that, as after any bulk change.
  // The index is a cache filled under const, so one polygon is not queried from two
  // threads at once.
  std::uint8_t PointIsIn(const TPoint2D& Pt) const;
  // True if any chain of this polygon touches (within 1e-6, Euclidean) or crosses any chain
  // of MPolygon.
  // Boundaries only: a polygon inside the other without contact gives false. Chains clear
  // of the other polygon's extent are passed over, the scan of MPolygon's chains stops at
  // the first that starts right of the chain at hand, and only chains whose boxes meet are
  // looked at. Of those, a polygon built from a polyline first compares the boxes of short
  // stretches of the two chains, kept since construction, and walks the pair only where
  // two stretches meet; as for the point test, a chain edited in place behind the
  // polygon's back is not seen. Allocates nothing.
  bool TestOverlap(const TMPolygon& MPolygon) const;
  // False for any argument.
  bool PolyIsIn(const TMPolygon* AMPoly) const;
  // The outline back in its order of travel, from the list's first chain, owned by the
  // caller; a closed outline comes back closed, with the same cycle of vertices. An open
  // polyline comes back as it was. With a single chain, its vertices in stored order.
  // EListError without chains.
  std::unique_ptr<TVPolyline2D> ToVPolyline2D() const;
  // The text dump: each chain in list order as TVPolyline2D::WriteToFile writes it, a line
  // break between chains and none after the last. EInOutError when the stream fails.
  void WriteToFile(std::ostream& F, std::string_view Color, bool HighPrecision) const;
  // Moves every chain and the box. The sort by left edge survives, since all chains move
  // alike. The other bulk changes act on the chains only and keep neither the box nor the
  // chains' order in y: rebuild the polygon after them.
  void Translate(const TPoint2D& Vector) override;
  // The base list's, each dropping the height index first.
  void RoundTo(int Accuracy) override;
  void Rotate(double Radian) override;
  void RotateBy90() override;
  void RotateBy_90() override;
  void YMirror() override;
  void Transform(const TMatrix2D& Matrix) override;

  // The list's order: an empty chain first, then by Left, then by the first vertex's y
  // (1e-6). Left is compared exactly, so that Left never decreases along the list and
  // TestOverlap may stop at the first chain that starts right of the one it tests; a
  // tolerance there would let chains within 1e-6 of each other stand in either order.
  static int Compare(TMChain* const& A, TMChain* const& B);

  // Whatever the caller passed at construction; never read here.
  void* OriInf = nullptr;
  // The pile of touching polygons that TMPolygonList::Merge put this polygon in (not owned),
  // or nil. Piles clear it when they let the polygon go, and the polygon leaves its pile when
  // it is freed, so the link and the pile never point at anything freed.
  TMPolygonList* Plug = nullptr;

 protected:
  // Every change of the list of chains drops the height index.
  void Notify(TMChain* const& Item, TCollectionNotification Action) override;

 private:
  // One chain as the point test reads it, so that a query passes over the chains it does
  // not need without touching them: the heights it spans with the tolerance (Lo, Hi), its
  // bottom and top, and its x range.
  struct TChainSpan {
    double Lo, Hi, Bottom, Top, Left, Right;
    const TMChain* Chain;
  };
  // A node of the interval tree over the chains' heights: the chains whose height interval
  // holds Center, once by ascending Lo and once by descending Hi; those wholly below Center
  // lie under Below, those wholly above under Above (-1: none).
  struct THeightNode {
    double Center;
    int Begin, Count;
    int Below, Above;
  };
  // The height index, built on the first point query of a polygon with many chains.
  struct THeightIndex {
    bool Built = false;
    // The chains' heights were not all finite: queries scan the chains instead.
    bool Unusable = false;
    std::vector<THeightNode> Nodes;
    std::vector<TChainSpan> ByLow;
    std::vector<TChainSpan> ByHigh;
  };

  // A stretch of at most BlockSegments segments of one chain: the x range of its vertices
  // and the heights of its ends. Two chains that touch or cross have a stretch each whose
  // boxes come within the tolerance, so pairs of chains without such stretches need no walk.
  struct TChainBlock {
    double Left, Right, Bottom, Top;
  };
  // The chain at one list index: its box, and its stretches, Count of them from Begin in
  // FBlocks.
  struct TBlockSpan {
    double Left, Right, Bottom, Top;
    int Begin, Count;
  };
  static constexpr int BlockSegments = 4;
  // Writes the stretches of the climbing vertices V[0..N) to Out and answers their number
  // (at most N / BlockSegments + 1); the x range of all of them goes to Left and Right.
  static int MakeBlocks(const TPoint2D* V, int N, TChainBlock* Out, double& Left, double& Right);
  // Chains A and B, with their stretches, touch or cross: only the runs of stretches that
  // come within the tolerance of each other are walked.
  static bool ChainsMeet(const TMChain& A, const TChainBlock* BA, int NA, const TMChain& B, const TChainBlock* BB,
                         int NB);
  void DropBlocks();
  // TestOverlap on the chains' boxes and stretches alone, side by side in memory: the chains
  // themselves are read only for the stretches that come near each other.
  bool OverlapByBlocks(const TMPolygon& Other) const;

  // A closed ring's cycle of M vertices, at least three: vertex 0 is Seam, vertex i is P[i]
  // for 0 < i < M (P[0] is never read). A closed polyline's last vertex is its seam, and a
  // ring without the closing vertex is its own seam.
  struct TCycle {
    const TPoint2D* P;
    int M;
    const TPoint2D& Seam;
  };
  // A chain of a closed ring: the vertices Begin to Last of the ring's cycle, counted on
  // past its end across the seam, and whether they climb in the order of travel.
  struct TRingRun {
    int Begin, Last;
    bool Positive;
  };
  // The chains of the cycle in order of travel, as ranges of it, into Runs.
  static void RingRuns(const TCycle& C, std::vector<TRingRun>& Runs);
  // Fills Chain with one run of the cycle, once, at its size, climbing; its x range is left
  // to MakeBlocks.
  static void FillChain(TMChain& Chain, const TCycle& C, const TRingRun& Run);
  // The chains of the cycle, or without one those of Open (closed or not), made, indexed by
  // stretches and put in the list order, with the box.
  void MakeChains(const TCycle* Cycle, const TDynPoints2D& Open, bool Closed);
  // The chains of an open polyline, or of a closed one that is a single step there and back.
  static void CutPolyline(const TDynPoints2D& P, bool Closed, std::vector<std::unique_ptr<TMChain>>& Chains);
  static TChainSpan SpanOf(const TMChain& Chain);
  // The point against one chain: 2 on it, 1 when the ray toward larger x crosses it, else 0.
  static int PlaceAgainst(const TChainSpan& Span, const TPoint2D& Pt);
  void BuildHeightIndex() const;
  int BuildHeightNode(std::vector<TChainSpan>& Spans) const;
  void DropHeightIndex();

  // Calls Visit on every vertex of the outline in order of travel, as ToVPolyline2D lists
  // them; Method names the caller in the assertion on a broken ring.
  template <class F>
  void ForEachTravelVertex(F&& Visit, const char* Method) const;
  // EAssertionFailed unless Next leads from the first chain through every chain and back.
  void CheckRing(const char* Method) const;

  TRect2D FBoundBox;
  mutable THeightIndex FHeightIndex;
  // The stretches of every chain, made by the polyline constructor; every change of the list
  // of chains, and every bulk change but Translate, drops them (then FBlockSpans is empty).
  std::vector<TChainBlock> FBlocks;
  std::vector<TBlockSpan> FBlockSpans;
  // The chains built by the polyline constructor of a polygon that does not own its items:
  // those of a closed ring in one block, the others one by one.
  std::unique_ptr<TMChain[]> FChainBlock;
  std::vector<std::unique_ptr<TMChain>> FMadeChains;
};

}  // namespace orvane
