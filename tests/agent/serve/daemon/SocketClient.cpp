#include "tests/agent/serve/daemon/SocketClient.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <utility>

#include "tests/waiting/Descriptor.h"

namespace ZelAgent {
namespace {

// Waits for one of the events, or for the other side to have closed. Returns 0 and fails the test
// at the deadline; `received` is what came before.
short waitFor(int socket, short events, const std::string& received,
              const Waiting::Deadline& deadline = Waiting::Deadline()) {
  const short occurred =
      deadline.hasPassed() ? short{0} : Waiting::waitForEvents(socket, events, deadline);
  EXPECT_NE(occurred, 0) << deadline.expiry("the daemon to answer or to close", received);
  return occurred;
}

// Ends each `connect` and `send` that the daemon keeps waiting.
void limitSending(int socket) {
  const timeval limit{Waiting::Deadline().millisecondsLeft() / 1000, 0};
  EXPECT_EQ(setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit), 0);
}

}  // namespace

SocketClient::SocketClient(const std::string& path)
    : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  limitSending(socket_);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  EXPECT_EQ(connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
      << path << ": " << std::strerror(errno);
}

SocketClient::SocketClient(SocketClient&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)), received_(std::move(other.received_)) {}

SocketClient::~SocketClient() {
  if (socket_ >= 0) close(socket_);
}

bool SocketClient::send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

void SocketClient::endSending() const {
  shutdown(socket_, SHUT_WR);
}

std::string SocketClient::receiveLine() {
  const Waiting::Deadline deadline;
  while (received_.find('\n') == std::string::npos && receiveMore(deadline)) {
  }
  const std::size_t end = received_.find('\n');
  const std::size_t size = end == std::string::npos ? received_.size() : end + 1;
  const std::string line = received_.substr(0, size);
  received_.erase(0, size);
  return line;
}

std::string SocketClient::receiveText() {
  std::string text;
  for (std::string line = receiveLine(); line != ".\n" && !line.empty(); line = receiveLine())
    text += line;
  return text;
}

std::string SocketClient::receiveAll() {
  const Waiting::Deadline deadline;
  while (receiveMore(deadline)) {
  }
  return std::exchange(received_, {});
}

void SocketClient::waitUntilReadable() const {
  EXPECT_NE(waitFor(socket_, POLLIN, received_) & POLLIN, 0);
}

void SocketClient::waitUntilClosed() const {
  EXPECT_NE(waitFor(socket_, 0, received_) & POLLHUP, 0);
}

std::string SocketClient::text(const std::string& command) {
  EXPECT_TRUE(send(command + '\n'));
  return receiveText();
}

nlohmann::json SocketClient::output(const std::string& command) {
  const nlohmann::json request{{"command", command}, {"json", true}};
  EXPECT_TRUE(send(request.dump() + '\n'));
  const std::string line = receiveLine();
  const auto answer = nlohmann::json::parse(line, nullptr, false);
  EXPECT_TRUE(answer.is_object()) << line;
  return answer.is_object() ? answer["output"] : nlohmann::json();
}

bool SocketClient::receiveMore(const Waiting::Deadline& deadline) {
  if (waitFor(socket_, POLLIN, received_, deadline) == 0) return false;
  std::array<char, 65536> block{};
  const auto got = recv(socket_, block.data(), block.size(), 0);
  if (got <= 0) return false;
  received_.append(block.data(), static_cast<std::size_t>(got));
  return true;
}

}  // namespace ZelAgent
