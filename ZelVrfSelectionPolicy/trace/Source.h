#pragma once

#include "Duolog/Message.h"
#include "Mox/TraceHandle.h"

namespace ZelVrfSelectionPolicy {

/// The path under which all messages and assertions of this library are known.
inline constexpr const char* sourcePath = "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy";

/// The library's handle of the text trace, "ZelVrfSelection", made on first use.
[[nodiscard]] const Mox::TraceHandle& traceHandle();

/// What every message of this library is built with.
inline constexpr Duolog::Message::Source traceSource{&traceHandle, sourcePath};

}  // namespace ZelVrfSelectionPolicy
