// Clients of a daemon: slow, hostile, many.
#include <gmock/gmock.h>

#include <algorithm>
#include <deque>
#include <random>
#include <sstream>
#include <thread>

#include "testing/RandomSeed.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* idSet = "vrf red id 2\n  no hook call\n";

// Answers in the text: one line of JSON, or the lines up to a dot.
long answersIn(const std::string& text) {
  long answers = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    answers += line == "." || line.starts_with('{') ? 1 : 0;
  return answers;
}

class ServeClients : public ::testing::Test {
 protected:
  static std::string writeVrfs(std::size_t count) {
    SmallConfiguration small{{{"red"}}, {"red"}, {"e1"}};
    for (std::size_t i = 1; i < count; ++i) {
      small.vrfs.push_back({"vrf" + std::to_string(i)});
      small.rules.push_back(small.vrfs.back().name);
    }
    return writeFile("served.json", toJson(small).dump());
  }

  SocketFolder folder_;
  std::string path_ = folder_.path("s");
};

TEST_F(ServeClients, FiftyAtOnceEachGetTheirOwnAnswers) {
  const DaemonProcess daemon(writeVrfs(1), path_);
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

TEST_F(ServeClients, SeveralRequestsInOnePieceAreAnsweredInTheirOrder) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient client(path_);
  client.send("chip capacity 5\n{\"command\": \"chip capacity 6\"}\nshw\n\n");
  EXPECT_EQ(client.receiveText(), "chip capacity 5\n  no hook call\n");
  EXPECT_EQ(json::parse(client.receiveLine()),
            json::parse(R"({"status": 0, "output": "chip capacity 6\n  no hook call\n"})"));
  EXPECT_THAT(client.receiveText(), StartsWith("error: a command must begin with "));
  EXPECT_EQ(client.receiveText(), "");
}

TEST_F(ServeClients, ARequestInSingleBytesIsOneRequest) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient client(path_);
  for (const char byte : std::string("vrf red id 2\r\n"))
    client.send({&byte, 1});
  EXPECT_EQ(client.receiveText(), idSet);
}

TEST_F(ServeClients, AHalfWrittenCommandOfAClientThatLeavesIsNotRun) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient leaving(path_);
  leaving.send("chip capacity 7\nchip capacity 8");
  leaving.endSending();
  EXPECT_EQ(leaving.receiveText(), "chip capacity 7\n  no hook call\n");
  EXPECT_THAT(leaving.receiveAll(), HasSubstr("must end with a newline"));
  EXPECT_EQ(SocketClient(path_).output("show actions")["chip"]["capacity"], 7);
}

TEST_F(ServeClients, AClientThatEndsSendingIsAnsweredBeforeItIsClosed) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient client(path_);
  client.send("vrf red id 2\nvrf red id 2\n");
  client.endSending();
  EXPECT_EQ(client.receiveAll(), std::string(idSet) + ".\n" + idSet + ".\n");
}

TEST_F(ServeClients, AMegabyteWithoutALineEndIsRefusedAndTheClientDisconnected) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient garbage(path_);
  garbage.send(std::string(1 << 20, 'x'));
  EXPECT_EQ(garbage.receiveText(),
            "error: a request must be a line of at most 65536 bytes, found more; the connection is "
            "closed\n");
  garbage.waitUntilClosed();
  EXPECT_EQ(SocketClient(path_).text("vrf red id 2"), idSet);
}

TEST_F(ServeClients, EveryLineOfAMegabyteOfRandomBytesIsAnswered) {
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  std::string garbage(1 << 20, '\0');
  std::generate(garbage.begin(), garbage.end(), [&] { return static_cast<char>(random()); });
  garbage.back() = '\n';

  const DaemonProcess daemon(writeVrfs(1), path_);
  const json before = SocketClient(path_).output("show vrfs");
  SocketClient client(path_);
  std::thread sender([&] {
    client.send(garbage);
    client.endSending();
  });
  const std::string answers = client.receiveAll();
  sender.join();
  EXPECT_EQ(answersIn(answers), std::count(garbage.begin(), garbage.end(), '\n'));
  EXPECT_EQ(SocketClient(path_).output("show vrfs"), before);
}

TEST_F(ServeClients, BytesThatAreNotTextAreRefusedAndTheClientStaysConnected) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient client(path_);
  EXPECT_EQ(client.text(std::string("vrf red\0id 9", 12)),
            "error: a request must be text, found a NUL byte\n");
  EXPECT_THAT(client.text("vrf \xff id 9"), StartsWith("error: a request must be UTF-8"));
  EXPECT_EQ(client.text("vrf red id 2"), idSet);
}

TEST_F(ServeClients, AnAnswerLargerThanTheSocketBufferArrivesWhole) {
  const DaemonProcess daemon(writeVrfs(2000), path_);
  SocketClient client(path_);
  for (int i = 0; i < 3; ++i)
    client.send("{\"command\": \"show actions\", \"json\": true}\n");
  for (int i = 0; i < 3; ++i) {
    const std::string line = client.receiveLine();
    EXPECT_GT(line.size(), std::size_t{512} * 1024);
    EXPECT_THAT(json::parse(line)["output"]["actions"], SizeIs(2000));
  }
}

TEST_F(ServeClients, AClientThatDisconnectsDuringItsAnswerHasNoEffectOnOthers) {
  DaemonProcess daemon(writeVrfs(2000), path_);
  for (int i = 0; i < 5; ++i) {
    SocketClient gone(path_);
    gone.send("{\"command\": \"show actions\", \"json\": true}\n{\"command\": \"show\"}\n");
    gone.waitUntilReadable();
  }
  EXPECT_EQ(SocketClient(path_).text("vrf red id 2"), idSet);
  EXPECT_EQ(daemon.end(), 0);
}

TEST_F(ServeClients, AClientThatNeverReadsIsDisconnected) {
  DaemonProcess daemon(writeVrfs(2000), path_, {"--client-timeout", "1"});
  SocketClient silent(path_);
  SocketClient stuck(path_);
  stuck.send("{\"command\": \"show actions\", \"json\": true}\nvrf red remove\n");
  SocketClient other(path_);
  EXPECT_EQ(other.text("vrf red id 2"), idSet);
  stuck.waitUntilClosed();
  EXPECT_EQ(other.text("vrf red id 2"), idSet);  // the VRF has not been removed
  // A client that sends nothing for as long stays connected.
  EXPECT_EQ(silent.text("vrf red id 2"), idSet);
  EXPECT_EQ(daemon.end(), 0);
}

TEST_F(ServeClients, ClientsBeyondTheLimitAreRefusedUntilOneDisconnects) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  std::deque<SocketClient> clients;
  for (int i = 0; i < 256; ++i) {
    clients.emplace_back(path_);
    EXPECT_EQ(clients.back().text("vrf red id 2"), idSet);
  }
  const json refusal = json::parse(SocketClient(path_).receiveLine());
  EXPECT_EQ(refusal["status"], 1);
  EXPECT_THAT(refusal["output"].get<std::string>(), HasSubstr("256 clients are connected"));
  EXPECT_EQ(clients.front().text("vrf red id 2"), idSet);

  clients.pop_back();
  // The daemon notices it later.
  while (SocketClient(path_).text("vrf red id 2") != idSet) {
  }
}

TEST_F(ServeClients, AClientWithEndlessRequestsDoesNotBlockOthers) {
  const DaemonProcess daemon(writeVrfs(1), path_);
  SocketClient greedy(path_);
  std::string requests;
  for (int i = 0; i < 5000; ++i)
    requests += "# nothing\n";
  greedy.send(requests);
  SocketClient other(path_);
  EXPECT_EQ(other.text("chip capacity 7"), "chip capacity 7\n  no hook call\n");
  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(greedy.receiveText(), "");
}

}  // namespace
}  // namespace ZelAgent
