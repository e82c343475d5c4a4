#include "orvane/foundation/Persistent.h"

#include "orvane/foundation/Exception.h"

namespace orvane {

TPersistent::~TPersistent() = default;

void TPersistent::Assign(const TPersistent& Source) { Source.AssignTo(*this); }

void TPersistent::AssignTo(TPersistent& Dest) const {
  throw EConvertError("Cannot assign a %s to a %s", ClassName(), Dest.ClassName());
}

std::string TPersistent::ClassName() const { return "TPersistent"; }

}  // namespace orvane
