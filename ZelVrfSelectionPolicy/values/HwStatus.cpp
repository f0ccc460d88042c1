#include "ZelVrfSelectionPolicy/values/HwStatus.h"

#include <ostream>
#include <string>

#include "Mox/QuotedString.h"
#include "Mox/Strep.h"

namespace ZelVrfSelectionPolicy {
namespace {

std::string strep(const HwStatus& status) {
  std::string text = "Value('ZelVrfSelectionPolicy::HwStatus', ** {'status': ";
  text += valueToStrep(status.status()).bytes();
  text += ", 'failureReason': ";
  text += valueToStrep(status.failureReason()).bytes();
  text += ", 'failureDescription': ";
  Mox::appendQuoted(text, status.failureDescription().bytes());
  text += "})";
  return text;
}

}  // namespace

HwStatus::HwStatus(Mox::CharRange& range) {
  range.needString("Value('ZelVrfSelectionPolicy::HwStatus', ** {");
  range.needString("'status': ");
  status_ = Mox::deserializeAttr<ProgrammingResult>(range, "status");
  range.needString(", 'failureReason': ");
  failureReason_ = Mox::deserializeAttr<FailureCode>(range, "failureReason");
  range.needString(", 'failureDescription': ");
  failureDescription_ = Mox::deserializeAttr<Velo::String>(range, "failureDescription");
  range.needString("})");
}

HwStatus::operator bool() const noexcept {
  const HwStatus unset;
  return !isEq(this, &unset);
}

Velo::String valueToStrep(const HwStatus& status) {
  return strep(status);
}

std::ostream& operator<<(std::ostream& stream, const HwStatus& status) {
  return stream << strep(status);
}

}  // namespace ZelVrfSelectionPolicy
