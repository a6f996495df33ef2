// TObject and the class information every class of the platform and the kit
// carries: its name, its parent, and its published properties.
//
// A class declares itself with KELMAR_CLASS at the top of its body and
// defines its table of published properties in its .cpp with
// KELMAR_PUBLISH (see typinfo.h):
//
//   class TFoo : public TComponent {
//     KELMAR_CLASS(TFoo, TComponent)
//    public:
//     ...
//   };
//
//   KELMAR_PUBLISH(TFoo) { r.Prop(u"Caption", &TFoo::Caption, &TFoo::SetCaption); }
#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "platform/rtl/ustring.h"

class TObject;
class TComponent;
class TClassInfo;
struct TPropInfo;
template <class T>
class TPublisher;

using TClass = const TClassInfo*;

class TClassInfo {
 public:
  using PublishFn = void (*)(TClassInfo& info);
  using FactoryFn = TComponent* (*)(TComponent* owner);

  TClassInfo(const char16_t* name, TClass parent, PublishFn publish, FactoryFn factory);
  TClassInfo(const TClassInfo&) = delete;
  TClassInfo& operator=(const TClassInfo&) = delete;
  ~TClassInfo();

  const String& ClassName() const { return name_; }
  TClass ClassParent() const { return parent_; }
  bool InheritsFrom(TClass other) const;

  // Published properties of the class and its ancestors, ancestors first,
  // each in the order of its declaration.
  const std::vector<const TPropInfo*>& Properties() const;
  // Case-insensitive, as property names were; null when absent.
  const TPropInfo* FindProperty(const String& name) const;

  // Creates a component of this class; null for a class that cannot be
  // made from an owner alone.
  TComponent* CreateComponent(TComponent* owner) const { return factory_ ? factory_(owner) : nullptr; }

  // Used by TPublisher while the table is built.
  TPropInfo& AddProperty(const String& name);

 private:
  void BuildIndex() const;

  String name_;
  TClass parent_;
  FactoryFn factory_;
  std::deque<TPropInfo> own_;
  mutable std::once_flag indexed_;
  mutable std::vector<const TPropInfo*> all_;
  mutable std::unordered_map<String, const TPropInfo*> byName_;
};

#define KELMAR_CLASS(Class, Parent)                    \
 public:                                               \
  using inherited = Parent;                            \
  static TClass StaticClass();                         \
  TClass ClassType() const override { return StaticClass(); } \
  static void Publish(TPublisher<Class>& r);           \
                                                       \
 private:

class TObject {
 public:
  TObject() = default;
  TObject(const TObject&) = default;
  TObject& operator=(const TObject&) = default;
  virtual ~TObject() = default;

  static TClass StaticClass();
  virtual TClass ClassType() const { return StaticClass(); }
  String ClassName() const;
  bool InheritsFrom(TClass cls) const { return ClassType()->InheritsFrom(cls); }
};

// Classes known by name, for readers of design streams. Registering the same
// class twice is harmless.
void RegisterClass(TClass cls);
TClass GetClass(const String& name);  // null when unknown
TClass FindClass(const String& name);  // raises EClassNotFound when unknown
