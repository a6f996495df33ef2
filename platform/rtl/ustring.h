// UnicodeString: the text type of the whole kit.
//
// UTF-16 code units with 1-based positions, as the historical framework had
// them. An indexed read outside 1..Length() raises ERangeError, and some
// behaviour of the kit relies on exactly that. Conversion to and from UTF-8
// happens only at the edges (files, terminal, the SQL driver).
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

using WideChar = char16_t;

class UnicodeString {
 public:
  UnicodeString() = default;
  UnicodeString(const char16_t* s) : data_(s ? s : u"") {}
  UnicodeString(const char16_t* s, int length) : data_(s, static_cast<size_t>(length)) {}
  UnicodeString(std::u16string s) : data_(std::move(s)) {}
  UnicodeString(std::u16string_view s) : data_(s) {}
  // Narrow literals and std::string are UTF-8.
  UnicodeString(const char* utf8);
  UnicodeString(const std::string& utf8);
  // Wide literals (UTF-32 on this platform).
  UnicodeString(const wchar_t* s);
  explicit UnicodeString(WideChar c) : data_(1, c) {}
  UnicodeString(int count, WideChar c) : data_(static_cast<size_t>(count < 0 ? 0 : count), c) {}

  static UnicodeString FromUtf8(std::string_view utf8);
  static UnicodeString StringOfChar(WideChar c, int count) { return UnicodeString(count, c); }

  int Length() const { return static_cast<int>(data_.size()); }
  bool IsEmpty() const { return data_.empty(); }
  void SetLength(int length);

  // 1-based; raises ERangeError outside 1..Length().
  WideChar operator[](int index) const;
  WideChar& operator[](int index);

  // Copy semantics of the historical framework: an index below 1 counts
  // as 1, a count running past the end stops at the end.
  UnicodeString SubString(int index, int count) const;
  int Pos(const UnicodeString& sub) const;
  UnicodeString& Insert(const UnicodeString& str, int index);
  UnicodeString& Delete(int index, int count);

  UnicodeString Trim() const;
  UnicodeString TrimLeft() const;
  UnicodeString TrimRight() const;
  UnicodeString UpperCase() const;
  UnicodeString LowerCase() const;

  int ToInt() const;
  int ToIntDef(int def) const;
  double ToDouble() const;

  // Position of the last character that is one of `delimiters`, or 0.
  int LastDelimiter(const UnicodeString& delimiters) const;
  bool IsDelimiter(const UnicodeString& delimiters, int index) const;

  const char16_t* c_str() const { return data_.c_str(); }
  const std::u16string& u16() const { return data_; }
  std::u16string_view view() const { return data_; }
  std::string ToUtf8() const;

  UnicodeString& operator+=(const UnicodeString& other) { data_ += other.data_; return *this; }
  UnicodeString& operator+=(WideChar c) { data_ += c; return *this; }
  friend UnicodeString operator+(UnicodeString a, const UnicodeString& b) { a += b; return a; }
  friend UnicodeString operator+(UnicodeString a, const char16_t* b) { a.data_ += b; return a; }
  friend UnicodeString operator+(const char16_t* a, const UnicodeString& b) { return UnicodeString(a) + b; }
  friend UnicodeString operator+(UnicodeString a, const char* b) { return a + UnicodeString(b); }
  friend UnicodeString operator+(const char* a, const UnicodeString& b) { return UnicodeString(a) + b; }
  friend UnicodeString operator+(UnicodeString a, WideChar c) { a += c; return a; }

  // Ordinal comparison, code unit by code unit.
  friend bool operator==(const UnicodeString& a, const UnicodeString& b) { return a.data_ == b.data_; }
  friend bool operator==(const UnicodeString& a, const char16_t* b) { return a.data_ == b; }
  friend bool operator==(const UnicodeString& a, const char* b) { return a == UnicodeString(b); }
  friend auto operator<=>(const UnicodeString& a, const UnicodeString& b) { return a.data_ <=> b.data_; }

 private:
  void CheckIndex(int index) const;
  std::u16string data_;
};

using String = UnicodeString;

// Prints as UTF-8, for streams and test failure messages.
std::ostream& operator<<(std::ostream& os, const UnicodeString& s);
void PrintTo(const UnicodeString& s, std::ostream* os);

template <>
struct std::hash<UnicodeString> {
  size_t operator()(const UnicodeString& s) const noexcept { return std::hash<std::u16string>()(s.u16()); }
};
