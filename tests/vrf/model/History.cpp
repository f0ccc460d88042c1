#include "History.h"

#include "Comparison.h"
#include "System.h"

namespace VrfModel {
namespace {

// The earlier of the two differences. Both texts if they are of the same event.
std::optional<Difference> earliest(std::optional<Difference> ofMessages,
                                   std::optional<Difference> ofRest) {
  if (!ofMessages || !ofRest) return ofMessages ? ofMessages : ofRest;
  if (ofMessages->event == ofRest->event) ofMessages->text = ofRest->text + '\n' + ofMessages->text;
  return ofMessages;
}

}  // namespace

std::optional<Difference> firstDifference(const Cast& cast, const std::vector<Event>& history,
                                          const Witness& witness) {
  Model model(cast);
  System system(cast);
  MessageTape messages;
  for (std::size_t index = 0; index < history.size(); ++index) {
    const Event& event = history[index];
    if (!model.allows(event)) continue;
    const Expected expected = model.apply(event, system.fallbackWalk(event));
    system.apply(event);
    if (witness) witness(event, expected);
    messages.eventIs(index, expected.messages);
    const std::string text = differenceOf(system, model, expected);
    std::optional<Difference> difference;
    if (!text.empty()) difference = Difference{index, text};
    if (difference || messages.isDue()) difference = earliest(messages.compare(), difference);
    if (difference) return difference;
  }
  return messages.compare();
}

bool survives(const Cast& cast, const std::vector<Event>& history, Stop stop) {
  Model model(cast);
  System system(cast);
  for (const Event& event : history) {
    const bool isToStop = model.stopOf(event) == stop;
    if (!isToStop && !model.allows(event)) continue;
    if (!isToStop) static_cast<void>(model.apply(event, system.fallbackWalk(event)));
    system.apply(event);
    if (isToStop) return true;
  }
  return false;
}

}  // namespace VrfModel
