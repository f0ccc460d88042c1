// A chip whose hooks call back into the library. It checks the order of its hook calls. Its
// outcomes are those of the model's chip.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "tests/vrf/model/Cast.h"

namespace Fuzz {

// The order for one action: one creation, any number of updates, one deletion, and again. An action
// is not updated during its creation and its deletion.
class ReentrantChip final : public ZelVrfSelectionPolicy::VrfHelper {
 public:
  // Every hook calls it, with the name of the hook and the action.
  using Interruption = std::function<void(const std::string& hook)>;

  explicit ReentrantChip(Interruption interruption);
  ~ReentrantChip() override;

  ZelVrfSelectionPolicy::HwStatus createVrf(
      const ZelVrfSelectionPolicy::VrfAction& action) override;
  ZelVrfSelectionPolicy::HwStatus updateVrf(
      const ZelVrfSelectionPolicy::VrfAction& action) override;
  void deleteVrf(const ZelVrfSelectionPolicy::VrfAction& action) override;

  // Whether a hook call that creates or deletes the resource of `action` has not returned yet.
  [[nodiscard]] bool isUnderWay(const ZelVrfSelectionPolicy::VrfAction& action) const;

  // Checks that exactly the actions with a resource have a status, and that it is the last outcome
  // reported for the resource. Precondition: no hook call is under way.
  void check(const ZelVrfSelectionPolicy::VrfHwStatus& statuses) const;

 private:
  enum class Stage : unsigned char { creation, existence, deletion };
  struct Resource {
    Stage stage = Stage::creation;
    unsigned number = 0;  // counts all resources
    ZelVrfSelectionPolicy::HwStatus reported;
  };

  ZelVrfSelectionPolicy::HwStatus nextOutcome(const VrfModel::Action& action);

  Interruption interruption_;
  std::map<VrfModel::Action, Resource> resources_;
  std::map<VrfModel::Action, unsigned> calls_;
  unsigned created_ = 0;
};

}  // namespace Fuzz
