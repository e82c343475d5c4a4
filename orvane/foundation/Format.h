#pragma once
// Format, the printf-style message helper of the kernel, and FloatToStr. Neither depends on
// the C locale: the decimal separator is always '.'.

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orvane/foundation/Export.h"

namespace orvane {

// Format's non-template core. The template below expands in the host's code and calls it
// there, so it belongs to the library's binary interface; hosts call Format, not this.
namespace detail {

// One argument of Format, captured by kind so that the formatter itself is not a template.
struct TFormatArg {
  enum class TKind : std::uint8_t { Signed, Unsigned, Float, Text };
  TKind Kind = TKind::Text;
  std::int64_t I = 0;
  std::uint64_t U = 0;
  double F = 0.0;
  std::string S;

  template <class T>
  static TFormatArg From(const T& Value) {
    TFormatArg arg;
    if constexpr (std::is_same_v<T, bool>) {
      arg.Kind = TKind::Signed;
      arg.I = Value ? 1 : 0;
    } else if constexpr (std::is_floating_point_v<T>) {
      arg.Kind = TKind::Float;
      arg.F = static_cast<double>(Value);
    } else if constexpr (std::is_enum_v<T>) {
      arg.Kind = TKind::Signed;
      arg.I = static_cast<std::int64_t>(Value);
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
      arg.Kind = TKind::Signed;
      arg.I = Value;
    } else if constexpr (std::is_integral_v<T>) {
      arg.Kind = TKind::Unsigned;
      arg.U = Value;
    } else {
      arg.S = std::string(std::string_view(Value));
    }
    return arg;
  }
};

ORVANE_API std::string FormatArgs(std::string_view Fmt, const std::vector<TFormatArg>& Args);

}  // namespace detail

// printf-compatible formatting (%d %i %u %x %s %f %e %g %%, flags, width, precision)
// that never depends on the C locale: the decimal separator is always '.'.
// A conversion without a matching argument is written out literally.
template <class... TArgs>
std::string Format(std::string_view Fmt, const TArgs&... Args) {
  return detail::FormatArgs(Fmt, {detail::TFormatArg::From(Args)...});
}

// Shortest text that reads back to the same double ("1.5", "0.1", "1e-07").
ORVANE_API std::string FloatToStr(double Value);

}  // namespace orvane
