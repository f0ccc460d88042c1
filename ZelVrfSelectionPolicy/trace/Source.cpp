#include "ZelVrfSelectionPolicy/trace/Source.h"

namespace ZelVrfSelectionPolicy {

const Mox::TraceHandle& traceHandle() {
  static const Mox::TraceHandle handle("ZelVrfSelection", 0);
  return handle;
}

Duolog::Message message(unsigned level, unsigned line, const char* function,
                        std::initializer_list<const char*> fragments) {
  return {{&traceHandle, sourcePath}, level, line, function, fragments};
}

}  // namespace ZelVrfSelectionPolicy
