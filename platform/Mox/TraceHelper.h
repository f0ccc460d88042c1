#pragma once

#include <sstream>

#include "Mox/TraceHandle.h"
#include "Velo/Export.h"

namespace Mox {

/// One line of text trace under construction. The destructor writes it to the sink if its level is
/// on for its handle.
///
///     Mox::TraceHelper(handle, 5, path, 26, "handleIt").stream() << "Handling " << name;
///
/// writes the line `HANDLE 5 PATH:26 handleIt Handling red`.
class ZEL_EXPORT TraceHelper {
 public:
  TraceHelper(const TraceHandle& handle, unsigned level, const char* path, unsigned line,
              const char* function);
  TraceHelper(const TraceHelper&) = delete;
  TraceHelper& operator=(const TraceHelper&) = delete;
  ~TraceHelper();

  [[nodiscard]] std::ostream& stream() noexcept { return line_; }

 private:
  bool isOn_;
  std::ostringstream line_;
};

}  // namespace Mox
