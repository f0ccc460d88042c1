#pragma once

#include <string>

#include "Cast.h"

namespace VrfModel {

/// The outcome of a hook call. Result and reason are the codes of their enumerators.
struct Status {
  unsigned result = 0;
  unsigned reason = 0;
  std::string description;

  friend bool operator==(const Status&, const Status&) = default;
};

/// The outcome of the `call`-th creation or update of `action`. Most are successes, some are
/// failures of either kind, and some differ in the description only.
[[nodiscard]] Status outcomeOf(const Action& action, unsigned call);

[[nodiscard]] std::string shown(const Status& status);

}  // namespace VrfModel
