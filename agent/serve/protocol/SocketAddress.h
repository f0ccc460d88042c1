// Why: server and clients name a Unix socket by its path, and a path may be too long for one.
// Always: the address is that of the whole path, or there is a SocketError.
#pragma once

#include <sys/un.h>

#include <string>

#include "agent/language/Errors.h"

namespace ZelAgent {

[[nodiscard]] sockaddr_un socketAddressOf(const std::string& path);

// "PATH: WHAT: the system's reason"
[[nodiscard]] SocketError socketErrorOf(const std::string& path, const std::string& what,
                                        int error);

}  // namespace ZelAgent
