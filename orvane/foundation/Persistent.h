#pragma once
// Root of the kernel's object classes: copying between objects of related classes, and the
// class name that cloning and the class dictionary go by.

#include <string>

#include "orvane/foundation/Export.h"

namespace orvane {

class ORVANE_API TPersistent {
 public:
  TPersistent() = default;
  TPersistent(const TPersistent&) = delete;
  TPersistent& operator=(const TPersistent&) = delete;
  virtual ~TPersistent();

  // Makes this object a copy of Source, through Source.AssignTo(*this): the source knows what
  // it can copy into. Throws EConvertError when neither side knows the other.
  virtual void Assign(const TPersistent& Source);
  // Copies this object into Dest. The root copies into nothing and throws EConvertError
  // ("Cannot assign a <source class> to a <destination class>"); a class that can be copied
  // overrides it. Public so that Assign can reach it through a base reference.
  virtual void AssignTo(TPersistent& Dest) const;
  virtual std::string ClassName() const;
};

}  // namespace orvane
