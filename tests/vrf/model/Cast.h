#pragma once

#include <string>
#include <vector>

#include "Choices.h"

namespace VrfModel {

// The records that a history is about, plain: the model knows none of the library's types.

using Name = std::string;

inline const Name defaultVrf = "default";

/// A VRF action. `type` is the code of its action type.
struct Action {
  Name vrf;
  Name fallback;
  Name postDecap;
  unsigned type = 0;

  [[nodiscard]] bool involves(const Name& name) const {
    return vrf == name || fallback == name || postDecap == name;
  }
  friend bool operator==(const Action&, const Action&) = default;
  friend auto operator<=>(const Action&, const Action&) = default;
};

/// The names and actions of one history. They are few, so that events meet.
struct Cast {
  std::vector<Name> names;
  std::vector<Action> actions;
};

[[nodiscard]] Cast castOf(Choices& choices);

/// As reports show them.
[[nodiscard]] std::string shown(const Name& name);
[[nodiscard]] std::string shown(const Action& action);

}  // namespace VrfModel
