#include "Mox/PtrInterface.h"

namespace Mox {
namespace {

// Far above any real count, so that pointers made during destruction never bring it to zero again.
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
  // The count is the object's own; destroying it is what the end of counting means, const or not.
  const_cast<PtrInterface*>(this)->zeroReferencesIs(true);
}

}  // namespace Mox
