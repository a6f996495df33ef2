// TStrings, the abstract list of lines with an attached object each, and
// TStringList, the list that keeps its own lines.
//
// TStrings builds everything (Text, CommaText, name=value access, files,
// streams) on a few virtual primitives, so that a control can present its
// own storage as a TStrings: Get, GetCount, Insert, Delete and Clear must be
// given; Put, GetObject and PutObject have working defaults.
//
// Line breaks: Text joins the lines with LineBreak(), "\n" by default, and
// ends with one unless TrailingLineBreak is off. SetText splits at CR, LF and
// CRLF (or at LineBreak() when that is set to something else); a break at
// the very end does not add an empty line.
//
// Attached objects are not owned, except by a TStringList whose OwnsObjects
// is set: it deletes an object with its line.
#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <vector>

#include "platform/rtl/classes.h"
#include "platform/rtl/events.h"
#include "platform/rtl/streams.h"

class TStringList;

enum TDuplicates { dupIgnore, dupAccept, dupError };
KELMAR_ENUM(TDuplicates, u"dupIgnore", u"dupAccept", u"dupError");

class TStrings : public TPersistent {
  KELMAR_CLASS(TStrings, TPersistent)
 public:
  TStrings() = default;
  ~TStrings() override = default;

  // ---- Lines and objects ----
  int Count() const { return GetCount(); }
  String Strings(int Index) const { return Get(Index); }
  void SetStrings(int Index, const String& S) { Put(Index, S); }
  String operator[](int Index) const { return Get(Index); }
  TObject* Objects(int Index) const { return GetObject(Index); }
  void SetObjects(int Index, TObject* AObject) { PutObject(Index, AObject); }

  // Returns the index of the new line (its sorted place in a sorted list).
  virtual int Add(const String& S);
  virtual int AddObject(const String& S, TObject* AObject);
  void Append(const String& S) { Add(S); }
  void InsertObject(int Index, const String& S, TObject* AObject);
  void AddStrings(const TStrings* Strings);
  virtual void Exchange(int Index1, int Index2);
  virtual void Move(int CurIndex, int NewIndex);

  virtual int IndexOf(const String& S) const;
  virtual int IndexOfName(const String& Name) const;
  int IndexOfObject(const TObject* AObject) const;
  // Same lines in the same order, compared exactly.
  bool Equals(const TStrings* Strings) const;

  // ---- name=value lines ----
  // The part before the first NameValueSeparator; empty for a line without.
  String Names(int Index) const;
  // The part after the first separator; empty for a line without.
  String ValueFromIndex(int Index) const;
  void SetValueFromIndex(int Index, const String& Value);
  // The value of the first line whose name matches (case-insensitively
  // unless the list is case-sensitive); empty when none does.
  String Values(const String& Name) const;
  // Replaces the first matching line or adds one; an empty Value deletes
  // the line.
  void SetValues(const String& Name, const String& Value);

  // ---- Whole text ----
  virtual String Text() const;
  virtual void SetText(const String& Value);
  // Items separated by "," and quoted with '"' where needed (see
  // DelimitedText); blanks separate items too, whatever StrictDelimiter says.
  String CommaText() const;
  void SetCommaText(const String& Value);
  // Writing quotes an item that holds a blank or control character (unless
  // StrictDelimiter), the delimiter or the quote; a single empty item comes
  // out as two quotes. Reading splits at the delimiter and, unless
  // StrictDelimiter, at blanks and control characters; a quoted item may hold
  // anything, a doubled quote in it standing for one; a delimiter at the very
  // end adds an empty item.
  String DelimitedText() const;
  void SetDelimitedText(const String& Value);

  WideChar Delimiter() const { return delimiter_; }
  void SetDelimiter(WideChar Value) { delimiter_ = Value; }
  WideChar QuoteChar() const { return quoteChar_; }
  void SetQuoteChar(WideChar Value) { quoteChar_ = Value; }
  bool StrictDelimiter() const { return strictDelimiter_; }
  void SetStrictDelimiter(bool Value) { strictDelimiter_ = Value; }
  WideChar NameValueSeparator() const { return nameValueSeparator_; }
  void SetNameValueSeparator(WideChar Value) { nameValueSeparator_ = Value; }
  const String& LineBreak() const { return lineBreak_; }
  void SetLineBreak(const String& Value) { lineBreak_ = Value; }
  bool TrailingLineBreak() const { return trailingLineBreak_; }
  void SetTrailingLineBreak(bool Value) { trailingLineBreak_ = Value; }

  // ---- Updates ----
  // Counted brackets: a list tells of its changes once, at the last
  // EndUpdate, and only when something changed.
  void BeginUpdate();
  void EndUpdate();

  // ---- Files and streams ----
  // Reading detects a UTF-8 or UTF-16 byte order mark and otherwise reads
  // 8-bit text in the system code page; the encoding found is remembered in
  // Encoding(). Writing without an encoding uses Encoding(); text that the
  // system code page cannot hold is written as UTF-8 with its mark instead,
  // so that no character is lost.
  void LoadFromFile(const String& FileName);
  void LoadFromFile(const String& FileName, TEncoding Encoding);
  void LoadFromStream(TStream* Stream);
  void LoadFromStream(TStream* Stream, TEncoding Encoding);
  void SaveToFile(const String& FileName) const;
  void SaveToFile(const String& FileName, TEncoding Encoding) const;
  void SaveToStream(TStream* Stream) const;
  void SaveToStream(TStream* Stream, TEncoding Encoding) const;
  TEncoding Encoding() const { return encoding_; }
  // Whether SaveTo... writes the byte order mark of a UTF encoding.
  bool WriteBOM() const { return writeBOM_; }
  void SetWriteBOM(bool Value) { writeBOM_ = Value; }

  // Copies the lines, objects and the text settings of another TStrings.
  void Assign(TPersistent* Source) override;

  // ---- The primitives ----
  virtual String Get(int Index) const = 0;
  virtual int GetCount() const = 0;
  virtual TObject* GetObject(int Index) const;
  // Default: deletes and re-inserts, keeping the object.
  virtual void Put(int Index, const String& S);
  // Default: nothing (lists without objects).
  virtual void PutObject(int Index, TObject* AObject);
  virtual void Insert(int Index, const String& S) = 0;
  virtual void Delete(int Index) = 0;
  virtual void Clear() = 0;

 protected:
  // Called at the first BeginUpdate (true) and the last EndUpdate (false).
  virtual void SetUpdateState(bool Updating);
  int UpdateCount() const { return updateCount_; }
  // < 0, 0, > 0; TStrings compares without regard to case.
  virtual int CompareStrings(const String& S1, const String& S2) const;
  // Compare Name with the name part of a line; false for a line without a
  // separator. The base uses CompareStrings.
  virtual bool NameMatches(const String& Line, const String& Name) const;
  // Raises EStringListError "List index out of bounds (N)".
  [[noreturn]] void IndexError(int Index) const;

 private:
  // Encoding null: found from the byte order mark.
  void Load(TStream* Stream, const TEncoding* Encoding);

  WideChar delimiter_ = u',';
  WideChar quoteChar_ = u'"';
  WideChar nameValueSeparator_ = u'=';
  bool strictDelimiter_ = false;
  String lineBreak_ = u"\n";
  bool trailingLineBreak_ = true;
  bool writeBOM_ = true;
  TEncoding encoding_ = TEncoding::Default;
  int updateCount_ = 0;
};

// Orders two lines of a list: < 0, 0, > 0.
using TStringListSortCompare = std::function<int(TStringList* List, int Index1, int Index2)>;

class TStringList : public TStrings {
  KELMAR_CLASS(TStringList, TStrings)
 public:
  TStringList();
  // Only a bool: a list is not made from an owner component.
  template <class B>
    requires std::same_as<B, bool>
  explicit TStringList(B OwnsObjects) : TStringList() {
    ownsObjects_ = OwnsObjects;
  }
  TStringList(const TStringList&) = delete;
  TStringList& operator=(const TStringList&) = delete;
  ~TStringList() override;

  // In a sorted list: dupIgnore gives the index of the line already there,
  // dupError raises EStringListError "String list does not allow
  // duplicates".
  int Add(const String& S) override { return AddObject(S, nullptr); }
  int AddObject(const String& S, TObject* AObject) override;
  int IndexOf(const String& S) const override;
  int IndexOfName(const String& Name) const override;
  void Exchange(int Index1, int Index2) override;
  void Move(int CurIndex, int NewIndex) override;

  String Get(int Index) const override;
  int GetCount() const override { return static_cast<int>(items_.size()); }
  TObject* GetObject(int Index) const override;
  // In a sorted list the changed line moves to its sorted place.
  void Put(int Index, const String& S) override;
  void PutObject(int Index, TObject* AObject) override;
  // Raises EStringListError "Operation not allowed on sorted list" when
  // sorted.
  void Insert(int Index, const String& S) override;
  void Delete(int Index) override;
  void Clear() override;

  // Binary search of a sorted list: true when found; Index is the first
  // match or the place S would go.
  virtual bool Find(const String& S, int& Index) const;
  // Stable sort; does nothing to a list that is already Sorted.
  virtual void Sort();
  void CustomSort(const TStringListSortCompare& Compare);

  bool Sorted() const { return sorted_; }
  void SetSorted(bool Value);
  TDuplicates Duplicates() const { return duplicates_; }
  void SetDuplicates(TDuplicates Value) { duplicates_ = Value; }
  bool CaseSensitive() const { return caseSensitive_; }
  void SetCaseSensitive(bool Value);
  bool OwnsObjects() const { return ownsObjects_; }
  void SetOwnsObjects(bool Value) { ownsObjects_ = Value; }

  TNotifyEvent OnChange;
  TNotifyEvent OnChanging;

 protected:
  void SetUpdateState(bool Updating) override;
  int CompareStrings(const String& S1, const String& S2) const override;
  bool NameMatches(const String& Line, const String& Name) const override;
  // Every change goes through this pair: OnChanging before, OnChange after,
  // or once around an update bracket.
  virtual void Changing();
  virtual void Changed();

 private:
  struct Item {
    String Text;
    TObject* Object = nullptr;
  };
  class NameIndex;

  void CheckIndex(int Index) const;
  void InsertItem(int Index, const String& S, TObject* AObject);
  void Touch();  // the lines changed: cached lookups are stale

  std::vector<Item> items_;
  bool sorted_ = false;
  TDuplicates duplicates_ = dupIgnore;
  bool caseSensitive_ = false;
  bool ownsObjects_ = false;
  bool changedInUpdate_ = false;
  bool changingSent_ = false;
  mutable std::unique_ptr<NameIndex> nameIndex_;
  mutable int scansSinceTouch_ = 0;
};
