#include "ZelVrfSelectionPolicy/values/VrfAction.h"

#include <ostream>
#include <string>

#include "Mox/QuotedString.h"
#include "Mox/Strep.h"

namespace ZelVrfSelectionPolicy {
namespace {

constexpr std::size_t usualBytes = 256;  // room for three names of 40 bytes

std::string strep(const VrfAction& action) {
  std::string text;
  text.reserve(usualBytes);
  text += "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': ";
  Mox::appendQuoted(text, action.vrfName().bytes());
  text += ", 'fallbackVrfName': ";
  Mox::appendQuoted(text, action.fallbackVrfName().bytes());
  text += ", 'postDecapVrfName': ";
  Mox::appendQuoted(text, action.postDecapVrfName().bytes());
  text += ", 'action': ";
  text += PolicyMap::actionTypes.name(action.action());
  text += "})";
  return text;
}

PolicyMap::ActionType readAction(Mox::CharRange& range) {
  try {
    return PolicyMap::sequenceToValue(range);
  } catch (const Mox::RangeException& error) {
    Mox::rethrowFromDeserializeAttr(error, "action");
  }
}

}  // namespace

VrfAction::VrfAction(Mox::CharRange& range) {
  range.needString("Value('ZelVrfSelectionPolicy::VrfAction', ** {");
  range.needString("'vrfName': ");
  vrfName_ = Mox::deserializeAttr<L3::VrfName>(range, "vrfName");
  range.needString(", 'fallbackVrfName': ");
  fallbackVrfName_ = Mox::deserializeAttr<L3::VrfName>(range, "fallbackVrfName");
  range.needString(", 'postDecapVrfName': ");
  postDecapVrfName_ = Mox::deserializeAttr<L3::VrfName>(range, "postDecapVrfName");
  range.needString(", 'action': ");
  action_ = readAction(range);
  range.needString("})");
}

bool VrfAction::operator<(const VrfAction& other) const {
  if (vrfName_ != other.vrfName_) return vrfName_ < other.vrfName_;
  if (fallbackVrfName_ != other.fallbackVrfName_) return fallbackVrfName_ < other.fallbackVrfName_;
  if (postDecapVrfName_ != other.postDecapVrfName_) {
    return postDecapVrfName_ < other.postDecapVrfName_;
  }
  return action_ < other.action_;
}

VrfAction::operator bool() const noexcept {
  const VrfAction unset;
  return !isEq(this, &unset);
}

Velo::String valueToStrep(const VrfAction& action) {
  return strep(action);
}

std::ostream& operator<<(std::ostream& stream, const VrfAction& action) {
  return stream << strep(action);
}

}  // namespace ZelVrfSelectionPolicy
