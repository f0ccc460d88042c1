#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelAgent {

/// What an action waits for that the chip has refused.
enum class WaitsFor : std::uint8_t {
  room,   // a free resource
  time,   // the end of a pause
  facts,  // a change of its VRFs
};

/// The actions that the chip has refused, and what each waits for. It makes no hook call.
///
/// An action keeps its age, that of its first refusal, until it is removed. Time is a number of
/// steps. The first pause of an action that waits for time is one step. Each `postpone` doubles it,
/// up to `Limits::pauseSteps`.
///
///     refused.actionIs(action, WaitsFor::time, 7);
///     refused.due(8, 64);                            // the action
///     refused.postpone(action, 8);
///     refused.due(9, 64);                            // none; the action is due at step 10
class RefusedActions final {
 public:
  using VrfAction = ZelVrfSelectionPolicy::VrfAction;
  using Step = std::uint64_t;

  /// The action waits from `now` on. Does nothing if it waits for the same already.
  void actionIs(const VrfAction& action, WaitsFor waitsFor, Step now);
  void actionDel(const VrfAction& action);
  /// An action that waited for time was refused again. Does nothing if it no longer waits for time.
  void postpone(const VrfAction& action, Step now);

  [[nodiscard]] bool waitsForTime(const VrfAction& action) const;
  [[nodiscard]] bool anyWaitsForRoom() const noexcept { return !forRoom_.empty(); }
  [[nodiscard]] bool anyWaitsForTime() const noexcept { return !forTime_.empty(); }
  /// Those that wait for room, oldest first, at most `most`.
  [[nodiscard]] std::vector<VrfAction> waitingForRoom(std::size_t most) const;
  /// Those whose pause has ended, in the order in which the pauses ended, at most `most`.
  [[nodiscard]] std::vector<VrfAction> due(Step now, std::size_t most) const;
  /// All, oldest first.
  [[nodiscard]] std::vector<VrfAction> all() const;

 private:
  using Age = std::uint64_t;
  using DueAndAge = std::pair<Step, Age>;

  struct Entry {
    Age age = 0;
    WaitsFor waitsFor = WaitsFor::facts;
    Step pause = 0;
    Step due = 0;
  };

  void link(const VrfAction& action, const Entry& entry);
  void unlink(const Entry& entry);

  // Invariant: an action is in `forRoom_` or `forTime_` exactly if it waits for that.
  std::map<VrfAction, Entry> entries_;
  std::map<Age, VrfAction> forRoom_;
  std::map<DueAndAge, VrfAction> forTime_;
  Age nextAge_ = 0;
};

}  // namespace ZelAgent
