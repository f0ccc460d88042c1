#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Velo/Export.h"

namespace Mox {

/// Sets levels by handle name: `NAME=LEVEL,LEVEL...` entries separated by `;`, where `*` stands
/// for every handle or for every level, as in `ZelVrfSelection=5,7` or `*=7`. Of several entries
/// for one handle the last holds. Throws `RangeException`, changing nothing, when `text` is not of
/// this form.
ZEL_EXPORT void traceLevelsIs(std::string_view text);

/// A named source of text trace and the levels that are on for it.
///
/// Levels are 0 to 9 and independent of one another. They come from the environment variable
/// `MOX_TRACE` and from `traceLevelsIs`, the later word holding; both apply to handles that exist
/// and to those that are created afterwards. A handle belongs to the event-loop thread.
class ZEL_EXPORT TraceHandle {
 public:
  static constexpr unsigned levels = 10;

  /// `name` must outlive the handle. `levelsOn` has a bit for each level that is on unless told
  /// otherwise.
  TraceHandle(const char* name, unsigned levelsOn) noexcept;
  TraceHandle(const TraceHandle&) = delete;
  TraceHandle& operator=(const TraceHandle&) = delete;
  ~TraceHandle();

  [[nodiscard]] const char* name() const noexcept { return name_; }
  [[nodiscard]] bool isOn(unsigned level) const noexcept { return (levelsOn_ >> level & 1U) != 0; }
  /// Switches the levels whose bits are set on, all others off.
  void levelsOnIs(unsigned levelsOn) noexcept { levelsOn_ = levelsOn; }

 private:
  friend void traceLevelsIs(std::string_view text);

  static TraceHandle* first_;

  const char* name_;
  unsigned levelsOn_;
  TraceHandle* next_;  // of those that exist
};

/// Takes each line of text trace, without its newline.
using TraceSink = std::function<void(std::string_view line)>;

/// Sends the text trace to `sink`; an empty one sends it to stderr again, where it begins.
/// Returns the sink so far.
ZEL_EXPORT TraceSink traceSinkIs(TraceSink sink);

}  // namespace Mox
