// A server on a real socket, with its event loop and its clients in one process.
#include "agent/serve/daemon/PipeListener.h"

#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <csignal>

#include "Blinklog/FileHandle.h"
#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/ControlServer.h"
#include "agent/serve/protocol/SocketAddress.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

using Blinklog::FileHandle;
using std::chrono::milliseconds;

constexpr int mostWaits = 10000;  // of 1 ms
constexpr std::size_t untilClosed = std::string::npos;

class ServerOnASocket : public ::testing::Test {
 protected:
  explicit ServerOnASocket(milliseconds timeout = milliseconds(0))
      : server_(loop_, served_, {2, std::size_t{1} << 20U, timeout}) {
    std::signal(SIGPIPE, SIG_IGN);
  }

  FileHandle connectClient() const {
    FileHandle client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = socketAddressOf(path_);
    EXPECT_EQ(connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    return client;
  }
  static void send(const FileHandle& client, std::string_view bytes) {
    EXPECT_EQ(::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  void runLoop() { uv_run(loop_.get(), UV_RUN_NOWAIT); }
  // Runs the loop until the event has happened at the client's end.
  void runUntil(const FileHandle& client, short event) {
    for (int waits = 0; waits < mostWaits; ++waits) {
      runLoop();
      pollfd poll{client.get(), event, 0};
      ::poll(&poll, 1, 1);
      if ((poll.revents & event) != 0) return;
    }
    ADD_FAILURE() << "event " << event << " has not happened";
  }
  // Runs the loop until as many bytes, or the end, have arrived.
  std::string receive(const FileHandle& client, std::size_t size) {
    std::string bytes;
    std::array<char, 65536> block{};
    while (bytes.size() < size) {
      runUntil(client, POLLIN);
      const auto got = recv(client.get(), block.data(), block.size(), 0);
      if (got <= 0) break;
      bytes.append(block.data(), static_cast<std::size_t>(got));
    }
    return bytes;
  }

  std::string path_ = pathInTestFolder("s");
  EventLoop loop_;
  ServedAgent served_{"unused.json", 8};
  ListeningSocket socket_{path_};
  ControlServer server_;
  PipeListener listener_{loop_, socket_, [this](std::unique_ptr<Stream> client) {
                           server_.accept(std::move(client));
                         }};
};

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i)
    all += text;
  return all;
}

TEST_F(ServerOnASocket, AnswersItsClientsAndDisconnectsThoseThatEnd) {
  const FileHandle one = connectClient();
  const FileHandle two = connectClient();
  send(one, "chip capacity 5\n{\"command\": \"chip capacity 6\"}\n\n");
  send(two, "chip capacity 7\n");
  shutdown(one.get(), SHUT_WR);
  shutdown(two.get(), SHUT_WR);
  EXPECT_EQ(receive(one, untilClosed),
            "chip capacity 5\n  no hook call\n.\n"
            "{\"status\":0,\"output\":\"chip capacity 6\\n  no hook call\\n\"}\n.\n");
  EXPECT_EQ(receive(two, untilClosed), "chip capacity 7\n  no hook call\n.\n");
}

TEST_F(ServerOnASocket, RefusesTheClientBeyondTheLimit) {
  const FileHandle one = connectClient();
  const FileHandle two = connectClient();
  const FileHandle three = connectClient();
  send(three, "show actions\n");
  EXPECT_EQ(receive(three, untilClosed),
            "{\"status\":1,\"output\":\"2 clients are connected, which is the limit; try again "
            "later\"}\n");
}

TEST_F(ServerOnASocket, AnswersAClientThatReadsLate) {
  const FileHandle late = connectClient();
  send(late, "help\n");
  const std::string help = receive(late, 1);
  send(late, repeated("help\n", 200));  // the answers do not fit into the buffers of the socket
  shutdown(late.get(), SHUT_WR);
  for (int round = 0; round < 1000; ++round)
    runLoop();
  EXPECT_EQ(receive(late, untilClosed), repeated(help, 200));
}

TEST_F(ServerOnASocket, RefusesAMegabyteWithoutALineEndAndStaysThereForOthers) {
  const FileHandle garbage = connectClient();
  const std::string block(10000, 'x');
  for (int blocks = 0; blocks < 100; ++blocks) {
    if (::send(garbage.get(), block.data(), block.size(), MSG_NOSIGNAL) < 0) break;
    runLoop();
  }
  EXPECT_EQ(receive(garbage, untilClosed),
            "error: a request must be a line of at most 65536 bytes, found more; the connection is "
            "closed\n.\n");
  const FileHandle other = connectClient();
  send(other, "\n");
  EXPECT_EQ(receive(other, 2), ".\n");
}

class HastyServerOnASocket : public ServerOnASocket {
 protected:
  HastyServerOnASocket() : ServerOnASocket(milliseconds(2)) {}
};

TEST_F(HastyServerOnASocket, DisconnectsAClientThatReadsNothingAndNoOther) {
  const FileHandle other = connectClient();
  const FileHandle stuck = connectClient();
  send(stuck, repeated("help\n", 200));
  runUntil(stuck, POLLHUP);
  send(other, "\n");
  EXPECT_EQ(receive(other, 2), ".\n");
}

}  // namespace
}  // namespace ZelAgent
