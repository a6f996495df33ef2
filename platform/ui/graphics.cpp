#include "platform/ui/graphics.h"

#include <cmath>

#include "platform/rtl/sysutils.h"

namespace {

struct TColorName {
  TColor Color;
  const char16_t* Name;
};
constexpr TColorName kColorNames[] = {
    {clBlack, u"clBlack"},       {clMaroon, u"clMaroon"},     {clGreen, u"clGreen"},
    {clOlive, u"clOlive"},       {clNavy, u"clNavy"},         {clPurple, u"clPurple"},
    {clTeal, u"clTeal"},         {clGray, u"clGray"},         {clSilver, u"clSilver"},
    {clRed, u"clRed"},           {clLime, u"clLime"},         {clYellow, u"clYellow"},
    {clBlue, u"clBlue"},         {clFuchsia, u"clFuchsia"},   {clAqua, u"clAqua"},
    {clWhite, u"clWhite"},       {clMoneyGreen, u"clMoneyGreen"}, {clSkyBlue, u"clSkyBlue"},
    {clCream, u"clCream"},       {clMedGray, u"clMedGray"},   {clNone, u"clNone"},
    {clDefault, u"clDefault"},   {clScrollBar, u"clScrollBar"}, {clBackground, u"clBackground"},
    {clActiveCaption, u"clActiveCaption"}, {clInactiveCaption, u"clInactiveCaption"},
    {clMenu, u"clMenu"},         {clWindow, u"clWindow"},     {clWindowFrame, u"clWindowFrame"},
    {clMenuText, u"clMenuText"}, {clWindowText, u"clWindowText"}, {clCaptionText, u"clCaptionText"},
    {clHighlight, u"clHighlight"}, {clHighlightText, u"clHighlightText"}, {clBtnFace, u"clBtnFace"},
    {clBtnShadow, u"clBtnShadow"}, {clGrayText, u"clGrayText"}, {clBtnText, u"clBtnText"},
    {clBtnHighlight, u"clBtnHighlight"}, {cl3DDkShadow, u"cl3DDkShadow"}, {cl3DLight, u"cl3DLight"},
    {clInfoText, u"clInfoText"}, {clInfoBk, u"clInfoBk"},
};

// The classic Windows palette for the system colours used above.
TColor SystemRGB(int index) {
  switch (index) {
    case 0: return RGB(200, 200, 200);
    case 1: return RGB(0, 128, 128);
    case 2: return RGB(0, 0, 128);
    case 3: return RGB(128, 128, 128);
    case 4: case 15: return RGB(212, 208, 200);
    case 5: case 14: case 20: return clWhite;
    case 6: case 7: case 8: case 18: case 23: return clBlack;
    case 9: return clWhite;
    case 13: return RGB(10, 36, 106);
    case 16: case 17: return RGB(128, 128, 128);
    case 21: return RGB(64, 64, 64);
    case 22: return RGB(212, 208, 200);
    case 24: return RGB(255, 255, 225);
    default: return clBlack;
  }
}

}  // namespace

TColor ColorToRGB(TColor color) {
  uint32_t u = static_cast<uint32_t>(color);
  if ((u & 0xFF000000u) == 0xFF000000u) return SystemRGB(static_cast<int>(u & 0xFF));
  return color;
}

String ColorToString(TColor color) {
  for (const TColorName& c : kColorNames)
    if (c.Color == color) return c.Name;
  return u"$" + IntToHex(static_cast<uint32_t>(color), 8);
}

TColor StringToColor(const String& text) {
  for (const TColorName& c : kColorNames)
    if (SameText(text, c.Name)) return c.Color;
  int64_t v = 0;
  if (!TryStrToInt64(text, v)) throw EConvertError(u"'" + text + u"' is not a valid color value");
  return static_cast<TColor>(static_cast<uint32_t>(v));
}

// ---- Tools -------------------------------------------------------------------

KELMAR_PUBLISH(TGraphicsObject) {}

KELMAR_PUBLISH(TFont) {
  r.Prop(u"Charset", &TFont::Charset, &TFont::SetCharset).Default = 1;
  r.Prop(u"Color", &TFont::Color, &TFont::SetColor).Default = clWindowText;
  r.Prop(u"Height", &TFont::Height, &TFont::SetHeight);
  r.Prop(u"Name", &TFont::Name, &TFont::SetName);
  r.Prop(u"Pitch", &TFont::Pitch, &TFont::SetPitch).Default = fpDefault;
  r.Prop(u"Style", &TFont::Style, &TFont::SetStyle).Default = 0;
}

int TFont::Height() const { return -static_cast<int>(std::lround(size_ * 96.0 / 72.0)); }

void TFont::SetHeight(int pixels) { SetSize(static_cast<int>(std::lround(std::abs(pixels) * 72.0 / 96.0))); }

void TFont::Assign(TPersistent* Source) {
  if (auto* f = dynamic_cast<TFont*>(Source)) {
    if (SameAs(*f)) return;
    name_ = f->name_;
    size_ = f->size_;
    color_ = f->color_;
    style_ = f->style_;
    pitch_ = f->pitch_;
    charset_ = f->charset_;
    Changed();
    return;
  }
  inherited::Assign(Source);
}

bool TFont::SameAs(const TFont& o) const {
  return name_ == o.name_ && size_ == o.size_ && color_ == o.color_ && style_ == o.style_ && pitch_ == o.pitch_ &&
         charset_ == o.charset_;
}

KELMAR_PUBLISH(TBrush) {
  r.Prop(u"Color", &TBrush::Color, &TBrush::SetColor).Default = clWhite;
  r.Prop(u"Style", &TBrush::Style, &TBrush::SetStyle).Default = bsSolid;
}

void TBrush::Assign(TPersistent* Source) {
  if (auto* b = dynamic_cast<TBrush*>(Source)) {
    color_ = b->color_;
    style_ = b->style_;
    Changed();
    return;
  }
  inherited::Assign(Source);
}

KELMAR_PUBLISH(TPen) {
  r.Prop(u"Color", &TPen::Color, &TPen::SetColor).Default = clBlack;
  r.Prop(u"Style", &TPen::Style, &TPen::SetStyle).Default = psSolid;
  r.Prop(u"Width", &TPen::Width, &TPen::SetWidth).Default = 1;
}

void TPen::Assign(TPersistent* Source) {
  if (auto* p = dynamic_cast<TPen*>(Source)) {
    color_ = p->color_;
    width_ = p->width_;
    style_ = p->style_;
    Changed();
    return;
  }
  inherited::Assign(Source);
}

// ---- Canvas ----------------------------------------------------------------

KELMAR_PUBLISH(TCanvas) {}

TCanvas::TCanvas() : font_(std::make_unique<TFont>()), brush_(std::make_unique<TBrush>()), pen_(std::make_unique<TPen>()) {}

TCanvasOp TCanvas::Record(TCanvasOpKind kind, const TRect& r) const {
  TCanvasOp op;
  op.Kind = kind;
  op.Rect = r;
  op.BrushColor = brush_->Color();
  op.BrushStyle = brush_->Style();
  op.PenColor = pen_->Color();
  op.FontColor = font_->Color();
  op.FontStyle = font_->Style();
  op.FontName = font_->Name();
  op.FontSize = font_->Size();
  return op;
}

void TCanvas::FillRect(const TRect& r) { ops_.push_back(Record(coFillRect, r)); }
void TCanvas::FrameRect(const TRect& r) { ops_.push_back(Record(coFrameRect, r)); }
void TCanvas::Rectangle(const TRect& r) { ops_.push_back(Record(coRectangle, r)); }
void TCanvas::DrawFocusRect(const TRect& r) { ops_.push_back(Record(coFocusRect, r)); }

void TCanvas::LineTo(int x, int y) {
  ops_.push_back(Record(coLine, Rect(penPos_.X, penPos_.Y, x, y)));
  penPos_ = {x, y};
}

void TCanvas::TextOut(int x, int y, const String& text) {
  TCanvasOp op = Record(coTextOut, Bounds(x, y, TextWidth(text), TextHeight(text)));
  op.Origin = {x, y};
  op.Text = text;
  ops_.push_back(std::move(op));
  penPos_ = {x + TextWidth(text), y};
}

void TCanvas::TextRect(const TRect& r, int x, int y, const String& text) {
  TCanvasOp op = Record(coTextRect, r);
  op.Origin = {x, y};
  op.Text = text;
  ops_.push_back(std::move(op));
}

void TCanvas::TextRect(const TRect& r, const String& text, TTextFormat format) {
  TCanvasOp op = Record(coTextRect, r);
  int w = TextWidth(text), h = TextHeight(text);
  op.Origin.X = format.Contains(tfRight)    ? r.Right - w
                : format.Contains(tfCenter) ? r.Left + (r.Width() - w) / 2
                                            : r.Left;
  op.Origin.Y = format.Contains(tfBottom)           ? r.Bottom - h
                : format.Contains(tfVerticalCenter) ? r.Top + (r.Height() - h) / 2
                                                    : r.Top;
  op.Text = text;
  op.Format = format;
  ops_.push_back(std::move(op));
}

int TCanvas::TextWidth(const String& text) const {
  int charWidth = std::max(1, -font_->Height() / 2);
  return text.Length() * charWidth;
}

int TCanvas::TextHeight(const String&) const { return -font_->Height() + 3; }

const TCanvasOp* TCanvas::FindText(const String& text) const {
  for (const TCanvasOp& op : ops_)
    if ((op.Kind == coTextOut || op.Kind == coTextRect) && op.Text == text) return &op;
  return nullptr;
}
