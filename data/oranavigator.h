// TOraNavigator: the record navigator a dataset of the family can drive
// (VeskNav): a row of buttons over a data source.
//
// The windowing headers cannot be included beside the data framework's
// (both declare TAlignment), so this navigator is a component holding the
// buttons' state and acting on its dataset; a front end draws it.
#pragma once

#include "platform/db/dataset.h"

enum TNavigateBtn { nbFirst, nbPrior, nbNext, nbLast, nbInsert, nbDelete, nbEdit, nbPost, nbCancel, nbRefresh };
KELMAR_ENUM(TNavigateBtn, u"nbFirst", u"nbPrior", u"nbNext", u"nbLast", u"nbInsert", u"nbDelete", u"nbEdit",
            u"nbPost", u"nbCancel", u"nbRefresh");
using TButtonSet = Set<TNavigateBtn>;

class TOraNavigator : public TComponent {
  KELMAR_CLASS(TOraNavigator, TComponent)
 public:
  explicit TOraNavigator(TComponent* AOwner);
  ~TOraNavigator() override;

  // Not owned; cleared when the data source goes.
  TDataSource* DataSource() const { return dataSource_; }
  void SetDataSource(TDataSource* Value);
  // Every button is visible at first.
  TButtonSet VisibleButtons() const { return visibleButtons_; }
  void SetVisibleButtons(TButtonSet Value) { visibleButtons_ = Value; }

  // Acts as a press of the button: nothing for a hidden button or without
  // an open dataset.
  void BtnClick(TNavigateBtn Button);

 protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  TDataSource* dataSource_ = nullptr;
  TButtonSet visibleButtons_{nbFirst, nbPrior, nbNext, nbLast, nbInsert, nbDelete, nbEdit, nbPost, nbCancel, nbRefresh};
};
