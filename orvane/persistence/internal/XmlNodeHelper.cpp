#include "orvane/persistence/internal/XmlNodeHelper.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/persistence/internal/NumberText.h"

namespace orvane::internal {

bool TextToDouble(std::string_view Text, double& Value) {
  double v = 0.0;
  const char* end = Text.data() + Text.size();
  const auto res = std::from_chars(Text.data(), end, v, std::chars_format::general);
  if (res.ec != std::errc() || res.ptr != end || !std::isfinite(v)) return false;
  Value = v;
  return true;
}

bool TextToInt32(std::string_view Text, std::int32_t& Value) {
  std::int32_t v = 0;
  const char* end = Text.data() + Text.size();
  const auto res = std::from_chars(Text.data(), end, v);
  if (res.ec != std::errc() || res.ptr != end) return false;
  Value = v;
  return true;
}

namespace {

constexpr bool IsBlank(char C) { return C == ' ' || C == '\t' || C == '\n' || C == '\r'; }

// Moves Text past its leading ASCII blanks and returns the end of the token there; nil when
// anything but blanks follows that token.
const char* TokenEnd(const char*& Text) {
  while (IsBlank(*Text)) ++Text;
  const char* end = Text;
  while (*end != '\0' && !IsBlank(*end)) ++end;
  const char* rest = end;
  while (IsBlank(*rest)) ++rest;
  return *rest == '\0' ? end : nullptr;
}

}  // namespace

bool TextToDoubleZ(const char* Text, double& Value) {
  const char* end = TokenEnd(Text);
  if (end == nullptr) return false;
  double v = 0.0;
  const auto res = std::from_chars(Text, end, v, std::chars_format::general);
  if (res.ec != std::errc() || res.ptr != end || !std::isfinite(v)) return false;
  Value = v;
  return true;
}

bool DecimalToDouble(const char* Text, const char* End, std::uint64_t Mantissa, std::ptrdiff_t Digits,
                     std::ptrdiff_t Decimals, double& Value) {
  // A guess by two roundings, or the double next to it, taken when exact integer arithmetic
  // shows it to be the nearest: with c = M 2^E (M of 53 bits), Mantissa / 10^Decimals lies
  // strictly within half a unit of c when (2M - 1) 10^Decimals < Mantissa 2^(1-E) <
  // (2M + 1) 10^Decimals. Long coordinates ("-415.3610207819987") nearly all pass; ties and
  // the rest go to from_chars.
  __extension__ using TWide = unsigned __int128;
  if (Digits <= 19 && Decimals <= 19) {
    const auto pow10 = static_cast<std::uint64_t>(CExactPow10[Decimals]);
    auto bits = std::bit_cast<std::uint64_t>(static_cast<double>(Mantissa) / CExactPow10[Decimals]);
    for (int tries = 0; tries < 2; ++tries) {
      const auto biased = static_cast<int>(bits >> 52);
      const int shift = 1076 - biased;  // 1 - E
      // A power of two has a narrower half unit below it; it is left to from_chars.
      if ((bits & ((std::uint64_t{1} << 52) - 1)) == 0 || shift < 0 || shift > 64) break;
      const std::uint64_t m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
      const TWide scaled = static_cast<TWide>(Mantissa) << shift;
      if (scaled <= static_cast<TWide>(2 * m - 1) * pow10) {
        --bits;
      } else if (scaled >= static_cast<TWide>(2 * m + 1) * pow10) {
        ++bits;
      } else {
        const double v = std::bit_cast<double>(bits);
        Value = *Text == '-' ? -v : v;
        return true;
      }
    }
  }
  double v = 0.0;
  const auto res = std::from_chars(Text, End, v, std::chars_format::general);
  if (res.ec != std::errc() || res.ptr != End || !std::isfinite(v)) return false;
  Value = v;
  return true;
}

bool TextToInt32Z(const char* Text, std::int32_t& Value) {
  const char* end = TokenEnd(Text);
  if (end == nullptr) return false;
  std::int32_t v = 0;
  const auto res = std::from_chars(Text, end, v);
  if (res.ec != std::errc() || res.ptr != end) return false;
  Value = v;
  return true;
}

bool SameText(std::string_view A, std::string_view B) {
  if (A.size() != B.size()) return false;
  const auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; };
  for (std::size_t i = 0; i < A.size(); ++i) {
    if (lower(A[i]) != lower(B[i])) return false;
  }
  return true;
}

namespace {

// What names the value in a message: the attribute Attr, or the element's text when nil.
std::string ValueName(const char* Attr) { return Attr != nullptr ? Format("the attribute %s", Attr) : "the value"; }

double ParseDouble(const pugi::xml_node& Node, const char* Where, const char* Attr, const char* Text) {
  double v = 0.0;
  if (!TextToDouble(Text, v)) {
    TXmlNodeHelper::Fail(Node, Where, Format("%s \"%s\" is no finite number", ValueName(Attr), Text));
  }
  return v;
}

bool ParseBool(const pugi::xml_node& Node, const char* Where, const char* Attr, const char* Text) {
  // The words as written, before the general way with blanks.
  if (std::strcmp(Text, "false") == 0) return false;
  if (std::strcmp(Text, "true") == 0) return true;
  const std::string_view t = TrimBlanks(Text);
  if (t == "true" || t == "1") return true;
  if (t == "false" || t == "0") return false;
  TXmlNodeHelper::Fail(Node, Where, Format("%s \"%s\" is no boolean", ValueName(Attr), Text));
}

// The text of the value child Name, or nil when there is none.
const char* ValueText(const pugi::xml_node& Node, const char* Name, pugi::xml_node& Child) {
  Child = Node.child(Name);
  return Child ? Child.child_value() : nullptr;
}

}  // namespace

void TXmlNodeHelper::WritePoint(pugi::xml_node& ANode, const char* Name, const TPoint2D& Pt) {
  pugi::xml_node child = ANode.append_child(Name);
  WriteAttr(child, "X", Pt.X);
  WriteAttr(child, "Y", Pt.Y);
}

TPoint2D TXmlNodeHelper::ReadPoint2D(const pugi::xml_node& ANode, const char* Name, const char* Where) {
  const pugi::xml_node child = ANode.child(Name);
  if (!child) return {};
  return {ReadDoubleAttr(child, "X", Where), ReadDoubleAttr(child, "Y", Where)};
}

void TXmlNodeHelper::WriteValue(pugi::xml_node& ANode, const char* Name, double Value) {
  ANode.append_child(Name).text().set(DoubleToText(Value).c_str());
}

void TXmlNodeHelper::WriteValue(pugi::xml_node& ANode, const char* Name, bool Value) {
  ANode.append_child(Name).text().set(Value ? "true" : "false");
}

double TXmlNodeHelper::ReadDoubleValue(const pugi::xml_node& ANode, const char* Name, const char* Where) {
  pugi::xml_node child;
  const char* text = ValueText(ANode, Name, child);
  return text == nullptr ? 0.0 : ParseDouble(child, Where, nullptr, text);
}

double TXmlNodeHelper::ReadDoubleText(const pugi::xml_node& ANode, const char* Where) {
  return ParseDouble(ANode, Where, nullptr, ANode.child_value());
}

bool TXmlNodeHelper::ReadBoolValue(const pugi::xml_node& ANode, const char* Name, const char* Where) {
  pugi::xml_node child;
  const char* text = ValueText(ANode, Name, child);
  return text == nullptr ? false : ParseBool(child, Where, nullptr, text);
}

void TXmlNodeHelper::WriteAttr(pugi::xml_node& ANode, const char* Name, double Value) {
  ANode.append_attribute(Name).set_value(DoubleToText(Value).c_str());
}

void TXmlNodeHelper::WriteAttr(pugi::xml_node& ANode, const char* Name, std::int32_t Value) {
  std::array<char, 16> buf{};
  const auto res = std::to_chars(buf.data(), buf.data() + buf.size(), Value);
  ANode.append_attribute(Name).set_value(std::string(buf.data(), res.ptr).c_str());
}

void TXmlNodeHelper::WriteAttr(pugi::xml_node& ANode, const char* Name, bool Value) {
  ANode.append_attribute(Name).set_value(Value ? "true" : "false");
}

double TXmlNodeHelper::ReadDoubleAttr(const pugi::xml_node& ANode, const pugi::xml_attribute& Attr, const char* Where) {
  return ParseDouble(ANode, Where, Attr.name(), Attr.value());
}

double TXmlNodeHelper::ReadDoubleAttr(const pugi::xml_node& ANode, const char* Name, const char* Where) {
  const pugi::xml_attribute attr = ANode.attribute(Name);
  return attr ? ParseDouble(ANode, Where, Name, attr.value()) : 0.0;
}

std::int32_t TXmlNodeHelper::ReadIntAttr(const pugi::xml_node& ANode, const char* Name, const char* Where) {
  return ReadIntAttr(ANode, ANode.attribute(Name), Where);
}

std::int32_t TXmlNodeHelper::ReadIntAttr(const pugi::xml_node& ANode, const pugi::xml_attribute& Attr,
                                         const char* Where) {
  if (!Attr) return 0;
  std::int32_t v = 0;
  if (!TextToInt32(Attr.value(), v)) {
    Fail(ANode, Where, Format("the attribute %s \"%s\" is no 32-bit integer", Attr.name(), Attr.value()));
  }
  return v;
}

bool TXmlNodeHelper::ReadBoolAttr(const pugi::xml_node& ANode, const char* Name, const char* Where) {
  return ReadBoolAttr(ANode, ANode.attribute(Name), Where);
}

bool TXmlNodeHelper::ReadBoolAttr(const pugi::xml_node& ANode, const pugi::xml_attribute& Attr, const char* Where) {
  return Attr ? ParseBool(ANode, Where, Attr.name(), Attr.value()) : false;
}

std::int64_t TXmlNodeHelper::CountChildren(const pugi::xml_node& ANode, std::string_view Prefix, std::int64_t Limit) {
  std::int64_t n = 0;
  for (pugi::xml_node c = ANode.first_child(); c && n <= Limit; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    const std::string_view name = c.name();
    if (name.size() >= Prefix.size() && SameText(name.substr(0, Prefix.size()), Prefix)) ++n;
  }
  return n;
}

std::string TXmlNodeHelper::Place(const pugi::xml_node& ANode) {
  std::string path;
  for (pugi::xml_node n = ANode; n && n.type() == pugi::node_element; n = n.parent()) {
    int pos = 1;
    for (pugi::xml_node s = n.previous_sibling(n.name()); s; s = s.previous_sibling(n.name())) ++pos;
    path.insert(0, pos > 1 ? Format("/%s[%d]", n.name(), pos) : Format("/%s", n.name()));
  }
  const std::ptrdiff_t offset = ANode.offset_debug();
  return offset >= 0 ? Format("%s, byte %d", path, offset) : path;
}

int TXmlNodeHelper::Depth(const pugi::xml_node& ANode, int Limit) {
  int depth = 0;
  for (pugi::xml_node n = ANode.parent(); n && n.type() == pugi::node_element && depth <= Limit; n = n.parent()) {
    ++depth;
  }
  return depth;
}

void TXmlNodeHelper::Fail(const pugi::xml_node& ANode, const char* Where, const std::string& What) {
  throw EInOutError("[Error] %s: %s (%s)", Where, What, Place(ANode));
}

}  // namespace orvane::internal
