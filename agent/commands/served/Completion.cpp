#include "agent/commands/served/Completion.h"

#include <set>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "agent/commands/served/CommandForm.h"
#include "agent/commands/served/CommandTable.h"
#include "agent/language/Words.h"
#include "agent/model/events/Event.h"
#include "agent/model/forwarding/FallbackGraph.h"

namespace ZelAgent {
namespace {

struct TypedLine {
  std::vector<std::string> words;  // that are complete
  std::string_view last;           // what is typed of the next
};

// Throws a `Mox::RangeException` on words that are not well quoted.
TypedLine typedLineOf(std::string_view line) {
  const std::size_t blank = line.find_last_of(" \t");
  const std::size_t start = blank == std::string_view::npos ? 0 : blank + 1;
  TypedLine typed{{}, line.substr(start)};
  Mox::CharRange range(line.substr(0, start));
  while (const auto word = takeWord(range))
    typed.words.push_back(word->text);
  return typed;
}

bool standsForVrf(const std::string& choice) {
  return choice == "NAME" || choice == "VRF";
}

std::set<std::string> candidatesAfter(const std::vector<std::string>& words,
                                      ForwardingAgent& agent) {
  std::set<std::string> candidates;
  for (const CommandForm& form : commandForms()) {
    for (const std::string& choice : form.choicesAfter(words)) {
      if (standsForVrf(choice)) {
        for (const L3::VrfName& vrf : knownVrfs(agent))
          candidates.insert(toVrfWord(vrf.str()));
      } else if (!isPlaceholder(choice)) {
        candidates.insert(choice);
      }
    }
  }
  return candidates;
}

}  // namespace

std::vector<std::string> completionsOf(std::string_view line, ForwardingAgent& agent) {
  std::vector<std::string> completions;
  try {
    const TypedLine typed = typedLineOf(line);
    for (const std::string& candidate : candidatesAfter(typed.words, agent)) {
      if (candidate.starts_with(typed.last)) completions.push_back(candidate);
    }
  } catch (const Mox::RangeException&) {
    // A word that is not well quoted yet: there is nothing to offer.
  }
  return completions;
}

}  // namespace ZelAgent
