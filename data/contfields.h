// Content fields: integer and float fields that hold an account ("cont"),
// a fixed-width digit code shown with a dot in its middle.
//
// An application may declare persistent fields of these classes. Fields
// that the data layer makes at open are plain TIntegerField/TFloatField
// objects, and a C++ object keeps its class for life; so when
// SetupFieldsAfterOpen finds such a field to be a content field it attaches
// a TContFieldBehaviour to it instead (a component owned by the field, gone
// with it). From then on the field counts as a content field exactly as an
// object of the content class would:
//
//   FieldClassOf(field)->ClassName()          "TContIntegerField"
//   FieldClassOf(field)->InheritsFrom(TContIntegerField::StaticClass())
//   IsContentField(field)                      true
//
// Code of the kit that asks "is this a content field" asks through these
// functions, never through dynamic_cast or the field's own ClassName().
#pragma once

#include "platform/db/fields.h"

class TContIntegerField : public TIntegerField {
  KELMAR_CLASS(TContIntegerField, TIntegerField)
 public:
  explicit TContIntegerField(TComponent* AOwner);
};

class TContFloatField : public TFloatField {
  KELMAR_CLASS(TContFloatField, TFloatField)
 public:
  explicit TContFloatField(TComponent* AOwner);
};

// What a field made by the data layer takes on when it is a content field:
// the content class it stands for.
class TContFieldBehaviour : public TComponent {
  KELMAR_CLASS(TContFieldBehaviour, TComponent)
 public:
  // Owned by `field`; `contentClass` is TContIntegerField or TContFloatField.
  TContFieldBehaviour(TField* field, TClass contentClass);
  TClass ContentClass() const { return contentClass_; }

 private:
  TClass contentClass_;
};

// Makes an integer field a TContIntegerField and a float field a
// TContFloatField: attaches the behaviour once. A field already of a content
// class, or of neither base class, is left alone. Returns whether the field
// is a content field afterwards.
bool MakeContentField(TField* field);
// The behaviour attached to a field; null when none.
TContFieldBehaviour* ContentBehaviour(const TField* field);
// The class the field acts as: the content class of its behaviour, else its
// own class.
TClass FieldClassOf(const TField* field);
// True for a field of a content class or with a content behaviour.
bool IsContentField(const TField* field);
