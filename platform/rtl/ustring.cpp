#include "platform/rtl/ustring.h"

#include <ostream>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sysutils.h"

namespace {

void AppendCodePoint(std::u16string& out, char32_t cp) {
  if (cp >= 0x10000 && cp <= 0x10FFFF) {
    cp -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (cp >> 10));
    out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
  } else if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
    out += u'\uFFFD';
  } else {
    out += static_cast<char16_t>(cp);
  }
}

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

}  // namespace

UnicodeString UnicodeString::FromUtf8(std::string_view in) {
  UnicodeString result;
  std::u16string& out = result.data_;
  out.reserve(in.size());
  size_t i = 0;
  const size_t n = in.size();
  while (i < n) {
    unsigned char c = static_cast<unsigned char>(in[i]);
    if (c < 0x80) {
      out += static_cast<char16_t>(c);
      ++i;
      continue;
    }
    int extra = c >= 0xF0 ? (c < 0xF5 ? 3 : -1) : c >= 0xE0 ? 2 : c >= 0xC2 ? 1 : -1;
    // An invalid lead byte or a sequence cut off by the end.
    if (extra < 0 || i + static_cast<size_t>(extra) >= n) {
      out += u'\uFFFD';
      ++i;
      continue;
    }
    char32_t cp = c & (0x3F >> extra);
    bool ok = true;
    for (int k = 1; k <= extra; ++k) {
      unsigned char cc = static_cast<unsigned char>(in[i + k]);
      if ((cc & 0xC0) != 0x80) {
        ok = false;
        break;
      }
      cp = (cp << 6) | (cc & 0x3F);
    }
    // Overlong forms are invalid too.
    if (!ok || (extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF))) {
      out += u'\uFFFD';
      ++i;
      continue;
    }
    AppendCodePoint(out, cp);
    i += static_cast<size_t>(extra) + 1;
  }
  return result;
}

UnicodeString::UnicodeString(const char* utf8) : UnicodeString(FromUtf8(utf8 ? std::string_view(utf8) : std::string_view())) {}
UnicodeString::UnicodeString(const std::string& utf8) : UnicodeString(FromUtf8(utf8)) {}

UnicodeString::UnicodeString(const wchar_t* s) {
  if (!s) return;
  for (; *s; ++s) AppendCodePoint(data_, static_cast<char32_t>(*s));
}

std::string UnicodeString::ToUtf8() const {
  std::string out;
  out.reserve(data_.size());
  const size_t n = data_.size();
  for (size_t i = 0; i < n; ++i) {
    char32_t c = data_[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && data_[i + 1] >= 0xDC00 && data_[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (data_[i + 1] - 0xDC00);
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;  // a lone surrogate has no UTF-8 form
    }
    AppendUtf8(out, c);
  }
  return out;
}

void UnicodeString::SetLength(int length) { data_.resize(static_cast<size_t>(length < 0 ? 0 : length)); }

void UnicodeString::CheckIndex(int index) const {
  if (index < 1 || index > Length()) throw ERangeError(u"Range check error");
}

WideChar UnicodeString::operator[](int index) const {
  CheckIndex(index);
  return data_[static_cast<size_t>(index - 1)];
}

WideChar& UnicodeString::operator[](int index) {
  CheckIndex(index);
  return data_[static_cast<size_t>(index - 1)];
}

UnicodeString UnicodeString::SubString(int index, int count) const {
  if (index < 1) index = 1;
  const int len = Length();
  if (index > len || count <= 0) return UnicodeString();
  if (count > len - index + 1) count = len - index + 1;
  return UnicodeString(data_.substr(static_cast<size_t>(index - 1), static_cast<size_t>(count)));
}

int UnicodeString::Pos(const UnicodeString& sub) const { return ::Pos(sub, *this); }

UnicodeString& UnicodeString::Insert(const UnicodeString& str, int index) {
  if (index < 1) index = 1;
  if (index > Length()) index = Length() + 1;
  data_.insert(static_cast<size_t>(index - 1), str.data_);
  return *this;
}

UnicodeString& UnicodeString::Delete(int index, int count) {
  if (index < 1 || index > Length() || count <= 0) return *this;
  data_.erase(static_cast<size_t>(index - 1), static_cast<size_t>(count));
  return *this;
}

UnicodeString UnicodeString::Trim() const { return ::Trim(*this); }
UnicodeString UnicodeString::TrimLeft() const { return ::TrimLeft(*this); }
UnicodeString UnicodeString::TrimRight() const { return ::TrimRight(*this); }
UnicodeString UnicodeString::UpperCase() const { return ::UpperCase(*this); }
UnicodeString UnicodeString::LowerCase() const { return ::LowerCase(*this); }
int UnicodeString::ToInt() const { return StrToInt(*this); }
int UnicodeString::ToIntDef(int def) const { return StrToIntDef(*this, def); }
double UnicodeString::ToDouble() const { return StrToFloat(*this); }
int UnicodeString::LastDelimiter(const UnicodeString& delimiters) const { return ::LastDelimiter(delimiters, *this); }
bool UnicodeString::IsDelimiter(const UnicodeString& delimiters, int index) const {
  return ::IsDelimiter(delimiters, *this, index);
}

std::ostream& operator<<(std::ostream& os, const UnicodeString& s) { return os << s.ToUtf8(); }
void PrintTo(const UnicodeString& s, std::ostream* os) { *os << '"' << s.ToUtf8() << '"'; }
