#pragma once

#include <string>

#include "tests/waiting/Deadline.h"

namespace Waiting {

/// Waits for one of the `poll` events, or for the other side to close. Returns the events that
/// occurred, or 0 when the deadline passed.
[[nodiscard]] short waitForEvents(int descriptor, short events, const Deadline& deadline);

/// Appends all bytes up to the end of a pipe to `text`. Returns false when the deadline passed
/// before the end.
[[nodiscard]] bool readToEnd(int descriptor, std::string& text, const Deadline& deadline);

}  // namespace Waiting
