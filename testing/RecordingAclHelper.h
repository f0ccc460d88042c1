#pragma once

#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "testing/Journal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Classification hardware in memory, for tests of code that programs rules.
///
/// Each call that changes a list is written to the journal, as "addRule INTF PLACE RULE",
/// "removeRule INTF PLACE RULE", "moveRule INTF FROM TO RULE", "replaceRule INTF PLACE RULE" or
/// "close INTF" and "open INTF", with rules in the form of `shown`.
/// Use it to check the calls that change one policy into another, and the lists after each call. To
/// classify packets use the software chip.
///
/// It checks the guarantees of `PolicyMapAclHelper` for implementers: valid places, replacements
/// with the same match, and no call during another one. A violation throws `std::logic_error`, and
/// the journal gets the same line, so that the test fails also if the exception is caught. The
/// lists are then unchanged.
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
  AclResult replaceRule(const Velo::String& intf, std::size_t place, const AclRule& rule) override;
  void intfClosedIs(const Velo::String& intf, bool closed) override;
  [[nodiscard]] bool intfClosed(const Velo::String& intf) const override;
  [[nodiscard]] const Rules& rules(const Velo::String& intf) const override;
  [[nodiscard]] std::vector<Velo::String> intfs() const override;

  /// As `rules`, without the check for nested calls, for tests that read the lists during a call.
  [[nodiscard]] const Rules& held(const Velo::String& intf) const;

  /// The maximum number of rules on all interfaces together. Further rules are refused.
  std::size_t capacity = std::numeric_limits<std::size_t>::max();
  /// Called during a call, after it was written to the journal and before the list changes. `onAdd`
  /// and `onReplace` return whether the rule is accepted. If one throws, the list is unchanged. May
  /// be empty.
  Outcome onAdd;
  Outcome onReplace;
  Work onRemove;
  Work onMove;

 private:
  class Call;

  void require(bool kept, const std::string& call, const std::string& broken) const;

  Journal& journal_;
  std::map<Velo::String, Rules> rules_;  // without empty lists
  std::set<Velo::String> closed_;
  std::size_t held_ = 0;  // rules on all interfaces
  bool isInCall_ = false;
};

}  // namespace ZelVrfSelectionPolicy::Testing
