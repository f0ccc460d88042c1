#pragma once

#include <sys/types.h>

#include <string_view>

namespace ZelAgent {

/// What a file of that mode is, for messages: "a regular file", "a directory", "a FIFO".
[[nodiscard]] std::string_view fileKind(mode_t mode) noexcept;

}  // namespace ZelAgent
