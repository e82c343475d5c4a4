#include <gtest/gtest.h>

#include "orvane/Orvane.h"
TEST(Smoke, Builds) { EXPECT_EQ(orvane::Round(2.5), 2); }
