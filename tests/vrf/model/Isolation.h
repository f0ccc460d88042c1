#pragma once

#include <functional>
#include <string>

namespace VrfModel {

/// Does `work` in a process of its own, so that one that aborts, crashes or leaks is a failure like
/// any other. Gives what it returned or, when it did not end well, how it ended and the last of
/// what it wrote to stderr; empty means success.
[[nodiscard]] std::string isolated(const std::function<std::string()>& work);

}  // namespace VrfModel
