// The mixed containment tree: hand-worked nestings of circles and bulged outlines in every
// input order, touching outlines, islands in a hole beside a disjoint part, the orientation
// modes, and random nestings against the vertex tree of a fine linearisation.

#include "orvane/mixed/LABPolylineTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <random>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/mixed/LABPolylineList.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"
#include "orvane/vertex/VPolyline2DTree.h"

namespace orvane {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kMark = 3.4028234663852886e38;

TLABSegline Line(TPoint2D A, TPoint2D B) { return TLABSegline::CreateLine(A, B); }

// A full circle by the circle mark, starting at angle Start.
std::unique_ptr<TLABPolyline> Circle(TPoint2D C, double R, bool Ccw = true, double Start = 0.0) {
  auto p = std::make_unique<TLABPolyline>();
  const TPoint2D s = C + TPoint2D(std::cos(Start), std::sin(Start)) * R;
  p->Add(TLABSegline::CreateArc(s, s, C, Ccw ? kMark : -kMark));
  return p;
}

// A stadium: the rectangle [-4, 4] x [-3, 3] with half circles of radius 3 on both ends;
// area 48 + 9 pi.
std::unique_ptr<TLABPolyline> Stadium() {
  auto p = std::make_unique<TLABPolyline>();
  p->Add(Line({-4, -3}, {4, -3}));
  p->Add(TLABSegline::CreateArc({4, -3}, {4, 3}, {4, 0}, 1.0));
  p->Add(Line({4, 3}, {-4, 3}));
  p->Add(TLABSegline::CreateArc({-4, 3}, {-4, -3}, {-4, 0}, 1.0));
  return p;
}

std::unique_ptr<TLABPolyline> Square(double X0, double Y0, double Side) {
  auto p = std::make_unique<TLABPolyline>();
  p->Add(Line({X0, Y0}, {X0 + Side, Y0}));
  p->Add(Line({X0 + Side, Y0}, {X0 + Side, Y0 + Side}));
  p->Add(Line({X0 + Side, Y0 + Side}, {X0, Y0 + Side}));
  p->Add(Line({X0, Y0 + Side}, {X0, Y0}));
  return p;
}

const TLABPolyline& DataOf(const TLABPolylineTree::TNode* Node) { return *Node->GetData(); }

TEST(LABPolylineTree, ConcentricCurvedOutlinesInAnyOrder) {
  std::vector<int> order{0, 1, 2};
  do {
    TLABPolylineList input;
    for (const int k : order) {
      if (k == 0) input.Add(Circle({0, 0}, 10));
      if (k == 1) input.Add(Stadium());
      if (k == 2) input.Add(Circle({0, 0}, 1, false));  // clockwise input
    }
    TLABPolylineTree tree(input);
    ASSERT_EQ(input.Count(), 3);
    const auto* root = tree.GetRoot();
    ASSERT_NE(root->GetData(), nullptr);
    EXPECT_NEAR(DataOf(root).Area(), 100 * kPi, 1e-9);
    ASSERT_EQ(root->ChildCount(), 1);
    EXPECT_NEAR(DataOf(root->ChildNode(0)).Area(), 48 + 9 * kPi, 1e-9);
    ASSERT_EQ(root->ChildNode(0)->ChildCount(), 1);
    const auto* inner = root->ChildNode(0)->ChildNode(0);
    EXPECT_EQ(inner->GetDepth(), 2);
    EXPECT_NEAR(DataOf(inner).Area(), -kPi, 1e-12);                        // clones keep the input's orientation
    for (TLABPolyline* p : input) EXPECT_EQ(tree.NodeOfData(p), nullptr);  // clones, not the caller's

    // By level: material counter-clockwise, the hole clockwise; preorder from the outside.
    const auto levels = tree.GetLABPolylines(1);
    ASSERT_EQ(levels->Count(), 3);
    EXPECT_NEAR((*levels)[0]->Area(), 100 * kPi, 1e-9);
    EXPECT_NEAR((*levels)[1]->Area(), -(48 + 9 * kPi), 1e-9);
    EXPECT_NEAR((*levels)[2]->Area(), kPi, 1e-12);
    const auto asGiven = tree.GetLABPolylines(0);
    EXPECT_NEAR((*asGiven)[2]->Area(), -kPi, 1e-12);
    const auto ccw = tree.GetLABPolylines(2);
    const auto cw = tree.GetLABPolylines(3);
    for (int i = 0; i < 3; ++i) {
      EXPECT_GT((*ccw)[i]->Area(), 0.0);
      EXPECT_LT((*cw)[i]->Area(), 0.0);
      EXPECT_TRUE((*cw)[i]->IsClosed(1e-9));
    }
  } while (std::next_permutation(order.begin(), order.end()));
}

// Outlines that touch. A circle inside another, tangent at its own start point, nests by its
// middle point (the start point is on the outer circle and has no vote); a circle tangent
// from outside at the same point stays apart, so two outlines lie outside all others and
// hang under a root without polyline. A hole whose first segment starts on the outline and
// bulges inwards is a hole.
TEST(LABPolylineTree, TouchingOutlines) {
  TLABPolylineList input;
  input.Add(Circle({2, 0}, 2, true, kPi));  // starts at (4, 0), on the big circle
  input.Add(Circle({5, 0}, 1, true, kPi));  // starts at (4, 0), outside
  input.Add(Circle({0, 0}, 4));
  TLABPolylineTree tree(input);
  const auto* root = tree.GetRoot();
  EXPECT_EQ(root->GetData(), nullptr);
  EXPECT_EQ(root->GetDepth(), -1);
  ASSERT_EQ(root->ChildCount(), 2);
  EXPECT_EQ(root->ChildNode(1)->GetDepth(), 0);
  EXPECT_NEAR(DataOf(root->ChildNode(0)).Area(), 16 * kPi, 1e-9);
  ASSERT_EQ(root->ChildNode(0)->ChildCount(), 1);
  EXPECT_NEAR(DataOf(root->ChildNode(0)->ChildNode(0)).Area(), 4 * kPi, 1e-9);
  EXPECT_TRUE(root->ChildNode(1)->IsLeaf());
  // The gathering root has no outline to hand out; the two parts are both material.
  const auto levels = tree.GetLABPolylines(1);
  ASSERT_EQ(levels->Count(), 3);
  EXPECT_NEAR((*levels)[0]->Area() + (*levels)[1]->Area() + (*levels)[2]->Area(), 16 * kPi - 4 * kPi + kPi, 1e-9);

  // A half disk on the left edge of a square, its start points on the square's boundary
  // and its chord on the edge: bulging inwards it is a hole, bulging outwards a part of
  // its own (the arc's middle point decides, not its chord's).
  for (const double bulge : {1.0, -1.0}) {
    TLABPolylineList notch;
    auto half = std::make_unique<TLABPolyline>();
    half->Add(TLABSegline::CreateArc({0, 1}, {0, 3}, {0, 2}, bulge));  // to x = bulge
    half->Add(Line({0, 3}, {0, 1}));
    notch.Add(std::move(half));
    notch.Add(Square(0, 0, 4));
    TLABPolylineTree notchTree(notch);
    EXPECT_EQ(notchTree.GetRoot()->GetData() == nullptr, bulge < 0);
    EXPECT_EQ(notchTree.GetRoot()->ChildCount(), bulge > 0 ? 1 : 2);
  }

  // Twins: the earlier is the parent.
  TLABPolylineList twins;
  twins.Add(Circle({0, 0}, 1));
  twins.Add(Circle({0, 0}, 1, false));
  TLABPolylineTree twinTree(twins);
  ASSERT_EQ(twinTree.GetRoot()->ChildCount(), 1);
  EXPECT_GT(DataOf(twinTree.GetRoot()).Area(), 0.0);
}

// Two islands in one circular hole of a square plate, and a bulged part beside the plate.
TEST(LABPolylineTree, IslandsInOneHoleAndADisjointPart) {
  TLABPolylineList input;
  input.Add(Circle({3.5, 5}, 1, false));
  auto part = std::make_unique<TLABPolyline>();  // a half disk of radius 2: area 2 pi
  part->Add(Line({20, 0}, {24, 0}));
  part->Add(TLABSegline::CreateArc({24, 0}, {20, 0}, {22, 0}, 1.0));
  input.Add(std::move(part));
  input.Add(Circle({5, 5}, 4));
  input.Add(Square(0, 0, 10));
  input.Add(Circle({6.5, 5}, 1));
  // The nesting itself is the random nestings' business; here the preorder: plate, hole,
  // both islands (input order, equal areas), then the part.
  const TLABPolylineTree tree(input);
  const auto levels = tree.GetLABPolylines(1);
  ASSERT_EQ(levels->Count(), 5);
  const double want[] = {100.0, -16 * kPi, kPi, kPi, 2 * kPi};
  for (int i = 0; i < 5; ++i) EXPECT_NEAR((*levels)[i]->Area(), want[i], 1e-9) << i;
  EXPECT_EQ((*levels)[2]->First().P2, TPoint2D(3.5, 5));
}

TEST(LABPolylineTree, EmptyDegenerateAndBadInput) {
  EXPECT_EQ(TLABPolylineTree().GetLABPolylines(1)->Count(), 0);
  TLABPolylineList nothing;
  nothing.Add(new TLABPolyline);
  auto stroke = std::make_unique<TLABPolyline>();
  stroke->Add(Line({0, 0}, {5, 5}));  // there and back: bounds nothing
  nothing.Add(std::move(stroke));
  TList<TLABPolyline*> withNull;
  withNull.Add(nullptr);
  EXPECT_TRUE(TLABPolylineTree(nothing).IsEmpty());
  EXPECT_TRUE(TLABPolylineTree(withNull).IsEmpty());

  // An open outline counts as closed by its chord: a lone arc bounds a half disk.
  TLABPolylineList open;
  auto arc = std::make_unique<TLABPolyline>();
  arc->Add(TLABSegline::CreateArc({1, 0}, {-1, 0}, {0, 0}, 1.0));
  open.Add(std::move(arc));
  open.Add(Circle({0, 0.5}, 0.25));
  TLABPolylineTree openTree(open);
  ASSERT_EQ(openTree.GetRoot()->ChildCount(), 1);

  TLABPolylineList bad;
  bad.Add(Circle({0, 0}, 10));
  auto nanArc = std::make_unique<TLABPolyline>();
  nanArc->Add(Line({0, 0}, {1, 0}));
  nanArc->Add(TLABSegline::CreateArc({1, 0}, {0, 1}, {0, 0}, std::nan("")));
  bad.Add(std::move(nanArc));
  EXPECT_THROW(TLABPolylineTree{bad}, EParamError);
  bad.Delete(1);
  auto infBezier = std::make_unique<TLABPolyline>();
  infBezier->Add(TLABSegline::CreateBezier({0, 0}, {HUGE_VAL, 0}, {1, 1}, {0, 1}));
  bad.Add(std::move(infBezier));
  EXPECT_THROW(TLABPolylineTree{bad}, EParamError);
}

// ---- Random nestings against the vertex tree of a fine linearisation ----------------------

// One outline fitted in the disk (C, R): a circle by the mark, a circle cut into arcs at a
// random start, or a regular polygon bulged outwards, at a random orientation. Its children
// must lie in the disk of the returned radius, which it leaves free.
double AddOutline(std::mt19937& Rng, const TPoint2D& C, double R, TLABPolylineList& Out) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto p = std::make_unique<TLABPolyline>();
  const int kind = static_cast<int>(Rng() % 3);
  const double start = unit(Rng) * 2 * kPi;
  double free = 0.95 * R;
  if (kind == 0) {
    p = Circle(C, R, true, start);
  } else {
    const int k = (kind == 1 ? 2 : 3) + static_cast<int>(Rng() % 4);
    const double r = kind == 1 ? R : 0.7 * R;
    const double bulge = kind == 1 ? std::tan(2 * kPi / k / 4) : 0.05 + 0.25 * unit(Rng);
    for (int i = 0; i < k; ++i) {
      const double a0 = start + 2 * kPi * i / k, a1 = start + 2 * kPi * (i + 1) / k;
      const TPoint2D s = C + TPoint2D(std::cos(a0), std::sin(a0)) * r;
      const TPoint2D e = C + TPoint2D(std::cos(a1), std::sin(a1)) * r;
      if (kind == 1) {
        p->Add(TLABSegline::CreateArc(s, e, C, bulge));
      } else {
        // Centre of the arc through s and e with this bulge, on the inner side of the chord.
        const double half = 0.5 * std::hypot(e.X - s.X, e.Y - s.Y);
        const double d = half * (1 - bulge * bulge) / (2 * bulge);
        const TPoint2D m = (s + e) * 0.5;
        const TPoint2D n = (C - m) * (1.0 / std::hypot(C.X - m.X, C.Y - m.Y));
        p->Add(TLABSegline::CreateArc(s, e, m + n * d, bulge));
      }
    }
    if (kind == 2) free = 0.3 * R;
  }
  if (Rng() % 2 == 0) p->Reverse();
  Out.Add(std::move(p));
  return free;
}

// Fills the disk (C, R) with up to a few non-overlapping children, each with its own
// children, down to MaxDepth; Parent[i] is the index of the outline that holds outline i.
void Populate(std::mt19937& Rng, const TPoint2D& C, double R, int ParentIndex, int Depth, TLABPolylineList& Out,
              std::vector<int>& Parent) {
  if (Depth == 0) return;
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<std::pair<TPoint2D, double>> disks;
  for (int attempt = 0; attempt < 6; ++attempt) {
    const double r = R * (0.15 + 0.3 * unit(Rng));
    const double a = unit(Rng) * 2 * kPi, d = (R - r) * 0.98 * std::sqrt(unit(Rng));
    const TPoint2D c = C + TPoint2D(std::cos(a), std::sin(a)) * d;
    const bool apart = std::all_of(disks.begin(), disks.end(), [&](const auto& D) {
      return std::hypot(D.first.X - c.X, D.first.Y - c.Y) > D.second + r + 1e-3 * R;
    });
    if (!apart) continue;
    disks.push_back({c, r});
    const double free = AddOutline(Rng, c, r, Out);
    const int self = Out.Count() - 1;
    Parent.push_back(ParentIndex);
    Populate(Rng, c, free, self, Depth - 1, Out, Parent);
  }
}

// The input index of each tree node's outline (found by its first point), and the index of
// its parent's, -1 under a root without outline.
template <class TTree, class FFirst>
std::vector<int> ParentsOf(const TTree& Tree, const std::vector<TPoint2D>& Firsts, FFirst First) {
  std::vector<int> parent(Firsts.size(), -2);
  auto indexOf = [&](const TPoint2D& P) {
    for (std::size_t i = 0; i < Firsts.size(); ++i) {
      if (std::hypot(Firsts[i].X - P.X, Firsts[i].Y - P.Y) < 1e-9) return static_cast<int>(i);
    }
    return -3;
  };
  const auto nodes = Tree.PreorderTraversal();
  for (const auto* node : *nodes) {
    if (node->GetData() == nullptr) continue;
    const int self = indexOf(First(*node->GetData()));
    const auto* up = node->GetParent();
    if (self >= 0)
      parent[static_cast<std::size_t>(self)] = up != nullptr && up->GetData() ? indexOf(First(*up->GetData())) : -1;
  }
  return parent;
}

TEST(LABPolylineTree, RandomNestingsAgreeWithTheVertexTreeOfALinearisation) {
  std::mt19937 rng(19);
  for (int trial = 0; trial < 20; ++trial) {
    TLABPolylineList input;
    std::vector<int> parent;
    Populate(rng, {0, 0}, 100.0, -1, 3, input, parent);
    // Fed in shuffled order; parents are named by input index, found by first point.
    std::vector<TLABPolyline*> order(input.begin(), input.end());
    std::shuffle(order.begin(), order.end(), rng);
    TList<TLABPolyline*> shuffled;
    TVPolyline2DList samples;
    for (TLABPolyline* p : order) {
      shuffled.Add(p);
      samples.Add(p->Sample(1e-3, 1e-3));
    }
    std::vector<TPoint2D> firsts;
    for (const TLABPolyline* p : input) firsts.push_back(p->First().P1);
    const TLABPolylineTree tree(shuffled);
    const TVPolyline2DTree vertexTree(samples);
    const auto mixedParents = ParentsOf(tree, firsts, [](const TLABPolyline& P) { return P.First().P1; });
    const auto vertexParents = ParentsOf(vertexTree, firsts, [](const TVPolyline2D& P) { return P.First(); });
    EXPECT_EQ(mixedParents, parent) << "trial " << trial;
    EXPECT_EQ(vertexParents, parent) << "trial " << trial;

    // Oriented by level, the outlines add up to the material of the vertex tree's regions.
    const auto levels = tree.GetLABPolylines(1);
    ASSERT_EQ(levels->Count(), shuffled.Count());
    double mixedArea = 0.0, vertexArea = 0.0;
    for (const TLABPolyline* p : *levels) mixedArea += p->Area();
    const auto regions = vertexTree.CreateHPolygons();
    for (const TVHPolygon* r : *regions) vertexArea += r->Area();
    EXPECT_NEAR(mixedArea, vertexArea, 1e-4 * std::abs(mixedArea)) << "trial " << trial;
  }
}

}  // namespace
}  // namespace orvane
