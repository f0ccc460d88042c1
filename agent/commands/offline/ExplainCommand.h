// Why: `zel-agent explain` tells one packet's way step by step.
// Always: what is wrong is one line on `err`, and then nothing is told.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

struct ExplainOptions {
  std::string configuration;
  std::optional<std::string> events;  // a file
  std::string interface;
  std::string packet;  // as PacketText.h tells
  bool json = false;
};

[[nodiscard]] ExitStatus explainPacket(const ExplainOptions& options, std::ostream& out,
                                       std::ostream& err);

}  // namespace ZelAgent
