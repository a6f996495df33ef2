// The text editor control the SQL editor derives from: a text buffer with
// lines, caret and selection, keyboard editing, and search and replace.
//
// Positions: SelStart is the number of characters before the selection (so
// the 1-based position of its first character is SelStart() + 1), as the
// historical editor had it. CaretX and CaretY are 1-based column and line.
// The text is kept exactly as set; Enter inserts CR LF; lines break at CR
// LF, CR or LF.
#pragma once

#include <memory>
#include <vector>

#include "platform/rtl/stringlist.h"
#include "platform/ui/controls.h"
#include "platform/ui/editbuffer.h"

enum TSynSearchOption {
  ssoMatchCase, ssoWholeWord, ssoBackwards, ssoEntireScope, ssoSelectedOnly, ssoReplace, ssoReplaceAll, ssoPrompt
};
KELMAR_ENUM(TSynSearchOption, u"ssoMatchCase", u"ssoWholeWord", u"ssoBackwards", u"ssoEntireScope",
            u"ssoSelectedOnly", u"ssoReplace", u"ssoReplaceAll", u"ssoPrompt");
using TSynSearchOptions = Set<TSynSearchOption>;

enum TSynReplaceAction { raCancel, raSkip, raReplace, raReplaceAll };
using TReplaceTextEvent = TEvent<void(TObject* Sender, const String& ASearch, const String& AReplace, int Line,
                                      int Column, TSynReplaceAction& Action)>;

// A line and a character in it, both 1-based.
struct TBufferCoord {
  int Char = 1;
  int Line = 1;
  bool operator==(const TBufferCoord&) const = default;
};

// Finds every occurrence of a pattern in a text at once.
class TSynEditSearch : public TComponent {
  KELMAR_CLASS(TSynEditSearch, TComponent)
 public:
  explicit TSynEditSearch(TComponent* AOwner) : TComponent(AOwner) {}

  const String& Pattern() const { return pattern_; }
  void SetPattern(const String& v) { pattern_ = v; }
  bool Sensitive() const { return sensitive_; }
  void SetSensitive(bool v) { sensitive_ = v; }
  // Whole words only: the characters around a hit are not letters,
  // digits or '_'.
  bool Whole() const { return whole_; }
  void SetWhole(bool v) { whole_ = v; }

  // Finds all non-overlapping hits; returns their number.
  int FindAll(const String& text);
  int ResultCount() const { return static_cast<int>(results_.size()); }
  // 1-based position of a hit in the searched text, and its length.
  int Results(int index) const;
  int Lengths(int index) const;

 private:
  String pattern_;
  bool sensitive_ = false, whole_ = false;
  std::vector<int> results_;
};

// The SQL highlighter; colours are the front end's business.
enum TSQLDialect { sqlStandard, sqlInterbase6, sqlMSSQL7, sqlMySQL, sqlOracle, sqlSybase, sqlIngres, sqlMSSQL2K };
KELMAR_ENUM(TSQLDialect, u"sqlStandard", u"sqlInterbase6", u"sqlMSSQL7", u"sqlMySQL", u"sqlOracle", u"sqlSybase",
            u"sqlIngres", u"sqlMSSQL2K");

class TSynSQLSyn : public TComponent {
  KELMAR_CLASS(TSynSQLSyn, TComponent)
 public:
  explicit TSynSQLSyn(TComponent* AOwner) : TComponent(AOwner) {}
  TSQLDialect SQLDialect() const { return dialect_; }
  void SetSQLDialect(TSQLDialect v) { dialect_ = v; }

 private:
  TSQLDialect dialect_ = sqlStandard;
};

class TCustomSynEdit : public TCustomControl {
  KELMAR_CLASS(TCustomSynEdit, TCustomControl)
 public:
  explicit TCustomSynEdit(TComponent* AOwner);
  ~TCustomSynEdit() override;

  TStrings* Lines() const { return lines_.get(); }
  void SetLines(TStrings* v) { lines_->Assign(v); }
  int LineCount() const;
  // A line without its break, 1-based; empty past the end.
  String LineText(int line) const;

  int SelStart() const { return buffer_.SelStart(); }
  void SetSelStart(int v) { buffer_.SetSelStart(v); }
  int SelLength() const { return buffer_.SelLength(); }
  void SetSelLength(int v) { buffer_.SetSelLength(v); }
  String SelText() const { return buffer_.SelText(); }
  void SetSelText(const String& v);
  bool SelAvail() const { return buffer_.SelLength() > 0; }
  void SelectAll() { buffer_.SelectAll(); }
  void ClearSelection() { SetSelText(String()); }

  TBufferCoord CaretXY() const { return CharIndexToRowCol(buffer_.Caret()); }
  void SetCaretXY(TBufferCoord v) { buffer_.MoveTo(RowColToCharIndex(v), false); }
  int CaretX() const { return CaretXY().Char; }
  int CaretY() const { return CaretXY().Line; }
  TBufferCoord BlockBegin() const { return CharIndexToRowCol(SelStart()); }
  TBufferCoord BlockEnd() const { return CharIndexToRowCol(SelStart() + SelLength()); }
  // Between a 0-based character index and a line and column.
  TBufferCoord CharIndexToRowCol(int index) const;
  int RowColToCharIndex(TBufferCoord coord) const;

  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool v) { readOnly_ = v; }
  bool Modified() const { return modified_; }
  void SetModified(bool v) { modified_ = v; }
  bool WantTabs() const { return wantTabs_; }
  void SetWantTabs(bool v) { wantTabs_ = v; }
  int RightEdge() const { return rightEdge_; }
  void SetRightEdge(int v) { rightEdge_ = v; }
  TColor ActiveLineColor() const { return activeLineColor_; }
  void SetActiveLineColor(TColor v) { activeLineColor_ = v; }
  int Options() const { return options_; }
  void SetOptions(int v) { options_ = v; }
  TSynSQLSyn* Highlighter() const { return highlighter_; }
  void SetHighlighter(TSynSQLSyn* v);
  // The engine SearchReplace uses; the editor's own unless set.
  TSynEditSearch* SearchEngine() const { return searchEngine_ ? searchEngine_ : ownEngine_.get(); }
  void SetSearchEngine(TSynEditSearch* v);

  // Finds ASearch from the caret (or in the whole text with
  // ssoEntireScope, or in the selection with ssoSelectedOnly), forward or
  // with ssoBackwards. Without ssoReplace the hit is selected; with it the
  // hit is replaced, every hit with ssoReplaceAll, each asked through
  // OnReplaceText with ssoPrompt. Returns how many were found or replaced.
  int SearchReplace(const String& ASearch, const String& AReplace, TSynSearchOptions AOptions);

  void CopyToClipboard();
  void CutToClipboard();
  void PasteFromClipboard();

  LRESULT GetDlgCode() const override;
  void DefaultHandler(TMessage& Message) override;

  TNotifyEvent OnChange;
  TReplaceTextEvent OnReplaceText;

 protected:
  String GetText() const override { return buffer_.Text(); }
  void SetTextValue(const String& value) override { buffer_.SetText(value); }
  void TextChanged() override { Changed(); }
  virtual void Changed();
  void Notification(TComponent* AComponent, TOperation Operation) override;
  void Paint() override;

 private:
  // Start offset (0-based) of each line.
  std::vector<int> LineStarts() const;
  void Type(const String& s);
  bool EditKey(Word key, bool shift, bool ctrl);

  TEditBuffer buffer_;
  std::unique_ptr<TStrings> lines_;
  std::unique_ptr<TSynEditSearch> ownEngine_;
  TSynEditSearch* searchEngine_ = nullptr;
  TSynSQLSyn* highlighter_ = nullptr;
  bool readOnly_ = false, modified_ = false, wantTabs_ = true;
  int rightEdge_ = 80;
  TColor activeLineColor_ = clNone;
  int options_ = 0;
};

class TSynEdit : public TCustomSynEdit {
  KELMAR_CLASS(TSynEdit, TCustomSynEdit)
 public:
  explicit TSynEdit(TComponent* AOwner) : TCustomSynEdit(AOwner) {}
};
