#pragma once

#include <sstream>
#include <string>

#include "Velo/Export.h"

namespace Mox {

/// A fatal assertion that has failed, with a comment streamed into it.
///
/// Choose it for a state from which there is no way on. At the end of the full expression the
/// comment is printed and the process aborts with the standard assertion failure, in every build:
///
///     Mox::SassertHelper("count > 0", path, line, function).stream() << "no users of " << name;
class ZEL_EXPORT SassertHelper {
 public:
  /// `condition` is the text of what did not hold.
  SassertHelper(const char* condition, const char* path, unsigned line, const char* function);
  SassertHelper(const SassertHelper&) = delete;
  SassertHelper& operator=(const SassertHelper&) = delete;
  /// Prints the comment to stderr and aborts, naming `"condition" == nullptr`, path, line,
  /// function.
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
