#include "tests/agent/model/fresh/VisibleState.h"

#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string_view>

#include "Mox/QuotedString.h"
#include "agent/commands/served/CommandDispatch.h"
#include "agent/model/policies/PolicyObjects.h"
#include "agent/reports/PathReport.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {
namespace {

template <class Value>
std::string textOf(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

std::string textOf(const Chips::Route& route) {
  if (route.kind == Chips::Route::Kind::egress) return "via " + Mox::quoted(route.intf);
  return route.kind == Chips::Route::Kind::drop ? "drop" : "decap";
}

std::string textOf(const Chips::Verdict& verdict) {
  if (verdict.drop) return "dropped: " + std::string(nameOf(*verdict.drop));
  std::string text = "leaves by " + Mox::quoted(verdict.egress) + " as";
  for (const std::uint8_t byte : verdict.packet)
    text += ' ' + std::to_string(byte);
  return text;
}

// Replaces the number after each "resource " by "N".
std::string withoutResourceNumbers(std::string text) {
  static constexpr std::string_view word = "resource ";
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
    at += word.size();
    const std::size_t end = text.find_first_not_of("0123456789", at);
    text.replace(at, std::min(end, text.size()) - at, "N");
  }
  return text;
}

class Writer final {
 public:
  Writer(ServedAgent& served, const Probes& probes)
      : served_(served),
        agent_(served.agent()),
        policy_(agent_.policySm().policySm()->inputs()),
        vrfs_(*agent_.policySm().vrfSm()),
        probes_(probes) {}

  void writeFacts() {
    maps("class maps", policy_.classTypeConfig->classMap(),
         [](const auto& match) { return toText(*match); });
    maps("policy maps", policy_.policyConfig->policyMap(), textOfRules);
    maps("policies of interfaces", policy_.intfConfig->intf(), [](const auto& applied) {
      return Mox::quoted(applied.policyMap.str()) + " kind " +
             std::to_string(static_cast<unsigned>(applied.kind));
    });
    writeRouteTables();
  }

  void writeRules() {
    command("show vrfs");
    command("show rules");
    command("show users");
    command("show fallback");
    writeRulesOnTheChip();
    writeRuleStatuses();
    maps("statuses of policy maps", policy_.status->policyStatus(), [](const auto& status) {
      return std::to_string(status.intfs) + " interfaces, " +
             std::to_string(status.rulesProgrammed) + " of " + std::to_string(status.rules) +
             " rules";
    });
    actions("counted users", vrfs_.vrfHwConfig()->vrfRefCount());
  }

  void writeResources() {
    writeActions();
    actions("statuses of actions", vrfs_.vrfHwStatus()->hwStatus());
    title("resources of the chip");
    for (const auto& [action, resource] : agent_.chip().resources())
      text_ += textOf(action) + ": " + textOf(resource.program) + '\n';
    writePackets();
    command("show counters");
  }

  [[nodiscard]] std::string take() { return std::move(text_); }

 private:
  void title(const std::string& title) { text_ += "== " + title + '\n'; }

  void lines(const std::string& heading, const std::multiset<std::string>& sorted) {
    title(heading);
    for (const std::string& line : sorted)
      text_ += line + '\n';
  }

  void command(const std::string& command) {
    title(command);
    text_ += runCommand(served_, command, false).get_ref<const std::string&>();
  }

  template <class Map, class ValueText>
  void maps(const std::string& heading, const Map& map, const ValueText& valueText) {
    std::multiset<std::string> sorted;
    for (auto entry = map.iterator(); entry; ++entry)
      sorted.insert(Mox::quoted(entry.key().str()) + ": " + valueText(entry.value()));
    lines(heading, sorted);
  }

  template <class Map>
  void actions(const std::string& heading, const Map& map) {
    std::multiset<std::string> sorted;
    for (auto entry = map.iterator(); entry; ++entry)
      sorted.insert(textOf(entry.key()) + ": " + textOf(entry.value()));
    lines(heading, sorted);
  }

  static std::string textOfRules(const PolicyMap::PolicyMapRules& rules) {
    std::string text;
    for (const PolicyMap::PolicyMapRule& rule : rules) {
      text += std::to_string(rule.sequence) + ' ' + Mox::quoted(rule.classMap.str()) + " -> " +
              toText(rule.action) + "; ";
    }
    return text;
  }

  void writeRouteTables() {
    static const std::vector<unsigned char> everyLength = [] {
      std::vector<unsigned char> lengths;
      for (unsigned length = 0; length <= 128; ++length)
        lengths.push_back(static_cast<unsigned char>(length));
      return lengths;
    }();
    title("tables of routes");
    text_ += std::to_string(agent_.routeTables().routes()) + " routes\n";
    for (const std::uint32_t vrfId : probes_.vrfIds) {
      for (const IpAddress& address : probes_.addresses) {
        writeHit(vrfId, address, everyLength);
        writeHit(vrfId, address, {});
      }
    }
  }

  void writeHit(std::uint32_t vrfId, const IpAddress& address,
                const std::vector<unsigned char>& exactMatchLens) {
    const auto hit = agent_.routeTables().lookUp(vrfId, address, exactMatchLens);
    if (!hit) return;
    text_ += std::to_string(vrfId) + ": " + toText(address) + " is in " + toText(hit->prefix) +
             ' ' + textOf(*hit->route) + (hit->exactMatch ? ", exact match\n" : "\n");
  }

  void writeRulesOnTheChip() {
    title("rules on the chip");
    for (const Velo::String& intf : agent_.acl().intfs()) {
      for (const PolicyMap::AclRule& rule : agent_.acl().rules(intf)) {
        text_ += Mox::quoted(intf.str()) + ": " + toText(*rule.match) + ", " + toText(rule.action) +
                 '\n';
      }
    }
    text_ += std::to_string(agent_.acl().rulesInUse()) + " rules\n";
  }

  void writeRuleStatuses() {
    std::multiset<std::string> sorted;
    const auto& statuses = policy_.status->ruleStatus();
    for (auto entry = statuses.iterator(); entry; ++entry) {
      const PolicyMap::RuleKey& rule = entry.key();
      sorted.insert(Mox::quoted(rule.intf.str()) + ' ' + Mox::quoted(rule.policyMap.str()) + ' ' +
                    std::to_string(rule.sequence) + ": " +
                    (entry.value().programmed ? "programmed" : entry.value().reason.str()));
    }
    lines("statuses of rules", sorted);
  }

  void writeActions() {
    CommandOutput shown = runCommand(served_, "show actions", true);
    shown.erase("configuration");
    for (const char* const calls : {"creates", "updates", "deletes", "failures"})
      shown["chip"].erase(calls);
    title("show actions");
    for (auto& action : shown["actions"]) {
      if (!action["resource"].is_null()) action["resource"].erase("index");
      text_ += oneLine(action) + '\n';
    }
    text_ += oneLine(shown["chip"]) + '\n';
  }

  void writePackets() {
    agent_.acl().countersReset();
    agent_.forwarder().countersReset();
    title("packets");
    std::size_t number = 0;
    for (const ProbePacket& packet : probes_.packets) {
      const std::string name =
          "packet " + std::to_string(number++) + " by " + Mox::quoted(packet.interface);
      text_ += name + ' ' + textOf(agent_.forwarder().forward(packet.interface, packet.bytes)) +
               '\n' +
               withoutResourceNumbers(explain(agent_, packet.interface, packet.bytes).text());
    }
  }

  ServedAgent& served_;
  ForwardingAgent& agent_;
  const TrafficPolicy::TrafficPolicyInputs& policy_;
  const ZelVrfSelectionPolicy::VrfSm& vrfs_;
  const Probes& probes_;
  std::string text_;
};

// Reads a state line by line.
class Lines final {
 public:
  explicit Lines(std::string_view rest) : rest_(rest) { next(); }
  void next() {
    line_ = rest_.substr(0, rest_.find('\n'));
    isEnd_ = rest_.empty();
    rest_.remove_prefix(std::min(line_.size() + 1, rest_.size()));
    if (line_.substr(0, 3) == "== ") title_ = line_.substr(3);
  }
  [[nodiscard]] bool isEnd() const { return isEnd_; }
  [[nodiscard]] std::string_view line() const { return line_; }
  [[nodiscard]] std::string_view title() const { return title_; }

 private:
  std::string_view rest_;
  std::string_view line_;
  std::string_view title_;
  bool isEnd_ = false;
};

}  // namespace

std::string visibleState(ServedAgent& served, const Probes& probes, Scope scope) {
  Writer writer(served, probes);
  writer.writeFacts();
  if (scope >= Scope::rules) writer.writeRules();
  if (scope >= Scope::everything) writer.writeResources();
  return writer.take();
}

std::string firstDifference(const std::string& present, const std::string& wanted) {
  if (present == wanted) return "";
  Lines one(present);
  Lines other(wanted);
  std::string_view title = one.title();
  while (one.line() == other.line() && !one.isEnd() && !other.isEnd()) {
    title = one.title();
    one.next();
    other.next();
  }
  return "in the section \"" + std::string(title) + "\":\n  present: " + std::string(one.line()) +
         "\n  wanted:  " + std::string(other.line()) + '\n';
}

}  // namespace ZelAgent
