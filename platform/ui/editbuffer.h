// One line of editable text with a caret and a selection: what the edit
// boxes, the combo box's edit part and the grid's in-place editor share.
//
// Positions are 0-based offsets, as SelStart is: the caret stands before
// the character at that offset. The selection runs from Anchor to Caret in
// either direction.
#pragma once

#include <algorithm>

#include "platform/rtl/ustring.h"

class TEditBuffer {
 public:
  const String& Text() const { return text_; }
  // Replaces the text; the caret goes to the start, nothing selected.
  void SetText(const String& text) {
    text_ = text;
    caret_ = anchor_ = 0;
  }

  int SelStart() const { return std::min(caret_, anchor_); }
  int SelLength() const { return std::abs(caret_ - anchor_); }
  void SetSelStart(int pos) { caret_ = anchor_ = Clamp(pos); }
  void SetSelLength(int len) {
    anchor_ = SelStart();
    caret_ = Clamp(anchor_ + std::max(0, len));
  }
  String SelText() const { return text_.SubString(SelStart() + 1, SelLength()); }
  void SelectAll() {
    anchor_ = 0;
    caret_ = text_.Length();
  }

  // Puts `s` in place of the selection; the caret ends behind it.
  void ReplaceSelection(const String& s) {
    int start = SelStart();
    text_.Delete(start + 1, SelLength());
    text_.Insert(s, start + 1);
    caret_ = anchor_ = start + s.Length();
  }
  // Backspace and Delete: the selection, or one character.
  bool DeleteBack() {
    if (SelLength() == 0) {
      if (caret_ == 0) return false;
      anchor_ = caret_ - 1;
    }
    ReplaceSelection(String());
    return true;
  }
  bool DeleteForward() {
    if (SelLength() == 0) {
      if (caret_ >= text_.Length()) return false;
      anchor_ = caret_ + 1;
    }
    ReplaceSelection(String());
    return true;
  }

  // Caret moves; `extend` keeps the anchor (Shift held).
  void MoveTo(int pos, bool extend) {
    caret_ = Clamp(pos);
    if (!extend) anchor_ = caret_;
  }
  void Left(bool extend) {
    if (!extend && SelLength() > 0) MoveTo(SelStart(), false);
    else MoveTo(caret_ - 1, extend);
  }
  void Right(bool extend) {
    if (!extend && SelLength() > 0) MoveTo(SelStart() + SelLength(), false);
    else MoveTo(caret_ + 1, extend);
  }
  void Home(bool extend) { MoveTo(0, extend); }
  void End(bool extend) { MoveTo(text_.Length(), extend); }
  int Caret() const { return caret_; }

 private:
  int Clamp(int pos) const { return std::clamp(pos, 0, text_.Length()); }

  String text_;
  int caret_ = 0;
  int anchor_ = 0;
};
