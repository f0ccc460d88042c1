#pragma once

#include <cstddef>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "Velo/Export.h"
#include "Velo/String.h"
#include "Zel/ZelBaseHelper.h"

namespace PolicyMap {

/// Whether the hardware took a rule, and if not, why.
struct AclResult {
  bool accepted = true;
  /// For operators; empty when accepted.
  Velo::String reason;

  bool operator==(const AclResult&) const = default;
};

/// The boundary to the classification hardware of a chip, which a chip layer implements.
///
/// The hardware holds one list of rules per interface. A packet that enters by an interface is
/// compared with its rules from place 0 on, and the first that matches decides.
///
/// What an implementer may rely on:
/// - All calls come synchronously on the event-loop thread, one at a time. A call may be made from
///   inside a notification, never from inside another call of this helper by the same caller.
/// - `addRule` is called with a place from 0 to the number of the interface's rules, `removeRule`
///   and `moveRule` with places of rules that are there.
/// - Only `addRule` may fail, and says so in its result; the list is then as before. What it
///   refused may be asked for again at any time.
/// - Rules are not removed when their state machine ends. The next one asks what is there, by
///   `intfs` and `rules`, and changes only what is different.
class ZEL_EXPORT PolicyMapAclHelper : public Zel::ZelBaseHelper {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapAclHelper"};
  using Rules = std::vector<AclRule>;

  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~PolicyMapAclHelper() override;

  /// Puts `rule` at `place` in the list of `intf`, before what was there.
  [[nodiscard]] virtual AclResult addRule(const Velo::String& intf, std::size_t place,
                                          const AclRule& rule) = 0;
  /// Takes the rule at `place` out.
  virtual void removeRule(const Velo::String& intf, std::size_t place) = 0;
  /// Takes the rule at `from` out and puts it in again so that it is at `to` afterwards. No packet
  /// is meanwhile without it.
  virtual void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) = 0;

  /// The rules that the hardware holds for `intf`, in their order. Valid until the next change.
  [[nodiscard]] virtual const Rules& rules(const Velo::String& intf) const = 0;
  /// The interfaces for which it holds any.
  [[nodiscard]] virtual std::vector<Velo::String> intfs() const = 0;

 protected:
  explicit PolicyMapAclHelper(const Velo::String& name) noexcept;
};

}  // namespace PolicyMap
