// A chip with a pool of resources, without faults or with one chosen fault. It tests the
// conformance suite. Each fault is a likely mistake.
#pragma once

#include <array>
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
  creationLeaks,               // a creation that fails for lack of a hardware id keeps its resource
  updateLeaks,                 // an update that fails for lack of a hardware id keeps its resource
  updateTakesAnother,          // each update takes a new resource and does not free the old one
  updateHoardsUntilDeletion,   // each update takes a new resource, and the deletion frees all
  updateDoesNothing,           // and reports success
  outcomesDiffer,              // descriptions contain the number of the failure
  descriptionHasRawNames,      // names of VRFs are not quoted in descriptions
  failureWithoutReason,        // but with a description
  creationWithoutDescription,  // if it fails; the next two likewise
  updateWithoutDescription,
  hardwareRefusalWithoutReason,
  successWhenFull,  // programs nothing and reports success
  throwsWhenFull,
  anotherReasonWhenFull,
  deletionFreesNothing,
  deletionFreesAnother,  // if the action has no resource
  refusalFreesAnother,   // a refused creation frees the resource of another action
  deletionIsForever,     // an action that was deleted cannot be created again
  defaultVrfRefused,
  firstCreationRefused,     // as by a chip that is not ready yet
  holdsFewer,               // than the capacity that it reports
  holdsNothing,             // refuses all creations
  refusalIsCounted,         // each refused creation is counted as a resource in use, for ever
  successHasReason,         // a success has a failure reason
  freedIsNotAvailable,      // a freed resource is not counted, and cannot be used again
  creationIgnoresHardware,  // the hardware refuses, and the creation reports success
  hardwareRefusalLeaks,     // a creation or an update that the hardware refuses takes a resource
  equalUpdateRefused,       // an update by unchanged facts fails
  updateAppends,            // each update adds to the program
  updateKeepsIds,           // an update does not read this fact again; so the next ones
  updateKeepsLengths,
  updateKeepsLengths6,
  updateKeepsFallbacks,
  updateKeepsDecap,
  updateKeepsDecapFallback,
  flagLeaks,         // an update while next hops may decapsulate takes a resource for ever
  anotherIdRefused,  // an update after a hardware id changed fails
  failureIsForever,  // an action whose update failed is not programmed by later updates
  throwsANumberWhenFull,
  updateThrows,          // if a VRF has no hardware id
  deletionThrows,        // if the action has no resource
  deletionSpoilsOthers,  // deleting an action without a resource makes later updates fail
  flagsTakeRoom,         // no fault: each flag of next hops takes a resource
  decapNeedsItsFlag,     // no fault: without the flag of next hops, creations of decapsulating
                         // actions are refused, and their updates until they are created again
};

// Prints the number of the fault, for the names of tests.
void PrintTo(Fault fault, std::ostream* stream);

// It fails the running test when the suite calls the hooks of an action in an order that the
// contract excludes.
class PoolChip final : public VrfHelper {
 public:
  static constexpr std::size_t usualCapacity = 5;

  PoolChip(const ChipFacts& facts, Fault fault, std::size_t capacity);

  HwStatus createVrf(const VrfAction& action) override;
  HwStatus updateVrf(const VrfAction& action) override;
  void deleteVrf(const VrfAction& action) override;

  [[nodiscard]] std::size_t inUse() const noexcept { return inUse_ + refusals_ + taken(); }
  [[nodiscard]] std::optional<std::string> program(const VrfAction& action) const;
  void failNext() noexcept { failsNext_ = true; }

 private:
  // What the hardware does for an action, by the facts that it comes from.
  enum Part { ids, lengths, lengths6, fallbacks, decap, decapFallback, updates, parts };
  using Program = std::array<std::string, parts>;

  // The part that an update does not program anew; `parts` for none.
  [[nodiscard]] Part keptPart() const noexcept;
  HwStatus programNow(const VrfAction& action, bool leaks);
  HwStatus refusedWhenFull(const VrfAction& action);
  HwStatus failure(FailureCode reason, const std::string& text);
  [[nodiscard]] bool mayDecapsulate(const VrfAction& action) const;
  [[nodiscard]] Program programBy(const VrfAction& action) const;
  [[nodiscard]] bool isFull() const noexcept;
  // The resources that the flags take.
  [[nodiscard]] std::size_t taken() const noexcept;
  [[nodiscard]] bool hasId(const L3::VrfName& vrf) const;
  void release(const VrfAction& action);

  Fault fault_;
  std::size_t capacity_;
  std::set<VrfAction> created_;  // by the order of the calls, whatever their outcome
  std::set<VrfAction> barred_;   // their updates are refused
  std::map<VrfAction, Program> programs_;
  std::size_t inUse_ = 0;
  std::set<VrfAction> deleted_;
  std::size_t failures_ = 0;
  std::set<VrfAction> failed_;              // by an update
  std::map<VrfAction, std::size_t> hoard_;  // further resources of an action
  std::size_t everFreed_ = 0;
  std::size_t refusals_ = 0;  // that are counted as resources in use
  bool failsNext_ = false;
  bool isSpoiled_ = false;
  bool isReady_ = false;
};

// The pool chip, with all optional functions of `ChipUnderTest`.
class ObservablePoolChip final : public ChipUnderTest {
 public:
  explicit ObservablePoolChip(Fault fault, std::size_t capacity = PoolChip::usualCapacity)
      : fault_(fault), capacity_(capacity) {}

  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override;
  std::optional<std::size_t> resourcesInUse() const override { return chip_->inUse(); }
  std::optional<std::size_t> capacity() const override { return capacity_; }
  std::optional<std::string> programOf(const VrfAction& action) const override {
    return chip_->program(action);
  }
  bool failNextHook() override;

 private:
  Fault fault_;
  std::size_t capacity_;
  Mox::Ptr<PoolChip> chip_;
};

// The same chip, with only the functions that every chip must have.
class OpaquePoolChip final : public ChipUnderTest {
 public:
  explicit OpaquePoolChip(Fault fault, std::size_t capacity = PoolChip::usualCapacity)
      : fault_(fault), capacity_(capacity) {}

  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& facts) override {
    return Mox::makePtr<PoolChip>(facts, fault_, capacity_);
  }
  std::size_t mostCreations() const override { return 100; }

 private:
  Fault fault_;
  std::size_t capacity_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
