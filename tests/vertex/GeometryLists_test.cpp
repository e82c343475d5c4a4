// The runtime lists, point lists and geometry lists.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "orvane/Orvane.h"

using namespace orvane;

namespace {

// Records every notification, as derived classes of the kernel do.
class TRecordingList : public TList<int> {
 public:
  std::vector<std::string> Log;

 protected:
  void Notify(const int& Item, TCollectionNotification Action) override {
    TList<int>::Notify(Item, Action);
    Log.push_back((Action == TCollectionNotification::cnAdded ? "+" : "-") + std::to_string(Item));
  }
};

// A point list that counts its destructions and keeps its class through New.
class TCountedList : public TVPoint2DList {
 public:
  explicit TCountedList(int* ADestroyed = nullptr) : FDestroyed(ADestroyed) {}
  ~TCountedList() override {
    if (FDestroyed) ++*FDestroyed;
  }
  std::unique_ptr<TVPoint2DList> New() const override { return std::make_unique<TCountedList>(FDestroyed); }

 private:
  int* FDestroyed;
};

class TCountedLists : public TVGeometry2DList<TCountedList> {
 public:
  using TVGeometry2DList<TCountedList>::TVGeometry2DList;
  std::unique_ptr<TVGeometry2DList<TCountedList>> New(bool AOwnsObjects) const override {
    return std::make_unique<TCountedLists>(AOwnsObjects);
  }
};

std::unique_ptr<TCountedList> Square(int* Destroyed, double X) {
  auto l = std::make_unique<TCountedList>(Destroyed);
  for (TPoint2D p : {TPoint2D(0, 0), TPoint2D(1, 0), TPoint2D(1, 1), TPoint2D(0, 1)}) l->Add(p + TPoint2D(X, 0));
  return l;
}

}  // namespace

TEST(List, NotificationsIndexErrorsAndSorting) {
  TRecordingList l;
  l.Add(3);
  l.Add(1);
  l.Insert(0, 2);
  l.SetItem(1, 5);
  l.Delete(0);
  l.Remove(1);
  l.Add(7);
  l.Clear();
  EXPECT_EQ(l.Log, (std::vector<std::string>{"+3", "+1", "+2", "-3", "+5", "-2", "-1", "+7", "-5", "-7"}));
  try {
    l.Delete(0);
    FAIL();
  } catch (const EListError& e) {
    EXPECT_STREQ(e.what(), "List index out of bounds (0)");
  }
  EXPECT_THROW(l.Insert(2, 1), EListError);
  EXPECT_THROW(l.First(), EListError);

  TList<double> d;
  for (double v : {3.0, 1.0, 2.0, 1.0 + 1e-9}) d.Add(v);
  // A tolerant comparer is not a strict weak order; the stable sort keeps equal items in order.
  d.Sort([](double a, double b) { return fEqual(a, b, 1e-6) ? 0 : (a < b ? -1 : 1); });
  EXPECT_EQ(d.List(), (std::vector<double>{1.0, 1.0 + 1e-9, 2.0, 3.0}));
  int at = -1;
  auto cmp = [](double a, double b) { return a < b ? -1 : (a > b ? 1 : 0); };
  EXPECT_TRUE(d.BinarySearch(2.0, at, cmp));
  EXPECT_EQ(at, 2);
  EXPECT_FALSE(d.BinarySearch(2.5, at, cmp));
  EXPECT_EQ(at, 3);
  d.Move(0, 3);
  EXPECT_EQ(d.Last(), 1.0);
}

TEST(List, MovesHandOverItemsHandlersAndOwnership) {
  std::vector<std::string> log;
  auto logAs = [&log](std::string Name) {
    return [&log, Name](const int& Item, TCollectionNotification Action) {
      log.push_back(Name + (Action == TCollectionNotification::cnAdded ? "+" : "-") + std::to_string(Item));
    };
  };
  // A list comes back from a function by value, items and handler with it.
  auto make = [&] {
    TList<int> l{4, 5, 6};
    l.OnNotify = logAs("a");
    return l;
  };
  TList<int> source = make();
  TList<int> moved(std::move(source));
  EXPECT_EQ(moved.List(), (std::vector<int>{4, 5, 6}));
  EXPECT_TRUE(source.IsEmpty());
  source.Add(1);  // the source keeps no handler
  moved.Add(7);
  // Move assignment removes the receiver's own items under its own handler first.
  TList<int> target{1, 2};
  target.OnNotify = logAs("b");
  target = std::move(moved);
  EXPECT_EQ(target.List(), (std::vector<int>{4, 5, 6, 7}));
  EXPECT_TRUE(moved.IsEmpty());
  target.Delete(0);
  EXPECT_EQ(log, (std::vector<std::string>{"a+7", "b-1", "b-2", "a-4"}));
  // Clearing keeps the storage for the next round.
  const int capacity = target.GetCapacity();
  target.Clear();
  EXPECT_EQ(target.GetCapacity(), capacity);

  // Object lists: ownership travels with the items.
  int destroyed = 0;
  auto loose = Square(&destroyed, 2);
  {
    TObjectList<TCountedList> owning(true);
    owning.Add(Square(&destroyed, 0));
    owning.Add(Square(&destroyed, 1));
    TObjectList<TCountedList> taker(std::move(owning));
    EXPECT_TRUE(taker.GetOwnsObjects());
    EXPECT_EQ(taker.Count(), 2);
    EXPECT_EQ(owning.Count(), 0);
    TObjectList<TCountedList> borrowing(false);
    borrowing.Add(loose.get());
    taker = std::move(borrowing);  // frees the two squares it owned, then borrows one
    EXPECT_EQ(destroyed, 2);
    EXPECT_FALSE(taker.GetOwnsObjects());
    ASSERT_EQ(taker.Count(), 1);
    EXPECT_EQ(taker[0], loose.get());
    TObjectList<TCountedList> owner(true);
    owner.Add(Square(&destroyed, 3));
    taker = std::move(owner);  // the borrowed square is only dropped
    EXPECT_EQ(destroyed, 2);
  }
  EXPECT_EQ(destroyed, 3);  // the moved-in square, once; the moved-from lists free nothing
  loose.reset();
  EXPECT_EQ(destroyed, 4);
  // Geometry with identity stays where it is made.
  static_assert(!std::is_move_constructible_v<TVPolyline2D> && !std::is_move_assignable_v<TVPolyline2D>);
  static_assert(!std::is_move_constructible_v<TVPolyline2DList>);
}

TEST(ObjectList, OwnershipClonesAndExtraction) {
  int destroyed = 0;
  {
    TCountedLists owning(true);
    owning.Add(Square(&destroyed, 0));
    owning.Add(Square(&destroyed, 2));
    std::unique_ptr<IVGeometry2D> copy = owning.Clone();
    auto* lists = dynamic_cast<TCountedLists*>(copy.get());
    ASSERT_NE(lists, nullptr);  // the derived class survives Clone
    ASSERT_EQ(lists->Count(), 2);
    EXPECT_NE((*lists)[0], owning[0]);  // an owning copy shares no item
    EXPECT_NE(dynamic_cast<TCountedList*>((*lists)[1]), nullptr);
    lists->Translate({10, 0});
    EXPECT_EQ(owning[0]->First(), TPoint2D(0, 0));
    EXPECT_DOUBLE_EQ(lists->Area(), 2.0);
    EXPECT_EQ(lists->BoundBox(), TRect2D(10, 0, 13, 1));
    copy.reset();
    EXPECT_EQ(destroyed, 2);

    owning.Delete(0);
    EXPECT_EQ(destroyed, 3);
    std::unique_ptr<TCountedList> out = owning.ExtractAt(0);
    EXPECT_EQ(destroyed, 3);
    EXPECT_EQ(owning.Count(), 0);
    owning.Add(std::move(out));
    owning.SetItem(0, owning[0]);  // its own slot: nothing is freed
    EXPECT_EQ(destroyed, 3);
  }
  EXPECT_EQ(destroyed, 4);

  destroyed = 0;
  auto a = Square(&destroyed, 0);
  auto b = Square(&destroyed, 5);
  {
    TCountedLists shared(false);
    shared.Add(a.get());
    shared.Add(b.get());
    std::unique_ptr<IVGeometry2D> copy = shared.Clone();
    auto* lists = dynamic_cast<TCountedLists*>(copy.get());
    ASSERT_NE(lists, nullptr);
    EXPECT_FALSE(lists->GetOwnsObjects());
    EXPECT_EQ((*lists)[1], b.get());  // a non-owning copy shares the items
    copy.reset();
    shared.Delete(0);
    EXPECT_THROW(shared.Add(Square(&destroyed, 9)), EListError);
    EXPECT_THROW(shared.Extract(b.get()), EListError);
    EXPECT_EQ(destroyed, 1);  // only the refused square
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(VPoint2DList, MeasuresTransformsAndSnips) {
  TVPoint2DList sq{{0, 0}, {2, 0}, {2, 2}, {0, 2}};
  TVPoint2DList closed{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  TVPoint2DList cw{{0, 0}, {0, 2}, {2, 2}, {2, 0}};
  EXPECT_DOUBLE_EQ(sq.Area(), 4.0);
  EXPECT_DOUBLE_EQ(closed.Area(), 4.0);
  EXPECT_DOUBLE_EQ(cw.Area(), -4.0);
  EXPECT_EQ(TVPoint2DList({{0, 0}, {5, 5}}).Area(), 0.0);
  EXPECT_DOUBLE_EQ(sq.AverageX(), 1.0);
  EXPECT_EQ(TVPoint2DList().AverageX(), 1.7976931348623157e308);
  EXPECT_FALSE(TVPoint2DList().BoundBox().IsValid());
  EXPECT_EQ(sq.FindMostValueId(0, true), 1);  // first of the two with X = 2
  EXPECT_EQ(sq.FindMostValueId(1, false), 0);
  EXPECT_EQ(TVPoint2DList().FindMostValueId(0, true), -1);

  EXPECT_EQ(sq.Snip(2, 2)->Count(), 0);
  EXPECT_EQ(sq.Snip(0, 4)->Count(), 4);
  EXPECT_EQ(sq.Snip(0, 5)->Count(), 0);
  EXPECT_EQ(sq.Snip(1, 3)->Points(), (TDynPoints2D{{2, 0}, {2, 2}}));

  TVPoint2DList t{{1, 2}};
  t.RotateBy90();
  EXPECT_EQ(t.First(), TPoint2D(-2, 1));
  t.RotateBy_90();
  t.YMirror();
  EXPECT_EQ(t.First(), TPoint2D(-1, 2));
  t.Zoom(2);
  t.Translate({1, 1});
  EXPECT_EQ(t.First(), TPoint2D(-1, 5));
  TMatrix2D m;
  m.Translate(1, 0);
  m.Rotate(Pi);
  t.Transform(m);
  EXPECT_NEAR(t.First().X, 0, 1e-12);
  EXPECT_NEAR(t.First().Y, -5, 1e-12);
  TVPoint2DList r{{1.23456, -0.00049}};
  r.RoundTo(3);
  EXPECT_EQ(r.First(), TPoint2D(1.235, -0.0));
}

TEST(VPoint2DList, IndexOfByXYAcrossTheToleranceBoundary) {
  // The exact order sends the search to the first point; the match within Tol is the second.
  TVPoint2DList l{{0, 10}, {0.5e-6, 0}};
  EXPECT_EQ(l.IndexOfByXY({0, 0}, 1e-6), 1);
  TVPoint2DList far{{0, 10}, {1.5e-6, 0}};
  EXPECT_EQ(far.IndexOfByXY({0, 0}, 1e-6), -1);
  EXPECT_EQ(TVPoint2DList().IndexOfByXY({0, 0}, 1), -1);

  // Invariant on a sorted grid with jitter: the search finds a point within Tol exactly when
  // a linear scan finds one, and what it finds is within Tol.
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> jitter(-2e-6, 2e-6);
  TDynPoints2D pts;
  for (int i = 0; i < 40; ++i)
    for (int j = 0; j < 5; ++j) pts.push_back({i * 1e-6 + jitter(rng), j + jitter(rng)});
  std::stable_sort(pts.begin(), pts.end(),
                   [](const TPoint2D& a, const TPoint2D& b) { return TPoint2DUtils::CompareByXY(a, b) < 0; });
  TVPoint2DList sorted(pts);
  for (int k = 0; k < 2000; ++k) {
    const TPoint2D q = pts[static_cast<std::size_t>(k) % pts.size()] + TPoint2D(jitter(rng), jitter(rng));
    bool any = false;
    for (const TPoint2D& p : pts) any = any || p.Equals(q, 1e-6);
    const int found = sorted.IndexOfByXY(q, 1e-6);
    ASSERT_EQ(found >= 0, any) << "query " << k;
    if (found >= 0) {
      EXPECT_TRUE(sorted[found].Equals(q, 1e-6));
    }
  }
}
