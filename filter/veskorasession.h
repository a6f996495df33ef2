// TVeskOraSession: the kit's session. On connect it adds the similarity
// package (PREP, NUM, INTEXT) to the engine, which the Smart compare
// filters call, before AfterConnect, so that an application's own
// function of the same name registered there takes its place. Beside the connection it lets the
// application decide, per dataset, whether data may be changed
// (OnVESKReadOnlyMode), and keeps a design-time connection out of the
// component's stream unless EnableAutoConnect says otherwise.
#pragma once

#include "data/veskcontract.h"
#include "platform/db/orasession.h"

class TVeskOraSession : public TOraSession {
  KELMAR_CLASS(TVeskOraSession, TOraSession)
 public:
  explicit TVeskOraSession(TComponent* AOwner);

  // Lets the connected state be stored at design time; datasets also open
  // a closed session when it is set.
  bool EnableAutoConnect() const { return enableAutoConnect_; }
  void SetEnableAutoConnect(bool value) { enableAutoConnect_ = value; }
  // Leave the connection trace for the connect dialogue even without a
  // schema name.
  bool EnforceSaveConnect() const { return enforceSaveConnect_; }
  void SetEnforceSaveConnect(bool value) { enforceSaveConnect_ = value; }

  // Asked by datasets whether their data is read-only for this session.
  TVESKReadOnlyMode OnVESKReadOnlyMode;
  // False without a handler, else the handler's answer for Sender.
  bool GetVESKReadOnlyMode(TObject* Sender) const;

 protected:
  // False while a designed session is being written to its stream, unless
  // EnableAutoConnect is set.
  bool GetConnected() const override;
  void ConnectionMade() override;

 private:
  bool enableAutoConnect_ = false;
  bool enforceSaveConnect_ = false;
};
