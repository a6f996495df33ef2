#include "platform/db/orasession.h"

#include <algorithm>

#include "platform/db/dadataset.h"

void CheckDbStatus(const TDbStatus& status) {
  if (!status.IsOk()) throw EOraError(status.OraCode, status.Message());
}

TDbValue VariantToDbValue(const Variant& v) {
  if (v.IsNull() || v.IsEmpty()) return TDbValue::Null();
  switch (v.VarType() & varTypeMask) {
    case varBoolean: return TDbValue::Integer(v.AsBoolean() ? 1 : 0);
    case varSmallint:
    case varInteger:
    case varShortInt:
    case varByte:
    case varWord:
    case varLongWord:
    case varInt64:
    case varUInt64: return TDbValue::Integer(v.AsInt64());
    case varSingle:
    case varDouble:
    case varCurrency: return TDbValue::FloatValue(v.AsFloat());
    case varDate: return TDbValue::Date(v.AsDateTime().Val);
    default: return TDbValue::TextValue(v.AsString());
  }
}

Variant DbValueToVariant(const TDbValue& value) {
  switch (value.Kind) {
    case dkNull: return Null();
    case dkInteger: return Variant(value.Int);
    case dkFloat: return Variant(value.Float);
    case dkText: return Variant(value.Text);
    case dkDate: return Variant(TDateTime(value.Float));
    case dkBlob: return Variant(String::FromUtf8(value.Bytes));
  }
  return Null();
}

namespace {
std::vector<TOraSession*>& Sessions() {
  static std::vector<TOraSession*> sessions;
  return sessions;
}
}  // namespace

TOraSession* DefaultSession() {
  if (!Sessions().empty()) return Sessions().front();
  static std::unique_ptr<TOraSession> fallback;
  if (!fallback) fallback.reset(new TOraSession(nullptr));
  return fallback.get();
}

// ---- Options -----------------------------------------------------------------

KELMAR_PUBLISH(TOraSessionOptions) { r.Prop(u"Net", &TOraSessionOptions::Net, &TOraSessionOptions::SetNet).Default = 0; }

void TOraSessionOptions::Assign(TPersistent* Source) {
  auto* o = dynamic_cast<TOraSessionOptions*>(Source);
  if (!o) return TPersistent::Assign(Source);
  net_ = o->net_;
}

// ---- TOraSession ---------------------------------------------------------------

KELMAR_PUBLISH(TOraSession) {
  r.Prop(u"Connected", &TOraSession::Connected, &TOraSession::SetConnected).Default = 0;
  r.Prop(u"Server", &TOraSession::Server, &TOraSession::SetServer);
  r.Prop(u"Username", &TOraSession::Username, &TOraSession::SetUsername);
  r.Prop(u"Password", &TOraSession::Password, &TOraSession::SetPassword);
  r.Prop(u"ConnectPrompt", &TOraSession::ConnectPrompt, &TOraSession::SetConnectPrompt).Default = 1;
  r.Prop(u"Driver", &TOraSession::Driver, &TOraSession::SetDriver);
  r.Prop(u"Options", &TOraSession::Options, &TOraSession::SetOptions);
  r.Prop(u"BeforeConnect", &TOraSession::BeforeConnect);
  r.Prop(u"AfterConnect", &TOraSession::AfterConnect);
  r.Prop(u"BeforeDisconnect", &TOraSession::BeforeDisconnect);
  r.Prop(u"AfterDisconnect", &TOraSession::AfterDisconnect);
}

TOraSession::TOraSession(TComponent* AOwner)
    : TComponent(AOwner), options_(std::make_unique<TOraSessionOptions>()) {
  Sessions().push_back(this);
}

TOraSession::~TOraSession() {
  Sessions().erase(std::remove(Sessions().begin(), Sessions().end(), this), Sessions().end());
  for (TCustomDADataSet* ds : std::vector<TCustomDADataSet*>(dataSets_)) ds->SessionGone(this);
  connection_.reset();
}

void TOraSession::SetConnected(bool value) {
  if (value) Connect();
  else Disconnect();
}

void TOraSession::CheckDisconnected(const char16_t* what) const {
  if (connection_) throw EDatabaseError(String(u"Cannot change ") + what + u" of a connected session");
}

void TOraSession::SetServer(const String& v) {
  if (v == server_) return;
  CheckDisconnected(u"the server");
  server_ = v;
}

void TOraSession::SetDriver(const String& v) {
  if (v == driver_) return;
  CheckDisconnected(u"the driver");
  driver_ = v;
}

void TOraSession::Connect() {
  if (connection_) return;
  BeforeConnect(this);
  TDbConnectParams params;
  params.Driver = driver_;
  params.Server = server_;
  params.Username = username_;
  params.Password = password_;
  if (options_->Net()) params.Options[u"Net"] = u"true";
  std::unique_ptr<TDbConnection> connection;
  CheckDbStatus(ConnectDb(params, connection));
  if (!connection) throw EDatabaseError(u"The driver \"" + driver_ + u"\" gave no connection");
  connection_ = std::move(connection);
  try {
    ConnectionMade();
  } catch (...) {
    connection_.reset();
    throw;
  }
  AfterConnect(this);
}

void TOraSession::Disconnect() {
  if (!connection_) return;
  BeforeDisconnect(this);
  for (TCustomDADataSet* ds : std::vector<TCustomDADataSet*>(dataSets_)) ds->Close();
  connection_.reset();
  AfterDisconnect(this);
}

TDbConnection* TOraSession::Connection() const {
  if (!connection_) throw EDatabaseError(u"Session is not connected");
  return connection_.get();
}

String TOraSession::ServerVersion() const { return Connection()->ServerVersion(); }

bool TOraSession::InTransaction() const { return connection_ && connection_->InTransaction(); }

void TOraSession::StartTransaction() { CheckDbStatus(Connection()->StartTransaction()); }
void TOraSession::Commit() { CheckDbStatus(Connection()->Commit()); }
void TOraSession::Rollback() { CheckDbStatus(Connection()->Rollback()); }

int64_t TOraSession::ExecSQL(const String& SQL, TParams* Params) {
  std::unique_ptr<TDbStatement> statement;
  CheckDbStatus(Connection()->Prepare(SQL, statement));
  for (int i = 0; i < statement->ParamCount(); ++i) {
    String name = statement->ParamName(i);
    TParam* p = Params ? Params->FindParam(name) : nullptr;
    CheckDbStatus(statement->Bind(name, p ? VariantToDbValue(p->Value()) : TDbValue::Null()));
  }
  CheckDbStatus(statement->Execute());
  if (Params)
    for (int i = 0; i < Params->Count(); ++i) {
      TParam* p = Params->Items(i);
      TDbValue out = statement->OutValue(p->Name());
      if (!out.IsNull()) p->SetValue(DbValueToVariant(out));
    }
  if (statement->ReturnsRows()) {
    bool row = true;
    while (row) CheckDbStatus(statement->Fetch(row));
  }
  return statement->RowsAffected();
}

void TOraSession::RegisterProcedure(const String& Name, TOraProcedure Procedure) {
  procedures_[UpperCase(Trim(Name))] = std::move(Procedure);
}

const TOraProcedure* TOraSession::FindProcedure(const String& Name) const {
  auto it = procedures_.find(UpperCase(Trim(Name)));
  return it == procedures_.end() ? nullptr : &it->second;
}

void TOraSession::RegisterFunction(const String& Name, int ArgCount, TDbFunction Function) {
  CheckDbStatus(Connection()->RegisterFunction(Name, ArgCount, std::move(Function)));
}

void TOraSession::AttachDataSet(TCustomDADataSet* dataSet) {
  if (std::find(dataSets_.begin(), dataSets_.end(), dataSet) == dataSets_.end()) dataSets_.push_back(dataSet);
}

void TOraSession::DetachDataSet(TCustomDADataSet* dataSet) {
  dataSets_.erase(std::remove(dataSets_.begin(), dataSets_.end(), dataSet), dataSets_.end());
}
