// Why: what the library did last is wanted most when the process is gone; `zel-agent trace` reads
// it from the file that the process kept its ring in. Always: every message that was written to its
// end is shown, the last one included, oldest first. A file that is not whole is one line on `err`,
// and nothing is shown. As JSON it is one document on one line, {process, madeAt, messages}: the
// number of the process, when it began to write there, and the messages as TraceReport.h tells
// them.
#pragma once

#include <iosfwd>
#include <string>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

struct TraceOptions {
  std::string file;
  bool json = false;
};

[[nodiscard]] ExitStatus showTraceFile(const TraceOptions& options, std::ostream& out,
                                       std::ostream& err);

// Keeps the ring of this process in the file from now on. Gives `failure`, and says in one line on
// `err` why, where that cannot be.
[[nodiscard]] ExitStatus keepTraceIn(const std::string& file, std::ostream& err);

}  // namespace ZelAgent
