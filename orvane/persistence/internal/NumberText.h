#pragma once
// Numbers as file text: the shortest text that reads back to the same double, and strict
// readers. Neither side looks at the C locale.

#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvane::internal {

// Room for the longest shortest form of a double ("-2.2250738585072014e-308").
using TNumberBuf = std::array<char, 32>;

// Writes Value's shortest round-trip text into Buf; returns its length.
inline std::size_t DoubleToChars(double Value, TNumberBuf& Buf) {
  return static_cast<std::size_t>(std::to_chars(Buf.data(), Buf.data() + Buf.size(), Value).ptr - Buf.data());
}

inline void AppendDouble(std::string& Out, double Value) {
  TNumberBuf buf;
  Out.append(buf.data(), DoubleToChars(Value, buf));
}

inline std::string DoubleToText(double Value) {
  TNumberBuf buf;
  return {buf.data(), DoubleToChars(Value, buf)};
}

// Text without the ASCII blanks around it.
inline std::string_view TrimBlanks(std::string_view Text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
  while (!Text.empty() && blank(Text.front())) Text.remove_prefix(1);
  while (!Text.empty() && blank(Text.back())) Text.remove_suffix(1);
  return Text;
}

// The whole of Text as a finite double; false for anything else ("inf", "nan", a number out
// of range, trailing characters). Value is untouched on false.
bool TextToDouble(std::string_view Text, double& Value);
// The whole of Text as a 32-bit integer; false otherwise.
bool TextToInt32(std::string_view Text, std::int32_t& Value);
// The same for a NUL-terminated text with ASCII blanks allowed around the number.
bool TextToDoubleZ(const char* Text, double& Value);
bool TextToInt32Z(const char* Text, std::int32_t& Value);
// The plain decimal [Text, End), whose digits make Mantissa with Decimals of them behind the
// point, for those too long to be read exactly in line.
bool DecimalToDouble(const char* Text, const char* End, std::uint64_t Mantissa, std::ptrdiff_t Digits,
                     std::ptrdiff_t Decimals, double& Value);

// Every power of ten that a double holds exactly.
inline constexpr double CExactPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The decimal digits from P on, added to Mantissa; answers where they stop. Four digits
// join before they meet Mantissa, so that its chain of multiplications, which decides the
// time of a long number, is a quarter as long. A byte is read only after the byte before it
// was a digit, so the text's terminating NUL is never passed.
inline const char* AddDigits(const char* P, std::uint64_t& Mantissa) {
  std::uint64_t m = Mantissa;
  for (;;) {
    const unsigned d0 = static_cast<unsigned char>(P[0]) - 48u;
    if (d0 > 9) break;
    const unsigned d1 = static_cast<unsigned char>(P[1]) - 48u;
    if (d1 > 9) {
      m = m * 10 + d0;
      P += 1;
      break;
    }
    const unsigned d2 = static_cast<unsigned char>(P[2]) - 48u;
    if (d2 > 9) {
      m = m * 100 + (d0 * 10 + d1);
      P += 2;
      break;
    }
    const unsigned d3 = static_cast<unsigned char>(P[3]) - 48u;
    if (d3 > 9) {
      m = m * 1000 + (d0 * 100 + d1 * 10 + d2);
      P += 3;
      break;
    }
    m = m * 10000 + (d0 * 1000 + d1 * 100 + d2 * 10 + d3);
    P += 4;
  }
  Mantissa = m;
  return P;
}

// TextToDoubleZ, taking the common case in line: the readers of markup values meet millions
// of numbers and find most of them plain decimals ("-12.5") with nothing around them. When
// such a decimal's digits make an integer of at most 2^53 and it has at most 22 decimals,
// integer and power of ten are exact doubles and one division rounds correctly, so the value
// is the one from_chars gives.
inline bool TextToDouble(const char* Text, double& Value) {
  const char* p = Text;
  const bool negative = *p == '-';
  if (negative) ++p;
  // More than 19 digits may wrap the integer; such numbers go the general way.
  std::uint64_t mantissa = 0;
  const char* whole = p;
  p = AddDigits(p, mantissa);
  const char* point = p;
  if (*p == '.') p = AddDigits(p + 1, mantissa);
  const std::ptrdiff_t decimals = *point == '.' ? p - point - 1 : 0;
  const std::ptrdiff_t digits = (point - whole) + decimals;
  if (*p != '\0' || point == whole || (*point == '.' && decimals == 0)) return TextToDoubleZ(Text, Value);
  if (digits > 19 || decimals > 22 || mantissa > (std::uint64_t{1} << 53)) {
    return DecimalToDouble(Text, p, mantissa, digits, decimals, Value);
  }
  const double v = static_cast<double>(mantissa) / CExactPow10[decimals];
  Value = negative ? -v : v;
  return true;
}

// TextToInt32Z, taking a plain count of up to 9 digits in line.
inline bool TextToInt32(const char* Text, std::int32_t& Value) {
  const char* p = Text;
  std::int32_t v = 0;
  for (unsigned d; (d = static_cast<unsigned char>(*p) - 48u) <= 9 && p - Text < 9; ++p) {
    v = v * 10 + static_cast<std::int32_t>(d);
  }
  if (*p != '\0' || p == Text) return TextToInt32Z(Text, Value);
  Value = v;
  return true;
}

}  // namespace orvane::internal
