#include "orvane/curves/CurveJoin.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/foundation/Exception.h"

namespace orvane {

namespace {

struct TEnd {
  TPoint2D P;
  int Curve = 0;
  bool AtStart = false;  // the curve's start point (else its end point)
};

class TEndIndex {
 public:
  TEndIndex(std::vector<TEnd> Ends, double Tol) : FEnds(std::move(Ends)), FTol(Tol) {
    std::stable_sort(FEnds.begin(), FEnds.end(), [](const TEnd& a, const TEnd& b) { return a.P.X < b.P.X; });
    FXs.reserve(FEnds.size());
    for (const TEnd& e : FEnds) FXs.push_back(e.P.X);
  }

  // The nearest end within the tolerance of P whose curve is still free; false when none.
  bool Nearest(const TPoint2D& P, const std::vector<char>& Used, TEnd& Found, double& Dist) const {
    bool any = false;
    Dist = std::numeric_limits<double>::infinity();
    auto it = std::lower_bound(FXs.begin(), FXs.end(), P.X - FTol);
    for (auto i = static_cast<std::size_t>(it - FXs.begin()); i < FEnds.size() && FXs[i] <= P.X + FTol; ++i) {
      const TEnd& e = FEnds[i];
      if (Used[static_cast<std::size_t>(e.Curve)]) continue;
      const double d = std::hypot(e.P.X - P.X, e.P.Y - P.Y);
      if (d > FTol) continue;
      if (!any || d < Dist || (d == Dist && (e.Curve < Found.Curve || (e.Curve == Found.Curve && e.AtStart)))) {
        Found = e;
        Dist = d;
        any = true;
      }
    }
    return any;
  }

 private:
  std::vector<TEnd> FEnds;
  std::vector<double> FXs;
  double FTol;
};

double Dist(const TPoint2D& a, const TPoint2D& b) { return std::hypot(a.X - b.X, a.Y - b.Y); }

}  // namespace

std::vector<TCurveChain> JoinCurveEnds(const std::vector<const TGeCurve2D*>& Curves, double Tol) {
  if (!(Tol >= 0.0) || !std::isfinite(Tol)) throw EParamError("JoinCurveEnds: the tolerance must be a finite number >= 0");
  const std::size_t n = Curves.size();
  std::vector<TPoint2D> starts(n), ends(n);
  std::vector<char> used(n, 0);
  std::vector<TEnd> all;
  all.reserve(2 * n);
  for (std::size_t i = 0; i < n; ++i) {
    if (Curves[i] == nullptr) {
      used[i] = 1;
      continue;
    }
    starts[i] = Curves[i]->GetStartPoint();
    ends[i] = Curves[i]->GetEndPoint();
    all.push_back({starts[i], static_cast<int>(i), true});
    all.push_back({ends[i], static_cast<int>(i), false});
  }
  const TEndIndex index(std::move(all), Tol);

  std::vector<TCurveChain> chains;
  for (std::size_t first = 0; first < n; ++first) {
    if (used[first]) continue;
    used[first] = 1;
    TCurveChain chain;
    chain.Items.push_back({static_cast<int>(first), false});
    TPoint2D head = starts[first], tail = ends[first];
    if (Dist(head, tail) <= Tol) {
      chain.Closed = true;
      chains.push_back(std::move(chain));
      continue;
    }
    // Forwards from the tail, then backwards from the head.
    for (int side = 0; side < 2 && !chain.Closed; ++side) {
      std::vector<TCurveChainItem> back;
      for (;;) {
        const TPoint2D& from = side == 0 ? tail : head;
        TEnd e;
        double d = 0.0;
        const bool found = index.Nearest(from, used, e, d);
        const double closing = Dist(head, tail);
        if (closing <= Tol && (!found || closing <= d)) {
          chain.Closed = true;
          break;
        }
        if (!found) break;
        used[static_cast<std::size_t>(e.Curve)] = 1;
        const std::size_t c = static_cast<std::size_t>(e.Curve);
        if (side == 0) {
          // Entered at its start: runs forwards; at its end: reversed.
          chain.Items.push_back({e.Curve, !e.AtStart});
          tail = e.AtStart ? ends[c] : starts[c];
        } else {
          // Prepended: its end must meet the head, so entered at its start means reversed.
          back.push_back({e.Curve, e.AtStart});
          head = e.AtStart ? ends[c] : starts[c];
        }
      }
      if (!back.empty()) chain.Items.insert(chain.Items.begin(), back.rbegin(), back.rend());
    }
    chains.push_back(std::move(chain));
  }
  return chains;
}

}  // namespace orvane
