// Why: server and clients name a Unix socket by its path, and a path may be too long for one.
// Always: the address is that of the whole path, or there is a SocketError.
#pragma once

#include <sys/un.h>

#include <stdexcept>
#include <string>

namespace ZelAgent {

// What is wrong with a socket; what() is one printable line that names its path.
class SocketError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

[[nodiscard]] sockaddr_un socketAddressOf(const std::string& path);

// "PATH: WHAT: the system's reason"
[[nodiscard]] SocketError socketErrorOf(const std::string& path, const std::string& what,
                                        int error);

}  // namespace ZelAgent
