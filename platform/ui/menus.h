// Menus and actions: TMenuItem trees, popup and main menus, shortcuts, and
// TAction with its lists.
//
// Ownership: a menu owns its root item; an item owns its submenu items. An
// item's Action is a peer reference, cleared when the action goes.
#pragma once

#include <vector>

#include "platform/rtl/classes.h"
#include "platform/rtl/events.h"
#include "platform/ui/keyboard.h"

class TMenuItem;
class TAction;

// ---- Actions ---------------------------------------------------------------------

class TBasicAction : public TComponent {
  KELMAR_CLASS(TBasicAction, TComponent)
 public:
  explicit TBasicAction(TComponent* AOwner) : TComponent(AOwner) {}
  // Fires OnExecute; false when unassigned.
  virtual bool Execute();
  // Fires OnUpdate; false when unassigned.
  virtual bool Update();

  TNotifyEvent OnExecute;
  TNotifyEvent OnUpdate;
};

class TAction : public TBasicAction {
  KELMAR_CLASS(TAction, TBasicAction)
 public:
  explicit TAction(TComponent* AOwner) : TBasicAction(AOwner) {}
  ~TAction() override;

  const String& Caption() const { return caption_; }
  void SetCaption(const String& v);
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool v);
  bool Visible() const { return visible_; }
  void SetVisible(bool v);
  bool Checked() const { return checked_; }
  void SetChecked(bool v);
  TShortCut ShortCut() const { return shortCut_; }
  void SetShortCut(TShortCut v);
  const String& Hint() const { return hint_; }
  void SetHint(const String& v) { hint_ = v; }
  int ImageIndex() const { return imageIndex_; }
  void SetImageIndex(int v) { imageIndex_ = v; }

  // A disabled action does not run.
  bool Execute() override;

 private:
  friend class TMenuItem;
  void Changed();
  String caption_;
  bool enabled_ = true, visible_ = true, checked_ = false;
  TShortCut shortCut_ = 0;
  String hint_;
  int imageIndex_ = -1;
  std::vector<TMenuItem*> clients_;
};

class TActionList : public TComponent {
  KELMAR_CLASS(TActionList, TComponent)
 public:
  explicit TActionList(TComponent* AOwner) : TComponent(AOwner) {}
  int ActionCount() const { return static_cast<int>(actions_.size()); }
  TBasicAction* Actions(int index) const { return actions_.at(static_cast<size_t>(index)); }
  void AddAction(TBasicAction* action);
  void RemoveAction(TBasicAction* action);
  // Runs the enabled action whose shortcut this is.
  bool IsShortCut(Word Key, TShiftState Shift);

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  std::vector<TBasicAction*> actions_;
};

// ---- Menu items --------------------------------------------------------------------

class TMenuItem : public TComponent {
  KELMAR_CLASS(TMenuItem, TComponent)
 public:
  explicit TMenuItem(TComponent* AOwner);
  ~TMenuItem() override;

  const String& Caption() const { return caption_; }
  void SetCaption(const String& v) { caption_ = v; }
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool v) { enabled_ = v; }
  bool Visible() const { return visible_; }
  void SetVisible(bool v) { visible_ = v; }
  bool Checked() const { return checked_; }
  void SetChecked(bool v);
  bool RadioItem() const { return radioItem_; }
  void SetRadioItem(bool v) { radioItem_ = v; }
  bool AutoCheck() const { return autoCheck_; }
  void SetAutoCheck(bool v) { autoCheck_ = v; }
  int GroupIndex() const { return groupIndex_; }
  void SetGroupIndex(int v) { groupIndex_ = v; }
  TShortCut ShortCut() const { return shortCut_; }
  void SetShortCut(TShortCut v) { shortCut_ = v; }
  const String& Hint() const { return hint_; }
  void SetHint(const String& v) { hint_ = v; }
  int ImageIndex() const { return imageIndex_; }
  void SetImageIndex(int v) { imageIndex_ = v; }
  TAction* Action() const { return action_; }
  // Takes the action's caption, state and shortcut; a click executes it.
  void SetAction(TAction* action);
  // A separator is an item whose caption is "-".
  bool IsLine() const { return caption_ == u"-"; }

  // The submenu. Added items belong to this item.
  int Count() const { return static_cast<int>(items_.size()); }
  TMenuItem* Items(int index) const;
  void Add(TMenuItem* item);
  void Insert(int index, TMenuItem* item);
  void Delete(int index);
  void Remove(TMenuItem* item);
  void Clear();
  int IndexOf(const TMenuItem* item) const;
  // The direct child with the caption (ignoring '&'), or null.
  TMenuItem* Find(const String& caption) const;
  TMenuItem* Parent() const { return parent_; }
  int MenuIndex() const { return parent_ ? parent_->IndexOf(this) : -1; }
  void SetMenuIndex(int index);

  // Runs the item when enabled: its action, or OnClick.
  virtual void Click();
  // The enabled, visible item of this tree (this one included) with the
  // shortcut, or null.
  TMenuItem* FindShortCut(TShortCut shortCut);

  TNotifyEvent OnClick;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  friend class TAction;
  void ActionChanged();

  String caption_;
  bool enabled_ = true, visible_ = true, checked_ = false, radioItem_ = false, autoCheck_ = false;
  int groupIndex_ = 0;
  TShortCut shortCut_ = 0;
  String hint_;
  int imageIndex_ = -1;
  TAction* action_ = nullptr;
  TMenuItem* parent_ = nullptr;
  std::vector<TMenuItem*> items_;
};

// ---- Menus ------------------------------------------------------------------------

class TMenu : public TComponent {
  KELMAR_CLASS(TMenu, TComponent)
 public:
  explicit TMenu(TComponent* AOwner);
  ~TMenu() override;
  TMenuItem* Items() const { return items_; }
  // Runs the enabled, visible item whose shortcut this is.
  virtual bool IsShortCut(Word Key, TShiftState Shift);

 private:
  TMenuItem* items_;
};

enum TPopupAlignment { paLeft, paRight, paCenter };
KELMAR_ENUM(TPopupAlignment, u"paLeft", u"paRight", u"paCenter");

class TPopupMenu : public TMenu {
  KELMAR_CLASS(TPopupMenu, TMenu)
 public:
  explicit TPopupMenu(TComponent* AOwner) : TMenu(AOwner) {}

  bool AutoPopup() const { return autoPopup_; }
  void SetAutoPopup(bool v) { autoPopup_ = v; }
  TComponent* PopupComponent() const { return popupComponent_; }
  void SetPopupComponent(TComponent* c);
  TPopupAlignment Alignment() const { return alignment_; }
  void SetAlignment(TPopupAlignment v) { alignment_ = v; }

  // Fires OnPopup, then lets the person pick through the UserInterface
  // port, and clicks the picked item. An EAbort from OnPopup stops it.
  virtual void Popup(int X, int Y);

  TNotifyEvent OnPopup;

 protected:
  virtual void DoPopup() { OnPopup(this); }
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  bool autoPopup_ = true;
  TComponent* popupComponent_ = nullptr;
  TPopupAlignment alignment_ = paLeft;
};

class TMainMenu : public TMenu {
  KELMAR_CLASS(TMainMenu, TMenu)
 public:
  explicit TMainMenu(TComponent* AOwner) : TMenu(AOwner) {}
};

// Caption with its '&' accelerator marks removed ("&&" stays one '&').
String StripHotkey(const String& caption);
// A new item, for code that builds menus: NewItem(u"&Copy", ShortCut('C', {ssCtrl}), handler).
TMenuItem* NewItem(TComponent* owner, const String& caption, TShortCut shortCut, TNotifyEvent onClick,
                   const String& name = String());
TMenuItem* NewLine(TComponent* owner);
