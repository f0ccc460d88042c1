#pragma once

#include <cstddef>

#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/model/forwarding/RefusedActions.h"
#include "chips/interface/ChipVrfHelper.h"
#include "chips/programs/ChangedVrfs.h"

namespace ZelAgent {

/// Requests hook calls that the library does not request, so that an agent recovers by itself.
///
/// The library updates an action when a fact of a VRF that it names changes. It follows two levels
/// of fallback VRFs, but not through the default VRF, and it does not repeat what the chip refused.
/// This does the rest in steps. A step is the end of a change, or a second of a daemon:
///
///   1. It updates every action whose last hook call used other facts than the current ones. The
///      walks of the chip say which VRFs an action depends on.
///   2. While the chip has a free resource, it asks again for actions that were refused for lack of
///      room, oldest first.
///   3. It asks again for actions that were refused otherwise, each after a pause. Pauses grow, as
///      RefusedActions.h describes. If one of them has freed its resource, 2. follows again.
///
/// After a step no resource of a used action is stale unless the chip refused the last update. 2.,
/// 3. and 2. again ask for an action at most once each, and make at most `retriesOfAStep` hook
/// calls together. The step of a configuration makes 2. without this bound: the configuration may
/// have replaced as many actions as the chip has resources. So if the chip accepts every request
/// and has room, n refused actions are programmed after at most `pauseSteps` + n / `retriesOfAStep`
/// + 1 steps.
///
/// It asks by `VrfSm::updateVrfAction`: the library makes the hook call and stores the outcome, and
/// users and counts are not touched. Subscribers of the statuses see each change of an outcome, and
/// no removal. A step costs what has changed and what it asks for.
class Reprogrammer final {
 public:
  /// `vrfSm` must be the only state machine of its tables, and `chip` its chip.
  Reprogrammer(Mox::Ptr<Chips::ChipVrfHelper> chip, Chips::ProgramInputs inputs,
               Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm);
  Reprogrammer(const Reprogrammer&) = delete;
  Reprogrammer& operator=(const Reprogrammer&) = delete;
  ~Reprogrammer();

  /// Makes a step.
  void step();
  /// Makes the step of a configuration.
  void stepOfConfiguration();
  /// Asks for every refused action now, oldest first.
  void retry();

  /// Whether a later step has something to do, even if nothing changes until then.
  [[nodiscard]] bool isPending() const;

 private:
  using VrfAction = ZelVrfSelectionPolicy::VrfAction;

  void makeStep(std::size_t mostForRoom);
  void updateOutOfDate();
  // Return the number of actions that they chose.
  std::size_t askForRoom(std::size_t most);
  std::size_t askThoseDue(std::size_t most);

  [[nodiscard]] bool hasRoom() const;
  void ask(const VrfAction& action);
  // Takes the present status of the action over.
  void follow(const VrfAction& action);
  [[nodiscard]] WaitsFor reasonOf(const VrfAction& action,
                                  const ZelVrfSelectionPolicy::HwStatus& refusal) const;

  Mox::Ptr<Chips::ChipVrfHelper> chip_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm_;
  Chips::ChangedVrfs changedVrfs_;
  RefusedActions refused_;
  RefusedActions::Step step_ = 0;
  Velo::MemberSubscriber<Reprogrammer> statusSubscriber_{*this};
};

}  // namespace ZelAgent
