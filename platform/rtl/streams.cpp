#include "platform/rtl/streams.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "platform/rtl/sysutils.h"
#include "platform/rtl/typinfo.h"

// ---- Text encodings --------------------------------------------------------

std::string_view EncodingPreamble(TEncoding encoding) {
  switch (encoding) {
    case TEncoding::UTF8: return "\xEF\xBB\xBF";
    case TEncoding::Unicode: return "\xFF\xFE";
    case TEncoding::BigEndianUnicode: return "\xFE\xFF";
    case TEncoding::Default: break;
  }
  return {};
}

size_t DetectPreamble(std::string_view bytes, TEncoding& encoding) {
  for (TEncoding e : {TEncoding::UTF8, TEncoding::Unicode, TEncoding::BigEndianUnicode}) {
    std::string_view mark = EncodingPreamble(e);
    if (bytes.substr(0, mark.size()) == mark) {
      encoding = e;
      return mark.size();
    }
  }
  return 0;
}

namespace {

String DecodeUtf16(std::string_view bytes, bool bigEndian) {
  std::u16string out;
  out.reserve(bytes.size() / 2 + 1);
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    auto b0 = static_cast<unsigned char>(bytes[i]), b1 = static_cast<unsigned char>(bytes[i + 1]);
    out += static_cast<char16_t>(bigEndian ? (b0 << 8 | b1) : (b1 << 8 | b0));
  }
  if (bytes.size() % 2) out += u'\uFFFD';
  return String(std::move(out));
}

std::string EncodeUtf16(const String& text, bool bigEndian) {
  std::string out;
  out.reserve(static_cast<size_t>(text.Length()) * 2);
  for (char16_t c : text.view()) {
    char hi = static_cast<char>(c >> 8), lo = static_cast<char>(c & 0xFF);
    out += bigEndian ? hi : lo;
    out += bigEndian ? lo : hi;
  }
  return out;
}

}  // namespace

String DecodeText(std::string_view bytes, TEncoding encoding) {
  switch (encoding) {
    case TEncoding::UTF8: return String::FromUtf8(bytes);
    case TEncoding::Unicode: return DecodeUtf16(bytes, false);
    case TEncoding::BigEndianUnicode: return DecodeUtf16(bytes, true);
    case TEncoding::Default: break;
  }
  return AnsiToString(bytes);
}

std::string EncodeText(const String& text, TEncoding encoding) {
  switch (encoding) {
    case TEncoding::UTF8: return text.ToUtf8();
    case TEncoding::Unicode: return EncodeUtf16(text, false);
    case TEncoding::BigEndianUnicode: return EncodeUtf16(text, true);
    case TEncoding::Default: break;
  }
  return StringToAnsi(text);
}

bool CanEncode(const String& text, TEncoding encoding) {
  if (encoding != TEncoding::Default || SystemCodePage() == 65001) return true;
  return AnsiToString(StringToAnsi(text)) == text;
}

// ---- TStream ---------------------------------------------------------------

KELMAR_PUBLISH(TStream) {}

void TStream::ReadBuffer(void* Buffer, int64_t Count) {
  if (Count != 0 && Read(Buffer, Count) != Count) throw EReadError(u"Stream read error");
}

void TStream::WriteBuffer(const void* Buffer, int64_t Count) {
  if (Count != 0 && Write(Buffer, Count) != Count) throw EWriteError(u"Stream write error");
}

int64_t TStream::Size() {
  int64_t pos = Seek(0, soCurrent);
  int64_t size = Seek(0, soEnd);
  Seek(pos, soBeginning);
  return size;
}

void TStream::SetSize(int64_t) {}

int64_t TStream::CopyFrom(TStream* Source, int64_t Count) {
  if (Count == 0) {
    Source->SetPosition(0);
    Count = Source->Size();
  }
  constexpr int64_t kChunk = 64 * 1024;
  std::vector<char> buffer(static_cast<size_t>(std::min(Count, kChunk)));
  for (int64_t left = Count; left > 0;) {
    int64_t n = std::min(left, kChunk);
    Source->ReadBuffer(buffer.data(), n);
    WriteBuffer(buffer.data(), n);
    left -= n;
  }
  return Count;
}

// ---- TMemoryStream ---------------------------------------------------------

KELMAR_PUBLISH(TMemoryStream) {}

int64_t TMemoryStream::Read(void* Buffer, int64_t Count) {
  int64_t available = Size() - position_;
  if (Count <= 0 || available <= 0) return 0;
  int64_t n = std::min(Count, available);
  std::memcpy(Buffer, data_.data() + position_, static_cast<size_t>(n));
  position_ += n;
  return n;
}

int64_t TMemoryStream::Write(const void* Buffer, int64_t Count) {
  if (Count <= 0) return 0;
  int64_t end = position_ + Count;
  if (end > Size()) data_.resize(static_cast<size_t>(end));
  std::memcpy(data_.data() + position_, Buffer, static_cast<size_t>(Count));
  position_ = end;
  return Count;
}

int64_t TMemoryStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  int64_t base = Origin == soBeginning ? 0 : Origin == soCurrent ? position_ : Size();
  if (base + Offset < 0) throw EStreamError(u"Invalid stream position " + IntToStr(base + Offset));
  position_ = base + Offset;
  return position_;
}

void TMemoryStream::SetSize(int64_t NewSize) {
  if (NewSize < 0) throw EStreamError(u"Invalid stream size " + IntToStr(NewSize));
  data_.resize(static_cast<size_t>(NewSize));
  position_ = std::min(position_, NewSize);
}

void TMemoryStream::Clear() {
  data_.clear();
  data_.shrink_to_fit();
  position_ = 0;
}

void TMemoryStream::LoadFromStream(TStream* Stream) {
  Stream->SetPosition(0);
  int64_t count = Stream->Size();
  std::vector<uint8_t> bytes(static_cast<size_t>(count));
  Stream->ReadBuffer(bytes.data(), count);
  data_ = std::move(bytes);
  position_ = 0;
}

void TMemoryStream::LoadFromFile(const String& FileName) {
  TFileStream file(FileName, fmOpenRead | fmShareDenyWrite);
  LoadFromStream(&file);
}

void TMemoryStream::SaveToStream(TStream* Stream) { Stream->WriteBuffer(data_.data(), Size()); }

void TMemoryStream::SaveToFile(const String& FileName) {
  TFileStream file(FileName, fmCreate);
  SaveToStream(&file);
}

KELMAR_PUBLISH(TBytesStream) {}

TBytesStream::TBytesStream(std::vector<uint8_t> Bytes) { data_ = std::move(Bytes); }

// ---- TStringStream ---------------------------------------------------------

KELMAR_PUBLISH(TStringStream) {}

TStringStream::TStringStream(const String& AString, TEncoding Encoding) : encoding_(Encoding) {
  std::string bytes = EncodeText(AString, Encoding);
  data_.assign(bytes.begin(), bytes.end());
}

String TStringStream::DataString() const {
  return DecodeText(std::string_view(reinterpret_cast<const char*>(data_.data()), data_.size()), encoding_);
}

String TStringStream::ReadString(int64_t Count) {
  int64_t n = std::clamp<int64_t>(Size() - position_, 0, std::max<int64_t>(Count, 0));
  std::string_view bytes(reinterpret_cast<const char*>(data_.data()) + std::min(position_, Size()), static_cast<size_t>(n));
  position_ += n;
  return DecodeText(bytes, encoding_);
}

void TStringStream::WriteString(const String& AString) {
  std::string bytes = EncodeText(AString, encoding_);
  WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
}

// ---- TFileStream -----------------------------------------------------------

KELMAR_PUBLISH(TFileStream) {}

TFileStream::TFileStream(const String& FileName, uint16_t Mode) : fileName_(FileName) {
  const bool create = (Mode & fmCreate) == fmCreate;
  const int access = Mode & 0x0003;
  canRead_ = create || access != fmOpenWrite;
  canWrite_ = create || access != fmOpenRead;
  const char* how = create ? "w+b" : access == fmOpenRead ? "rb" : "r+b";
  file_ = std::fopen(FileName.ToUtf8().c_str(), how);
  if (!file_) {
    String reason = String(std::strerror(errno));
    if (create) throw EFCreateError(u"Cannot create file \"" + FileName + u"\". " + reason);
    throw EFOpenError(u"Cannot open file \"" + FileName + u"\". " + reason);
  }
}

TFileStream::~TFileStream() {
  if (file_) std::fclose(file_);
}

// stdio needs a positioning call between a read and a write on one file.
void TFileStream::Switch(LastOp next) {
  if (last_ != LastOp::None && last_ != next) std::fseek(file_, 0, SEEK_CUR);
  last_ = next;
}

int64_t TFileStream::Read(void* Buffer, int64_t Count) {
  if (!canRead_ || Count <= 0) return 0;
  Switch(LastOp::Read);
  return static_cast<int64_t>(std::fread(Buffer, 1, static_cast<size_t>(Count), file_));
}

int64_t TFileStream::Write(const void* Buffer, int64_t Count) {
  if (!canWrite_ || Count <= 0) return 0;
  Switch(LastOp::Write);
  return static_cast<int64_t>(std::fwrite(Buffer, 1, static_cast<size_t>(Count), file_));
}

int64_t TFileStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  int whence = Origin == soBeginning ? SEEK_SET : Origin == soCurrent ? SEEK_CUR : SEEK_END;
  if (std::fseek(file_, static_cast<long>(Offset), whence) != 0)
    throw EStreamError(u"Cannot seek in file \"" + fileName_ + u"\". " + String(std::strerror(errno)));
  last_ = LastOp::None;
  return static_cast<int64_t>(std::ftell(file_));
}

int64_t TFileStream::Size() {
  std::fflush(file_);
  return TStream::Size();
}

void TFileStream::SetSize(int64_t NewSize) {
  int64_t pos = Position();
  std::fflush(file_);
  std::error_code error;
  std::filesystem::resize_file(std::filesystem::path(fileName_.ToUtf8()), static_cast<uintmax_t>(NewSize), error);
  if (error) throw EStreamError(u"Cannot set the size of file \"" + fileName_ + u"\". " + String(error.message()));
  SetPosition(std::min(pos, NewSize));
}
