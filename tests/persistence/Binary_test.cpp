#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <sstream>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/persistence/FbsStream.h"

using namespace orvane;

namespace {

bool SameBits(double A, double B) { return std::bit_cast<std::uint64_t>(A) == std::bit_cast<std::uint64_t>(B); }
bool SameBits(const TPoint2D& A, const TPoint2D& B) { return SameBits(A.X, B.X) && SameBits(A.Y, B.Y); }

std::string Write(const std::vector<const TGeObject*>& Objects) {
  std::ostringstream out;
  TFbsStreamWriter writer(out, "mem");
  for (const TGeObject* obj : Objects) TGeObject::SaveGeObjToDb(*obj, writer);
  writer.Flush();
  return out.str();
}

// Logs every call the kernel makes, releases included.
class TRecordingWriter final : public IFbsWriter {
 public:
  std::vector<std::string> Calls;
  TFbsRecord BeginRecord(std::string_view Name, std::int32_t Version) override {
    Calls.push_back("Begin " + std::string(Name) + " " + std::to_string(Version));
    return TFbsRecord(this, std::string(Name));
  }
  void WriteBoolean(bool Value) override { Calls.push_back(Value ? "Boolean true" : "Boolean false"); }
  void WriteDouble(double Value) override { Calls.push_back("Double " + FloatToStr(Value)); }
  void WriteInteger(std::int32_t Value) override { Calls.push_back("Integer " + std::to_string(Value)); }
  void WritePoint(const TPoint2D& Value) override {
    Calls.push_back("Point " + FloatToStr(Value.X) + " " + FloatToStr(Value.Y));
  }
  void ReleaseRecord() noexcept override { Calls.emplace_back("Release"); }
};

}  // namespace

TEST(FbsStream, LineAndArcRoundTripBitForBitWithTheLayoutWorkedOut) {
  const double third = 1.0 / 3.0;
  const TGeLine2D line({-0.0, 1e-300}, {third, -2.5});
  const TGeCircularArc2D arc({third, -0.0}, 1e-300, 2.0 / 3.0, -third);
  const std::string bytes = Write({&line, &arc});
  // Signature 5; a line: two empty records of 2 + 6 + 8 bytes and one with two point fields
  // of 17 bytes; an arc: three headers of 2 + 13 + 8 bytes, a point, three doubles of 9 bytes
  // and a boolean of 2.
  EXPECT_EQ(bytes.size(), 5u + (3 * 16 + 34) + (3 * 23 + 17 + 27 + 2));
  EXPECT_EQ(bytes.substr(0, 13), std::string("OFBS\x01R\x06Line2D\x01\x00", 15).substr(0, 13));

  std::istringstream in(bytes);
  TFbsStreamReader reader(in, "mem");
  std::unique_ptr<TGeCurve2D> a = TGeObject::ReadFromGeoData<TGeCurve2D>(reader);
  std::unique_ptr<TGeCircularArc2D> b = TGeObject::ReadFromGeoData<TGeCircularArc2D>(reader);
  EXPECT_TRUE(reader.AtEnd());
  auto* l = dynamic_cast<TGeLine2D*>(a.get());
  ASSERT_NE(l, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_TRUE(SameBits(l->GetLineStart(), line.GetLineStart()));
  EXPECT_TRUE(SameBits(l->GetLineVector(), line.GetLineVector()));
  EXPECT_TRUE(SameBits(b->GetCenter(), arc.GetCenter()));
  EXPECT_TRUE(SameBits(b->GetRadius(), 1e-300));
  EXPECT_TRUE(SameBits(b->GetStartAngle(), 2.0 / 3.0));
  EXPECT_TRUE(SameBits(b->GetSweepAngle(), -third));
  EXPECT_TRUE(b->GetIsClockwise());
  EXPECT_FALSE(b->GetArc().IsLine);
}

TEST(FbsStream, CallSequenceSeenByARecordingWriter) {
  TRecordingWriter w;
  TGeObject::SaveGeObjToDb(TGeLine2D({1, 2}, {4, 6}), w);
  const std::vector<std::string> line = {"Begin Line2D 1", "Release",   "Begin Line2D 1", "Release",
                                         "Begin Line2D 1", "Point 1 2", "Point 3 4",      "Release"};
  EXPECT_EQ(w.Calls, line);
  w.Calls.clear();
  TGeObject::SaveGeObjToDb(TGeCircularArc2D({1, 2}, 3, 0.5, -1), w);
  const std::vector<std::string> arc = {"Begin CircularArc2D 1",
                                        "Release",
                                        "Begin CircularArc2D 1",
                                        "Release",
                                        "Begin CircularArc2D 1",
                                        "Point 1 2",
                                        "Double 3",
                                        "Double 0.5",
                                        "Double -1",
                                        "Boolean false",
                                        "Release"};
  EXPECT_EQ(w.Calls, arc);
}

TEST(FbsStream, ClassSelectionByTheFirstRecord) {
  const TGeLine2D line({0, 0}, {1, 1});
  const std::string bytes = Write({&line, &line});
  std::istringstream in(bytes);
  TFbsStreamReader reader(in, "mem");
  // An object of another class gives nil and leaves its further records unread.
  EXPECT_EQ(TGeObject::ReadFromGeoData<TGeCircularArc2D>(reader), nullptr);
  EXPECT_THROW(TGeObject::ReadFromGeoData(reader), EInOutError);  // lands on its record 2

  // An unknown class name gives nil too.
  std::ostringstream out;
  {
    TFbsStreamWriter w(out, "mem");
    w.BeginRecord("Bezier2D", 1).Release();
    w.Flush();
  }
  std::istringstream in2(out.str());
  TFbsStreamReader r2(in2, "mem");
  EXPECT_EQ(TGeObject::ReadFromGeoData(r2), nullptr);
}

TEST(FbsStream, HostileFieldsAreRefusedWithStreamAndOffset) {
  std::ostringstream out;
  {
    TFbsStreamWriter w(out, "mem");
    TFbsRecord r = w.BeginRecord("X", 7);
    w.WriteInteger(1000000);
    w.WritePoint({1, 2});
    w.WriteBoolean(true);
    w.WriteDouble(std::numeric_limits<double>::quiet_NaN());
    r.Release();
    EXPECT_THROW(w.WriteDouble(1), EInOutError);  // no record open
    w.Flush();
  }
  std::string bytes = out.str();
  {
    std::istringstream in(bytes);
    TFbsStreamReader r(in, "mem");
    TFbsRecord rec = r.NextRecord();
    EXPECT_EQ(rec.GetName(), "X");
    const std::int32_t count = r.ReadInteger();
    // A million points cannot stand in the 30 bytes left: refused before any allocation.
    try {
      r.CheckCount(count, 16);
      FAIL();
    } catch (const EInOutError& e) {
      EXPECT_NE(std::string(e.what()).find("stream \"mem\", byte 21"), std::string::npos) << e.what();
    }
    EXPECT_NO_THROW(r.CheckCount(1, 16));
    EXPECT_THROW(r.CheckCount(-1, 16), EInOutError);
    EXPECT_THROW(r.ReadDouble(), EInOutError);  // a point stands there
    EXPECT_TRUE(SameBits(r.ReadPoint(), TPoint2D(1, 2)));
    EXPECT_TRUE(r.ReadBoolean());
    EXPECT_TRUE(std::isnan(r.ReadDouble()));
    EXPECT_THROW(r.ReadDouble(), EInOutError);  // the record is used up
  }
  // A boolean byte other than 0 or 1, and a bad signature.
  bytes[bytes.size() - 10] = 2;
  std::istringstream in(bytes);
  TFbsStreamReader r(in, "mem");
  TFbsRecord rec = r.NextRecord();
  r.ReadInteger();
  r.ReadPoint();
  EXPECT_THROW(r.ReadBoolean(), EInOutError);
  rec.Release();
  EXPECT_THROW(r.ReadInteger(), EInOutError);  // released: no record open
  std::istringstream bad("OFBX\x01");
  EXPECT_THROW(TFbsStreamReader(bad, "bad"), EInOutError);
}

TEST(FbsStream, ObjectsThatTheClassesCannotHoldAreRefused) {
  const auto objectWith = [](const char* Name, auto&& Fields) {
    std::ostringstream out;
    {
      TFbsStreamWriter w(out, "mem");
      for (int i = 0; i < 2; ++i) w.BeginRecord(Name, 1).Release();
      TFbsRecord r = w.BeginRecord(Name, 1);
      Fields(w);
    }
    return out.str();
  };
  const double inf = std::numeric_limits<double>::infinity();
  const std::string cases[] = {
      objectWith("Line2D",
                 [&](IFbsWriter& w) {
                   w.WritePoint({inf, 0}), w.WritePoint({0, 0});
                 }),
      objectWith("Line2D",
                 [&](IFbsWriter& w) {
                   w.WritePoint({1e308, 0}), w.WritePoint({1e308, 0});
                 }),
      objectWith("CircularArc2D",
                 [&](IFbsWriter& w) {
                   w.WritePoint({0, 0}), w.WriteDouble(-1), w.WriteDouble(0), w.WriteDouble(1), w.WriteBoolean(false);
                 }),
      // The line form of an arc is a line: an arc object cannot be one.
      objectWith("CircularArc2D",
                 [&](IFbsWriter& w) {
                   w.WritePoint({0, 0}), w.WriteDouble(1), w.WriteDouble(1), w.WriteDouble(1), w.WriteBoolean(true);
                 }),
  };
  for (const std::string& bytes : cases) {
    std::istringstream in(bytes);
    TFbsStreamReader r(in, "mem");
    EXPECT_THROW(TGeObject::ReadFromGeoData(r), EInOutError);
  }
}

TEST(FbsStream, NestingIsCapped) {
  std::istringstream in(std::string("OFBS\x01", 5));
  TFbsStreamReader r(in, "mem");
  for (int i = 0; i < IFbsReader::MaxNesting; ++i) r.EnterObject();
  EXPECT_THROW(r.EnterObject(), EInOutError);
  for (int i = 0; i < IFbsReader::MaxNesting; ++i) r.LeaveObject();
  EXPECT_NO_THROW(r.EnterObject());
}
