#include "platform/rtl/stringlist.h"

#include <gtest/gtest.h>

#include <chrono>
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

TStringList* Filled(TStringList& list, std::initializer_list<const char16_t*> items) {
  for (const char16_t* s : items) list.Add(s);
  return &list;
}

// ---- Text ------------------------------------------------------------------

TEST(StringListTextTest, SplitsAtCrLfAndCrlfMixed) {
  TStringList list;
  list.SetText(u"a\r\nb\nc\rd");
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"c", u"d"}));
  list.SetText(u"a\n\rb");  // LF then CR: two breaks
  EXPECT_EQ(Lines(list), V({u"a", u"", u"b"}));
  list.SetText(u"\n\nx");
  EXPECT_EQ(Lines(list), V({u"", u"", u"x"}));
}

TEST(StringListTextTest, TrailingBreakAddsNoEmptyLine) {
  TStringList list;
  list.SetText(u"a\r\nb\r\n");
  EXPECT_EQ(Lines(list), V({u"a", u"b"}));
  list.SetText(u"a\n\n");
  EXPECT_EQ(Lines(list), V({u"a", u""}));
  list.SetText(u"");
  EXPECT_EQ(list.Count(), 0);
  list.SetText(u"\n");
  EXPECT_EQ(Lines(list), V({u""}));
}

TEST(StringListTextTest, JoinsWithLineBreakAfterEveryLine) {
  TStringList list;
  Filled(list, {u"a", u"", u"b"});
  EXPECT_EQ(list.Text(), u"a\n\nb\n");
  list.SetLineBreak(u"\r\n");
  EXPECT_EQ(list.Text(), u"a\r\n\r\nb\r\n");
  list.SetTrailingLineBreak(false);
  EXPECT_EQ(list.Text(), u"a\r\n\r\nb");
  list.Clear();
  EXPECT_EQ(list.Text(), u"");
}

TEST(StringListTextTest, CustomLineBreakSplitsOnlyThere) {
  TStringList list;
  list.SetLineBreak(u"||");
  list.SetText(u"a||b\nc||");
  EXPECT_EQ(Lines(list), V({u"a", u"b\nc"}));
  EXPECT_EQ(list.Text(), u"a||b\nc||");
}

TEST(StringListTextTest, EmbeddedNulDoesNotCutTheText) {
  TStringList list;
  list.SetText(String(u"a\0b\nc", 5));
  ASSERT_EQ(list.Count(), 2);
  EXPECT_EQ(list[0].Length(), 3);
}

// ---- name=value ------------------------------------------------------------

TEST(StringListValuesTest, FirstMatchWinsCaseInsensitively) {
  TStringList list;
  Filled(list, {u"x", u"Key=one", u"key=two", u"other=3"});
  EXPECT_EQ(list.Values(u"KEY"), u"one");
  EXPECT_EQ(list.IndexOfName(u"key"), 1);
  EXPECT_EQ(list.Values(u"missing"), u"");
  EXPECT_EQ(list.Values(u"x"), u"");  // a line without "=" has no name
  EXPECT_EQ(list.IndexOfName(u"x"), -1);
  list.SetCaseSensitive(true);
  EXPECT_EQ(list.Values(u"key"), u"two");
  EXPECT_EQ(list.Values(u"KEY"), u"");
}

TEST(StringListValuesTest, SetValuesReplacesAddsAndDeletesOnEmpty) {
  TStringList list;
  Filled(list, {u"a=1", u"b=2", u"a=3"});
  list.SetValues(u"A", u"9");
  EXPECT_EQ(Lines(list), V({u"A=9", u"b=2", u"a=3"}));
  list.SetValues(u"c", u"x=y");
  EXPECT_EQ(list[3], u"c=x=y");
  EXPECT_EQ(list.Values(u"c"), u"x=y");  // the value runs past later separators
  list.SetValues(u"a", u"");
  EXPECT_EQ(Lines(list), V({u"b=2", u"a=3", u"c=x=y"}));  // only the first line goes
  list.SetValues(u"nothing", u"");
  EXPECT_EQ(list.Count(), 3);
}

TEST(StringListValuesTest, NamesAndValueFromIndex) {
  TStringList list;
  Filled(list, {u"name=value", u"plain", u"=v", u"n="});
  EXPECT_EQ(list.Names(0), u"name");
  EXPECT_EQ(list.ValueFromIndex(0), u"value");
  EXPECT_EQ(list.Names(1), u"");
  EXPECT_EQ(list.ValueFromIndex(1), u"");
  EXPECT_EQ(list.Names(2), u"");
  EXPECT_EQ(list.ValueFromIndex(2), u"v");
  EXPECT_EQ(list.ValueFromIndex(3), u"");
  list.SetValueFromIndex(0, u"other");
  EXPECT_EQ(list[0], u"name=other");
  list.SetValueFromIndex(0, u"");
  EXPECT_EQ(list[0], u"plain");
}

TEST(StringListValuesTest, NameValueSeparatorIsHonoured) {
  TStringList list;
  list.SetNameValueSeparator(u':');
  Filled(list, {u"a=b:c", u"host:example"});
  EXPECT_EQ(list.Values(u"host"), u"example");
  EXPECT_EQ(list.Values(u"a=b"), u"c");
  list.SetValues(u"port", u"80");
  EXPECT_EQ(list[2], u"port:80");
}

// Asks enough times for a long list to build its name index, and checks
// that the scan and the index agree.
String Looked(const TStringList& list, const String& name) {
  String first = list.Values(name);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(list.Values(name), first) << name;
  return first;
}

int LookedIndex(const TStringList& list, const String& name) {
  int first = list.IndexOfName(name);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(list.IndexOfName(name), first) << name;
  return first;
}

TEST(StringListValuesTest, LongListLookupsFollowEveryKindOfChange) {
  // Past the length where lookups use an index: it must never go stale.
  TStringList list;
  for (int i = 0; i < 200; ++i) list.Add(u"k" + IntToStr(i) + u"=" + IntToStr(i));
  EXPECT_EQ(Looked(list, u"K150"), u"150");
  list.Add(u"k150=dup");
  EXPECT_EQ(Looked(list, u"k150"), u"150");
  list.SetValues(u"new", u"n");
  EXPECT_EQ(Looked(list, u"NEW"), u"n");
  list.SetValues(u"k150", u"changed");
  EXPECT_EQ(Looked(list, u"k150"), u"changed");
  list.SetStrings(5, u"renamed=5");
  EXPECT_EQ(Looked(list, u"k5"), u"");
  EXPECT_EQ(Looked(list, u"renamed"), u"5");
  list.Delete(0);
  EXPECT_EQ(LookedIndex(list, u"k1"), 0);
  list.Insert(0, u"k1=first");
  EXPECT_EQ(Looked(list, u"k1"), u"first");
  list.Exchange(0, 1);
  EXPECT_EQ(Looked(list, u"k1"), u"1");
  list.Move(0, 10);
  EXPECT_EQ(Looked(list, u"k1"), u"first");
  EXPECT_EQ(LookedIndex(list, u"k2"), 1);
  list.SetValues(u"k150", u"");
  EXPECT_EQ(Looked(list, u"k150"), u"dup");
  list.SetNameValueSeparator(u':');
  EXPECT_EQ(Looked(list, u"k2"), u"");
  list.SetNameValueSeparator(u'=');
  list.SetCaseSensitive(true);
  EXPECT_EQ(Looked(list, u"K2"), u"");
  EXPECT_EQ(Looked(list, u"k2"), u"2");
  list.Clear();
  EXPECT_EQ(LookedIndex(list, u"k2"), -1);
}

TEST(StringListValuesTest, ValuesInLoopsStayFast) {
  TStringList list;
  for (int i = 0; i < 5000; ++i) list.Add(u"name" + IntToStr(i) + u"=" + IntToStr(i));
  auto start = std::chrono::steady_clock::now();
  long sum = 0;
  for (int round = 0; round < 4; ++round)
    for (int i = 0; i < 5000; ++i) sum += list.Values(u"NAME" + IntToStr(i)).ToInt();
  auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(sum, 4L * 4999 * 5000 / 2);
  // A scan per lookup would be 100 million comparisons; generous for
  // sanitizer builds on a shared machine.
  EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count(), 3000);
}

// ---- CommaText and DelimitedText --------------------------------------------

TEST(StringListCommaTextTest, WritingQuotesWhatNeedsIt) {
  TStringList list;
  Filled(list, {u"plain", u"two words", u"a,b", u"say \"hi\"", u"", u"tab\there"});
  EXPECT_EQ(list.CommaText(), u"plain,\"two words\",\"a,b\",\"say \"\"hi\"\"\",,\"tab\there\"");
  list.Clear();
  list.Add(u"");
  EXPECT_EQ(list.CommaText(), u"\"\"");  // a single empty item
  list.Clear();
  EXPECT_EQ(list.CommaText(), u"");
}

TEST(StringListCommaTextTest, ReadingSplitsAtCommasAndBlanks) {
  TStringList list;
  list.SetCommaText(u"a b,c");
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"c"}));
  list.SetCommaText(u"  a ,  b  ");
  EXPECT_EQ(Lines(list), V({u"a", u"b"}));
  list.SetCommaText(u"a,,b");
  EXPECT_EQ(Lines(list), V({u"a", u"", u"b"}));
  list.SetCommaText(u"");
  EXPECT_EQ(list.Count(), 0);
  list.SetCommaText(u"\"\"");
  EXPECT_EQ(Lines(list), V({u""}));
}

TEST(StringListCommaTextTest, TrailingDelimiterAddsAnEmptyItemOnlyAtTheVeryEnd) {
  TStringList list;
  list.SetCommaText(u"a,");
  EXPECT_EQ(Lines(list), V({u"a", u""}));
  list.SetCommaText(u"a, ");  // a blank after the comma hides it
  EXPECT_EQ(Lines(list), V({u"a"}));
  list.SetCommaText(u",");
  EXPECT_EQ(Lines(list), V({u"", u""}));
}

TEST(StringListCommaTextTest, QuotedItemsHoldDelimitersAndDoubledQuotes) {
  TStringList list;
  list.SetCommaText(u"\"a,b\",\"c d\",\"say \"\"hi\"\"\"");
  EXPECT_EQ(Lines(list), V({u"a,b", u"c d", u"say \"hi\""}));
  list.SetCommaText(u"\"ab\"cd,e");  // text after a closing quote is a new item
  EXPECT_EQ(Lines(list), V({u"ab", u"cd", u"e"}));
  list.SetCommaText(u"x,\"open ended");
  EXPECT_EQ(Lines(list), V({u"x", u"open ended"}));
}

TEST(StringListCommaTextTest, RoundTripKeepsEveryItem) {
  TStringList a, b;
  Filled(a, {u"", u" lead", u"trail ", u"\"", u",", u"x\ny", u"ș ё", u""});
  b.SetCommaText(a.CommaText());
  EXPECT_EQ(Lines(b), Lines(a));
}

TEST(StringListDelimitedTextTest, StrictDelimiterKeepsBlanks) {
  TStringList list;
  list.SetDelimiter(u';');
  list.SetQuoteChar(u'\'');
  list.SetDelimitedText(u"a b;'c;d';e");
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"c;d", u"e"}));
  list.SetStrictDelimiter(true);
  list.SetDelimitedText(u" a b ;'c;d'; e");
  EXPECT_EQ(Lines(list), V({u" a b ", u"c;d", u" e"}));
  list.Clear();
  Filled(list, {u"a b", u"c;d", u"it's"});
  EXPECT_EQ(list.DelimitedText(), u"a b;'c;d';'it''s'");
  list.SetStrictDelimiter(false);
  EXPECT_EQ(list.DelimitedText(), u"'a b';'c;d';'it''s'");
}

TEST(StringListDelimitedTextTest, CommaTextIgnoresTheListsOwnSettings) {
  TStringList list;
  list.SetDelimiter(u';');
  list.SetStrictDelimiter(true);
  list.SetCommaText(u"a b;c,d");
  EXPECT_EQ(Lines(list), V({u"a", u"b;c", u"d"}));
  EXPECT_EQ(list.CommaText(), u"a,b;c,d");
  EXPECT_EQ(list.Delimiter(), u';');
}

// ---- Editing, errors, notifications -----------------------------------------

TEST(StringListEditTest, IndexOutOfBoundsNamesTheIndex) {
  TStringList list;
  Filled(list, {u"a", u"b"});
  try {
    list.Strings(5);
    FAIL();
  } catch (const EStringListError& e) {
    EXPECT_EQ(e.Message, u"List index out of bounds (5)");
  }
  EXPECT_THROW(list.Delete(2), EStringListError);
  EXPECT_THROW(list.SetStrings(-1, u"x"), EStringListError);
  EXPECT_THROW(list.Insert(3, u"x"), EStringListError);
  EXPECT_THROW(list.Objects(2), EStringListError);
  EXPECT_THROW(list.Exchange(0, 2), EStringListError);
  EXPECT_THROW(list.Move(0, 2), EStringListError);
  list.Insert(2, u"end");  // Count itself is a valid place to insert
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"end"}));
}

TEST(StringListEditTest, InsertDeleteExchangeMove) {
  TStringList list;
  EXPECT_EQ(list.Add(u"a"), 0);
  EXPECT_EQ(list.Add(u"b"), 1);
  list.Append(u"c");
  list.Insert(0, u"z");
  EXPECT_EQ(Lines(list), V({u"z", u"a", u"b", u"c"}));
  list.Exchange(0, 3);
  EXPECT_EQ(Lines(list), V({u"c", u"a", u"b", u"z"}));
  list.Move(0, 2);
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"c", u"z"}));
  list.Move(3, 0);
  EXPECT_EQ(Lines(list), V({u"z", u"a", u"b", u"c"}));
  list.Delete(1);
  EXPECT_EQ(Lines(list), V({u"z", u"b", u"c"}));
  EXPECT_EQ(list.IndexOf(u"B"), 1);
  EXPECT_EQ(list.IndexOf(u"q"), -1);
}

TEST(StringListEditTest, ObjectsTravelWithTheirLines) {
  TObject a, b;
  TStringList list;
  list.AddObject(u"a", &a);
  list.InsertObject(0, u"b", &b);
  list.Add(u"none");
  EXPECT_EQ(list.Objects(0), &b);
  EXPECT_EQ(list.IndexOfObject(&a), 1);
  list.Move(0, 2);
  EXPECT_EQ(list.Objects(2), &b);
  list.Exchange(0, 2);
  EXPECT_EQ(list.Objects(0), &b);
  list.SetStrings(0, u"renamed");
  EXPECT_EQ(list.Objects(0), &b);
  list.SetObjects(0, nullptr);
  EXPECT_EQ(list.IndexOfObject(&b), -1);
}

struct Counted : TObject {
  explicit Counted(int& alive) : alive_(alive) { ++alive_; }
  ~Counted() override { --alive_; }
  int& alive_;
};

TEST(StringListEditTest, OwnsObjectsDeletesThemWithTheirLinesOnly) {
  int alive = 0;
  {
    TStringList list(true);
    list.AddObject(u"a", new Counted(alive));
    list.AddObject(u"b", new Counted(alive));
    list.AddObject(u"c", new Counted(alive));
    list.AddObject(u"d", new Counted(alive));
    list.Move(0, 3);  // moving must not delete
    list.Exchange(0, 1);
    EXPECT_EQ(alive, 4);
    list.Delete(0);
    EXPECT_EQ(alive, 3);
    list.Clear();
    EXPECT_EQ(alive, 0);
    list.AddObject(u"e", new Counted(alive));
  }
  EXPECT_EQ(alive, 0);
  Counted kept(alive);
  {
    TStringList list;
    list.AddObject(u"k", &kept);
  }
  EXPECT_EQ(alive, 1);
}

TEST(StringListNotifyTest, EveryChangeTellsOnceOutsideUpdates) {
  TStringList list;
  int changes = 0, changing = 0;
  list.OnChange = [&](TObject* sender) {
    EXPECT_EQ(sender, &list);
    ++changes;
  };
  list.OnChanging = [&](TObject*) { ++changing; };
  list.Add(u"a");
  list.Add(u"b");
  list.SetStrings(0, u"c");
  list.Delete(1);
  list.Clear();
  list.Clear();  // nothing to clear, nothing to tell
  EXPECT_EQ(changes, 5);
  EXPECT_EQ(changing, 5);
}

TEST(StringListNotifyTest, UpdateBracketsTellOnceAtTheEndWhenSomethingChanged) {
  TStringList list;
  int changes = 0, changing = 0;
  list.OnChange = [&](TObject*) { ++changes; };
  list.OnChanging = [&](TObject*) { ++changing; };
  list.BeginUpdate();
  list.BeginUpdate();
  list.Add(u"a");
  list.Add(u"b");
  list.EndUpdate();
  EXPECT_EQ(changes, 0);
  list.Delete(0);
  list.EndUpdate();
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(changing, 1);
  list.BeginUpdate();
  list.EndUpdate();
  EXPECT_EQ(changes, 1);
  list.EndUpdate();  // unbalanced: ignored
  list.SetText(u"x\ny\nz");
  EXPECT_EQ(changes, 2);
  list.SetCommaText(u"p,q");
  EXPECT_EQ(changes, 3);
}

// ---- Sorted lists --------------------------------------------------------------

TEST(StringListSortedTest, AddInsertsInOrderAndFindFindsTheFirst) {
  TStringList list;
  list.SetSorted(true);
  list.SetDuplicates(dupAccept);
  for (const char16_t* s : {u"m", u"b", u"x", u"B", u"a"}) list.Add(s);
  EXPECT_EQ(list[0], u"a");
  EXPECT_EQ(list[3], u"m");
  EXPECT_EQ(list[4], u"x");
  int index = -1;
  EXPECT_TRUE(list.Find(u"b", index));
  EXPECT_EQ(index, 1);  // the first of "b" and "B"
  EXPECT_FALSE(list.Find(u"c", index));
  EXPECT_EQ(index, 3);
  EXPECT_EQ(list.IndexOf(u"X"), 4);
  EXPECT_EQ(list.IndexOf(u"zz"), -1);
}

TEST(StringListSortedTest, DuplicatesIgnoreAcceptOrError) {
  TStringList list;
  list.SetSorted(true);
  EXPECT_EQ(list.Duplicates(), dupIgnore);
  list.Add(u"b");
  list.Add(u"a");
  EXPECT_EQ(list.Add(u"B"), 1);  // ignored; the index of the one there
  EXPECT_EQ(Lines(list), V({u"a", u"b"}));
  list.SetDuplicates(dupError);
  try {
    list.Add(u"a");
    FAIL();
  } catch (const EStringListError& e) {
    EXPECT_EQ(e.Message, u"String list does not allow duplicates");
  }
  EXPECT_EQ(list.Count(), 2);
  list.SetCaseSensitive(true);
  EXPECT_NO_THROW(list.Add(u"A"));
  EXPECT_EQ(Lines(list), V({u"A", u"a", u"b"}));
}

TEST(StringListSortedTest, UnsortedListsKeepDuplicatesWhateverTheSetting) {
  TStringList list;
  list.SetDuplicates(dupError);
  list.Add(u"a");
  EXPECT_NO_THROW(list.Add(u"a"));
  EXPECT_EQ(list.Count(), 2);
}

TEST(StringListSortedTest, PositionalEditsAreRefusedAndRewritesMove) {
  TStringList list;
  Filled(list, {u"c", u"a", u"b"});
  list.SetSorted(true);
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"c"}));
  EXPECT_THROW(list.Insert(0, u"z"), EStringListError);
  EXPECT_THROW(list.Move(0, 1), EStringListError);
  list.SetStrings(0, u"d");
  EXPECT_EQ(Lines(list), V({u"b", u"c", u"d"}));
  list.SetValues(u"a", u"1");  // a new name goes to its place
  EXPECT_EQ(list[0], u"a=1");
}

TEST(StringListSortedTest, SortAndCustomSortAreStable) {
  TStringList list;
  Filled(list, {u"b2", u"a1", u"B1", u"a0"});
  list.CustomSort([](TStringList* l, int i, int j) { return CompareText(l->Strings(i).SubString(1, 1), l->Strings(j).SubString(1, 1)); });
  EXPECT_EQ(Lines(list), V({u"a1", u"a0", u"b2", u"B1"}));
  list.Sort();
  EXPECT_EQ(Lines(list), V({u"a0", u"a1", u"B1", u"b2"}));
  list.SetSorted(true);
  list.SetCaseSensitive(true);  // a sorted list sorts again by the new rule
  EXPECT_EQ(Lines(list), V({u"B1", u"a0", u"a1", u"b2"}));
}

// ---- Assign, AddStrings, Equals, published properties ----------------------------

TEST(StringListAssignTest, AssignCopiesLinesObjectsAndTextSettings) {
  TObject o;
  TStringList source, target;
  source.AddObject(u"a", &o);
  source.Add(u"b");
  source.SetDelimiter(u';');
  target.Add(u"old");
  int changes = 0;
  target.OnChange = [&](TObject*) { ++changes; };
  target.Assign(&source);
  EXPECT_EQ(Lines(target), V({u"a", u"b"}));
  EXPECT_EQ(target.Objects(0), &o);
  EXPECT_EQ(target.Delimiter(), u';');
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(target.Equals(&source));
  target.SetStrings(1, u"B");
  EXPECT_FALSE(target.Equals(&source));
  target.Assign(&target);
  EXPECT_EQ(target.Count(), 2);
  TPersistent other;
  EXPECT_THROW(target.Assign(&other), EConvertError);
}

TEST(StringListAssignTest, AddStringsMayAddTheListToItself) {
  TStringList list;
  Filled(list, {u"a", u"b"});
  list.AddStrings(&list);
  EXPECT_EQ(Lines(list), V({u"a", u"b", u"a", u"b"}));
}

TEST(StringListAssignTest, PublishedPropertiesWorkByName) {
  TStringList list;
  SetPropString(&list, u"CommaText", u"x,\"y z\"");
  EXPECT_EQ(Lines(list), V({u"x", u"y z"}));
  EXPECT_EQ(GetPropString(&list, u"Text"), u"x\ny z\n");
  EXPECT_EQ(GetPropInteger(&list, u"Count"), 2);
  SetPropBool(&list, u"Sorted", true);
  EXPECT_TRUE(list.Sorted());
  SetPropEnum(&list, u"Duplicates", dupError);
  EXPECT_EQ(list.Duplicates(), dupError);
}

// ---- Files and streams -----------------------------------------------------------

class StringListFileTest : public ::testing::Test {
 protected:
  void TearDown() override {
    SetSystemCodePage(65001);
    std::filesystem::remove(path_);
  }
  String Path() const { return String(path_.string()); }
  std::string ReadBytes() const {
    std::ifstream in(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  void WriteBytes(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }

  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("kelmar_stringlist_" + std::to_string(getpid()) + ".txt");
};

const String kCyrillic = u"Привет, мир";
const String kRomanian = u"Științe și țară, în România";

TEST_F(StringListFileTest, Utf8SystemCodePageKeepsEveryCharacter) {
  SetSystemCodePage(65001);
  TStringList out, in;
  Filled(out, {kCyrillic.c_str(), kRomanian.c_str()});
  out.SaveToFile(Path());
  EXPECT_EQ(ReadBytes(), (kCyrillic + u"\n" + kRomanian + u"\n").ToUtf8());  // no mark for the system code page
  in.LoadFromFile(Path());
  EXPECT_EQ(Lines(in), Lines(out));
}

TEST_F(StringListFileTest, Cp1251FilesRoundTripCyrillic) {
  SetSystemCodePage(1251);
  TStringList out, in;
  out.Add(kCyrillic);
  out.SaveToFile(Path());
  std::string bytes = ReadBytes();
  EXPECT_EQ(bytes.size(), static_cast<size_t>(kCyrillic.Length() + 1));  // one byte a character
  EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 0xCF);                  // "П" in windows-1251
  in.LoadFromFile(Path());
  EXPECT_EQ(in[0], kCyrillic);
  EXPECT_EQ(in.Encoding(), TEncoding::Default);
}

TEST_F(StringListFileTest, TextTheCodePageCannotHoldIsWrittenAsUtf8) {
  SetSystemCodePage(1251);
  TStringList out, in;
  Filled(out, {kCyrillic.c_str(), kRomanian.c_str()});
  out.SaveToFile(Path());
  EXPECT_EQ(ReadBytes().substr(0, 3), "\xEF\xBB\xBF");
  in.LoadFromFile(Path());
  EXPECT_EQ(Lines(in), Lines(out));
  EXPECT_EQ(in.Encoding(), TEncoding::UTF8);
}

TEST_F(StringListFileTest, ByteOrderMarksAreDetectedAndKept) {
  SetSystemCodePage(1251);
  for (TEncoding e : {TEncoding::UTF8, TEncoding::Unicode, TEncoding::BigEndianUnicode}) {
    TStringList out, in;
    Filled(out, {kRomanian.c_str(), u"𐐀 beyond the BMP"});
    out.SaveToFile(Path(), e);
    in.LoadFromFile(Path());
    EXPECT_EQ(Lines(in), Lines(out));
    EXPECT_EQ(in.Encoding(), e);
    std::string first = ReadBytes();
    in.SaveToFile(Path());  // written back in the encoding it was read in
    EXPECT_EQ(ReadBytes(), first);
  }
}

TEST_F(StringListFileTest, ToldEncodingAndMissingMarkAndOddBytes) {
  SetSystemCodePage(1252);
  WriteBytes("caf\xC3\xA9\r\nx");
  TStringList list;
  list.LoadFromFile(Path());
  EXPECT_EQ(list[0], u"cafÃ©");  // 8-bit text in the system code page
  list.LoadFromFile(Path(), TEncoding::UTF8);
  EXPECT_EQ(Lines(list), V({u"café", u"x"}));
  WriteBytes(std::string("\xFF\xFE" "a\0b", 5));
  list.LoadFromFile(Path());
  EXPECT_EQ(list[0], u"a\uFFFD");  // a cut UTF-16 unit is replaced, not read past
}

TEST_F(StringListFileTest, StreamsLoadFromThePositionAndMissingFilesRaise) {
  TStringStream stream(u"skip\nline1\nline2");
  stream.SetPosition(5);
  TStringList list;
  list.LoadFromStream(&stream);
  EXPECT_EQ(Lines(list), V({u"line1", u"line2"}));
  TMemoryStream out;
  list.SaveToStream(&out);
  EXPECT_EQ(out.Size(), 12);
  EXPECT_THROW(list.LoadFromFile(u"/nonexistent/dir/file.txt"), EFOpenError);
  EXPECT_EQ(list.Count(), 2);  // a failed load leaves the lines
}

}  // namespace
