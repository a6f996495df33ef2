#include "platform/ui/filer.h"

#include <gtest/gtest.h>

#include "platform/rtl/stringlist.h"
#include "platform/ui/graphics.h"

enum TShape { shCircle, shSquare, shTriangle };
KELMAR_ENUM(TShape, u"shCircle", u"shSquare", u"shTriangle");
using TShapes = Set<TShape>;

namespace {

class TPart : public TCollectionItem {
  KELMAR_CLASS(TPart, TCollectionItem)
 public:
  explicit TPart(TCollection* c) : TCollectionItem(c) {}
  String Label;
  int Size = 0;
  TFont* Font() const { return font_.get(); }
  void SetFont(TFont* f) { font_->Assign(f); }

 private:
  std::unique_ptr<TFont> font_ = std::make_unique<TFont>();
};

class TSample : public TComponent {
  KELMAR_CLASS(TSample, TComponent)
 public:
  explicit TSample(TComponent* owner) : TComponent(owner) {}
  int Count = 0;
  int64_t Big = 0;
  bool Flag = false;
  bool OnByDefault = true;
  TShape Shape = shCircle;
  TShapes Shapes;
  double Ratio = 0;
  String Caption;
  WideChar Mark = 0;
  TStrings* Lines() const { return lines_.get(); }
  void SetLines(TStrings* v) { lines_->Assign(v); }
  TCollection* Parts() const { return parts_.get(); }
  void SetParts(TCollection* v) { parts_->Assign(v); }

 private:
  std::unique_ptr<TStringList> lines_ = std::make_unique<TStringList>();
  std::unique_ptr<TCollection> parts_ = std::make_unique<TCollection>(TCollection::Of<TPart>());
};

}  // namespace

KELMAR_PUBLISH(TPart) {
  r.Prop(u"Label", &TPart::Label);
  r.Prop(u"Size", &TPart::Size).Default = 0;
  r.Prop(u"Font", &TPart::Font, &TPart::SetFont);
}

KELMAR_PUBLISH(TSample) {
  r.Prop(u"Count", &TSample::Count).Default = 0;
  r.Prop(u"Big", &TSample::Big).Default = 0;
  r.Prop(u"Flag", &TSample::Flag).Default = 0;
  r.Prop(u"OnByDefault", &TSample::OnByDefault).Default = 1;
  r.Prop(u"Shape", &TSample::Shape).Default = shCircle;
  r.Prop(u"Shapes", &TSample::Shapes).Default = 0;
  r.Prop(u"Ratio", &TSample::Ratio);
  r.Prop(u"Caption", &TSample::Caption);
  r.Prop(u"Mark", &TSample::Mark);
  r.Prop(u"Lines", &TSample::Lines, &TSample::SetLines);
  r.Prop(u"Parts", &TSample::Parts, &TSample::SetParts);
}

namespace {

std::vector<uint8_t> Bytes(TMemoryStream& s) {
  auto* p = static_cast<const uint8_t*>(s.Memory());
  return std::vector<uint8_t>(p, p + s.Size());
}

void Fill(TSample& s) {
  s.Count = -300;
  s.Big = int64_t{1} << 40;
  s.Flag = true;
  s.OnByDefault = false;
  s.Shape = shTriangle;
  s.Shapes = {shCircle, shTriangle};
  s.Ratio = 2.5;
  s.Caption = u"Cimp «Поле»";
  s.Mark = u'Ж';
  s.Lines()->SetText(u"one\ntwo");
  auto* p = static_cast<TPart*>(s.Parts()->Add());
  p->Label = u"first";
  p->Size = 70000;
  p->Font()->SetStyle({fsBold});
  static_cast<TPart*>(s.Parts()->Add())->Label = u"second";
}

}  // namespace

TEST(FilerTest, RoundTripsEveryKindOfProperty) {
  TSample out(nullptr);
  out.SetName(u"Sample1");
  Fill(out);
  TMemoryStream stream;
  WriteComponentToStream(&stream, &out);
  stream.SetPosition(0);
  TSample in(nullptr);
  ReadComponentFromStream(&stream, &in);
  EXPECT_EQ(in.Count, -300);
  EXPECT_EQ(in.Big, int64_t{1} << 40);
  EXPECT_TRUE(in.Flag);
  EXPECT_FALSE(in.OnByDefault);
  EXPECT_EQ(in.Shape, shTriangle);
  EXPECT_EQ(in.Shapes, (TShapes{shCircle, shTriangle}));
  EXPECT_DOUBLE_EQ(in.Ratio, 2.5);
  EXPECT_EQ(in.Caption, u"Cimp «Поле»");
  EXPECT_EQ(in.Mark, u'Ж');
  EXPECT_EQ(in.Lines()->Count(), 2);
  EXPECT_EQ(in.Lines()->Strings(1), u"two");
  ASSERT_EQ(in.Parts()->Count(), 2);
  auto* p = static_cast<TPart*>(in.Parts()->Items(0));
  EXPECT_EQ(p->Label, u"first");
  EXPECT_EQ(p->Size, 70000);
  EXPECT_EQ(p->Font()->Style(), (TFontStyles{fsBold}));
  EXPECT_EQ(static_cast<TPart*>(in.Parts()->Items(1))->Label, u"second");
  EXPECT_EQ(stream.Position(), stream.Size());
}

TEST(FilerTest, WritesTheHistoricalBytes) {
  TSample s(nullptr);
  s.Count = 5;
  s.Flag = true;
  s.Shape = shSquare;
  TMemoryStream stream;
  WriteComponentToStream(&stream, &s);
  std::vector<uint8_t> expected = {'T', 'P', 'F', '0',
                                   7, 'T', 'S', 'a', 'm', 'p', 'l', 'e',  // class
                                   0,                                       // name
                                   5, 'C', 'o', 'u', 'n', 't', vaInt8, 5,
                                   4, 'F', 'l', 'a', 'g', vaTrue,
                                   5, 'S', 'h', 'a', 'p', 'e', vaIdent, 8, 's', 'h', 'S', 'q', 'u', 'a', 'r', 'e',
                                   5, 'P', 'a', 'r', 't', 's', vaCollection, vaNull,
                                   vaNull, vaNull};
  EXPECT_EQ(Bytes(stream), expected);
}

TEST(FilerTest, ExtendedFloatsAndWideIntegers) {
  TMemoryStream stream;
  TWriter w(&stream);
  for (double d : {0.0, 1.0, -2.5, 1e300, 5e-324, 0.1}) w.WriteFloat(d);
  for (int64_t i : {int64_t{-129}, int64_t{40000}, int64_t{-3000000000LL}}) w.WriteInteger(i);
  stream.SetPosition(0);
  TReader r(&stream);
  for (double d : {0.0, 1.0, -2.5, 1e300, 5e-324, 0.1}) EXPECT_EQ(r.ReadFloat(), d);
  EXPECT_EQ(r.NextValue(), vaInt16);
  EXPECT_EQ(r.ReadInteger(), -129);
  EXPECT_EQ(r.NextValue(), vaInt32);
  EXPECT_EQ(r.ReadInteger(), 40000);
  EXPECT_EQ(r.NextValue(), vaInt64);
  EXPECT_EQ(r.ReadInteger(), -3000000000LL);
  // 1.0 as the x87 format: mantissa 0x8000000000000000, exponent 0x3FFF.
  const uint8_t* raw = static_cast<const uint8_t*>(stream.Memory()) + 11 + 1;
  EXPECT_EQ(raw[7], 0x80);
  EXPECT_EQ(raw[8], 0xFF);
  EXPECT_EQ(raw[9], 0x3F);
}

TEST(FilerTest, UnknownPropertiesAreSkipped) {
  TMemoryStream stream;
  TWriter w(&stream);
  w.WriteSignature();
  w.WriteStr(u"TSample");
  w.WriteStr(u"");
  w.WriteStr(u"Gone");
  w.WriteListBegin();
  w.WriteString(u"x");
  w.WriteInteger(1);
  w.WriteListEnd();
  w.WriteStr(u"Count");
  w.WriteString(u"not a number");  // wrong kind: skipped
  w.WriteStr(u"Shape");
  w.WriteIdent(u"shNothing");  // unknown element: skipped
  w.WriteStr(u"Nested.Deep");
  w.WriteInteger(3);
  w.WriteStr(u"Caption");
  w.WriteString(u"kept");
  w.WriteListEnd();
  w.WriteListEnd();
  stream.SetPosition(0);
  TSample s(nullptr);
  ReadComponentFromStream(&stream, &s);
  EXPECT_EQ(s.Caption, u"kept");
  EXPECT_EQ(s.Count, 0);
  EXPECT_EQ(s.Shape, shCircle);
}

TEST(FilerTest, BadStreamsRaiseAtEveryCut) {
  TSample out(nullptr);
  Fill(out);
  TMemoryStream full;
  WriteComponentToStream(&full, &out);
  std::vector<uint8_t> bytes = Bytes(full);
  for (size_t cut = 0; cut < bytes.size(); ++cut) {
    TMemoryStream part;
    part.WriteBuffer(bytes.data(), static_cast<int64_t>(cut));
    part.SetPosition(0);
    TSample in(nullptr);
    EXPECT_THROW(ReadComponentFromStream(&part, &in), EReadError) << "cut at " << cut;
  }
  TMemoryStream wrongClass;
  TComponent other(nullptr);
  WriteComponentToStream(&wrongClass, &other);
  wrongClass.SetPosition(0);
  TSample in(nullptr);
  EXPECT_THROW(ReadComponentFromStream(&wrongClass, &in), EReadError);
}

TEST(FilerTest, HugeLengthsAreRefusedNotAllocated) {
  TMemoryStream stream;
  TWriter w(&stream);
  w.WriteValueType(vaLString);
  uint8_t len[4] = {0xFF, 0xFF, 0xFF, 0x7F};
  stream.WriteBuffer(len, 4);
  stream.SetPosition(0);
  TReader r(&stream);
  EXPECT_THROW(r.ReadString(), EReadError);
  TMemoryStream bad;
  uint8_t type = 200;
  bad.WriteBuffer(&type, 1);
  bad.SetPosition(0);
  TReader r2(&bad);
  EXPECT_THROW(r2.SkipValue(), EReadError);
}
