#include "platform/ui/dbcolumns.h"

#include "platform/db/dataset.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/dbgrids.h"

namespace {
// Sets a font quietly: defaults flow in without counting as a change.
void QuietAssign(TFont* font, TFont* from) {
  TNotifyEvent saved = font->OnChange;
  font->OnChange = nullptr;
  font->Assign(from);
  font->OnChange = saved;
}
}  // namespace

// ---- TColumnTitle ----------------------------------------------------------------------

KELMAR_PUBLISH(TColumnTitle) {
  r.Prop(u"Alignment", &TColumnTitle::Alignment, &TColumnTitle::SetAlignment);
  r.Prop(u"Caption", &TColumnTitle::Caption, &TColumnTitle::SetCaption);
  r.Prop(u"Color", &TColumnTitle::Color, &TColumnTitle::SetColor);
  r.Prop(u"Font", &TColumnTitle::Font, &TColumnTitle::SetFont);
}

TColumnTitle::TColumnTitle(TColumn* column) : column_(column), font_(std::make_unique<TFont>()) {
  font_->OnChange = Closure(this, &TColumnTitle::FontChanged);
}

TColumnTitle::~TColumnTitle() = default;

String TColumnTitle::DefaultCaption() const {
  if (TField* f = column_->Field()) return f->DisplayLabel();
  return column_->FieldName();
}

TColor TColumnTitle::DefaultColor() const {
  TCustomDBGrid* grid = column_->Grid();
  return grid ? grid->FixedColor() : clBtnFace;
}

TFont* TColumnTitle::DefaultFont() const {
  TCustomDBGrid* grid = column_->Grid();
  return grid ? grid->TitleFont() : nullptr;
}

String TColumnTitle::Caption() const {
  return column_->assigned_.Contains(cvTitleCaption) ? caption_ : DefaultCaption();
}

void TColumnTitle::SetCaption(const String& v) {
  caption_ = v;
  column_->Assigned(cvTitleCaption);
}

TColor TColumnTitle::Color() const { return column_->assigned_.Contains(cvTitleColor) ? color_ : DefaultColor(); }

void TColumnTitle::SetColor(TColor v) {
  color_ = v;
  column_->Assigned(cvTitleColor);
}

TFont* TColumnTitle::Font() const {
  if (!column_->assigned_.Contains(cvTitleFont))
    if (TFont* def = DefaultFont(); def && !font_->SameAs(*def)) QuietAssign(font_.get(), def);
  return font_.get();
}

void TColumnTitle::SetFont(TFont* v) {
  QuietAssign(font_.get(), v);
  column_->Assigned(cvTitleFont);
}

void TColumnTitle::FontChanged(TObject*) { column_->Assigned(cvTitleFont); }

TAlignment TColumnTitle::Alignment() const {
  return column_->assigned_.Contains(cvTitleAlignment) ? alignment_ : DefaultAlignment();
}

void TColumnTitle::SetAlignment(TAlignment v) {
  alignment_ = v;
  column_->Assigned(cvTitleAlignment);
}

void TColumnTitle::RestoreDefaults() {
  TColumnValues& a = column_->assigned_;
  a >> cvTitleCaption >> cvTitleColor >> cvTitleFont >> cvTitleAlignment;
  column_->Changed(false);
}

void TColumnTitle::Assign(TPersistent* Source) {
  auto* t = dynamic_cast<TColumnTitle*>(Source);
  if (!t) {
    inherited::Assign(Source);
    return;
  }
  const TColumnValues& from = t->column_->assigned_;
  if (from.Contains(cvTitleCaption)) SetCaption(t->caption_);
  if (from.Contains(cvTitleColor)) SetColor(t->color_);
  if (from.Contains(cvTitleFont)) SetFont(t->font_.get());
  if (from.Contains(cvTitleAlignment)) SetAlignment(t->alignment_);
}

bool TColumnTitle::IsPropertyStored(const TPropInfo& Prop) const {
  const TColumnValues& a = column_->assigned_;
  if (Prop.Name == u"Caption") return a.Contains(cvTitleCaption);
  if (Prop.Name == u"Color") return a.Contains(cvTitleColor);
  if (Prop.Name == u"Font") return a.Contains(cvTitleFont);
  if (Prop.Name == u"Alignment") return a.Contains(cvTitleAlignment);
  return true;
}

// ---- TColumn ------------------------------------------------------------------------

KELMAR_PUBLISH(TColumn) {
  r.Prop(u"Alignment", &TColumn::Alignment, &TColumn::SetAlignment);
  r.Prop(u"ButtonStyle", &TColumn::ButtonStyle, &TColumn::SetButtonStyle).Default = cbsAuto;
  r.Prop(u"Color", &TColumn::Color, &TColumn::SetColor);
  r.Prop(u"DropDownRows", &TColumn::DropDownRows, &TColumn::SetDropDownRows).Default = 7;
  r.Prop(u"FieldName", &TColumn::FieldName, &TColumn::SetFieldName);
  r.Prop(u"Font", &TColumn::Font, &TColumn::SetFont);
  r.Prop(u"PickList", &TColumn::PickList, &TColumn::SetPickList);
  r.Prop(u"ReadOnly", &TColumn::ReadOnly, &TColumn::SetReadOnly);
  r.Prop(u"Title", &TColumn::Title, &TColumn::SetTitle);
  r.Prop(u"Width", &TColumn::Width, &TColumn::SetWidth);
  r.Prop(u"Visible", &TColumn::Visible, &TColumn::SetVisible).Default = 1;
}

TColumn::TColumn(TCollection* Collection)
    : TCollectionItem(Collection),
      title_(std::make_unique<TColumnTitle>(this)),
      font_(std::make_unique<TFont>()),
      pickList_(std::make_unique<TStringList>()) {
  font_->OnChange = Closure(this, &TColumn::FontChanged);
}

TColumn::~TColumn() = default;

TCustomDBGrid* TColumn::Grid() const {
  auto* columns = dynamic_cast<TDBGridColumns*>(Collection());
  return columns ? columns->Grid() : nullptr;
}

TField* TColumn::Field() const {
  TCustomDBGrid* grid = Grid();
  TDataSet* ds = grid && grid->DataSource() ? grid->DataSource()->DataSet() : nullptr;
  return ds && !fieldName_.IsEmpty() ? ds->FindField(fieldName_) : nullptr;
}

void TColumn::SetField(TField* v) { SetFieldName(v ? v->FieldName() : String()); }

void TColumn::SetFieldName(const String& v) {
  if (fieldName_ == v) return;
  fieldName_ = v;
  Changed(false);
}

void TColumn::Assigned(TColumnValue v, bool on) {
  if (on) assigned_ << v;
  else assigned_ >> v;
  Changed(false);
}

TColor TColumn::DefaultColor() const {
  TCustomDBGrid* grid = Grid();
  return grid ? grid->Color() : clWindow;
}

TFont* TColumn::DefaultFont() const {
  TCustomDBGrid* grid = Grid();
  return grid ? grid->Font() : nullptr;
}

TAlignment TColumn::DefaultAlignment() const {
  TField* f = Field();
  return f ? f->Alignment() : taLeftJustify;
}

int TColumn::DefaultWidth() const {
  TCustomDBGrid* grid = Grid();
  if (!grid) return 64;
  TField* f = Field();
  if (!f) return grid->DefaultColWidth();
  // Wide enough for the field's characters and for the title.
  TCanvas* canvas = grid->Canvas();
  canvas->SetFont(Font());
  int w = canvas->TextWidth(String::StringOfChar(u'0', f->DisplayWidth())) + 4;
  canvas->SetFont(title_->Font());
  return std::max(w, canvas->TextWidth(title_->Caption()) + 4);
}

bool TColumn::DefaultReadOnly() const {
  TField* f = Field();
  return f && f->ReadOnly();
}

TColor TColumn::Color() const { return assigned_.Contains(cvColor) ? color_ : DefaultColor(); }

void TColumn::SetColor(TColor v) {
  color_ = v;
  Assigned(cvColor);
}

TFont* TColumn::Font() const {
  if (!assigned_.Contains(cvFont))
    if (TFont* def = DefaultFont(); def && !font_->SameAs(*def)) QuietAssign(font_.get(), def);
  return font_.get();
}

void TColumn::SetFont(TFont* v) {
  QuietAssign(font_.get(), v);
  Assigned(cvFont);
}

void TColumn::FontChanged(TObject*) { Assigned(cvFont); }

TAlignment TColumn::Alignment() const { return assigned_.Contains(cvAlignment) ? alignment_ : DefaultAlignment(); }

void TColumn::SetAlignment(TAlignment v) {
  alignment_ = v;
  Assigned(cvAlignment);
}

int TColumn::Width() const { return assigned_.Contains(cvWidth) ? width_ : DefaultWidth(); }

void TColumn::SetWidth(int v) {
  width_ = v;
  Assigned(cvWidth);
}

bool TColumn::ReadOnly() const { return assigned_.Contains(cvReadOnly) ? readOnly_ : DefaultReadOnly(); }

void TColumn::SetReadOnly(bool v) {
  readOnly_ = v;
  Assigned(cvReadOnly);
}

void TColumn::SetButtonStyle(TColumnButtonStyle v) {
  buttonStyle_ = v;
  Changed(false);
}

void TColumn::SetVisible(bool v) {
  if (visible_ == v) return;
  visible_ = v;
  Changed(true);
}

void TColumn::RestoreDefaults() {
  assigned_ = TColumnValues();
  pickList_->Clear();
  buttonStyle_ = cbsAuto;
  dropDownRows_ = 7;
  Changed(false);
}

String TColumn::DisplayName() const { return fieldName_.IsEmpty() ? inherited::DisplayName() : fieldName_; }

void TColumn::Assign(TPersistent* Source) {
  auto* c = dynamic_cast<TColumn*>(Source);
  if (!c) {
    inherited::Assign(Source);
    return;
  }
  fieldName_ = c->fieldName_;
  assigned_ = TColumnValues();
  if (c->assigned_.Contains(cvColor)) SetColor(c->color_);
  if (c->assigned_.Contains(cvWidth)) SetWidth(c->width_);
  if (c->assigned_.Contains(cvFont)) SetFont(c->font_.get());
  if (c->assigned_.Contains(cvAlignment)) SetAlignment(c->alignment_);
  if (c->assigned_.Contains(cvReadOnly)) SetReadOnly(c->readOnly_);
  title_->Assign(c->title_.get());
  buttonStyle_ = c->buttonStyle_;
  pickList_->Assign(c->pickList_.get());
  dropDownRows_ = c->dropDownRows_;
  visible_ = c->visible_;
  Changed(false);
}

bool TColumn::IsPropertyStored(const TPropInfo& Prop) const {
  if (Prop.Name == u"Color") return assigned_.Contains(cvColor);
  if (Prop.Name == u"Width") return assigned_.Contains(cvWidth);
  if (Prop.Name == u"Font") return assigned_.Contains(cvFont);
  if (Prop.Name == u"Alignment") return assigned_.Contains(cvAlignment);
  if (Prop.Name == u"ReadOnly") return assigned_.Contains(cvReadOnly);
  return true;
}

// ---- TDBGridColumns ---------------------------------------------------------------------

KELMAR_PUBLISH(TDBGridColumns) {}

TDBGridColumns::TDBGridColumns(TCustomDBGrid* grid) : TTypedCollection(), grid_(grid) {}

TPersistent* TDBGridColumns::GetOwner() const { return grid_; }

void TDBGridColumns::Update(TCollectionItem*) {
  if (grid_ && !building_) grid_->LayoutChanged();
}

void TDBGridColumns::Notify(TCollectionItem*, TCollectionNotification) {
  if (!building_) state_ = csCustomized;
}

void TDBGridColumns::BuildDefault() {
  building_ = true;
  try {
    Clear();
    TDataSet* ds = grid_ && grid_->DataSource() ? grid_->DataSource()->DataSet() : nullptr;
    if (ds)
      for (TField* f : *ds->Fields())
        if (f->Visible()) Add()->SetFieldName(f->FieldName());
  } catch (...) {
    building_ = false;
    throw;
  }
  building_ = false;
  state_ = csDefault;
}

bool TDBGridColumns::MatchesFields() const {
  TDataSet* ds = grid_ && grid_->DataSource() ? grid_->DataSource()->DataSet() : nullptr;
  int i = 0;
  if (ds)
    for (TField* f : *ds->Fields()) {
      if (!f->Visible()) continue;
      if (i >= Count() || !SameText(Items(i)->FieldName(), f->FieldName())) return false;
      ++i;
    }
  return i == Count();
}

void TDBGridColumns::SetState(TDBGridColumnsState v) {
  if (v == csDefault) {
    BuildDefault();
    if (grid_) grid_->LayoutChanged();
  } else {
    state_ = csCustomized;
  }
}

void TDBGridColumns::RebuildColumns() {
  if (grid_) grid_->BeginLayout();
  try {
    building_ = true;
    Clear();
    TDataSet* ds = grid_ && grid_->DataSource() ? grid_->DataSource()->DataSet() : nullptr;
    if (ds)
      for (TField* f : *ds->Fields()) Add()->SetFieldName(f->FieldName());
    building_ = false;
    state_ = csCustomized;
  } catch (...) {
    building_ = false;
    if (grid_) grid_->EndLayout();
    throw;
  }
  if (grid_) grid_->EndLayout();
}

void TDBGridColumns::RestoreDefaults() {
  BeginUpdate();
  for (int i = 0; i < Count(); ++i) Items(i)->RestoreDefaults();
  EndUpdate();
}

void TDBGridColumns::SaveToStream(TStream* stream) {
  WriteCollectionToStream(stream, this, u"TColumnsWrapper", u"Columns");
}

void TDBGridColumns::LoadFromStream(TStream* stream) {
  // Read aside first: a damaged stream leaves the columns as they were.
  TDBGridColumns loaded(nullptr);
  ReadCollectionFromStream(stream, &loaded);
  if (grid_) grid_->BeginLayout();
  try {
    building_ = true;
    Assign(&loaded);
    building_ = false;
  } catch (...) {
    building_ = false;
    if (grid_) grid_->EndLayout();
    throw;
  }
  state_ = csCustomized;
  if (grid_) grid_->EndLayout();
}

void TDBGridColumns::SaveToFile(const String& fileName) {
  TFileStream file(fileName, fmCreate);
  SaveToStream(&file);
}

void TDBGridColumns::LoadFromFile(const String& fileName) {
  TFileStream file(fileName, fmOpenRead);
  LoadFromStream(&file);
}
