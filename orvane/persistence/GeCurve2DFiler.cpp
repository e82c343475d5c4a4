#include "orvane/persistence/GeCurve2DFiler.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <pugixml.hpp>
#include <sstream>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"

namespace orvane {

namespace {

constexpr const char* CRootName = "Curve2DList";

// The document the filer writes: a declaration and the root.
pugi::xml_node NewDocument(pugi::xml_document& Doc) {
  pugi::xml_node decl = Doc.append_child(pugi::node_declaration);
  decl.append_attribute("version").set_value("1.0");
  decl.append_attribute("encoding").set_value("UTF-8");
  return Doc.append_child(CRootName);
}

void SaveDocument(const pugi::xml_document& Doc, std::ostream& AStream, const char* Where, std::string_view Name) {
  Doc.save(AStream, "  ", pugi::format_indent, pugi::encoding_utf8);
  AStream.flush();
  if (!AStream) throw EInOutError("[Error] %s: writing \"%s\" failed", Where, std::string(Name));
}

void SaveFile(const pugi::xml_document& Doc, const std::string& AFilename, const char* Where) {
  std::ofstream file(AFilename, std::ios::binary | std::ios::trunc);
  if (!file) throw EInOutError("[Error] %s: cannot open \"%s\" for writing", Where, AFilename);
  SaveDocument(Doc, file, Where, AFilename);
}

// Reads every curve of the parsed document into Items; the caller takes them only when
// all went well.
void ReadDocument(const pugi::xml_document& Doc, std::vector<std::unique_ptr<TGeCurve2D>>& Items) {
  const pugi::xml_node root = Doc.document_element();
  if (!root || std::string_view(root.name()) != CRootName) {
    throw EInOutError("[Error] TGeCurve2DFiler.ReadCurveList: the root element is \"%s\", not \"%s\"",
                      root ? root.name() : "", CRootName);
  }
  for (pugi::xml_node child = root.first_child(); !internal::IsEmpty(child); child = child.next_sibling()) {
    if (child.type() == pugi::node_element) Items.push_back(TGeCurve2DFiler::ReadCurve(child));
  }
}

}  // namespace

void TGeCurve2DFiler::SaveCurve(const TGeCurve2D& ACurve, const std::string& AFilename) {
  pugi::xml_document doc;
  pugi::xml_node root = NewDocument(doc);
  WriteCurve(root, ACurve);
  SaveFile(doc, AFilename, "TGeCurve2DFiler.SaveCurve");
}

void TGeCurve2DFiler::SaveCurveList(const TList<TGeCurve2D*>& AList, const std::string& AFilename) {
  std::ofstream file(AFilename, std::ios::binary | std::ios::trunc);
  if (!file) throw EInOutError("[Error] TGeCurve2DFiler.SaveCurveList: cannot open \"%s\" for writing", AFilename);
  SaveCurveList(AList, file);
}

void TGeCurve2DFiler::SaveCurveList(const TList<TGeCurve2D*>& AList, std::ostream& AStream) {
  pugi::xml_document doc;
  pugi::xml_node root = NewDocument(doc);
  for (const TGeCurve2D* curve : AList) {
    if (curve != nullptr) WriteCurve(root, *curve);
  }
  SaveDocument(doc, AStream, "TGeCurve2DFiler.SaveCurveList", "stream");
}

void TGeCurve2DFiler::WriteCurve(pugi::xml_node& ANode, const TGeCurve2D& ACurve) {
  // One class test per filed class; a class that derives from another filed class must be
  // tested before its base (a polygon before a polyline), so that it keeps its own name.
  const char* name = nullptr;
  if (dynamic_cast<const TGeLine2D*>(&ACurve) != nullptr) {
    name = "Line2D";
  } else if (dynamic_cast<const TGeCircularArc2D*>(&ACurve) != nullptr) {
    name = "CircularArc2D";
  } else if (dynamic_cast<const TGePolygon2D*>(&ACurve) != nullptr) {
    name = "Polygon2D";
  } else if (dynamic_cast<const TGePolyline2D*>(&ACurve) != nullptr) {
    name = "Polyline2D";
  } else if (dynamic_cast<const TGeSpline2D*>(&ACurve) != nullptr) {
    name = "Spline2D";
  } else if (dynamic_cast<const TGeCompositeCurve2D*>(&ACurve) != nullptr) {
    name = "CompositeCurve2D";
  }
  if (name == nullptr) return;
  pugi::xml_node child = ANode.append_child(name);
  ACurve.SaveToXmlNode(child);
}

void TGeCurve2DFiler::ReadCurveList(TObjectList<TGeCurve2D>& AList, const std::string& AFilename) {
  std::ifstream file(AFilename, std::ios::binary);
  if (!file) throw EInOutError("[Error] TGeCurve2DFiler.ReadCurveList: cannot open \"%s\"", AFilename);
  ReadCurveList(AList, file, AFilename);
}

namespace {

// Reads the whole document from AStream with pugixml's full conversions: the reference for
// what a file holds and for every message about it.
void ReadFullyConverted(std::vector<std::unique_ptr<TGeCurve2D>>& Items, std::istream& AStream,
                        std::string_view ASourceName) {
  pugi::xml_document doc;
  const pugi::xml_parse_result parsed = doc.load(AStream, pugi::parse_default, pugi::encoding_auto);
  if (!parsed) {
    throw EInOutError("[Error] TGeCurve2DFiler.ReadCurveList: \"%s\", byte %d: %s", std::string(ASourceName),
                      static_cast<std::int64_t>(parsed.offset), parsed.description());
  }
  try {
    ReadDocument(doc, Items);
  } catch (const EInOutError& e) {
    throw EInOutError("%s in \"%s\"", e.Message, std::string(ASourceName));
  }
}

// Without '&' no value holds an entity, so the full conversions can only turn blanks inside
// values into other blanks (line ends, tabs in attributes), which every value reader trims or
// refuses alike; and a value's text kept in its element rather than in a child node reads the
// same. The light parse then reads the same curves for less work; a file it refuses goes
// through the full parse again, so that errors are reported as the full parse sees them.
constexpr unsigned CLightParse = pugi::parse_cdata | pugi::parse_embed_pcdata;

// The curves of the rest of a seekable stream by the light parse, reading the stream into a
// buffer of ours that pugixml parses in place. False, with the stream back at its start,
// when the full parse must decide.
bool ReadLight(std::vector<std::unique_ptr<TGeCurve2D>>& Items, std::istream& AStream) {
  const std::streampos start = AStream.tellg();
  if (start < 0) return false;
  const auto rewind = [&] {
    Items.clear();
    AStream.clear();
    AStream.seekg(start);
    return false;
  };
  if (!AStream.seekg(0, std::ios::end)) return rewind();
  const std::streamoff size = AStream.tellg() - start;
  if (!AStream.seekg(start) || size <= 0) return rewind();
  const auto length = static_cast<std::size_t>(size);
  // Without room for the text the full read reports it, as it always has.
  std::unique_ptr<char[]> text;
  try {
    text = std::make_unique_for_overwrite<char[]>(length);
  } catch (const std::bad_alloc&) {
    return rewind();
  }
  // Read in pieces, each looked through for '&' while it is still in the cache.
  constexpr std::size_t CPiece = std::size_t{1} << 17;
  for (std::size_t at = 0; at < length; at += CPiece) {
    const auto piece = static_cast<std::streamsize>(std::min(CPiece, length - at));
    if (!AStream.read(text.get() + at, piece) || AStream.gcount() != piece) return rewind();
    if (std::memchr(text.get() + at, '&', static_cast<std::size_t>(piece)) != nullptr) return rewind();
  }
  pugi::xml_document doc;
  if (!doc.load_buffer_inplace(text.get(), length, CLightParse, pugi::encoding_auto)) return rewind();
  try {
    ReadDocument(doc, Items);
  } catch (const Exception&) {
    // Whatever the light read refuses, the full read decides and words.
    return rewind();
  }
  return true;
}

}  // namespace

void TGeCurve2DFiler::ReadCurveList(TObjectList<TGeCurve2D>& AList, std::istream& AStream,
                                    std::string_view ASourceName) {
  std::vector<std::unique_ptr<TGeCurve2D>> items;
  if (!ReadLight(items, AStream)) ReadFullyConverted(items, AStream, ASourceName);
  AList.SetCapacity(AList.Count() + static_cast<int>(items.size()));
  for (std::unique_ptr<TGeCurve2D>& item : items) AList.Add(item.release());
}

std::unique_ptr<TGeCurve2D> TGeCurve2DFiler::ReadCurve(const pugi::xml_node& ANode) {
  // Only a leading "TGe" in exactly this case is a class prefix: "TGeLine2D" reads as a
  // line, whereas "TGELine2D" or "XTGeLine2D" are no curve names at all.
  std::string_view name = ANode.name();
  if (name.starts_with("TGe")) name.remove_prefix(3);
  if (internal::SameText(name, "Line2D")) return ReadLine(ANode);
  if (internal::SameText(name, "CircularArc2D")) return ReadArc(ANode);
  if (internal::SameText(name, "Polyline2D")) return ReadPolyline(ANode);
  if (internal::SameText(name, "Polygon2D")) return ReadPolygon(ANode);
  if (internal::SameText(name, "Spline2D")) return ReadSpline(ANode);
  if (internal::SameText(name, "CompositeCurve2D")) return ReadCompositeCurve(ANode);
  return nullptr;
}

std::unique_ptr<TGeLine2D> TGeCurve2DFiler::ReadLine(const pugi::xml_node& ANode) {
  auto line = std::make_unique<TGeLine2D>();
  line->LoadFromXmlNode(ANode);
  return line;
}

std::unique_ptr<TGeCircularArc2D> TGeCurve2DFiler::ReadArc(const pugi::xml_node& ANode) {
  auto arc = std::make_unique<TGeCircularArc2D>();
  arc->LoadFromXmlNode(ANode);
  return arc;
}

namespace {

template <class T>
std::unique_ptr<T> ReadVertices(const pugi::xml_node& ANode, const char* Where) {
  if (internal::TXmlNodeHelper::ReadIntAttr(ANode, "PointCount", Where) < 1) return nullptr;
  auto poly = std::make_unique<T>();
  poly->LoadFromXmlNode(ANode);
  return poly;
}

}  // namespace

std::unique_ptr<TGePolyline2D> TGeCurve2DFiler::ReadPolyline(const pugi::xml_node& ANode) {
  return ReadVertices<TGePolyline2D>(ANode, "TGeCurve2DFiler.ReadPolyline");
}

std::unique_ptr<TGePolygon2D> TGeCurve2DFiler::ReadPolygon(const pugi::xml_node& ANode) {
  return ReadVertices<TGePolygon2D>(ANode, "TGeCurve2DFiler.ReadPolygon");
}

std::unique_ptr<TGeSpline2D> TGeCurve2DFiler::ReadSpline(const pugi::xml_node& ANode) {
  auto spline = std::make_unique<TGeSpline2D>();
  spline->LoadFromXmlNode(ANode);
  return spline;
}

std::unique_ptr<TGeCompositeCurve2D> TGeCurve2DFiler::ReadCompositeCurve(const pugi::xml_node& ANode) {
  // Depth and the sub-curves' own checks are those of the class-keyed reader.
  if (internal::TXmlNodeHelper::Depth(ANode, IFbsReader::MaxNesting) > IFbsReader::MaxNesting) {
    internal::TXmlNodeHelper::Fail(ANode, "TGeCurve2DFiler.ReadCompositeCurve", "curves nest too deep");
  }
  auto comp = std::make_unique<TGeCompositeCurve2D>();
  comp->LoadFromXmlNode(ANode);
  return comp;
}

}  // namespace orvane
