#pragma once

#include <string_view>

#include "Mox/TraceHandle.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Sends the text trace into a journal instead of stderr, as whole lines, while it lives.
///
/// Choose it to pin what operators read, and where among calls and changes it is said. The ring of
/// the process, which holds messages of every level whether they are captured or not, is read by
/// `Blinklog::ring().dump()`.
///
/// The sink that there was before comes back at destruction, so captures nest; the levels stay as
/// they were set. The trace belongs to the process: what other objects trace meanwhile is captured,
/// too.
///
///     const TraceCapture trace(journal, "ZelVrfSelection=5");
class TraceCapture {
 public:
  /// `levels` as `Mox::traceLevelsIs` takes them. `journal` must outlive this.
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
