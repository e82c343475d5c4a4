#pragma once
// The exception hierarchy of the kernel. Messages are built with Format (Format.h).
//
// Exception
//  +- EKETRAError -> EParamError, ERTreeError
//  +- EGeometry -> ECircularArcParam
//  +- EAssertionFailed   ("[Assert] ..." invariants; always checked)
//  +- EAbstractError, EInOutError, EConvertError, EListError

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Format.h"

namespace orvane {

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
