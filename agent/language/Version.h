#pragma once

#include <string>

namespace ZelAgent {

/// "zel-agent 1.0.0"
[[nodiscard]] std::string versionText();
/// "1.0.0"
[[nodiscard]] std::string versionNumber();

}  // namespace ZelAgent
