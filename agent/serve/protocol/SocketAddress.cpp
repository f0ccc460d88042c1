#include "agent/serve/protocol/SocketAddress.h"

#include <sys/socket.h>

#include <cstring>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {

sockaddr_un socketAddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() > Limits::socketPathBytes) {
    throw SocketError("the path of a socket must have 1 to " +
                      std::to_string(Limits::socketPathBytes) + " bytes, found " + inQuotes(path) +
                      " of " + std::to_string(path.size()));
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

SocketError socketErrorOf(const std::string& path, const std::string& what, int error) {
  return SocketError(printable(path, Limits::shownTextBytes) + ": " + what + ": " +
                     std::strerror(error));
}

}  // namespace ZelAgent
