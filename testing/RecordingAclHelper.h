#pragma once

#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Classification hardware that holds its lists of rules in memory, for tests of whatever programs
/// rules.
///
/// Each call that changes something is written down, as "addRule INTF PLACE RULE",
/// "removeRule INTF PLACE RULE" or "moveRule INTF FROM TO RULE", with rules as `shown` has them.
/// Choose it to see how few calls bring the hardware from one policy to another, and that an
/// interface's list is right at each step; to classify packets choose the software chip.
///
/// It holds its callers to what `PolicyMapAclHelper` promises to implementers: places that are
/// there, and no call from inside another. A caller who breaks that gets a `std::logic_error` which
/// says how, and the journal gets the same line, so that it shows even where the error is caught.
/// The lists are then as before.
///
///     const auto hardware = Mox::makePtr<RecordingAclHelper>(journal);
///     hardware->capacity = 2;  // the third rule is refused
///     hardware->onAdd = [](const Velo::String& intf, const PolicyMap::AclRule&) {
///       if (intf == "eth3") return PolicyMap::AclResult{false, "no such port"};
///       return PolicyMap::AclResult();
///     };
class RecordingAclHelper final : public PolicyMap::PolicyMapAclHelper {
 public:
  using AclResult = PolicyMap::AclResult;
  using AclRule = PolicyMap::AclRule;
  using Outcome = std::function<AclResult(const Velo::String& intf, const AclRule& rule)>;
  using Work = std::function<void(const Velo::String& intf, const AclRule& rule)>;

  /// `journal` must outlive this.
  explicit RecordingAclHelper(Journal& journal)
      : PolicyMapAclHelper("recorder"), journal_(journal) {}

  AclResult addRule(const Velo::String& intf, std::size_t place, const AclRule& rule) override;
  void removeRule(const Velo::String& intf, std::size_t place) override;
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override;
  [[nodiscard]] const Rules& rules(const Velo::String& intf) const override;
  [[nodiscard]] std::vector<Velo::String> intfs() const override;

  /// What `rules` gives to a caller, for a test that looks from inside a call.
  [[nodiscard]] const Rules& held(const Velo::String& intf) const;

  /// How many rules there is room for, on all interfaces together. What is over is refused.
  std::size_t capacity = std::numeric_limits<std::size_t>::max();
  /// What is done from inside a call, after it has been written down and before the list changes:
  /// whether a rule is accepted that there is room for, or any work. What they throw leaves the
  /// list as before. Empty for nothing, accepted.
  Outcome onAdd;
  Work onRemove;
  Work onMove;

 private:
  class Call;

  void require(bool kept, const std::string& call, const std::string& broken) const;

  Journal& journal_;
  std::map<Velo::String, Rules> rules_;  // without empty lists
  std::size_t held_ = 0;                 // rules on all interfaces
  bool isInCall_ = false;
};

}  // namespace ZelVrfSelectionPolicy::Testing
