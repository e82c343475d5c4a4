#include <gtest/gtest.h>

#include <bit>
#include <pugixml.hpp>
#include <sstream>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/persistence/GeCurve2DFiler.h"

using namespace orvane;

namespace {

bool SameBits(double A, double B) { return std::bit_cast<std::uint64_t>(A) == std::bit_cast<std::uint64_t>(B); }

std::string Save(const std::vector<TGeCurve2D*>& Curves) {
  TList<TGeCurve2D*> list;
  for (TGeCurve2D* c : Curves) list.Add(c);
  std::ostringstream out;
  TGeCurve2DFiler::SaveCurveList(list, out);
  return out.str();
}

void Read(const std::string& Text, TObjectList<TGeCurve2D>& List) {
  std::istringstream in(Text);
  TGeCurve2DFiler::ReadCurveList(List, in, "mem.xml");
}

std::string Doc(const std::string& Children) { return "<Curve2DList>" + Children + "</Curve2DList>"; }

}  // namespace

TEST(XmlCurveFile, GoldenTextOfALineAndAnArc) {
  TGeLine2D line({1, 2}, {4, 1.5});
  TGeCircularArc2D arc({-1, 0.1}, 2, 0.25, -1.5707963267948966);
  EXPECT_EQ(Save({&line, &arc}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<Curve2DList>\n"
            "  <Line2D>\n"
            "    <LineStart X=\"1\" Y=\"2\" />\n"
            "    <LineVector X=\"3\" Y=\"-0.5\" />\n"
            "  </Line2D>\n"
            "  <CircularArc2D>\n"
            "    <Center X=\"-1\" Y=\"0.1\" />\n"
            "    <Radius>2</Radius>\n"
            "    <StartAngle>0.25</StartAngle>\n"
            "    <SweepAngle>-1.5707963267948966</SweepAngle>\n"
            "    <IsLine>false</IsLine>\n"
            "  </CircularArc2D>\n"
            "</Curve2DList>\n");
}

TEST(XmlCurveFile, RoundTripBitForBitThroughAFile) {
  const double third = 1.0 / 3.0;
  TGeLine2D line({-0.0, 5e-324}, {third, 1e-300});
  TGeCircularArc2D arc({third, -0.0}, 1e-300, 6.283185307179586, -third);
  TObjectList<TGeCurve2D> list(false);
  list.Add(&line);
  list.Add(&arc);
  const std::string file = ORVANE_BINARY_DIR "/tests/xml_roundtrip.xml";
  TGeCurve2DFiler::SaveCurveList(list, file);

  TObjectList<TGeCurve2D> back;
  TGeCurve2DFiler::ReadCurveList(back, file);
  ASSERT_EQ(back.Count(), 2);
  auto* l = dynamic_cast<TGeLine2D*>(back[0]);
  auto* a = dynamic_cast<TGeCircularArc2D*>(back[1]);
  ASSERT_TRUE(l != nullptr && a != nullptr);
  EXPECT_TRUE(SameBits(l->GetLineStart().X, -0.0) && SameBits(l->GetLineStart().Y, 5e-324));
  EXPECT_TRUE(SameBits(l->GetLineVector().X, line.GetLineVector().X));
  EXPECT_TRUE(SameBits(l->GetLineVector().Y, line.GetLineVector().Y));
  EXPECT_TRUE(SameBits(a->GetCenter().X, third) && SameBits(a->GetCenter().Y, -0.0));
  EXPECT_TRUE(SameBits(a->GetRadius(), 1e-300) && SameBits(a->GetSweepAngle(), -third));
  EXPECT_TRUE(SameBits(a->GetStartAngle(), 6.283185307179586));

  TObjectList<TGeCurve2D> single;
  TGeCurve2DFiler::SaveCurve(arc, file);
  TGeCurve2DFiler::ReadCurveList(single, file);
  ASSERT_EQ(single.Count(), 1);
  EXPECT_TRUE(single[0]->Equals(&arc));
}

TEST(XmlCurveFile, ElementNamesLeadingPrefixExactCaseThenAnyCase) {
  const char* lines[] = {"Line2D", "line2d", "LINE2D", "TGeLine2D", "TGeLINE2d"};
  const char* none[] = {"TGELine2D", "tgeLine2D", "XTGeLine2D", "Line2DTGe", "LiTGene2D", "PolyBezier2D", "Bezier2D"};
  std::string children;
  for (const char* n : lines) children += Format("<%s><LineStart X=\"1\"/></%s>", n, n);
  for (const char* n : none) children += Format("<%s/>", n);
  children += "<!-- a comment is no entry --><tgecircularARC2D/>";
  TObjectList<TGeCurve2D> list;
  Read(Doc(children), list);
  ASSERT_EQ(list.Count(), 13);
  for (int i = 0; i < 5; ++i) {
    auto* l = dynamic_cast<TGeLine2D*>(list[i]);
    ASSERT_NE(l, nullptr) << lines[i];
    EXPECT_EQ(l->GetLineStart(), TPoint2D(1, 0));
  }
  for (int i = 5; i < 12; ++i) EXPECT_EQ(list[i], nullptr) << none[i - 5];
  // The prefix is case-sensitive, so "tge" stays and the name is no arc's.
  EXPECT_EQ(list[12], nullptr);
}

TEST(XmlCurveFile, ClassKeyedFactoryIsExactAndChecksTheClassAsked) {
  pugi::xml_document doc;
  doc.load_string(
      "<r><Line2D/><line2d/><TGeLine2D/><Other Class=\"CircularArc2D\"><Radius>3</Radius></Other>"
      "<Line2D Class=\"Nothing\"/></r>");
  pugi::xml_node n = doc.first_child().first_child();
  EXPECT_NE(TGeObject::ReadFromXmlNode<TGeLine2D>(n), nullptr);
  EXPECT_EQ(TGeObject::ReadFromXmlNode<TGeCircularArc2D>(n), nullptr);
  n = n.next_sibling();
  EXPECT_EQ(TGeObject::ReadFromXmlNode(n), nullptr);
  n = n.next_sibling();
  EXPECT_EQ(TGeObject::ReadFromXmlNode(n), nullptr);
  n = n.next_sibling();
  std::unique_ptr<TGeCurve2D> arc = TGeObject::ReadFromXmlNode<TGeCurve2D>(n);
  ASSERT_NE(dynamic_cast<TGeCircularArc2D*>(arc.get()), nullptr);
  EXPECT_EQ(static_cast<TGeCircularArc2D&>(*arc).GetRadius(), 3.0);
  EXPECT_EQ(TGeObject::ReadFromXmlNode(n.next_sibling()), nullptr);

  // WriteToXmlNode names the child by the filer name.
  pugi::xml_document out;
  pugi::xml_node root = out.append_child("r");
  TGeCircularArc2D({0, 0}, 1, 0, 1).WriteToXmlNode(root);
  EXPECT_STREQ(root.first_child().name(), "CircularArc2D");
}

TEST(XmlCurveFile, AbsentValuesAreDefaultsAndBadOnesAreErrorsWithThePlace) {
  TObjectList<TGeCurve2D> list;
  Read(Doc("<CircularArc2D/><Line2D><LineVector Y=\" 2 \"/></Line2D>"), list);
  ASSERT_EQ(list.Count(), 2);
  const auto& arc = dynamic_cast<const TGeCircularArc2D&>(*list[0]);
  EXPECT_EQ(arc.GetRadius(), 0.0);
  EXPECT_EQ(arc.GetSweepAngle(), 0.0);
  EXPECT_EQ(dynamic_cast<const TGeLine2D&>(*list[1]).GetLineEnd(), TPoint2D(0, 2));

  const auto expectError = [&](const std::string& Text, const std::string& Part) {
    try {
      Read(Text, list);
      ADD_FAILURE() << Text;
    } catch (const EInOutError& e) {
      EXPECT_NE(std::string(e.what()).find(Part), std::string::npos) << e.what();
    }
    EXPECT_EQ(list.Count(), 2) << "the list must stay as it was";
  };
  expectError(Doc("<Line2D/><Line2D><LineStart X=\"1,5\"/></Line2D>"), "/Curve2DList/Line2D[2]/LineStart, byte 31");
  expectError(Doc("<Line2D><LineStart X=\"nan\"/></Line2D>"), "mem.xml");
  expectError(Doc("<Line2D><LineStart X=\"1e400\"/></Line2D>"), "is no finite number");
  expectError(Doc("<Line2D><LineStart X=\"1e308\"/><LineVector X=\"1e308\"/></Line2D>"), "not finite");
  expectError(Doc("<CircularArc2D><IsLine>true</IsLine></CircularArc2D>"), "straight piece");
  expectError(Doc("<CircularArc2D><IsLine>yes</IsLine></CircularArc2D>"), "is no boolean");
  expectError(Doc("<CircularArc2D><Radius>-1</Radius></CircularArc2D>"), "negative");
  expectError("<Curve2DList><Line2D></Curve2DList>", "\"mem.xml\", byte 23");
  expectError("<Curves/>", "root element");
  expectError("", "\"mem.xml\"");
}

TEST(XmlCurveFile, NestingIsCapped) {
  std::string text;
  for (int i = 0; i < 70; ++i) text += "<CompositeCurve2D>";
  text += "<Line2D/>";
  for (int i = 0; i < 70; ++i) text += "</CompositeCurve2D>";
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(text.c_str()));
  pugi::xml_node deepest =
      doc.find_node([](const pugi::xml_node& n) { return std::string_view(n.name()) == "Line2D"; });
  EXPECT_THROW(TGeObject::ReadFromXmlNode(deepest), EInOutError);
  pugi::xml_node shallow = deepest;
  for (int i = 0; i < 10; ++i) shallow = shallow.parent();
  shallow.append_child("Line2D");
  EXPECT_NE(TGeObject::ReadFromXmlNode(shallow.last_child()), nullptr);
}

// A file whose values hold entities, or whose line ends are CR LF, reads as the plain file;
// a bad value is worded as the fully converted file has it (its tabs become spaces).
TEST(XmlCurveFile, EntitiesAndLineEndsReadAsThePlainFile) {
  const std::string plain = Doc(
      "<Spline2D CtrlCount=\"2\" Degree=\"1\" KnotCount=\"4\"><Knot0>0</Knot0><Knot1>0</Knot1>"
      "<Knot2>1</Knot2><Knot3>1</Knot3><CtrlPoint0 X=\"1.5\" Y=\"2\" Wt=\"1\"/>"
      "<CtrlPoint1 X=\"3\" Y=\"-4\" Wt=\"1\"/></Spline2D>"
      "<CompositeCurve2D><Any Class=\"Line2D\"><LineStart X=\"1\" Y=\"2\"/></Any></CompositeCurve2D>");
  std::string escaped = plain;
  escaped.replace(escaped.find("1.5"), 3, "&#49;.5");
  escaped.replace(escaped.find("Line2D"), 6, "Line&#50;D");
  std::string crlf = plain;
  for (std::size_t at = 0; (at = crlf.find("><", at)) != std::string::npos; at += 3) crlf.insert(at + 1, "\r\n");
  TObjectList<TGeCurve2D> want, a, b;
  Read(plain, want);
  Read(escaped, a);
  Read(crlf, b);
  ASSERT_EQ(want.Count(), 2);
  const std::string text = Save({want[0], want[1]});
  EXPECT_EQ(Save({a[0], a[1]}), text);
  EXPECT_EQ(Save({b[0], b[1]}), text);
  const auto message = [](const std::string& Text) {
    TObjectList<TGeCurve2D> list;
    try {
      Read(Text, list);
    } catch (const EInOutError& e) {
      return e.Message;
    }
    return std::string("no error");
  };
  std::string bad = plain;
  bad.replace(bad.find("Y=\"-4\""), 6, "Y=\"\t-4\t4\"");
  EXPECT_EQ(message(bad),
            "[Error] TGeSpline2D.LoadFromXmlNode: the attribute Y \" -4 4\" is no finite number "
            "(/Curve2DList/Spline2D/CtrlPoint1, byte 161) in \"mem.xml\"");
}
