#include "Report.h"

#include "History.h"
#include "Isolation.h"
#include "Shrinking.h"

namespace VrfModel {
namespace {

std::string failureOf(const Cast& cast, const std::vector<Event>& history) {
  return isolated([&]() -> std::string {
    const auto difference = firstDifference(cast, history);
    if (!difference) return {};
    return "after event " + std::to_string(difference->event + 1) + ": " + difference->text;
  });
}

std::string shown(const Cast& cast, const std::vector<Event>& history) {
  std::string text;
  for (std::size_t index = 0; index < history.size(); ++index)
    text += "\n  " + std::to_string(index + 1) + ". " + shown(history[index], cast);
  return text;
}

}  // namespace

std::string reportOf(const Cast& cast, const std::vector<Event>& history,
                     const std::string& failure) {
  if (failureOf(cast, history).empty()) {
    return "fails only after other histories in the same process: " + failure;
  }
  const std::vector<Event> least = shrunk<Event>(
      history, [&](const std::vector<Event>& part) { return !failureOf(cast, part).empty(); });
  return "shrunk from " + std::to_string(history.size()) + " to " + std::to_string(least.size()) +
         " events:" + shown(cast, least) + "\nfirst difference " + failureOf(cast, least);
}

}  // namespace VrfModel
