#pragma once

#include <iosfwd>
#include <utility>

#include "L3/VrfName.h"
#include "Mox/CharRange.h"
#include "Mox/Hash.h"
#include "Mox/Type.h"
#include "PolicyMap/ActionType.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace ZelVrfSelectionPolicy {

/// One request for a hardware VRF resource: the action of a policy rule on the traffic that it
/// matches, and the VRFs that it names.
///
/// A plain value. It is the key of the tables of users and of statuses, and the argument of every
/// hook of the chip. VRF name and action type are fixed at construction. The other two names are
/// set afterwards.
///
///     VrfAction action("red", PolicyMap::ActionType::decapVrf);
///     action.fallbackVrfNameIs("blue");
class ZEL_EXPORT VrfAction {
 public:
  static const Mox::Type moxType;

  /// Three empty names and no action. The record is not set.
  VrfAction() noexcept = default;
  VrfAction(L3::VrfName vrfName, PolicyMap::ActionType action) noexcept
      : vrfName_(std::move(vrfName)), action_(action) {}
  /// Parses the string form, strictly. Throws `Mox::RangeException` with the name of the wrong
  /// field.
  explicit VrfAction(Mox::CharRange& range);

  /// The VRF in which matched traffic is looked up.
  [[nodiscard]] const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  /// The VRF to fall back to; empty for none.
  [[nodiscard]] const L3::VrfName& fallbackVrfName() const noexcept { return fallbackVrfName_; }
  void fallbackVrfNameIs(L3::VrfName name) noexcept { fallbackVrfName_ = std::move(name); }
  /// The VRF in which a packet is looked up after decapsulation; empty for none.
  [[nodiscard]] const L3::VrfName& postDecapVrfName() const noexcept { return postDecapVrfName_; }
  void postDecapVrfNameIs(L3::VrfName name) noexcept { postDecapVrfName_ = std::move(name); }
  /// The action of the policy rule.
  [[nodiscard]] PolicyMap::ActionType action() const noexcept { return action_; }

  /// Equal records have equal hashes for every seed.
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept {
    Mox::Hash running(seed, 0);
    running.hashMix(vrfName_.byteHash());
    running.hashMix(fallbackVrfName_.byteHash());
    running.hashMix(postDecapVrfName_.byteHash());
    running.hashMix(static_cast<unsigned char>(action_));
    return running.result();
  }

  /// Whether the records `a` and `b` are equal. The action is compared first.
  [[nodiscard]] static bool isEq(const void* a, const void* b) noexcept {
    const auto& left = *static_cast<const VrfAction*>(a);
    const auto& right = *static_cast<const VrfAction*>(b);
    return left.action_ == right.action_ && left.vrfName_ == right.vrfName_ &&
           left.fallbackVrfName_ == right.fallbackVrfName_ &&
           left.postDecapVrfName_ == right.postDecapVrfName_;
  }
  friend bool operator==(const VrfAction& a, const VrfAction& b) noexcept { return isEq(&a, &b); }

  /// Orders by the fields as declared: the names in the order of VRF names, then the action.
  [[nodiscard]] bool operator<(const VrfAction& other) const;

  /// Whether the record differs from a default one.
  explicit operator bool() const noexcept;

 private:
  L3::VrfName vrfName_;
  L3::VrfName fallbackVrfName_;
  L3::VrfName postDecapVrfName_;
  PolicyMap::ActionType action_ = PolicyMap::ActionType::none;
};

/// The string form, from which an equal record can be parsed.
[[nodiscard]] ZEL_EXPORT Velo::String valueToStrep(const VrfAction& action);
/// Writes the string form.
ZEL_EXPORT std::ostream& operator<<(std::ostream& stream, const VrfAction& action);

}  // namespace ZelVrfSelectionPolicy
