#include "platform/rtl/typinfo.h"

#include <gtest/gtest.h>

#include "platform/rtl/classes.h"
#include "platform/rtl/variant.h"

namespace {

enum TColorMode { cmNone, cmLight, cmDark };
enum TFlag { fA, fB, fC };

}  // namespace

KELMAR_ENUM(TColorMode, u"cmNone", u"cmLight", u"cmDark");
KELMAR_ENUM(TFlag, u"fA", u"fB", u"fC");

namespace {

class TSample : public TComponent {
  KELMAR_CLASS(TSample, TComponent)
 public:
  using TComponent::TComponent;
  String Caption() const { return caption_; }
  void SetCaption(const String& v) { caption_ = v; ++captionWrites; }
  bool Active() const { return active_; }
  void SetActive(bool v) { active_ = v; }
  int Count() const { return count_; }
  void SetCount(int v) { count_ = v; }
  double Ratio() const { return ratio_; }
  void SetRatio(double v) { ratio_ = v; }
  TColorMode Mode() const { return mode_; }
  void SetMode(TColorMode v) { mode_ = v; }
  TComponent* Peer() const { return peer_; }
  void SetPeer(TComponent* v) { peer_ = v; }
  void SetCommand(const String& v) { lastCommand = v; }

  Set<TFlag> Flags;
  TNotifyEvent OnChange;
  String lastCommand;
  int captionWrites = 0;

 private:
  String caption_;
  bool active_ = false;
  int count_ = 0;
  double ratio_ = 0;
  TColorMode mode_ = cmNone;
  TComponent* peer_ = nullptr;
};

class TSampleChild : public TSample {
  KELMAR_CLASS(TSampleChild, TSample)
 public:
  using TSample::TSample;
  int Extra = 7;
};

// Another class with a "Caption" of another kind: the protocol must not mix them.
class TIntCaption : public TComponent {
  KELMAR_CLASS(TIntCaption, TComponent)
 public:
  using TComponent::TComponent;
  int Caption = 5;
};

// Variants published both ways: a member, and a getter/setter pair.
class TVariantHolder : public TComponent {
  KELMAR_CLASS(TVariantHolder, TComponent)
 public:
  using TComponent::TComponent;
  Variant Plain;
  Variant Kept() const { return kept_; }
  void SetKept(const Variant& v) {
    kept_ = v;
    ++keptWrites;
  }
  int keptWrites = 0;

 private:
  Variant kept_;
};

}  // namespace

KELMAR_PUBLISH(TVariantHolder) {
  r.Prop(u"Plain", &TVariantHolder::Plain);
  r.Prop(u"Kept", &TVariantHolder::Kept, &TVariantHolder::SetKept);
}

KELMAR_PUBLISH(TSample) {
  r.Prop(u"Caption", &TSample::Caption, &TSample::SetCaption);
  r.Prop(u"Active", &TSample::Active, &TSample::SetActive).Default = 0;
  r.Prop(u"Count", &TSample::Count, &TSample::SetCount);
  r.Prop(u"Ratio", &TSample::Ratio, &TSample::SetRatio);
  r.Prop(u"Mode", &TSample::Mode, &TSample::SetMode);
  r.Prop(u"Peer", &TSample::Peer, &TSample::SetPeer);
  r.Prop(u"Flags", &TSample::Flags);
  r.Prop(u"OnChange", &TSample::OnChange);
  r.Command(u"CmdRun", &TSample::SetCommand);
}

KELMAR_PUBLISH(TSampleChild) { r.Prop(u"Extra", &TSampleChild::Extra); }

KELMAR_PUBLISH(TIntCaption) { r.Prop(u"Caption", &TIntCaption::Caption); }

namespace {

struct Handler {
  void Changed(TObject*) {}
  void Other(TObject*) {}
};

TEST(TypInfoTest, ClassInformationChainsToParents) {
  TSampleChild c(nullptr);
  EXPECT_EQ(c.ClassName(), u"TSampleChild");
  EXPECT_TRUE(c.InheritsFrom(TSample::StaticClass()));
  EXPECT_TRUE(c.InheritsFrom(TComponent::StaticClass()));
  EXPECT_TRUE(c.InheritsFrom(TObject::StaticClass()));
  EXPECT_FALSE(TSample(nullptr).InheritsFrom(TSampleChild::StaticClass()));
  EXPECT_EQ(TSampleChild::StaticClass()->ClassParent(), TSample::StaticClass());
}

TEST(TypInfoTest, PropertiesAreListedAncestorsFirstInOrder) {
  TSampleChild c(nullptr);
  std::vector<String> names;
  for (const TPropInfo* p : GetPropList(&c)) names.push_back(p->Name);
  std::vector<String> expected = {u"Name", u"Tag",   u"Caption",  u"Active", u"Count", u"Ratio",
                                  u"Mode", u"Peer", u"Flags", u"OnChange", u"CmdRun", u"Extra"};
  EXPECT_EQ(names, expected);
  EXPECT_TRUE(GetPropList(nullptr).empty());
}

TEST(TypInfoTest, KindsAndTypeNames) {
  TSample s(nullptr);
  EXPECT_TRUE(IsPropType(&s, u"Caption", tkUString));
  EXPECT_TRUE(IsPropType(&s, u"Active", tkEnumeration));
  EXPECT_TRUE(GetPropInfo(&s, u"Active")->IsBoolean());
  EXPECT_TRUE(IsPropType(&s, u"Count", tkInteger));
  EXPECT_TRUE(IsPropType(&s, u"Ratio", tkFloat));
  EXPECT_TRUE(IsPropType(&s, u"Mode", tkEnumeration));
  EXPECT_EQ(GetPropInfo(&s, u"Mode")->TypeName, u"TColorMode");
  EXPECT_TRUE(IsPropType(&s, u"Peer", tkClass));
  EXPECT_EQ(GetPropInfo(&s, u"Peer")->PropClass(), TComponent::StaticClass());
  EXPECT_TRUE(IsPropType(&s, u"Flags", tkSet));
  EXPECT_TRUE(IsPropType(&s, u"OnChange", tkMethod));
  EXPECT_FALSE(IsPropType(&s, u"Caption", tkInteger));
  EXPECT_FALSE(IsPropType(&s, u"Missing", tkUString));
  EXPECT_FALSE(IsPropType(nullptr, u"Caption", tkUString));
}

TEST(TypInfoTest, ReadsAndWritesByCaseInsensitiveName) {
  TSample s(nullptr);
  SetPropString(&s, u"caption", u"Hello");
  EXPECT_EQ(s.Caption(), u"Hello");
  EXPECT_EQ(GetPropString(&s, u"CAPTION"), u"Hello");
  SetPropBool(&s, u"Active", true);
  EXPECT_TRUE(GetPropBool(&s, u"Active"));
  SetPropInteger(&s, u"Count", 42);
  EXPECT_EQ(GetPropInteger(&s, u"Count"), 42);
  SetPropFloat(&s, u"Ratio", 0.25);
  EXPECT_DOUBLE_EQ(GetPropFloat(&s, u"Ratio"), 0.25);
  SetPropEnum(&s, u"Mode", cmDark);
  EXPECT_EQ(s.Mode(), cmDark);
  EXPECT_EQ(GetPropEnum(&s, u"Mode"), 2);
}

TEST(TypInfoTest, MissingOrMismatchedPropertiesFallSilent) {
  TSample s(nullptr);
  TIntCaption other(nullptr);
  EXPECT_EQ(GetPropString(&s, u"Nope", u"dflt"), u"dflt");
  SetPropString(&s, u"Nope", u"x");  // no error
  EXPECT_EQ(GetPropString(&other, u"Caption", u"dflt"), u"dflt");  // an integer, not text
  SetPropString(&other, u"Caption", u"x");
  EXPECT_EQ(other.Caption, 5);
  EXPECT_EQ(GetPropInteger(&other, u"Caption", -1), 5);
  EXPECT_FALSE(GetPropBool(&s, u"Mode", false));  // an enumeration but not Boolean
  SetPropBool(&s, u"Mode", true);
  EXPECT_EQ(s.Mode(), cmNone);
  EXPECT_EQ(GetPropInteger(nullptr, u"Count", 9), 9);
  SetPropInteger(nullptr, u"Count", 1);
}

TEST(TypInfoTest, WriteOnlyCommandsCannotBeRead) {
  TSample s(nullptr);
  SetPropString(&s, u"CmdRun", u"go");
  EXPECT_EQ(s.lastCommand, u"go");
  EXPECT_EQ(GetPropString(&s, u"CmdRun", u"none"), u"none");
  EXPECT_FALSE(GetPropInfo(&s, u"CmdRun")->Readable());
  EXPECT_TRUE(GetPropInfo(&s, u"CmdRun")->Writable());
}

TEST(TypInfoTest, ObjectPropertiesCheckTheirClass) {
  TSample s(nullptr);
  TSampleChild child(nullptr);
  TComponent plain(nullptr);
  SetPropObject(&s, u"Peer", &child);
  EXPECT_EQ(s.Peer(), &child);
  EXPECT_EQ(GetPropObject(&s, u"Peer", TSample::StaticClass()), &child);
  SetPropObject(&s, u"Peer", &plain);
  EXPECT_EQ(GetPropObject(&s, u"Peer"), &plain);
  EXPECT_EQ(GetPropObject(&s, u"Peer", TSample::StaticClass(), &child), &child);  // class test fails
  TObject notAComponent;
  SetPropObject(&s, u"Peer", &notAComponent);  // refused: not a TComponent
  EXPECT_EQ(s.Peer(), &plain);
  SetPropObject(&s, u"Peer", nullptr);
  EXPECT_EQ(s.Peer(), nullptr);
}

TEST(TypInfoTest, MethodPropertiesKeepIdentity) {
  TSample s(nullptr);
  Handler h;
  EXPECT_FALSE(GetPropMethod(&s, u"OnChange").Assigned());
  SetPropMethod(&s, u"OnChange", Closure(&h, &Handler::Changed).ToMethod());
  EXPECT_EQ(s.OnChange, Closure(&h, &Handler::Changed));
  EXPECT_EQ(GetPropMethod(&s, u"OnChange"), Closure(&h, &Handler::Changed).ToMethod());
  EXPECT_FALSE(GetPropMethod(&s, u"OnChange") == Closure(&h, &Handler::Other).ToMethod());
  // A method of another signature is refused.
  TEvent<bool(int)> wrong = [](int) { return true; };
  SetPropMethod(&s, u"OnChange", wrong.ToMethod());
  EXPECT_EQ(s.OnChange, Closure(&h, &Handler::Changed));
  TMethod fallback = wrong.ToMethod();
  EXPECT_EQ(GetPropMethod(&s, u"Missing", fallback), fallback);
}

TEST(TypInfoTest, SetsAndEnumerationsAsText) {
  TSample s(nullptr);
  const TPropInfo& flags = *GetPropInfo(&s, u"Flags");
  SetSetProp(&s, flags, u"[fA, fC]");
  EXPECT_TRUE(s.Flags.Contains(fA));
  EXPECT_FALSE(s.Flags.Contains(fB));
  EXPECT_EQ(GetSetProp(&s, flags), u"[fA,fC]");
  EXPECT_THROW(SetSetProp(&s, flags, u"[fZ]"), EPropertyError);
  EXPECT_EQ(GetSetProp(&s, flags), u"[fA,fC]");
  SetSetProp(&s, flags, u"[]");
  EXPECT_TRUE(s.Flags.Empty());
  const TPropInfo& mode = *GetPropInfo(&s, u"Mode");
  EXPECT_EQ(GetEnumName(mode, 1), u"cmLight");
  EXPECT_EQ(GetEnumName(mode, 9), u"9");
  EXPECT_EQ(GetEnumValue(mode, u"CMDARK"), 2);
  EXPECT_EQ(GetEnumValue(mode, u"cmNope"), -1);
  EXPECT_EQ(GetPropInfo(&s, u"Active")->Default, 0);
}

TEST(TypInfoTest, ClassesAreFoundByNameAndCreated) {
  RegisterClass(TSampleChild::StaticClass());
  EXPECT_EQ(GetClass(u"tsamplechild"), TSampleChild::StaticClass());
  EXPECT_EQ(GetClass(u"TUnknownThing"), nullptr);
  EXPECT_THROW(FindClass(u"TUnknownThing"), EClassNotFound);
  TComponent owner(nullptr);
  TComponent* made = TSampleChild::StaticClass()->CreateComponent(&owner);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->ClassName(), u"TSampleChild");
  EXPECT_EQ(made->Owner(), &owner);
  EXPECT_EQ(TObject::StaticClass()->CreateComponent(&owner), nullptr);
}

TEST(TypInfoVariantTest, VariantPropertiesKeepTheirValueAsItIs) {
  TVariantHolder h(nullptr);
  for (const char16_t* name : {u"Plain", u"Kept"}) {
    EXPECT_TRUE(IsPropType(&h, name, tkVariant));
    EXPECT_EQ(GetPropInfo(&h, name)->TypeName, u"Variant");
  }
  EXPECT_TRUE(GetPropValue(&h, u"Kept").IsEmpty());
  SetPropValue(&h, u"Kept", Null());
  EXPECT_TRUE(h.Kept().IsNull());
  EXPECT_EQ(h.keptWrites, 1);
  SetPropValue(&h, u"plain", VarArrayOf({Variant(1), Variant(u"a")}));
  ASSERT_TRUE(h.Plain.IsArray());
  Variant back = GetPropValue(&h, u"Plain");
  ASSERT_TRUE(back.IsArray());
  EXPECT_EQ(back[1], u"a");
  SetPropValue(&h, u"Kept", Currency(1.5));
  EXPECT_EQ(GetPropValue(&h, u"Kept").VarType(), varCurrency);
}

TEST(TypInfoVariantTest, GetPropValueGivesEachKindItsVariant) {
  TSample s(nullptr);
  TComponent peer(nullptr);
  s.SetCaption(u"Hi");
  s.SetActive(true);
  s.SetCount(-4);
  s.SetRatio(0.5);
  s.SetMode(cmDark);
  s.Flags = {fA, fC};
  s.SetPeer(&peer);
  s.SetTag(intptr_t{1} << 40);
  EXPECT_EQ(GetPropValue(&s, u"Caption"), u"Hi");
  EXPECT_EQ(GetPropValue(&s, u"Active").VarType(), varBoolean);
  EXPECT_TRUE(GetPropValue(&s, u"Active").AsBoolean());
  EXPECT_EQ(GetPropValue(&s, u"Count").VarType(), varInteger);
  EXPECT_EQ(GetPropValue(&s, u"Count"), -4);
  EXPECT_EQ(GetPropValue(&s, u"Ratio"), 0.5);
  EXPECT_EQ(GetPropValue(&s, u"Mode"), u"cmDark");
  EXPECT_EQ(GetPropValue(&s, u"Flags"), u"[fA,fC]");
  EXPECT_EQ(GetPropValue(&s, u"Tag"), int64_t{1} << 40);
  s.SetMode(static_cast<TColorMode>(3));  // within the type, without a name
  EXPECT_EQ(GetPropValue(&s, u"Mode"), 3);
  // Objects, events, write-only and missing properties: nothing.
  for (const char16_t* name : {u"Peer", u"OnChange", u"CmdRun", u"Missing"})
    EXPECT_TRUE(GetPropValue(&s, name).IsEmpty()) << String(name);
  EXPECT_TRUE(GetPropValue(nullptr, u"Count").IsEmpty());
}

TEST(TypInfoVariantTest, SetPropValueConvertsAsVariantsConvert) {
  TSample s(nullptr);
  SetPropValue(&s, u"Count", u"12");
  EXPECT_EQ(s.Count(), 12);
  SetPropValue(&s, u"Count", 3.7);
  EXPECT_EQ(s.Count(), 4);
  SetPropValue(&s, u"Caption", 5);
  EXPECT_EQ(s.Caption(), u"5");
  SetPropValue(&s, u"Caption", Null());
  EXPECT_EQ(s.Caption(), u"");
  SetPropValue(&s, u"Active", u"True");
  EXPECT_TRUE(s.Active());
  SetPropValue(&s, u"Active", 0);
  EXPECT_FALSE(s.Active());
  SetPropValue(&s, u"Mode", u"CMLIGHT");
  EXPECT_EQ(s.Mode(), cmLight);
  SetPropValue(&s, u"Mode", 2);
  EXPECT_EQ(s.Mode(), cmDark);
  SetPropValue(&s, u"Flags", u"[fB]");
  EXPECT_TRUE(s.Flags == Set<TFlag>({fB}));
  SetPropValue(&s, u"Flags", 5);
  EXPECT_TRUE(s.Flags == Set<TFlag>({fA, fC}));
  SetPropValue(&s, u"Ratio", u"0.25");
  EXPECT_EQ(s.Ratio(), 0.25);
  TIntCaption other(nullptr);
  SetPropValue(&other, u"Caption", u"7");  // the same name, another kind
  EXPECT_EQ(other.Caption, 7);
}

TEST(TypInfoVariantTest, OnlyUnconvertibleValuesRaise) {
  TSample s(nullptr);
  s.SetCount(1);
  s.SetMode(cmLight);
  s.Flags = {fB};
  struct Case {
    const char16_t* prop;
    Variant value;
  };
  const Case bad[] = {{u"Count", u"abc"}, {u"Count", 1e20},     {u"Mode", u"cmNope"}, {u"Mode", 9},
                      {u"Flags", u"[fZ]"}, {u"Active", u"maybe"}, {u"Ratio", Null()}};
  for (const Case& c : bad) {
    try {
      SetPropValue(&s, c.prop, c.value);
      ADD_FAILURE() << "no error for " << String(c.prop) << " = " << c.value;
    } catch (const EPropertyError& e) {
      EXPECT_EQ(e.Message.Pos(u"Invalid property value"), 1) << e.Message;
    }
  }
  EXPECT_EQ(s.Count(), 1);
  EXPECT_EQ(s.Mode(), cmLight);
  EXPECT_TRUE(s.Flags == Set<TFlag>({fB}));
  // Where there is nothing to set, nothing is said.
  SetPropValue(&s, u"Missing", u"abc");
  SetPropValue(&s, u"Peer", u"abc");
  SetPropValue(&s, u"OnChange", 1);
  SetPropValue(nullptr, u"Count", u"abc");
  EXPECT_EQ(s.Peer(), nullptr);
}

}  // namespace
