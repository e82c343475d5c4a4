#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <random>
#include <string>

#include "orvane/persistence/internal/NumberText.h"

using namespace orvane::internal;

namespace {

// The reference: from_chars over the text without its blanks, finite values only.
bool Reference(const std::string& Text, double& Value) {
  const std::string_view t = TrimBlanks(Text);
  const auto res = std::from_chars(t.data(), t.data() + t.size(), Value, std::chars_format::general);
  return res.ec == std::errc() && res.ptr == t.data() + t.size() && std::isfinite(Value);
}

void ExpectLikeFromChars(const std::string& Text) {
  double want = 0.0;
  double got = 0.0;
  const bool ok = Reference(Text, want);
  ASSERT_EQ(TextToDouble(Text.c_str(), got), ok) << '"' << Text << '"';
  if (ok) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(got), std::bit_cast<std::uint64_t>(want)) << '"' << Text << '"';
  }
}

}  // namespace

// The in-line reader and its exact-integer check against from_chars: random decimals of 1 to
// 20 digits with the point anywhere, the edges of the exact range (2^53, a power of two and
// its halves, ties), and the forms that must go the general way or fail.
TEST(MarkupNumbers, ReadAsFromCharsReadsThem) {
  for (const char* t : {"0", "-0", "1", "0.1", "-12.5", "007", "9007199254740992", "9007199254740993",
                        "4503599627370496.5", "4503599627370497.5", "9007199254740993.0", "0.30000000000000004",
                        "18446744073709551615", "99999999999999999999", "1152921504606846976", "0.0009765625",
                        "1e5", "-2.5E-3", " 12 ", "\t1.5\n", "1.", ".5", "-.5", "", "-", "+1", "1 2", "1x",
                        "inf", "nan", "1e400", "0x10", "1..2", "--1"}) {
    ExpectLikeFromChars(t);
  }
  std::mt19937_64 rng(24);
  for (int i = 0; i < 200000; ++i) {
    const int digits = 1 + static_cast<int>(rng() % 20);
    std::string s = rng() % 2 ? "-" : "";
    for (int k = 0; k < digits; ++k) s += static_cast<char>('0' + rng() % 10);
    const int point = static_cast<int>(rng() % static_cast<unsigned>(digits + 1));
    if (point > 0 && point < digits) s.insert(s.size() - static_cast<std::size_t>(point), ".");
    ExpectLikeFromChars(s);
  }
  std::int32_t n = 0;
  EXPECT_TRUE(TextToInt32(" 12 ", n) && n == 12);
  EXPECT_TRUE(TextToInt32("2147483647", n) && n == 2147483647);
  EXPECT_FALSE(TextToInt32("2147483648", n));
  EXPECT_TRUE(TextToInt32("-3", n) && n == -3);
  EXPECT_FALSE(TextToInt32("", n) || TextToInt32("1.0", n) || TextToInt32("+1", n));
}
