#pragma once

#include "agent/config/Findings.h"
#include "agent/config/JsonValue.h"

namespace ZelAgent {

/// The document as if it had been written whole.
///
/// Management protocols send {"path": PATH, "val": VALUE}, where VALUE is what the document has at
/// PATH, or send the members of `network-instances` at the top. Any other document is returned as
/// it is. A path that cannot be read or that leads into a rule is an error, and so is a member
/// beside `path` and `val`. In a key of a path, a backslash stands in front of `]` and of a
/// backslash.
[[nodiscard]] JsonValue unwrapped(JsonValue document, Findings& findings);

}  // namespace ZelAgent
