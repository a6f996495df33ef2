#include "platform/rtl/object.h"

#include <map>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sysutils.h"
#include "platform/rtl/typinfo.h"

TClassInfo::TClassInfo(const char16_t* name, TClass parent, PublishFn publish, FactoryFn factory)
    : name_(name), parent_(parent), factory_(factory) {
  if (publish) publish(*this);
}

TClassInfo::~TClassInfo() = default;

bool TClassInfo::InheritsFrom(TClass other) const {
  for (TClass c = this; c; c = c->parent_)
    if (c == other) return true;
  return false;
}

TPropInfo& TClassInfo::AddProperty(const String& name) {
  own_.emplace_back();
  own_.back().Name = name;
  return own_.back();
}

namespace {
// Property names are identifiers: ASCII upper case is their case folding.
String FoldName(const String& name) {
  std::u16string s(name.u16());
  for (char16_t& c : s)
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 32);
  return String(std::move(s));
}
}  // namespace

void TClassInfo::BuildIndex() const {
  std::call_once(indexed_, [this] {
    if (parent_) all_ = parent_->Properties();
    for (const TPropInfo* p : all_) byName_[FoldName(p->Name)] = p;
    for (const TPropInfo& p : own_) {
      const TPropInfo*& slot = byName_[FoldName(p.Name)];
      if (slot) {
        // A descendant publishing a name again replaces its accessors in place.
        for (const TPropInfo*& q : all_)
          if (q == slot) q = &p;
      } else {
        all_.push_back(&p);
      }
      slot = &p;
    }
  });
}

const std::vector<const TPropInfo*>& TClassInfo::Properties() const {
  BuildIndex();
  return all_;
}

const TPropInfo* TClassInfo::FindProperty(const String& name) const {
  BuildIndex();
  auto it = byName_.find(FoldName(name));
  return it == byName_.end() ? nullptr : it->second;
}

TClass TObject::StaticClass() {
  static const TClassInfo info(u"TObject", nullptr, nullptr, nullptr);
  return &info;
}

String TObject::ClassName() const { return ClassType()->ClassName(); }

namespace {
std::map<String, TClass>& ClassRegistry() {
  static std::map<String, TClass> registry;
  return registry;
}
}  // namespace

void RegisterClass(TClass cls) { ClassRegistry()[FoldName(cls->ClassName())] = cls; }

TClass GetClass(const String& name) {
  auto it = ClassRegistry().find(FoldName(name));
  return it == ClassRegistry().end() ? nullptr : it->second;
}

TClass FindClass(const String& name) {
  TClass c = GetClass(name);
  if (!c) throw EClassNotFound(u"Class " + name + u" not found");
  return c;
}
