// The addresses of sockets.
#include "agent/serve/protocol/SocketAddress.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

#include <cerrno>

namespace ZelAgent {
namespace {

std::string problemWithPath(const std::string& path) {
  try {
    static_cast<void>(socketAddressOf(path));
  } catch (const SocketError& error) {
    return error.what();
  }
  return "none";
}

TEST(SocketAddress, HasThePathAndItsEnd) {
  const std::string longest(107, 'x');
  for (const std::string& path : {std::string("s"), longest}) {
    const sockaddr_un address = socketAddressOf(path);
    EXPECT_EQ(address.sun_family, AF_UNIX);
    EXPECT_STREQ(address.sun_path, path.c_str());
  }
}

TEST(SocketAddress, HasAPathOf1To107Bytes) {
  EXPECT_EQ(problemWithPath(""), "the path of a socket must have 1 to 107 bytes, found \"\" of 0");
  EXPECT_EQ(problemWithPath(std::string(107, 'x')), "none");
  EXPECT_THAT(problemWithPath(std::string(108, 'x')),
              ::testing::AllOf(
                  ::testing::StartsWith("the path of a socket must have 1 to 107 bytes, found \""),
                  ::testing::EndsWith(" of 108")));
}

TEST(SocketError, NamesThePathAndTheReasonOfTheSystem) {
  EXPECT_STREQ(socketErrorOf("a\nb", "cannot be opened", ENOENT).what(),
               "a\\x0ab: cannot be opened: No such file or directory");
}

}  // namespace
}  // namespace ZelAgent
