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

/// How much a chip holds: the resources in use if it tells, otherwise how many more actions fit.
/// Two of the same chip are equal exactly when nothing was lost or gained in between.
struct Occupancy {
  bool isTold = false;
  std::size_t count = 0;

  friend bool operator==(const Occupancy&, const Occupancy&) = default;
};

std::ostream& operator<<(std::ostream& stream, const Occupancy& occupancy);

/// A chip that has been made full, or for which that failed.
struct Filling {
  std::vector<VrfAction> held;      // reported as programmed, in the order of their creation
  VrfAction refused;                // the one after them; only with a refusal
  std::optional<HwStatus> refusal;  // none when the chip took all that it was given
};

/// An outcome and what led to it.
struct Outcome {
  std::string of;
  HwStatus status;
};

/// A chip on the bench of a test, with the facts that it reads and the hooks under watch.
///
/// VRFs "red", "blue", "green" and "default" have hardware ids from the beginning, and every VRF
/// that an action of `plain` or `numbered` names gets one.
class Bench {
 public:
  explicit Bench(std::unique_ptr<ChipUnderTest> chip);

  [[nodiscard]] ChipUnderTest& chip() const noexcept { return *chip_; }
  [[nodiscard]] const ChipFacts& facts() const noexcept { return facts_; }
  [[nodiscard]] WatchedVrfHelper& watched() const noexcept { return *helper_; }
  /// What a state machine is given for its chip.
  [[nodiscard]] Mox::Ptr<VrfHelper> helper() const { return helper_; }

  [[nodiscard]] VrfAction plain(const L3::VrfName& vrf);
  [[nodiscard]] VrfAction numbered(std::size_t number);
  /// Decapsulation in "red", with "blue" to fall back to and "green" after it.
  [[nodiscard]] VrfAction decapsulating();
  /// An action whose VRF has no hardware id, which a chip may refuse.
  [[nodiscard]] VrfAction withoutId(const L3::VrfName& vrf) const;

  HwStatus create(const VrfAction& action) { return helper_->createVrf(action); }
  HwStatus update(const VrfAction& action) { return helper_->updateVrf(action); }
  void remove(const VrfAction& action) { helper_->deleteVrf(action); }

  /// Creates numbered actions until one is refused. One that is refused is not deleted.
  [[nodiscard]] Filling fill();
  /// Deletes the actions that fill the chip, and the one that it refused.
  void empty(const Filling& filling);
  [[nodiscard]] Occupancy occupancy();

  /// What creations, and updates of what was not created, report when as much goes wrong as the
  /// suite can bring about. All is deleted again.
  [[nodiscard]] std::vector<Outcome> troubledOutcomes();

 private:
  void idIs(const L3::VrfName& vrf);
  [[nodiscard]] std::size_t creationsToFill() const;
  void tryOut(const VrfAction& action, const std::string& what, std::vector<Outcome>& outcomes);

  ChipFacts facts_;
  std::unique_ptr<ChipUnderTest> chip_;
  Mox::Ptr<WatchedVrfHelper> helper_;
  std::uint32_t lastId_ = 0;
};

[[nodiscard]] inline bool isProgrammed(const HwStatus& status) noexcept {
  return status.status() == ProgrammingResult::programmedInHw;
}
/// "programmed", or all that the record says of the failure.
[[nodiscard]] std::string result(const HwStatus& status);

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
