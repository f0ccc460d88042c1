#pragma once

#include <sstream>
#include <string>

#include "Velo/Export.h"

namespace Mox {

/// A fatal assertion that failed, with a comment that is streamed into it.
///
/// Use it for a state in which the process cannot continue. At the end of the full expression it
/// prints the comment and aborts with the standard assertion failure, in every build:
///
///     Mox::SassertHelper("count > 0", path, line, function).stream() << "no users of " << name;
class ZEL_EXPORT SassertHelper {
 public:
  /// `condition` is the text of the failed condition.
  SassertHelper(const char* condition, const char* path, unsigned line, const char* function);
  SassertHelper(const SassertHelper&) = delete;
  SassertHelper& operator=(const SassertHelper&) = delete;
  /// Prints the comment to stderr and aborts. The failure shows `"condition" == nullptr`, path,
  /// line and function.
  [[noreturn]] ~SassertHelper();

  [[nodiscard]] std::ostream& stream() noexcept { return comment_; }

 private:
  std::string failure_;
  const char* path_;
  unsigned line_;
  const char* function_;
  std::ostringstream comment_;
};

}  // namespace Mox
