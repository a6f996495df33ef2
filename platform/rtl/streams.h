// Streams: TStream and its memory, file and string kinds, and the text
// encodings that lists and string streams read and write.
//
// Positions and counts are 64-bit. Read and Write move as much as they can
// and return the count; ReadBuffer and WriteBuffer move all or raise.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/object.h"

// ---- Text encodings --------------------------------------------------------

// Default is the system code page (SystemCodePage()); Unicode is UTF-16
// little-endian, BigEndianUnicode UTF-16 big-endian.
enum class TEncoding { Default, UTF8, Unicode, BigEndianUnicode };

// The byte order mark that starts a file in `encoding`; empty for Default.
std::string_view EncodingPreamble(TEncoding encoding);
// Reads a byte order mark at the start of `bytes`: sets `encoding` and
// returns the length of the mark, or returns 0 and leaves `encoding` alone.
size_t DetectPreamble(std::string_view bytes, TEncoding& encoding);
// Text from bytes without a preamble; an odd last byte of UTF-16 reads as
// U+FFFD.
String DecodeText(std::string_view bytes, TEncoding encoding);
// Bytes without a preamble.
std::string EncodeText(const String& text, TEncoding encoding);
// True when `text` comes back whole from `encoding` (UTF encodings always).
bool CanEncode(const String& text, TEncoding encoding);

// ---- TStream ---------------------------------------------------------------

enum TSeekOrigin { soBeginning, soCurrent, soEnd };
// The older spelling of the origins.
constexpr TSeekOrigin soFromBeginning = soBeginning;
constexpr TSeekOrigin soFromCurrent = soCurrent;
constexpr TSeekOrigin soFromEnd = soEnd;

class TStream : public TObject {
  KELMAR_CLASS(TStream, TObject)
 public:
  // Count of bytes moved; less than asked at the end of the data.
  virtual int64_t Read(void* Buffer, int64_t Count) = 0;
  virtual int64_t Write(const void* Buffer, int64_t Count) = 0;
  // The new position from the beginning.
  virtual int64_t Seek(int64_t Offset, TSeekOrigin Origin) = 0;

  // Raise EReadError "Stream read error" / EWriteError "Stream write error"
  // when fewer than Count bytes move.
  void ReadBuffer(void* Buffer, int64_t Count);
  void WriteBuffer(const void* Buffer, int64_t Count);

  int64_t Position() { return Seek(0, soCurrent); }
  void SetPosition(int64_t Value) { Seek(Value, soBeginning); }
  virtual int64_t Size();
  virtual void SetSize(int64_t NewSize);

  // Copies Count bytes from Source's position, or, for Count 0, the whole
  // of Source from its beginning. Returns the count copied.
  int64_t CopyFrom(TStream* Source, int64_t Count);
};

// ---- Memory streams --------------------------------------------------------

class TMemoryStream : public TStream {
  KELMAR_CLASS(TMemoryStream, TStream)
 public:
  TMemoryStream() = default;

  int64_t Read(void* Buffer, int64_t Count) override;
  int64_t Write(const void* Buffer, int64_t Count) override;
  // A position past the end is allowed; writing there fills the gap with
  // zeros. A position before the beginning raises EStreamError.
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  int64_t Size() override { return static_cast<int64_t>(data_.size()); }
  // Keeps the position unless it would lie past the new end.
  void SetSize(int64_t NewSize) override;

  // The bytes; valid until the size changes.
  void* Memory() { return data_.data(); }
  const void* Memory() const { return data_.data(); }
  void Clear();

  // Replaces the content with the whole of Stream (from its beginning) or
  // of the file; the position goes to 0.
  void LoadFromStream(TStream* Stream);
  void LoadFromFile(const String& FileName);
  // Writes the whole content to Stream at its position, or to a new file.
  void SaveToStream(TStream* Stream);
  void SaveToFile(const String& FileName);

 protected:
  std::vector<uint8_t> data_;
  int64_t position_ = 0;
};

class TBytesStream : public TMemoryStream {
  KELMAR_CLASS(TBytesStream, TMemoryStream)
 public:
  TBytesStream() = default;
  explicit TBytesStream(std::vector<uint8_t> Bytes);
  const std::vector<uint8_t>& Bytes() const { return data_; }
};

// Text in a memory stream, as bytes in an encoding (the system code page
// unless told otherwise).
class TStringStream : public TMemoryStream {
  KELMAR_CLASS(TStringStream, TMemoryStream)
 public:
  explicit TStringStream(const String& AString = String(), TEncoding Encoding = TEncoding::Default);

  // The whole content decoded.
  String DataString() const;
  TEncoding Encoding() const { return encoding_; }
  // Decodes up to Count bytes from the position on and moves past them.
  String ReadString(int64_t Count);
  // Encodes and writes at the position.
  void WriteString(const String& AString);

 private:
  TEncoding encoding_;
};

// ---- File streams ----------------------------------------------------------

// Open modes; the share flags are accepted and have no effect here.
constexpr uint16_t fmCreate = 0xFF00;
constexpr uint16_t fmOpenRead = 0x0000;
constexpr uint16_t fmOpenWrite = 0x0001;
constexpr uint16_t fmOpenReadWrite = 0x0002;
constexpr uint16_t fmShareCompat = 0x0000;
constexpr uint16_t fmShareExclusive = 0x0010;
constexpr uint16_t fmShareDenyWrite = 0x0020;
constexpr uint16_t fmShareDenyRead = 0x0030;
constexpr uint16_t fmShareDenyNone = 0x0040;

class TFileStream : public TStream {
  KELMAR_CLASS(TFileStream, TStream)
 public:
  // fmCreate makes or empties the file, open for reading and writing.
  // Raises EFCreateError "Cannot create file \"x\". <reason>" or
  // EFOpenError "Cannot open file \"x\". <reason>".
  TFileStream(const String& FileName, uint16_t Mode);
  TFileStream(const TFileStream&) = delete;
  TFileStream& operator=(const TFileStream&) = delete;
  ~TFileStream() override;

  int64_t Read(void* Buffer, int64_t Count) override;
  int64_t Write(const void* Buffer, int64_t Count) override;
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  int64_t Size() override;
  void SetSize(int64_t NewSize) override;

  const String& FileName() const { return fileName_; }

 private:
  enum class LastOp { None, Read, Write };
  void Switch(LastOp next);

  String fileName_;
  std::FILE* file_ = nullptr;
  bool canRead_ = false;
  bool canWrite_ = false;
  LastOp last_ = LastOp::None;
};
