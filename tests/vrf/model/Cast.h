#pragma once

#include <string>
#include <vector>

#include "Choices.h"

namespace VrfModel {

// The names and actions of a history, as plain values. The model uses none of the library's types.

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

/// The names and actions of one history. There are few, so that many events have the same ones.
struct Cast {
  std::vector<Name> names;
  std::vector<Action> actions;
};

[[nodiscard]] Cast castOf(Choices& choices);

/// The text of the value in reports.
[[nodiscard]] std::string shown(const Name& name);
[[nodiscard]] std::string shown(const Action& action);

}  // namespace VrfModel
