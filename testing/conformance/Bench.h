#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/ChipUnderTest.h"
#include "testing/conformance/WatchedVrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// The occupancy of a chip: the resources in use if the chip reports them, otherwise the number of
/// actions that still fit. Two of the same chip are equal exactly when no resource was lost or
/// gained between them.
struct Occupancy {
  bool isReported = false;
  std::size_t count = 0;

  friend bool operator==(const Occupancy&, const Occupancy&) = default;
};

/// Writes the count and its meaning.
std::ostream& operator<<(std::ostream& stream, const Occupancy& occupancy);

/// The result of filling a chip.
struct Filling {
  std::vector<VrfAction> held;      // programmed actions, in the order of their creation
  VrfAction refused;                // the next action; valid only with a refusal
  std::optional<HwStatus> refusal;  // nothing if the chip accepted all actions
};

/// An outcome and a description of its hook call.
struct Outcome {
  std::string of;
  HwStatus status;
};

/// A chip in a test, with its facts and its watched hooks.
///
/// VRFs "red", "blue", "green" and "default" have hardware ids from the beginning. `plain` and
/// `numbered` assign one to their VRF.
class Bench {
 public:
  explicit Bench(std::unique_ptr<ChipUnderTest> chip);

  [[nodiscard]] ChipUnderTest& chip() const noexcept { return *chip_; }
  [[nodiscard]] const ChipFacts& facts() const noexcept { return facts_; }
  [[nodiscard]] WatchedVrfHelper& watched() const noexcept { return *helper_; }
  /// The helper for a state machine.
  [[nodiscard]] Mox::Ptr<VrfHelper> helper() const { return helper_; }

  [[nodiscard]] VrfAction plain(const L3::VrfName& vrf);
  [[nodiscard]] VrfAction numbered(std::size_t number);
  /// Decapsulation in "red", with fallback VRF "blue" and post-decapsulation VRF "green".
  [[nodiscard]] VrfAction decapsulating();
  /// An action whose VRF has no hardware id, which a chip may refuse.
  [[nodiscard]] VrfAction withoutId(const L3::VrfName& vrf) const;

  HwStatus create(const VrfAction& action) { return helper_->createVrf(action); }
  HwStatus update(const VrfAction& action) { return helper_->updateVrf(action); }
  void remove(const VrfAction& action) { helper_->deleteVrf(action); }

  /// The number of creations of which an empty chip must refuse the last.
  [[nodiscard]] std::size_t creationsToFill() const;
  /// Creates numbered actions until one is refused, which is not deleted.
  [[nodiscard]] Filling fill();
  /// Deletes the actions of `filling`, also the refused one.
  void empty(const Filling& filling);
  [[nodiscard]] Occupancy occupancy();

  /// The outcomes of creations and updates that fail, for every failure that the suite can cause.
  /// All actions are deleted afterwards.
  [[nodiscard]] std::vector<Outcome> failureOutcomes();

 private:
  void idIs(const L3::VrfName& vrf);
  void createUpdateDelete(const VrfAction& action, const std::string& what,
                          std::vector<Outcome>& outcomes);

  ChipFacts facts_;
  std::unique_ptr<ChipUnderTest> chip_;
  Mox::Ptr<WatchedVrfHelper> helper_;
  std::uint32_t lastId_ = 0;
};

/// Whether the outcome is a success.
[[nodiscard]] inline bool isProgrammed(const HwStatus& status) noexcept {
  return status.status() == ProgrammingResult::programmedInHw;
}
/// "programmed", or the short form of the failure.
[[nodiscard]] std::string result(const HwStatus& status);

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
