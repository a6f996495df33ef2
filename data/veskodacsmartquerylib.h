// TVeskODACSmartQuery: the member of the dataset family that a designer sets
// up as a whole. It is the family's body over TSmartQuery with every group,
// and adds a preparation text kept with the query, its whole definition as
// one property text, and a command that opens the query editor over it.
#pragma once

#include <memory>

#include "data/veskbody.h"

struct TVeskODACSmartQueryTraits : TVeskNoGroups {
  static constexpr bool SqlComposition = true;
  static constexpr bool SessionGroup = true;
  static constexpr bool LocateLookup = true;
  static constexpr bool CFunc = true;
  static constexpr bool Updater = true;
};

using TVeskODACSmartQueryBody = TVeskBody<TSmartQuery, TVeskODACSmartQueryTraits>;
extern template class TVeskBody<TSmartQuery, TVeskODACSmartQueryTraits>;

class TVeskODACSmartQuery;

// The query editor: shows itself over Query, set up from Owner (may be
// null), and returns its modal result.
using TEditQueryFormProc = int (*)(TVeskODACSmartQuery* Query, TComponent* Owner);
// The editor that EditProps opens; the editor's unit registers itself, and
// null takes it away. Returns the editor registered before.
TEditQueryFormProc RegisterEditQueryForm(TEditQueryFormProc Editor);

class TVeskODACSmartQuery : public TVeskODACSmartQueryBody {
  KELMAR_CLASS(TVeskODACSmartQuery, TVeskODACSmartQueryBody)
 public:
  explicit TVeskODACSmartQuery(TComponent* AOwner);
  ~TVeskODACSmartQuery() override;

  // Text kept with the query and stored in its documents; nothing here
  // runs it.
  TStrings* SQLPrepare() const { return sqlPrepare_.get(); }
  void SetSQLPrepare(TStrings* Value) { sqlPrepare_->Assign(Value); }

  // The property list of the query (data/querydoc.h) as one text; writing
  // applies it, closing and reopening an open query.
  String PropText();
  void SetPropText(const String& Value);

  // Write-only command: runs DoEditProps whatever the value.
  void SetEditProps(bool Value) { DoEditProps(Value); }
  // Opens the registered query editor over this query, set up from
  // EditPropsCmp, and keeps its result in EditPropsResult. With no editor
  // registered nothing is shown and the result is 0.
  virtual void DoEditProps(bool Value);
  // What the editor is set up from; cleared when that component goes.
  TComponent* EditPropsCmp() const { return editPropsCmp_; }
  void SetEditPropsCmp(TComponent* Value);
  int EditPropsResult() const { return editPropsResult_; }

  // Kept for the designs that store it; it changes nothing.
  bool VeskRepairFields() const { return repairFields_; }
  void SetVeskRepairFields(bool Value) { repairFields_ = Value; }

  // Sets the options; FullRefresh then follows them: on when any refresh
  // option is on.
  void SetRefreshOptions(TRefreshOptions Value) override;

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  std::unique_ptr<TStringList> sqlPrepare_;
  TComponent* editPropsCmp_ = nullptr;
  int editPropsResult_ = 0;
  bool repairFields_ = false;
};
