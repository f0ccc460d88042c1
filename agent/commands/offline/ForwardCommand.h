// Why: `zel-agent forward` sends captured packets through the software chip, to see where they go.
// Always: packets of several captures are taken in the order of their times, those of one capture
// in the order of the file. Captures of what left are written whole or not at all; what is wrong is
// one line on `err`.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

struct ForwardOptions {
  std::string configuration;
  std::optional<std::string> events;  // a file
  std::vector<std::string> captures;  // INTERFACE=FILE
  std::string folder;
  bool json = false;
};

[[nodiscard]] ExitStatus forwardCaptures(const ForwardOptions& options, std::ostream& out,
                                         std::ostream& err);

}  // namespace ZelAgent
