#pragma once
// The binary filing layer: the typed writer and reader through which curve objects file
// themselves as named records, and their little-endian implementation over standard streams.
//
// Stream layout, every number little-endian:
//   signature  "OFBS" and the layout version byte 1, written once by the writer
//   record     'R', the name's byte count (u8), the name, the version (i32), the byte count
//              of the fields behind (u32), the fields
//   field      a tag byte and the value: 'B' u8 (0 or 1), 'I' i32, 'D' IEEE double,
//              'P' two IEEE doubles
// A record's fields are tagged, so that a reader that asks for another type than was written
// stops with an error instead of reading garbage, and the byte count lets NextRecord step
// over fields that a reader left unread.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

// What a record handle reports its release to.
class ORVANE_API IFbsRecordOwner {
 public:
  // The record whose handle is released is closed. Never throws: handles are also released
  // while an exception unwinds.
  virtual void ReleaseRecord() noexcept = 0;

 protected:
  ~IFbsRecordOwner() = default;
};

// The handle of one open record. Releasing it (Release, or its end of scope) closes the
// record in the layer; a handle must not outlive the writer or reader that made it.
class ORVANE_API TFbsRecord {
 public:
  TFbsRecord() = default;
  TFbsRecord(IFbsRecordOwner* AOwner, std::string AName) noexcept;
  TFbsRecord(const TFbsRecord&) = delete;
  TFbsRecord& operator=(const TFbsRecord&) = delete;
  TFbsRecord(TFbsRecord&& Other) noexcept;
  TFbsRecord& operator=(TFbsRecord&& Other) noexcept;
  ~TFbsRecord() { Release(); }

  const std::string& GetName() const { return FName; }
  bool IsOpen() const { return FOwner != nullptr; }
  // Closes the record; later calls do nothing.
  void Release() noexcept;

 private:
  IFbsRecordOwner* FOwner = nullptr;
  std::string FName;
};

class ORVANE_API IFbsWriter : public IFbsRecordOwner {
 public:
  virtual ~IFbsWriter();
  // Starts the record Name; its fields follow until the handle is released.
  virtual TFbsRecord BeginRecord(std::string_view Name, std::int32_t Version) = 0;
  virtual void WriteBoolean(bool Value) = 0;
  virtual void WriteDouble(double Value) = 0;
  virtual void WriteInteger(std::int32_t Value) = 0;
  virtual void WritePoint(const TPoint2D& Value) = 0;
};

class ORVANE_API IFbsReader : public IFbsRecordOwner {
 public:
  // The deepest nesting of objects inside objects (composites) that a reader accepts.
  static constexpr int MaxNesting = 64;

  virtual ~IFbsReader();
  // Reads the start of the next record, stepping over what is left of the current one.
  virtual TFbsRecord NextRecord() = 0;
  virtual bool ReadBoolean() = 0;
  virtual double ReadDouble() = 0;
  virtual std::int32_t ReadInteger() = 0;
  virtual TPoint2D ReadPoint() = 0;
  // EInOutError unless Count is at least 0 and Count items of at least ItemBytes bytes each
  // can still stand in the current record. Loaders call it before they size storage by a
  // count read from the stream, so that a false count cannot claim memory that the stream
  // does not back. ItemBytes is the size of the item's values (16 for a point).
  virtual void CheckCount(std::int64_t Count, std::size_t ItemBytes) = 0;
  // Where the reader stands, for messages: the stream's name and the byte offset.
  virtual std::string GetPosition() const = 0;

  // Brackets the reading of one object: EInOutError when objects nest deeper than
  // MaxNesting, so that a hostile stream cannot exhaust the call stack.
  void EnterObject();
  void LeaveObject() noexcept { --FNesting; }

 private:
  int FNesting = 0;
};

// The writer over a std::ostream. Bytes collect in a buffer and go to the stream between
// records; Flush hands them over and reports a failed stream.
class ORVANE_API TFbsStreamWriter final : public IFbsWriter {
 public:
  // Starts the stream with the signature. AStreamName names the stream in messages.
  explicit TFbsStreamWriter(std::ostream& AStream, std::string AStreamName = "stream");
  // Flushes; a failure here cannot be reported, so call Flush before.
  ~TFbsStreamWriter() override;
  TFbsStreamWriter(const TFbsStreamWriter&) = delete;
  TFbsStreamWriter& operator=(const TFbsStreamWriter&) = delete;

  // EInOutError while another record is open; EParamError for a name longer than 255 bytes.
  TFbsRecord BeginRecord(std::string_view Name, std::int32_t Version) override;
  // Each raises EInOutError when no record is open.
  void WriteBoolean(bool Value) override;
  void WriteDouble(double Value) override;
  void WriteInteger(std::int32_t Value) override;
  void WritePoint(const TPoint2D& Value) override;
  void ReleaseRecord() noexcept override;
  // Hands the closed records to the stream and flushes it; EInOutError when it fails.
  void Flush();

 private:
  // Size more bytes at the end of the buffer, for the caller to fill.
  ORVANE_LOCAL char* Room(std::size_t Size);
  // Room for a field of Tag and Size bytes of value, behind the tag; EInOutError when no
  // record is open.
  ORVANE_LOCAL char* Field(char Tag, std::size_t Size, const char* Op);
  void Spill(std::size_t Count);
  std::string Position() const;

  std::ostream& FStream;
  std::string FStreamName;
  // The bytes not yet handed to the stream: the first FLen of FBuf.
  std::string FBuf;
  std::size_t FLen = 0;
  // Offset in FBuf of the open record's start; npos when no record is open.
  std::size_t FOpenRecord;
  std::uint64_t FSpilled = 0;
  bool FFailed = false;
};

// The reader over a std::istream. It reads the stream in blocks as it goes, so that memory
// stays in proportion to the bytes the stream really holds, whatever its counts claim.
class ORVANE_API TFbsStreamReader final : public IFbsReader {
 public:
  // Reads the signature; EInOutError when the stream does not start with it.
  explicit TFbsStreamReader(std::istream& AStream, std::string AStreamName = "stream");
  TFbsStreamReader(const TFbsStreamReader&) = delete;
  TFbsStreamReader& operator=(const TFbsStreamReader&) = delete;

  // Every read error is an EInOutError naming the stream and the byte offset.
  TFbsRecord NextRecord() override;
  bool ReadBoolean() override;
  double ReadDouble() override;
  std::int32_t ReadInteger() override;
  TPoint2D ReadPoint() override;
  void CheckCount(std::int64_t Count, std::size_t ItemBytes) override;
  std::string GetPosition() const override;
  void ReleaseRecord() noexcept override { FInRecord = false; }
  // True when no byte follows the current record: the stream holds no further object.
  bool AtEnd();

 private:
  bool Fill(std::size_t Count);
  void Require(std::size_t Count, const char* Op, const char* What);
  const char* Field(char Tag, std::size_t Size, const char* Op);
  [[noreturn]] void Fail(const char* Op, const std::string& What) const;

  std::istream& FStream;
  std::string FStreamName;
  std::vector<char> FBuf;
  std::size_t FPos = 0;
  std::size_t FEnd = 0;
  // Stream offset of FBuf[0].
  std::uint64_t FBase = 0;
  // End of the current record's fields in FBuf.
  std::size_t FFieldsEnd = 0;
  bool FInRecord = false;
};

}  // namespace orvane
