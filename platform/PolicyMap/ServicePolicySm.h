#pragma once

#include "Mox/PtrInterface.h"
#include "Velo/Publisher.h"

namespace PolicyMap {

/// Base of the state machines that compile policy maps into classification hardware. It tells its
/// subscribers which of its attributes changed.
class [[gnu::visibility("default")]] ServicePolicySm : public Mox::PtrInterface {
 public:
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }

  [[nodiscard]] Velo::Publisher& publisher() const noexcept {
    return publisher_;
  }

 protected:
  ServicePolicySm() = default;

 private:
  mutable Velo::Publisher publisher_;
};

}  // namespace PolicyMap
