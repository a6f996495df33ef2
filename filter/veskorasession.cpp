#include "filter/veskorasession.h"

#include "filter/veskcmp.h"

KELMAR_PUBLISH(TVeskOraSession) {
  r.Prop(u"EnableAutoConnect", &TVeskOraSession::EnableAutoConnect, &TVeskOraSession::SetEnableAutoConnect)
      .Default = 0;
  r.Prop(u"EnforceSaveConnect", &TVeskOraSession::EnforceSaveConnect, &TVeskOraSession::SetEnforceSaveConnect)
      .Default = 0;
  r.Prop(u"OnVESKReadOnlyMode", &TVeskOraSession::OnVESKReadOnlyMode);
}

TVeskOraSession::TVeskOraSession(TComponent* AOwner) : TOraSession(AOwner) {}

bool TVeskOraSession::GetVESKReadOnlyMode(TObject* Sender) const {
  return OnVESKReadOnlyMode.Assigned() && OnVESKReadOnlyMode(Sender);
}

void TVeskOraSession::ConnectionMade() { RegisterSimilarityFunctions(this); }

bool TVeskOraSession::GetConnected() const {
  TComponentState state = ComponentState();
  if (state.Contains(csDesigning) && state.Contains(csWriting) && !enableAutoConnect_) return false;
  return TOraSession::GetConnected();
}
