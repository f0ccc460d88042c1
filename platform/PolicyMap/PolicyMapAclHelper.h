#pragma once

#include <cstddef>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "Velo/Export.h"
#include "Velo/String.h"
#include "Zel/ZelBaseHelper.h"

namespace PolicyMap {

/// Whether the hardware accepted a rule, and the reason if not.
struct AclResult {
  bool accepted = true;
  /// For operators; empty when accepted.
  Velo::String reason;

  bool operator==(const AclResult&) const = default;
};

/// What happens on an interface that has no rules, while the rules of its policy do not fit.
enum class WhenFull : unsigned char {
  /// The hardware drops all packets of the interface.
  closed,
  /// The hardware treats the packets as without a policy.
  open,
};

/// The interface to the classification hardware. A chip implements it.
///
/// The hardware holds one list of rules per interface. A packet that enters by an interface is
/// compared with its rules from place 0 on, and the first rule that matches applies. A packet
/// without a matching rule is dropped if the interface is closed. Otherwise it is forwarded by the
/// VRF of the interface.
///
/// Guarantees for an implementer:
/// - All calls come synchronously on the event-loop thread, one at a time. A call may be made from
///   inside a notification, never from inside another call of this helper by the same caller.
/// - `addRule` is called with a place from 0 to the number of the interface's rules, `removeRule`,
///   `moveRule` and `replaceRule` with places of existing rules.
/// - `replaceRule` is called with a rule that has the match of the present one.
/// - Rules are not removed when their state machine is destroyed. The next one reads the present
///   rules by `intfs` and `rules`, and changes only what differs.
///
/// Requirements on an implementer:
/// - A call is one step for packets: each packet meets the list before the call or the list after
///   it. A chip that moves a rule by a second copy may hold both copies meanwhile.
/// - Only `addRule` and `replaceRule` may fail, and report that in their result. The list is then
///   unchanged. A refused rule may be asked for again at any time.
/// - `moveRule`, `replaceRule` and `intfClosedIs` need no room for another rule. A chip that
///   needs an entry for them reserves it.
/// - `replaceRule` accepts an action that the rule had before.
/// - A rule keeps its counter when it moves. The counter of a replaced rule starts at 0.
class ZEL_EXPORT PolicyMapAclHelper : public Zel::ZelBaseHelper {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapAclHelper"};
  using Rules = std::vector<AclRule>;

  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~PolicyMapAclHelper() override;

  /// Inserts `rule` into the list of `intf`, in front of the rule at `place`.
  [[nodiscard]] virtual AclResult addRule(const Velo::String& intf, std::size_t place,
                                          const AclRule& rule) = 0;
  /// Removes the rule at `place`.
  virtual void removeRule(const Velo::String& intf, std::size_t place) = 0;
  /// Moves the rule at `from` so that its place is `to` afterwards. The rule applies to packets all
  /// the time.
  virtual void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) = 0;
  /// Replaces the rule at `place` by `rule`, which has the same match and another action.
  [[nodiscard]] virtual AclResult replaceRule(const Velo::String& intf, std::size_t place,
                                              const AclRule& rule) = 0;

  /// Closes or opens the interface. It is open at first.
  virtual void intfClosedIs(const Velo::String& intf, bool closed) = 0;
  [[nodiscard]] virtual bool intfClosed(const Velo::String& intf) const = 0;

  /// The rules of `intf`, in order. The reference is valid until the next change.
  [[nodiscard]] virtual const Rules& rules(const Velo::String& intf) const = 0;
  /// The interfaces that have rules or are closed.
  [[nodiscard]] virtual std::vector<Velo::String> intfs() const = 0;

  /// What the caller does with an interface whose rules do not fit.
  [[nodiscard]] WhenFull whenFull() const noexcept { return whenFull_; }
  /// Has an effect on refusals from now on.
  void whenFullIs(WhenFull whenFull) noexcept { whenFull_ = whenFull; }

 protected:
  explicit PolicyMapAclHelper(const Velo::String& name) noexcept;

 private:
  WhenFull whenFull_ = WhenFull::closed;
};

}  // namespace PolicyMap
