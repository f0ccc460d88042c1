#include "ZelVrfSelectionPolicy/trace/Source.h"

#include <optional>

namespace ZelVrfSelectionPolicy {
namespace {

// Set on first use, and destroyed with the library: statics of a program may still trace.
std::optional<Mox::TraceHandle> handle;

}  // namespace

const Mox::TraceHandle& traceHandle() {
  static const bool isMade = (handle.emplace("ZelVrfSelection", 0U), true);
  static_cast<void>(isMade);
  return *handle;
}

Duolog::Message message(unsigned level, unsigned line, const char* function,
                        std::initializer_list<const char*> fragments) {
  return {{&traceHandle, sourcePath}, level, line, function, fragments};
}

}  // namespace ZelVrfSelectionPolicy
