#pragma once

#include <string_view>

#include "Mox/TraceHandle.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Writes the lines of the text trace into a journal instead of stderr during its lifetime.
///
/// Use it to check the trace that operators read, and its order among calls and changes. The ring
/// of the process, which holds messages of every level, is read by `Blinklog::ring().dump()`.
///
/// The destructor restores the previous sink, so captures nest. It does not restore the levels. The
/// trace is process-wide: the trace of other objects is captured, too.
///
///     const TraceCapture trace(journal, "ZelVrfSelection=5");
class TraceCapture {
 public:
  /// `levels` is the argument of `Mox::traceLevelsIs`. `journal` must outlive this.
  explicit TraceCapture(Journal& journal, std::string_view levels = "ZelVrfSelection=*")
      : before_(Mox::traceSinkIs([&journal](std::string_view line) { journal.write(line); })) {
    Mox::traceLevelsIs(levels);
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;
  ~TraceCapture() { Mox::traceSinkIs(before_); }

 private:
  Mox::TraceSink before_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
