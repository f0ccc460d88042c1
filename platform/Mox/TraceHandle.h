#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

/// Sets levels by handle name. `text` has entries `NAME=LEVEL,LEVEL...`, separated by `;`. `*`
/// stands for every handle or for every level, as in `ZelVrfSelection=5,7` or `*=7`. The last entry
/// for a handle applies. Throws `RangeException` for any other form, and changes nothing.
ZEL_EXPORT void traceLevelsIs(std::string_view text);

/// A named source of text trace and the levels that are on for it.
///
/// Levels are 0 to 9 and independent of one another. They are set by the environment variable
/// `MOX_TRACE` and by `traceLevelsIs`; the later setting applies. Both apply to existing handles
/// and to those that are created afterwards. Use a handle on the event-loop thread only.
class ZEL_EXPORT TraceHandle {
 public:
  static constexpr unsigned levels = 10;

  /// `name` must outlive the handle. `levelsOn` has a bit for each level that is on by default.
  TraceHandle(const char* name, unsigned levelsOn) noexcept;
  TraceHandle(const TraceHandle&) = delete;
  TraceHandle& operator=(const TraceHandle&) = delete;
  ~TraceHandle();

  [[nodiscard]] const char* name() const noexcept { return name_; }
  [[nodiscard]] bool isOn(unsigned level) const noexcept { return (levelsOn_ >> level & 1U) != 0; }
  /// Switches on the levels whose bits are set, and all others off.
  void levelsOnIs(unsigned levelsOn) noexcept { levelsOn_ = levelsOn; }

 private:
  friend void traceLevelsIs(std::string_view text);

  static TraceHandle* first_;

  const char* name_;
  unsigned levelsOn_;
  TraceHandle* next_;  // in the list of all handles
};

/// Receives each line of the text trace, without its newline.
using TraceSink = std::function<void(std::string_view line)>;

/// Sends the text trace to `sink`. An empty `sink` stands for stderr, the default. Returns the
/// previous sink.
ZEL_EXPORT TraceSink traceSinkIs(TraceSink sink);

}  // namespace Mox
