// Clients of a daemon that is a process: many at once, and one that reads nothing.
#include <gmock/gmock.h>

#include <chrono>
#include <deque>
#include <thread>

#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"
#include "tests/waiting/Wait.h"

namespace ZelAgent {
namespace {

using ::testing::StartsWith;
using Waiting::waitUntil;

constexpr const char* idSet = "vrf red id 2\n  no hook call\n";

class ServeClients : public ::testing::Test {
 protected:
  SocketFolder folder_;
  std::string path_ = folder_.path("s");
  std::string config_ = writeSmall("served.json", {{{"red"}}, {"red"}, {"e1"}});
};

TEST_F(ServeClients, FiftyAtOnceEachGetTheirOwnAnswers) {
  const DaemonProcess daemon(config_, path_);
  std::deque<SocketClient> clients;
  for (int i = 0; i < 50; ++i)
    clients.emplace_back(path_);
  for (SocketClient& client : clients)
    client.send("chip capa");
  for (std::size_t i = 0; i < clients.size(); ++i)
    clients[i].send("city " + std::to_string(100 + i) + "\nshow v");
  for (std::size_t i = 0; i < clients.size(); ++i) {
    EXPECT_EQ(clients[i].receiveText(),
              "chip capacity " + std::to_string(100 + i) + "\n  no hook call\n");
  }
  for (SocketClient& client : clients)
    client.send("rfs\n");
  for (SocketClient& client : clients)
    EXPECT_THAT(client.receiveText(), StartsWith("  VRF "));
}

TEST_F(ServeClients, SeeThatARefusedActionIsProgrammedWithoutACommand) {
  const DaemonProcess daemon(config_, path_);
  SocketClient client(path_);
  (void)client.text("chip fail red 1");
  (void)client.text("vrf red id 9");
  std::string status;
  EXPECT_TRUE(waitUntil(
      "the action to be programmed",
      [&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        status = client.output("show actions")["actions"][0]["status"];
        return status == "programmedInHw";
      },
      [&] { return status; }));
}

TEST_F(ServeClients, AClientThatNeverReadsIsDisconnected) {
  DaemonProcess daemon(config_, path_, {"--client-timeout", "1"});
  SocketClient silent(path_);
  SocketClient stuck(path_);
  std::string requests;
  for (int i = 0; i < 200; ++i)  // the answers do not fit into the buffers of the socket
    requests += "help\n";
  stuck.send(requests + "vrf red remove\n");
  SocketClient other(path_);
  EXPECT_EQ(other.text("vrf red id 2"), idSet);
  stuck.waitUntilClosed();
  EXPECT_EQ(other.text("vrf red id 2"), idSet);  // the VRF has not been removed
  // A client that sends nothing for as long stays connected.
  EXPECT_EQ(silent.text("vrf red id 2"), idSet);
  EXPECT_EQ(daemon.end(), 0);
}

}  // namespace
}  // namespace ZelAgent
