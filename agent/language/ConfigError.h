// Why: a configuration is applied whole or not at all, so its reader needs one way to say no.
// Always: what() is a single printable line that names the file, the place in it and what would be
// right; nothing of the configuration has been applied when it is thrown.
#pragma once

#include <stdexcept>

namespace ZelAgent {

class ConfigError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ZelAgent
