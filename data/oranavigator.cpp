#include "data/oranavigator.h"

#include "platform/db/datasource.h"

KELMAR_PUBLISH(TOraNavigator) {
  r.Prop(u"DataSource", &TOraNavigator::DataSource, &TOraNavigator::SetDataSource);
  r.Prop(u"VisibleButtons", &TOraNavigator::VisibleButtons, &TOraNavigator::SetVisibleButtons);
}

TOraNavigator::TOraNavigator(TComponent* AOwner) : TComponent(AOwner) {}

TOraNavigator::~TOraNavigator() { SetDataSource(nullptr); }

void TOraNavigator::SetDataSource(TDataSource* Value) {
  if (Value == dataSource_) return;
  if (dataSource_) dataSource_->RemoveFreeNotification(this);
  dataSource_ = Value;
  if (dataSource_) dataSource_->FreeNotification(this);
}

void TOraNavigator::Notification(TComponent* AComponent, TOperation Operation) {
  TComponent::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == dataSource_) dataSource_ = nullptr;
}

void TOraNavigator::BtnClick(TNavigateBtn Button) {
  TDataSet* ds = dataSource_ ? dataSource_->DataSet() : nullptr;
  if (!ds || !ds->Active() || !visibleButtons_.Contains(Button)) return;
  switch (Button) {
    case nbFirst: ds->First(); break;
    case nbPrior: ds->Prior(); break;
    case nbNext: ds->Next(); break;
    case nbLast: ds->Last(); break;
    case nbInsert: ds->Insert(); break;
    case nbDelete: ds->Delete(); break;
    case nbEdit: ds->Edit(); break;
    case nbPost: ds->Post(); break;
    case nbCancel: ds->Cancel(); break;
    case nbRefresh: ds->Refresh(); break;
  }
}
