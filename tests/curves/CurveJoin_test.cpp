// Joining curves by their ends: chains that follow the drawing whatever the order and sense
// of the pieces, closing where the ends meet within the tolerance and nowhere else.
#include "orvane/curves/CurveJoin.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/Exception.h"

using namespace orvane;

TEST(CurveJoin, ChainsFollowTheEndsInAnyOrderAndSense) {
  std::vector<std::unique_ptr<TGeCurve2D>> own;
  auto line = [&](double X0, double Y0, double X1, double Y1) {
    own.push_back(std::make_unique<TGeLine2D>(TPoint2D(X0, Y0), TPoint2D(X1, Y1)));
  };
  // A square with a half-circle top, pieces shuffled and two reversed; an open zigzag whose
  // ends are 0.5 apart; a full circle on its own; a nil entry.
  line(10, 0, 0, 0);
  line(20, 0, 20, 5);
  line(0, 0, 0, 5);
  own.push_back(std::make_unique<TGeCircularArc2D>(TPoint2D(10, 5), 10.0, 0.0, M_PI));
  line(10, 0, 20, 1e-7);
  line(30, 0, 31, 1);
  line(31, 1, 30.5, 0);
  own.push_back(std::make_unique<TGeCircularArc2D>(TPoint2D(50, 0), 1.0, 0.0, 2 * M_PI));
  std::vector<const TGeCurve2D*> curves;
  for (const auto& c : own) curves.push_back(c.get());
  curves.insert(curves.begin() + 3, nullptr);

  const std::vector<TCurveChain> chains = JoinCurveEnds(curves, 1e-6);
  ASSERT_EQ(chains.size(), 3u);
  EXPECT_TRUE(chains[0].Closed);
  EXPECT_EQ(chains[0].Items.size(), 5u);
  EXPECT_FALSE(chains[1].Closed);
  EXPECT_EQ(chains[1].Items.size(), 2u);
  EXPECT_TRUE(chains[2].Closed);
  for (const TCurveChain& c : chains) {
    // Consecutive items meet, in the sense the chain runs them.
    auto from = [&](const TCurveChainItem& I) {
      const TGeCurve2D* k = curves[static_cast<std::size_t>(I.Index)];
      return I.Reversed ? k->GetEndPoint() : k->GetStartPoint();
    };
    auto to = [&](const TCurveChainItem& I) {
      const TGeCurve2D* k = curves[static_cast<std::size_t>(I.Index)];
      return I.Reversed ? k->GetStartPoint() : k->GetEndPoint();
    };
    for (std::size_t i = 0; i + 1 < c.Items.size(); ++i)
      EXPECT_LE(to(c.Items[i]).DistanceTo(from(c.Items[i + 1])), 1e-6);
    if (c.Closed) {
      EXPECT_LE(to(c.Items.back()).DistanceTo(from(c.Items.front())), 1e-6);
    }
  }
  // A tolerance below the 1e-7 step opens the square; one above the zigzag's gap closes it.
  EXPECT_FALSE(JoinCurveEnds(curves, 1e-8)[0].Closed);
  EXPECT_TRUE(JoinCurveEnds(curves, 0.6)[1].Closed);
  EXPECT_THROW(JoinCurveEnds(curves, -1.0), EParamError);
}
