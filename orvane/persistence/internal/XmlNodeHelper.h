#pragma once
// The typed values of curve elements on pugixml: attributes, value children and point
// children, written with the shortest round-trip number text and read strictly. An absent
// value reads as its default; a value that is there but malformed is an EInOutError that
// names the element's path and its byte offset.

#include <cstdint>
#include <cstring>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <type_traits>

#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

class TXmlNodeHelper {
 public:
  TXmlNodeHelper() = delete;

  // A child element Name with the attributes "X" and "Y".
  static void WritePoint(pugi::xml_node& ANode, const char* Name, const TPoint2D& Pt);
  // The point of the first child Name; the origin without one, 0.0 for an absent coordinate.
  static TPoint2D ReadPoint2D(const pugi::xml_node& ANode, const char* Name, const char* Where);

  // Value children: a child element Name whose text is the value.
  static void WriteValue(pugi::xml_node& ANode, const char* Name, double Value);
  static void WriteValue(pugi::xml_node& ANode, const char* Name, bool Value);
  static double ReadDoubleValue(const pugi::xml_node& ANode, const char* Name, const char* Where);
  static bool ReadBoolValue(const pugi::xml_node& ANode, const char* Name, const char* Where);
  // The text of ANode itself as a double, for value children found by a walk over the
  // children rather than by name.
  static double ReadDoubleText(const pugi::xml_node& ANode, const char* Where);

  // Attributes of ANode itself.
  static void WriteAttr(pugi::xml_node& ANode, const char* Name, double Value);
  static void WriteAttr(pugi::xml_node& ANode, const char* Name, std::int32_t Value);
  static void WriteAttr(pugi::xml_node& ANode, const char* Name, bool Value);
  static double ReadDoubleAttr(const pugi::xml_node& ANode, const char* Name, const char* Where);
  // The value of Attr, an attribute of ANode that the caller found by a walk over them.
  static double ReadDoubleAttr(const pugi::xml_node& ANode, const pugi::xml_attribute& Attr, const char* Where);
  static std::int32_t ReadIntAttr(const pugi::xml_node& ANode, const char* Name, const char* Where);
  static bool ReadBoolAttr(const pugi::xml_node& ANode, const char* Name, const char* Where);
  // The same for an attribute found by a walk; an empty Attr reads as absent.
  static std::int32_t ReadIntAttr(const pugi::xml_node& ANode, const pugi::xml_attribute& Attr, const char* Where);
  static bool ReadBoolAttr(const pugi::xml_node& ANode, const pugi::xml_attribute& Attr, const char* Where);

  // The number of child elements of ANode whose name starts with Prefix (ASCII letter case
  // ignored), counted no further than Limit + 1: enough to check a count from the file
  // against the children really present before anything is sized by it.
  static std::int64_t CountChildren(const pugi::xml_node& ANode, std::string_view Prefix, std::int64_t Limit);
  // The element's place for messages: "/Curve2DList/Line2D[2]/LineStart, byte 40", positions
  // counting earlier siblings of the same name from 1.
  static std::string Place(const pugi::xml_node& ANode);
  // The number of element ancestors of ANode, counted no further than Limit + 1.
  static int Depth(const pugi::xml_node& ANode, int Limit);
  // EInOutError "[Error] <Where>: <What> (<Place(ANode)>)".
  [[noreturn]] static void Fail(const pugi::xml_node& ANode, const char* Where, const std::string& What);
};

// Whether a node or attribute handle is empty, tested in line: a handle is one pointer to the
// parser's record, nil when empty, whereas its own test is a call into the library, which the
// walks over large files would make for every node and attribute.
template <class THandle>
bool IsEmpty(const THandle& AHandle) {
  static_assert(sizeof(THandle) == sizeof(void*) && std::is_trivially_copyable_v<THandle>);
  const void* record = nullptr;
  std::memcpy(&record, &AHandle, sizeof record);
  return record == nullptr;
}

// ASCII letter case ignored; other bytes compare exactly.
bool SameText(std::string_view A, std::string_view B);

}  // namespace orvane::internal
