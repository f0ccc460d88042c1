#include "Mox/SassertHelper.h"

// The standard assertion failure is wanted in every build, also where assertions are off.
#undef NDEBUG
#include <cassert>
#include <cstdio>

namespace Mox {

SassertHelper::SassertHelper(const char* condition, const char* path, unsigned line,
                             const char* function)
    : failure_("\"" + std::string(condition) + "\" == nullptr"),
      path_(path),
      line_(line),
      function_(function) {}

SassertHelper::~SassertHelper() {
  const std::string comment = comment_.str();
  if (!comment.empty()) std::fprintf(stderr, "%s\n", comment.c_str());
  __assert_fail(failure_.c_str(), path_, line_, function_);
}

}  // namespace Mox
