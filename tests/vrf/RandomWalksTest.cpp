// Random changes of the status table under random refreshes, nested ones included. Every refresh is
// compared with what plain scans of the table say that it may and must update.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "testing/Journal.h"
#include "testing/RandomSeed.h"
#include "testing/RecordingVrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

bool names(const VrfAction& action, const L3::VrfName& vrfName) {
  return action.vrfName() == vrfName || action.fallbackVrfName() == vrfName ||
         action.postDecapVrfName() == vrfName;
}

class RandomWalks {
 public:
  explicit RandomWalks(std::uint32_t seed) : random_(seed) {
    chip_->onUpdate = [this](const VrfAction& action) {
      updated(action);
      return HwStatus();
    };
  }

  void run(unsigned walks) {
    for (unsigned i = 0; i < walks && !::testing::Test::HasFailure(); ++i) {
      for (std::size_t changes = below(8); changes != 0; --changes)
        change();
      walk();
      static_cast<void>(journal_.take());
    }
  }

 private:
  using Actions = std::set<VrfAction>;
  using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;

  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }
  L3::VrfName name() {
    static const std::vector<L3::VrfName> few{"", "default", "red", "blue", "green"};
    return few[below(few.size())];
  }
  VrfAction action() {
    VrfAction made(name(), PolicyMap::ActionType::decapVrf);
    made.fallbackVrfNameIs(name());
    made.postDecapVrfNameIs(name());
    return made;
  }

  Actions scan(const L3::VrfName& vrfName) const {
    Actions found;
    for (auto entry = statuses_->hwStatus().iterator(); entry; ++entry) {
      if (names(entry.key(), vrfName)) found.insert(entry.key());
    }
    return found;
  }

  void change() {
    const std::size_t kind = below(100);
    const VrfAction changed = action();
    if (kind == 0) {
      for (Actions* due : dueOfWalks_)
        due->clear();
      statuses_->hwStatusDelAll();
    } else if (kind < 50) {
      statuses_->hwStatusIs(changed, HwStatus());
    } else {
      for (Actions* due : dueOfWalks_)
        due->erase(changed);
      statuses_->hwStatusDel(changed);
    }
  }

  // What is due is what was there at the start, has not been updated and has not been removed.
  void walk() {
    const L3::VrfName vrfName = name();
    Actions due = scan(vrfName);
    dueOfWalks_.push_back(&due);
    vrfSm_->updateAllVrfActions(vrfName);
    EXPECT_THAT(due, ::testing::IsEmpty()) << "not updated";
    dueOfWalks_.pop_back();
  }

  void updated(const VrfAction& action) {
    EXPECT_EQ(dueOfWalks_.back()->erase(action), 1U) << action << " was updated, but not due";
    EXPECT_TRUE(statuses_->hwStatusHas(action)) << action;
    const VrfAction before = action;
    if (dueOfWalks_.size() < 3 && below(4) == 0) walk();
    for (std::size_t changes = below(4); changes != 0; --changes)
      change();
    EXPECT_EQ(action, before) << "the hook's argument changed during its call";
  }

  Journal journal_;
  Mox::Ptr<VrfHwStatus> statuses_ = vrfHwStatusFactory();
  Mox::Ptr<RecordingVrfHelper> chip_ = Mox::makePtr<RecordingVrfHelper>(journal_);
  Mox::Ptr<VrfSm> vrfSm_ = vrfSmFactory(nullptr, statuses_, chip_,
                                        FallbackVrf::VrfSelectionFallbackVrfIs(), nullptr, nullptr);
  std::mt19937 random_;
  std::vector<Actions*> dueOfWalks_;
};

TEST(RandomWalks, UpdateExactlyWhatAPlainScanFinds) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomWalks(seed.value()).run(3000);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
