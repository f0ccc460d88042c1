#include "agent/reports/LimitsReport.h"

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "Blinklog/Ring.h"
#include "Blinklog/RingFileFormat.h"
#include "Ip/Prefix.h"
#include "agent/language/TextTable.h"
#include "chips/programs/VrfProgram.h"

namespace ZelAgent {
namespace {

void addInputs(LimitTable& table) {
  table.push_back(
      {"name", Limits::nameBytes, "bytes", "",
       "name of a VRF, an interface, a policy or a next hop; a longer one is an error"});
  table.push_back({"input file", Limits::inputFileBytes, "bytes", "",
                   "a configuration, event file or capture; a larger one is an error"});
  table.push_back({"document levels", Limits::documentLevels, "levels", "",
                   "arrays and objects inside each other in JSON; a deeper document is an error"});
  table.push_back({"port ranges", Limits::portRanges, "ranges", "",
                   "of a port set, where ports beside each other are one range; a set with more is "
                   "an error"});
  table.push_back({"shown errors", Limits::shownErrors, "lines", "",
                   "errors of one configuration that are printed; others are counted"});
  table.push_back({"shown warnings", Limits::shownWarnings, "lines", "",
                   "warnings of one configuration that are printed; others are counted"});
  table.push_back({"number", std::numeric_limits<std::uint32_t>::max(), "", "",
                   "a number of an event, a command or an option; a larger one is an error"});
  table.push_back({"IPv4 prefix length", Ip::addressBits(Ip::Family::v4), "bits", "",
                   "a longer one is an error"});
  table.push_back({"IPv6 prefix length", Ip::addressBits(Ip::Family::v6), "bits", "",
                   "a longer one is an error"});
  table.push_back({"packet payload", Limits::payloadBytes, "bytes", "",
                   "what a packet of a command carries; a longer payload is an error"});
}

void addChip(LimitTable& table, const ChangeableLimits& inForce) {
  table.push_back({"chip resources", inForce.chipResources, "resources", "--chip-capacity",
                   "VRF resources of the chip; an action beyond them is not programmed"});
  table.push_back({"chip rules", inForce.chipRules, "rules", "--rule-capacity",
                   "rules of all interfaces together; rules of an interface that need more are not "
                   "programmed"});
  table.push_back({"fallback walk", Chips::longestWalk, "VRFs", "",
                   "VRFs that one lookup tries; the fallback VRF of the last is not used"});
  table.push_back({"gateways", Limits::gateways, "gateways", "",
                   "gateways on the way to a next hop; a next hop behind more is not used"});
  table.push_back({"retries", Limits::retriesOfAStep, "calls", "",
                   "refused actions that are requested again at one event but a configuration; "
                   "others wait longer"});
  table.push_back({"retry pause", Limits::pauseSteps, "steps", "",
                   "events, or seconds of a daemon, between two requests for a refused action"});
}

void addDaemon(LimitTable& table, const ChangeableLimits& inForce) {
  const auto timeout = std::chrono::duration_cast<std::chrono::seconds>(inForce.clientTimeout);
  table.push_back({"request", Limits::requestBytes, "bytes", "",
                   "a longer one is an error, and the connection is closed"});
  table.push_back(
      {"answer", Limits::answerBytes, "bytes", "",
       "one without pages, and a line or value that ctl reads; an error replaces a longer "
       "one"});
  table.push_back({"waiting answers", Limits::waitingAnswersBytes, "bytes", "",
                   "long answers that clients have not read yet, together; the daemon sends an "
                   "error instead of one more"});
  table.push_back({"short answer", Limits::shortAnswerBytes, "bytes", "",
                   "an answer that is sent however many wait"});
  table.push_back({"answer page", Limits::pageBytes, "bytes", "",
                   "rows of a long answer that are sent together; more are on the next page"});
  table.push_back({"answer levels", Limits::answerLevels, "levels", "",
                   "levels of JSON in an answer; ctl refuses more"});
  table.push_back(
      {"clients", Limits::clients, "clients", "", "clients of a daemon; more are refused"});
  table.push_back({"client timeout", static_cast<std::uint64_t>(timeout.count()), "s",
                   "serve --client-timeout",
                   "a client that reads nothing of its answer for this time is disconnected; 0 is "
                   "no limit"});
  table.push_back({"answer timeouts", Limits::answerTimeouts, "timeouts", "",
                   "a client that has not read its answer after so many client timeouts is "
                   "disconnected"});
  table.push_back({"ctl timeout", static_cast<std::uint64_t>(Limits::ctlTimeout.count()), "s",
                   "ctl --timeout",
                   "ctl gives up a daemon that sends nothing for this time; 0 is no limit"});
  table.push_back({"log changes", Limits::logLinesOfASubject, "lines", "",
                   "lines of the log about one action, or the rules of one interface, in a log "
                   "pause; further changes are counted"});
  table.push_back({"log pause", static_cast<std::uint64_t>(Limits::logPause.count()), "s", "",
                   "time after which a line with the number of those changes follows"});
  table.push_back({"log lines", Limits::logLinesInASecond, "lines", "",
                   "lines of the log about programming in a second; others are counted"});
  table.push_back({"log subjects", Limits::logSubjects, "subjects", "",
                   "actions and interfaces that the log remembers after a failure; lines about "
                   "others are counted"});
  table.push_back({"socket path", Limits::socketPathBytes, "bytes", "",
                   "a longer path of a socket is an error"});
}

void addOutput(LimitTable& table) {
  table.push_back({"completions", Limits::completions, "words", "",
                   "of a word, in an answer; of more the first ones and the last are sent"});
  table.push_back({"console history", Limits::consoleLines, "lines", "",
                   "lines that the console remembers; older ones are forgotten"});
  table.push_back({"shown text", Limits::shownTextBytes, "bytes", "",
                   "of a name, path or error in messages and tables; ... replaces the rest"});
  table.push_back({"shown value", Limits::shownValueBytes, "bytes", "",
                   "of a wrong value in a message; ... replaces the rest"});
  table.push_back({"shown list", Limits::shownListValues, "values", "",
                   "ports, offsets or prefixes of a match in a report; others are counted"});
  table.push_back({"shown interfaces", Limits::shownInterfaces, "names", "",
                   "of a policy in a table; others are counted"});
  table.push_back({"trace ring", Blinklog::ring().slots(), "messages", "",
                   "last messages of the library that are kept; older ones are overwritten"});
  table.push_back({"trace message", Blinklog::Ring::slotBytes, "bytes", "",
                   "a message with its header in the ring; ... replaces the rest of a text"});
  table.push_back({"trace file", Blinklog::RingFileFormat::maxSlots, "messages", "",
                   "messages of a trace file; one for more is neither written nor read"});
}

}  // namespace

LimitTable limitTable(const ChangeableLimits& inForce) {
  LimitTable table;
  addInputs(table);
  addChip(table, inForce);
  addDaemon(table, inForce);
  addOutput(table);
  return table;
}

void writeTextReport(std::ostream& out, const LimitTable& limits) {
  const auto orNone = [](const char* text) { return *text == '\0' ? "-" : text; };
  TextTable table{{"LIMIT", "VALUE", "UNIT", "OPTION", "MEANING"}};
  for (const Limit& limit : limits) {
    table.push_back({limit.name, std::to_string(limit.value), orNone(limit.unit),
                     orNone(limit.option), limit.meaning});
  }
  writeTable(out, table);
}

OrderedJson toJson(const LimitTable& limits) {
  OrderedJson json = OrderedJson::array();
  for (const Limit& limit : limits) {
    json.push_back({{"name", limit.name},
                    {"value", limit.value},
                    {"unit", *limit.unit == '\0' ? OrderedJson() : OrderedJson(limit.unit)},
                    {"option", *limit.option == '\0' ? OrderedJson() : OrderedJson(limit.option)},
                    {"meaning", limit.meaning}});
  }
  return json;
}

}  // namespace ZelAgent
