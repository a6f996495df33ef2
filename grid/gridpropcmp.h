// TGridPropCmp: the application-wide switchboard of the grid family.
//
// An application puts one on its main form and writes StartUpInit (which
// makes it the process's active store) and Default (which makes it the
// default store). Grids and datasets ask the active one, through the
// class-level functions below, whether the application is read-only, in
// admin mode or flat, which dot content fields use, and, through
// OnStateChangeImplicit, whether a dataset may change its record state on
// its own. Hooks of other components (DBMS output, pick lists, exports)
// are events here, so that the application handles them in one place.
//
// Lifetimes: the two process-wide pointers are non-owning; a component that
// goes away clears them when they point at it.
#pragma once

#include <memory>

#include "data/oranavigator.h"
#include "data/veskcontract.h"
#include "platform/db/orasession.h"
#include "platform/rtl/stringlist.h"
#include "platform/ui/controls.h"

class TDataSource;

// The active row's colouring: 0 leaves it, 1 shades it, 2 also changes its
// hue.
enum THighlightRowMode { hrmNone, hrmShadow, hrmTranspone };
KELMAR_ENUM(THighlightRowMode, u"hrmNone", u"hrmShadow", u"hrmTranspone");

// Asked when a guarded dataset changes its record state without a declared
// command: the dataset, the requested state, its present VeskCom and its
// State. False refuses (the dataset aborts).
using TStateChangeImplicitEvent =
    TEvent<bool(TDataSet* DataSet, TVeskState Requested, TVeskState VeskCom, TDataSetState State)>;
// A grid's special action on a column's pick list or a dataset's SQL; true
// when the application took it.
using TGridStringsActionEvent = TEvent<bool(TObject* Sender, TStrings* Strings)>;
// Whether the focus may leave a grid whose row is open.
using TGridLoseFocusEvent = TEvent<bool(TObject* Sender, TDataSource* DataSource)>;

class TGridPropCmp : public TComponent {
  KELMAR_CLASS(TGridPropCmp, TComponent)
 public:
  explicit TGridPropCmp(TComponent* AOwner);
  ~TGridPropCmp() override;

  // ---- The process-wide stores ----
  // The active store; null when none.
  static TGridPropCmp* GetPointer();
  static void SetPointer(TGridPropCmp* Value);
  // The default store, consulted by the grids' text input and exit; null
  // when none.
  static TGridPropCmp* DefaultStore();

  // Reads whether this is the active store; writing true makes it active,
  // false clears the active store.
  bool StartUpInit() const { return GetPointer() == this; }
  void SetStartUpInit(bool Value);
  // Reads whether this is the default store; any write makes it the
  // default.
  bool Default() const { return DefaultStore() == this; }
  void SetDefault(bool Value);

  // ---- Asked of the active store ----
  // True without an active store: a program without one has every command.
  static bool IsAdminMode();
  // False without an active store: nothing is locked.
  static bool IsReadOnly();
  static bool IsFlat();
  // UseDotInContChar when the active store has UseDotInCont on, else ".".
  static WideChar DotInContChar();
  // Fire the active store's OnClearDBMSOutput / OnShowDBMSOutput when
  // assigned. The store holds no output of its own: the handler reads the
  // server's buffer through its session.
  static void ClearDBMSOutput(TObject* Sender);
  static void ShowDBMSOutput(TObject* Sender);

  // ---- Published settings ----
  // The session of the design store.
  TOraSession* OraSession() const { return oraSession_; }
  void SetOraSession(TOraSession* Value);
  int UserID() const { return userID_; }
  void SetUserID(int Value) { userID_ = Value; }
  const String& TableName() const { return tableName_; }
  void SetTableName(const String& Value) { tableName_ = Value; }
  // Shows the advanced menu and allows editing captions.
  bool AdminMode() const { return adminMode_; }
  void SetAdminMode(bool Value) { adminMode_ = Value; }
  // The global read-only switch: no design is stored and no data changed.
  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool Value) { readOnly_ = Value; }
  // Grids draw flat.
  bool Flat() const { return flat_; }
  void SetFlat(bool Value) { flat_ = Value; }
  bool DisableNumberSearch() const { return disableNumberSearch_; }
  void SetDisableNumberSearch(bool Value) { disableNumberSearch_ = Value; }
  THighlightRowMode HighlightRowMode() const { return highlightRowMode_; }
  void SetHighlightRowMode(THighlightRowMode Value) { highlightRowMode_ = Value; }
  bool HighlightEdit() const { return highlightEdit_; }
  void SetHighlightEdit(bool Value) { highlightEdit_ = Value; }
  TColor HighlightEditColor() const { return highlightEditColor_; }
  void SetHighlightEditColor(TColor Value) { highlightEditColor_ = Value; }
  bool UseDefaultDisplayFormat() const { return useDefaultDisplayFormat_; }
  void SetUseDefaultDisplayFormat(bool Value) { useDefaultDisplayFormat_ = Value; }
  // Content fields show accounts with this dot character when on.
  bool UseDotInCont() const { return useDotInCont_; }
  void SetUseDotInCont(bool Value) { useDotInCont_ = Value; }
  WideChar UseDotInContChar() const { return useDotInContChar_; }
  void SetUseDotInContChar(WideChar Value) { useDotInContChar_ = Value; }
  // The navigator that grids bind to their data source when they take the
  // focus.
  TOraNavigator* OraNavigator() const { return oraNavigator_; }
  void SetOraNavigator(TOraNavigator* Value);
  // Application parameters, name=value lines ("DisableGridMenu" ...).
  TStrings* Params() const { return params_.get(); }
  void SetParams(TStrings* Value) { params_->Assign(Value); }

  // ---- Events ----
  TStateChangeImplicitEvent OnStateChangeImplicit;
  TGridStringsActionEvent OnDblClick;
  TGridStringsActionEvent OnInsertClick;
  TKeyEvent OnKeyDown;
  TNotifyEvent OnDataExportToExcel;
  TNotifyEvent OnDataImportFromExcel;
  TNotifyEvent OnXPopUpCmpLoad;
  TNotifyEvent OnClearDBMSOutput;
  TNotifyEvent OnShowDBMSOutput;
  TNotifyEvent OnSelectFromList;
  TNotifyEvent OnXVeskEditClick;
  TGridLoseFocusEvent OnGridLoseFocus;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  TOraSession* oraSession_ = nullptr;
  TOraNavigator* oraNavigator_ = nullptr;
  int userID_ = 0;
  String tableName_;
  bool adminMode_ = false;
  bool readOnly_ = false;
  bool flat_ = false;
  bool disableNumberSearch_ = false;
  THighlightRowMode highlightRowMode_ = hrmShadow;
  bool highlightEdit_ = false;
  TColor highlightEditColor_ = clInfoBk;
  bool useDefaultDisplayFormat_ = false;
  bool useDotInCont_ = false;
  WideChar useDotInContChar_ = u'.';
  std::unique_ptr<TStringList> params_;
};

// The active store, as grids and datasets reach it; null when none.
inline TGridPropCmp* GetGridPropCmp() { return TGridPropCmp::GetPointer(); }
