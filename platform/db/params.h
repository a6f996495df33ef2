// Parameters and macros of SQL datasets.
//
// A parameter is a ":name" place bound at run time; a macro is a "&name"
// place replaced by plain text before the statement is prepared. Both are
// found by name without regard to case. When a dataset's SQL changes, its
// lists are rebuilt from the new text and keep the values of the names
// that are still there (Update).
#pragma once

#include <memory>
#include <vector>

#include "platform/db/dbtypes.h"
#include "platform/rtl/classes.h"
#include "platform/rtl/variant.h"

enum TParamType { ptUnknown, ptInput, ptOutput, ptInputOutput, ptResult };
KELMAR_ENUM(TParamType, u"ptUnknown", u"ptInput", u"ptOutput", u"ptInputOutput", u"ptResult");

class TParam : public TPersistent {
  KELMAR_CLASS(TParam, TPersistent)
 public:
  TParam() = default;
  explicit TParam(const String& name, TParamType type = ptInput) : name_(name), paramType_(type) {}

  const String& Name() const { return name_; }
  void SetName(const String& v) { name_ = v; }
  TParamType ParamType() const { return paramType_; }
  void SetParamType(TParamType v) { paramType_ = v; }
  TFieldType DataType() const { return dataType_; }
  void SetDataType(TFieldType v) { dataType_ = v; }
  // True once a value was set, even Null.
  bool Bound() const { return bound_; }
  void SetBound(bool v) { bound_ = v; }

  Variant Value() const { return value_; }
  // Sets the value; DataType follows the value's kind while it is unknown.
  void SetValue(const Variant& v);
  bool IsNull() const { return value_.IsNull() || value_.IsEmpty(); }
  void Clear();
  String AsString() const { return IsNull() ? String() : value_.AsString(); }
  void SetAsString(const String& v);
  int AsInteger() const { return IsNull() ? 0 : value_.AsInteger(); }
  void SetAsInteger(int v);
  int64_t AsLargeInt() const { return IsNull() ? 0 : value_.AsInt64(); }
  void SetAsLargeInt(int64_t v);
  double AsFloat() const { return IsNull() ? 0 : value_.AsFloat(); }
  void SetAsFloat(double v);
  TDateTime AsDateTime() const { return IsNull() ? TDateTime() : value_.AsDateTime(); }
  void SetAsDateTime(TDateTime v);
  void SetAsDate(TDateTime v);
  bool AsBoolean() const { return !IsNull() && value_.AsBoolean(); }
  void SetAsBoolean(bool v);

  // Copies name, types and value.
  void Assign(TPersistent* Source) override;

 private:
  void Put(const Variant& v, TFieldType type);

  String name_;
  TParamType paramType_ = ptInput;
  TFieldType dataType_ = ftUnknown;
  Variant value_;
  bool bound_ = false;
};

class TParams : public TPersistent {
  KELMAR_CLASS(TParams, TPersistent)
 public:
  TParams() = default;

  int Count() const { return static_cast<int>(items_.size()); }
  TParam* Items(int index) const;
  TParam* operator[](int index) const { return Items(index); }
  // Raises EDatabaseError "Parameter 'X' not found".
  TParam* ParamByName(const String& name) const;
  TParam* FindParam(const String& name) const;
  TParam* CreateParam(TFieldType type, const String& name, TParamType paramType);
  // Copies values from the parameters of Other with the same names.
  void AssignValues(const TParams* Other);
  void Clear() { items_.clear(); }
  // Rebuilds the list to hold exactly these names in this order, keeping
  // the parameters (and values) of names already present.
  void Update(const std::vector<String>& names);
  // The value of one parameter, or a Variant array for ";"-separated names.
  Variant ParamValues(const String& names) const;
  void SetParamValues(const String& names, const Variant& value);

  void Assign(TPersistent* Source) override;

 protected:
  virtual std::unique_ptr<TParam> NewParam(const String& name) const { return std::make_unique<TParam>(name); }

 private:
  std::vector<std::unique_ptr<TParam>> items_;
};

// The parameters of the Oracle datasets; the same with their own class.
class TOraParam : public TParam {
  KELMAR_CLASS(TOraParam, TParam)
 public:
  using TParam::TParam;
  // Characters reserved for an output text; 0 when unknown.
  int Size() const { return size_; }
  void SetSize(int v) { size_ = v; }

 private:
  int size_ = 0;
};

class TOraParams : public TParams {
  KELMAR_CLASS(TOraParams, TParams)
 public:
  TOraParam* Items(int index) const { return static_cast<TOraParam*>(TParams::Items(index)); }
  TOraParam* operator[](int index) const { return Items(index); }
  TOraParam* ParamByName(const String& name) const { return static_cast<TOraParam*>(TParams::ParamByName(name)); }
  TOraParam* FindParam(const String& name) const { return static_cast<TOraParam*>(TParams::FindParam(name)); }

 protected:
  std::unique_ptr<TParam> NewParam(const String& name) const override { return std::make_unique<TOraParam>(name); }
};

// ---- Macros ------------------------------------------------------------------

class TMacro : public TPersistent {
  KELMAR_CLASS(TMacro, TPersistent)
 public:
  TMacro() = default;
  explicit TMacro(const String& name) : name_(name) {}

  const String& Name() const { return name_; }
  void SetName(const String& v) { name_ = v; }
  // The text put in place of "&name"; an inactive macro puts nothing.
  const String& Value() const { return value_; }
  void SetValue(const String& v) { value_ = v; }
  String AsString() const { return value_; }
  void SetAsString(const String& v) { value_ = v; }
  bool Active() const { return active_; }
  void SetActive(bool v) { active_ = v; }

  void Assign(TPersistent* Source) override;

 private:
  String name_;
  String value_;
  bool active_ = true;
};

class TMacros : public TPersistent {
  KELMAR_CLASS(TMacros, TPersistent)
 public:
  TMacros() = default;

  int Count() const { return static_cast<int>(items_.size()); }
  TMacro* Items(int index) const;
  TMacro* operator[](int index) const { return Items(index); }
  // Raises EDatabaseError "Macro 'X' not found".
  TMacro* MacroByName(const String& name) const;
  TMacro* FindMacro(const String& name) const;
  void AssignValues(const TMacros* Other);
  void Clear() { items_.clear(); }
  void Update(const std::vector<String>& names);

 private:
  std::vector<std::unique_ptr<TMacro>> items_;
};
