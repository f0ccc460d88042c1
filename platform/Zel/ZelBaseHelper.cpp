#include "Zel/ZelBaseHelper.h"

namespace Zel {

ZelBaseHelper::ZelBaseHelper(const Velo::String& name) noexcept : Entity(name) {}

ZelBaseHelper::~ZelBaseHelper() = default;

Velo::String ZelBaseHelper::nameString() const {
  return name();
}

}  // namespace Zel
