#include "Mox/PtrInterface.h"

namespace Mox {
namespace {

// Above any real count, so that pointers in a destructor never decrement it to zero again.
constexpr unsigned referencesWhileDestroyed = 0x40000000;

constexpr Type ptrInterfaceType{"Mox::PtrInterface"};

}  // namespace

bool PtrInterface::threadSafePointers_ = false;

Velo::NotifieeListDescriptor PtrInterface::notifieeList() const {
  return {};
}

void PtrInterface::hasNotificationActiveIs(bool active) {
  notificationActive_ = active;
}

void PtrInterface::zeroReferencesIs(bool zero) {
  if (zero) delete this;
}

const Type* PtrInterface::fwkType() const {
  return &ptrInterfaceType;
}

PtrInterface::~PtrInterface() = default;

void PtrInterface::lastReferenceGone() const noexcept {
  references_ = referencesWhileDestroyed;
  // The count is a part of the object. A constant object is destroyed, too.
  const_cast<PtrInterface*>(this)->zeroReferencesIs(true);
}

}  // namespace Mox
