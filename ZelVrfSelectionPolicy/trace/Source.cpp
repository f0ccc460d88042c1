#include "ZelVrfSelectionPolicy/trace/Source.h"

namespace ZelVrfSelectionPolicy {

const Mox::TraceHandle& traceHandle() {
  static const Mox::TraceHandle handle("ZelVrfSelection", 0);
  return handle;
}

}  // namespace ZelVrfSelectionPolicy
