#include "orvane/monotone/MPolygonList.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {

constexpr double ContactTol = 1e-6;

// Takes P out of the pile it names, leaving its link clear.
void Unpile(TMPolygon& P) {
  TMPolygonList* pile = P.Plug;
  P.Plug = nullptr;
  pile->Remove(&P);
}

// A new pile in Heaps; the caller frees it when Heaps does not own its lists.
TMPolygonList* NewPile(TMPolyline2DsList& Heaps) {
  auto pile = std::make_unique<TMPolygonList>(false);
  TMPolygonList* raw = pile.get();
  if (Heaps.GetOwnsObjects())
    Heaps.Add(std::move(pile));
  else
    Heaps.Add(pile.release());
  return raw;
}

}  // namespace

TMPolygonList::~TMPolygonList() {
  for (TMPolygon* p : FItems) {
    if (p == nullptr || p->Plug == nullptr) continue;
    if (p->Plug == this)
      p->Plug = nullptr;
    else if (GetOwnsObjects())
      Unpile(*p);  // about to be freed: its pile must not keep it
  }
}

std::unique_ptr<TVGeometry2DList<TMPolygon>> TMPolygonList::New(bool AOwnsObjects) const {
  return std::make_unique<TMPolygonList>(AOwnsObjects);
}

int TMPolygonList::Compare(TMPolygon* const& A, TMPolygon* const& B) {
  const double a = A->BoundBox().XMin;
  const double b = B->BoundBox().XMin;
  if (b > a) return -1;
  if (a > b) return 1;
  return 0;
}

void TMPolygonList::Notify(TMPolygon* const& Item, TCollectionNotification Action) {
  if (Action != TCollectionNotification::cnAdded && Item != nullptr && Item->Plug != nullptr) {
    if (Item->Plug == this)
      Item->Plug = nullptr;
    else if (Action == TCollectionNotification::cnRemoved && GetOwnsObjects())
      Unpile(*Item);
  }
  TVGeometry2DList<TMPolygon>::Notify(Item, Action);
}

void TMPolygonList::Join(TMPolygon& A, TMPolygon& B, TMPolyline2DsList& Heaps) {
  if (A.Plug == nullptr && B.Plug == nullptr) {
    TMPolygonList* pile = NewPile(Heaps);
    pile->Add(&A);
    pile->Add(&B);
    A.Plug = pile;
    B.Plug = pile;
  } else if (A.Plug == nullptr) {
    B.Plug->Add(&A);
    A.Plug = B.Plug;
  } else if (B.Plug == nullptr) {
    A.Plug->Add(&B);
    B.Plug = A.Plug;
  } else if (A.Plug != B.Plug) {
    TMPolygonList* into = A.Plug;
    TMPolygonList* from = B.Plug;
    for (TMPolygon* p : *from) {
      into->Add(p);
      p->Plug = into;
    }
    from->Clear();
    const bool owned = Heaps.GetOwnsObjects();
    Heaps.Remove(from);
    if (!owned) delete from;  // known to nobody else: Merge made it
  }
}

void TMPolygonList::Merge(TMPolyline2DsList& Heaps) {
  // Polygons without chains have no box and touch nothing.
  std::vector<TMPolygon*> live;
  std::vector<TRect2D> boxes;
  double sumHeight = 0.0;
  TRect2D whole = TRect2D::Invalid();
  for (TMPolygon* p : FItems) {
    const TRect2D box = p->BoundBox();
    if (p->Count() == 0 || !box.IsValid()) continue;
    live.push_back(p);
    boxes.push_back(box);
    sumHeight += box.Height();
    whole.Extend(box);
  }

  if (live.size() >= 2) {
    // Strips of about four mean heights. Flat outlines only (a total height of 0) give no
    // mean to size strips by: one strip holds all. More strips than polygons help nothing.
    int n = 1;
    if (sumHeight > 0.0) {
      const double target = 4.0 * sumHeight / static_cast<double>(live.size());
      const double wanted = std::nearbyint(whole.Height() / target);
      n = static_cast<int>(std::clamp(wanted, 1.0, static_cast<double>(live.size())));
    }
    const double stripHeight = whole.Height() / n;
    std::vector<double> edges(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) edges[static_cast<std::size_t>(i)] = whole.YMin + i * stripHeight;
    // A strip index per height: the strip whose lower edge lies below it (the first one for
    // heights at or below the lowest edge).
    const auto stripOf = [&](double Y) {
      const auto it = std::lower_bound(edges.begin(), edges.end(), Y);
      const auto k = static_cast<std::size_t>(it - edges.begin());
      return k > 0 ? k - 1 : 0;
    };
    std::vector<std::vector<std::size_t>> strips(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < live.size(); ++i) {
      // Grown by the contact tolerance: two outlines within 1e-6 across a strip edge must
      // share a strip.
      const std::size_t lo = stripOf(boxes[i].YMin - ContactTol);
      const std::size_t hi = stripOf(boxes[i].YMax + ContactTol);
      for (std::size_t s = lo; s <= hi; ++s) strips[s].push_back(i);
    }

    std::vector<double> lefts;
    for (std::vector<std::size_t>& strip : strips) {
      // Stable, so that equal left edges keep list order and the piles come out the same
      // for the same list.
      std::stable_sort(strip.begin(), strip.end(),
                       [&](std::size_t a, std::size_t b) { return boxes[a].XMin < boxes[b].XMin; });
      lefts.clear();
      for (const std::size_t i : strip) lefts.push_back(boxes[i].XMin);
      for (std::size_t a = 0; a < strip.size(); ++a) {
        const TRect2D& boxA = boxes[strip[a]];
        TMPolygon& polyA = *live[strip[a]];
        // Only polygons that start before A's right edge (plus the tolerance) can touch it.
        const auto end = static_cast<std::size_t>(
            std::upper_bound(lefts.begin() + static_cast<std::ptrdiff_t>(a) + 1, lefts.end(), boxA.XMax + ContactTol) -
            lefts.begin());
        for (std::size_t b = a + 1; b < end; ++b) {
          TMPolygon& polyB = *live[strip[b]];
          if (boxA.RelationWithRect(boxes[strip[b]], ContactTol) == 0) continue;
          if (polyA.Plug != nullptr && polyA.Plug == polyB.Plug) continue;
          if (polyA.TestOverlap(polyB)) Join(polyA, polyB, Heaps);
        }
      }
    }
  }

  for (TMPolygon* p : FItems) {
    if (p->Plug != nullptr) continue;
    TMPolygonList* pile = NewPile(Heaps);
    pile->Add(p);
    p->Plug = pile;
  }
}

std::unique_ptr<TVHPolygon> TMPolygonList::TransToTVGSPolygon() const {
  const bool clockwise = Count() > 0 && First()->Count() > 0 && First()->IsClockwise();
  auto result = std::make_unique<TVHPolygon>(clockwise);
  for (const TMPolygon* p : FItems) {
    if (p->Count() == 0)
      result->Add(std::make_unique<TVPolyline2D>());
    else
      result->Add(p->ToVPolyline2D());
  }
  return result;
}

}  // namespace orvane
