// More controls: panels, radio groups, page controls, up-down, status and
// tool bars, progress bars, speed buttons, and the timer.
#pragma once

#include <memory>

#include "platform/rtl/collection.h"
#include "platform/rtl/stringlist.h"
#include "platform/ui/forms.h"
#include "platform/ui/stdctrls.h"

enum TBevelCut { bvNone, bvLowered, bvRaised, bvSpace };
KELMAR_ENUM(TBevelCut, u"bvNone", u"bvLowered", u"bvRaised", u"bvSpace");

class TPanel : public TCustomControl {
  KELMAR_CLASS(TPanel, TCustomControl)
 public:
  explicit TPanel(TComponent* AOwner);
  TAlignment Alignment() const { return alignment_; }
  void SetAlignment(TAlignment v) { alignment_ = v; }
  TBevelCut BevelOuter() const { return bevelOuter_; }
  void SetBevelOuter(TBevelCut v) { bevelOuter_ = v; }
  TBevelCut BevelInner() const { return bevelInner_; }
  void SetBevelInner(TBevelCut v) { bevelInner_ = v; }

 protected:
  void Paint() override;

 private:
  TAlignment alignment_ = taCenter;
  TBevelCut bevelOuter_ = bvRaised, bevelInner_ = bvNone;
};

// A group of radio buttons built from Items; ItemIndex is the checked one.
class TCustomRadioGroup : public TCustomControl {
  KELMAR_CLASS(TCustomRadioGroup, TCustomControl)
 public:
  explicit TCustomRadioGroup(TComponent* AOwner);
  ~TCustomRadioGroup() override;

  TStrings* Items() const { return items_.get(); }
  void SetItems(TStrings* v) { items_->Assign(v); }
  // -1 for none. A change fires OnClick, set by code or by the person.
  int ItemIndex() const { return itemIndex_; }
  void SetItemIndex(int v);
  int Columns() const { return columns_; }
  void SetColumns(int v) { columns_ = v < 1 ? 1 : v; }
  // The radio button of an item, made from Items.
  TRadioButton* Buttons(int index) const;

 private:
  void ItemsChanged(TObject*);
  void ButtonClicked(TObject* sender);
  std::unique_ptr<TStringList> items_;
  std::vector<TRadioButton*> buttons_;
  int itemIndex_ = -1;
  int columns_ = 1;
  bool updating_ = false;
};

class TRadioGroup : public TCustomRadioGroup {
  KELMAR_CLASS(TRadioGroup, TCustomRadioGroup)
 public:
  explicit TRadioGroup(TComponent* AOwner) : TCustomRadioGroup(AOwner) {}
};

// Fires OnTimer each Interval milliseconds of the application's clock,
// from Application->ProcessMessages().
class TTimer : public TComponent, private TTickClient {
  KELMAR_CLASS(TTimer, TComponent)
 public:
  explicit TTimer(TComponent* AOwner);
  ~TTimer() override;

  bool Enabled() const { return enabled_; }
  void SetEnabled(bool v);
  int Interval() const { return interval_; }
  void SetInterval(int v);

  TNotifyEvent OnTimer;

 private:
  void Tick(int64_t nowMs) override;
  void Restart();
  bool enabled_ = true;
  int interval_ = 1000;
  int64_t due_ = 0;
};

// ---- Pages ---------------------------------------------------------------------------

class TPageControl;

class TTabSheet : public TCustomControl {
  KELMAR_CLASS(TTabSheet, TCustomControl)
 public:
  explicit TTabSheet(TComponent* AOwner) : TCustomControl(AOwner) {}
  ~TTabSheet() override;
  TPageControl* PageControl() const { return pageControl_; }
  void SetPageControl(TPageControl* v);
  int PageIndex() const;
  void SetPageIndex(int v);
  bool TabVisible() const { return tabVisible_; }
  void SetTabVisible(bool v) { tabVisible_ = v; }

 private:
  friend class TPageControl;
  TPageControl* pageControl_ = nullptr;
  bool tabVisible_ = true;
};

using TTabChangingEvent = TEvent<void(TObject* Sender, bool& AllowChange)>;

class TPageControl : public TWinControl {
  KELMAR_CLASS(TPageControl, TWinControl)
 public:
  explicit TPageControl(TComponent* AOwner);
  ~TPageControl() override;

  int PageCount() const { return static_cast<int>(pages_.size()); }
  TTabSheet* Pages(int index) const;
  TTabSheet* ActivePage() const { return activePage_; }
  // Shows the page and hides the others; fires no event.
  void SetActivePage(TTabSheet* page);
  int ActivePageIndex() const;
  void SetActivePageIndex(int v);
  // The next or previous visible tab, as Ctrl+Tab does: OnChanging may
  // refuse, OnChange follows a change.
  void SelectNextPage(bool goForward);

  LRESULT GetDlgCode() const override { return DLGC_WANTARROWS; }
  void DefaultHandler(TMessage& Message) override;

  TNotifyEvent OnChange;
  TTabChangingEvent OnChanging;

 private:
  friend class TTabSheet;
  void InsertPage(TTabSheet* page);
  void RemovePage(TTabSheet* page);
  std::vector<TTabSheet*> pages_;
  TTabSheet* activePage_ = nullptr;
};

// ---- Calendar -------------------------------------------------------------------------

// A month to pick a day from. Arrows move a day or a week, PgUp and PgDn
// a month; Date stays within MinDate..MaxDate when they are set (non-zero).
class TMonthCalendar : public TWinControl {
  KELMAR_CLASS(TMonthCalendar, TWinControl)
 public:
  explicit TMonthCalendar(TComponent* AOwner);
  // Whole days; the time of day is dropped.
  double Date() const { return date_; }
  void SetDate(double v);
  double MinDate() const { return minDate_; }
  void SetMinDate(double v) { minDate_ = v; SetDate(date_); }
  double MaxDate() const { return maxDate_; }
  void SetMaxDate(double v) { maxDate_ = v; SetDate(date_); }

  LRESULT GetDlgCode() const override { return DLGC_WANTARROWS; }
  void DefaultHandler(TMessage& Message) override;

  TNotifyEvent OnChange;

 private:
  double date_ = 0, minDate_ = 0, maxDate_ = 0;
};

// ---- Up-down, progress ------------------------------------------------------------------

enum TUDBtnType { btNext, btPrev };
KELMAR_ENUM(TUDBtnType, u"btNext", u"btPrev");
using TUDClickEvent = TEvent<void(TObject* Sender, TUDBtnType Button)>;
using TUDChangingEvent = TEvent<void(TObject* Sender, bool& AllowChange)>;

class TUpDown : public TWinControl {
  KELMAR_CLASS(TUpDown, TWinControl)
 public:
  explicit TUpDown(TComponent* AOwner);
  // Kept within Min..Max; the associated control shows it.
  int Position() const { return position_; }
  void SetPosition(int v);
  int Min() const { return min_; }
  void SetMin(int v);
  int Max() const { return max_; }
  void SetMax(int v);
  int Increment() const { return increment_; }
  void SetIncrement(int v) { increment_ = v; }
  bool Wrap() const { return wrap_; }
  void SetWrap(bool v) { wrap_ = v; }
  TWinControl* Associate() const { return associate_; }
  void SetAssociate(TWinControl* v);
  // What a press of the arrow does: OnChanging may refuse, then OnClick.
  void Step(TUDBtnType button);

  void DefaultHandler(TMessage& Message) override;

  TUDClickEvent OnClick;
  TUDChangingEvent OnChanging;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  void UpdateAssociate();
  int position_ = 0, min_ = 0, max_ = 100, increment_ = 1;
  bool wrap_ = false;
  TWinControl* associate_ = nullptr;
};

class TProgressBar : public TWinControl {
  KELMAR_CLASS(TProgressBar, TWinControl)
 public:
  explicit TProgressBar(TComponent* AOwner) : TWinControl(AOwner) {}
  int Min() const { return min_; }
  void SetMin(int v) { min_ = v; SetPosition(position_); }
  int Max() const { return max_; }
  void SetMax(int v) { max_ = v; SetPosition(position_); }
  int Position() const { return position_; }
  void SetPosition(int v);
  int Step() const { return step_; }
  void SetStep(int v) { step_ = v; }
  void StepIt() { SetPosition(position_ + step_); }
  void StepBy(int delta) { SetPosition(position_ + delta); }

 private:
  int min_ = 0, max_ = 100, position_ = 0, step_ = 10;
};

// ---- Status bar --------------------------------------------------------------------

class TStatusPanel : public TCollectionItem {
  KELMAR_CLASS(TStatusPanel, TCollectionItem)
 public:
  explicit TStatusPanel(TCollection* Collection) : TCollectionItem(Collection) {}
  const String& Text() const { return text_; }
  void SetText(const String& v);
  int Width() const { return width_; }
  void SetWidth(int v);
  TAlignment Alignment() const { return alignment_; }
  void SetAlignment(TAlignment v) { alignment_ = v; }
  void Assign(TPersistent* Source) override;

 private:
  String text_;
  int width_ = 50;
  TAlignment alignment_ = taLeftJustify;
};

class TStatusBar;

class TStatusPanels : public TTypedCollection<TStatusPanel, TOwnedCollection> {
  KELMAR_CLASS(TStatusPanels, TOwnedCollection)
 public:
  explicit TStatusPanels(TStatusBar* owner);

 protected:
  void Update(TCollectionItem* Item) override;
};

class TStatusBar : public TCustomControl {
  KELMAR_CLASS(TStatusBar, TCustomControl)
 public:
  explicit TStatusBar(TComponent* AOwner);
  ~TStatusBar() override;
  TStatusPanels* Panels() const { return panels_.get(); }
  void SetPanels(TStatusPanels* v) { panels_->Assign(v); }
  bool SimplePanel() const { return simplePanel_; }
  void SetSimplePanel(bool v) { simplePanel_ = v; Invalidate(); }
  const String& SimpleText() const { return simpleText_; }
  void SetSimpleText(const String& v) { simpleText_ = v; Invalidate(); }

 protected:
  void Paint() override;

 private:
  std::unique_ptr<TStatusPanels> panels_;
  bool simplePanel_ = false;
  String simpleText_;
};

// ---- Buttons of bars ---------------------------------------------------------------------

// A flat button that may stay down: GroupIndex > 0 makes the buttons of a
// group exclusive; AllowAllUp lets the last one come up again.
class TSpeedButton : public TGraphicControl {
  KELMAR_CLASS(TSpeedButton, TGraphicControl)
 public:
  explicit TSpeedButton(TComponent* AOwner);
  bool Down() const { return down_; }
  void SetDown(bool v);
  int GroupIndex() const { return groupIndex_; }
  void SetGroupIndex(int v) { groupIndex_ = v; }
  bool AllowAllUp() const { return allowAllUp_; }
  void SetAllowAllUp(bool v) { allowAllUp_ = v; }
  bool Flat() const { return flat_; }
  void SetFlat(bool v) { flat_ = v; }
  int ModalResult() const { return modalResult_; }
  void SetModalResult(int v) { modalResult_ = v; }

  // Toggles Down in a group, puts a ModalResult on the form, fires OnClick.
  void Click() override;

 private:
  bool down_ = false, allowAllUp_ = false, flat_ = false;
  int groupIndex_ = 0, modalResult_ = 0;
};

enum TToolButtonStyle { tbsButton, tbsCheck, tbsDropDown, tbsSeparator, tbsDivider };
KELMAR_ENUM(TToolButtonStyle, u"tbsButton", u"tbsCheck", u"tbsDropDown", u"tbsSeparator", u"tbsDivider");

class TToolButton : public TGraphicControl {
  KELMAR_CLASS(TToolButton, TGraphicControl)
 public:
  explicit TToolButton(TComponent* AOwner);
  TToolButtonStyle Style() const { return style_; }
  void SetStyle(TToolButtonStyle v) { style_ = v; }
  bool Down() const { return down_; }
  void SetDown(bool v) { down_ = v; }
  int ImageIndex() const { return imageIndex_; }
  void SetImageIndex(int v) { imageIndex_ = v; }
  void Click() override;

 private:
  TToolButtonStyle style_ = tbsButton;
  bool down_ = false;
  int imageIndex_ = -1;
};

class TToolBar : public TWinControl {
  KELMAR_CLASS(TToolBar, TWinControl)
 public:
  explicit TToolBar(TComponent* AOwner);
  int ButtonCount() const;
  TToolButton* Buttons(int index) const;
  bool ShowCaptions() const { return showCaptions_; }
  void SetShowCaptions(bool v) { showCaptions_ = v; }
  bool Flat() const { return flat_; }
  void SetFlat(bool v) { flat_ = v; }

 private:
  bool showCaptions_ = false, flat_ = true;
};
