#include "tests/agent/serve/daemon/SocketPair.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>

namespace ZelAgent {

SocketPair::SocketPair(EventLoop& loop) {
  std::array<int, 2> ends{};
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()), 0);
  client_ = Blinklog::FileHandle(ends[1]);
  const int small = 1;  // the system takes its smallest size
  EXPECT_EQ(setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &small, sizeof small), 0);
  auto pipe = makeHandle<uv_pipe_t>(loop, nullptr, uv_pipe_init, 0);
  EXPECT_EQ(uv_pipe_open(pipe.get(), ends[0]), 0);
  stream_ = std::make_unique<PipeStream>(std::move(pipe));
}

void SocketPair::send(std::string_view bytes) const {
  EXPECT_EQ(::send(client_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(bytes.size()));
}

std::string SocketPair::receive(std::size_t most) const {
  std::string bytes(most, '\0');
  const auto got = recv(client_.get(), bytes.data(), most, 0);
  bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return bytes;
}

void SocketPair::endSending() const {
  EXPECT_EQ(shutdown(client_.get(), SHUT_WR), 0);
}

}  // namespace ZelAgent
