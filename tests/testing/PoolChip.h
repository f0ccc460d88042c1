// A chip with a pool of resources, right or wrong in one chosen way: what the conformance suite is
// tested on. Each fault is a mistake that is easily made.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "testing/ChipUnderTest.h"

namespace ZelVrfSelectionPolicy::Testing {

enum class Fault {
  none,
  creationLeaks,           // keeps the resource of a creation that fails for want of a hardware id
  updateLeaks,             // likewise of an update
  updateTakesAnother,      // takes a new resource for each update and forgets the old one
  updateDoesNothing,       // and says that all is well
  outcomesDiffer,          // numbers its failures
  descriptionHasRawNames,  // puts names of VRFs into descriptions as they are
  failureWithoutReason,    // but with a description
  failureWithoutDescription,
  successWhenFull,  // programs nothing, and says that all is well
  throwsWhenFull,
  anotherReasonWhenFull,
  deletionFreesNothing,
  deletionFreesAnother,  // when the action has no resource
  refusalFreesAnother,   // makes room for a creation at the expense of another action
  deadStayDead,          // an action that was deleted cannot be created again
  defaultVrfRefused,
};

// Its number, for the names of tests.
void PrintTo(Fault fault, std::ostream* stream);

class PoolChip final : public VrfHelper {
 public:
  PoolChip(const ChipFacts& facts, Fault fault);

  HwStatus createVrf(const VrfAction& action) override;
  HwStatus updateVrf(const VrfAction& action) override;
  void deleteVrf(const VrfAction& action) override;

  static constexpr std::size_t capacity = 5;

  [[nodiscard]] std::size_t inUse() const noexcept { return inUse_; }
  [[nodiscard]] std::optional<std::string> program(const VrfAction& action) const;
  void failNext() noexcept { failsNext_ = true; }

 private:
  HwStatus programNow(const VrfAction& action, bool leaks);
  HwStatus refusedWhenFull(const VrfAction& action);
  HwStatus failure(FailureCode reason, const std::string& text);
  [[nodiscard]] std::string programBy(const VrfAction& action) const;
  [[nodiscard]] std::string lookUp(const L3::VrfName& vrf) const;
  [[nodiscard]] bool hasId(const L3::VrfName& vrf) const;
  void release(const VrfAction& action);

  Fault fault_;
  std::map<VrfAction, std::string> programs_;
  std::size_t inUse_ = 0;
  std::set<VrfAction> dead_;
  std::size_t failures_ = 0;
  bool failsNext_ = false;
};

// The pool chip, telling all that it can.
class TellingPoolChip final : public ChipUnderTest {
 public:
  explicit TellingPoolChip(Fault fault) : fault_(fault) {}

  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override;
  std::optional<std::size_t> resourcesInUse() const override { return chip_->inUse(); }
  std::optional<std::size_t> capacity() const override { return PoolChip::capacity; }
  std::optional<std::string> programOf(const VrfAction& action) const override {
    return chip_->program(action);
  }
  bool failNextHook() override;

 private:
  Fault fault_;
  Mox::Ptr<PoolChip> chip_;
};

// The same chip with nothing but what every chip must give.
class SilentPoolChip final : public ChipUnderTest {
 public:
  explicit SilentPoolChip(Fault fault) : fault_(fault) {}

  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override {
    return Mox::makePtr<PoolChip>(facts, fault_);
  }
  std::size_t mostCreations() const override { return 100; }

 private:
  Fault fault_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
