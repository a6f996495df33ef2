#include "platform/rtl/inifiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

#include "platform/rtl/sysutils.h"

namespace {

std::vector<String> Lines(const TStrings& list) {
  std::vector<String> out;
  for (int i = 0; i < list.Count(); ++i) out.push_back(list[i]);
  return out;
}

std::vector<String> V(std::initializer_list<const char16_t*> items) { return {items.begin(), items.end()}; }

// An INI read from text, as the kit reads stored documents.
std::unique_ptr<TMemIniFile> Ini(const String& text) {
  auto ini = std::make_unique<TMemIniFile>();
  TStringList list;
  list.SetText(text);
  ini->SetStrings(&list);
  return ini;
}

std::vector<String> Section(const TMemIniFile& ini, const String& name) {
  TStringList lines;
  ini.ReadSectionValues(name, &lines);
  return Lines(lines);
}

// ---- Parsing rules, one at a time -----------------------------------------------

TEST(MemIniParseTest, LinesAreTrimmedFirst) {
  auto ini = Ini(u"  [s]  \n\t key=value \t\n");
  EXPECT_EQ(ini->ReadString(u"s", u"key", u"?"), u"value");
  EXPECT_EQ(Section(*ini, u"s"), V({u"key=value"}));
}

TEST(MemIniParseTest, BlankAndCommentLinesAreDropped) {
  auto ini = Ini(u"[s]\n\n   \n; comment\n  ;indented=comment\na=1\n#hash=kept\n");
  EXPECT_EQ(Section(*ini, u"s"), V({u"a=1", u"#hash=kept"}));
}

TEST(MemIniParseTest, BracketLineOpensASectionAnywhere) {
  auto ini = Ini(u"[sql]\nselect *\n[where]\nfrom t\n[ spaced ]\nx=1\n[]\ny=2\n");
  EXPECT_EQ(Section(*ini, u"sql"), V({u"select *"}));
  EXPECT_EQ(Section(*ini, u"where"), V({u"from t"}));
  EXPECT_EQ(ini->ReadString(u"spaced", u"x", u""), u"1");
  EXPECT_EQ(ini->ReadString(u"", u"y", u""), u"2");
}

TEST(MemIniParseTest, HalfBracketsAreOrdinaryLines) {
  auto ini = Ini(u"[s]\n[a\nb]\n[\n]\n");
  EXPECT_EQ(Section(*ini, u"s"), V({u"[a", u"b]", u"[", u"]"}));
}

TEST(MemIniParseTest, BlanksAroundTheFirstEqualsAreRemoved) {
  auto ini = Ini(u"[s]\na = b = c\n x\t=\ty \n");
  EXPECT_EQ(Section(*ini, u"s"), V({u"a=b = c", u"x=y"}));
  EXPECT_EQ(ini->ReadString(u"s", u"a", u""), u"b = c");
}

TEST(MemIniParseTest, LinesBeforeTheFirstSectionAreIgnored) {
  auto ini = Ini(u"orphan=1\n[s]\nk=v\n");
  TStringList sections;
  ini->ReadSections(&sections);
  EXPECT_EQ(Lines(sections), V({u"s"}));
  EXPECT_EQ(ini->ReadString(u"", u"orphan", u"none"), u"none");
}

TEST(MemIniParseTest, RepeatedSectionCollectsUnderTheFirstHead) {
  auto ini = Ini(u"[a]\nx=1\n[b]\ny=2\n[A]\nz=3\nx=9\n");
  TStringList sections;
  ini->ReadSections(&sections);
  EXPECT_EQ(Lines(sections), V({u"a", u"b"}));
  EXPECT_EQ(Section(*ini, u"a"), V({u"x=1", u"z=3", u"x=9"}));
  EXPECT_EQ(ini->ReadString(u"a", u"x", u""), u"1");  // the first line of a key counts
}

TEST(MemIniParseTest, LineWithoutEqualsIsAKeyWithAnEmptyValue) {
  auto ini = Ini(u"[s]\n  just a line  \nk=v\n");
  EXPECT_EQ(Section(*ini, u"s"), V({u"just a line", u"k=v"}));
  EXPECT_EQ(ini->ReadString(u"s", u"just a line", u"default"), u"");
  EXPECT_TRUE(ini->ValueExists(u"s", u"JUST A LINE"));
  TStringList keys;
  ini->ReadSection(u"s", &keys);
  EXPECT_EQ(Lines(keys), V({u"just a line", u"k"}));
}

TEST(MemIniParseTest, AnyInputIsReadWithoutHarm) {
  std::string garbage;
  for (int i = 0; i < 4096; ++i) garbage += static_cast<char>((i * 131 + 7) % 256);
  TStringList list;
  list.SetText(DecodeText(garbage, TEncoding::UTF8) + u"\n[s]\n" + String(10 * 1024 * 1024, u'x') + u"=v\n[t");
  TMemIniFile ini(u"");
  ini.SetStrings(&list);
  EXPECT_EQ(ini.ReadString(u"s", String(10 * 1024 * 1024, u'X'), u""), u"v");
  EXPECT_EQ(ini.ReadString(u"missing", u"k", u"d"), u"d");
  EXPECT_FALSE(ini.SectionExists(u"missing"));
}

// ---- Reading and writing values ------------------------------------------------------

TEST(MemIniValuesTest, TypedReadsFallBackToTheDefault) {
  auto ini = Ini(u"[n]\ni=42\nh=0x1F\nd=$10\nbad=12a\nt=1\nf=0\ntrue=true\nx=2.5\ne=\n");
  EXPECT_EQ(ini->ReadInteger(u"n", u"i", 0), 42);
  EXPECT_EQ(ini->ReadInteger(u"n", u"h", 0), 31);
  EXPECT_EQ(ini->ReadInteger(u"n", u"d", 0), 16);
  EXPECT_EQ(ini->ReadInteger(u"n", u"bad", -1), -1);
  EXPECT_EQ(ini->ReadInteger(u"n", u"missing", 7), 7);
  EXPECT_TRUE(ini->ReadBool(u"n", u"t", false));
  EXPECT_FALSE(ini->ReadBool(u"n", u"f", true));
  EXPECT_TRUE(ini->ReadBool(u"n", u"true", true));  // not an integer: the default
  EXPECT_FALSE(ini->ReadBool(u"n", u"true", false));
  EXPECT_DOUBLE_EQ(ini->ReadFloat(u"n", u"x", 0), 2.5);
  EXPECT_DOUBLE_EQ(ini->ReadFloat(u"n", u"bad", 1.5), 1.5);
  EXPECT_EQ(ini->ReadString(u"n", u"e", u"d"), u"");  // present but empty
}

TEST(MemIniValuesTest, WritesReplaceInPlaceOrAppend) {
  auto ini = Ini(u"[s]\na=1\nb=2\n");
  ini->WriteString(u"S", u"A", u"x");
  ini->WriteInteger(u"s", u"c", -5);
  ini->WriteBool(u"s", u"on", true);
  ini->WriteBool(u"s", u"off", false);
  ini->WriteString(u"s", u"empty", u"");
  ini->WriteFloat(u"new", u"f", 0.25);
  EXPECT_EQ(Section(*ini, u"s"), V({u"A=x", u"b=2", u"c=-5", u"on=1", u"off=0", u"empty="}));
  EXPECT_EQ(ini->ReadString(u"new", u"f", u""), u"0.25");
  EXPECT_TRUE(ini->ValueExists(u"s", u"empty"));
}

TEST(MemIniValuesTest, CaseSensitivityOfSectionsAndKeys) {
  auto ini = Ini(u"[Sec]\nKey=1\n[sec]\nkey=2\n");
  EXPECT_EQ(ini->ReadString(u"SEC", u"KEY", u""), u"1");
  ini->SetCaseSensitive(true);
  EXPECT_EQ(ini->ReadString(u"sec", u"key", u""), u"");  // merged under "Sec" when read
  EXPECT_EQ(ini->ReadString(u"Sec", u"key", u""), u"2");
  EXPECT_EQ(ini->ReadString(u"Sec", u"KEY", u"d"), u"d");
  ini->WriteString(u"sec", u"k", u"v");
  TStringList sections;
  ini->ReadSections(&sections);
  EXPECT_EQ(Lines(sections), V({u"Sec", u"sec"}));
}

TEST(MemIniValuesTest, EraseDeleteExistsAndClear) {
  auto ini = Ini(u"[a]\nx=1\ny=2\n[empty]\n[b]\nz=3\n");
  EXPECT_TRUE(ini->SectionExists(u"A"));
  EXPECT_FALSE(ini->SectionExists(u"empty"));  // a section exists through its keys
  ini->DeleteKey(u"a", u"X");
  EXPECT_EQ(Section(*ini, u"a"), V({u"y=2"}));
  EXPECT_FALSE(ini->ValueExists(u"a", u"x"));
  ini->DeleteKey(u"a", u"nothing");
  ini->DeleteKey(u"nothing", u"y");
  ini->EraseSection(u"a");
  EXPECT_EQ(ini->ReadString(u"a", u"y", u"gone"), u"gone");
  ini->WriteString(u"a", u"n", u"1");  // a new section goes to the end
  TStringList sections;
  ini->ReadSections(&sections);
  EXPECT_EQ(Lines(sections), V({u"empty", u"b", u"a"}));
  ini->Clear();
  ini->ReadSections(&sections);
  EXPECT_EQ(sections.Count(), 0);
}

TEST(MemIniValuesTest, ReadersClearTheirTargetFirst) {
  auto ini = Ini(u"[s]\nk=v\n");
  TStringList target;
  target.Add(u"stale");
  ini->ReadSection(u"s", &target);
  EXPECT_EQ(Lines(target), V({u"k"}));
  target.Add(u"stale");
  ini->ReadSectionValues(u"missing", &target);
  EXPECT_EQ(target.Count(), 0);
}

TEST(MemIniValuesTest, ManyKeysStayConsistentAfterDeletes) {
  TMemIniFile ini;
  for (int i = 0; i < 500; ++i) ini.WriteInteger(u"s", u"k" + IntToStr(i), i);
  ini.DeleteKey(u"s", u"k0");
  ini.DeleteKey(u"s", u"k250");
  EXPECT_EQ(ini.ReadInteger(u"s", u"k1", -1), 1);
  EXPECT_EQ(ini.ReadInteger(u"s", u"k499", -1), 499);
  EXPECT_EQ(ini.ReadInteger(u"s", u"k250", -1), -1);
  ini.WriteInteger(u"s", u"k499", 0);
  EXPECT_EQ(ini.ReadInteger(u"s", u"k499", -1), 0);
}

// ---- Strings and files --------------------------------------------------------------

TEST(MemIniFileTest, GetStringsWritesHeadsLinesAndABlankLine) {
  auto ini = Ini(u"junk\n[a]\nx = 1\n\n[b]\n;c\ny\n");
  TStringList out;
  ini->GetStrings(&out);
  EXPECT_EQ(Lines(out), V({u"[a]", u"x=1", u"", u"[b]", u"y", u""}));
}

class MemIniDiskTest : public ::testing::Test {
 protected:
  void TearDown() override {
    SetSystemCodePage(65001);
    std::filesystem::remove(path_);
  }
  String Name() const { return String(path_.string()); }
  std::string ReadBytes() const {
    std::ifstream in(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("kelmar_ini_" + std::to_string(getpid()) + ".ini");
};

TEST_F(MemIniDiskTest, MissingFileIsEmptyAndUpdateFileWritesIt) {
  TMemIniFile ini(Name());
  TStringList sections;
  ini.ReadSections(&sections);
  EXPECT_EQ(sections.Count(), 0);
  ini.WriteString(u"Сервер", u"Имя", u"București");
  ini.UpdateFile();
  TMemIniFile again(Name());
  EXPECT_EQ(again.ReadString(u"сервер", u"имя", u""), u"București");
}

TEST_F(MemIniDiskTest, Windows1251FileKeepsItsEncoding) {
  SetSystemCodePage(1251);
  {
    TStringList text;
    text.SetText(u"[Раздел]\nключ = значение\n");
    text.SaveToFile(Name());
  }
  TMemIniFile ini(Name());
  EXPECT_EQ(ini.ReadString(u"раздел", u"КЛЮЧ", u""), u"значение");
  ini.WriteString(u"Раздел", u"новый", u"ещё");
  ini.UpdateFile();
  std::string bytes = ReadBytes();
  EXPECT_EQ(bytes.substr(0, 3), "[\xD0\xE0");  // still one byte a letter, no mark
  TMemIniFile again(Name());
  EXPECT_EQ(again.ReadString(u"Раздел", u"новый", u""), u"ещё");
  // Romanian letters do not fit windows-1251: written as UTF-8, none lost.
  again.WriteString(u"ro", u"oraș", u"Timișoara");
  again.UpdateFile();
  TMemIniFile third(Name());
  EXPECT_EQ(third.ReadString(u"ro", u"oraș", u""), u"Timișoara");
  EXPECT_EQ(third.ReadString(u"Раздел", u"ключ", u""), u"значение");
}

TEST_F(MemIniDiskTest, RenameReloadsAndUnwritableFileRaises) {
  {
    TMemIniFile writer(Name());
    writer.WriteString(u"s", u"k", u"v");
    writer.UpdateFile();
  }
  TMemIniFile ini;
  ini.Rename(Name(), true);
  EXPECT_EQ(ini.ReadString(u"s", u"k", u""), u"v");
  ini.Rename(u"/nonexistent-dir/x.ini", false);
  EXPECT_EQ(ini.ReadString(u"s", u"k", u""), u"v");
  EXPECT_THROW(ini.UpdateFile(), EFCreateError);
}

}  // namespace
