#pragma once

#include "agent/config/Findings.h"
#include "agent/config/JsonValue.h"

namespace ZelAgent {

/// The document as if it had been written whole.
///
/// Management protocols send {"path": PATH, "val": VALUE}, where VALUE is what the document has at
/// PATH, or send the members of `network-instances` at the top. Any other document is returned as
/// it is. A path that no document has is an error.
[[nodiscard]] JsonValue unwrapped(JsonValue document, Findings& findings);

}  // namespace ZelAgent
