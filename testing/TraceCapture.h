#pragma once

#include <string_view>

#include "Mox/TraceHandle.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Sends the text trace of every level into a journal, as whole lines, while it lives.
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
