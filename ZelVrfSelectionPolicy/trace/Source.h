#pragma once

#include <initializer_list>

#include "Duolog/Message.h"
#include "Mox/TraceHandle.h"

namespace ZelVrfSelectionPolicy {

/// The source path of all messages and assertions of this library.
inline constexpr const char* sourcePath = "/src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy";

/// The library's handle of the text trace, "ZelVrfSelection", created on first use.
[[nodiscard]] const Mox::TraceHandle& traceHandle();

/// Creates a message of this library.
[[nodiscard]] Duolog::Message message(unsigned level, unsigned line, const char* function,
                                      std::initializer_list<const char*> fragments);

}  // namespace ZelVrfSelectionPolicy
