// Each limit of the table is kept: its value is taken, and one more is refused or cut.
#include "agent/language/Limits.h"

#include <editline/readline.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <thread>

#include "Blinklog/FileHandle.h"
#include "Blinklog/Ring.h"
#include "Blinklog/Site.h"
#include "agent/commands/offline/OfflineCommands.h"
#include "agent/commands/served/CommandDispatch.h"
#include "agent/config/JsonText.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextFile.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/packets/PacketText.h"
#include "agent/model/policies/PolicyObjects.h"
#include "agent/model/routes/RoutingTable.h"
#include "agent/reports/InterfaceReport.h"
#include "agent/reports/LimitsReport.h"
#include "agent/reports/ReportPages.h"
#include "agent/serve/console/ControlClient.h"
#include "agent/serve/console/CtlCommand.h"
#include "agent/serve/console/LineEditor.h"
#include "agent/serve/daemon/Daemon.h"
#include "agent/serve/daemon/FailureLines.h"
#include "agent/serve/protocol/Answer.h"
#include "agent/serve/protocol/SocketAddress.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"
#include "tests/agent/serve/daemon/ScriptedClient.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAreArray;

// The message of the error that the call throws; empty for none.
std::string errorOf(const std::function<void()>& call) {
  try {
    call();
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

std::string errorOfEvent(const std::string& event) {
  return errorOf([&] { static_cast<void>(readEvent(event)); });
}

void keepsNames(std::uint64_t limit) {
  const std::string longest(limit, 'n');
  const std::string bytes = std::to_string(limit) + " bytes";
  const auto errorOfVrf = [](const std::string& name) {
    return errorOf([&] { static_cast<void>(OpenConfigBuilder().vrf(name).configuration()); });
  };
  EXPECT_EQ(errorOfVrf(longest), "");
  EXPECT_THAT(errorOfVrf(longest + 'n'),
              EndsWith("must have at most " + bytes + ", not " + std::to_string(limit + 1)));
  EXPECT_EQ(errorOfEvent("vrf " + longest + " remove"), "");
  EXPECT_THAT(errorOfEvent("vrf " + longest + "n remove"), HasSubstr("1 to " + bytes));
  EXPECT_EQ(errorOfEvent("route red 10.0.0.0/8 via " + longest), "");
  EXPECT_THAT(errorOfEvent("route red 10.0.0.0/8 via n" + longest), HasSubstr("1 to " + bytes));
}

void keepsInputFiles(std::uint64_t limit) {
  const TestFiles::TemporaryFolder folder;
  const auto errorOfSize = [&](std::uint64_t bytes) {
    const std::string file = folder.path("sparse");
    std::ofstream{file};
    std::filesystem::resize_file(file, bytes);
    return errorOf([&] { static_cast<void>(openInputFile(file)); });
  };
  EXPECT_EQ(errorOfSize(limit), "");
  EXPECT_EQ(errorOfSize(limit + 1), "is larger than 64 MiB");
}

void keepsDocumentLevels(std::uint64_t limit) {
  const auto errorOfLevels = [](std::uint64_t levels) {
    return errorOf([&] {
      static_cast<void>(parseDocument(std::string(levels, '[') + std::string(levels, ']'), "f"));
    });
  };
  EXPECT_EQ(errorOfLevels(limit), "");
  EXPECT_THAT(errorOfLevels(limit + 1),
              EndsWith("nests deeper than " + std::to_string(limit) + " levels"));
}

void keepsPortRanges(std::uint64_t limit) {
  const auto errorOfRanges = [](std::uint64_t ranges) {
    nlohmann::json ports = nlohmann::json::array();
    for (std::uint64_t number = 0; number < ranges; ++number)
      ports.push_back(2 * number);
    const nlohmann::json document{
        {"network-instances", nlohmann::json::object()},
        {"defined-sets",
         {{"port-sets",
           {{"port-set", {{{"name", "W"}, {"config", {{"port", std::move(ports)}}}}}}}}}}};
    return errorOf([&] { static_cast<void>(readOpenConfig(document.dump(), "f")); });
  };
  EXPECT_EQ(errorOfRanges(limit), "");
  EXPECT_THAT(errorOfRanges(limit + 1), EndsWith("not " + std::to_string(limit + 1)));
}

// A document with that many members that are not read, of which `value` is one.
std::string documentWithMembers(std::uint64_t count, const std::string& value) {
  std::string document = R"({"network-instances": {)";
  for (std::uint64_t number = 0; number < count; ++number)
    document += '"' + std::to_string(number) + "\": 0, ";
  return document + R"("network-instance": )" + value + "}}";
}

void keepsShownWarnings(std::uint64_t limit) {
  EXPECT_EQ(readOpenConfig(documentWithMembers(limit, "[]"), "f").warnings.size(), limit);
  EXPECT_EQ(readOpenConfig(documentWithMembers(limit + 2, "[]"), "f").warnings.back(),
            "f: ... and 2 more warnings");
}

void keepsShownErrors(std::uint64_t limit) {
  const auto errorOfEntries = [](std::uint64_t count) {
    std::string entries = "[0";
    for (std::uint64_t number = 1; number < count; ++number)
      entries += ", 0";
    return errorOf(
        [&] { static_cast<void>(readOpenConfig(documentWithMembers(0, entries + ']'), "f")); });
  };
  EXPECT_THAT(errorOfEntries(limit), EndsWith("must be an object, not 0"));
  EXPECT_THAT(errorOfEntries(limit + 1), EndsWith("\nf: ... and 1 more error"));
}

void keepsNumbers(std::uint64_t limit) {
  EXPECT_EQ(errorOfEvent("vrf red id " + std::to_string(limit)), "");
  EXPECT_THAT(errorOfEvent("vrf red id " + std::to_string(limit + 1)),
              HasSubstr("must be a number from 0 to " + std::to_string(limit)));
}

void keepsPrefixLengths(const std::string& family, const std::string& address,
                        std::uint64_t limit) {
  const std::string longest = std::to_string(limit);
  const std::string longer = std::to_string(limit + 1);
  EXPECT_EQ(errorOfEvent("route red " + address + '/' + longest + " remove"), "");
  EXPECT_THAT(errorOfEvent("route red " + address + '/' + longer + " remove"),
              HasSubstr("PREFIX must be an IPv4 or IPv6 prefix"));
  EXPECT_EQ(errorOfEvent("prefix-lens " + family + " red " + longest), "");
  EXPECT_THAT(errorOfEvent("prefix-lens " + family + " red " + longer),
              HasSubstr("LENGTH must be a number from 0 to " + longest));
}

void keepsPrefixLengthsV4(std::uint64_t limit) {
  keepsPrefixLengths("ipv4", "192.0.2.1", limit);
}

void keepsPrefixLengthsV6(std::uint64_t limit) {
  keepsPrefixLengths("ipv6", "2001:db8::1", limit);
}

// Tunnels in tunnels: each header has 20 bytes, and the innermost packet carries 8 bytes.
void keepsPayloads(std::uint64_t limit) {
  const auto errorOfPacketWith = [](std::uint64_t headers) {
    std::string packet = "ipv4 10.0.0.1 to 10.0.0.2";
    for (std::uint64_t header = 0; header < headers; ++header)
      packet += " carrying ipv4 10.0.0.1 to 10.0.0.2";
    return errorOf([&] {
      EventLine line(packet);
      static_cast<void>(readPacket(line));
    });
  };
  const std::uint64_t most = (limit - 8) / 20;
  EXPECT_EQ(errorOfPacketWith(most), "");
  EXPECT_THAT(errorOfPacketWith(most + 1),
              HasSubstr("must have at most " + std::to_string(limit) + " bytes, found '" +
                        std::to_string(8 + 20 * (most + 1)) + "'"));
}

Configuration oneActionForEachOf(std::uint64_t vrfs) {
  Configuration configuration;
  NetworkInstance top{defaultVrfName, InstanceType::defaultInstance, {}, {}, {}, {}, {}};
  Policy policy{"policy", {}};
  for (std::uint64_t number = 1; number <= vrfs; ++number) {
    const std::string vrf = "vrf" + std::to_string(number);
    configuration.networkInstances.push_back({vrf, InstanceType::l3Vrf, {}, {}, {}, {}, {}});
    policy.rules.push_back({static_cast<std::uint32_t>(number), {}, LookUp{vrf}});
  }
  top.policies.push_back(std::move(policy));
  top.policyBindings.push_back({"e1", "policy"});
  configuration.networkInstances.push_back(std::move(top));
  return configuration;
}

void keepsChipResources(std::uint64_t limit) {
  EXPECT_EQ(RunOptions().chip.capacity, limit);
  EXPECT_EQ(DaemonOptions().chip.capacity, limit);
  ForwardingAgent agent(static_cast<std::uint32_t>(limit));
  agent.apply(oneActionForEachOf(limit));
  EXPECT_FALSE(hasFailedAction(agent.state()));
  agent.apply(oneActionForEachOf(limit + 1));
  const AgentState full = agent.state();
  EXPECT_EQ(full.chip.used, limit);
  std::vector<std::string> failures;
  for (const ActionState& action : full.actions) {
    if (!action.resource) failures.push_back(action.status.failureDescription().str());
  }
  EXPECT_THAT(failures, ::testing::ElementsAre(HasSubstr("no free VRF resource")));
  agent.removeAll();
}

void keepsRetries(std::uint64_t limit) {
  ForwardingAgent agent(0);
  agent.apply(oneActionForEachOf(limit + 1));
  agent.chip().capacityIs(Limits::chipResources);
  agent.complete();
  EXPECT_EQ(agent.chip().resources().size(), limit);
  agent.complete();
  EXPECT_EQ(agent.chip().resources().size(), limit + 1);
  agent.removeAll();
}

void keepsRetryPauses(std::uint64_t limit) {
  ForwardingAgent agent(1);
  agent.chip().faultPlan().anyFaultsIs(100);
  agent.apply(oneActionForEachOf(1));
  std::uint64_t pause = 0;
  std::uint64_t longest = 0;
  for (std::uint64_t step = 0; step < 8 * limit; ++step) {
    const std::uint64_t before = agent.chip().hookCounts().updates;
    agent.complete();
    ++pause;
    if (agent.chip().hookCounts().updates == before) continue;
    longest = std::max(longest, pause);
    pause = 0;
  }
  EXPECT_EQ(longest, limit);
  agent.removeAll();
}

// 256 rules on each of some interfaces, and one rule on the last interface.
Configuration rulesOnInterfaces(std::uint64_t full, bool andOneMore) {
  NetworkInstance top{defaultVrfName, InstanceType::defaultInstance, {}, {}, {}, {}, {}};
  top.policies = {{"many", {}}, {"one", {{1, {}, NoAction{}}}}};
  for (std::uint32_t sequence = 1; sequence <= 256; ++sequence)
    top.policies[0].rules.push_back({sequence, {}, NoAction{}});
  for (std::uint64_t number = 0; number < full; ++number)
    top.policyBindings.push_back({"e" + std::to_string(number), "many"});
  if (andOneMore) top.policyBindings.push_back({"last", "one"});
  return {{top}};
}

std::vector<std::string> reasonsOfMissingRules(const ForwardingAgent& agent) {
  std::vector<std::string> reasons;
  for (const RuleState& rule : agent.rules()) {
    if (!rule.place) reasons.push_back(rule.reason);
  }
  return reasons;
}

void keepsChipRules(std::uint64_t limit) {
  EXPECT_EQ(RunOptions().chip.ruleCapacity, limit);
  EXPECT_EQ(DaemonOptions().chip.ruleCapacity, limit);
  ASSERT_EQ(limit % 256, 0U);
  ForwardingAgent agent(8);
  agent.apply(rulesOnInterfaces(limit / 256, false));
  EXPECT_EQ(agent.rules().size(), limit);
  EXPECT_THAT(reasonsOfMissingRules(agent), ::testing::IsEmpty());
  agent.apply(rulesOnInterfaces(limit / 256, true));
  EXPECT_EQ(agent.rules().size(), limit + 1);
  EXPECT_THAT(reasonsOfMissingRules(agent),
              ::testing::ElementsAre(HasSubstr(std::to_string(limit))));
  agent.removeAll();
}

// How many VRFs the first lookup of a chain of so many VRFs tries.
std::size_t walkInChainOf(std::uint64_t vrfs) {
  OpenConfigBuilder builder;
  for (std::uint64_t number = 1; number < vrfs; ++number)
    builder.vrf("vrf" + std::to_string(number), "vrf" + std::to_string(number + 1));
  builder.vrf("vrf" + std::to_string(vrfs));
  builder.policy("policy", {ruleOf(1, "", {}, toVrf("vrf1"))}, {"e1"});
  ForwardingAgent agent(8);
  agent.apply(builder.configuration());
  const std::size_t walk = agent.state().actions.at(0).resource.value().program.lookUp.size();
  agent.removeAll();
  return walk;
}

void keepsFallbackWalks(std::uint64_t limit) {
  EXPECT_EQ(walkInChainOf(limit), limit);
  EXPECT_EQ(walkInChainOf(limit + 1), limit);
}

// How many routes can be used when each names a gateway in the next one, and the last an interface.
std::size_t routesUsedInChainOf(std::uint64_t gateways) {
  const auto prefix = [](std::uint64_t number) {
    return parseIpPrefix("10." + std::to_string(number) + ".0.0/16").value();
  };
  std::vector<StaticRoute> routes;
  for (std::uint64_t number = 0; number < gateways; ++number)
    routes.push_back({prefix(number), {{"1", prefix(number + 1).address, "", false}}});
  routes.push_back({prefix(gateways), {{"1", std::nullopt, "e1", false}}});
  RoutingTable table;
  table.configuredIs(routes);
  return table.resolved().size();
}

void keepsGateways(std::uint64_t limit) {
  EXPECT_EQ(routesUsedInChainOf(limit), limit + 1) << "all of them";
  EXPECT_EQ(routesUsedInChainOf(limit + 1), limit + 1) << "all but the first";
}

void keepsRequests(std::uint64_t limit) {
  RequestLines lines;
  lines.append(std::string(limit, ' ') + '\n');
  EXPECT_EQ(lines.next().kind, RequestLine::Kind::whole);
  lines.append(std::string(limit + 1, ' ') + '\n');
  const RequestLine longer = lines.next();
  EXPECT_EQ(longer.kind, RequestLine::Kind::tooLong);
  ServedAgent served("unused.json", 8);
  EXPECT_THAT(ControlService(served, 1000).reply(longer).bytes,
              HasSubstr("a line of at most " + std::to_string(limit) + " bytes, found more"));
}

// What `ctl` reports of a daemon that sends this answer; empty for a good answer.
std::string errorOfAnswer(const std::string& bytes) {
  const TestFiles::TemporaryFolder folder;
  const std::string path = folder.path("s");
  const sockaddr_un address = socketAddressOf(path);
  const Blinklog::FileHandle listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  EXPECT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(listen(listener.get(), 1), 0);
  std::thread daemon([&] {
    const Blinklog::FileHandle client(accept(listener.get(), nullptr, nullptr));
    ssize_t sent = 1;
    for (std::size_t at = 0; sent > 0 && at < bytes.size(); at += static_cast<std::size_t>(sent))
      sent = ::send(client.get(), bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
  });
  const std::string error = errorOf([&] {
    static_cast<void>(ControlClient(path, std::chrono::minutes(5)).send({"", true}));
  });
  daemon.join();
  return error;
}

void keepsAnswers(std::uint64_t limit) {
  EXPECT_EQ(ServerLimits().unsentBytes, limit);
  const auto answerOf = [](std::uint64_t bytes) {
    std::string answer = R"({"status":0,"output":1})";
    answer.resize(bytes - 1, ' ');
    return answer + '\n';
  };
  EXPECT_EQ(errorOfAnswer(answerOf(limit)), "");
  EXPECT_THAT(errorOfAnswer(answerOf(limit + 1)),
              EndsWith("the answer is longer than " + std::to_string(limit) + " bytes"));
}

void keepsWaitingAnswers(std::uint64_t limit) {
  EXPECT_EQ(ServerLimits().totalUnsentBytes, limit);
  AnswerRoom room(limit);
  EXPECT_EQ(room.forNext(), limit);
  WaitingAnswer waiting(room);
  waiting.enter(limit / 2 + 1);
  EXPECT_EQ(room.forNext(), limit / 2 - 1);
}

void keepsShortAnswers(std::uint64_t limit) {
  AnswerRoom room(0);
  EXPECT_EQ(room.forNext(), limit);
}

// Both pages are as large as rows of this size allow.
void keepsAnswerPages(std::uint64_t limit) {
  constexpr std::uint64_t rowBytes = 1024;  // with the comma
  const std::vector<std::string> rows(2 * limit / rowBytes, std::string(rowBytes - 1, '0'));
  const ReportPagesPtr pages = arrayPages(rowsOfList(rows));
  EXPECT_EQ(pages->next().size(), limit);
  EXPECT_EQ(pages->next().size(), limit + 1) << "with the bracket at the end";
  EXPECT_FALSE(pages->hasNext());
}

// The object of the answer is a level too.
void keepsAnswerLevels(std::uint64_t limit) {
  const auto answerOf = [](std::uint64_t levels) {
    return R"({"status":0,"output":)" + std::string(levels - 1, '[') +
           std::string(levels - 1, ']') + "}\n";
  };
  EXPECT_EQ(errorOfAnswer(answerOf(limit)), "");
  EXPECT_THAT(errorOfAnswer(answerOf(limit + 1)),
              EndsWith("the answer nests deeper than " + std::to_string(limit) + " levels"));
}

void keepsClients(std::uint64_t limit) {
  ManualScheduler scheduler;
  ServedAgent served("unused.json", 8);
  std::deque<ScriptedClient> clients(limit + 1);
  ControlServer server(scheduler, served, {});
  for (ScriptedClient& client : clients)
    server.accept(client.connect());
  EXPECT_TRUE(clients[limit - 1].isConnected());
  EXPECT_FALSE(clients[limit].isConnected());
  EXPECT_THAT(clients[limit].received(), HasSubstr(std::to_string(limit) + " clients are"));
}

// A client of a server with the usual limits, whose answer waits.
struct WaitingClient {
  WaitingClient() {
    server.accept(client.connect());
    client.roomIs(0);
    client.send("show config\n");
    scheduler.rounds();
  }

  ManualScheduler scheduler;
  ServedAgent served{"unused.json", 8};
  ScriptedClient client;
  ControlServer server{scheduler, served, {}};
};

void keepsClientTimeouts(std::uint64_t limit) {
  constexpr std::chrono::milliseconds step(1);
  WaitingClient waiting;
  waiting.scheduler.pass(std::chrono::seconds(limit) - step);
  EXPECT_TRUE(waiting.client.isConnected());
  waiting.scheduler.pass(step);
  EXPECT_FALSE(waiting.client.isConnected());
}

// The client takes a byte in each half of its timeout.
void keepsAnswerTimeouts(std::uint64_t limit) {
  const auto half = ServerLimits().clientTimeout / 2;
  WaitingClient waiting;
  for (std::uint64_t halves = 1; halves < 2 * limit; ++halves) {
    waiting.scheduler.pass(half);
    waiting.client.take(1);
  }
  EXPECT_TRUE(waiting.client.isConnected());
  waiting.scheduler.pass(half);
  EXPECT_FALSE(waiting.client.isConnected());
}

// `ControlClientTest.cpp` has the tests of shorter waits.
void keepsCtlTimeouts(std::uint64_t limit) {
  EXPECT_EQ(CtlOptions().timeout, std::chrono::seconds(limit));
}

// Failures that are logged by a clock of the test.
struct LoggedFailures {
  // Prints so many lines about one subject.
  void change(std::uint64_t times) {
    for (std::uint64_t change = 0; change < times; ++change)
      lines.failed("one", std::to_string(change));
  }
  void failOthers(std::uint64_t subjects) {
    for (std::uint64_t subject = 0; subject < subjects; ++subject)
      lines.failed(std::to_string(subject), "full");
  }

  std::vector<std::string> printed;
  ManualScheduler scheduler;
  FailureLines lines{scheduler, [this](LogPriority /*priority*/, const std::string& line) {
                       printed.push_back(line);
                     }};
};

void keepsLogChanges(std::uint64_t limit) {
  LoggedFailures log;
  log.change(limit);
  EXPECT_EQ(log.printed.size(), limit);
  log.change(limit + 1);
  EXPECT_EQ(log.printed.size(), limit);
}

void keepsLogPauses(std::uint64_t limit) {
  LoggedFailures log;
  log.change(10);
  const std::size_t printed = log.printed.size();
  log.scheduler.pass(std::chrono::seconds(limit - 1));
  EXPECT_EQ(log.printed.size(), printed);
  log.scheduler.pass(std::chrono::seconds(1));
  EXPECT_EQ(log.printed.size(), printed + 1);
}

void keepsLogLines(std::uint64_t limit) {
  LoggedFailures log;
  log.failOthers(limit + 1);
  EXPECT_EQ(log.printed.size(), limit);
}

void keepsLogSubjects(std::uint64_t limit) {
  const auto isRemembered = [](std::uint64_t subjects) {
    LoggedFailures log;
    log.failOthers(subjects);
    log.scheduler.pass(2 * Limits::logPause);
    log.printed.clear();
    log.lines.recovered(std::to_string(subjects - 1));
    return log.printed.size() == 1;
  };
  EXPECT_TRUE(isRemembered(limit));
  EXPECT_FALSE(isRemembered(limit + 1));
}

void keepsSocketPaths(std::uint64_t limit) {
  const auto errorOfPath = [](std::uint64_t bytes) {
    return errorOf([&] { static_cast<void>(socketAddressOf(std::string(bytes, 's'))); });
  };
  EXPECT_EQ(errorOfPath(limit), "");
  EXPECT_THAT(errorOfPath(limit + 1),
              HasSubstr("must have 1 to " + std::to_string(limit) + " bytes"));
}

void keepsCompletions(std::uint64_t limit) {
  ServedAgent served("unused.json", 8);
  const std::size_t others = runCommand(served, "complete 'vrf '", true).size();
  const auto add = [&](std::uint64_t vrf) {
    static_cast<void>(runCommand(served, "vrf x" + std::to_string(vrf) + " add", true));
  };
  for (std::uint64_t vrf = others; vrf < limit; ++vrf)
    add(1000 + vrf);
  const OrderedJson most = runCommand(served, "complete 'vrf '", true);
  EXPECT_EQ(most.size(), limit);
  add(2000);
  add(1999);
  const OrderedJson cut = runCommand(served, "complete 'vrf '", true);
  ASSERT_EQ(cut.size(), limit);
  EXPECT_EQ(cut[limit - 1], "x2000");
  EXPECT_EQ(cut[limit - 2], most[limit - 2]);
}

void keepsConsoleHistories(std::uint64_t limit) {
  const LineEditor editor("> ", "", {});
  for (std::uint64_t line = 1; line <= limit; ++line)
    add_history(std::to_string(line).c_str());
  EXPECT_EQ(history_length, static_cast<int>(limit));
  add_history("one more");
  EXPECT_EQ(history_length, static_cast<int>(limit));
  clear_history();
}

void keepsShownTexts(std::uint64_t limit) {
  const std::string longest(limit, 'x');
  EXPECT_EQ(orDash(longest), longest);
  EXPECT_EQ(orDash(longest + 'x'), longest + "...");
}

void keepsShownValues(std::uint64_t limit) {
  const std::string longest(limit, 'x');
  EXPECT_EQ(inQuotes(longest), '"' + longest + '"');
  EXPECT_EQ(inQuotes(longest + 'x'), '"' + longest + "...\"");
}

void keepsShownLists(std::uint64_t limit) {
  PolicyMap::ClassMatch match;
  match.family = IpFamily::v4;
  for (std::uint16_t port = 0; match.sourcePorts.size() < limit; port += 2)
    match.sourcePorts.push_back({port, port});
  const std::string longest = toText(match);
  EXPECT_EQ(shownText(match), longest);
  match.sourcePorts.push_back({9999, 9999});
  EXPECT_EQ(shownText(match), longest + ",... and 1 more");
}

void keepsShownInterfaces(std::uint64_t limit) {
  const auto interfacesText = [](std::uint64_t count) {
    const std::vector<std::string> names(count, "e");
    std::string table =
        wholeText(*policyPages({{"i", "P", PolicyType::forwarding, 1, names}}, false));
    return table.substr(table.rfind("  ") + 2);
  };
  std::string longest = "e";
  for (std::uint64_t count = 1; count < limit; ++count)
    longest += ", e";
  EXPECT_EQ(interfacesText(limit), longest + '\n');
  EXPECT_EQ(interfacesText(limit + 1), longest + ", ... and 1 more\n");
}

void keepsTraceMessages(std::uint64_t limit) {
  constexpr std::uint64_t headers = 28;  // of the slot and of the text
  const Blinklog::SiteId site = Blinklog::siteIs({"/limits", 1, "text", 5, {"%s"}});
  Blinklog::Ring ring(2);
  for (const std::uint64_t bytes : {limit - headers, limit - headers + 1}) {
    const std::string text(bytes, 'x');
    ring.write(site, std::array{Blinklog::Argument{'s', 0, text}});
  }
  const std::string longest(limit - headers, 'x');
  EXPECT_EQ(ring.dump().at(0).text, longest);
  EXPECT_EQ(ring.dump().at(1).text, longest + "...");
}

void keepsTheTraceRing(std::uint64_t limit) {
  const Blinklog::SiteId site = Blinklog::siteIs({"/limits", 1, "number", 5, {"%u"}});
  Blinklog::Ring& ring = Blinklog::ring();
  const std::uint64_t first = ring.written();
  for (std::uint64_t number = 0; number < limit; ++number)
    ring.write(site, {});
  EXPECT_EQ(ring.dump().size(), limit);
  EXPECT_EQ(ring.dump().front().sequence, first);
  ring.write(site, {});
  EXPECT_EQ(ring.dump().size(), limit);
  EXPECT_EQ(ring.dump().front().sequence, first + 1);
}

void keepsTraceFiles(std::uint64_t limit) {
  const TestFiles::TemporaryFolder folder;
  const auto errorOfSlots = [&](std::uint64_t slots) {
    Blinklog::Ring ring(slots);
    return errorOf([&] { ring.fileIs(folder.path("ring")); });
  };
  EXPECT_EQ(errorOfSlots(limit), "");
  EXPECT_THAT(errorOfSlots(limit + 1), HasSubstr("at most " + std::to_string(limit)));
}

// The check of each row, by its name.
const std::map<std::string, void (*)(std::uint64_t)>& checks() {
  static const std::map<std::string, void (*)(std::uint64_t)> all{
      {"name", keepsNames},
      {"input file", keepsInputFiles},
      {"document levels", keepsDocumentLevels},
      {"port ranges", keepsPortRanges},
      {"shown errors", keepsShownErrors},
      {"shown warnings", keepsShownWarnings},
      {"number", keepsNumbers},
      {"IPv4 prefix length", keepsPrefixLengthsV4},
      {"IPv6 prefix length", keepsPrefixLengthsV6},
      {"packet payload", keepsPayloads},
      {"chip resources", keepsChipResources},
      {"chip rules", keepsChipRules},
      {"fallback walk", keepsFallbackWalks},
      {"gateways", keepsGateways},
      {"retries", keepsRetries},
      {"retry pause", keepsRetryPauses},
      {"request", keepsRequests},
      {"answer", keepsAnswers},
      {"waiting answers", keepsWaitingAnswers},
      {"short answer", keepsShortAnswers},
      {"answer page", keepsAnswerPages},
      {"answer levels", keepsAnswerLevels},
      {"clients", keepsClients},
      {"client timeout", keepsClientTimeouts},
      {"answer timeouts", keepsAnswerTimeouts},
      {"ctl timeout", keepsCtlTimeouts},
      {"log changes", keepsLogChanges},
      {"log pause", keepsLogPauses},
      {"log lines", keepsLogLines},
      {"log subjects", keepsLogSubjects},
      {"socket path", keepsSocketPaths},
      {"completions", keepsCompletions},
      {"console history", keepsConsoleHistories},
      {"shown text", keepsShownTexts},
      {"shown value", keepsShownValues},
      {"shown list", keepsShownLists},
      {"shown interfaces", keepsShownInterfaces},
      {"trace ring", keepsTheTraceRing},
      {"trace message", keepsTraceMessages},
      {"trace file", keepsTraceFiles},
  };
  return all;
}

std::vector<std::string> namesOfRows() {
  std::vector<std::string> names;
  for (const Limit& limit : limitTable())
    names.emplace_back(limit.name);
  return names;
}

class EachLimit : public ::testing::TestWithParam<std::string> {};

TEST_P(EachLimit, AllowsItsValueAndNotOneMore) {
  const LimitTable table = limitTable();
  const auto row = std::find_if(table.begin(), table.end(),
                                [](const Limit& limit) { return limit.name == GetParam(); });
  ASSERT_NE(row, table.end());
  const auto check = checks().find(GetParam());
  ASSERT_NE(check, checks().end()) << "a limit without a check";
  check->second(row->value);
}

std::string testNameOf(const ::testing::TestParamInfo<std::string>& row) {
  std::string name = row.param;
  std::erase(name, ' ');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Row, EachLimit, ::testing::ValuesIn(namesOfRows()), testNameOf);

TEST(LimitTableRows, HaveUniqueNamesAndACheckEach) {
  std::vector<std::string> checked;
  for (const auto& [name, check] : checks())
    checked.push_back(name);
  EXPECT_THAT(namesOfRows(), UnorderedElementsAreArray(checked));
}

TEST(LimitTableRows, ShowTheLimitsThatOptionsAndEventsChange) {
  ServedAgent served("unused.json", 7, std::chrono::seconds(5));
  served.play(SetChipCapacity{9});
  const LimitTable usual = limitTable();
  const LimitTable shown = limitTable(served.limits());
  std::map<std::string, std::uint64_t> changed;
  for (std::size_t row = 0; row < usual.size(); ++row) {
    if (shown[row].value != usual[row].value) changed.emplace(shown[row].name, shown[row].value);
  }
  EXPECT_EQ(changed,
            (std::map<std::string, std::uint64_t>{{"chip resources", 9}, {"client timeout", 5}}));
}

}  // namespace
}  // namespace ZelAgent
