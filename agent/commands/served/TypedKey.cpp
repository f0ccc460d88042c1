#include "agent/commands/served/TypedKey.h"

#include <utility>

#include "L3/VrfName.h"
#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Mox/QuotedString.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "agent/language/Words.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

std::optional<VrfAction> actionIn(const Mox::AnyValue& key) {
  if (!key.holds<VrfAction>()) return std::nullopt;
  return key.as<VrfAction>();
}

// The words of the line without their quotes. None for a line that is badly quoted.
std::vector<std::string> plainWords(std::string_view line) {
  std::vector<std::string> words;
  try {
    Mox::CharRange range(line);
    while (auto word = takeWord(range))
      words.push_back(std::move(word->text));
  } catch (const Mox::RangeException&) {
    return {};
  }
  return words;
}

}  // namespace

TypedKey::TypedKey(std::string text) : text_(std::move(text)), words_(plainWords(text_)) {}

KeyFit TypedKey::fit(const Mox::AnyValue& key) const {
  const std::string form = key.text().str();
  if (text_ == form || Mox::quoted(text_) == form) return KeyFit::whole;
  const std::optional<VrfAction> action = actionIn(key);
  if (!action) return KeyFit::none;
  if (!words_.empty() && words_ == plainWords(toText(*action))) return KeyFit::whole;
  return action->vrfName().bytes() == text_ ? KeyFit::vrf : KeyFit::none;
}

std::vector<std::string> wordsOfKey(const Mox::AnyValue& key) {
  if (const auto action = actionIn(key)) {
    std::vector<std::string> words = plainWords(toText(*action));
    for (std::string& word : words)
      word = toWord(word);
    return words;
  }
  if (key.holds<L3::VrfName>()) return {toWord(key.as<L3::VrfName>().bytes())};
  return {toWord(key.text().str())};
}

std::optional<std::string> vrfOfKey(const Mox::AnyValue& key) {
  const auto action = actionIn(key);
  if (!action) return std::nullopt;
  return toWord(action->vrfName().bytes());
}

}  // namespace ZelAgent
