// The column model of the data grid: TColumn with its TColumnTitle, and
// the collection TDBGridColumns.
//
// A column's look falls back on defaults (the field's label and alignment,
// the grid's colours and fonts) until a value is set; AssignedValues tells
// which were set, RestoreDefaults forgets them, and only set values are
// streamed. The collection is in the default state while its columns
// follow the dataset's fields, and customised once a program or a stream
// shapes it.
#pragma once

#include <memory>

#include "platform/db/fields.h"
#include "platform/rtl/collection.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/filer.h"
#include "platform/ui/graphics.h"

class TCustomDBGrid;
class TColumn;

enum TColumnValue {
  cvColor, cvWidth, cvFont, cvAlignment, cvReadOnly, cvTitleColor, cvTitleCaption, cvTitleAlignment, cvTitleFont,
  cvImeMode, cvImeName
};
KELMAR_ENUM(TColumnValue, u"cvColor", u"cvWidth", u"cvFont", u"cvAlignment", u"cvReadOnly", u"cvTitleColor",
            u"cvTitleCaption", u"cvTitleAlignment", u"cvTitleFont", u"cvImeMode", u"cvImeName");
using TColumnValues = Set<TColumnValue>;

enum TColumnButtonStyle { cbsAuto, cbsEllipsis, cbsNone };
KELMAR_ENUM(TColumnButtonStyle, u"cbsAuto", u"cbsEllipsis", u"cbsNone");

enum TDBGridColumnsState { csDefault, csCustomized };
KELMAR_ENUM(TDBGridColumnsState, u"csDefault", u"csCustomized");

class TColumnTitle : public TPersistent, public TStoredProperties {
  KELMAR_CLASS(TColumnTitle, TPersistent)
 public:
  explicit TColumnTitle(TColumn* column);
  ~TColumnTitle() override;

  TColumn* Column() const { return column_; }
  String Caption() const;
  void SetCaption(const String& v);
  TColor Color() const;
  void SetColor(TColor v);
  TFont* Font() const;
  void SetFont(TFont* v);
  TAlignment Alignment() const;
  void SetAlignment(TAlignment v);

  String DefaultCaption() const;
  TColor DefaultColor() const;
  TFont* DefaultFont() const;
  TAlignment DefaultAlignment() const { return taLeftJustify; }
  void RestoreDefaults();
  void Assign(TPersistent* Source) override;
  bool IsPropertyStored(const TPropInfo& Prop) const override;

 private:
  void FontChanged(TObject*);
  TColumn* column_;
  String caption_;
  TColor color_ = clBtnFace;
  std::unique_ptr<TFont> font_;
  TAlignment alignment_ = taLeftJustify;
};

class TColumn : public TCollectionItem, public TStoredProperties {
  KELMAR_CLASS(TColumn, TCollectionItem)
 public:
  explicit TColumn(TCollection* Collection);
  ~TColumn() override;

  TCustomDBGrid* Grid() const;
  // The field named by FieldName in the grid's dataset, or null.
  TField* Field() const;
  void SetField(TField* v);
  const String& FieldName() const { return fieldName_; }
  void SetFieldName(const String& v);
  TColumnTitle* Title() const { return title_.get(); }
  void SetTitle(TColumnTitle* v) { title_->Assign(v); }

  TColor Color() const;
  void SetColor(TColor v);
  TFont* Font() const;
  void SetFont(TFont* v);
  TAlignment Alignment() const;
  void SetAlignment(TAlignment v);
  int Width() const;
  void SetWidth(int v);
  bool ReadOnly() const;
  void SetReadOnly(bool v);
  TColumnButtonStyle ButtonStyle() const { return buttonStyle_; }
  void SetButtonStyle(TColumnButtonStyle v);
  TStrings* PickList() const { return pickList_.get(); }
  void SetPickList(TStrings* v) { pickList_->Assign(v); }
  int DropDownRows() const { return dropDownRows_; }
  void SetDropDownRows(int v) { dropDownRows_ = v; }
  bool Visible() const { return visible_; }
  void SetVisible(bool v);
  // Visible and in a grid.
  bool Showing() const { return visible_; }

  TColumnValues AssignedValues() const { return assigned_; }
  TColor DefaultColor() const;
  TFont* DefaultFont() const;
  TAlignment DefaultAlignment() const;
  int DefaultWidth() const;
  bool DefaultReadOnly() const;
  virtual void RestoreDefaults();

  String DisplayName() const override;
  void Assign(TPersistent* Source) override;
  bool IsPropertyStored(const TPropInfo& Prop) const override;

 private:
  friend class TColumnTitle;
  void Assigned(TColumnValue v, bool on = true);
  void FontChanged(TObject*);

  String fieldName_;
  std::unique_ptr<TColumnTitle> title_;
  TColumnValues assigned_;
  TColor color_ = clWindow;
  std::unique_ptr<TFont> font_;
  TAlignment alignment_ = taLeftJustify;
  int width_ = 64;
  bool readOnly_ = false;
  TColumnButtonStyle buttonStyle_ = cbsAuto;
  std::unique_ptr<TStringList> pickList_;
  int dropDownRows_ = 7;
  bool visible_ = true;
};

class TDBGridColumns : public TTypedCollection<TColumn, TCollection> {
  KELMAR_CLASS(TDBGridColumns, TCollection)
 public:
  explicit TDBGridColumns(TCustomDBGrid* grid);

  TCustomDBGrid* Grid() const { return grid_; }
  TDBGridColumnsState State() const { return state_; }
  // Default: the columns are made again from the dataset's visible fields.
  // Customised: they stay as they are.
  void SetState(TDBGridColumnsState v);
  // One column per field of the dataset; the state becomes customised.
  void RebuildColumns();
  void RestoreDefaults();
  // The columns as the "TPF0" stream of a TColumnsWrapper holding them.
  void SaveToStream(TStream* stream);
  void LoadFromStream(TStream* stream);
  void SaveToFile(const String& fileName);
  void LoadFromFile(const String& fileName);

 protected:
  void Update(TCollectionItem* Item) override;
  // A column added or removed by anyone but the grid customises.
  void Notify(TCollectionItem* Item, TCollectionNotification Action) override;
  TPersistent* GetOwner() const override;

 private:
  friend class TCustomDBGrid;
  // The default columns: one per visible field, made by the grid.
  void BuildDefault();
  // Whether the columns are those BuildDefault would make.
  bool MatchesFields() const;
  TCustomDBGrid* grid_;
  TDBGridColumnsState state_ = csDefault;
  bool building_ = false;
};
