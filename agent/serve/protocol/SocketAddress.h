#pragma once

#include <sys/un.h>

#include <string>

#include "agent/language/Errors.h"

namespace ZelAgent {

/// The address of the Unix socket at the path. Throws a `SocketError` for a path that is too long.
[[nodiscard]] sockaddr_un socketAddressOf(const std::string& path);

/// An error "PATH: WHAT: the system's reason".
[[nodiscard]] SocketError socketErrorOf(const std::string& path, const std::string& what,
                                        int error);

}  // namespace ZelAgent
