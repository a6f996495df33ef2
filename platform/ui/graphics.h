// Colours, fonts, brushes, pens and the recording canvas.
//
// Nothing is rasterised here. A TCanvas records each primitive with the
// font, brush and pen in force, so that a front end renders the list and a
// test reads what was drawn.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/rtl/classes.h"
#include "platform/rtl/events.h"

// ---- Geometry --------------------------------------------------------------

struct TPoint {
  int X = 0, Y = 0;
  bool operator==(const TPoint&) const = default;
};

struct TRect {
  int Left = 0, Top = 0, Right = 0, Bottom = 0;
  int Width() const { return Right - Left; }
  int Height() const { return Bottom - Top; }
  bool Contains(TPoint p) const { return p.X >= Left && p.X < Right && p.Y >= Top && p.Y < Bottom; }
  bool IsEmpty() const { return Right <= Left || Bottom <= Top; }
  bool operator==(const TRect&) const = default;
};

inline TPoint Point(int x, int y) { return {x, y}; }
inline TRect Rect(int left, int top, int right, int bottom) { return {left, top, right, bottom}; }
inline TRect Bounds(int left, int top, int width, int height) { return {left, top, left + width, top + height}; }
inline bool PtInRect(const TRect& r, TPoint p) { return r.Contains(p); }

// ---- Colours ---------------------------------------------------------------

// $00BBGGRR, or a system colour ($FF0000nn), clNone or clDefault.
using TColor = int32_t;

constexpr TColor SystemColor(int index) { return static_cast<TColor>(0xFF000000u | static_cast<uint32_t>(index)); }

constexpr TColor clBlack = 0x000000;
constexpr TColor clMaroon = 0x000080;
constexpr TColor clGreen = 0x008000;
constexpr TColor clOlive = 0x008080;
constexpr TColor clNavy = 0x800000;
constexpr TColor clPurple = 0x800080;
constexpr TColor clTeal = 0x808000;
constexpr TColor clGray = 0x808080;
constexpr TColor clSilver = 0xC0C0C0;
constexpr TColor clRed = 0x0000FF;
constexpr TColor clLime = 0x00FF00;
constexpr TColor clYellow = 0x00FFFF;
constexpr TColor clBlue = 0xFF0000;
constexpr TColor clFuchsia = 0xFF00FF;
constexpr TColor clAqua = 0xFFFF00;
constexpr TColor clWhite = 0xFFFFFF;
constexpr TColor clMoneyGreen = 0xC0DCC0;
constexpr TColor clSkyBlue = 0xF0CAA6;
constexpr TColor clCream = 0xF0FBFF;
constexpr TColor clMedGray = 0xA4A0A0;
constexpr TColor clNone = 0x1FFFFFFF;
constexpr TColor clDefault = 0x20000000;

constexpr TColor clScrollBar = SystemColor(0);
constexpr TColor clBackground = SystemColor(1);
constexpr TColor clActiveCaption = SystemColor(2);
constexpr TColor clInactiveCaption = SystemColor(3);
constexpr TColor clMenu = SystemColor(4);
constexpr TColor clWindow = SystemColor(5);
constexpr TColor clWindowFrame = SystemColor(6);
constexpr TColor clMenuText = SystemColor(7);
constexpr TColor clWindowText = SystemColor(8);
constexpr TColor clCaptionText = SystemColor(9);
constexpr TColor clHighlight = SystemColor(13);
constexpr TColor clHighlightText = SystemColor(14);
constexpr TColor clBtnFace = SystemColor(15);
constexpr TColor clBtnShadow = SystemColor(16);
constexpr TColor clGrayText = SystemColor(17);
constexpr TColor clBtnText = SystemColor(18);
constexpr TColor clBtnHighlight = SystemColor(20);
constexpr TColor cl3DDkShadow = SystemColor(21);
constexpr TColor cl3DLight = SystemColor(22);
constexpr TColor clInfoText = SystemColor(23);
constexpr TColor clInfoBk = SystemColor(24);

// The RGB value of a colour; system colours by a fixed classic palette.
TColor ColorToRGB(TColor color);
// "clRed", "clBtnFace", or "$00BBGGRR" for an unnamed colour.
String ColorToString(TColor color);
// Accepts the names and "$hex" or decimal numbers; EConvertError otherwise.
TColor StringToColor(const String& text);
inline uint8_t GetRValue(TColor c) { return static_cast<uint8_t>(c & 0xFF); }
inline uint8_t GetGValue(TColor c) { return static_cast<uint8_t>((c >> 8) & 0xFF); }
inline uint8_t GetBValue(TColor c) { return static_cast<uint8_t>((c >> 16) & 0xFF); }
inline TColor RGB(int r, int g, int b) { return (r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16); }

// ---- Font, brush, pen ------------------------------------------------------

enum TFontStyle { fsBold, fsItalic, fsUnderline, fsStrikeOut };
KELMAR_ENUM(TFontStyle, u"fsBold", u"fsItalic", u"fsUnderline", u"fsStrikeOut");
using TFontStyles = Set<TFontStyle>;

enum TFontPitch { fpDefault, fpVariable, fpFixed };
KELMAR_ENUM(TFontPitch, u"fpDefault", u"fpVariable", u"fpFixed");

enum TBrushStyle { bsSolid, bsClear, bsHorizontal, bsVertical, bsFDiagonal, bsBDiagonal, bsCross, bsDiagCross };
KELMAR_ENUM(TBrushStyle, u"bsSolid", u"bsClear", u"bsHorizontal", u"bsVertical", u"bsFDiagonal", u"bsBDiagonal",
            u"bsCross", u"bsDiagCross");

enum TPenStyle { psSolid, psDash, psDot, psDashDot, psDashDotDot, psClear, psInsideFrame };
KELMAR_ENUM(TPenStyle, u"psSolid", u"psDash", u"psDot", u"psDashDot", u"psDashDotDot", u"psClear", u"psInsideFrame");

// Base of the three drawing tools: fires OnChange when a property changes.
class TGraphicsObject : public TPersistent {
  KELMAR_CLASS(TGraphicsObject, TPersistent)
 public:
  TNotifyEvent OnChange;

 protected:
  void Changed() { OnChange(this); }
  template <class T>
  void Update(T& field, const T& value) {
    if (field == value) return;
    field = value;
    Changed();
  }
};

class TFont : public TGraphicsObject {
  KELMAR_CLASS(TFont, TGraphicsObject)
 public:

  const String& Name() const { return name_; }
  void SetName(const String& v) { Update(name_, v); }
  // Points. Height is the pixel height at 96 pixels per inch, negative as
  // Windows gives it.
  int Size() const { return size_; }
  void SetSize(int v) { Update(size_, v); }
  int Height() const;
  void SetHeight(int pixels);
  TColor Color() const { return color_; }
  void SetColor(TColor v) { Update(color_, v); }
  TFontStyles Style() const { return style_; }
  void SetStyle(TFontStyles v) { Update(style_, v); }
  TFontPitch Pitch() const { return pitch_; }
  void SetPitch(TFontPitch v) { Update(pitch_, v); }
  int Charset() const { return charset_; }
  void SetCharset(int v) { Update(charset_, v); }

  void Assign(TPersistent* Source) override;
  bool SameAs(const TFont& other) const;

 private:
  String name_ = u"Tahoma";
  int size_ = 8;
  TColor color_ = clWindowText;
  TFontStyles style_;
  TFontPitch pitch_ = fpDefault;
  int charset_ = 1;  // DEFAULT_CHARSET
};

class TBrush : public TGraphicsObject {
  KELMAR_CLASS(TBrush, TGraphicsObject)
 public:
  TColor Color() const { return color_; }
  void SetColor(TColor v) { Update(color_, v); }
  TBrushStyle Style() const { return style_; }
  void SetStyle(TBrushStyle v) { Update(style_, v); }
  void Assign(TPersistent* Source) override;

 private:
  TColor color_ = clWhite;
  TBrushStyle style_ = bsSolid;
};

class TPen : public TGraphicsObject {
  KELMAR_CLASS(TPen, TGraphicsObject)
 public:
  TColor Color() const { return color_; }
  void SetColor(TColor v) { Update(color_, v); }
  int Width() const { return width_; }
  void SetWidth(int v) { Update(width_, v); }
  TPenStyle Style() const { return style_; }
  void SetStyle(TPenStyle v) { Update(style_, v); }
  void Assign(TPersistent* Source) override;

 private:
  TColor color_ = clBlack;
  int width_ = 1;
  TPenStyle style_ = psSolid;
};

// ---- Canvas ----------------------------------------------------------------

enum TTextFormats {
  tfBottom, tfCalcRect, tfCenter, tfEditControl, tfEndEllipsis, tfPathEllipsis, tfExpandTabs,
  tfExternalLeading, tfLeft, tfModifyString, tfNoClip, tfNoPrefix, tfRight, tfRtlReading,
  tfSingleLine, tfTop, tfVerticalCenter, tfWordBreak
};
using TTextFormat = Set<TTextFormats>;

enum TCanvasOpKind { coFillRect, coFrameRect, coRectangle, coTextOut, coTextRect, coLine, coFocusRect };

// One recorded primitive, with the tools as they were when it was drawn.
struct TCanvasOp {
  TCanvasOpKind Kind = coFillRect;
  TRect Rect;          // the cell or shape; for lines From..To as Left,Top..Right,Bottom
  TPoint Origin;       // where text starts (TextOut, TextRect)
  String Text;
  TTextFormat Format;  // TextRect with a format
  TColor BrushColor = clWhite;
  TBrushStyle BrushStyle = bsSolid;
  TColor PenColor = clBlack;
  TColor FontColor = clWindowText;
  TFontStyles FontStyle;
  String FontName;
  int FontSize = 0;
};

class TCanvas : public TPersistent {
  KELMAR_CLASS(TCanvas, TPersistent)
 public:
  TCanvas();
  TCanvas(const TCanvas&) = delete;
  TCanvas& operator=(const TCanvas&) = delete;

  TFont* Font() const { return font_.get(); }
  TBrush* Brush() const { return brush_.get(); }
  TPen* Pen() const { return pen_.get(); }
  void SetFont(TFont* v) { font_->Assign(v); }
  void SetBrush(TBrush* v) { brush_->Assign(v); }
  void SetPen(TPen* v) { pen_->Assign(v); }
  TPoint PenPos() const { return penPos_; }

  void FillRect(const TRect& r);
  void FrameRect(const TRect& r);
  void Rectangle(const TRect& r);
  void DrawFocusRect(const TRect& r);
  void MoveTo(int x, int y) { penPos_ = {x, y}; }
  void LineTo(int x, int y);
  void TextOut(int x, int y, const String& text);
  // Text clipped to a rectangle, starting at (x, y).
  void TextRect(const TRect& r, int x, int y, const String& text);
  // Text aligned in a rectangle by the format.
  void TextRect(const TRect& r, const String& text, TTextFormat format);

  // A fixed metric, so that layouts computed from text are reproducible:
  // each character is about half the font's pixel height wide.
  int TextWidth(const String& text) const;
  int TextHeight(const String& text) const;

  const std::vector<TCanvasOp>& Ops() const { return ops_; }
  void ClearOps() { ops_.clear(); }
  // The first text drawn that equals `text`, or null.
  const TCanvasOp* FindText(const String& text) const;

 private:
  TCanvasOp Record(TCanvasOpKind kind, const TRect& r) const;

  std::unique_ptr<TFont> font_;
  std::unique_ptr<TBrush> brush_;
  std::unique_ptr<TPen> pen_;
  TPoint penPos_;
  std::vector<TCanvasOp> ops_;
};
