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
// The same for a NUL-terminated text with ASCII blanks allowed around the number: the
// readers of markup values, which meet millions of them and find most in plain decimals.
bool TextToDouble(const char* Text, double& Value);
bool TextToInt32(const char* Text, std::int32_t& Value);

}  // namespace orvane::internal
