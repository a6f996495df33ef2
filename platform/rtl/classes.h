// TPersistent and TComponent: assignable objects, and components that own
// one another and are told when a peer goes away.
//
// Ownership: a component deletes the components it owns (its Owner's list)
// when it is deleted. Every other pointer between components is a peer
// reference; a component that holds one calls FreeNotification on the peer
// and clears the pointer in Notification(peer, opRemove).
#pragma once

#include <cstdint>
#include <vector>

#include "platform/rtl/sets.h"
#include "platform/rtl/typinfo.h"

class TPersistent : public TObject {
  KELMAR_CLASS(TPersistent, TObject)
 public:
  // Copies from Source, or raises EConvertError "Cannot assign a X to a Y".
  virtual void Assign(TPersistent* Source);
  virtual String GetNamePath() const;

 protected:
  virtual void AssignTo(TPersistent* Dest);
  virtual TPersistent* GetOwner() const { return nullptr; }
  [[noreturn]] void AssignError(const TPersistent* Source) const;
};

enum TComponentStateFlag {
  csLoading, csReading, csWriting, csDestroying, csDesigning, csAncestor,
  csUpdating, csFixups, csFreeNotification, csInline, csDesignInstance
};
KELMAR_ENUM(TComponentStateFlag, u"csLoading", u"csReading", u"csWriting", u"csDestroying", u"csDesigning",
            u"csAncestor", u"csUpdating", u"csFixups", u"csFreeNotification", u"csInline", u"csDesignInstance");
using TComponentState = Set<TComponentStateFlag>;

enum TOperation { opInsert, opRemove };

class TComponent : public TPersistent {
  KELMAR_CLASS(TComponent, TPersistent)
 public:
  explicit TComponent(TComponent* AOwner);
  TComponent(const TComponent&) = delete;
  TComponent& operator=(const TComponent&) = delete;
  ~TComponent() override;

  TComponent* Owner() const { return owner_; }
  const String& Name() const { return name_; }
  // Raises EComponentError for a name that is not an identifier or that
  // another component of the same owner already has.
  virtual void SetName(const String& NewName);
  intptr_t Tag() const { return tag_; }
  void SetTag(intptr_t value) { tag_ = value; }

  int ComponentCount() const { return static_cast<int>(components_.size()); }
  TComponent* Components(int index) const;
  int ComponentIndex() const;
  // Case-insensitive search among the owned components; null when absent.
  TComponent* FindComponent(const String& AName) const;
  void InsertComponent(TComponent* AComponent);
  void RemoveComponent(TComponent* AComponent);
  // Deletes the owned components, last first.
  void DestroyComponents();

  TComponentState ComponentState() const { return state_; }
  void SetDesigning(bool value, bool setChildren = true);
  // Loading brackets: Loaded() clears csLoading and lets a component act on
  // the properties a reader has set.
  void BeginLoading();
  virtual void Loaded();

  // Asks AComponent to tell this one when it is deleted, and the reverse.
  void FreeNotification(TComponent* AComponent);
  void RemoveFreeNotification(TComponent* AComponent);

  String GetNamePath() const override;

 protected:
  virtual void Notification(TComponent* AComponent, TOperation Operation);
  TPersistent* GetOwner() const override { return owner_; }
  void SetState(TComponentStateFlag flag, bool on);

 private:
  void Insert(TComponent* AComponent);
  void Remove(TComponent* AComponent);

  TComponent* owner_ = nullptr;
  String name_;
  intptr_t tag_ = 0;
  TComponentState state_;
  std::vector<TComponent*> components_;
  std::vector<TComponent*> freeNotifies_;
};

// A TComponent that can be created free of an owner without a cast.
template <class T, class... A>
T* NewComponent(TComponent* owner, A&&... args) {
  return new T(owner, std::forward<A>(args)...);
}
