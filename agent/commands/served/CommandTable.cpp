#include "agent/commands/served/CommandTable.h"

#include <algorithm>
#include <sstream>
#include <utility>

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

bool accepts(const FormWord& form, const std::string& word) {
  return std::any_of(form.choices.begin(), form.choices.end(), [&](const std::string& choice) {
    return choice == word || isPlaceholder(choice);
  });
}

constexpr CommandRow rows[] = {
    {"show actions [vrf VRF] [failed]",
     "The actions with their users, resources and statuses, and the chip", showActions},
    {"show users [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]",
     "The interface and the rule of each user of an action", showUsers},
    {"show rules [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]",
     "The rules of each interface in their order, and the state of each", showRules},
    {"show counters [interface INTERFACE] [policy POLICY] [vrf VRF] [failed]",
     "Packets by rule, by VRF and by drop reason", showCounters},
    {"show interfaces", "Each interface: its VRF, its policies, and the state of its rules",
     showInterfaces},
    {"show policies", "Each policy: its type, its rules, and the interfaces that apply it",
     showPolicies},
    {"show routes [VRF] [PREFIX]",
     "The routes, or those of a VRF or to a prefix and what it contains", showRoutes},
    {"show vrfs", "Each VRF: hardware id, fallback VRF, lengths in exact match, whether configured",
     showVrfs},
    {"show fallback", "The fallback VRF of each VRF, the actions that name each VRF, and cycles",
     showFallback},
    {"show trace [N]", "The last N messages of the trace; 20 if N is not given", showTrace},
    {"show types", "The registered types, their attributes, and the operations of each", showTypes},
    {"get TYPE ATTRIBUTE [KEY...]", "An attribute of the library's objects of a type",
     getAttribute},
    {"show config", "The configuration in force, and the results of reloads", showConfig},
    {"show limits", "The limits in force, and the option that changes each", showLimits},
    {"show version", "The version of the agent", showVersion},
    {"clear counters", "Set all counters of show counters to 0", clearCounters},
    {"reload", "Read the configuration file again and apply it, as SIGHUP does", reload},
    {"diff", "What a reload would change: the configuration in force, and its file as it is now",
     diff},
    {"config FILE", "Apply a file, from the daemon's folder, as a change of the configuration",
     playEvent},
    {"vrf NAME id N", "The hardware assigns the id N to the VRF; 0 removes the id", playEvent},
    {"vrf NAME add [id N]", "The hardware reports a new status for the VRF", playEvent},
    {"vrf NAME remove", "The hardware removes the VRF", playEvent},
    {"fallback NAME to NAME", "The second VRF becomes the fallback VRF of the first", playEvent},
    {"fallback NAME remove", "Remove the fallback VRF of the VRF", playEvent},
    {"decap-nh on|off", "Enable or disable decapsulation by next hops", playEvent},
    {"decap-nh-fallback on|off", "Enable or disable fallback for decapsulating next hops",
     playEvent},
    {"prefix-lens ipv4|ipv6 NAME LENGTH...", "Set the prefix lengths of the VRF in exact match",
     playEvent},
    {"prefix-lens ipv4|ipv6 NAME remove", "Remove all prefix lengths of the VRF from exact match",
     playEvent},
    {"chip capacity N", "Set the number of VRF resources of the chip", playEvent},
    {"chip rules N", "Set the number of rule entries of the chip", playEvent},
    {"chip fail VRF|any COUNT", "Make the next COUNT creations and updates fail", playEvent},
    {"route VRF PREFIX decap", "Add a route to the prefix that decapsulates", playEvent},
    {"route VRF PREFIX via INTERFACE", "Add a route to the prefix through the interface",
     playEvent},
    {"route VRF PREFIX remove", "Remove a route that an event has set", playEvent},
    {"retry", "Ask the chip again for all that it has refused", playEvent},
    {"explain INTERFACE PACKET...",
     "Show the path of a packet: ipv4|ipv6 SOURCE to DESTINATION ...", explainPacket},
    {"show", "The actions, and each resource of the chip in full", showState},
    {"help [WORD...]", "The commands, or those that begin with the words", help},
    {"complete LINE", "The completions of the last word of LINE, which is quoted as one word",
     complete},
    {"choices LINE", "What the last word of LINE may be, with help; LINE is quoted as one word",
     choices},
};

// The keywords that several rows share at one place.
constexpr std::pair<std::string_view, std::string_view> sharedKeywords[] = {
    {"show", "Show the state of the agent"},
    {"vrf", "Report a VRF as the hardware does"},
    {"fallback", "Change the fallback VRF of a VRF"},
    {"prefix-lens", "Set the prefix lengths of a VRF in exact match"},
    {"ipv4", "Prefix lengths of IPv4"},
    {"ipv6", "Prefix lengths of IPv6"},
    {"chip", "Change the chip"},
    {"route", "Add or remove a route"},
};

}  // namespace

CommandForm::CommandForm(std::string_view form) {
  bool isName = true;
  std::size_t opened = 0;
  for (const std::string& text : splitAt(' ', std::string(form))) {
    words_.push_back(formWordOf(text));
    isName =
        isName && words_.back().choices == std::vector<std::string>{text} && !isPlaceholder(text);
    if (isName) name_.push_back(text);
    if (text.front() == '[') opened = words_.size() - 1;
    if (text.find(']') != std::string::npos) {
      words_[opened].optionalWords = words_.size() - opened;
    }
  }
}

std::vector<std::string> CommandForm::choicesAfter(const std::vector<std::string>& words) const {
  Places places = start();
  for (const std::string& word : words)
    places = after(places, word);
  return choicesAt(places);
}

CommandForm::Places CommandForm::after(const Places& places, const std::string& word) const {
  Places next;
  for (const std::size_t place : places) {
    if (place == words_.size() || !accepts(words_[place], word)) continue;
    next.insert(place + 1);
    if (words_[place].repeats) next.insert(place);
  }
  return withSkipped(std::move(next));
}

std::vector<std::string> CommandForm::choicesAt(const Places& places) const {
  std::vector<std::string> choices;
  for (const std::size_t place : places) {
    if (place == words_.size()) continue;
    choices.insert(choices.end(), words_[place].choices.begin(), words_[place].choices.end());
  }
  return choices;
}

// A place behind an optional part is later, so it is reached by going up once.
CommandForm::Places CommandForm::withSkipped(Places places) const {
  for (std::size_t place = 0; place < words_.size(); ++place) {
    const std::size_t skipped = words_[place].optionalWords;
    if (skipped > 0 && places.contains(place)) places.insert(place + skipped);
  }
  return places;
}

bool isPlaceholder(std::string_view choice) noexcept {
  return !choice.empty() && choice.front() >= 'A' && choice.front() <= 'Z';
}

std::span<const CommandRow> commandTable() noexcept {
  return rows;
}

std::string_view keywordHelp(std::string_view keyword) noexcept {
  for (const auto& [shared, help] : sharedKeywords) {
    if (shared == keyword) return help;
  }
  return {};
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
