#include "PolicyMap/PolicyMapAclHelper.h"

namespace PolicyMap {

PolicyMapAclHelper::PolicyMapAclHelper(const Velo::String& name) noexcept : ZelBaseHelper(name) {}

PolicyMapAclHelper::~PolicyMapAclHelper() = default;

const Mox::Type* PolicyMapAclHelper::fwkType() const {
  return &moxType;
}

}  // namespace PolicyMap
