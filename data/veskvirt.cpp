#include "data/veskvirt.h"

#include "data/veskbodyimpl.h"

template class TVeskBody<TVirtualTable, TVeskVirtTraits>;

KELMAR_PUBLISH(TVeskVirt) { PublishVeskBody(r); }
