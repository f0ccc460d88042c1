#pragma once

#include "Mox/Entity.h"
#include "Velo/Export.h"

namespace Zel {

/// Base of the helpers through which the forwarding layer calls a chip.
class ZEL_EXPORT ZelBaseHelper : public Mox::Entity {
 public:
  /// The helper's name.
  [[nodiscard]] Velo::String nameString() const override;

 protected:
  explicit ZelBaseHelper(const Velo::String& name) noexcept;
  ~ZelBaseHelper() override;
};

}  // namespace Zel
