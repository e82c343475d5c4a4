#pragma once
// The enumerations and double-coordinate records that both clipping faces (orvane::Clipper
// and orvane::Clipper2) share. Ordinals are part of the exported interface; the adapter maps
// them onto the engine's own values.

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/paths/Path64.h"

namespace orvane {

enum class TClipType : std::uint8_t { ctNone, ctIntersection, ctUnion, ctDifference, ctXor };

enum class TFillRule : std::uint8_t { frEvenOdd, frNonZero, frPositive, frNegative };

enum class TPathType : std::uint8_t { ptSubject, ptClip };

enum class TJoinType : std::uint8_t { jtMiter, jtSquare, jtBevel, jtRound };

enum class TEndType : std::uint8_t { etPolygon, etJoined, etButt, etSquare, etRound };

enum class TPointInPolygonResult : std::uint8_t { pipOn, pipInside, pipOutside };

enum class TInitOption : std::uint8_t { ioReverseSolution, ioStrictlySimple, ioPreserveCollinear };

// A set of TInitOption values.
class ORVANE_API TInitOptions {
 public:
  constexpr TInitOptions() = default;
  constexpr TInitOptions(TInitOption Option) : FBits(Bit(Option)) {}
  constexpr TInitOptions(std::initializer_list<TInitOption> Options) {
    for (TInitOption o : Options) FBits = static_cast<std::uint8_t>(FBits | Bit(o));
  }

  constexpr bool Contains(TInitOption Option) const { return (FBits & Bit(Option)) != 0; }
  constexpr TInitOptions& Include(TInitOption Option) {
    FBits = static_cast<std::uint8_t>(FBits | Bit(Option));
    return *this;
  }
  constexpr TInitOptions& Exclude(TInitOption Option) {
    FBits = static_cast<std::uint8_t>(FBits & ~Bit(Option));
    return *this;
  }
  constexpr bool IsEmpty() const { return FBits == 0; }
  // Bit i stands for the option of ordinal i.
  constexpr std::uint8_t Bits() const { return FBits; }

  friend constexpr TInitOptions operator|(TInitOptions A, TInitOptions B) {
    TInitOptions r;
    r.FBits = static_cast<std::uint8_t>(A.FBits | B.FBits);
    return r;
  }
  friend constexpr bool operator==(TInitOptions A, TInitOptions B) = default;

 private:
  static constexpr std::uint8_t Bit(TInitOption Option) {
    return static_cast<std::uint8_t>(1u << static_cast<unsigned>(Option));
  }
  std::uint8_t FBits = 0;
};

constexpr TInitOptions operator|(TInitOption A, TInitOption B) { return TInitOptions(A) | TInitOptions(B); }

// A point, path and box in double coordinates, for the double-coordinate calls of Clipper2
// and for DoublePoint.
struct TPointD {
  double X = 0.0;
  double Y = 0.0;

  constexpr TPointD() = default;
  constexpr TPointD(double AX, double AY) : X(AX), Y(AY) {}
  friend constexpr bool operator==(const TPointD& A, const TPointD& B) = default;
};

using TPathD = std::vector<TPointD>;
using TPathsD = std::vector<TPathD>;

struct TRectD {
  double Left = 0.0;
  double Top = 0.0;
  double Right = 0.0;
  double Bottom = 0.0;

  constexpr TRectD() = default;
  constexpr TRectD(double ALeft, double ATop, double ARight, double ABottom)
      : Left(ALeft), Top(ATop), Right(ARight), Bottom(ABottom) {}
  friend constexpr bool operator==(const TRectD& A, const TRectD& B) = default;
};

}  // namespace orvane
