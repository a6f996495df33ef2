#include "platform/rtl/filer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "platform/rtl/collection.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/variant.h"

namespace {

enum TStreamShape { shNone, shCircle, shSquare };
enum TStreamOption { soA, soB, soC };

}  // namespace

KELMAR_ENUM(TStreamShape, u"shNone", u"shCircle", u"shSquare");
KELMAR_ENUM(TStreamOption, u"soA", u"soB", u"soC");

namespace {

// A sub-object written as "Font.Size" and so on.
class TStreamFont : public TPersistent {
  KELMAR_CLASS(TStreamFont, TPersistent)
 public:
  int Size = 10;
  String Face;
  void Assign(TPersistent* source) override {
    auto* other = dynamic_cast<TStreamFont*>(source);
    if (!other) return TPersistent::Assign(source);
    Size = other->Size;
    Face = other->Face;
  }
};

class TStreamItem : public TCollectionItem {
  KELMAR_CLASS(TStreamItem, TCollectionItem)
 public:
  using TCollectionItem::TCollectionItem;
  String Caption;
  int Width = 64;
  TComponent* Peer = nullptr;
};

class TStreamWidget : public TComponent {
  KELMAR_CLASS(TStreamWidget, TComponent)
 public:
  explicit TStreamWidget(TComponent* owner) : TComponent(owner), items_(this) {}

  String Caption() const { return caption_; }
  void SetCaption(const String& v) {
    caption_ = v;
    captionSetWhileReading = ComponentState().Contains(csReading);
  }
  TStreamFont* Font() const { return &font_; }
  void SetFont(TStreamFont* v) { font_.Assign(v); }
  TTypedCollection<TStreamItem, TOwnedCollection>* Items() const { return &items_; }
  void SetItems(TTypedCollection<TStreamItem, TOwnedCollection>* v) { items_.Assign(v); }
  TStringList* Lines() const { return &lines_; }
  void SetLines(TStringList* v) { lines_.Assign(v); }
  int Fixed() const { return 3; }

  void Loaded() override {
    loadedWhileLoading = ComponentState().Contains(csLoading);
    readingAtLoaded = ComponentState().Contains(csReading);
    ++loadedCount;
    TComponent::Loaded();
  }

  int Count = 0;
  int64_t Big = 0;
  double Ratio = 0;
  bool Visible = true;
  TStreamShape Shape = shNone;
  Set<TStreamOption> Options;
  WideChar Letter = 0;
  Variant Value;
  TComponent* Peer = nullptr;
  TNotifyEvent OnClick;

  bool captionSetWhileReading = false;
  bool loadedWhileLoading = false;
  bool readingAtLoaded = true;
  int loadedCount = 0;

 private:
  String caption_;
  mutable TStreamFont font_;
  mutable TTypedCollection<TStreamItem, TOwnedCollection> items_;
  mutable TStringList lines_;
};

// A small class for byte-exact checks.
class TStreamTiny : public TComponent {
  KELMAR_CLASS(TStreamTiny, TComponent)
 public:
  using TComponent::TComponent;
  int Count = 0;
  String Caption;
  TStreamShape Shape = shNone;
  Set<TStreamOption> Options;
  bool Active = true;
  double Ratio = 0;
};

}  // namespace

KELMAR_PUBLISH(TStreamFont) {
  r.Prop(u"Size", &TStreamFont::Size).Default = 10;
  r.Prop(u"Face", &TStreamFont::Face);
}

KELMAR_PUBLISH(TStreamItem) {
  r.Prop(u"Caption", &TStreamItem::Caption);
  r.Prop(u"Width", &TStreamItem::Width).Default = 64;
  r.Prop(u"Peer", &TStreamItem::Peer);
}

KELMAR_PUBLISH(TStreamWidget) {
  r.Prop(u"Caption", &TStreamWidget::Caption, &TStreamWidget::SetCaption);
  r.Prop(u"Count", &TStreamWidget::Count);
  r.Prop(u"Big", &TStreamWidget::Big).Default = 0;
  r.Prop(u"Ratio", &TStreamWidget::Ratio);
  r.Prop(u"Visible", &TStreamWidget::Visible).Default = 1;
  r.Prop(u"Shape", &TStreamWidget::Shape).Default = shNone;
  r.Prop(u"Options", &TStreamWidget::Options);
  r.Prop(u"Letter", &TStreamWidget::Letter);
  r.Prop(u"Value", &TStreamWidget::Value);
  r.Prop(u"Font", &TStreamWidget::Font, &TStreamWidget::SetFont);
  r.Prop(u"Items", &TStreamWidget::Items, &TStreamWidget::SetItems);
  r.Prop(u"Lines", &TStreamWidget::Lines, &TStreamWidget::SetLines);
  r.Prop(u"Peer", &TStreamWidget::Peer);
  r.Prop(u"Fixed", &TStreamWidget::Fixed, nullptr);
  r.Prop(u"OnClick", &TStreamWidget::OnClick);
}

KELMAR_PUBLISH(TStreamTiny) {
  r.Prop(u"Count", &TStreamTiny::Count);
  r.Prop(u"Caption", &TStreamTiny::Caption);
  r.Prop(u"Shape", &TStreamTiny::Shape);
  r.Prop(u"Options", &TStreamTiny::Options);
  r.Prop(u"Active", &TStreamTiny::Active).Default = 1;
  r.Prop(u"Ratio", &TStreamTiny::Ratio);
}

namespace {

// Hand-assembled stream bytes.
struct Bytes {
  std::vector<uint8_t> v;
  Bytes& b(std::initializer_list<int> bytes) {
    for (int x : bytes) v.push_back(static_cast<uint8_t>(x));
    return *this;
  }
  Bytes& raw(const char* s) {
    v.insert(v.end(), s, s + std::strlen(s));
    return *this;
  }
  // A short string: length byte and text.
  Bytes& str(const char* s) { return b({static_cast<int>(std::strlen(s))}).raw(s); }
  Bytes& header(const char* cls, const char* name) { return raw("TPF0").str(cls).str(name); }
};

std::vector<uint8_t> Content(TMemoryStream& s) {
  auto* p = static_cast<const uint8_t*>(s.Memory());
  return std::vector<uint8_t>(p, p + s.Size());
}

TBytesStream StreamOf(const Bytes& bytes) { return TBytesStream(bytes.v); }

class FilerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    RegisterClass(TStreamWidget::StaticClass());
    RegisterClass(TStreamTiny::StaticClass());
  }

  // Writes `c` and reads it back as a new component.
  std::unique_ptr<TStreamWidget> RoundTrip(TComponent* c) {
    TMemoryStream s;
    WriteComponentToStream(&s, c);
    s.SetPosition(0);
    TComponent* read = ReadComponentFromStream(&s);
    EXPECT_EQ(s.Position(), s.Size());
    return std::unique_ptr<TStreamWidget>(dynamic_cast<TStreamWidget*>(read));
  }

  template <class F>
  static String ErrorOf(F f) {
    try {
      f();
    } catch (const EReadError& e) {
      return e.Message;
    }
    return u"(no EReadError)";
  }
};

TEST_F(FilerTest, EveryKindOfPropertyRoundTrips) {
  TStreamWidget w(nullptr);
  w.SetName(u"Main");
  w.SetCaption(u"Grüße \U0001F600");
  w.Count = -70000;
  w.Big = int64_t{1} << 40;
  w.Ratio = 0.1;
  w.Visible = false;
  w.Shape = shSquare;
  w.Options = {soA, soC};
  w.Letter = u'Ж';
  w.Value = VarArrayOf({Variant(7), Variant(u"x"), Variant(2.5), Variant(true)});
  w.SetTag(-3);
  w.Font()->Size = 14;
  w.Font()->Face = u"Mono";
  w.Lines()->Add(u"one");
  w.Lines()->Add(u"");
  w.Lines()->Add(u"three");
  TStreamItem* a = w.Items()->Add();
  a->Caption = u"A";
  a->Width = 100;
  w.Items()->Add()->Caption = u"B";

  auto r = RoundTrip(&w);
  ASSERT_TRUE(r);
  EXPECT_EQ(r->Name(), u"Main");
  EXPECT_EQ(r->Caption(), w.Caption());
  EXPECT_EQ(r->Count, -70000);
  EXPECT_EQ(r->Big, int64_t{1} << 40);
  EXPECT_EQ(r->Ratio, 0.1);
  EXPECT_FALSE(r->Visible);
  EXPECT_EQ(r->Shape, shSquare);
  EXPECT_TRUE(r->Options == Set<TStreamOption>({soA, soC}));
  EXPECT_EQ(r->Letter, u'Ж');
  ASSERT_TRUE(r->Value.IsArray());
  EXPECT_EQ(r->Value[0], 7);
  EXPECT_EQ(r->Value[1], u"x");
  EXPECT_EQ(r->Value[2], 2.5);
  EXPECT_EQ(r->Value[3].VarType(), varBoolean);
  EXPECT_EQ(r->Tag(), -3);
  EXPECT_EQ(r->Font()->Size, 14);
  EXPECT_EQ(r->Font()->Face, u"Mono");
  ASSERT_EQ(r->Lines()->Count(), 3);
  EXPECT_EQ(r->Lines()->Strings(0), u"one");
  EXPECT_EQ(r->Lines()->Strings(1), u"");
  EXPECT_EQ(r->Lines()->Strings(2), u"three");
  ASSERT_EQ(r->Items()->Count(), 2);
  EXPECT_EQ(r->Items()->Items(0)->Caption, u"A");
  EXPECT_EQ(r->Items()->Items(0)->Width, 100);
  EXPECT_EQ(r->Items()->Items(1)->Caption, u"B");
  EXPECT_EQ(r->Items()->Items(1)->Width, 64);
}

TEST_F(FilerTest, ScalarVariantsKeepTheirKinds) {
  const Variant values[] = {Variant(5), Variant(int64_t{1} << 50), Variant(u"text"), Variant(-1.25),
                            Variant(Currency(12.3456)), Variant(TDateTime(45000.5)), Variant(false), Null()};
  for (const Variant& v : values) {
    TStreamWidget w(nullptr);
    w.Value = v;
    auto r = RoundTrip(&w);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->Value.VarType(), v.VarType()) << v;
    EXPECT_TRUE(r->Value.IsNull() ? v.IsNull() : r->Value == v) << v;
  }
}

TEST_F(FilerTest, NullInsideAVariantArrayIsWrittenAsUnassigned) {
  TStreamWidget w(nullptr);
  w.Value = VarArrayOf({Variant(1), Null(), Variant(2)});
  auto r = RoundTrip(&w);
  ASSERT_TRUE(r && r->Value.IsArray());
  EXPECT_EQ(VarArrayHighBound(r->Value, 1), 2);
  EXPECT_TRUE(r->Value[1].IsEmpty());
  EXPECT_EQ(r->Value[2], 2);
}

TEST_F(FilerTest, ChildrenAndReferencesAcrossTheTree) {
  TStreamWidget root(nullptr);
  root.SetName(u"Form1");
  auto* panel = new TStreamWidget(&root);
  panel->SetName(u"Panel1");
  auto* edit = new TStreamWidget(panel);
  edit->SetName(u"Edit1");
  edit->SetCaption(u"inner");
  new TStreamWidget(&root);  // unnamed: an inner part, not written
  TStreamWidget outsider(nullptr);
  outsider.SetName(u"Elsewhere");
  root.Peer = edit;
  edit->Peer = &root;
  panel->Peer = &outsider;  // cannot be named from the root: not written
  root.Items()->Add()->Peer = panel;

  auto r = RoundTrip(&root);
  ASSERT_TRUE(r);
  ASSERT_EQ(r->ComponentCount(), 1);
  auto* rPanel = dynamic_cast<TStreamWidget*>(r->FindComponent(u"Panel1"));
  ASSERT_TRUE(rPanel);
  auto* rEdit = dynamic_cast<TStreamWidget*>(rPanel->FindComponent(u"Edit1"));
  ASSERT_TRUE(rEdit);
  EXPECT_EQ(rEdit->Caption(), u"inner");
  EXPECT_EQ(r->Peer, rEdit);
  EXPECT_EQ(rEdit->Peer, r.get());
  EXPECT_EQ(rPanel->Peer, nullptr);
  EXPECT_EQ(r->Items()->Items(0)->Peer, rPanel);
  for (TStreamWidget* c : {r.get(), rPanel, rEdit}) {
    EXPECT_EQ(c->loadedCount, 1);
    EXPECT_TRUE(c->loadedWhileLoading);
    EXPECT_FALSE(c->readingAtLoaded);
    EXPECT_FALSE(c->ComponentState().Contains(csLoading));
    EXPECT_FALSE(c->ComponentState().Contains(csReading));
  }
  EXPECT_TRUE(rEdit->captionSetWhileReading);
}

TEST_F(FilerTest, ReadingIntoAnExistingRootReusesItsNamedComponents) {
  TStreamWidget source(nullptr);
  auto* child = new TStreamWidget(&source);
  child->SetName(u"Kept");
  child->Count = 9;
  TMemoryStream s;
  WriteComponentToStream(&s, &source);

  TStreamWidget target(nullptr);
  auto* existing = new TStreamWidget(&target);
  existing->SetName(u"Kept");
  s.SetPosition(0);
  EXPECT_EQ(ReadComponentFromStream(&s, &target), &target);
  ASSERT_EQ(target.ComponentCount(), 1);
  EXPECT_EQ(target.Components(0), existing);
  EXPECT_EQ(existing->Count, 9);
}

TEST_F(FilerTest, DefaultsEmptyTextZeroFloatsEventsAndReadOnlyPropertiesAreNotWritten) {
  TStreamWidget w(nullptr);
  TEvent<void(TObject*)> handler = [](TObject*) {};
  w.OnClick = handler;
  TMemoryStream s;
  WriteComponentToStream(&s, &w);
  // Ordinals without a default, and the empty collection, are all there is.
  Bytes expected;
  expected.header("TStreamWidget", "")
      .str("Count").b({vaInt8, 0})
      .str("Options").b({vaSet, 0})
      .str("Letter").b({vaString, 1, 0})
      .str("Items").b({vaCollection, 0})
      .b({0, 0});
  EXPECT_EQ(Content(s), expected.v);
}

TEST_F(FilerTest, KnownStreamByteForByte) {
  Bytes expected;
  expected.header("TStreamTiny", "T1")
      .str("Count").b({vaInt8, 5})
      .str("Caption").b({vaString, 2}).raw("Hi")
      .str("Shape").b({vaIdent}).str("shSquare")
      .str("Options").b({vaSet}).str("soA").str("soC").b({0})
      .str("Active").b({vaFalse})
      .str("Ratio").b({vaExtended, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0xFF, 0x3F})
      .b({0, 0});
  TStreamTiny t(nullptr);
  t.SetName(u"T1");
  t.Count = 5;
  t.Caption = u"Hi";
  t.Shape = shSquare;
  t.Options = {soA, soC};
  t.Active = false;
  t.Ratio = 1.5;
  TMemoryStream s;
  WriteComponentToStream(&s, &t);
  EXPECT_EQ(Content(s), expected.v);

  TBytesStream in = StreamOf(expected);
  std::unique_ptr<TComponent> read(ReadComponentFromStream(&in));
  auto* tiny = dynamic_cast<TStreamTiny*>(read.get());
  ASSERT_TRUE(tiny);
  EXPECT_EQ(tiny->Name(), u"T1");
  EXPECT_EQ(tiny->Count, 5);
  EXPECT_EQ(tiny->Caption, u"Hi");
  EXPECT_EQ(tiny->Shape, shSquare);
  EXPECT_TRUE(tiny->Options == Set<TStreamOption>({soA, soC}));
  EXPECT_FALSE(tiny->Active);
  EXPECT_EQ(tiny->Ratio, 1.5);
}

TEST_F(FilerTest, IntegersTakeTheSmallestTag) {
  struct Case {
    int64_t value;
    std::vector<uint8_t> bytes;
  };
  const Case cases[] = {
      {-128, {vaInt8, 0x80}},
      {127, {vaInt8, 0x7F}},
      {128, {vaInt16, 0x80, 0x00}},
      {-32769, {vaInt32, 0xFF, 0x7F, 0xFF, 0xFF}},
      {int64_t{INT32_MAX} + 1, {vaInt64, 0, 0, 0, 0x80, 0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    TMemoryStream s;
    TWriter(&s).WriteInteger(c.value);
    EXPECT_EQ(Content(s), c.bytes) << c.value;
    s.SetPosition(0);
    EXPECT_EQ(TReader(&s).ReadInt64(), c.value);
  }
  TBytesStream big(std::vector<uint8_t>{vaInt64, 0, 0, 0, 0, 1, 0, 0, 0});
  EXPECT_THROW(TReader(&big).ReadInteger(), EReadError);
}

TEST_F(FilerTest, TextTakesTheKindThatKeepsIt) {
  struct Case {
    String text;
    TValueType tag;
  };
  const Case cases[] = {
      {u"short", vaString},
      {String(300, u'a'), vaLString},
      {u"Grüße", vaUTF8String},
      {String(1, u'\xD800') + u"x", vaWString},  // a lone surrogate
  };
  for (const Case& c : cases) {
    TMemoryStream s;
    TWriter(&s).WriteString(c.text);
    EXPECT_EQ(Content(s)[0], c.tag) << c.text;
    s.SetPosition(0);
    EXPECT_EQ(TReader(&s).ReadString(), c.text);
  }
  // The 8-bit kinds hold text of the system code page.
  TBytesStream ansi(std::vector<uint8_t>{vaString, 2, 'a', 'b'});
  EXPECT_EQ(TReader(&ansi).ReadString(), u"ab");
  TBytesStream wide(std::vector<uint8_t>{vaWString, 2, 0, 0, 0, 0x16, 0x04, 'x', 0});
  EXPECT_EQ(TReader(&wide).ReadString(), u"Жx");
}

TEST_F(FilerTest, ExtendedFloatsAreExactForEveryDouble) {
  const double values[] = {1.0, -0.1, 1e308, -2.5e-300, 5e-324, std::numeric_limits<double>::denorm_min() * 12345,
                           std::numeric_limits<double>::infinity(), -0.0};
  for (double v : values) {
    TMemoryStream s;
    TWriter(&s).WriteFloat(v);
    ASSERT_EQ(s.Size(), 11);
    s.SetPosition(0);
    const double back = TReader(&s).ReadFloat();
    EXPECT_EQ(back, v);
    EXPECT_EQ(std::signbit(back), std::signbit(v));
  }
  // A NaN comes back with its payload.
  const double nanWithPayload = std::bit_cast<double>(uint64_t{0xFFF4000000000123});
  TMemoryStream nan;
  TWriter(&nan).WriteFloat(nanWithPayload);
  nan.SetPosition(0);
  EXPECT_EQ(std::bit_cast<uint64_t>(TReader(&nan).ReadFloat()), uint64_t{0xFFF4000000000123});
  // Beyond the range of a double: infinity and zero.
  TBytesStream huge(std::vector<uint8_t>{vaExtended, 0, 0, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x7E});
  EXPECT_EQ(TReader(&huge).ReadFloat(), std::numeric_limits<double>::infinity());
  TBytesStream tiny(std::vector<uint8_t>{vaExtended, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x01, 0x00});
  EXPECT_EQ(TReader(&tiny).ReadFloat(), 0.0);
  // Other float kinds read too.
  TMemoryStream d;
  TWriter(&d).WriteDouble(2.75);
  d.SetPosition(0);
  EXPECT_EQ(TReader(&d).ReadFloat(), 2.75);
}

TEST_F(FilerTest, UnknownPropertiesOfEveryKindAreSkipped) {
  Bytes b;
  b.header("TStreamTiny", "")
      .str("Gone1").b({vaList, vaInt8, 1, vaList, vaString, 1, 'x', 0, 0})
      .str("Gone2").b({vaCollection, vaInt8, 0, vaList}).str("P").b({vaInt16, 1, 2, 0, vaList, 0, 0})
      .str("Gone3").b({vaSet}).str("a").str("b").b({0})
      .str("Gone4").b({vaBinary, 3, 0, 0, 0, 1, 2, 3})
      .str("Gone5").b({vaWString, 2, 0, 0, 0, 'a', 0, 'b', 0})
      .str("Gone6").b({vaExtended, 0, 0, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x3F})
      .str("Gone7").b({vaUTF8String, 1, 0, 0, 0, 'z'})
      .str("Count").b({vaInt8, 42})
      .b({0, 0});
  TBytesStream in = StreamOf(b);
  std::unique_ptr<TComponent> read(ReadComponentFromStream(&in));
  ASSERT_TRUE(read);
  EXPECT_EQ(static_cast<TStreamTiny*>(read.get())->Count, 42);
}

TEST_F(FilerTest, HistoricalPrefixAndItemOrderNumbersAreTolerated) {
  Bytes b;
  b.raw("TPF0").b({0xF2, vaInt8, 0}).str("TStreamWidget").str("W")
      .str("Items").b({vaCollection, vaInt8, 0, vaList}).str("Caption").b({vaString, 1, 'q', 0, 0})
      .b({0, 0});
  TBytesStream in = StreamOf(b);
  std::unique_ptr<TComponent> read(ReadComponentFromStream(&in));
  auto* w = dynamic_cast<TStreamWidget*>(read.get());
  ASSERT_TRUE(w);
  ASSERT_EQ(w->Items()->Count(), 1);
  EXPECT_EQ(w->Items()->Items(0)->Caption, u"q");
}

TEST_F(FilerTest, ValuesOfTheWrongKindAreClearErrors) {
  auto read = [](Bytes b) {
    TBytesStream in = StreamOf(b.b({0, 0}));
    delete ReadComponentFromStream(&in);
  };
  String msg = ErrorOf([&] { read(Bytes().header("TStreamTiny", "X").str("Count").b({vaString, 1, '5'})); });
  EXPECT_NE(msg.Pos(u"Invalid property value"), 0) << msg;
  EXPECT_NE(msg.Pos(u"X.Count"), 0) << msg;
  msg = ErrorOf([&] { read(Bytes().header("TStreamTiny", "").str("Shape").b({vaIdent}).str("shOval")); });
  EXPECT_NE(msg.Pos(u"Invalid property value"), 0) << msg;
  msg = ErrorOf([&] { read(Bytes().header("TStreamTiny", "").str("Options").b({vaSet}).str("soZ").b({0})); });
  EXPECT_NE(msg.Pos(u"Invalid property value"), 0) << msg;
  msg = ErrorOf([&] { read(Bytes().header("TStreamTiny", "").str("Count").b({99})); });
  EXPECT_NE(msg.Pos(u"Invalid property value"), 0) << msg;
  msg = ErrorOf([&] { read(Bytes().header("TStreamTiny", "").str("Gone").b({99})); });
  EXPECT_NE(msg.Pos(u"Invalid property value"), 0) << msg;
  msg = ErrorOf([&] { read(Bytes().header("TStreamWidget", "").str("Font").b({vaIdent}).str("X")); });
  EXPECT_NE(msg.Pos(u"Invalid property value"), 0) << msg;
}

TEST_F(FilerTest, TruncatedStreamsRaiseAndLeaveNothingBehind) {
  TStreamWidget root(nullptr);
  root.SetName(u"Root");
  auto* child = new TStreamWidget(&root);
  child->SetName(u"Child");
  child->SetCaption(u"some text");
  root.Items()->Add()->Caption = u"item";
  root.Value = VarArrayOf({Variant(1.5), Variant(u"v")});
  TMemoryStream full;
  WriteComponentToStream(&full, &root);
  const std::vector<uint8_t> bytes = Content(full);
  for (size_t n = 0; n < bytes.size(); ++n) {
    TBytesStream cut(std::vector<uint8_t>(bytes.begin(), bytes.begin() + static_cast<long>(n)));
    EXPECT_NE(ErrorOf([&] { delete ReadComponentFromStream(&cut); }).Pos(u"Stream read error"), 0) << n;
    // Into an existing root: the child made by the failed read is gone.
    TStreamWidget target(nullptr);
    cut.SetPosition(0);
    EXPECT_THROW(ReadComponentFromStream(&cut, &target), EReadError) << n;
    EXPECT_EQ(target.ComponentCount(), 0) << n;
    EXPECT_FALSE(target.ComponentState().Contains(csLoading));
    EXPECT_FALSE(target.ComponentState().Contains(csReading));
  }
}

TEST_F(FilerTest, GarbageRaisesClearErrors) {
  TBytesStream bad(std::vector<uint8_t>{'T', 'P', 'F', '1', 0, 0, 0, 0});
  EXPECT_EQ(ErrorOf([&] { ReadComponentFromStream(&bad); }), u"Invalid stream format");
  Bytes unknown;
  unknown.header("TNoSuchClass", "").b({0, 0});
  TBytesStream u = StreamOf(unknown);
  EXPECT_THROW(ReadComponentFromStream(&u), EClassNotFound);
  // Lists nested past any design's depth.
  Bytes deep;
  deep.header("TStreamTiny", "").str("Gone");
  for (int i = 0; i < 100000; ++i) deep.b({vaList});
  TBytesStream d = StreamOf(deep);
  EXPECT_NE(ErrorOf([&] { ReadComponentFromStream(&d); }).Pos(u"Invalid stream format"), 0);
  // A length far past the end is not allocated.
  Bytes longText;
  longText.header("TStreamTiny", "").str("Caption").b({vaLString, 0xFF, 0xFF, 0xFF, 0x7F, 'a'});
  TBytesStream l = StreamOf(longText);
  EXPECT_NE(ErrorOf([&] { ReadComponentFromStream(&l); }).Pos(u"Stream read error"), 0);
}

TEST_F(FilerTest, MutatedStreamsEitherLoadOrRaise) {
  TStreamWidget root(nullptr);
  root.SetName(u"R");
  auto* child = new TStreamWidget(&root);
  child->SetName(u"C");
  child->Peer = &root;
  root.Items()->Add()->Peer = child;
  root.Lines()->Add(u"line");
  root.Value = VarArrayOf({Variant(1), Variant(u"s")});
  TMemoryStream full;
  WriteComponentToStream(&full, &root);
  const std::vector<uint8_t> bytes = Content(full);
  std::mt19937 random(12345);
  int loaded = 0;
  for (int round = 0; round < 3000; ++round) {
    std::vector<uint8_t> mutated = bytes;
    for (int k = 0; k < 1 + round % 3; ++k)
      mutated[random() % mutated.size()] = static_cast<uint8_t>(random() % 2 ? random() % 24 : random());
    TBytesStream in(mutated);
    try {
      delete ReadComponentFromStream(&in);
      ++loaded;
    } catch (const Exception&) {
    }
  }
  EXPECT_GT(loaded, 0);
}

TEST_F(FilerTest, ReadingACollectionTwiceDropsReferencesIntoTheFirst) {
  Bytes b;
  b.header("TStreamWidget", "R")
      .str("Items").b({vaCollection, vaList}).str("Peer").b({vaIdent}).str("R").b({0, 0})
      .str("Items").b({vaCollection, vaList}).str("Caption").b({vaString, 1, 'n', 0, 0})
      .b({0, 0});
  TBytesStream in = StreamOf(b);
  std::unique_ptr<TComponent> read(ReadComponentFromStream(&in));
  auto* w = dynamic_cast<TStreamWidget*>(read.get());
  ASSERT_TRUE(w);
  ASSERT_EQ(w->Items()->Count(), 1);
  EXPECT_EQ(w->Items()->Items(0)->Caption, u"n");
  EXPECT_EQ(w->Items()->Items(0)->Peer, nullptr);
}

TEST_F(FilerTest, UnresolvedReferencesAndUnknownSubPropertiesAreLeftAlone) {
  Bytes b;
  b.header("TStreamWidget", "R")
      .str("Peer").b({vaIdent}).str("Nobody")
      .str("Font.Weight").b({vaInt8, 7})
      .str("Font.Size").b({vaInt8, 20})
      .str("Count.Deeper").b({vaInt8, 1})
      .str("OnClick").b({vaIdent}).str("HandlerName")
      .b({0, 0});
  TBytesStream in = StreamOf(b);
  std::unique_ptr<TComponent> read(ReadComponentFromStream(&in));
  auto* w = dynamic_cast<TStreamWidget*>(read.get());
  ASSERT_TRUE(w);
  EXPECT_EQ(w->Peer, nullptr);
  EXPECT_EQ(w->Font()->Size, 20);
  EXPECT_EQ(w->Count, 0);
}

class CollectionStreamTest : public FilerTest {
 protected:
  TStreamWidget owner{nullptr};
  TTypedCollection<TStreamItem, TOwnedCollection>& items = *owner.Items();
};

TEST_F(CollectionStreamTest, ACollectionTravelsInsideAWrapper) {
  items.Add()->Caption = u"Col1";
  items.Add()->Width = 10;
  TMemoryStream s;
  WriteCollectionToStream(&s, &items, u"TColumnsWrapper", u"Columns");
  Bytes expected;
  expected.header("TColumnsWrapper", "")
      .str("Columns").b({vaCollection, vaList}).str("Caption").b({vaString, 4}).raw("Col1").b({0})
      .b({vaList}).str("Width").b({vaInt8, 10, 0, 0})
      .b({0, 0});
  EXPECT_EQ(Content(s), expected.v);

  TStreamWidget other(nullptr);
  other.Items()->Add()->Caption = u"old";
  s.SetPosition(0);
  ReadCollectionFromStream(&s, other.Items());
  ASSERT_EQ(other.Items()->Count(), 2);
  EXPECT_EQ(other.Items()->Items(0)->Caption, u"Col1");
  EXPECT_EQ(other.Items()->Items(1)->Width, 10);
  EXPECT_EQ(s.Position(), s.Size());
}

TEST_F(CollectionStreamTest, ABadStreamLeavesTheCollectionAsItWas) {
  items.Add()->Caption = u"keep1";
  items.Add()->Width = 7;
  TMemoryStream good;
  TStreamWidget source(nullptr);
  source.Items()->Add()->Caption = u"new";
  WriteCollectionToStream(&good, source.Items(), u"TColumnsWrapper", u"Columns");
  std::vector<uint8_t> bytes = Content(good);
  bytes.pop_back();
  bytes.pop_back();
  TBytesStream cut(bytes);
  EXPECT_THROW(ReadCollectionFromStream(&cut, &items), EReadError);
  ASSERT_EQ(items.Count(), 2);
  EXPECT_EQ(items.Items(0)->Caption, u"keep1");
  EXPECT_EQ(items.Items(1)->Width, 7);

  Bytes mismatched;
  mismatched.header("TColumnsWrapper", "").str("Columns").b({vaCollection, vaList}).str("Width").b({vaTrue, 0, 0, 0, 0});
  TBytesStream m = StreamOf(mismatched);
  EXPECT_THROW(ReadCollectionFromStream(&m, &items), EReadError);
  EXPECT_EQ(items.Count(), 2);
}

TEST_F(CollectionStreamTest, AWrapperWithoutACollectionEmptiesIt) {
  items.Add();
  Bytes b;
  b.header("TColumnsWrapper", "").str("Other").b({vaInt8, 1}).b({0, 0});
  TBytesStream in = StreamOf(b);
  ReadCollectionFromStream(&in, &items);
  EXPECT_EQ(items.Count(), 0);
}

}  // namespace
