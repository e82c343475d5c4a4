#include "orvane/persistence/FbsStream.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <istream>
#include <ostream>
#include <utility>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"

namespace orvane {

namespace {

constexpr char CSignature[5] = {'O', 'F', 'B', 'S', 1};
constexpr std::size_t CSignatureSize = sizeof(CSignature);
constexpr std::size_t CBlock = 64 * 1024;

// Byte by byte, so that the layout is little-endian whatever the machine's order.
void StoreU32(char* P, std::uint32_t V) {
  for (int i = 0; i < 4; ++i) P[i] = static_cast<char>((V >> (8 * i)) & 0xFFu);
}
void StoreU64(char* P, std::uint64_t V) {
  for (int i = 0; i < 8; ++i) P[i] = static_cast<char>((V >> (8 * i)) & 0xFFu);
}
std::uint32_t LoadU32(const char* P) {
  std::uint32_t v = 0;
  for (int i = 0; i < 4; ++i) v |= static_cast<std::uint32_t>(static_cast<unsigned char>(P[i])) << (8 * i);
  return v;
}
std::uint64_t LoadU64(const char* P) {
  std::uint64_t v = 0;
  for (int i = 0; i < 8; ++i) v |= static_cast<std::uint64_t>(static_cast<unsigned char>(P[i])) << (8 * i);
  return v;
}

const char* TagName(char Tag) {
  switch (Tag) {
    case 'B': return "a boolean";
    case 'I': return "an integer";
    case 'D': return "a double";
    case 'P': return "a point";
    default: return "an unknown field";
  }
}

}  // namespace

// Record handles ------------------------------------------------------------------------------

TFbsRecord::TFbsRecord(IFbsRecordOwner* AOwner, std::string AName) noexcept : FOwner(AOwner), FName(std::move(AName)) {}

TFbsRecord::TFbsRecord(TFbsRecord&& Other) noexcept
    : FOwner(std::exchange(Other.FOwner, nullptr)), FName(std::move(Other.FName)) {}

TFbsRecord& TFbsRecord::operator=(TFbsRecord&& Other) noexcept {
  if (this != &Other) {
    Release();
    FOwner = std::exchange(Other.FOwner, nullptr);
    FName = std::move(Other.FName);
  }
  return *this;
}

void TFbsRecord::Release() noexcept {
  if (FOwner != nullptr) std::exchange(FOwner, nullptr)->ReleaseRecord();
}

IFbsWriter::~IFbsWriter() = default;
IFbsReader::~IFbsReader() = default;

void IFbsReader::EnterObject() {
  if (FNesting >= MaxNesting) {
    throw EInOutError("[Error] TGeObject.ReadFromGeoData: objects nest deeper than %d levels (%s)", MaxNesting,
                      GetPosition());
  }
  ++FNesting;
}

// Writer ---------------------------------------------------------------------------------------

TFbsStreamWriter::TFbsStreamWriter(std::ostream& AStream, std::string AStreamName)
    : FStream(AStream), FStreamName(std::move(AStreamName)), FBuf(CBlock + 1024, '\0'), FOpenRecord(std::string::npos) {
  std::memcpy(FBuf.data(), CSignature, CSignatureSize);
  FLen = CSignatureSize;
}

TFbsStreamWriter::~TFbsStreamWriter() {
  // Only closed records go out: an open one is incomplete.
  try {
    Spill(FOpenRecord == std::string::npos ? FLen : FOpenRecord);
    FStream.flush();
  } catch (...) {  // NOLINT(bugprone-empty-catch): a destructor cannot report
  }
}

std::string TFbsStreamWriter::Position() const {
  return Format("stream \"%s\", byte %u", FStreamName, FSpilled + FLen);
}

void TFbsStreamWriter::Spill(std::size_t Count) {
  if (FFailed) throw EInOutError("[Error] TFbsStreamWriter: writing failed before (%s)", Position());
  if (Count == 0) return;
  FStream.write(FBuf.data(), static_cast<std::streamsize>(Count));
  if (!FStream) {
    FFailed = true;
    throw EInOutError("[Error] TFbsStreamWriter: the stream refused the bytes (%s)", Position());
  }
  FSpilled += Count;
  std::memmove(FBuf.data(), FBuf.data() + Count, FLen - Count);
  FLen -= Count;
}

TFbsRecord TFbsStreamWriter::BeginRecord(std::string_view Name, std::int32_t Version) {
  if (FOpenRecord != std::string::npos) {
    throw EInOutError("[Error] TFbsStreamWriter.BeginRecord: record \"%s\" starts while another is open (%s)",
                      std::string(Name), Position());
  }
  if (Name.size() > 255) {
    throw EParamError("[Error] TFbsStreamWriter.BeginRecord: the name \"%s\" is longer than 255 bytes",
                      std::string(Name));
  }
  if (FLen >= CBlock) Spill(FLen);
  FOpenRecord = FLen;
  char* p = Room(2 + Name.size() + 8);
  p[0] = 'R';
  p[1] = static_cast<char>(Name.size());
  std::memcpy(p + 2, Name.data(), Name.size());
  StoreU32(p + 2 + Name.size(), static_cast<std::uint32_t>(Version));
  StoreU32(p + 6 + Name.size(), 0);
  return TFbsRecord(this, std::string(Name));
}

void TFbsStreamWriter::ReleaseRecord() noexcept {
  if (FOpenRecord == std::string::npos) return;
  const std::size_t lengthAt = FOpenRecord + 6 + static_cast<unsigned char>(FBuf[FOpenRecord + 1]);
  const std::size_t length = FLen - lengthAt - 4;
  // More than 4 GiB of fields cannot be counted: the stream is spoilt, and Flush says so.
  if (length > 0xFFFFFFFFu) FFailed = true;
  StoreU32(FBuf.data() + lengthAt, static_cast<std::uint32_t>(length));
  FOpenRecord = std::string::npos;
}

char* TFbsStreamWriter::Room(std::size_t Size) {
  if (FBuf.size() - FLen < Size) FBuf.resize(std::max(2 * FBuf.size(), FLen + Size));
  char* p = FBuf.data() + FLen;
  FLen += Size;
  return p;
}

char* TFbsStreamWriter::Field(char Tag, std::size_t Size, const char* Op) {
  if (FOpenRecord == std::string::npos) throw EInOutError("[Error] %s: no record is open (%s)", Op, Position());
  char* p = Room(1 + Size);
  p[0] = Tag;
  return p + 1;
}

void TFbsStreamWriter::WriteBoolean(bool Value) {
  *Field('B', 1, "TFbsStreamWriter.WriteBoolean") = Value ? char(1) : char(0);
}

void TFbsStreamWriter::WriteDouble(double Value) {
  StoreU64(Field('D', 8, "TFbsStreamWriter.WriteDouble"), std::bit_cast<std::uint64_t>(Value));
}

void TFbsStreamWriter::WriteInteger(std::int32_t Value) {
  StoreU32(Field('I', 4, "TFbsStreamWriter.WriteInteger"), static_cast<std::uint32_t>(Value));
}

void TFbsStreamWriter::WritePoint(const TPoint2D& Value) {
  char* p = Field('P', 16, "TFbsStreamWriter.WritePoint");
  StoreU64(p, std::bit_cast<std::uint64_t>(Value.X));
  StoreU64(p + 8, std::bit_cast<std::uint64_t>(Value.Y));
}

void TFbsStreamWriter::Flush() {
  if (FOpenRecord != std::string::npos)
    throw EInOutError("[Error] TFbsStreamWriter.Flush: a record is open (%s)", Position());
  Spill(FLen);
  FStream.flush();
  if (!FStream) {
    FFailed = true;
    throw EInOutError("[Error] TFbsStreamWriter.Flush: the stream failed (%s)", Position());
  }
}

// Reader ---------------------------------------------------------------------------------------

TFbsStreamReader::TFbsStreamReader(std::istream& AStream, std::string AStreamName)
    : FStream(AStream), FStreamName(std::move(AStreamName)) {
  Require(CSignatureSize, "TFbsStreamReader.Create", "the signature");
  if (std::memcmp(FBuf.data() + FPos, CSignature, CSignatureSize) != 0) {
    Fail("TFbsStreamReader.Create", "the stream does not start with the signature \"OFBS\" of layout 1");
  }
  FPos += CSignatureSize;
  FFieldsEnd = FPos;
}

std::string TFbsStreamReader::GetPosition() const {
  return Format("stream \"%s\", byte %u", FStreamName, FBase + FPos);
}

void TFbsStreamReader::Fail(const char* Op, const std::string& What) const {
  throw EInOutError("[Error] %s: %s (%s)", Op, What, GetPosition());
}

bool TFbsStreamReader::Fill(std::size_t Count) {
  if (FEnd - FPos >= Count) return true;
  if (FPos > 0) {
    std::memmove(FBuf.data(), FBuf.data() + FPos, FEnd - FPos);
    FBase += FPos;
    FEnd -= FPos;
    FFieldsEnd -= std::min(FFieldsEnd, FPos);
    FPos = 0;
  }
  std::streambuf* buf = FStream.rdbuf();
  if (buf == nullptr) return false;
  // The buffer grows only when it is full of bytes really read.
  while (FEnd < Count) {
    if (FEnd == FBuf.size()) FBuf.resize(std::max<std::size_t>(CBlock, 2 * FBuf.size()));
    const std::streamsize got = buf->sgetn(FBuf.data() + FEnd, static_cast<std::streamsize>(FBuf.size() - FEnd));
    if (got <= 0) return false;
    FEnd += static_cast<std::size_t>(got);
  }
  return true;
}

void TFbsStreamReader::Require(std::size_t Count, const char* Op, const char* What) {
  if (!Fill(Count)) Fail(Op, Format("the stream ends within %s (%u of %u bytes present)", What, FEnd - FPos, Count));
}

TFbsRecord TFbsStreamReader::NextRecord() {
  static constexpr const char* Op = "TFbsStreamReader.NextRecord";
  FPos = std::max(FPos, FFieldsEnd);
  FInRecord = false;
  Require(2, Op, "a record start");
  if (FBuf[FPos] != 'R') Fail(Op, "no record starts here");
  const std::size_t nameSize = static_cast<unsigned char>(FBuf[FPos + 1]);
  Require(2 + nameSize + 8, Op, "a record header");
  const char* p = FBuf.data() + FPos;
  std::string name(p + 2, nameSize);
  const std::uint32_t fieldBytes = LoadU32(p + 6 + nameSize);
  FPos += 2 + nameSize + 8;
  Require(fieldBytes, Op, "the fields of a record");
  FFieldsEnd = FPos + fieldBytes;
  FInRecord = true;
  return TFbsRecord(this, std::move(name));
}

const char* TFbsStreamReader::Field(char Tag, std::size_t Size, const char* Op) {
  if (!FInRecord) Fail(Op, "no record is open");
  if (FFieldsEnd - FPos < 1 + Size) Fail(Op, Format("the record holds no further field for %s", TagName(Tag)));
  if (FBuf[FPos] != Tag) Fail(Op, Format("%s stands where %s is read", TagName(FBuf[FPos]), TagName(Tag)));
  const char* p = FBuf.data() + FPos + 1;
  FPos += 1 + Size;
  return p;
}

bool TFbsStreamReader::ReadBoolean() {
  const char v = *Field('B', 1, "TFbsStreamReader.ReadBoolean");
  if (v != 0 && v != 1) {
    --FPos;
    Fail("TFbsStreamReader.ReadBoolean", Format("%d is no boolean", static_cast<int>(static_cast<unsigned char>(v))));
  }
  return v == 1;
}

double TFbsStreamReader::ReadDouble() {
  return std::bit_cast<double>(LoadU64(Field('D', 8, "TFbsStreamReader.ReadDouble")));
}

std::int32_t TFbsStreamReader::ReadInteger() {
  return static_cast<std::int32_t>(LoadU32(Field('I', 4, "TFbsStreamReader.ReadInteger")));
}

TPoint2D TFbsStreamReader::ReadPoint() {
  const char* p = Field('P', 16, "TFbsStreamReader.ReadPoint");
  return {std::bit_cast<double>(LoadU64(p)), std::bit_cast<double>(LoadU64(p + 8))};
}

void TFbsStreamReader::CheckCount(std::int64_t Count, std::size_t ItemBytes) {
  static constexpr const char* Op = "TFbsStreamReader.CheckCount";
  if (!FInRecord) Fail(Op, "no record is open");
  if (Count < 0) Fail(Op, Format("the count %d is negative", Count));
  const std::size_t left = FFieldsEnd - FPos;
  if (static_cast<std::uint64_t>(Count) > left / std::max<std::size_t>(ItemBytes, 1)) {
    Fail(Op, Format("the count %d exceeds what the record's %u bytes left can hold", Count, left));
  }
}

bool TFbsStreamReader::AtEnd() {
  const std::size_t ahead = std::max(FPos, FFieldsEnd) - FPos;
  return !Fill(ahead + 1);
}

}  // namespace orvane
