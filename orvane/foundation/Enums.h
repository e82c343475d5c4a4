#pragma once
// The small enumerations that the whole kernel shares. Ordinals are fixed: they appear in
// files and in hosts' switch statements.

#include <cstdint>

namespace orvane {

// Result of the straight-line intersection of two line curves.
enum class TIntersectionType : std::uint8_t {
  itNone,      // no intersection
  itInner,     // one point, inside both segments
  itEndEnd,    // one point, at an end of both segments
  itOtherEnd,  // one point, inside this segment and at an end of the other
  itThisEnd,   // one point, at an end of this segment and inside the other
  itOverlap    // a collinear stretch; two intersections are reported
};

// Nine directions; the diagonals are paired so that 5/8 and 6/7 are opposite.
enum class TDir : std::uint8_t {
  dirNone,
  dirLeft,
  dirRight,
  dirDown,
  dirUp,
  dirLeftDown,
  dirLeftUp,
  dirRightDown,
  dirRightUp
};

// Relation of a shape to a shape or a point. Point relations answer srOn, srIn or srOut.
enum class TShapeRelation : std::uint8_t { srOn, srIn, srOut, srContain, srContained, srCross, srDeviate, srEqual };

// Relation of a first range to a second.
enum class TRangeRelation : std::uint8_t { rgContained, rgCross, rgContain, rgDeviate };

// Kind of a mixed segment.
enum class TSegType : std::uint8_t { stLine, stArc, stBezier };

}  // namespace orvane
