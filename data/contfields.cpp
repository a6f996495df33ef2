#include "data/contfields.h"

KELMAR_PUBLISH(TContIntegerField) {}
KELMAR_PUBLISH(TContFloatField) {}
KELMAR_PUBLISH(TContFieldBehaviour) {}

TContIntegerField::TContIntegerField(TComponent* AOwner) : TIntegerField(AOwner) {}

TContFloatField::TContFloatField(TComponent* AOwner) : TFloatField(AOwner) {}

TContFieldBehaviour::TContFieldBehaviour(TField* field, TClass contentClass)
    : TComponent(field), contentClass_(contentClass) {}

TContFieldBehaviour* ContentBehaviour(const TField* field) {
  if (!field) return nullptr;
  for (int i = 0; i < field->ComponentCount(); ++i)
    if (auto* b = dynamic_cast<TContFieldBehaviour*>(field->Components(i))) return b;
  return nullptr;
}

TClass FieldClassOf(const TField* field) {
  if (const TContFieldBehaviour* b = ContentBehaviour(field)) return b->ContentClass();
  return field ? field->ClassType() : nullptr;
}

bool IsContentField(const TField* field) {
  TClass cls = FieldClassOf(field);
  return cls && (cls->InheritsFrom(TContIntegerField::StaticClass()) || cls->InheritsFrom(TContFloatField::StaticClass()));
}

bool MakeContentField(TField* field) {
  if (!field) return false;
  if (IsContentField(field)) return true;
  if (field->InheritsFrom(TIntegerField::StaticClass())) {
    new TContFieldBehaviour(field, TContIntegerField::StaticClass());
    return true;
  }
  if (field->InheritsFrom(TFloatField::StaticClass())) {
    new TContFieldBehaviour(field, TContFloatField::StaticClass());
    return true;
  }
  return false;
}
