// TOraSession: a connection to a database engine through the driver port.
//
// The session owns its TDbConnection; datasets hold a non-owning pointer
// to their session and must be closed (or deleted) before it goes: a
// session closes the datasets that use it when it disconnects or is
// deleted. Stored procedures on an engine without them are callbacks that
// the application registers by name (RegisterProcedure).
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "platform/db/connection.h"
#include "platform/db/params.h"

class TCustomDADataSet;

// Turns a failed status into EOraError with its "ORA-nnnnn: " message.
void CheckDbStatus(const TDbStatus& status);
// A Variant as the port carries it, and back.
TDbValue VariantToDbValue(const Variant& value);
Variant DbValueToVariant(const TDbValue& value);

class TOraSessionOptions : public TPersistent {
  KELMAR_CLASS(TOraSessionOptions, TPersistent)
 public:
  // A direct connection without the client software (chooses the server
  // address of a schema).
  bool Net() const { return net_; }
  void SetNet(bool v) { net_ = v; }
  void Assign(TPersistent* Source) override;

 private:
  bool net_ = false;
};

// A procedure the application provides: reads its input parameters and
// fills the outputs.
using TOraProcedure = std::function<void(TOraParams& Params)>;

class TOraSession : public TComponent {
  KELMAR_CLASS(TOraSession, TComponent)
 public:
  explicit TOraSession(TComponent* AOwner);
  ~TOraSession() override;

  bool Connected() const { return GetConnected(); }
  void SetConnected(bool value);
  virtual void Connect();
  virtual void Disconnect();

  // For the embedded engine Server is a file name or ":memory:".
  const String& Server() const { return server_; }
  void SetServer(const String& v);
  const String& Username() const { return username_; }
  void SetUsername(const String& v) { username_ = v; }
  const String& Password() const { return password_; }
  void SetPassword(const String& v) { password_ = v; }
  bool ConnectPrompt() const { return connectPrompt_; }
  void SetConnectPrompt(bool v) { connectPrompt_ = v; }
  // The registered driver to use, "sqlite" by default.
  const String& Driver() const { return driver_; }
  void SetDriver(const String& v);
  TOraSessionOptions* Options() const { return options_.get(); }
  void SetOptions(TOraSessionOptions* v) { options_->Assign(v); }

  // ---- Transactions ----
  bool InTransaction() const;
  void StartTransaction();
  void Commit();
  void Rollback();

  // Runs a statement with optional parameters (named as in the text);
  // output values come back into the parameters. Returns rows affected.
  int64_t ExecSQL(const String& SQL, TParams* Params = nullptr);

  // ---- Procedures and functions ----
  void RegisterProcedure(const String& Name, TOraProcedure Procedure);
  // Null when no procedure of that name is registered.
  const TOraProcedure* FindProcedure(const String& Name) const;
  // Adds a function to the engine's SQL (the session must be connected).
  void RegisterFunction(const String& Name, int ArgCount, TDbFunction Function);

  // The open connection; raises EDatabaseError "Session is not connected"
  // when there is none.
  TDbConnection* Connection() const;
  String ServerVersion() const;

  TNotifyEvent BeforeConnect, AfterConnect, BeforeDisconnect, AfterDisconnect;

  // Datasets register themselves while they use the session.
  void AttachDataSet(TCustomDADataSet* dataSet);
  void DetachDataSet(TCustomDADataSet* dataSet);

 protected:
  virtual bool GetConnected() const { return connection_ != nullptr; }
  // The connection is made and AfterConnect is still to come: the place
  // for what a session class adds to every connection.
  virtual void ConnectionMade() {}

 private:
  void CheckDisconnected(const char16_t* what) const;

  String server_, username_, password_;
  String driver_ = u"sqlite";
  bool connectPrompt_ = true;
  std::unique_ptr<TOraSessionOptions> options_;
  std::unique_ptr<TDbConnection> connection_;
  std::map<String, TOraProcedure> procedures_;
  std::vector<TCustomDADataSet*> dataSets_;
};

// The session a dataset takes when none is set: the first session made,
// or one the framework makes on first use.
TOraSession* DefaultSession();
