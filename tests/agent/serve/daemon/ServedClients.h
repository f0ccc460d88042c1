// A server and its clients in one process, without sockets and without time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/ControlServer.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"
#include "tests/agent/serve/daemon/ScriptedClient.h"

namespace ZelAgent {

// A command whose answer contains its number, and both of its framings.
inline std::string command(int number) {
  return "chip capacity " + std::to_string(number);
}
inline std::string request(int number) {
  return command(number) + "\n";
}
inline std::string answer(int number) {
  return command(number) + "\n  no hook call\n.\n";
}

class ServedClients : public ::testing::Test {
 protected:
  static constexpr std::chrono::milliseconds timeout = std::chrono::seconds(10);

  explicit ServedClients(const ServerLimits& limits = {256, std::size_t{1} << 20U, timeout})
      : server_(std::make_unique<ControlServer>(scheduler_, served_, limits)) {}

  void connect(ScriptedClient& client) { server_->accept(client.connect()); }
  void connectAll() { connect(first_), connect(second_), connect(third_); }
  // Makes the answer to request 1 wait, and gives its size.
  std::size_t blockAnswer(ScriptedClient& client) {
    client.roomIs(0);
    client.send(request(1));
    scheduler_.rounds();
    EXPECT_EQ(client.waiting(), answer(1).size());
    return answer(1).size();
  }

  ManualScheduler scheduler_;
  ServedAgent served_{"unused.json", 8};
  ScriptedClient first_;
  ScriptedClient second_;
  ScriptedClient third_;
  std::unique_ptr<ControlServer> server_;
};

}  // namespace ZelAgent
