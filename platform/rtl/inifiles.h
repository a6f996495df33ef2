// INI files: TCustomIniFile, the typed reading and writing on top of a few
// primitives, and TMemIniFile, which keeps the whole file in memory and
// writes it back on UpdateFile.
//
// TMemIniFile reads text in this way, line by line:
// - each line is trimmed first; blank lines and lines starting with ";"
//   are dropped;
// - a line "[name]" opens the section "name" (trimmed), wherever it stands;
//   a section that appears again collects its lines under the first head;
// - lines before the first section are ignored;
// - blanks around the first "=" are removed: "a = b" is kept as "a=b";
// - a line without "=" is a key with an empty value, kept as it is.
// Section and key names compare without regard to case unless
// CaseSensitive is set.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/rtl/object.h"
#include "platform/rtl/stringlist.h"

class TCustomIniFile : public TObject {
  KELMAR_CLASS(TCustomIniFile, TObject)
 public:
  explicit TCustomIniFile(const String& FileName) : fileName_(FileName) {}
  const String& FileName() const { return fileName_; }

  virtual String ReadString(const String& Section, const String& Ident, const String& Default) const = 0;
  virtual void WriteString(const String& Section, const String& Ident, const String& Value) = 0;
  // Decimal or hexadecimal ("$1F", "0x1F"); Default when not a number.
  int ReadInteger(const String& Section, const String& Ident, int Default) const;
  void WriteInteger(const String& Section, const String& Ident, int Value);
  // Any integer other than 0 is true; Default when not an integer.
  bool ReadBool(const String& Section, const String& Ident, bool Default) const;
  // Writes "1" or "0".
  void WriteBool(const String& Section, const String& Ident, bool Value);
  // With FormatSettings.DecimalSeparator; Default when not a number.
  double ReadFloat(const String& Section, const String& Ident, double Default) const;
  void WriteFloat(const String& Section, const String& Ident, double Value);

  // These clear Strings first. ReadSection gives the keys, ReadSections the
  // section names, ReadSectionValues the lines as they are stored.
  virtual void ReadSection(const String& Section, TStrings* Strings) const = 0;
  virtual void ReadSections(TStrings* Strings) const = 0;
  virtual void ReadSectionValues(const String& Section, TStrings* Strings) const = 0;
  virtual void EraseSection(const String& Section) = 0;
  virtual void DeleteKey(const String& Section, const String& Ident) = 0;
  virtual void UpdateFile() = 0;

  // True when the section has at least one key.
  bool SectionExists(const String& Section) const;
  virtual bool ValueExists(const String& Section, const String& Ident) const;

 protected:
  void SetFileName(const String& FileName) { fileName_ = FileName; }

 private:
  String fileName_;
};

class TMemIniFile : public TCustomIniFile {
  KELMAR_CLASS(TMemIniFile, TCustomIniFile)
 public:
  // Loads FileName when it exists; an empty name or a missing file gives
  // an empty INI. The file's encoding is found as TStrings::LoadFromFile
  // finds it, and UpdateFile writes in the same one.
  explicit TMemIniFile(const String& FileName = String());
  ~TMemIniFile() override;

  String ReadString(const String& Section, const String& Ident, const String& Default) const override;
  // Replaces the key's line, or adds one at the end of the section (made
  // when missing). An empty value is kept as "key=".
  void WriteString(const String& Section, const String& Ident, const String& Value) override;
  void ReadSection(const String& Section, TStrings* Strings) const override;
  void ReadSections(TStrings* Strings) const override;
  void ReadSectionValues(const String& Section, TStrings* Strings) const override;
  void EraseSection(const String& Section) override;
  void DeleteKey(const String& Section, const String& Ident) override;
  bool ValueExists(const String& Section, const String& Ident) const override;
  // Writes the sections to FileName, each head followed by its lines and an
  // empty line. Raises EFCreateError when the file cannot be written.
  void UpdateFile() override;

  void Clear();
  // The whole INI as lines, as UpdateFile writes them.
  void GetStrings(TStrings* List) const;
  // Replaces the content with the INI read from List.
  void SetStrings(const TStrings* List);
  // Takes another file name; Reload reads it (a missing file empties).
  void Rename(const String& FileName, bool Reload);

  bool CaseSensitive() const { return caseSensitive_; }
  void SetCaseSensitive(bool Value);

 private:
  class TSection;
  TSection* FindSection(const String& Section) const;
  TSection& AddSection(const String& Section);
  void LoadFile();

  std::vector<std::unique_ptr<TSection>> sections_;
  std::unordered_map<String, TSection*> byName_;  // by folded name unless case-sensitive
  bool caseSensitive_ = false;
  TEncoding encoding_ = TEncoding::Default;
};
