#include "platform/ui/texteditor.h"

#include <algorithm>

#include "platform/os/clipboard.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/textlines.h"

// ---- TSynEditSearch -------------------------------------------------------------------

KELMAR_PUBLISH(TSynEditSearch) {}

namespace {
bool IsWordChar(WideChar c) {
  return c == u'_' || (c >= u'0' && c <= u'9') || UpperCase(String(c)) != LowerCase(String(c));
}
}  // namespace

int TSynEditSearch::FindAll(const String& text) {
  results_.clear();
  if (pattern_.IsEmpty()) return 0;
  String hay = sensitive_ ? text : LowerCase(text);
  String needle = sensitive_ ? pattern_ : LowerCase(pattern_);
  int n = needle.Length();
  for (int pos = PosEx(needle, hay, 1); pos > 0; pos = PosEx(needle, hay, pos)) {
    bool ok = true;
    if (whole_) {
      if (pos > 1 && IsWordChar(text[pos - 1])) ok = false;
      if (pos + n <= text.Length() && IsWordChar(text[pos + n])) ok = false;
    }
    if (ok) {
      results_.push_back(pos);
      pos += n;
    } else {
      pos += 1;
    }
  }
  return ResultCount();
}

int TSynEditSearch::Results(int index) const {
  if (index < 0 || index >= ResultCount()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return results_[static_cast<size_t>(index)];
}

int TSynEditSearch::Lengths(int index) const {
  Results(index);
  return pattern_.Length();
}

KELMAR_PUBLISH(TSynSQLSyn) { r.Prop(u"SQLDialect", &TSynSQLSyn::SQLDialect, &TSynSQLSyn::SetSQLDialect); }

// ---- TCustomSynEdit --------------------------------------------------------------------

KELMAR_PUBLISH(TCustomSynEdit) {
  r.Prop(u"ActiveLineColor", &TCustomSynEdit::ActiveLineColor, &TCustomSynEdit::SetActiveLineColor);
  r.Prop(u"Highlighter", &TCustomSynEdit::Highlighter, &TCustomSynEdit::SetHighlighter);
  r.Prop(u"Lines", &TCustomSynEdit::Lines, &TCustomSynEdit::SetLines);
  r.Prop(u"Options", &TCustomSynEdit::Options, &TCustomSynEdit::SetOptions);
  r.Prop(u"ReadOnly", &TCustomSynEdit::ReadOnly, &TCustomSynEdit::SetReadOnly).Default = 0;
  r.Prop(u"RightEdge", &TCustomSynEdit::RightEdge, &TCustomSynEdit::SetRightEdge).Default = 80;
  r.Prop(u"WantTabs", &TCustomSynEdit::WantTabs, &TCustomSynEdit::SetWantTabs);
  r.Prop(u"OnChange", &TCustomSynEdit::OnChange);
}

TCustomSynEdit::TCustomSynEdit(TComponent* AOwner)
    : TCustomControl(AOwner),
      lines_(std::make_unique<TTextLines>([this] { return Text(); }, [this](const String& t) { SetText(t); })),
      ownEngine_(std::make_unique<TSynEditSearch>(nullptr)) {
  SetTabStop(true);
  SetColor(clWindow);
  SetBounds(0, 0, 200, 150);
}

TCustomSynEdit::~TCustomSynEdit() = default;

void TCustomSynEdit::Changed() {
  modified_ = true;
  Invalidate();
  OnChange(this);
}

void TCustomSynEdit::SetHighlighter(TSynSQLSyn* v) {
  if (highlighter_) highlighter_->RemoveFreeNotification(this);
  highlighter_ = v;
  if (v) v->FreeNotification(this);
}

void TCustomSynEdit::SetSearchEngine(TSynEditSearch* v) {
  if (searchEngine_) searchEngine_->RemoveFreeNotification(this);
  searchEngine_ = v;
  if (v) v->FreeNotification(this);
}

void TCustomSynEdit::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation != opRemove) return;
  if (AComponent == highlighter_) highlighter_ = nullptr;
  if (AComponent == searchEngine_) searchEngine_ = nullptr;
}

std::vector<int> TCustomSynEdit::LineStarts() const {
  std::vector<int> starts{0};
  const String& text = buffer_.Text();
  for (int i = 1; i <= text.Length(); ++i) {
    WideChar c = text[i];
    if (c == u'\r' && i < text.Length() && text[i + 1] == u'\n') ++i;
    if (c == u'\r' || c == u'\n') starts.push_back(i);
  }
  return starts;
}

int TCustomSynEdit::LineCount() const { return static_cast<int>(TTextLines::SplitText(buffer_.Text()).size()); }

String TCustomSynEdit::LineText(int line) const {
  auto lines = TTextLines::SplitText(buffer_.Text());
  return line >= 1 && line <= static_cast<int>(lines.size()) ? lines[static_cast<size_t>(line - 1)] : String();
}

TBufferCoord TCustomSynEdit::CharIndexToRowCol(int index) const {
  auto starts = LineStarts();
  index = std::clamp(index, 0, buffer_.Text().Length());
  int line = static_cast<int>(std::upper_bound(starts.begin(), starts.end(), index) - starts.begin());
  return {index - starts[static_cast<size_t>(line - 1)] + 1, line};
}

int TCustomSynEdit::RowColToCharIndex(TBufferCoord coord) const {
  auto starts = LineStarts();
  int line = std::clamp(coord.Line, 1, static_cast<int>(starts.size()));
  int start = starts[static_cast<size_t>(line - 1)];
  int length = LineText(line).Length();
  return start + std::clamp(coord.Char - 1, 0, length);
}

void TCustomSynEdit::SetSelText(const String& v) {
  buffer_.ReplaceSelection(v);
  Changed();
}

void TCustomSynEdit::Type(const String& s) {
  if (readOnly_) return;
  buffer_.ReplaceSelection(s);
  Changed();
}

void TCustomSynEdit::CopyToClipboard() {
  if (SelAvail()) Clipboard()->SetAsText(SelText());
}

void TCustomSynEdit::CutToClipboard() {
  if (readOnly_ || !SelAvail()) return;
  CopyToClipboard();
  Type(String());
}

void TCustomSynEdit::PasteFromClipboard() { Type(Clipboard()->AsText()); }

int TCustomSynEdit::SearchReplace(const String& ASearch, const String& AReplace, TSynSearchOptions AOptions) {
  TSynEditSearch* engine = SearchEngine();
  engine->SetPattern(ASearch);
  engine->SetSensitive(AOptions.Contains(ssoMatchCase));
  engine->SetWhole(AOptions.Contains(ssoWholeWord));
  bool backwards = AOptions.Contains(ssoBackwards);
  bool replace = AOptions.Contains(ssoReplace) || AOptions.Contains(ssoReplaceAll);
  bool all = AOptions.Contains(ssoReplaceAll);
  bool prompt = AOptions.Contains(ssoPrompt);

  // The range searched, as 0-based offsets [lo, hi).
  int lo = 0, hi = buffer_.Text().Length();
  if (AOptions.Contains(ssoSelectedOnly) && SelAvail()) {
    lo = SelStart();
    hi = SelStart() + SelLength();
  } else if (!AOptions.Contains(ssoEntireScope)) {
    if (backwards) hi = SelStart();
    else lo = SelAvail() ? SelStart() + SelLength() : SelStart();
  }
  engine->FindAll(buffer_.Text().SubString(lo + 1, hi - lo));
  std::vector<int> hits;
  for (int i = 0; i < engine->ResultCount(); ++i) hits.push_back(lo + engine->Results(i) - 1);
  if (backwards) std::reverse(hits.begin(), hits.end());

  int count = 0;
  int shift = 0;  // how far replacements moved later hits
  for (int hit : hits) {
    int at = backwards ? hit : hit + shift;
    buffer_.SetSelStart(at);
    buffer_.SetSelLength(ASearch.Length());
    if (!replace) return 1;
    TSynReplaceAction action = raReplace;
    if (prompt && OnReplaceText) {
      TBufferCoord where = CharIndexToRowCol(at);
      OnReplaceText(this, ASearch, AReplace, where.Line, where.Char, action);
    }
    if (action == raCancel) break;
    if (action == raSkip) continue;
    if (action == raReplaceAll) {
      all = true;
      prompt = false;
    }
    buffer_.ReplaceSelection(AReplace);
    shift += AReplace.Length() - ASearch.Length();
    ++count;
    if (!all) break;
  }
  if (count > 0) Changed();
  return count;
}

LRESULT TCustomSynEdit::GetDlgCode() const {
  return DLGC_WANTCHARS | DLGC_WANTARROWS | DLGC_WANTALLKEYS | (wantTabs_ ? DLGC_WANTTAB : 0);
}

bool TCustomSynEdit::EditKey(Word key, bool shift, bool ctrl) {
  TBufferCoord caret = CaretXY();
  int page = std::max(1, ClientHeight() / 16);
  auto toLine = [&](int line) {
    buffer_.MoveTo(RowColToCharIndex({caret.Char, std::clamp(line, 1, std::max(1, LineCount()))}), shift);
  };
  switch (key) {
    case VK_LEFT: buffer_.Left(shift); return true;
    case VK_RIGHT: buffer_.Right(shift); return true;
    case VK_UP: toLine(caret.Line - 1); return true;
    case VK_DOWN: toLine(caret.Line + 1); return true;
    case VK_PRIOR: toLine(caret.Line - page); return true;
    case VK_NEXT: toLine(caret.Line + page); return true;
    case VK_HOME:
      if (ctrl) buffer_.Home(shift);
      else buffer_.MoveTo(RowColToCharIndex({1, caret.Line}), shift);
      return true;
    case VK_END:
      if (ctrl) buffer_.End(shift);
      else buffer_.MoveTo(RowColToCharIndex({LineText(caret.Line).Length() + 1, caret.Line}), shift);
      return true;
    case VK_DELETE:
      if (shift) CutToClipboard();
      else if (!readOnly_ && buffer_.DeleteForward()) Changed();
      return true;
    case VK_INSERT:
      if (ctrl) CopyToClipboard();
      else if (shift) PasteFromClipboard();
      return true;
    default: return false;
  }
}

void TCustomSynEdit::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYDOWN) {
    EditKey(static_cast<Word>(Message.WParam), GetKeyState(VK_SHIFT) < 0, GetKeyState(VK_CONTROL) < 0);
    return;
  }
  if (Message.Msg == WM_CHAR) {
    WideChar c = static_cast<WideChar>(Message.WParam);
    switch (c) {
      case 1: SelectAll(); return;
      case 3: CopyToClipboard(); return;
      case 22: PasteFromClipboard(); return;
      case 24: CutToClipboard(); return;
      case 8:
        if (!readOnly_ && buffer_.DeleteBack()) Changed();
        return;
      case 13: case 10: Type(u"\r\n"); return;
      case 9:
        if (wantTabs_) Type(u"\t");
        return;
      default:
        if (c >= 32 && c != 127) Type(String(c));
        return;
    }
  }
  inherited::DefaultHandler(Message);
}

void TCustomSynEdit::Paint() {
  Canvas()->Brush()->SetColor(Color());
  Canvas()->FillRect(ClientRect());
  auto lines = TTextLines::SplitText(buffer_.Text());
  int h = Canvas()->TextHeight(u"Wy");
  for (size_t i = 0; i < lines.size(); ++i) Canvas()->TextOut(2, static_cast<int>(i) * h, lines[i]);
}

KELMAR_PUBLISH(TSynEdit) {}
