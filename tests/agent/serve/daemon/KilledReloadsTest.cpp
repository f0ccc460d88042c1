// A daemon that is killed while it reloads restarts with its configuration.
#include <gmock/gmock.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include "testing/RandomSeed.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

constexpr std::size_t ringSlots = 4096;

// The number of kills; ZEL_TEST_KILLS sets another number.
int killsWanted() {
  constexpr int usual = 20;
  const char* const asked = std::getenv("ZEL_TEST_KILLS");
  if (asked == nullptr) return usual;
  int kills = 0;
  const std::string_view text(asked);
  const auto [end, error] = std::from_chars(text.begin(), text.end(), kills);
  EXPECT_TRUE(error == std::errc() && end == text.end() && kills > 0)
      << "ZEL_TEST_KILLS must be a whole number above 0, not '" << text << "'";
  return kills;
}

// Two configurations that have little in common but names, and are large enough to be in the middle
// of: other VRFs, fallbacks, rules and interfaces.
SmallConfiguration configuration(bool other) {
  SmallConfiguration made;
  const std::size_t vrfs = other ? 250 : 300;
  for (std::size_t i = 0; i < vrfs; ++i) {
    const std::size_t number = other ? 2 * i : i;
    const std::string fallback =
        i % 3 == (other ? 1 : 0) && i > 0 ? made.vrfs[i - 1].name : std::string();
    made.vrfs.push_back({"vrf" + std::to_string(number), fallback});
  }
  for (std::size_t i = 0; i < vrfs; ++i)
    made.rules.push_back(made.vrfs[other ? vrfs - 1 - i : i].name);
  made.interfaces =
      other ? std::vector<std::string>{"e2", "e3"} : std::vector<std::string>{"e1", "e2"};
  return made;
}

json everythingShown(const std::string& socket) {
  SocketClient client(socket);
  json shown;
  for (const char* const command :
       {"show actions", "show users", "show rules", "show vrfs", "show fallback", "show counters"})
    shown[command] = client.output(command);
  return shown;
}

class KilledReloads : public ::testing::Test {
 protected:
  KilledReloads() {
    for (const char* const suffix : {"", ".new", ".previous"})
      std::filesystem::remove_all(ring_ + suffix);
  }

  // The file is replaced as an operator's tool does, so that it is always whole.
  void configure(bool other) {
    const std::string fresh = writeFile("fresh.json", texts_[other]);
    std::filesystem::rename(fresh, config_);
    inFile_ = other;
  }
  DaemonProcess start() { return {config_, socket_, {"--trace-ring", ring_}}; }
  // The output of a daemon that has had no other configuration.
  json freshly() const {
    const std::string socket = folder_.path("fresh");
    const DaemonProcess daemon(config_, socket);
    return everythingShown(socket);
  }
  void reload(DaemonProcess& daemon) {
    configure(!inFile_);
    daemon.signal(SIGHUP);
    ASSERT_EQ(daemon.errLine(), config_ + " applied");
  }
  // The trace of the killed daemon has all its last messages, without a gap.
  void checkTrace() const {
    const AgentOutcome trace = runAgent({"trace", "--json", ring_});
    ASSERT_EQ(trace.status, 0) << trace.err;
    const json messages = trace.documents().at(0)["messages"];
    ASSERT_FALSE(messages.empty());
    const auto first = messages[0]["sequence"].get<std::size_t>();
    for (std::size_t i = 0; i < messages.size(); ++i)
      ASSERT_EQ(messages[i]["sequence"], first + i);
    if (first > 0) {
      EXPECT_GE(messages.size(), ringSlots - 1);
    }
  }
  // The shortest of some.
  Clock::duration timeOfAReload() {
    DaemonProcess daemon = start();
    auto shortest = Clock::duration::max();
    for (int i = 0; i < 6; ++i) {
      const auto begin = Clock::now();
      reload(daemon);
      shortest = std::min(shortest, Clock::now() - begin);
    }
    return shortest;
  }

  SocketFolder folder_;
  std::string socket_ = folder_.path("s");
  std::string config_ = pathInTestFolder("served.json");
  std::string ring_ = pathInTestFolder("ring");
  const std::string texts_[2] = {toJson(configuration(false)).dump(),
                                 toJson(configuration(true)).dump()};
  bool inFile_ = false;  // which of the two
};

TEST_F(KilledReloads, RestartWithTheConfiguration) {
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  json expected[2];
  for (const bool other : {true, false}) {
    configure(other);
    expected[other] = freshly();
  }
  ASSERT_NE(expected[0], expected[1]);

  const auto takes = timeOfAReload();
  int inTime = 0;
  const int kills = killsWanted();
  for (int kill = 0; kill < kills; ++kill) {
    SCOPED_TRACE("kill " + std::to_string(kill));
    DaemonProcess daemon = start();
    ASSERT_EQ(everythingShown(socket_), expected[inFile_]);
    for (auto reloads = random() % 3; reloads > 0; --reloads)
      reload(daemon);
    configure(!inFile_);
    daemon.signal(SIGHUP);
    std::this_thread::sleep_for(takes * (random() % 1000) / 1000);
    daemon.signal(SIGKILL);
    ASSERT_EQ(daemon.exitStatus(), -1);
    inTime += daemon.restOfErr().empty() ? 1 : 0;
    ASSERT_TRUE(std::filesystem::is_socket(socket_));
    checkTrace();
  }
  DaemonProcess daemon = start();
  EXPECT_EQ(everythingShown(socket_), expected[inFile_]);
  EXPECT_EQ(daemon.end(), 0);
  std::printf("%d kills, %d of them before the reload was done\n", kills, inTime);
  EXPECT_GT(inTime, 0);
}

TEST_F(KilledReloads, AndKilledStartsDoNotPreventTheNextStart) {
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  configure(false);
  const json expected = freshly();
  const auto begin = Clock::now();
  ASSERT_EQ(start().end(), 0);
  const auto takes = Clock::now() - begin;
  const int kills = killsWanted();
  int inTime = 0;
  for (int kill = 0; kill < kills; ++kill) {
    DaemonProcess daemon(Unawaited{}, config_, socket_, {"--trace-ring", ring_});
    std::this_thread::sleep_for(takes * (random() % 1000) / 1000);
    daemon.signal(SIGKILL);
    ASSERT_EQ(daemon.exitStatus(), -1) << daemon.restOfErr();
    inTime += daemon.outLine() ? 0 : 1;
  }
  DaemonProcess daemon = start();
  EXPECT_EQ(everythingShown(socket_), expected);
  EXPECT_EQ(daemon.end(), 0);
  std::printf("%d kills, %d of them before it served\n", kills, inTime);
  EXPECT_GT(inTime, 0);
}

}  // namespace
}  // namespace ZelAgent
