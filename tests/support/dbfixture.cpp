#include "tests/support/dbfixture.h"

#include "drivers/sqlite/sqlitedriver.h"
#include "platform/db/fields.h"

TFaultPlan& TFaultPlan::Current() {
  static TFaultPlan plan;
  return plan;
}

namespace {

// Counts an operation; true when the plan says this one fails.
bool Trips(const String& sql = String()) {
  TFaultPlan& plan = TFaultPlan::Current();
  ++plan.Operations;
  if (!plan.Matching.IsEmpty() && sql.Pos(plan.Matching) > 0) return true;
  if (plan.Countdown < 0) return false;
  return plan.Countdown-- == 0;
}

TDbStatus Failure() {
  const TFaultPlan& plan = TFaultPlan::Current();
  return TDbStatus::Error(plan.OraCode, plan.Text);
}

class FaultStatement : public TDbStatement {
 public:
  FaultStatement(std::unique_ptr<TDbStatement> inner, const String& sql) : inner_(std::move(inner)), sql_(sql) {}
  int ParamCount() const override { return inner_->ParamCount(); }
  String ParamName(int index) const override { return inner_->ParamName(index); }
  TDbStatus Bind(const String& name, const TDbValue& value) override { return inner_->Bind(name, value); }
  TDbStatus Execute() override { return Trips(sql_) ? Failure() : inner_->Execute(); }
  bool ReturnsRows() const override { return inner_->ReturnsRows(); }
  int64_t RowsAffected() const override { return inner_->RowsAffected(); }
  TDbValue OutValue(const String& name) const override { return inner_->OutValue(name); }
  int ColumnCount() const override { return inner_->ColumnCount(); }
  const TDbColumn& Column(int index) const override { return inner_->Column(index); }
  TDbStatus Fetch(bool& row) override { return Trips() ? Failure() : inner_->Fetch(row); }
  TDbKind Kind(int column) const override { return inner_->Kind(column); }
  int64_t AsInteger(int column) const override { return inner_->AsInteger(column); }
  double AsFloat(int column) const override { return inner_->AsFloat(column); }
  std::string_view AsUtf8(int column) const override { return inner_->AsUtf8(column); }
  std::string_view AsBytes(int column) const override { return inner_->AsBytes(column); }

 private:
  std::unique_ptr<TDbStatement> inner_;
  String sql_;
};

class FaultConnection : public TDbConnection {
 public:
  explicit FaultConnection(std::unique_ptr<TDbConnection> inner) : inner_(std::move(inner)) {}
  TDbStatus Prepare(const String& sql, std::unique_ptr<TDbStatement>& statement) override {
    if (Trips()) return Failure();
    std::unique_ptr<TDbStatement> inner;
    TDbStatus status = inner_->Prepare(sql, inner);
    if (status) statement = std::make_unique<FaultStatement>(std::move(inner), sql);
    return status;
  }
  TDbStatus StartTransaction() override { return Trips() ? Failure() : inner_->StartTransaction(); }
  TDbStatus Commit() override { return Trips() ? Failure() : inner_->Commit(); }
  TDbStatus Rollback() override { return Trips() ? Failure() : inner_->Rollback(); }
  bool InTransaction() const override { return inner_->InTransaction(); }
  TDbStatus RegisterFunction(const String& name, int argCount, TDbFunction function) override {
    return inner_->RegisterFunction(name, argCount, std::move(function));
  }
  String ServerVersion() const override { return inner_->ServerVersion(); }

 private:
  std::unique_ptr<TDbConnection> inner_;
};

}  // namespace

void RegisterTestDrivers() {
  RegisterSQLiteDriver();
  RegisterDbDriver(u"fault", [](const TDbConnectParams& params, std::unique_ptr<TDbConnection>& connection) {
    TDbConnectParams inner = params;
    inner.Driver = u"sqlite";
    std::unique_ptr<TDbConnection> sqlite;
    TDbStatus status = ConnectDb(inner, sqlite);
    if (status) connection = std::make_unique<FaultConnection>(std::move(sqlite));
    return status;
  });
}

void DbTest::SetUp() {
  RegisterTestDrivers();
  owner_ = std::make_unique<TComponent>(nullptr);
  session_ = new TOraSession(owner_.get());
  session_->SetServer(u":memory:");
  session_->Connect();
}

void DbTest::TearDown() { owner_.reset(); }

void DbTest::Exec(const String& sql) {
  TDbStatus status = session_->Connection()->ExecuteDirect(sql);
  ASSERT_TRUE(status.IsOk()) << status.Message() << " in " << sql;
}

String DbTest::Value(const String& sql) {
  TOraQuery q(nullptr);
  q.SetSession(session_);
  q.SQL()->SetText(sql);
  q.Open();
  return q.IsEmpty() || q.Fields()->Fields(0)->IsNull() ? String(u"<null>") : q.Fields()->Fields(0)->AsString();
}

TOraQuery* DbTest::Query(const String& sql) {
  auto* q = new TOraQuery(owner_.get());
  q->SetSession(session_);
  q->SQL()->SetText(sql);
  return q;
}

void FaultDbTest::SetUp() {
  TFaultPlan::Current().Reset();
  RegisterTestDrivers();
  owner_ = std::make_unique<TComponent>(nullptr);
  session_ = new TOraSession(owner_.get());
  session_->SetDriver(u"fault");
  session_->SetServer(u":memory:");
  session_->Connect();
}

void FaultDbTest::TearDown() {
  owner_.reset();
  TFaultPlan::Current().Reset();
}

TField* AddPersistentField(TDataSet* DataSet, TField* Field, const String& Name, TFieldKind Kind) {
  Field->SetFieldName(Name);
  Field->SetFieldKind(Kind);
  Field->SetDataSet(DataSet);
  return Field;
}

TField* AddLookupField(TDataSet* DataSet, const String& Name, const String& KeyFields, TDataSet* Lookup,
                       const String& LookupKeyFields, const String& ResultField) {
  TField* field = AddPersistentField(DataSet, new TStringField(DataSet), Name, fkLookup);
  field->SetKeyFields(KeyFields);
  field->SetLookupDataSet(Lookup);
  field->SetLookupKeyFields(LookupKeyFields);
  field->SetLookupResultField(ResultField);
  return field;
}
