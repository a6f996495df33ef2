#include "platform/rtl/inifiles.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "platform/rtl/sysutils.h"

namespace {

// Names compare as CompareText compares them, or exactly.
String NameKey(const String& name, bool caseSensitive) {
  return caseSensitive ? name : UpperCase(LowerCase(name));
}

// The key of a stored line: the part before "=", or the whole line.
String LineKey(const String& line) {
  int at = line.Pos(u"=");
  return at > 0 ? line.SubString(1, at - 1) : line;
}

String LineValue(const String& line) {
  int at = line.Pos(u"=");
  return at > 0 ? line.SubString(at + 1, line.Length()) : String();
}

}  // namespace

// ---- TCustomIniFile --------------------------------------------------------

KELMAR_PUBLISH(TCustomIniFile) {}

int TCustomIniFile::ReadInteger(const String& Section, const String& Ident, int Default) const {
  return StrToIntDef(ReadString(Section, Ident, String()), Default);
}

void TCustomIniFile::WriteInteger(const String& Section, const String& Ident, int Value) {
  WriteString(Section, Ident, IntToStr(Value));
}

bool TCustomIniFile::ReadBool(const String& Section, const String& Ident, bool Default) const {
  return ReadInteger(Section, Ident, Default ? 1 : 0) != 0;
}

void TCustomIniFile::WriteBool(const String& Section, const String& Ident, bool Value) {
  WriteString(Section, Ident, Value ? u"1" : u"0");
}

double TCustomIniFile::ReadFloat(const String& Section, const String& Ident, double Default) const {
  double value = 0;
  return TryStrToFloat(ReadString(Section, Ident, String()), value) ? value : Default;
}

void TCustomIniFile::WriteFloat(const String& Section, const String& Ident, double Value) {
  WriteString(Section, Ident, FloatToStr(Value));
}

bool TCustomIniFile::SectionExists(const String& Section) const {
  TStringList keys;
  ReadSection(Section, &keys);
  return keys.Count() > 0;
}

bool TCustomIniFile::ValueExists(const String& Section, const String& Ident) const {
  TStringList keys;
  ReadSection(Section, &keys);
  return keys.IndexOf(Ident) >= 0;
}

// ---- TMemIniFile -----------------------------------------------------------

// A section's lines as stored, and the first line of each key, found
// without a scan: programs read settings in loops.
class TMemIniFile::TSection {
 public:
  TSection(const String& name, bool caseSensitive) : Name(name), caseSensitive_(caseSensitive) {}

  const String Name;
  const TStringList& Lines() const { return lines_; }

  int IndexOfKey(const String& key) const {
    if (!keys_) {
      keys_.emplace();
      for (int i = 0; i < lines_.Count(); ++i) keys_->try_emplace(NameKey(LineKey(lines_[i]), caseSensitive_), i);
    }
    auto it = keys_->find(NameKey(key, caseSensitive_));
    return it == keys_->end() ? -1 : it->second;
  }
  void Add(const String& line) {
    int index = lines_.Add(line);
    if (keys_) keys_->try_emplace(NameKey(LineKey(line), caseSensitive_), index);
  }
  // The new line has the same key as the one it replaces.
  void Replace(int index, const String& line) { lines_.SetStrings(index, line); }
  void Delete(int index) {
    lines_.Delete(index);
    keys_.reset();
  }

 private:
  TStringList lines_;
  bool caseSensitive_;
  mutable std::optional<std::unordered_map<String, int>> keys_;
};

KELMAR_PUBLISH(TMemIniFile) {}

TMemIniFile::TMemIniFile(const String& FileName) : TCustomIniFile(FileName) { LoadFile(); }

TMemIniFile::~TMemIniFile() = default;

TMemIniFile::TSection* TMemIniFile::FindSection(const String& Section) const {
  auto it = byName_.find(NameKey(Section, caseSensitive_));
  return it == byName_.end() ? nullptr : it->second;
}

TMemIniFile::TSection& TMemIniFile::AddSection(const String& Section) {
  if (TSection* found = FindSection(Section)) return *found;
  sections_.push_back(std::make_unique<TSection>(Section, caseSensitive_));
  byName_.emplace(NameKey(Section, caseSensitive_), sections_.back().get());
  return *sections_.back();
}

String TMemIniFile::ReadString(const String& Section, const String& Ident, const String& Default) const {
  const TSection* section = FindSection(Section);
  int i = section ? section->IndexOfKey(Ident) : -1;
  return i < 0 ? Default : LineValue(section->Lines()[i]);
}

void TMemIniFile::WriteString(const String& Section, const String& Ident, const String& Value) {
  TSection& section = AddSection(Section);
  String line = Ident + u"=" + Value;
  int i = section.IndexOfKey(Ident);
  if (i >= 0) section.Replace(i, line);
  else section.Add(line);
}

void TMemIniFile::ReadSection(const String& Section, TStrings* Strings) const {
  Strings->BeginUpdate();
  try {
    Strings->Clear();
    if (const TSection* section = FindSection(Section))
      for (int i = 0; i < section->Lines().Count(); ++i) Strings->Add(LineKey(section->Lines()[i]));
  } catch (...) {
    Strings->EndUpdate();
    throw;
  }
  Strings->EndUpdate();
}

void TMemIniFile::ReadSections(TStrings* Strings) const {
  Strings->BeginUpdate();
  try {
    Strings->Clear();
    for (const auto& section : sections_) Strings->Add(section->Name);
  } catch (...) {
    Strings->EndUpdate();
    throw;
  }
  Strings->EndUpdate();
}

void TMemIniFile::ReadSectionValues(const String& Section, TStrings* Strings) const {
  Strings->BeginUpdate();
  try {
    Strings->Clear();
    if (const TSection* section = FindSection(Section)) Strings->AddStrings(&section->Lines());
  } catch (...) {
    Strings->EndUpdate();
    throw;
  }
  Strings->EndUpdate();
}

void TMemIniFile::EraseSection(const String& Section) {
  TSection* section = FindSection(Section);
  if (!section) return;
  byName_.erase(NameKey(Section, caseSensitive_));
  std::erase_if(sections_, [section](const auto& s) { return s.get() == section; });
}

void TMemIniFile::DeleteKey(const String& Section, const String& Ident) {
  TSection* section = FindSection(Section);
  int i = section ? section->IndexOfKey(Ident) : -1;
  if (i >= 0) section->Delete(i);
}

bool TMemIniFile::ValueExists(const String& Section, const String& Ident) const {
  const TSection* section = FindSection(Section);
  return section && section->IndexOfKey(Ident) >= 0;
}

void TMemIniFile::UpdateFile() {
  TStringList list;
  GetStrings(&list);
  if (encoding_ == TEncoding::Default) list.SaveToFile(FileName());
  else list.SaveToFile(FileName(), encoding_);
}

void TMemIniFile::Clear() {
  byName_.clear();
  sections_.clear();
}

void TMemIniFile::GetStrings(TStrings* List) const {
  List->BeginUpdate();
  try {
    List->Clear();
    for (const auto& section : sections_) {
      List->Add(u"[" + section->Name + u"]");
      List->AddStrings(&section->Lines());
      List->Add(String());
    }
  } catch (...) {
    List->EndUpdate();
    throw;
  }
  List->EndUpdate();
}

void TMemIniFile::SetStrings(const TStrings* List) {
  Clear();
  TSection* current = nullptr;  // lines before the first section are ignored
  for (int i = 0; i < List->Count(); ++i) {
    String s = Trim(List->Get(i));
    if (s.IsEmpty() || s[1] == u';') continue;
    if (s.Length() >= 2 && s[1] == u'[' && s[s.Length()] == u']') {
      current = &AddSection(Trim(s.SubString(2, s.Length() - 2)));
    } else if (current) {
      int at = s.Pos(u"=");
      current->Add(at > 0 ? Trim(s.SubString(1, at - 1)) + u"=" + Trim(s.SubString(at + 1, s.Length())) : s);
    }
  }
}

void TMemIniFile::Rename(const String& FileName, bool Reload) {
  SetFileName(FileName);
  if (Reload) LoadFile();
}

void TMemIniFile::SetCaseSensitive(bool Value) {
  if (Value == caseSensitive_) return;
  TStringList list;
  GetStrings(&list);
  caseSensitive_ = Value;
  SetStrings(&list);
}

void TMemIniFile::LoadFile() {
  Clear();
  encoding_ = TEncoding::Default;
  if (FileName().IsEmpty()) return;
  std::error_code error;
  if (!std::filesystem::exists(std::filesystem::path(FileName().ToUtf8()), error)) return;
  TStringList list;
  list.LoadFromFile(FileName());
  encoding_ = list.Encoding();
  SetStrings(&list);
}
