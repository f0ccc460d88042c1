// Why: a hook of a chip may change whatever the library reacts to, while the library is at work;
// and a chip relies on the order of its calls. This one does the former and checks the latter.
// Always: outcomes fail and change as those of the model's chip do.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"
#include "tests/vrf/model/Cast.h"

namespace Fuzz {

// For one action: one creation, any number of updates, one deletion, and again. From the call of
// the deletion on, and before the creation has returned, it is not updated.
class ReentrantChip final : public ZelVrfSelectionPolicy::VrfHelper {
 public:
  // Called by every hook, with what it was called for.
  using Interruption = std::function<void(const std::string& hook)>;

  explicit ReentrantChip(Interruption interruption);
  ~ReentrantChip() override;

  ZelVrfSelectionPolicy::HwStatus createVrf(
      const ZelVrfSelectionPolicy::VrfAction& action) override;
  ZelVrfSelectionPolicy::HwStatus updateVrf(
      const ZelVrfSelectionPolicy::VrfAction& action) override;
  void deleteVrf(const ZelVrfSelectionPolicy::VrfAction& action) override;

  // Whether a hook that creates or deletes the resource of `action` is being called.
  [[nodiscard]] bool isUnderWay(const ZelVrfSelectionPolicy::VrfAction& action) const;

  // While no hook is called: that exactly the actions that have a resource have a status, which is
  // what was reported last for this resource.
  void check(const ZelVrfSelectionPolicy::VrfHwStatus& statuses) const;

 private:
  enum class Stage : unsigned char { creation, existence, deletion };
  struct Resource {
    Stage stage = Stage::creation;
    unsigned number = 0;  // of all that there were
    ZelVrfSelectionPolicy::HwStatus reported;
  };

  ZelVrfSelectionPolicy::HwStatus nextOutcome(const VrfModel::Action& action);

  Interruption interruption_;
  std::map<VrfModel::Action, Resource> resources_;
  std::map<VrfModel::Action, unsigned> calls_;
  unsigned created_ = 0;
};

}  // namespace Fuzz
