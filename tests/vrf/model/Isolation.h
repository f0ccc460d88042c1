#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "tests/waiting/Deadline.h"

namespace VrfModel {

/// Runs `work` in a child process, so that an abort, a crash or a leak is an ordinary failure.
/// Returns the result of `work`, where empty means success. If the child did not end normally,
/// returns how it ended and the beginning of its stderr. A child that runs longer than `limit` is
/// killed.
[[nodiscard]] std::string isolated(const std::function<std::string()>& work,
                                   std::chrono::milliseconds limit = Waiting::Deadline::usual);

}  // namespace VrfModel
