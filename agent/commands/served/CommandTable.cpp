#include "agent/commands/served/CommandTable.h"

#include <algorithm>
#include <sstream>

#include "agent/commands/served/ServedCommands.h"

namespace ZelAgent {
namespace {

std::vector<std::string> splitAt(char separator, const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);)
    parts.push_back(part);
  return parts;
}

FormWord formWordOf(std::string text) {
  std::erase_if(text, [](char byte) { return byte == '[' || byte == ']'; });
  FormWord word;
  constexpr std::string_view dots = "...";
  const std::size_t end = text.find(dots);
  if (end != std::string::npos) {
    word.repeats = true;
    text.erase(end, dots.size());
  }
  word.choices = splitAt('|', text);
  return word;
}

bool mayBe(const FormWord& form, const std::string& word) {
  return std::any_of(form.choices.begin(), form.choices.end(), [&](const std::string& choice) {
    return choice == word || isPlaceholder(choice);
  });
}

constexpr CommandRow rows[] = {
    {"show actions", "The actions with their users, resources and statuses, and the chip",
     showActions},
    {"show users", "Which interface and rule hold each user of an action", showUsers},
    {"show rules", "The rules of each interface, and what became of them", showRules},
    {"show counters", "Packets by rule, by VRF and by reason of being dropped", showCounters},
    {"show vrfs", "Each VRF: hardware id, fallback, lengths in exact match, whether configured",
     showVrfs},
    {"show fallback", "Which VRF falls back to which now, and which actions name them",
     showFallback},
    {"show trace [N]", "The last N messages of the trace, 20 if not given", showTrace},
    {"show types", "The registered types, their attributes, and what each accepts", showTypes},
    {"get TYPE ATTRIBUTE [KEY...]", "An attribute of the library's objects of a type",
     getAttribute},
    {"show config", "What is in force, and whether the last reload was taken", showConfig},
    {"reload", "Read the configuration file again and apply it, as SIGHUP does", reload},
    {"config FILE", "Apply a file, from the daemon's folder, in place of what is in force",
     playEvent},
    {"vrf NAME id N", "The hardware gives the VRF this id; 0 takes it away", playEvent},
    {"vrf NAME add [id N]", "The hardware reports the VRF by a new status", playEvent},
    {"vrf NAME remove", "The hardware no longer knows the VRF", playEvent},
    {"fallback NAME to NAME", "What misses in the first VRF goes on in the second", playEvent},
    {"fallback NAME remove", "The VRF has no fallback any more", playEvent},
    {"decap-nh on|off", "Next hops may decapsulate, or may not", playEvent},
    {"decap-nh-fallback on|off", "Decapsulating next hops may fall back, or may not", playEvent},
    {"prefix-lens ipv4|ipv6 NAME LENGTH...", "These lengths, and no others, are in exact match",
     playEvent},
    {"prefix-lens ipv4|ipv6 NAME remove", "The VRF has no lengths in exact match", playEvent},
    {"chip capacity N", "The chip has N VRF resources", playEvent},
    {"chip fail VRF|any COUNT", "The next COUNT creations and updates fail", playEvent},
    {"route VRF PREFIX decap", "Packets to the prefix are decapsulated", playEvent},
    {"route VRF PREFIX via INTERFACE", "Packets to the prefix leave by the interface", playEvent},
    {"route VRF PREFIX remove", "A route that was set by an event is taken back", playEvent},
    {"explain INTERFACE PACKET...", "The way of a packet: ipv4|ipv6 SOURCE to DESTINATION ...",
     explainPacket},
    {"show", "The actions, and every resource of the chip in full", playEvent},
    {"help [WORD...]", "What can be asked, or of that what begins with the words", help},
    {"complete LINE", "What the last word of the line, quoted as one word, may become", complete},
};

}  // namespace

CommandForm::CommandForm(std::string_view form) {
  bool isName = true;
  for (const std::string& text : splitAt(' ', std::string(form))) {
    words_.push_back(formWordOf(text));
    isName =
        isName && words_.back().choices == std::vector<std::string>{text} && !isPlaceholder(text);
    if (isName) name_.push_back(text);
  }
}

std::vector<std::string> CommandForm::choicesAfter(const std::vector<std::string>& words) const {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const FormWord* const form = wordAt(i);
    if (form == nullptr || !mayBe(*form, words[i])) return {};
  }
  const FormWord* const next = wordAt(words.size());
  return next == nullptr ? std::vector<std::string>() : next->choices;
}

const FormWord* CommandForm::wordAt(std::size_t index) const noexcept {
  if (index < words_.size()) return &words_[index];
  return words_.back().repeats ? &words_.back() : nullptr;
}

bool isPlaceholder(std::string_view choice) noexcept {
  return !choice.empty() && choice.front() >= 'A' && choice.front() <= 'Z';
}

std::span<const CommandRow> commandTable() noexcept {
  return rows;
}

const std::vector<CommandForm>& commandForms() {
  static const std::vector<CommandForm> forms = [] {
    std::vector<CommandForm> read;
    for (const CommandRow& row : rows)
      read.emplace_back(row.form);
    return read;
  }();
  return forms;
}

}  // namespace ZelAgent
