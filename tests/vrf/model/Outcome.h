#pragma once

#include <string>

#include "Cast.h"

namespace VrfModel {

/// What a chip reports: result and reason by their codes.
struct Status {
  unsigned result = 0;
  unsigned reason = 0;
  std::string description;

  friend bool operator==(const Status&, const Status&) = default;
};

/// The outcome of the `call`-th creation or update of `action`: often success, sometimes a failure
/// of either kind, and sometimes a difference in the description alone.
[[nodiscard]] Status outcomeOf(const Action& action, unsigned call);

[[nodiscard]] std::string shown(const Status& status);

}  // namespace VrfModel
