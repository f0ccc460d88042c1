// Signals to a daemon.
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"
#include "tests/waiting/Wait.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class ServeSignals : public ::testing::Test {
 protected:
  static std::string writeVrfs(const std::vector<std::string>& names) {
    SmallConfiguration small{{}, names, {"e1"}};
    for (const std::string& name : names)
      small.vrfs.push_back({name});
    return writeFile("served.json", toJson(small).dump());
  }

  json actions() { return SocketClient(path_).output("show actions")["actions"]; }

  SocketFolder folder_;
  std::string path_ = folder_.path("s");
  std::string config_ = writeVrfs({"red"});
};

TEST_F(ServeSignals, SigtermEndsItAndLeavesNothing) {
  DaemonProcess daemon(config_, path_);
  SocketClient idle(path_);
  SocketClient halfway(path_);
  halfway.send("show act");
  EXPECT_EQ(idle.text("vrf red id 2"), "vrf red id 2\n  no hook call\n");
  EXPECT_EQ(daemon.end(), 0);
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_EQ(idle.receiveAll(), "");
  EXPECT_EQ(halfway.receiveAll(), "");
  EXPECT_EQ(daemon.restOfErr(), "");
}

TEST_F(ServeSignals, SigintEndsItAsWell) {
  DaemonProcess daemon(config_, path_);
  daemon.signal(SIGINT);
  EXPECT_EQ(daemon.exitStatus(), 0);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

// 100,000 pairs of a rule and an interface.
SmallConfiguration largeOf(const std::string& vrf) {
  SmallConfiguration large{{{vrf}}, std::vector<std::string>(100, vrf), {}};
  for (int i = 0; i < 1000; ++i)
    large.interfaces.push_back("e" + std::to_string(i));
  return large;
}

// Other changes follow that of the signal, so that one is in progress when a client asks and when
// the daemon ends.
TEST_F(ServeSignals, ClientsAreAnsweredAndSigtermEndsItDuringALargeChange) {
  DaemonProcess daemon(config_, path_, {"--rule-capacity", "300000"});
  const std::string other = writeSmall("other.json", largeOf("blue"));
  writeSmall("served.json", largeOf("red"));
  daemon.signal(SIGHUP);
  EXPECT_EQ(daemon.errLine(), config_ + " applied");
  SocketClient changing(path_);
  for (int i = 0; i < 20; ++i)
    changing.send("config " + other + "\nconfig " + config_ + '\n');
  SocketClient asking(path_);
  std::string rules;
  const auto isInProgress = [&] {
    rules = asking.text("show rules interface e0");
    return rules.find("the rules of the interface are being changed") != std::string::npos;
  };
  EXPECT_TRUE(Waiting::waitUntil("an answer during a change", isInProgress, [&] { return rules; }));
  EXPECT_EQ(daemon.end(), 0);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(ServeSignals, AtTheEndAllConfigurationIsRemoved) {
  DaemonProcess daemon(config_, path_, {}, {"MOX_TRACE=ZelVrfSelection=*"});
  EXPECT_EQ(daemon.end(), 0);
  EXPECT_THAT(daemon.restOfErr(), HasSubstr("Deleting VRF Hw resource. VRF:red"));
}

TEST_F(ServeSignals, SighupAppliesTheFileAsItIsNow) {
  DaemonProcess daemon(config_, path_);
  EXPECT_THAT(actions(), SizeIs(1));
  writeVrfs({"red", "blue"});
  daemon.signal(SIGHUP);
  EXPECT_EQ(daemon.errLine(), config_ + " applied");
  EXPECT_THAT(actions(), SizeIs(2));
  EXPECT_EQ(daemon.end(), 0);
}

TEST_F(ServeSignals, SighupWithABadFileChangesNothingAndIsReportedAndRecorded) {
  DaemonProcess daemon(config_, path_);
  const json before = actions();
  writeFile("served.json", "{\"network-instances\": [");
  daemon.signal(SIGHUP);
  const std::string line = daemon.errLine().value_or("");
  EXPECT_THAT(line, StartsWith("error: " + config_ + ":1:"));
  EXPECT_THAT(line, HasSubstr("; the configuration in force is unchanged"));
  EXPECT_EQ(actions(), before);
  const json reloads = SocketClient(path_).output("show config")["reloads"];
  EXPECT_EQ(reloads["refused"], 1);
  EXPECT_THAT(line, HasSubstr(reloads["lastRefusal"].get<std::string>()));
}

TEST_F(ServeSignals, AfterABadFileAGoodOneIsApplied) {
  DaemonProcess daemon(config_, path_);
  std::filesystem::remove(config_);
  daemon.signal(SIGHUP);
  EXPECT_THAT(daemon.errLine().value_or(""), HasSubstr("cannot be read"));
  writeVrfs({"blue"});
  daemon.signal(SIGHUP);
  EXPECT_EQ(daemon.errLine(), config_ + " applied");
  EXPECT_EQ(actions()[0]["vrfName"], "blue");
}

TEST_F(ServeSignals, SighupReportsTheWarningsOfTheFile) {
  DaemonProcess daemon(config_, path_);
  writeFile("served.json", toJson({{}, {"nowhere"}, {"e1"}}).dump());
  daemon.signal(SIGHUP);
  EXPECT_THAT(daemon.errLine().value_or(""),
              StartsWith("warning: not programmed: actionVrf nowhere: "));
  EXPECT_THAT(daemon.errLine().value_or(""), StartsWith("warning: " + config_ + ": "));
  EXPECT_EQ(daemon.errLine(), config_ + " applied");
}

TEST_F(ServeSignals, SighupKeepsClientsConnected) {
  DaemonProcess daemon(config_, path_);
  SocketClient client(path_);
  client.send("vrf red");
  daemon.signal(SIGHUP);
  EXPECT_EQ(daemon.errLine(), config_ + " applied");
  EXPECT_EQ(client.text(" id 2"), "vrf red id 2\n  no hook call\n");
}

TEST_F(ServeSignals, SigpipeAndAClosedStandardErrorDoNotEndIt) {
  DaemonProcess daemon(config_, path_);
  daemon.signal(SIGPIPE);
  daemon.closeErr();
  writeFile("served.json", "bad");
  SocketClient client(path_);
  EXPECT_THAT(client.text("reload"), StartsWith("error: " + config_ + ":1:"));
  daemon.signal(SIGHUP);
  // Signals are handled between requests, so requests are sent until the signal was handled.
  json reloads;
  const auto isRefused = [&] {
    reloads = client.output("show config")["reloads"];
    return reloads["refused"] == 2;
  };
  EXPECT_TRUE(Waiting::waitUntil("a second reload", isRefused, [&] { return reloads.dump(); }));
  EXPECT_EQ(daemon.end(), 0);
}

TEST_F(ServeSignals, AnUnreadStandardErrorDoesNotStopIt) {
  std::vector<std::string> names;
  for (int i = 0; i < 300; ++i)
    names.push_back("vrf" + std::to_string(i));
  writeVrfs(names);
  DaemonProcess daemon(config_, path_, {}, {"MOX_TRACE=*=*"});  // its trace fills the pipe
  SocketClient client(path_);
  for (int i = 0; i < 20; ++i) {
    daemon.signal(SIGHUP);
    EXPECT_EQ(client.text("vrf vrf1 id 2").find("vrf vrf1 id 2\n"), 0U);
  }
  EXPECT_EQ(daemon.end(), 0);
  EXPECT_GT(daemon.restOfErr().size(), 40000U) << "it was not full";
}

}  // namespace
}  // namespace ZelAgent
