#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ZelAgent {

/// Runs `reload`, which returns warnings, and returns the lines that report its result: one for
/// each warning or error, of which the last says whether the file was applied. No exception leaves
/// it: when memory runs out, it ends the process by `Duolog::outOfMemory`.
[[nodiscard]] std::vector<std::string> reportReload(
    const std::string& file, const std::function<std::vector<std::string>()>& reload);

/// A line for each warning.
[[nodiscard]] std::vector<std::string> warningLines(const std::vector<std::string>& warnings);

}  // namespace ZelAgent
