#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "agent/model/events/EffectsRecorder.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// Hook calls and statuses that the answer to a change has at most, and warnings likewise.
inline constexpr std::size_t changeLines = 20;
/// The bytes of the lines of the calls and statuses, and of those of the warnings, at most.
inline constexpr std::size_t changeBytes = std::size_t{12} << 10U;

/// Whether a report of a change begins with its counts.
enum class Counts : std::uint8_t {
  always,
  /// Only if the rules have changed, or if not all calls and statuses are printed.
  whenNeeded,
};

/// What a change caused, in bounded size: at most `changeLines` hook calls and statuses
/// together. If there are more, those that failed come first, and the number of the others is
/// given. With the warnings, the answer has less than `Limits::shortAnswerBytes`, so it is always
/// sent.
///
///     agent.json applied
///       actions: 1 created, 0 updated, 0 deleted, 0 failed
///       rules: 2 added, 0 replaced, 0 moved, 0 removed, 0 refused
///       routes: 0 set, 0 removed
///       createVrf actionVrf red
///       status of actionVrf red: none -> programmedInHw
void writeChangeReport(std::ostream& out, const std::string& title, const EventEffects& effects,
                       Counts counts);

/// Adds the members `changes`, `calls` and `statuses` to the report. `changes` is
///
///   actions     {created, updated, deleted, failed}
///   rules       {added, replaced, moved, removed, refused}
///   routes      {set, removed}
///   truncated   how many calls and statuses are not in the arrays, which EffectReport.h describes
void putChange(OrderedJson& report, const EventEffects& effects);

/// The first warnings, and the number of the others.
[[nodiscard]] std::vector<std::string> boundedWarnings(const std::vector<std::string>& warnings);

}  // namespace ZelAgent
