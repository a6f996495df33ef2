#include "platform/ui/extctrls.h"

#include <algorithm>
#include <cmath>

#include "platform/rtl/datetime.h"
#include "platform/rtl/sysutils.h"

// ---- TPanel -------------------------------------------------------------------------

KELMAR_PUBLISH(TPanel) {
  r.Prop(u"Alignment", &TPanel::Alignment, &TPanel::SetAlignment).Default = taCenter;
  r.Prop(u"BevelInner", &TPanel::BevelInner, &TPanel::SetBevelInner).Default = bvNone;
  r.Prop(u"BevelOuter", &TPanel::BevelOuter, &TPanel::SetBevelOuter).Default = bvRaised;
  r.Prop(u"Caption", &TPanel::Caption, &TPanel::SetCaption);
}

TPanel::TPanel(TComponent* AOwner) : TCustomControl(AOwner) { SetBounds(0, 0, 185, 41); }

void TPanel::Paint() {
  Canvas()->Brush()->SetColor(Color());
  Canvas()->FillRect(ClientRect());
  if (bevelOuter_ != bvNone) Canvas()->FrameRect(ClientRect());
  TTextFormat format{tfSingleLine, tfVerticalCenter};
  format << (alignment_ == taCenter ? tfCenter : alignment_ == taRightJustify ? tfRight : tfLeft);
  Canvas()->TextRect(ClientRect(), Caption(), format);
}

// ---- TCustomRadioGroup ------------------------------------------------------------------

KELMAR_PUBLISH(TCustomRadioGroup) {
  r.Prop(u"Caption", &TCustomRadioGroup::Caption, &TCustomRadioGroup::SetCaption);
  r.Prop(u"Columns", &TCustomRadioGroup::Columns, &TCustomRadioGroup::SetColumns).Default = 1;
  r.Prop(u"ItemIndex", &TCustomRadioGroup::ItemIndex, &TCustomRadioGroup::SetItemIndex).Default = -1;
  r.Prop(u"Items", &TCustomRadioGroup::Items, &TCustomRadioGroup::SetItems);
}

TCustomRadioGroup::TCustomRadioGroup(TComponent* AOwner)
    : TCustomControl(AOwner), items_(std::make_unique<TStringList>()) {
  items_->OnChange = Closure(this, &TCustomRadioGroup::ItemsChanged);
  SetTabStop(true);
  SetBounds(0, 0, 185, 105);
}

TCustomRadioGroup::~TCustomRadioGroup() { items_->OnChange = nullptr; }

void TCustomRadioGroup::ItemsChanged(TObject*) {
  // One button per item, rebuilt; the buttons are the group's own children.
  updating_ = true;
  for (TRadioButton* b : buttons_) delete b;
  buttons_.clear();
  for (int i = 0; i < items_->Count(); ++i) {
    auto* b = new TRadioButton(nullptr);
    b->SetParent(this);
    b->SetCaption(items_->Strings(i));
    b->SetBounds(8, 16 + i * 20, Width() - 16, 17);
    b->OnClick = Closure(this, &TCustomRadioGroup::ButtonClicked);
    buttons_.push_back(b);
  }
  if (itemIndex_ >= items_->Count()) itemIndex_ = -1;
  if (itemIndex_ >= 0) buttons_[static_cast<size_t>(itemIndex_)]->SetChecked(true);
  updating_ = false;
}

TRadioButton* TCustomRadioGroup::Buttons(int index) const {
  if (index < 0 || index >= static_cast<int>(buttons_.size()))
    throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return buttons_[static_cast<size_t>(index)];
}

void TCustomRadioGroup::SetItemIndex(int v) {
  if (v < -1 || v >= items_->Count()) v = -1;
  if (v == itemIndex_) return;
  itemIndex_ = v;
  updating_ = true;
  if (v >= 0) buttons_[static_cast<size_t>(v)]->SetChecked(true);
  else
    for (TRadioButton* b : buttons_) b->SetChecked(false);
  updating_ = false;
  Click();
}

void TCustomRadioGroup::ButtonClicked(TObject* sender) {
  if (updating_) return;
  auto it = std::find(buttons_.begin(), buttons_.end(), sender);
  if (it == buttons_.end()) return;
  int index = static_cast<int>(it - buttons_.begin());
  if (index == itemIndex_) return;
  itemIndex_ = index;
  Click();
}

KELMAR_PUBLISH(TRadioGroup) {}

// ---- TTimer ---------------------------------------------------------------------------

KELMAR_PUBLISH(TTimer) {
  r.Prop(u"Enabled", &TTimer::Enabled, &TTimer::SetEnabled).Default = 1;
  r.Prop(u"Interval", &TTimer::Interval, &TTimer::SetInterval).Default = 1000;
  r.Prop(u"OnTimer", &TTimer::OnTimer);
}

TTimer::TTimer(TComponent* AOwner) : TComponent(AOwner) { Restart(); }

TTimer::~TTimer() { Application->RemoveTickClient(this); }

void TTimer::SetEnabled(bool v) {
  enabled_ = v;
  Restart();
}

void TTimer::SetInterval(int v) {
  interval_ = v;
  Restart();
}

void TTimer::Restart() {
  if (enabled_ && interval_ > 0) {
    due_ = Application->TickCount() + interval_;
    Application->AddTickClient(this);
  } else {
    Application->RemoveTickClient(this);
  }
}

void TTimer::Tick(int64_t nowMs) {
  if (nowMs < due_) return;
  // One firing per call, however late: missed periods are not made up.
  due_ = nowMs + interval_;
  OnTimer(this);
}

// ---- Pages ---------------------------------------------------------------------------

KELMAR_PUBLISH(TTabSheet) {
  r.Prop(u"Caption", &TTabSheet::Caption, &TTabSheet::SetCaption);
  r.Prop(u"PageControl", &TTabSheet::PageControl, &TTabSheet::SetPageControl);
  r.Prop(u"PageIndex", &TTabSheet::PageIndex, &TTabSheet::SetPageIndex);
  r.Prop(u"TabVisible", &TTabSheet::TabVisible, &TTabSheet::SetTabVisible).Default = 1;
}

TTabSheet::~TTabSheet() {
  if (pageControl_) pageControl_->RemovePage(this);
}

void TTabSheet::SetPageControl(TPageControl* v) {
  if (pageControl_ == v) return;
  if (pageControl_) pageControl_->RemovePage(this);
  if (v) v->InsertPage(this);
}

int TTabSheet::PageIndex() const {
  if (!pageControl_) return -1;
  auto& pages = pageControl_->pages_;
  return static_cast<int>(std::find(pages.begin(), pages.end(), this) - pages.begin());
}

void TTabSheet::SetPageIndex(int v) {
  if (!pageControl_) return;
  auto& pages = pageControl_->pages_;
  pages.erase(pages.begin() + PageIndex());
  pages.insert(pages.begin() + std::clamp(v, 0, static_cast<int>(pages.size())), this);
}

KELMAR_PUBLISH(TPageControl) {
  r.Prop(u"ActivePage", &TPageControl::ActivePage, &TPageControl::SetActivePage);
  r.Prop(u"OnChange", &TPageControl::OnChange);
  r.Prop(u"OnChanging", &TPageControl::OnChanging);
}

TPageControl::TPageControl(TComponent* AOwner) : TWinControl(AOwner) {
  SetTabStop(true);
  SetBounds(0, 0, 289, 193);
}

TPageControl::~TPageControl() {
  for (TTabSheet* p : pages_) p->pageControl_ = nullptr;
}

TTabSheet* TPageControl::Pages(int index) const {
  if (index < 0 || index >= PageCount()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return pages_[static_cast<size_t>(index)];
}

void TPageControl::InsertPage(TTabSheet* page) {
  pages_.push_back(page);
  page->pageControl_ = this;
  page->SetParent(this);
  page->SetVisible(activePage_ == nullptr);
  if (!activePage_) activePage_ = page;
}

void TPageControl::RemovePage(TTabSheet* page) {
  pages_.erase(std::remove(pages_.begin(), pages_.end(), page), pages_.end());
  page->pageControl_ = nullptr;
  if (activePage_ == page) {
    activePage_ = nullptr;
    if (!pages_.empty()) SetActivePage(pages_.front());
  }
}

void TPageControl::SetActivePage(TTabSheet* page) {
  if (page && page->pageControl_ != this) return;
  activePage_ = page;
  for (TTabSheet* p : pages_) p->SetVisible(p == page);
}

int TPageControl::ActivePageIndex() const { return activePage_ ? activePage_->PageIndex() : -1; }

void TPageControl::SetActivePageIndex(int v) { SetActivePage(v >= 0 && v < PageCount() ? pages_[static_cast<size_t>(v)] : nullptr); }

void TPageControl::SelectNextPage(bool goForward) {
  int n = PageCount();
  if (n == 0) return;
  int start = ActivePageIndex();
  for (int step = 1; step <= n; ++step) {
    int i = ((start < 0 ? (goForward ? -1 : 0) : start) + (goForward ? step : n - step)) % n;
    TTabSheet* p = pages_[static_cast<size_t>(i)];
    if (!p->TabVisible() || p == activePage_) continue;
    bool allow = true;
    OnChanging(this, allow);
    if (!allow) return;
    SetActivePage(p);
    OnChange(this);
    return;
  }
}

void TPageControl::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYDOWN && (Message.WParam == VK_RIGHT || Message.WParam == VK_LEFT)) {
    SelectNextPage(Message.WParam == VK_RIGHT);
    return;
  }
  inherited::DefaultHandler(Message);
}

// ---- TMonthCalendar -----------------------------------------------------------------------

KELMAR_PUBLISH(TMonthCalendar) {
  r.Prop(u"Date", &TMonthCalendar::Date, &TMonthCalendar::SetDate);
  r.Prop(u"MaxDate", &TMonthCalendar::MaxDate, &TMonthCalendar::SetMaxDate);
  r.Prop(u"MinDate", &TMonthCalendar::MinDate, &TMonthCalendar::SetMinDate);
  r.Prop(u"OnChange", &TMonthCalendar::OnChange);
}

TMonthCalendar::TMonthCalendar(TComponent* AOwner) : TWinControl(AOwner), date_(::Date()) {
  SetTabStop(true);
  SetBounds(0, 0, 191, 154);
}

void TMonthCalendar::SetDate(double v) {
  v = std::floor(v);
  if (minDate_ != 0 && v < minDate_) v = std::floor(minDate_);
  if (maxDate_ != 0 && v > maxDate_) v = std::floor(maxDate_);
  if (v == date_) return;
  date_ = v;
  Invalidate();
  OnChange(this);
}

void TMonthCalendar::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYDOWN) {
    switch (Message.WParam) {
      case VK_LEFT: SetDate(date_ - 1); return;
      case VK_RIGHT: SetDate(date_ + 1); return;
      case VK_UP: SetDate(date_ - 7); return;
      case VK_DOWN: SetDate(date_ + 7); return;
      case VK_PRIOR: SetDate(IncMonth(date_, -1)); return;
      case VK_NEXT: SetDate(IncMonth(date_, 1)); return;
      default: break;
    }
  }
  inherited::DefaultHandler(Message);
}

// ---- TUpDown ------------------------------------------------------------------------------

KELMAR_PUBLISH(TUpDown) {
  r.Prop(u"Associate", &TUpDown::Associate, &TUpDown::SetAssociate);
  r.Prop(u"Increment", &TUpDown::Increment, &TUpDown::SetIncrement).Default = 1;
  r.Prop(u"Max", &TUpDown::Max, &TUpDown::SetMax).Default = 100;
  r.Prop(u"Min", &TUpDown::Min, &TUpDown::SetMin).Default = 0;
  r.Prop(u"Position", &TUpDown::Position, &TUpDown::SetPosition).Default = 0;
  r.Prop(u"Wrap", &TUpDown::Wrap, &TUpDown::SetWrap).Default = 0;
  r.Prop(u"OnChanging", &TUpDown::OnChanging);
  r.Prop(u"OnClick", &TUpDown::OnClick);
}

TUpDown::TUpDown(TComponent* AOwner) : TWinControl(AOwner) { SetBounds(0, 0, 17, 21); }

void TUpDown::SetPosition(int v) {
  position_ = std::clamp(v, std::min(min_, max_), std::max(min_, max_));
  UpdateAssociate();
}

void TUpDown::SetMin(int v) {
  min_ = v;
  SetPosition(position_);
}

void TUpDown::SetMax(int v) {
  max_ = v;
  SetPosition(position_);
}

void TUpDown::SetAssociate(TWinControl* v) {
  if (associate_) associate_->RemoveFreeNotification(this);
  associate_ = v;
  if (v) v->FreeNotification(this);
  UpdateAssociate();
}

void TUpDown::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == associate_) associate_ = nullptr;
}

void TUpDown::UpdateAssociate() {
  if (associate_) associate_->SetText(IntToStr(position_));
}

void TUpDown::Step(TUDBtnType button) {
  bool allow = true;
  OnChanging(this, allow);
  if (!allow) return;
  int next = position_ + (button == btNext ? increment_ : -increment_);
  if (wrap_ && next > max_) next = min_;
  else if (wrap_ && next < min_) next = max_;
  SetPosition(next);
  OnClick(this, button);
}

void TUpDown::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYDOWN && (Message.WParam == VK_UP || Message.WParam == VK_DOWN)) {
    Step(Message.WParam == VK_UP ? btNext : btPrev);
    return;
  }
  inherited::DefaultHandler(Message);
}

KELMAR_PUBLISH(TProgressBar) {
  r.Prop(u"Max", &TProgressBar::Max, &TProgressBar::SetMax).Default = 100;
  r.Prop(u"Min", &TProgressBar::Min, &TProgressBar::SetMin).Default = 0;
  r.Prop(u"Position", &TProgressBar::Position, &TProgressBar::SetPosition).Default = 0;
  r.Prop(u"Step", &TProgressBar::Step, &TProgressBar::SetStep).Default = 10;
}

void TProgressBar::SetPosition(int v) {
  position_ = std::clamp(v, std::min(min_, max_), std::max(min_, max_));
  Invalidate();
}

// ---- Status bar --------------------------------------------------------------------

KELMAR_PUBLISH(TStatusPanel) {
  r.Prop(u"Alignment", &TStatusPanel::Alignment, &TStatusPanel::SetAlignment).Default = taLeftJustify;
  r.Prop(u"Text", &TStatusPanel::Text, &TStatusPanel::SetText);
  r.Prop(u"Width", &TStatusPanel::Width, &TStatusPanel::SetWidth);
}

void TStatusPanel::SetText(const String& v) {
  if (text_ == v) return;
  text_ = v;
  Changed(false);
}

void TStatusPanel::SetWidth(int v) {
  if (width_ == v) return;
  width_ = v;
  Changed(true);
}

void TStatusPanel::Assign(TPersistent* Source) {
  if (auto* p = dynamic_cast<TStatusPanel*>(Source)) {
    text_ = p->text_;
    width_ = p->width_;
    alignment_ = p->alignment_;
    Changed(false);
    return;
  }
  inherited::Assign(Source);
}

KELMAR_PUBLISH(TStatusPanels) {}

TStatusPanels::TStatusPanels(TStatusBar* owner) : TTypedCollection(static_cast<TPersistent*>(owner)) {}

void TStatusPanels::Update(TCollectionItem*) {
  if (auto* bar = dynamic_cast<TStatusBar*>(Owner())) bar->Invalidate();
}

KELMAR_PUBLISH(TStatusBar) {
  r.Prop(u"Panels", &TStatusBar::Panels, &TStatusBar::SetPanels);
  r.Prop(u"SimplePanel", &TStatusBar::SimplePanel, &TStatusBar::SetSimplePanel).Default = 0;
  r.Prop(u"SimpleText", &TStatusBar::SimpleText, &TStatusBar::SetSimpleText);
}

TStatusBar::TStatusBar(TComponent* AOwner) : TCustomControl(AOwner), panels_(std::make_unique<TStatusPanels>(this)) {
  SetAlign(alBottom);
  SetBounds(0, 0, 400, 19);
}

TStatusBar::~TStatusBar() = default;

void TStatusBar::Paint() {
  Canvas()->Brush()->SetColor(Color());
  Canvas()->FillRect(ClientRect());
  if (simplePanel_) {
    Canvas()->TextRect(ClientRect(), simpleText_, TTextFormat{tfLeft, tfVerticalCenter, tfSingleLine});
    return;
  }
  int x = 0;
  for (int i = 0; i < panels_->Count(); ++i) {
    TStatusPanel* p = panels_->Items(i);
    // The last panel takes what is left of the bar.
    int right = i == panels_->Count() - 1 ? Width() : x + p->Width();
    TRect r = Rect(x, 0, right, Height());
    TTextFormat format{tfVerticalCenter, tfSingleLine};
    format << (p->Alignment() == taCenter ? tfCenter : p->Alignment() == taRightJustify ? tfRight : tfLeft);
    Canvas()->FrameRect(r);
    Canvas()->TextRect(r, p->Text(), format);
    x = right;
  }
}

// ---- Buttons of bars ---------------------------------------------------------------------

KELMAR_PUBLISH(TSpeedButton) {
  r.Prop(u"AllowAllUp", &TSpeedButton::AllowAllUp, &TSpeedButton::SetAllowAllUp).Default = 0;
  r.Prop(u"Caption", &TSpeedButton::Caption, &TSpeedButton::SetCaption);
  r.Prop(u"Down", &TSpeedButton::Down, &TSpeedButton::SetDown).Default = 0;
  r.Prop(u"Flat", &TSpeedButton::Flat, &TSpeedButton::SetFlat).Default = 0;
  r.Prop(u"GroupIndex", &TSpeedButton::GroupIndex, &TSpeedButton::SetGroupIndex).Default = 0;
  r.Prop(u"ModalResult", &TSpeedButton::ModalResult, &TSpeedButton::SetModalResult).Default = 0;
}

TSpeedButton::TSpeedButton(TComponent* AOwner) : TGraphicControl(AOwner) { SetBounds(0, 0, 23, 22); }

void TSpeedButton::SetDown(bool v) {
  if (groupIndex_ == 0) v = false;
  if (down_ == v) return;
  if (!v && !allowAllUp_) {
    // The last one down of an exclusive group stays down.
    bool another = false;
    if (Parent())
      for (int i = 0; i < Parent()->ControlCount(); ++i)
        if (auto* b = dynamic_cast<TSpeedButton*>(Parent()->Controls(i));
            b && b != this && b->groupIndex_ == groupIndex_ && b->down_)
          another = true;
    if (!another) return;
  }
  down_ = v;
  if (v && Parent())
    for (int i = 0; i < Parent()->ControlCount(); ++i)
      if (auto* b = dynamic_cast<TSpeedButton*>(Parent()->Controls(i)); b && b != this && b->groupIndex_ == groupIndex_)
        b->down_ = false;
  Invalidate();
}

void TSpeedButton::Click() {
  if (groupIndex_ != 0) SetDown(!down_);
  if (modalResult_ != 0)
    if (TCustomForm* form = GetParentForm(this)) form->SetModalResult(modalResult_);
  inherited::Click();
}

KELMAR_PUBLISH(TToolButton) {
  r.Prop(u"Caption", &TToolButton::Caption, &TToolButton::SetCaption);
  r.Prop(u"Down", &TToolButton::Down, &TToolButton::SetDown).Default = 0;
  r.Prop(u"ImageIndex", &TToolButton::ImageIndex, &TToolButton::SetImageIndex).Default = -1;
  r.Prop(u"Style", &TToolButton::Style, &TToolButton::SetStyle).Default = tbsButton;
}

TToolButton::TToolButton(TComponent* AOwner) : TGraphicControl(AOwner) { SetBounds(0, 0, 23, 22); }

void TToolButton::Click() {
  if (style_ == tbsSeparator || style_ == tbsDivider) return;
  if (style_ == tbsCheck) down_ = !down_;
  inherited::Click();
}

KELMAR_PUBLISH(TToolBar) {
  r.Prop(u"Flat", &TToolBar::Flat, &TToolBar::SetFlat).Default = 1;
  r.Prop(u"ShowCaptions", &TToolBar::ShowCaptions, &TToolBar::SetShowCaptions).Default = 0;
}

TToolBar::TToolBar(TComponent* AOwner) : TWinControl(AOwner) {
  SetAlign(alTop);
  SetBounds(0, 0, 400, 29);
}

int TToolBar::ButtonCount() const {
  int n = 0;
  for (int i = 0; i < ControlCount(); ++i)
    if (dynamic_cast<TToolButton*>(Controls(i))) ++n;
  return n;
}

TToolButton* TToolBar::Buttons(int index) const {
  int n = 0;
  for (int i = 0; i < ControlCount(); ++i)
    if (auto* b = dynamic_cast<TToolButton*>(Controls(i)); b && n++ == index) return b;
  throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
}
