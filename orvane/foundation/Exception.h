#pragma once
// The exception hierarchy of the kernel and the printf-style message helper.
//
// Exception
//  +- EKETRAError -> EParamError, ERTreeError
//  +- EGeometry -> ECircularArcParam
//  +- EAssertionFailed   ("[Assert] ..." invariants; always checked)
//  +- EAbstractError, EInOutError, EConvertError, EListError

#include <cstdint>
#include <exception>
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

class ORVANE_API Exception : public std::exception {
 public:
  explicit Exception(std::string AMessage) : Message(std::move(AMessage)) {}
  template <class A0, class... TArgs>
  Exception(std::string_view Fmt, const A0& Arg0, const TArgs&... Args) : Message(Format(Fmt, Arg0, Args...)) {}

  const char* what() const noexcept override { return Message.c_str(); }

  std::string Message;
};

#define ORVANE_DECLARE_EXCEPTION(Name, Base) \
  class ORVANE_API Name : public Base {      \
   public:                                   \
    using Base::Base;                        \
  }

ORVANE_DECLARE_EXCEPTION(EKETRAError, Exception);
ORVANE_DECLARE_EXCEPTION(EParamError, EKETRAError);
ORVANE_DECLARE_EXCEPTION(ERTreeError, EKETRAError);
ORVANE_DECLARE_EXCEPTION(EGeometry, Exception);
ORVANE_DECLARE_EXCEPTION(ECircularArcParam, EGeometry);
// An invariant that only a programming error can break. The message is the invariant's own
// text ("[Assert] TVPolyline2D.RangeLength: 下标越界"); Source names the module that states it.
class ORVANE_API EAssertionFailed : public Exception {
 public:
  EAssertionFailed(std::string AMessage, std::string ASource)
      : Exception(std::move(AMessage)), Source(std::move(ASource)) {}
  std::string Source;
};
ORVANE_DECLARE_EXCEPTION(EAbstractError, Exception);
ORVANE_DECLARE_EXCEPTION(EInOutError, Exception);
ORVANE_DECLARE_EXCEPTION(EConvertError, Exception);
// Index misuse of the runtime containers (TList, TObjectList).
ORVANE_DECLARE_EXCEPTION(EListError, Exception);

#undef ORVANE_DECLARE_EXCEPTION

// Raises EAssertionFailed(Message, Source) when Condition fails. Invariants are checked in
// every build type; Source is "Orvane" or "RTree".
inline void Assert(bool Condition, std::string_view Message, std::string_view Source = "Orvane") {
  if (!Condition) throw EAssertionFailed(std::string(Message), std::string(Source));
}

}  // namespace orvane
