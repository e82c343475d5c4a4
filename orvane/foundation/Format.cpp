#include "orvane/foundation/Format.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace orvane {

namespace {

// One %-conversion of a format as parsed: flags, width, precision and conversion letter.
struct TFormatItem {
  bool LeftAlign = false;
  bool Plus = false;
  bool Space = false;
  bool ZeroPad = false;
  int Width = 0;
  int Precision = -1;
  char Conv = 0;
};

std::string Pad(std::string Body, const TFormatItem& Item, bool Numeric) {
  const auto width = static_cast<std::size_t>(Item.Width);
  if (Body.size() >= width) return Body;
  const std::size_t fill = width - Body.size();
  if (Item.LeftAlign) return Body + std::string(fill, ' ');
  if (Item.ZeroPad && Numeric) {
    // Zeros go between the sign and the digits.
    std::size_t at = (!Body.empty() && (Body[0] == '-' || Body[0] == '+' || Body[0] == ' ')) ? 1 : 0;
    return Body.insert(at, fill, '0');
  }
  return std::string(fill, ' ') + Body;
}

std::string SignPrefix(bool Negative, const TFormatItem& Item) {
  if (Negative) return "-";
  if (Item.Plus) return "+";
  if (Item.Space) return " ";
  return {};
}

std::string FormatFloat(double Value, const TFormatItem& Item) {
  if (std::isnan(Value)) return "NAN";
  const bool negative = std::signbit(Value);
  if (std::isinf(Value)) return SignPrefix(negative, Item) + "INF";
  const int precision = Item.Precision < 0 ? 6 : Item.Precision;
  std::chars_format fmt = std::chars_format::fixed;
  if (Item.Conv == 'e' || Item.Conv == 'E') fmt = std::chars_format::scientific;
  if (Item.Conv == 'g' || Item.Conv == 'G') fmt = std::chars_format::general;
  std::array<char, 400> buf{};
  auto res = std::to_chars(buf.data(), buf.data() + buf.size(), std::fabs(Value), fmt,
                           (fmt == std::chars_format::general && precision == 0) ? 1 : precision);
  std::string digits(buf.data(), res.ptr);
  if (Item.Conv == 'E' || Item.Conv == 'G') {
    for (char& c : digits) c = (c == 'e') ? 'E' : c;
  }
  return SignPrefix(negative, Item) + digits;
}

std::string FormatInteger(std::uint64_t Magnitude, bool Negative, const TFormatItem& Item) {
  std::array<char, 32> buf{};
  const int base = (Item.Conv == 'x' || Item.Conv == 'X') ? 16 : 10;
  auto res = std::to_chars(buf.data(), buf.data() + buf.size(), Magnitude, base);
  std::string digits(buf.data(), res.ptr);
  if (Item.Conv == 'X') {
    for (char& c : digits) c = static_cast<char>((c >= 'a' && c <= 'f') ? c - 'a' + 'A' : c);
  }
  if (Item.Precision >= 0 && digits.size() < static_cast<std::size_t>(Item.Precision)) {
    digits.insert(0, static_cast<std::size_t>(Item.Precision) - digits.size(), '0');
  }
  return SignPrefix(Negative, Item) + digits;
}

std::string FormatOne(const detail::TFormatArg& Arg, const TFormatItem& Item) {
  using K = detail::TFormatArg::TKind;
  switch (Item.Conv) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X': {
      if (Arg.Kind == K::Float) return Pad(FormatFloat(Arg.F, {.Conv = 'g'}), Item, false);
      if (Arg.Kind == K::Text) return Pad(Arg.S, Item, false);
      if (Arg.Kind == K::Unsigned) return Pad(FormatInteger(Arg.U, false, Item), Item, true);
      const bool negative = Arg.I < 0;
      const std::uint64_t magnitude =
          negative ? static_cast<std::uint64_t>(-(Arg.I + 1)) + 1u : static_cast<std::uint64_t>(Arg.I);
      return Pad(FormatInteger(magnitude, negative, Item), Item, true);
    }
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G': {
      double v = Arg.F;
      if (Arg.Kind == K::Signed) v = static_cast<double>(Arg.I);
      if (Arg.Kind == K::Unsigned) v = static_cast<double>(Arg.U);
      if (Arg.Kind == K::Text) return Pad(Arg.S, Item, false);
      return Pad(FormatFloat(v, Item), Item, true);
    }
    default: {  // 's' and anything else: the argument's natural text
      std::string text;
      switch (Arg.Kind) {
        case K::Text: text = Arg.S; break;
        case K::Signed: text = std::to_string(Arg.I); break;
        case K::Unsigned: text = std::to_string(Arg.U); break;
        case K::Float: text = FloatToStr(Arg.F); break;
      }
      if (Item.Precision >= 0 && text.size() > static_cast<std::size_t>(Item.Precision)) {
        text.resize(static_cast<std::size_t>(Item.Precision));
      }
      return Pad(text, Item, false);
    }
  }
}

}  // namespace

std::string detail::FormatArgs(std::string_view Fmt, const std::vector<TFormatArg>& Args) {
  std::string out;
  out.reserve(Fmt.size() + 16 * Args.size());
  std::size_t next = 0;
  for (std::size_t i = 0; i < Fmt.size(); ++i) {
    if (Fmt[i] != '%') {
      out.push_back(Fmt[i]);
      continue;
    }
    const std::size_t start = i++;
    if (i < Fmt.size() && Fmt[i] == '%') {
      out.push_back('%');
      continue;
    }
    TFormatItem item;
    for (; i < Fmt.size(); ++i) {
      const char c = Fmt[i];
      if (c == '-')
        item.LeftAlign = true;
      else if (c == '+')
        item.Plus = true;
      else if (c == ' ')
        item.Space = true;
      else if (c == '#')
        continue;  // the alternate forms are not needed by any message: accepted, ignored
      else if (c == '0')
        item.ZeroPad = true;
      else
        break;
    }
    while (i < Fmt.size() && Fmt[i] >= '0' && Fmt[i] <= '9') item.Width = item.Width * 10 + (Fmt[i++] - '0');
    if (i < Fmt.size() && Fmt[i] == '.') {
      item.Precision = 0;
      ++i;
      while (i < Fmt.size() && Fmt[i] >= '0' && Fmt[i] <= '9') item.Precision = item.Precision * 10 + (Fmt[i++] - '0');
    }
    while (i < Fmt.size() && (Fmt[i] == 'l' || Fmt[i] == 'h' || Fmt[i] == 'z' || Fmt[i] == 'j')) ++i;
    if (i >= Fmt.size()) {
      out.append(Fmt.substr(start));
      break;
    }
    item.Conv = Fmt[i];
    if (next >= Args.size()) {
      out.append(Fmt.substr(start, i - start + 1));
      continue;
    }
    out += FormatOne(Args[next++], item);
  }
  return out;
}

std::string FloatToStr(double Value) {
  if (std::isnan(Value)) return "NAN";
  if (std::isinf(Value)) return Value < 0 ? "-INF" : "INF";
  std::array<char, 64> buf{};
  auto res = std::to_chars(buf.data(), buf.data() + buf.size(), Value);
  return {buf.data(), res.ptr};
}

}  // namespace orvane
