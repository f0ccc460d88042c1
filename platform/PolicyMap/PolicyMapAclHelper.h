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

/// The interface to the classification hardware. A chip implements it.
///
/// The hardware holds one list of rules per interface. A packet that enters by an interface is
/// compared with its rules from place 0 on, and the first rule that matches applies.
///
/// Guarantees for an implementer:
/// - All calls come synchronously on the event-loop thread, one at a time. A call may be made from
///   inside a notification, never from inside another call of this helper by the same caller.
/// - `addRule` is called with a place from 0 to the number of the interface's rules, `removeRule`
///   and `moveRule` with places of existing rules.
/// - Only `addRule` may fail, and reports that in its result. The list is then unchanged. A refused
///   rule may be added again at any time.
/// - Rules are not removed when their state machine is destroyed. The next one reads the present
///   rules by `intfs` and `rules`, and changes only what differs.
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

  /// The rules of `intf`, in order. The reference is valid until the next change.
  [[nodiscard]] virtual const Rules& rules(const Velo::String& intf) const = 0;
  /// The interfaces that have rules.
  [[nodiscard]] virtual std::vector<Velo::String> intfs() const = 0;

 protected:
  explicit PolicyMapAclHelper(const Velo::String& name) noexcept;
};

}  // namespace PolicyMap
