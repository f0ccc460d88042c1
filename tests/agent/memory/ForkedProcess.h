// A process that does some work and nothing else, so that the work may end it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace ZelAgent {

// What is left of a process.
struct Remains {
  int status = 0;  // as of `waitpid`
  std::string onStderr;
  std::string reported;
};

// Takes what the work reports.
using Report = std::function<void(const std::string& text)>;

// Does the work in a process of its own, which is a copy of this one and exits with 0 after the
// work. An exception that comes out of the work ends it. Returns when it has ended.
[[nodiscard]] Remains inForkedProcess(const std::function<void(const Report&)>& work);

}  // namespace ZelAgent
