#include "Cast.h"

#include <algorithm>

namespace VrfModel {
namespace {

constexpr unsigned actionCount = 18;
constexpr unsigned typeCodes = 4;

Name optionalName(const std::vector<Name>& names, Choices& choices) {
  return choices.once(2) ? Name() : names[choices.below(static_cast<unsigned>(names.size()))];
}

Action actionOf(const std::vector<Name>& names, Choices& choices) {
  Action action;
  action.vrf = names[choices.below(static_cast<unsigned>(names.size()))];
  action.fallback = optionalName(names, choices);
  action.postDecap = optionalName(names, choices);
  action.type = choices.below(typeCodes);
  return action;
}

}  // namespace

Cast castOf(Choices& choices) {
  Cast cast;
  cast.names = {defaultVrf, "", "red", "blue", "green", "amber", "violet"};
  for (unsigned drawn = 0; drawn < actionCount; ++drawn) {
    const Action action = actionOf(cast.names, choices);
    const bool isNew =
        std::find(cast.actions.begin(), cast.actions.end(), action) == cast.actions.end();
    if (isNew) cast.actions.push_back(action);
  }
  return cast;
}

std::string shown(const Name& name) {
  return '\'' + name + '\'';
}

std::string shown(const Action& action) {
  return "(" + shown(action.vrf) + ", fallback " + shown(action.fallback) + ", post-decap " +
         shown(action.postDecap) + ", type " + std::to_string(action.type) + ")";
}

}  // namespace VrfModel
