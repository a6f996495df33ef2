#include "platform/rtl/typinfo.h"

#include <gtest/gtest.h>

#include "platform/rtl/classes.h"

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

}  // namespace

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

}  // namespace
