#include "filter/fill.h"

#include "platform/db/dadataset.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"

namespace {

// Grid columns, and the list column each mirrors.
enum TGridColumn {
  gcField, gcExpression, gcType, gcRealFieldName, gcConfig, gcFieldKind, gcTableName, gcKeyField, gcLKeyField,
  gcLResField, gcCodText
};
constexpr TListFilts::TColumn kListColumnOf[TFindFilterForm::GridColumnCount] = {
    TListFilts::lfField,     TListFilts::lfExpression, TListFilts::lfType,      TListFilts::lfRealFieldName,
    TListFilts::lfConfig,    TListFilts::lfFieldKind,  TListFilts::lfTableName, TListFilts::lfKeyField,
    TListFilts::lfLKeyField, TListFilts::lfLResField,  TListFilts::lfCodText};

const String kBlank = u" ";
const String kLookupKind = u"2";

// The captions of one language.
struct TCaptions {
  const char16_t* Search;
  const char16_t* Filter;
  const char16_t* Field;
  const char16_t* Value;
  const char16_t* Expression;
  const char16_t* CaseSensitive;
  const char16_t* Digits;
  const char16_t* Clear;
  const char16_t* Generate;
  const char16_t* AdvancedSearch;
  const char16_t* AdvancedFilter;
  const char16_t* TextOptions;
  const char16_t* Options[4];
  const char16_t* BadValue;
  const char16_t* GridHeaders;
};

const TCaptions kCaptions[3] = {
    {u"Search", u"Filter", u"Field", u"Value", u"Generated expresion", u"Case sensitive", u"Digits only", u"Clear",
     u"Generate", u"Advanced Search", u"Advanced Filter", u"Text options",
     {u"Exact match", u"Search inside of ...", u"Begins from ...", u"Smart compare"}, u"Bad filter value:",
     u"Field\nExpression\nType\nReal Field Name\nConfig\nFieldKind\nTableName\nKeyField\nLKeyField\nLResField\n"
     u"Cod_Text"},
    {u"Cautarea", u"Filtru", u"Cimp", u"Valoarea", u"Expresia generata", u"Registru literii", u"Numai Cifre",
     u"Stergerea", u"Generarea", u"Cautarea Compusa", u"Filtarea Compusa", u"Text optiuni",
     {u"Coincidenta completa", u"Coincidenta partiala", u"Coincidenta de la inceput", u"Comp. cuminte"},
     u"Valoare filtru incorecta:",
     u"Cimp\nExpresia\nTipul\nAdevarat nume a cimpului\nConfig\nFieldKind\nNume tabelui\nKeyField\nLKeyField\n"
     u"LResField\nCod_Text"},
    {u"Поиск", u"Фильтр", u"Поле", u"Значение", u"Сгенерированное выражение", u"Учитывать регистр",
     u"Только цифры", u"Очистить", u"Построить", u"Расширенный поиск", u"Расширенный фильтр", u"Текст. опции",
     {u"Полное совпадение", u"Искать внутри строки", u"Строка начинается с ...", u"Нечеткое сравн."},
     u"Не верное значение фильтра:",
     u"Поле\nВыражение\nТип\nНастоящее имя поля\nКонфигурация\nFieldKind\nNume tabelui\nKeyField\nLKeyField\n"
     u"LResField\nCod_Text"},
};

bool IsWholeNumberType(TFieldType type) {
  return type == ftInteger || type == ftSmallint || type == ftLargeint || type == ftWord;
}

bool IsFractionType(TFieldType type) { return type == ftFloat || type == ftCurrency; }

// The digit at a 1-based place of a Config text; raises the string range
// error when the text is too short, as a row restored without its Config.
int ConfigDigit(const String& config, int place) {
  const WideChar c = config[place];
  if (c < u'0' || c > u'9') throw EConvertError(u"'" + String(c) + u"' is not a valid text option");
  return c - u'0';
}

// The value passes the dialogue's number check: blanks separate numbers,
// the operators are dropped, and every piece must read as a number.
bool IsNumberListValue(const String& value) {
  String text = StringReplace(value, u" ", u"\n", TReplaceFlags{rfReplaceAll});
  for (const char16_t* op : {u">", u"<", u"="}) text = StringReplace(text, op, u"", TReplaceFlags{rfReplaceAll});
  TStringList lines;
  lines.SetText(text);
  for (int i = 0; i < lines.Count(); ++i) {
    double number = 0;
    if (!TryStrToFloat(lines.Strings(i), number)) return false;
  }
  return true;
}

// Loading controls from a row runs their handlers; this keeps those
// handlers from writing the controls' half-loaded state back into the row.
class TLoading {
 public:
  explicit TLoading(bool& flag) : flag_(flag), old_(flag) { flag_ = true; }
  ~TLoading() { flag_ = old_; }
  TLoading(const TLoading&) = delete;
  TLoading& operator=(const TLoading&) = delete;

 private:
  bool& flag_;
  bool old_;
};

}  // namespace

KELMAR_PUBLISH(TFindFilterForm) {}

TFindFilterForm::TFindFilterForm(TComponent* AOwner, TListFilts* List, const String& FieldName, int Mode)
    : TForm(AOwner), list_(List) {
  if (!list_) throw EArgumentException(u"TFindFilterForm needs a filter list");
  SetName(u"FindFilterForm");
  SetBorderStyle(bsDialog);
  SetPosition(poScreenCenter);
  CreateControls();
  AskLanguage();
  SetupControls();
  SetMode(Mode);
  Setup(FieldName);
}

void TFindFilterForm::CreateControls() {
  auto make = [this]<class T>(T*& control, const char16_t* name, TWinControl* parent) {
    control = new T(this);
    control->SetName(name);
    control->SetParent(parent);
  };
  make(lbField, u"lbField", this);
  make(Fields, u"Fields", this);
  Fields->SetStyle(csDropDownList);
  make(lbValue, u"lbValue", this);
  make(Value, u"Value", this);
  make(sbClear, u"sbClear", this);
  make(rgTxtOpts, u"rgTxtOpts", this);
  make(cbCaseSen, u"cbCaseSen", this);
  make(rgLkpMode, u"rgLkpMode", this);
  rgLkpMode->Items()->Add(u"Cod");
  rgLkpMode->Items()->Add(u"Text");
  rgLkpMode->SetItemIndex(0);
  make(cbNumber, u"cbNumber", this);
  make(stNumber, u"stNumber", this);
  stNumber->SetCaption(u"123");
  make(edLimit, u"edLimit", this);
  edLimit->SetReadOnly(true);
  make(udLimit, u"udLimit", this);
  udLimit->SetMin(0);
  udLimit->SetMax(10);
  udLimit->SetAssociate(edLimit);
  make(BtnOK, u"BtnOK", this);
  BtnOK->SetCaption(u"OK");
  BtnOK->SetDefault(true);
  make(BtnCancel, u"BtnCancel", this);
  BtnCancel->SetCaption(u"Cancel");
  BtnCancel->SetCancel(true);
  BtnCancel->SetModalResult(mrCancel);
  make(BtnAdvanced, u"BtnAdvanced", this);
  make(panBottom, u"panBottom", this);
  panBottom->SetVisible(false);
  make(lbExpression, u"lbExpression", panBottom);
  make(mFilter, u"mFilter", panBottom);
  make(BtnGenerate, u"BtnGenerate", panBottom);
  make(ClearButton, u"ClearButton", panBottom);
  make(StringGrid1, u"StringGrid1", panBottom);

  Fields->OnChange = TNotifyEvent(this, &TFindFilterForm::FieldsChange);
  Value->OnEnter = TNotifyEvent(this, &TFindFilterForm::ValueEnter);
  Value->OnKeyPress = TKeyPressEvent(this, &TFindFilterForm::ValueKeyPress);
  Value->OnChange = TNotifyEvent(this, &TFindFilterForm::ValueChange);
  rgTxtOpts->OnClick = TNotifyEvent(this, &TFindFilterForm::rgTxtOptsClick);
  cbCaseSen->OnClick = TNotifyEvent(this, &TFindFilterForm::cbCaseSenClick);
  rgLkpMode->OnClick = TNotifyEvent(this, &TFindFilterForm::rgLkpModeClick);
  sbClear->OnClick = TNotifyEvent(this, &TFindFilterForm::sbClearClick);
  stNumber->OnClick = TNotifyEvent(this, &TFindFilterForm::stNumberClick);
  BtnAdvanced->OnClick = TNotifyEvent(this, &TFindFilterForm::BtnAdvancedClick);
  ClearButton->OnClick = TNotifyEvent(this, &TFindFilterForm::ClearButtonClick);
  BtnGenerate->OnClick = TNotifyEvent(this, &TFindFilterForm::BtnGenerateClick);
  BtnOK->OnClick = TNotifyEvent(this, &TFindFilterForm::BtnOKClick);
  OnShow = TNotifyEvent(this, &TFindFilterForm::FormShow);
  OnClose = TCloseEvent(this, &TFindFilterForm::FormClose);
}

void TFindFilterForm::AskLanguage() {
  language_ = flRomanian;
  TCustomForm* main = Application->MainForm();
  if (!main) return;
  static const char kQuery[] = "GET_LANGUAGE";
  int index = language_;
  SendMessage(main->Handle(), WM_FINDFILTER_LANGUAGE, reinterpret_cast<WPARAM>(kQuery),
              reinterpret_cast<LPARAM>(&index));
  // An answer outside the three languages keeps the default.
  if (index >= flEnglish && index <= flRussian) language_ = index;
}

void TFindFilterForm::SetupControls() {
  SetUpper(true);
  const TCaptions& text = kCaptions[language_];
  lbField->SetCaption(text.Field);
  lbValue->SetCaption(text.Value);
  lbExpression->SetCaption(text.Expression);
  cbCaseSen->SetCaption(text.CaseSensitive);
  cbNumber->SetCaption(text.Digits);
  ClearButton->SetCaption(text.Clear);
  BtnGenerate->SetCaption(text.Generate);
  rgTxtOpts->SetCaption(text.TextOptions);
  rgTxtOpts->Items()->Clear();
  for (const char16_t* option : text.Options) rgTxtOpts->Items()->Add(option);
  // Smart compare needs the server's similarity package, which only smart
  // queries are set up to call.
  if (!dynamic_cast<TSmartQuery*>(list_->DataSet())) {
    rgTxtOpts->Items()->Delete(toSmart);
    for (TControl* control : {static_cast<TControl*>(cbNumber), static_cast<TControl*>(edLimit),
                              static_cast<TControl*>(udLimit), static_cast<TControl*>(stNumber)})
      control->SetVisible(false);
  }
}

void TFindFilterForm::SetMode(int Mode) {
  mode_ = Mode;
  const TCaptions& text = kCaptions[language_];
  SetCaption(Mode ? text.Search : text.Filter);
  BtnAdvanced->SetCaption(Mode ? text.AdvancedSearch : text.AdvancedFilter);
}

void TFindFilterForm::Setup(const String& FieldName) {
  TLoading loading(loading_);
  list_->Column(TListFilts::lfExpressionBackup)->Assign(list_->Column(TListFilts::lfExpression));
  list_->Column(TListFilts::lfConfigBackup)->Assign(list_->Column(TListFilts::lfConfig));

  const int options = rgTxtOpts->Items()->Count();
  rgTxtOpts->SetItemIndex(options ? list_->TextOption() % options : -1);
  rgTxtOptsClick(rgTxtOpts);
  cbCaseSen->SetChecked(list_->CaseSensitive());
  cbCaseSenClick(cbCaseSen);
  cbNumber->SetChecked(list_->Number());
  udLimit->SetPosition(list_->Limit());
  mFilter->SetText(list_->FilterText());

  Fields->Items()->Assign(list_->Column(TListFilts::lfField));
  const int rows = list_->Count();
  StringGrid1->SetColCount(GridColumnCount);
  StringGrid1->SetRowCount(rows + 1);
  TStringList headers;
  headers.SetText(kCaptions[language_].GridHeaders);
  for (int column = 0; column < GridColumnCount; ++column) {
    const TStringList* source = list_->Column(kListColumnOf[column]);
    SetCell(column, 0, column < headers.Count() ? headers.Strings(column) : String());
    for (int row = 1; row <= rows; ++row)
      SetCell(column, row, row - 1 < source->Count() ? source->Strings(row - 1) : String());
  }
  for (int row = 1; row <= rows; ++row)
    if (Cell(gcExpression, row) == kBlank) SetCell(gcExpression, row, String());

  int found = -1;
  for (int row = 1; row <= rows && found < 0; ++row)
    if (Cell(gcRealFieldName, row) == FieldName) found = row - 1;
  if (found < 0) {
    Fields->SetItemIndex(-1);
    Value->SetText(String());
    SetActiveControl(Fields);
    return;
  }
  Fields->SetItemIndex(found);
  Value->SetText(Cell(gcExpression, found + 1));
  FieldsChange(Fields);
  SetActiveControl(Value);
}

// ---- Rows and cells ----------------------------------------------------------------

int TFindFilterForm::SelectedRow() const {
  const int index = Fields->ItemIndex();
  return index >= 0 && index + 1 < StringGrid1->RowCount() ? index + 1 : 0;
}

TField* TFindFilterForm::SelectedField() const {
  const int row = SelectedRow();
  if (!row || !list_->DataSet()) return nullptr;
  String name = Cell(gcRealFieldName, row).Trim();
  const int dot = name.Pos(u".");
  if (dot > 0) name = name.SubString(dot + 1, name.Length() - dot);
  return name.IsEmpty() ? nullptr : list_->DataSet()->FindField(name);
}

String TFindFilterForm::Cell(int Column, int Row) const { return StringGrid1->Cells(Column, Row); }

void TFindFilterForm::SetCell(int Column, int Row, const String& Text) { StringGrid1->SetCells(Column, Row, Text); }

void TFindFilterForm::ReadConfig(int Row) {
  const String config = Cell(gcConfig, Row);
  if (config.IsEmpty() || config == kBlank) return;
  cbCaseSen->SetChecked(config[1] != u'0');
  const int options = rgTxtOpts->Items()->Count();
  rgTxtOpts->SetItemIndex(ConfigDigit(config, 2) % options);
}

void TFindFilterForm::ApplyChanges(bool Empty) {
  const int row = SelectedRow();
  if (loading_ || !row) return;
  SetCell(gcExpression, row, Value->Text());
  if (!Empty && Cell(gcType, row) == u"S")
    SetCell(gcConfig, row, String(cbCaseSen->Checked() ? u"1" : u"0") + IntToStr(rgTxtOpts->ItemIndex()));
}

void TFindFilterForm::SetLookupMode(int Row) {
  if (Cell(gcFieldKind, Row) == kLookupKind) SetCell(gcCodText, Row, IntToStr(rgLkpMode->ItemIndex()));
}

// ---- Handlers ------------------------------------------------------------------------

void TFindFilterForm::FieldsChange(TObject*) {
  const int row = SelectedRow();
  if (!row) return;
  TLoading loading(loading_);
  rgLkpMode->SetEnabled(Cell(gcFieldKind, row) == kLookupKind);
  const bool text = Cell(gcType, row) == u"S";
  rgTxtOpts->SetEnabled(text);
  cbCaseSen->SetEnabled(text);
  if (text) ReadConfig(row);
  Value->SetText(Cell(gcExpression, row));
}

void TFindFilterForm::ValueEnter(TObject*) {
  const int row = SelectedRow();
  if (!row) return;
  TLoading loading(loading_);
  ReadConfig(row);
  Value->SetText(Cell(gcExpression, row));
}

void TFindFilterForm::ValueKeyPress(TObject*, WideChar& Key) {
  const int row = SelectedRow();
  TField* field = row && !Cell(gcRealFieldName, row).Trim().IsEmpty() ? SelectedField() : nullptr;
  if (!field) {
    Key = 0;
    return;
  }
  const TFieldType type = field->DataType();
  const bool whole = IsWholeNumberType(type), fraction = IsFractionType(type);
  if (!whole && !fraction) return;
  if (fraction && (Key == u'.' || Key == u',')) {
    Key = u'.';
    return;
  }
  const bool passes = (Key >= u'0' && Key <= u'9') || Key == u' ' || Key == u'<' || Key == u'=' || Key == u'>' ||
                      Key == 8 || Key == 22;
  if (!passes) Key = 0;
}

void TFindFilterForm::ValueChange(TObject*) {
  const int row = SelectedRow();
  if (loading_ || !row) return;
  SetLookupMode(row);
  ApplyChanges(Value->Text().IsEmpty());
}

void TFindFilterForm::rgTxtOptsClick(TObject*) {
  TextOption = rgTxtOpts->ItemIndex();
  const bool smart = TextOption == toSmart;
  for (TControl* control : {static_cast<TControl*>(cbNumber), static_cast<TControl*>(stNumber),
                            static_cast<TControl*>(edLimit), static_cast<TControl*>(udLimit)})
    control->SetVisible(smart);
  ApplyChanges(false);
}

void TFindFilterForm::cbCaseSenClick(TObject*) {
  SetUpper(!cbCaseSen->Checked());
  ApplyChanges(false);
}

void TFindFilterForm::rgLkpModeClick(TObject*) {
  if (const int row = SelectedRow()) SetLookupMode(row);
}

void TFindFilterForm::sbClearClick(TObject*) {
  const int row = SelectedRow();
  if (!row) return;
  Value->SetText(String());
  SetCell(gcConfig, row, String());
}

void TFindFilterForm::stNumberClick(TObject*) { cbNumber->SetChecked(!cbNumber->Checked()); }

void TFindFilterForm::BtnAdvancedClick(TObject*) { panBottom->SetVisible(!panBottom->Visible()); }

void TFindFilterForm::ClearButtonClick(TObject*) {
  mFilter->Clear();
  for (int row = 1; row < StringGrid1->RowCount(); ++row)
    for (int column : {gcExpression, gcConfig, gcCodText}) SetCell(column, row, String());
  Value->SetText(String());
}

void TFindFilterForm::BtnGenerateClick(TObject*) { GenerateFilter(); }

void TFindFilterForm::BtnOKClick(TObject*) {
  TField* field = SelectedField();
  if (field && (IsWholeNumberType(field->DataType()) || IsFractionType(field->DataType())) &&
      !IsNumberListValue(Value->Text())) {
    MessageDlg(String(kCaptions[language_].BadValue) + Value->Text(), mtInformation, TMsgDlgButtons{mbOK});
    Value->SetText(String());
    SetModalResult(mrCancel);
    return;
  }
  GenerateFilter();
  SetModalResult(mrOk);
}

void TFindFilterForm::FormShow(TObject*) {
  // Posted, so that the text arrives once the form is up and the person
  // sees it typed in.
  if (!input_.IsEmpty()) PostMessage(Handle(), WM_FINDFILTER_LANGUAGE, reinterpret_cast<WPARAM>(this), 0);
}

void TFindFilterForm::Dispatch(TMessage& Message) {
  if (Message.Msg != WM_FINDFILTER_LANGUAGE || Message.WParam != reinterpret_cast<WPARAM>(this)) {
    TForm::Dispatch(Message);
    return;
  }
  // A condition the person already gave for the field stays.
  if (SelectedRow() && Value->Text().IsEmpty()) Value->SetText(input_);
}

void TFindFilterForm::FormClose(TObject*, TCloseAction&) { SetupFilter(); }

// ---- Generation ----------------------------------------------------------------------

void TFindFilterForm::GenerateFilter() {
  mFilter->Clear();
  const int rows = StringGrid1->RowCount() - 1;
  bool any = false;
  for (int row = 1; row <= rows && !any; ++row) any = !Cell(gcExpression, row).Trim().IsEmpty();
  if (!any) return;
  NumberChecked = cbNumber->Checked();
  LimitPosition = udLimit->Position();
  String prefix = u"(";
  for (int row = 1; row <= rows; ++row) {
    const String expression = Cell(gcExpression, row);
    const String type = Cell(gcType, row);
    if (expression.Trim().IsEmpty() || type.IsEmpty()) continue;
    const WideChar kind = type[1];
    if (kind != u'I' && kind != u'D' && kind != u'S') continue;
    if (kind == u'S') {
      const String config = Cell(gcConfig, row);
      SetUpper(config[1] == u'0');
      TextOption = ConfigDigit(config, 2);
    }
    // A lookup row in "Cod" mode asks the lookup table by its result
    // column; any other lookup row compares its key as a number.
    String target = Cell(gcRealFieldName, row);
    bool subSelect = false, numeric = false;
    if (Cell(gcFieldKind, row) == kLookupKind) {
      subSelect = Cell(gcCodText, row) == u"0";
      numeric = !subSelect;
      target = subSelect ? Cell(gcLResField, row) : Cell(gcKeyField, row);
    }
    String condition = numeric || kind == u'I' ? ReFloat(expression, target)
                       : kind == u'D'          ? ReDate(expression, target)
                                               : ReString(expression, target);
    if (subSelect)
      condition = Cell(gcKeyField, row) + u" IN (SELECT Z." + Cell(gcLKeyField, row) + u" FROM \"" +
                  Cell(gcTableName, row) + u"\" Z WHERE (" + condition + u"))";
    mFilter->Lines()->Add(prefix + condition + u")");
    prefix = u"AND(";
  }
}

void TFindFilterForm::SetupFilter() {
  list_->SetTextOption(rgTxtOpts->ItemIndex());
  list_->SetLimit(udLimit->Position());
  list_->SetCaseSensitive(cbCaseSen->Checked());
  list_->SetNumber(cbNumber->Checked());
  if (ModalResult() != mrOk) {
    list_->Column(TListFilts::lfExpression)->Assign(list_->Column(TListFilts::lfExpressionBackup));
    list_->Column(TListFilts::lfConfig)->Assign(list_->Column(TListFilts::lfConfigBackup));
    return;
  }
  list_->SetFilterText(mFilter->Text());
  for (int column : {gcExpression, gcConfig, gcCodText}) {
    TStringList* target = list_->Column(kListColumnOf[column]);
    target->Clear();
    for (int row = 1; row < StringGrid1->RowCount(); ++row) {
      const String cell = Cell(column, row);
      target->Add(cell.IsEmpty() ? kBlank : cell);
    }
  }
}

// ---- Entry points of the dataset side --------------------------------------------------

void TListFilts::GenerateFilter() {
  TFindFilterForm form(nullptr, this, String(), 0);
  form.SetModalResult(mrOk);
  form.GenerateFilter();
  form.SetupFilter();
}

bool ShowFindFilterForm(TListFilts* List, const String& RealName, const String& Input) {
  TFindFilterForm form(nullptr, List, RealName, 0);
  form.SetInput(Input);
  return form.ShowModal() == mrOk;
}
