#pragma once

#include <string>

#include "agent/language/LogLine.h"

namespace ZelAgent {

/// Keeps this process running when the file of its trace ring is truncated.
///
/// The file is mapped into memory. When another program truncates it, the next message is stored to
/// a page that is gone, and the system raises SIGBUS, which ends a process. From now on such a
/// signal makes the ring continue in memory, and prints one line on standard error, which `start`
/// begins. A SIGBUS for any other reason does what it did before.
///
/// Precondition: the ring of this process is in `file`. Only a program may call this, since a
/// process has one handler of SIGBUS.
void surviveTruncationOf(const std::string& file, LineStart start);

}  // namespace ZelAgent
