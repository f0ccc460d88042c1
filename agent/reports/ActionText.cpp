#include "agent/reports/ActionText.h"

#include "agent/language/Words.h"

namespace ZelAgent {

std::string toText(const VrfAction& action) {
  std::string text = stringValue(action.action()).str() + ' ' + toWord(action.vrfName().bytes());
  if (!action.fallbackVrfName().empty()) {
    text += " fallback " + toWord(action.fallbackVrfName().bytes());
  }
  if (!action.postDecapVrfName().empty()) {
    text += " post-decap " + toWord(action.postDecapVrfName().bytes());
  }
  return text;
}

}  // namespace ZelAgent
